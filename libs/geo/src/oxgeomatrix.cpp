#include "oxgeomatrix.h"

#include "oxgeoplane.h"

#include "oxassert.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace oxGeo {
namespace {

vector3d column(const matrix3d& m, int c) { return {m(0, c), m(1, c), m(2, c)}; }

void setColumn(matrix3d& m, int c, const vector3d& v) {
    m(0, c) = v.x();
    m(1, c) = v.y();
    m(2, c) = v.z();
}

/// Some unit vector perpendicular to the unit vector `v`.
vector3d anyPerpendicular(const vector3d& v) {
    const vector3d helper = std::fabs(v.x()) < 0.9 ? vector3d::kXAxis : vector3d::kYAxis;
    return v.cross(helper).norm();
}

bool isAffine(const matrix3d& m) { return m(3, 0) == 0.0 && m(3, 1) == 0.0 && m(3, 2) == 0.0 && m(3, 3) == 1.0; }

/// Gauss-Jordan elimination with partial pivoting, for matrices whose bottom row is not
/// (0, 0, 0, 1); the transforms of this library never produce one, but element access can.
bool generalInverse(const matrix3d& m, matrix3d& out) {
    double a[4][8];
    double largest = 0.0;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            a[r][c] = m(r, c);
            a[r][c + 4] = r == c ? 1.0 : 0.0;
            largest = std::max(largest, std::fabs(m(r, c)));
        }
    if (largest == 0.0) return false;
    for (int c = 0; c < 4; ++c) {
        int pivot = c;
        for (int r = c + 1; r < 4; ++r)
            if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) pivot = r;
        if (std::fabs(a[pivot][c]) <= 1e-14 * largest) return false;
        if (pivot != c) std::swap(a[pivot], a[c]);
        const double inv = 1.0 / a[c][c];
        for (double& v : a[c]) v *= inv;
        for (int r = 0; r < 4; ++r) {
            if (r == c || a[r][c] == 0.0) continue;
            const double f = a[r][c];
            for (int k = 0; k < 8; ++k) a[r][k] -= f * a[c][k];
        }
    }
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) out(r, c) = a[r][c + 4];
    return true;
}

} // namespace

matrix3d& matrix3d::setToIdentity() { return *this = matrix3d(); }

matrix3d& matrix3d::setToTranslation(const vector3d& v) {
    setToIdentity();
    return setTranslation(v);
}

matrix3d& matrix3d::setTranslation(const vector3d& v) {
    mM[0][3] = v.x();
    mM[1][3] = v.y();
    mM[2][3] = v.z();
    return *this;
}

matrix3d& matrix3d::setToScale(double factor) {
    setToIdentity();
    mM[0][0] = mM[1][1] = mM[2][2] = factor;
    return *this;
}

matrix3d& matrix3d::setToRotation(ox::angle a, const vector3d& axis, const point3d& centre) {
    setToIdentity();
    if (axis.isZeroLength()) {
        OX_ASSERT(!axis.isZeroLength());
        return *this;
    }
    const vector3d k = axis.norm();
    const double c = std::cos(a.radians());
    const double s = std::sin(a.radians());
    const double t = 1.0 - c;
    const double x = k.x(), y = k.y(), z = k.z();
    // Rodrigues: R = cI + s[k]x + (1 - c) k kT.
    mM[0][0] = c + t * x * x;     mM[0][1] = t * x * y - s * z; mM[0][2] = t * x * z + s * y;
    mM[1][0] = t * x * y + s * z; mM[1][1] = c + t * y * y;     mM[1][2] = t * y * z - s * x;
    mM[2][0] = t * x * z - s * y; mM[2][1] = t * y * z + s * x; mM[2][2] = c + t * z * z;
    // Keep the centre fixed: p' = R (p − c) + c.
    const vector3d cv(centre);
    return setTranslation(cv - *this * cv);
}

matrix3d& matrix3d::setFromArbitraryAxis(const vector3d& axis) {
    setToIdentity();
    if (axis.isZeroLength()) {
        OX_ASSERT(!axis.isZeroLength());
        return *this;
    }
    const vector3d n = axis.norm();
    constexpr double kLimit = 1.0 / 64.0;
    const vector3d x = (std::fabs(n.x()) < kLimit && std::fabs(n.y()) < kLimit ? vector3d::kYAxis.cross(n)
                                                                              : vector3d::kZAxis.cross(n))
                           .norm();
    const vector3d y = n.cross(x).norm();
    setColumn(*this, 0, x);
    setColumn(*this, 1, y);
    setColumn(*this, 2, n);
    return *this;
}

matrix3d& matrix3d::setCoordSystem(const point3d& origin, const vector3d& xAxis, const vector3d& yAxis,
                                   const vector3d& zAxis) {
    setToIdentity();
    setColumn(*this, 0, xAxis);
    setColumn(*this, 1, yAxis);
    setColumn(*this, 2, zAxis);
    return setTranslation(vector3d(origin));
}

void matrix3d::getCoordSystem(point3d& origin, vector3d& xAxis, vector3d& yAxis, vector3d& zAxis) const {
    origin = translation().asPoint();
    xAxis = column(*this, 0);
    yAxis = column(*this, 1);
    zAxis = column(*this, 2);
}

plane3d matrix3d::xyPlane() const {
    return plane3d(translation().asPoint(), column(*this, 0).cross(column(*this, 1)));
}

plane3d matrix3d::xzPlane() const {
    return plane3d(translation().asPoint(), column(*this, 2).cross(column(*this, 0)));
}

matrix3d matrix3d::inverse() const {
    matrix3d result;
    if (!inverse(result)) {
        OX_ASSERT(!"matrix3d::inverse of a singular matrix");
        return matrix3d();
    }
    return result;
}

bool matrix3d::inverse(matrix3d& out) const {
    if (!isAffine(*this)) return generalInverse(*this, out);

    // Affine: invert the linear part through its adjugate, then the translation is −A⁻¹t.
    const auto& m = mM;
    const double c00 = m[1][1] * m[2][2] - m[1][2] * m[2][1];
    const double c01 = m[1][2] * m[2][0] - m[1][0] * m[2][2];
    const double c02 = m[1][0] * m[2][1] - m[1][1] * m[2][0];
    const double det = m[0][0] * c00 + m[0][1] * c01 + m[0][2] * c02;
    // Singular when the columns span (almost) no volume compared with their lengths: this test
    // does not depend on the overall scale, so tiny but regular transforms still invert.
    const double volume = column(*this, 0).length() * column(*this, 1).length() * column(*this, 2).length();
    if (!(std::fabs(det) > 1e-12 * volume)) return false;

    const double id = 1.0 / det;
    matrix3d r;
    r.mM[0][0] = c00 * id;
    r.mM[1][0] = c01 * id;
    r.mM[2][0] = c02 * id;
    r.mM[0][1] = (m[0][2] * m[2][1] - m[0][1] * m[2][2]) * id;
    r.mM[1][1] = (m[0][0] * m[2][2] - m[0][2] * m[2][0]) * id;
    r.mM[2][1] = (m[0][1] * m[2][0] - m[0][0] * m[2][1]) * id;
    r.mM[0][2] = (m[0][1] * m[1][2] - m[0][2] * m[1][1]) * id;
    r.mM[1][2] = (m[0][2] * m[1][0] - m[0][0] * m[1][2]) * id;
    r.mM[2][2] = (m[0][0] * m[1][1] - m[0][1] * m[1][0]) * id;
    r.setTranslation(-(r * translation()));
    out = r;
    return true;
}

matrix3d& matrix3d::transposeIt() {
    for (int r = 0; r < 4; ++r)
        for (int c = r + 1; c < 4; ++c) std::swap(mM[r][c], mM[c][r]);
    return *this;
}

matrix3d& matrix3d::normIt() {
    const vector3d c0 = column(*this, 0), c1 = column(*this, 1), c2 = column(*this, 2);
    vector3d x = c0.norm();
    if (x.isZeroLength()) x = c1.cross(c2).norm();
    if (x.isZeroLength()) x = vector3d::kXAxis;
    vector3d y = (c1 - x * x.dot(c1)).norm();
    if (y.isZeroLength()) y = anyPerpendicular(x);
    vector3d z = x.cross(y);
    if (z.dot(c2) < 0.0) z = -z; // a mirroring frame stays mirroring
    setColumn(*this, 0, x);
    setColumn(*this, 1, y);
    setColumn(*this, 2, z);
    return *this;
}

double matrix3d::determinant() const {
    const auto& m = mM;
    // Laplace expansion along 2x2 minors of the top and bottom row pairs.
    const double s0 = m[0][0] * m[1][1] - m[1][0] * m[0][1];
    const double s1 = m[0][0] * m[1][2] - m[1][0] * m[0][2];
    const double s2 = m[0][0] * m[1][3] - m[1][0] * m[0][3];
    const double s3 = m[0][1] * m[1][2] - m[1][1] * m[0][2];
    const double s4 = m[0][1] * m[1][3] - m[1][1] * m[0][3];
    const double s5 = m[0][2] * m[1][3] - m[1][2] * m[0][3];
    const double c5 = m[2][2] * m[3][3] - m[3][2] * m[2][3];
    const double c4 = m[2][1] * m[3][3] - m[3][1] * m[2][3];
    const double c3 = m[2][1] * m[3][2] - m[3][1] * m[2][2];
    const double c2 = m[2][0] * m[3][3] - m[3][0] * m[2][3];
    const double c1 = m[2][0] * m[3][2] - m[3][0] * m[2][2];
    const double c0 = m[2][0] * m[3][1] - m[3][0] * m[2][1];
    return s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
}

bool matrix3d::isEqualTo(const matrix3d& other, double tolerance) const {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (!(std::fabs(mM[r][c] - other.mM[r][c]) <= tolerance)) return false;
    return true;
}

void matrix3d::asFloatArray(float* out16) const {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) out16[r * 4 + c] = static_cast<float>(mM[r][c]);
}

void matrix3d::asDoubleArrayColumnMajor(double* out16) const {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) out16[c * 4 + r] = mM[r][c];
}

} // namespace oxGeo
