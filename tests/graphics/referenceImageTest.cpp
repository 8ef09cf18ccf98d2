// The image helpers every rendering test relies on: reference comparison with tolerances and the
// orientation of read-back regions.
#include "glTestFixture.h"
#include "referenceImage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

class referenceImageTest : public ::testing::Test {
protected:
    void SetUp() override {
        mDirectory = fs::temp_directory_path() /
                     ("oxReferenceImageTest-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
                      std::to_string(reinterpret_cast<std::uintptr_t>(this)));
        fs::create_directories(mDirectory);
    }
    void TearDown() override {
        unsetenv("OX_UPDATE_REFERENCE_IMAGES");
        fs::remove_all(mDirectory);
    }
    fs::path mDirectory;
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

TEST_F(referenceImageTest, comparesWithinMaxAndMeanTolerances) {
    const oxtest::rgbaImage reference = gradient();
    // The reference is written only on request.
    EXPECT_FALSE(oxtest::matchesReferenceImage(reference, "ref", 0, 0.0, mDirectory));
    EXPECT_TRUE(fs::exists(mDirectory / "ref.actual.png"));
    EXPECT_FALSE(fs::exists(mDirectory / "ref.png"));
    setenv("OX_UPDATE_REFERENCE_IMAGES", "1", 1);
    EXPECT_TRUE(oxtest::matchesReferenceImage(reference, "ref", 0, 0.0, mDirectory));
    unsetenv("OX_UPDATE_REFERENCE_IMAGES");
    EXPECT_FALSE(fs::exists(mDirectory / "ref.actual.png"));
    EXPECT_TRUE(oxtest::matchesReferenceImage(reference, "ref", 0, 0.0, mDirectory));

    // Red channel of every pixel off by 2: max 2, mean 8/16 = 0.5.
    oxtest::rgbaImage shifted = reference;
    for (int i = 0; i < 4; ++i) shifted.pixels[std::size_t(i) * 4] += 2;
    const struct { int maxTolerance; double meanTolerance; bool matches; } cases[] = {
        {2, 0.5, true}, {1, 0.5, false}, {2, 0.49, false}, {255, 0.49, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(bool(oxtest::matchesReferenceImage(shifted, "ref", c.maxTolerance, c.meanTolerance, mDirectory)),
                  c.matches)
            << c.maxTolerance << " " << c.meanTolerance;
        EXPECT_EQ(fs::exists(mDirectory / "ref.actual.png"), !c.matches);
        EXPECT_EQ(fs::exists(mDirectory / "ref.diff.png"), !c.matches);
    }
    const auto diff = oxtest::readPng(mDirectory / "ref.diff.png");
    ASSERT_TRUE(diff);
    EXPECT_EQ((std::vector<std::uint8_t>(diff->at(1, 1), diff->at(1, 1) + 4)), (std::vector<std::uint8_t>{2, 0, 0, 255}));
    const auto actual = oxtest::readPng(mDirectory / "ref.actual.png");
    ASSERT_TRUE(actual);
    EXPECT_EQ(actual->pixels, shifted.pixels);

    // A different size never matches, whatever the tolerance.
    EXPECT_FALSE(oxtest::matchesReferenceImage(oxtest::rgbaImage(2, 1), "ref", 255, 255.0, mDirectory));
}

class readRegionTest : public oxtest::glTest {};

TEST_F(readRegionTest, regionsAreTopRowFirstAndPackStateIsKept) {
    oxtest::clearTo(0, 0, 1, 1);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 4, 1);   // bottom row of the 4x2 region
    oxtest::clearTo(1, 0, 0, 1);
    glDisable(GL_SCISSOR_TEST);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);

    const oxtest::rgbaImage region = oxtest::readRegion(0, 0, 4, 2);
    EXPECT_EQ((std::vector<std::uint8_t>(region.at(3, 0), region.at(3, 0) + 4)), (std::vector<std::uint8_t>{0, 0, 255, 255}));
    EXPECT_EQ((std::vector<std::uint8_t>(region.at(3, 1), region.at(3, 1) + 4)), (std::vector<std::uint8_t>{255, 0, 0, 255}));
    EXPECT_EQ(oxtest::readPixel(0, 0), (oxtest::rgba8{255, 0, 0, 255}));
    EXPECT_EQ(oxtest::readGlInteger(GL_PACK_ALIGNMENT), 8);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
}

} // namespace
