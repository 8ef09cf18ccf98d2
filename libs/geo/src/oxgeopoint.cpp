#include "oxgeopoint.h"

#include "oxgeomatrix.h"

namespace oxGeo {

point3d& point3d::transformBy(const matrix3d& m) { return *this = m * *this; }

} // namespace oxGeo
