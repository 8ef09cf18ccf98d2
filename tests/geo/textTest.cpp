#include "oxgeotext.h"

#include <gtest/gtest.h>

#include <thread>

using namespace oxGeo;

namespace {

using glyphs = std::vector<std::vector<polyline2d>>;

/// Even-odd over all contours of a glyph, as a filled glyph would be drawn.
bool inked(const std::vector<polyline2d>& glyph, const point2d& p) {
    int count = 0;
    for (const auto& contour : glyph) count += contour.isPointInside(p) ? 1 : 0;
    return count % 2 == 1;
}

boundBox2d boxOf(const std::vector<polyline2d>& glyph) {
    boundBox2d box;
    for (const auto& contour : glyph) box.grow(contour.boundingBox());
    return box;
}

} // namespace

TEST(text, capitalHeightAndClosedContours) {
    text t;
    for (double height : {2.0, 0.25, 40.0}) {
        double width = 0;
        glyphs out;
        EXPECT_NEAR(t.getTextOutlines(L"H", L"DejaVu Sans", height, width, out), height, 1e-12 * height);
        ASSERT_EQ(out.size(), 1u);
        const boundBox2d box = boxOf(out[0]);
        EXPECT_NEAR(box.size().y(), height, 1e-12 * height);
        EXPECT_NEAR(box.min().y(), 0.0, 1e-12 * height) << "sits on the baseline";
        EXPECT_GT(width, box.max().x()) << "advance includes the side bearings";
        EXPECT_LT(width, height * 1.5);
    }

    double width = 0;
    glyphs out;
    const double inkHeight = t.getTextOutlines(L"Og", L"DejaVu Sans", 2.0, width, out);
    EXPECT_GT(inkHeight, 2.0) << "the descender of g and the overshoot of O";
    ASSERT_EQ(out.size(), 2u);
    const std::vector<polyline2d>& o = out[0];
    ASSERT_EQ(o.size(), 2u) << "outer and inner contour";
    for (const auto& contour : o) {
        EXPECT_GT(contour.size(), 16u) << "curves are subdivided";
        EXPECT_NE(contour[0], contour[contour.size() - 1]) << "closure is implicit, the start is not repeated";
        // Consecutive points stay close: no contour jumps across the glyph.
        for (std::size_t i = 0; i < contour.size(); ++i)
            EXPECT_LT(contour[i].distanceTo(contour[(i + 1) % contour.size()]), 0.2);
    }
    // Even-odd: the ring is ink, the hole and the outside are not.
    const boundBox2d outer = boxOf(o);
    const boundBox2d hole = o[0].boundingBox().size().x() < o[1].boundingBox().size().x() ? o[0].boundingBox()
                                                                                         : o[1].boundingBox();
    const double midY = outer.center().y();
    EXPECT_FALSE(inked(o, outer.center()));
    EXPECT_TRUE(inked(o, {0.5 * (outer.min().x() + hole.min().x()), midY}));
    EXPECT_FALSE(inked(o, {outer.min().x() - 0.01, midY}));
}

TEST(text, layoutKerningAndSpaces) {
    text t;
    double wH = 0, wHH = 0, wA = 0, wV = 0, wAV = 0, wSpaced = 0;
    glyphs out;
    t.getTextOutlines(L"H", L"", 1.0, wH, out);
    t.getTextOutlines(L"HH", L"", 1.0, wHH, out);
    EXPECT_NEAR(wHH, 2 * wH, 1e-12);
    EXPECT_NEAR(boxOf(out[1]).min().x() - boxOf(out[0]).min().x(), wH, 1e-12) << "second glyph at the advance";
    t.getTextOutlines(L"A", L"", 1.0, wA, out);
    t.getTextOutlines(L"V", L"", 1.0, wV, out);
    t.getTextOutlines(L"AV", L"", 1.0, wAV, out);
    EXPECT_LT(wAV, wA + wV - 0.01) << "kerned pair";
    t.getTextOutlines(L"H H", L"", 1.0, wSpaced, out);
    ASSERT_EQ(out.size(), 3u);
    EXPECT_TRUE(out[1].empty()) << "a space has no ink";
    EXPECT_GT(wSpaced, wHH);
    // A second line lies below the first and does not widen the text.
    const double twoLines = t.getTextOutlines(L"H\nH", L"", 1.0, wSpaced, out);
    EXPECT_NEAR(wSpaced, wH, 1e-12);
    EXPECT_GT(twoLines, 2.0);
    EXPECT_LT(boxOf(out.back()).max().y(), 0.0);
}

TEST(text, fallbackEmptyAndConcurrentUse) {
    text t;
    double w1 = 0, w2 = 0;
    glyphs known, unknown;
    const double h1 = t.getTextOutlines(L"Ag", L"DejaVu Sans", 3.0, w1, known);
    const double h2 = t.getTextOutlines(L"Ag", L"No Such Family 4711", 3.0, w2, unknown);
    EXPECT_EQ(h1, h2);
    EXPECT_EQ(w1, w2);
    ASSERT_EQ(known.size(), unknown.size());
    EXPECT_EQ(known[1][0].points(), unknown[1][0].points());
    // A family that exists is not replaced by the default.
    glyphs mono;
    double wMono = 0;
    t.getTextOutlines(L"Ag", L"DejaVu Sans Mono", 3.0, wMono, mono);
    EXPECT_NE(wMono, w1);

    double width = 5;
    glyphs out(3);
    EXPECT_EQ(t.getTextOutlines(L"", L"DejaVu Sans", 2.0, width, out), 0.0);
    EXPECT_EQ(width, 0.0);
    EXPECT_TRUE(out.empty());

    std::vector<std::thread> threads;
    std::vector<glyphs> results(4);
    for (auto& r : results)
        threads.emplace_back([&r] {
            double w = 0;
            for (int i = 0; i < 20; ++i) text().getTextOutlines(L"Thread-safe: Ag?", L"DejaVu Serif", 1.0, w, r);
        });
    for (auto& th : threads) th.join();
    for (const auto& r : results) {
        ASSERT_EQ(r.size(), results[0].size());
        for (std::size_t g = 0; g < r.size(); ++g)
            for (std::size_t c = 0; c < r[g].size(); ++c) EXPECT_EQ(r[g][c].points(), results[0][g][c].points());
    }
}
