#pragma once
// Which of the hits under the cursor pickSelect takes: the nearest, except that within a depth
// band a preferred drawable type beats a nearer plain one. Kept apart from the GL selection that
// finds the hits, so the rule is checked on its own.
//
// Pure arithmetic: no GL.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace oxGraphics {

/// A selection hit as the choice sees it.
struct pickCandidate_t {
    std::uint32_t depth = 0;  ///< minimum window depth, 0 (near) .. 0xFFFFFFFF (far)
    bool preferred = false;   ///< its drawable's type is one of the preferred pick types
};

/// The depth band of a pick square of half size `hsize`: hsize · 40000 · the view's z scale, the
/// integer part held to the depth range (a negative, huge or undefined scale would not fit).
inline std::uint32_t pickDepthTolerance(unsigned int hsize, double viewScaleZ) {
    const double band = hsize * 40000.0 * viewScaleZ;
    if (!(band > 0.0)) return 0;
    return static_cast<std::uint32_t>(std::min(band, 4294967295.0));
}

/// The index of the candidate pickSelect takes, scanning in the driver's hit order, or none.
///
/// A hit is considered when depth − tolerance (wrapping, as the unsigned depths do) is below the
/// best depth so far. It then replaces the best unless it lies within the band of it, is not
/// preferred, and either the best is preferred or the hit is not strictly nearer.
inline std::optional<std::size_t> choosePick(std::span<const pickCandidate_t> candidates, std::uint32_t tolerance) {
    std::optional<std::size_t> best;
    std::uint32_t bestDepth = 0xFFFFFFFFu;
    bool bestPreferred = false;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const std::uint32_t z = candidates[i].depth;
        if (static_cast<std::uint32_t>(z - tolerance) >= bestDepth) continue;
        const std::uint32_t distance = z > bestDepth ? z - bestDepth : bestDepth - z;
        if (distance < tolerance && !candidates[i].preferred && (bestPreferred || z >= bestDepth)) continue;
        best = i;
        bestDepth = z;
        bestPreferred = candidates[i].preferred;
    }
    return best;
}

} // namespace oxGraphics
