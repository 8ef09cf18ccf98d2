// The reference comparison every rendering test relies on, on images made here (no GL): its
// tolerances, where it writes what it saw, and the renderer each reference is tied to.
#include "referenceImage.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr const char* kRenderer = "llvmpipe (LLVM 15.0.6, 256 bits)";

class referenceImageTest : public ::testing::Test {
protected:
    void SetUp() override {
        const fs::path root = fs::temp_directory_path() /
                              ("oxReferenceImageTest-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
                               "-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)));
        mStore = {root / "data", root / "output"};
        fs::create_directories(mStore.references);
    }
    void TearDown() override {
        unsetenv("OX_UPDATE_REFERENCE_IMAGES");
        fs::remove_all(mStore.references.parent_path());
    }
    ::testing::AssertionResult matches(const oxtest::rgbaImage& image, int maxTolerance = 0, double meanTolerance = 0.0,
                                       const std::string& renderer = kRenderer) {
        return oxtest::matchesReferenceImage(image, "sub/ref", maxTolerance, meanTolerance, renderer, mStore);
    }
    void adopt(const oxtest::rgbaImage& image) {
        setenv("OX_UPDATE_REFERENCE_IMAGES", "1", 1);
        EXPECT_TRUE(matches(image));
        unsetenv("OX_UPDATE_REFERENCE_IMAGES");
    }
    bool wroteActual() const { return fs::exists(mStore.output / "sub/ref.actual.png"); }
    bool wroteDiff() const { return fs::exists(mStore.output / "sub/ref.diff.png"); }

    oxtest::referenceStore mStore;
};

oxtest::rgbaImage gradient() {
    oxtest::rgbaImage image(2, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x) {
            std::uint8_t* p = image.at(x, y);
            p[0] = std::uint8_t(100 + 50 * x);
            p[1] = std::uint8_t(100 + 50 * y);
            p[2] = 30;
            p[3] = 255;
        }
    return image;
}

TEST_F(referenceImageTest, comparesWithinMaxAndMeanTolerancesAndWritesFailuresToTheOutputDirectory) {
    const oxtest::rgbaImage reference = gradient();
    // The reference is written only on request; the failure names the image it kept.
    const auto missing = matches(reference);
    EXPECT_FALSE(missing);
    EXPECT_NE(std::string(missing.message()).find((mStore.output / "sub/ref.actual.png").string()), std::string::npos)
        << missing.message();
    EXPECT_TRUE(wroteActual());
    EXPECT_FALSE(fs::exists(mStore.references / "sub/ref.png"));
    adopt(reference);
    EXPECT_FALSE(wroteActual());
    EXPECT_TRUE(matches(reference));

    // Red channel of every pixel off by 2: max 2, mean 8/16 = 0.5.
    oxtest::rgbaImage shifted = reference;
    for (int i = 0; i < 4; ++i) shifted.pixels[std::size_t(i) * 4] += 2;
    const struct { int maxTolerance; double meanTolerance; bool matches; } cases[] = {
        {2, 0.5, true}, {1, 0.5, false}, {2, 0.49, false}, {255, 0.49, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(bool(matches(shifted, c.maxTolerance, c.meanTolerance)), c.matches)
            << c.maxTolerance << " " << c.meanTolerance;
        EXPECT_EQ(wroteActual(), !c.matches);
        EXPECT_EQ(wroteDiff(), !c.matches);
    }
    const auto diff = oxtest::readPng(mStore.output / "sub/ref.diff.png");
    ASSERT_TRUE(diff);
    EXPECT_EQ((std::vector<std::uint8_t>(diff->at(1, 1), diff->at(1, 1) + 4)), (std::vector<std::uint8_t>{2, 0, 0, 255}));
    const auto actual = oxtest::readPng(mStore.output / "sub/ref.actual.png");
    ASSERT_TRUE(actual);
    EXPECT_EQ(actual->pixels, shifted.pixels);
    // Nothing of a failure lands beside the reference.
    EXPECT_EQ(std::distance(fs::directory_iterator(mStore.references / "sub"), fs::directory_iterator()), 2);

    // A different size never matches, whatever the tolerance.
    EXPECT_FALSE(matches(oxtest::rgbaImage(2, 1), 255, 255.0));
}

TEST_F(referenceImageTest, aReferenceIsComparedOnlyWithImagesOfItsOwnRenderer) {
    const oxtest::rgbaImage reference = gradient();
    adopt(reference);
    std::ifstream rendererFile(mStore.references / "sub/ref.renderer.txt");
    std::string recorded;
    std::getline(rendererFile, recorded);
    EXPECT_EQ(recorded, kRenderer);

    oxtest::rgbaImage other = reference;
    other.pixels[0] = 0;
    const struct {
        const char* renderer;
        bool compared;
    } cases[] = {
        {kRenderer, true},
        {"llvmpipe (LLVM 17.0.6, 128 bits)", true},  // another build of the same rasteriser
        {"softpipe", false},
        {"AMD Radeon RX 6600 (radeonsi, navi23, LLVM 15.0.7, DRM 3.49, 6.1.0)", false},
    };
    for (const auto& c : cases) {
        ::testing::TestPartResultArray reported;
        bool matched = false;
        {
            const ::testing::ScopedFakeTestPartResultReporter intercept(
                ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &reported);
            matched = matches(other, 0, 0.0, c.renderer);
        }
        EXPECT_EQ(matched, !c.compared) << c.renderer << ": a skipped comparison passes, a compared one sees the change";
        ASSERT_EQ(reported.size(), c.compared ? 0 : 1) << c.renderer;
        if (c.compared) continue;
        EXPECT_TRUE(reported.GetTestPartResult(0).skipped());
        const std::string reason = reported.GetTestPartResult(0).message();
        EXPECT_NE(reason.find(kRenderer), std::string::npos) << reason;
        EXPECT_NE(reason.find(c.renderer), std::string::npos) << reason;
    }

    // A reference that names no renderer is not trusted.
    fs::remove(mStore.references / "sub/ref.renderer.txt");
    const auto unnamed = matches(reference);
    EXPECT_FALSE(unnamed);
    EXPECT_NE(std::string(unnamed.message()).find("names no renderer"), std::string::npos) << unnamed.message();
}

} // namespace
