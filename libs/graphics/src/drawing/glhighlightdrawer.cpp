#include "glhighlightdrawer.h"

#include "glcolorstate.h"

#include <algorithm>
#include <cmath>

namespace oxGraphics::openGL {

namespace {

std::uint8_t mixChannel(std::uint8_t highlight, std::uint8_t own) {
    // nearbyint rounds in the default mode, to nearest with ties to even.
    const double mixed = std::nearbyint((double(highlight) + double(own)) * 0.5 * 0.85);
    return static_cast<std::uint8_t>(std::clamp(mixed, 0.0, 255.0));
}

} // namespace

glHighlightDrawer::glHighlightDrawer(iDrawerHost* host, const ox::rgbColor& highlightColor)
    : glDrawer(host), mHighlightColor(highlightColor) {}

glHighlightDrawer::~glHighlightDrawer() = default;

ox::rgbColor glHighlightDrawer::resultingColor(const ox::rgbColor& color) const {
    if (!mMix || color == mExemptColor) return mHighlightColor;
    return {mixChannel(mHighlightColor.red(), color.red()), mixChannel(mHighlightColor.green(), color.green()),
            mixChannel(mHighlightColor.blue(), color.blue())};
}

void glHighlightDrawer::setColor(const ox::rgbColor& color, float transparency) {
    applyColor(resultingColor(color), 1.0f - transparency);
}

} // namespace oxGraphics::openGL
