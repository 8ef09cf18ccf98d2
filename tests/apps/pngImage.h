#pragma once
// oxview's PNG output, read back as RGB for the tests to look at.
#include <png.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <vector>

namespace oxtest {

using rgb_t = std::array<int, 3>;

struct pngImage_t {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgb;  ///< top row first

    rgb_t at(int x, int y) const {
        const auto* p = &rgb[(static_cast<std::size_t>(y) * width + x) * 3];
        return {p[0], p[1], p[2]};
    }
    /// Within `tolerance` summed over the three channels.
    static bool near(const rgb_t& a, const rgb_t& b, int tolerance) {
        return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]) <= tolerance;
    }
};

inline std::optional<pngImage_t> readPngFile(const std::filesystem::path& path) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, path.c_str())) return std::nullopt;
    png.format = PNG_FORMAT_RGB;
    pngImage_t image{static_cast<int>(png.width), static_cast<int>(png.height), {}};
    image.rgb.resize(PNG_IMAGE_SIZE(png));
    if (!png_image_finish_read(&png, nullptr, image.rgb.data(), 0, nullptr)) return std::nullopt;
    return image;
}

} // namespace oxtest
