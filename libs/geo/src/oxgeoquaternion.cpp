#include "oxgeoquaternion.h"

#include <algorithm>
#include <cmath>

namespace oxGeo {

quaternion::quaternion(const matrix3d& m) {
    // Divide out axis scales so a scaled model matrix still yields its rotation.
    double r[3][3];
    for (int c = 0; c < 3; ++c) {
        const double len = std::sqrt(m(0, c) * m(0, c) + m(1, c) * m(1, c) + m(2, c) * m(2, c));
        // Row layout: the matrix's columns are the quaternion's rows.
        for (int i = 0; i < 3; ++i) r[c][i] = len > 0.0 ? m(i, c) / len : (i == c ? 1.0 : 0.0);
    }
    // Pick the largest of 4w², 4x², 4y², 4z² to divide by, so the square root never works on a
    // value near zero (the trace-only formula fails for rotations near 180 degrees).
    const double trace = r[0][0] + r[1][1] + r[2][2];
    if (trace > r[0][0] && trace > r[1][1] && trace > r[2][2]) {
        const double s = 2.0 * std::sqrt(1.0 + trace); // 4w
        mW = 0.25 * s;
        mX = (r[2][1] - r[1][2]) / s;
        mY = (r[0][2] - r[2][0]) / s;
        mZ = (r[1][0] - r[0][1]) / s;
    } else if (r[0][0] >= r[1][1] && r[0][0] >= r[2][2]) {
        const double s = 2.0 * std::sqrt(std::max(0.0, 1.0 + r[0][0] - r[1][1] - r[2][2])); // 4x
        mW = (r[2][1] - r[1][2]) / s;
        mX = 0.25 * s;
        mY = (r[0][1] + r[1][0]) / s;
        mZ = (r[0][2] + r[2][0]) / s;
    } else if (r[1][1] >= r[2][2]) {
        const double s = 2.0 * std::sqrt(std::max(0.0, 1.0 + r[1][1] - r[0][0] - r[2][2])); // 4y
        mW = (r[0][2] - r[2][0]) / s;
        mX = (r[0][1] + r[1][0]) / s;
        mY = 0.25 * s;
        mZ = (r[1][2] + r[2][1]) / s;
    } else {
        const double s = 2.0 * std::sqrt(std::max(0.0, 1.0 + r[2][2] - r[0][0] - r[1][1])); // 4z
        mW = (r[1][0] - r[0][1]) / s;
        mX = (r[0][2] + r[2][0]) / s;
        mY = (r[1][2] + r[2][1]) / s;
        mZ = 0.25 * s;
    }
    if (!std::isfinite(mW + mX + mY + mZ)) {
        *this = quaternion();
        return;
    }
    normIt();
    // q and −q are the same rotation; a fixed sign makes results comparable and interpolation
    // from a converted matrix predictable.
    if (mW < 0.0) *this = *this * -1.0;
}

quaternion::quaternion(const vector3d& axis, ox::angle a) {
    const vector3d k = axis.norm();
    if (k.isZeroLength()) return;
    const double h = 0.5 * a.radians();
    const double s = std::sin(h);
    mW = std::cos(h);
    mX = k.x() * s;
    mY = k.y() * s;
    mZ = k.z() * s;
}

quaternion& quaternion::normIt() {
    const double l = length();
    if (l > 0.0) {
        mW /= l; mX /= l; mY /= l; mZ /= l;
    } else {
        *this = quaternion();
    }
    return *this;
}

matrix3d quaternion::matrixRotation() const {
    matrix3d m;
    const double n = dot(*this);
    if (n == 0.0) return m;
    // s = 2/|q|² makes the formula exact for quaternions of any length.
    const double s = 2.0 / n;
    const double xs = mX * s, ys = mY * s, zs = mZ * s;
    const double wx = mW * xs, wy = mW * ys, wz = mW * zs;
    const double xx = mX * xs, xy = mX * ys, xz = mX * zs;
    const double yy = mY * ys, yz = mY * zs, zz = mZ * zs;
    // Row-vector layout: the transpose of the matrix that rotates column vectors.
    m(0, 0) = 1.0 - (yy + zz); m(1, 0) = xy - wz;         m(2, 0) = xz + wy;
    m(0, 1) = xy + wz;         m(1, 1) = 1.0 - (xx + zz); m(2, 1) = yz - wx;
    m(0, 2) = xz - wy;         m(1, 2) = yz + wx;         m(2, 2) = 1.0 - (xx + yy);
    return m;
}

vector3d quaternion::rotate(const vector3d& v) const {
    matrix3d m = matrixRotation();
    m.transposeIt();
    return m * v;
}

} // namespace oxGeo
