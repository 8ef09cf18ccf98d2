#include "pickfrustum.h"

#include <algorithm>
#include <cmath>

namespace oxGraphics::openGL {

namespace {

constexpr int kPlanes = 6;

/// Signed distance of a clip-space point to plane i (w ± x, w ± y, w ± z); >= 0 inside.
inline double distance(const double* c, int plane) {
    const int axis = plane >> 1;
    return (plane & 1) != 0 ? c[3] - c[axis] : c[3] + c[axis];
}

} // namespace

pickFrustum::pickFrustum(const double clipFromLocal[16], float depthScale, float depthOffset)
    : mDepthScale(depthScale), mDepthOffset(depthOffset), mFinite(true) {
    for (int i = 0; i < 16; ++i) {
        mM[i] = clipFromLocal[i];
        if (!std::isfinite(mM[i])) mFinite = false;
    }
    // Row r of the matrix is (m[r], m[4 + r], m[8 + r], m[12 + r]); plane i is row 3 ± row axis.
    for (int plane = 0; plane < kPlanes; ++plane) {
        const int axis = plane >> 1;
        const double sign = (plane & 1) != 0 ? -1.0 : 1.0;
        for (int k = 0; k < 4; ++k) mPlanes[plane][k] = mM[4 * k + 3] + sign * mM[4 * k + axis];
    }
}

bool pickFrustum::mayTouch(const float lo[3], const float hi[3]) const {
    for (const auto& p : mPlanes) {
        // The box corner furthest along the plane's normal.
        const double d = p[0] * (p[0] >= 0.0 ? hi[0] : lo[0]) + p[1] * (p[1] >= 0.0 ? hi[1] : lo[1]) +
                         p[2] * (p[2] >= 0.0 ? hi[2] : lo[2]) + p[3];
        if (d < 0.0) return false;
    }
    return true;
}

pickFrustum::clip_t pickFrustum::toClip(const float* p) const {
    const double x = p[0], y = p[1], z = p[2];
    clip_t c;
    for (int r = 0; r < 4; ++r) c.v[r] = mM[r] * x + mM[4 + r] * y + mM[8 + r] * z + mM[12 + r];
    return c;
}

unsigned pickFrustum::outcode(const clip_t& c) {
    unsigned code = 0;
    for (int plane = 0; plane < kPlanes; ++plane)
        if (distance(c.v, plane) < 0.0) code |= 1u << plane;
    return code;
}

void pickFrustum::addDepth(const clip_t& c, pickDepthSpan_t& span) const {
    // As the driver forms it: single precision, reciprocal of w, then the depth range.
    const float z = static_cast<float>(c.v[2]);
    const float invW = 1.0f / static_cast<float>(c.v[3]);
    span.add(z * invW * mDepthScale + mDepthOffset);
}

void pickFrustum::point(const float* p, pickDepthSpan_t& span) const {
    const clip_t c = toClip(p);
    if (outcode(c) == 0) addDepth(c, span);
}

void pickFrustum::segment(const float* a, const float* b, pickDepthSpan_t& span) const {
    const clip_t c0 = toClip(a), c1 = toClip(b);
    const unsigned o0 = outcode(c0), o1 = outcode(c1);
    if ((o0 & o1) != 0) return;
    if ((o0 | o1) == 0) {
        addDepth(c0, span);
        addDepth(c1, span);
        return;
    }
    double t0 = 0.0, t1 = 0.0; // t1 measured from the far end, as the driver does
    for (int plane = 0; plane < kPlanes; ++plane) {
        if (((o0 | o1) & (1u << plane)) == 0) continue;
        const double d0 = distance(c0.v, plane), d1 = distance(c1.v, plane);
        if (d1 < 0.0) t1 = std::max(t1, d1 / (d1 - d0));
        if (d0 < 0.0) t0 = std::max(t0, d0 / (d0 - d1));
        if (t0 + t1 >= 1.0) return; // nothing, or a single point, is left
    }
    clip_t e0 = c0, e1 = c1;
    for (int k = 0; k < 4; ++k) {
        if (o0 != 0) e0.v[k] = c0.v[k] + t0 * (c1.v[k] - c0.v[k]);
        if (o1 != 0) e1.v[k] = c1.v[k] + t1 * (c0.v[k] - c1.v[k]);
    }
    addDepth(e0, span);
    addDepth(e1, span);
}

void pickFrustum::triangle(const float* a, const float* b, const float* c, pickDepthSpan_t& span) const {
    clip_t in[9] = {toClip(a), toClip(b), toClip(c)};
    const unsigned o0 = outcode(in[0]), o1 = outcode(in[1]), o2 = outcode(in[2]);
    if ((o0 & o1 & o2) != 0) return;
    const unsigned crossed = o0 | o1 | o2;
    if (crossed == 0) {
        for (int i = 0; i < 3; ++i) addDepth(in[i], span);
        return;
    }
    // Sutherland–Hodgman in homogeneous coordinates: a triangle gains at most one corner a plane.
    clip_t out[9];
    int count = 3;
    for (int plane = 0; plane < kPlanes && count >= 3; ++plane) {
        if ((crossed & (1u << plane)) == 0) continue;
        int kept = 0;
        const clip_t* prev = &in[count - 1];
        double dPrev = distance(prev->v, plane);
        for (int i = 0; i < count; ++i) {
            const clip_t& cur = in[i];
            const double d = distance(cur.v, plane);
            if (dPrev >= 0.0) out[kept++] = *prev;
            if ((d < 0.0) != (dPrev < 0.0)) {
                const double t = dPrev / (dPrev - d);
                clip_t& x = out[kept++];
                for (int k = 0; k < 4; ++k) x.v[k] = prev->v[k] + t * (cur.v[k] - prev->v[k]);
            }
            prev = &cur;
            dPrev = d;
        }
        count = kept;
        for (int i = 0; i < count; ++i) in[i] = out[i];
    }
    if (count < 3) return;
    for (int i = 0; i < count; ++i) addDepth(in[i], span);
}

} // namespace oxGraphics::openGL
