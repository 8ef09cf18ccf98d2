#pragma once
#include <cmath>

namespace ox {

/// True when a and b differ by no more than `tolerance`.
inline bool dblEq(double a, double b, double tolerance) { return std::fabs(a - b) <= tolerance; }

} // namespace ox
