#pragma once
// RGBA8 images for GL tests: PNG files and comparison against reference images.
//
// A reference image lives in tests/data as <name>.png, with <name>.renderer.txt holding the
// GL_RENDERER it was made with. A failing comparison writes <name>.actual.png and <name>.diff.png
// into the build tree (OX_TEST_OUTPUT_DIR) and names them in its message, so a test run never
// touches the sources. OX_UPDATE_REFERENCE_IMAGES=1 in the environment rewrites the reference and
// its renderer from the actual image instead of comparing (a deliberate act, never a fallback).
// A reference made by another renderer is not compared: the test is skipped, naming both.
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#ifndef OX_TEST_DATA_DIR
#error "OX_TEST_DATA_DIR must name the tests/data folder (the oxImageTestSupport target defines it)"
#endif
#ifndef OX_TEST_OUTPUT_DIR
#error "OX_TEST_OUTPUT_DIR must name a folder in the build tree (the oxImageTestSupport target defines it)"
#endif

namespace oxtest {

/// RGBA8 pixels, top row first, as PNG stores them.
struct rgbaImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    rgbaImage() = default;
    rgbaImage(int w, int h) : width(w), height(h), pixels(static_cast<std::size_t>(w) * h * 4, 0) {}

    std::uint8_t* at(int x, int y) { return &pixels[(static_cast<std::size_t>(y) * width + x) * 4]; }
    const std::uint8_t* at(int x, int y) const { return &pixels[(static_cast<std::size_t>(y) * width + x) * 4]; }
};

inline bool writePng(const std::filesystem::path& path, const rgbaImage& image) {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    png.format = PNG_FORMAT_RGBA;
    const bool written = png_image_write_to_file(&png, path.string().c_str(), 0, image.pixels.data(), 0, nullptr) != 0;
    png_image_free(&png);
    return written;
}

/// Any PNG, converted to RGBA8; empty when the file is missing or unreadable.
inline std::optional<rgbaImage> readPng(const std::filesystem::path& path) {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&png, path.string().c_str()) == 0) return std::nullopt;
    png.format = PNG_FORMAT_RGBA;
    rgbaImage image(static_cast<int>(png.width), static_cast<int>(png.height));
    if (png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) == 0) {
        png_image_free(&png);
        return std::nullopt;
    }
    return image;
}

/// Per-channel differences of two images of the same size.
struct imageDifference {
    int maxDelta = 0;        ///< largest absolute difference of any channel of any pixel
    double meanDelta = 0.0;  ///< mean absolute difference over all channels of all pixels
    rgbaImage diff;          ///< |actual - expected| per colour channel, opaque
};

inline imageDifference compareImages(const rgbaImage& actual, const rgbaImage& expected) {
    imageDifference result;
    result.diff = rgbaImage(actual.width, actual.height);
    if (actual.pixels.empty()) return result;
    std::uint64_t sum = 0;
    for (std::size_t p = 0; p + 3 < actual.pixels.size(); p += 4) {
        int delta[4];
        for (int c = 0; c < 4; ++c) {
            delta[c] = std::abs(int(actual.pixels[p + c]) - int(expected.pixels[p + c]));
            result.maxDelta = std::max(result.maxDelta, delta[c]);
            sum += static_cast<std::uint64_t>(delta[c]);
        }
        // The diff image stays opaque so it can be looked at; an alpha difference shows as grey.
        for (int c = 0; c < 3; ++c) result.diff.pixels[p + c] = static_cast<std::uint8_t>(std::max(delta[c], delta[3]));
        result.diff.pixels[p + 3] = 255;
    }
    result.meanDelta = double(sum) / double(actual.pixels.size());
    return result;
}

inline bool updatingReferenceImages() {
    const char* value = std::getenv("OX_UPDATE_REFERENCE_IMAGES");
    return value != nullptr && std::string(value) == "1";
}

/// Where a comparison reads its reference and writes what it saw.
struct referenceStore {
    std::filesystem::path references = OX_TEST_DATA_DIR;  ///< <name>.png and <name>.renderer.txt
    std::filesystem::path output = OX_TEST_OUTPUT_DIR;    ///< <name>.actual.png and <name>.diff.png
};

/// What a reference's renderer must share with the current one: the name without the details in
/// parentheses. llvmpipe puts its LLVM version and the CPU's vector width there ("llvmpipe (LLVM
/// 15.0.6, 256 bits)"); they change from one machine to the next while its rasterisation does not,
/// and the tolerances take up the rounding that differs. Another driver or GPU changes the name.
inline std::string rendererFamily(const std::string& renderer) { return renderer.substr(0, renderer.find(" (")); }

/// Compares `actual`, rendered by `renderer`, with the reference <name>.png: passes when no channel
/// differs by more than `maxTolerance` and the mean channel difference is at most `meanTolerance`.
/// A reference of another renderer family skips the current test (the result is then a success).
inline ::testing::AssertionResult matchesReferenceImage(const rgbaImage& actual, const std::string& name,
                                                        int maxTolerance, double meanTolerance,
                                                        const std::string& renderer, const referenceStore& store = {}) {
    namespace fs = std::filesystem;
    const auto expectedPath = store.references / (name + ".png");
    const auto rendererPath = store.references / (name + ".renderer.txt");
    const auto actualPath = store.output / (name + ".actual.png");
    const auto diffPath = store.output / (name + ".diff.png");
    std::error_code ignored;
    // Images of an earlier failure would be taken for this run's.
    fs::remove(actualPath, ignored);
    fs::remove(diffPath, ignored);
    const auto keepActual = [&] {
        fs::create_directories(actualPath.parent_path(), ignored);
        return writePng(actualPath, actual);
    };

    if (updatingReferenceImages()) {
        fs::create_directories(expectedPath.parent_path(), ignored);
        std::ofstream rendererFile(rendererPath, std::ios::trunc);
        rendererFile << renderer << '\n';
        if (!writePng(expectedPath, actual) || !rendererFile.flush())
            return ::testing::AssertionFailure() << "cannot write reference image " << expectedPath << " or "
                                                 << rendererPath;
        std::cout << "[ reference ] rewrote " << expectedPath.string() << " (" << renderer << ")\n";
        return ::testing::AssertionSuccess();
    }

    const auto expected = readPng(expectedPath);
    if (!expected) {
        keepActual();
        return ::testing::AssertionFailure() << "reference image " << expectedPath << " is missing or unreadable; "
                                             << "the rendered image is " << actualPath
                                             << "; rerun with OX_UPDATE_REFERENCE_IMAGES=1 to adopt it";
    }
    std::string madeBy;
    std::ifstream rendererFile(rendererPath);
    if (!std::getline(rendererFile, madeBy) || madeBy.empty()) {
        keepActual();
        return ::testing::AssertionFailure() << "reference image " << expectedPath << " names no renderer in "
                                             << rendererPath << "; the rendered image is " << actualPath
                                             << "; rerun with OX_UPDATE_REFERENCE_IMAGES=1 to adopt it";
    }
    if (rendererFamily(madeBy) != rendererFamily(renderer)) {
        [&] { GTEST_SKIP() << "reference image " << expectedPath << " was made by \"" << madeBy
                           << "\", this run renders with \"" << renderer << "\""; }();
        return ::testing::AssertionSuccess() << "not compared: made by another renderer";
    }
    if (expected->width != actual.width || expected->height != actual.height) {
        keepActual();
        return ::testing::AssertionFailure() << "image is " << actual.width << "x" << actual.height << " but reference "
                                             << expectedPath << " is " << expected->width << "x" << expected->height
                                             << "; the rendered image is " << actualPath;
    }
    const imageDifference difference = compareImages(actual, *expected);
    if (difference.maxDelta <= maxTolerance && difference.meanDelta <= meanTolerance)
        return ::testing::AssertionSuccess();
    keepActual();
    fs::create_directories(diffPath.parent_path(), ignored);
    writePng(diffPath, difference.diff);
    return ::testing::AssertionFailure() << "image differs from " << expectedPath << ": max channel difference "
                                         << difference.maxDelta << " (tolerance " << maxTolerance
                                         << "), mean " << difference.meanDelta << " (tolerance " << meanTolerance
                                         << "); wrote " << actualPath << " and " << diffPath;
}

} // namespace oxtest
