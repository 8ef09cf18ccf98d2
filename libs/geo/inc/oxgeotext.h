#pragma once
// oxGeo::text: glyph outlines of a text as polylines, for drawing text as geometry.
#include "oxgeo_export.h"
#include "oxgeopolyline.h"

#include "oxstring.h"

#include <vector>

namespace oxGeo {

class OX_GEO_API text {
public:
    /// The family used when none is given or the requested one is not installed.
    static constexpr const wchar_t* kDefaultFont = L"DejaVu Sans";

    /// Lays `text` out in `font` (a family name found through the system's font configuration;
    /// an unknown or empty family falls back to the default font) and returns its outlines in
    /// `outlines`, one inner vector per glyph (glyphs without ink, such as spaces, give an empty
    /// inner vector), each contour a closed polyline2d: its last point connects back to the first,
    /// which is not repeated. Quadratic and cubic curves are flattened to within 1/500 of the
    /// capital height.
    ///
    /// The text starts at x = 0 on the baseline y = 0; glyphs follow their advances and the
    /// font's kerning, a '\n' starts a new line one line height lower. Everything is scaled so
    /// that the ink height of a capital "H" equals `height`. `width` receives the advance width
    /// (of the longest line). Returns the ink height of the text itself (lowest to highest point
    /// of its outlines), 0 for a text without ink. An empty text gives no outlines and width 0.
    /// Thread-safe; the font library and the opened faces are cached for the process.
    double getTextOutlines(const ox::string& text, const ox::string& font, double height, double& width,
                           std::vector<std::vector<polyline2d>>& outlines);
};

} // namespace oxGeo
