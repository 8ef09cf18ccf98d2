#pragma once
// oxGeo::dtconvert: values to text for log lines.
#include "oxgeo_export.h"
#include "oxgeovector.h"

#include "oxstring.h"

namespace oxGeo {

/// Converts a value; only the specialisations below exist.
template <class To, class From>
To dtconvert(const From& value);

/// "(x, y, z)" with compact numbers as %g writes them ("(1, 0.5, -2e-07)"); −0 is written 0.
template <>
OX_GEO_API ox::string dtconvert<ox::string, vector3d>(const vector3d& value);

/// Decimal digits.
template <>
OX_GEO_API ox::string dtconvert<ox::string, unsigned int>(const unsigned int& value);

} // namespace oxGeo
