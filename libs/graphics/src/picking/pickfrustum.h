#pragma once
// pickFrustum: the volume a rectangle selection sees, and the window depths that selection mode
// reports for a point, a segment or a triangle inside it.
//
// Selection mode (Mesa's software path, which every driver of ours uses) clips each primitive
// against the view volume -w <= x, y, z <= w, with the boundary counting as inside, maps the
// clipped vertices to window depth (z / w, then the depth range) and lets every vertex of the
// clipped primitive widen the hit's depth interval. Nothing is rasterised: scissor, point size,
// line width, stipple and culling (off in every drawer) make no difference. A segment clipped to
// a single point is dropped, as the driver does. Clipping is done here in double; window depths are
// then formed in float as the driver forms them, so results agree to a few float steps (see
// pickselection.h for the stated precision).
#include <cstdint>

namespace oxGraphics::openGL {

/// The depth interval of one hit, as selection mode accumulates it.
struct pickDepthSpan_t {
    bool hit = false;
    float minZ = 1.0f;
    float maxZ = -1.0f;
    void add(float z) {
        hit = true;
        if (z < minZ) minZ = z;
        if (z > maxZ) maxZ = z;
    }
};

class pickFrustum {
public:
    /// `clipFromLocal`: column-major 4×4 from the primitives' coordinates to clip space.
    /// Window depth = ndc z × depthScale + depthOffset (glDepthRange(n, f): (f − n) / 2, (f + n) / 2).
    pickFrustum(const double clipFromLocal[16], float depthScale, float depthOffset);

    /// False when the matrix holds NaN or an infinity: then the driver's answers are not worth
    /// imitating and the caller asks selection mode itself.
    bool isFinite() const { return mFinite; }
    /// False only when the box lies wholly outside one of the six planes (conservative).
    bool mayTouch(const float lo[3], const float hi[3]) const;

    void point(const float* p, pickDepthSpan_t& span) const;
    void segment(const float* a, const float* b, pickDepthSpan_t& span) const;
    void triangle(const float* a, const float* b, const float* c, pickDepthSpan_t& span) const;

private:
    struct clip_t {
        double v[4];
    };
    clip_t toClip(const float* p) const;
    /// Bit i set: outside plane i.
    static unsigned outcode(const clip_t& c);
    void addDepth(const clip_t& c, pickDepthSpan_t& span) const;

    double mM[16];
    double mPlanes[6][4]; // in local coordinates, inside where a·x + b·y + c·z + d >= 0
    float mDepthScale;
    float mDepthOffset;
    bool mFinite;
};

} // namespace oxGraphics::openGL
