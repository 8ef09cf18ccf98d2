#include "oxgeodtconvert.h"

namespace oxGeo {

template <>
ox::string dtconvert<ox::string, vector3d>(const vector3d& value) {
    // Adding +0.0 turns −0 into 0, so a log line never shows "-0".
    return ox::string::sformat(L"(%g, %g, %g)", value.x() + 0.0, value.y() + 0.0, value.z() + 0.0);
}

template <>
ox::string dtconvert<ox::string, unsigned int>(const unsigned int& value) {
    return ox::string::sformat(L"%u", value);
}

} // namespace oxGeo
