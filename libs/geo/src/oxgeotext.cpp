#include "oxgeotext.h"

#include "oxlog.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_BBOX_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace oxGeo {
namespace {

constexpr const char* kLogger = "oxGeo::text::getTextOutlines";

struct ftLibraryDeleter {
    void operator()(FT_Library lib) const { FT_Done_FreeType(lib); }
};
struct ftFaceDeleter {
    void operator()(FT_Face face) const { FT_Done_Face(face); }
};
struct fcConfigDeleter {
    void operator()(FcConfig* config) const { FcConfigDestroy(config); }
};
struct fcPatternDeleter {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using ftLibraryPtr = std::unique_ptr<FT_LibraryRec_, ftLibraryDeleter>;
using ftFacePtr = std::unique_ptr<FT_FaceRec_, ftFaceDeleter>;
using fcConfigPtr = std::unique_ptr<FcConfig, fcConfigDeleter>;
using fcPatternPtr = std::unique_ptr<FcPattern, fcPatternDeleter>;

/// A face opened for outline extraction, with the ink height of its capital "H" in font units.
struct fontFace {
    FT_Face face = nullptr;
    double capHeight = 0.0;
};

/// Process-wide FreeType library, fontconfig configuration and opened faces. FreeType objects
/// are not safe for concurrent use, so every use holds `mutex`. Destroyed at exit, faces before
/// the library that made them.
class fontCache {
public:
    static fontCache& instance() {
        static fontCache cache;
        return cache;
    }

    std::mutex mutex;

    /// The face for a family name; null when no font at all can be opened. Call under `mutex`.
    const fontFace* faceFor(const std::string& family) {
        if (const auto it = mByFamily.find(family); it != mByFamily.end()) return it->second;
        const fontFace* face = resolve(family);
        mByFamily.emplace(family, face);
        return face;
    }

private:
    fontCache() {
        FT_Library lib = nullptr;
        if (FT_Init_FreeType(&lib) == 0) mLibrary.reset(lib);
        else OX_LOG_DEBUG(kLogger, L"FreeType could not be initialised");
        mConfig.reset(FcInitLoadConfigAndFonts());
        if (!mConfig) OX_LOG_DEBUG(kLogger, L"fontconfig could not load its configuration");
    }
    fontCache(const fontCache&) = delete;
    fontCache& operator=(const fontCache&) = delete;

    struct location {
        std::string file;
        int index = 0;
        bool operator<(const location& o) const { return std::tie(file, index) < std::tie(o.file, o.index); }
    };

    static bool isGenericFamily(const std::string& family) {
        static const char* const kGeneric[] = {"sans-serif", "sans", "serif", "monospace", "mono", "system-ui"};
        for (const char* g : kGeneric)
            if (FcStrCmpIgnoreCase(reinterpret_cast<const FcChar8*>(g), reinterpret_cast<const FcChar8*>(family.c_str())) == 0)
                return true;
        return false;
    }

    /// The file fontconfig matches for `family`. With `exact`, only a font that really carries
    /// that family name (or a generic alias) counts: fontconfig always returns some font, and a
    /// silent substitute chosen by its similarity rules would differ from machine to machine.
    std::optional<location> match(const std::string& family, bool exact) const {
        if (!mConfig) return std::nullopt;
        const fcPatternPtr pattern(FcPatternCreate());
        if (!pattern) return std::nullopt;
        FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
        FcConfigSubstitute(mConfig.get(), pattern.get(), FcMatchPattern);
        FcDefaultSubstitute(pattern.get());
        FcResult result = FcResultNoMatch;
        const fcPatternPtr found(FcFontMatch(mConfig.get(), pattern.get(), &result));
        if (!found) return std::nullopt;

        if (exact && !isGenericFamily(family)) {
            bool named = false;
            FcChar8* name = nullptr;
            for (int i = 0; !named && FcPatternGetString(found.get(), FC_FAMILY, i, &name) == FcResultMatch; ++i)
                named = FcStrCmpIgnoreCase(name, reinterpret_cast<const FcChar8*>(family.c_str())) == 0;
            if (!named) return std::nullopt;
        }
        FcChar8* file = nullptr;
        if (FcPatternGetString(found.get(), FC_FILE, 0, &file) != FcResultMatch) return std::nullopt;
        int index = 0;
        FcPatternGetInteger(found.get(), FC_INDEX, 0, &index);
        return location{reinterpret_cast<const char*>(file), index};
    }

    const fontFace* resolve(const std::string& family) {
        const std::string defaultFamily = ox::getMBCS(text::kDefaultFont);
        std::optional<location> where = family.empty() ? std::nullopt : match(family, true);
        if (!where) {
            if (!family.empty())
                OX_LOG_DEBUG(kLogger, L"font family \"%s\" not installed, using \"%s\"", family.c_str(), defaultFamily.c_str());
            where = match(defaultFamily, true);
        }
        if (!where) where = match(defaultFamily, false); // whatever the system offers
        if (!where) {
            OX_LOG_DEBUG(kLogger, L"no font found for \"%s\"", family.c_str());
            return nullptr;
        }
        return open(*where);
    }

    const fontFace* open(const location& where) {
        if (const auto it = mByFile.find(where); it != mByFile.end()) return &it->second.second;
        if (!mLibrary) return nullptr;
        FT_Face raw = nullptr;
        if (FT_New_Face(mLibrary.get(), where.file.c_str(), where.index, &raw) != 0 || !raw) {
            OX_LOG_DEBUG(kLogger, L"cannot open font file \"%s\"", where.file.c_str());
            return nullptr;
        }
        ftFacePtr face(raw);
        if (!FT_IS_SCALABLE(raw)) {
            OX_LOG_DEBUG(kLogger, L"font file \"%s\" has no outlines", where.file.c_str());
            return nullptr;
        }
        FT_Select_Charmap(raw, FT_ENCODING_UNICODE);
        fontFace entry{raw, capHeightOf(raw)};
        auto& slot = mByFile[where];
        slot = {std::move(face), entry};
        return &slot.second;
    }

    static double capHeightOf(FT_Face face) {
        const FT_UInt h = FT_Get_Char_Index(face, 'H');
        if (h != 0 && FT_Load_Glyph(face, h, FT_LOAD_NO_SCALE) == 0 &&
            face->glyph->format == FT_GLYPH_FORMAT_OUTLINE) {
            FT_BBox box;
            if (FT_Outline_Get_BBox(&face->glyph->outline, &box) == 0 && box.yMax > box.yMin)
                return static_cast<double>(box.yMax - box.yMin);
        }
        // A font without "H": its declared capital height, else a typical share of the em.
        if (const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
            os2 && os2->version >= 2 && os2->sCapHeight > 0)
            return os2->sCapHeight;
        return 0.7 * face->units_per_EM;
    }

    // Declaration order is destruction order reversed: faces go before the library.
    ftLibraryPtr mLibrary;
    fcConfigPtr mConfig;
    std::map<location, std::pair<ftFacePtr, fontFace>> mByFile;
    std::map<std::string, const fontFace*> mByFamily;
};

/// Collects the contours of one glyph, flattened, placed at the pen and scaled.
struct outlineSink {
    std::vector<polyline2d>* contours = nullptr;
    polyline2d current;
    double penX = 0.0, penY = 0.0, scale = 1.0;
    double tolerance = 1.0; // chord error allowed in font units
    double lastX = 0.0, lastY = 0.0;
    double minY = HUGE_VAL, maxY = -HUGE_VAL;

    void emit(double x, double y) {
        lastX = x;
        lastY = y;
        const double py = (penY + y) * scale;
        minY = std::min(minY, py);
        maxY = std::max(maxY, py);
        current.addPoint({(penX + x) * scale, py});
    }
    void finish() {
        // The decomposition returns to the start point; closure is implicit, so drop the repeat.
        if (current.size() > 1 && current[0] == current[current.size() - 1]) {
            std::vector<point2d> pts = current.points();
            pts.pop_back();
            current = polyline2d(std::move(pts));
        }
        if (current.size() >= 3) contours->push_back(std::move(current));
        current = polyline2d();
    }
    /// Uniform steps whose chord error stays within the tolerance: a curve whose second
    /// derivative is bounded by `secondDerivative` deviates from its n-segment chords by at most
    /// secondDerivative / (8 n²).
    int steps(double secondDerivative) const {
        const double n = std::ceil(std::sqrt(secondDerivative / (8.0 * tolerance)));
        return static_cast<int>(std::clamp(n, 1.0, 64.0));
    }

    static int moveTo(const FT_Vector* to, void* user) {
        auto* self = static_cast<outlineSink*>(user);
        self->finish();
        self->emit(to->x, to->y);
        return 0;
    }
    static int lineTo(const FT_Vector* to, void* user) {
        static_cast<outlineSink*>(user)->emit(to->x, to->y);
        return 0;
    }
    static int conicTo(const FT_Vector* control, const FT_Vector* to, void* user) {
        auto* self = static_cast<outlineSink*>(user);
        const double x0 = self->lastX, y0 = self->lastY;
        const double x1 = control->x, y1 = control->y, x2 = to->x, y2 = to->y;
        const int n = self->steps(2.0 * std::hypot(x0 - 2 * x1 + x2, y0 - 2 * y1 + y2));
        for (int i = 1; i <= n; ++i) {
            const double t = static_cast<double>(i) / n, u = 1.0 - t;
            self->emit(u * u * x0 + 2 * u * t * x1 + t * t * x2, u * u * y0 + 2 * u * t * y1 + t * t * y2);
        }
        return 0;
    }
    static int cubicTo(const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* to, void* user) {
        auto* self = static_cast<outlineSink*>(user);
        const double x0 = self->lastX, y0 = self->lastY;
        const double x1 = c1->x, y1 = c1->y, x2 = c2->x, y2 = c2->y, x3 = to->x, y3 = to->y;
        const double d = 6.0 * std::max(std::hypot(x0 - 2 * x1 + x2, y0 - 2 * y1 + y2),
                                        std::hypot(x1 - 2 * x2 + x3, y1 - 2 * y2 + y3));
        const int n = self->steps(d);
        for (int i = 1; i <= n; ++i) {
            const double t = static_cast<double>(i) / n, u = 1.0 - t;
            const double a = u * u * u, b = 3 * u * u * t, c = 3 * u * t * t, e = t * t * t;
            self->emit(a * x0 + b * x1 + c * x2 + e * x3, a * y0 + b * y1 + c * y2 + e * y3);
        }
        return 0;
    }
};

/// The next code point; joins UTF-16 surrogate pairs where wchar_t is 16 bits wide.
char32_t nextCodePoint(const ox::string& s, std::size_t& i) {
    const char32_t c = static_cast<char32_t>(s[i++]);
    if (c >= 0xD800 && c <= 0xDBFF && i < s.size()) {
        const char32_t low = static_cast<char32_t>(s[i]);
        if (low >= 0xDC00 && low <= 0xDFFF) {
            ++i;
            return 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        }
    }
    return c;
}

} // namespace

double text::getTextOutlines(const ox::string& textValue, const ox::string& font, double height, double& width,
                             std::vector<std::vector<polyline2d>>& outlines) {
    outlines.clear();
    width = 0.0;
    if (textValue.empty() || !(height > 0.0)) return 0.0;

    fontCache& cache = fontCache::instance();
    const std::lock_guard lock(cache.mutex);
    const fontFace* entry = cache.faceFor(ox::getMBCS(font));
    if (!entry) return 0.0;
    FT_Face face = entry->face;

    outlineSink sink;
    sink.scale = height / entry->capHeight;
    sink.tolerance = entry->capHeight / 500.0;
    const double lineHeight = face->height > 0 ? face->height : 1.2 * face->units_per_EM;
    const bool kerning = FT_HAS_KERNING(face);

    FT_Outline_Funcs funcs{};
    funcs.move_to = &outlineSink::moveTo;
    funcs.line_to = &outlineSink::lineTo;
    funcs.conic_to = &outlineSink::conicTo;
    funcs.cubic_to = &outlineSink::cubicTo;

    double widest = 0.0;
    FT_UInt previous = 0;
    for (std::size_t i = 0; i < textValue.size();) {
        const char32_t c = nextCodePoint(textValue, i);
        if (c == U'\n') {
            widest = std::max(widest, sink.penX);
            sink.penX = 0.0;
            sink.penY -= lineHeight;
            previous = 0;
            continue;
        }
        if (c < 0x20) continue; // other control characters have neither ink nor advance

        const FT_UInt glyph = FT_Get_Char_Index(face, c);
        if (kerning && previous != 0 && glyph != 0) {
            FT_Vector delta{};
            if (FT_Get_Kerning(face, previous, glyph, FT_KERNING_UNSCALED, &delta) == 0) sink.penX += delta.x;
        }
        previous = glyph;

        std::vector<polyline2d>& contours = outlines.emplace_back();
        if (FT_Load_Glyph(face, glyph, FT_LOAD_NO_SCALE) != 0) {
            OX_LOG_DEBUG(kLogger, L"cannot load glyph %u", static_cast<unsigned>(glyph));
            continue;
        }
        const FT_GlyphSlot slot = face->glyph;
        if (slot->format == FT_GLYPH_FORMAT_OUTLINE) {
            sink.contours = &contours;
            FT_Outline_Decompose(&slot->outline, &funcs, &sink);
            sink.finish();
        }
        // Font units: FT_LOAD_NO_SCALE leaves the metrics unscaled.
        sink.penX += static_cast<double>(slot->metrics.horiAdvance);
    }
    widest = std::max(widest, sink.penX);
    width = widest * sink.scale;
    return sink.maxY >= sink.minY ? sink.maxY - sink.minY : 0.0;
}

} // namespace oxGeo
