#include "oxgeopolyline.h"
#include "oxgeopolylinefactory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace oxGeo;

namespace {

constexpr double kPi = ox::angle::kPi;

/// The largest distance between a chord's midpoint and the circle, measured on the result.
double maxSagitta(const polyline3d& p, const point3d& centre, double radius) {
    double worst = 0.0;
    for (std::size_t i = 1; i < p.size(); ++i)
        worst = std::max(worst, radius - centre.distanceTo(p[i - 1] + (p[i] - p[i - 1]) * 0.5));
    return worst;
}

} // namespace

TEST(polyline2d, pointInsideConcaveOutlines) {
    // A "U": two arms with a notch between them that reaches down to y = 1.
    const std::vector<point2d> u = {{0, 0}, {3, 0}, {3, 3}, {2, 3}, {2, 1}, {1, 1}, {1, 3}, {0, 3}};
    // A five-pointed star: concave at every inner corner.
    std::vector<point2d> star;
    for (int i = 0; i < 10; ++i) {
        const double a = kPi / 2 + i * kPi / 5, r = i % 2 ? 0.4 : 1.0;
        star.push_back({r * std::cos(a), r * std::sin(a)});
    }
    struct testCase {
        const std::vector<point2d>* outline;
        point2d p;
        bool inside;
    };
    const testCase cases[] = {
        {&u, {0.5, 2}, true},      {&u, {2.5, 2}, true},       {&u, {1.5, 2}, false},  // arms and notch
        {&u, {1.5, 0.5}, true},    {&u, {0.5, 1}, true},       {&u, {2.5, 1}, true},   // ray through vertices
        {&u, {1.5, 3}, false},     {&u, {-1, 1}, false},       {&u, {1.5, -1e-6}, false},
        {&u, {1.5, 1}, true},      {&u, {0, 0}, true},         {&u, {2, 2}, true},     // boundary counts as inside
        {&u, {3 + 1e-12, 1}, true}, {&u, {3 + 1e-6, 1}, false}, {&u, {3 - 1e-6, 1}, true},
        {&star, {0, 0}, true},     {&star, {0, 0.9}, true},    {&star, {0.5, 0.5}, false}, // between two points
        {&star, {0, -0.5}, false}, {&star, {0, 1.0}, true},    {&star, {0, 1.001}, false},
    };
    for (const auto& c : cases) {
        // Either orientation, and with or without the first point repeated at the end.
        std::vector<point2d> reversed(c.outline->rbegin(), c.outline->rend());
        reversed.push_back(reversed.front());
        EXPECT_EQ(polyline2d(*c.outline).isPointInside(c.p), c.inside) << c.p.x() << ", " << c.p.y();
        EXPECT_EQ(polyline2d(reversed).isPointInside(c.p), c.inside) << c.p.x() << ", " << c.p.y();
    }
    EXPECT_FALSE(polyline2d({{0, 0}, {1, 1}}).isPointInside({0.5, 0.5})) << "two points enclose nothing";
}

TEST(polylinefactory, circlesMeetTheChordPrecisionWithFewestSegments) {
    struct testCase {
        double radius, precision;
    };
    const testCase cases[] = {{1, 0.01}, {10, 0.001}, {5, 1e-7}, {0.03, 0.005}, {1, 3}, {250, 0.5}, {-2, 0.01}};
    const point3d centre(1, -2, 0.5);
    for (const auto& c : cases) {
        polyline3d circle;
        circle.addPoint({99, 99, 99}); // replaced, not appended to
        polylinefactory::generateCircularPolyline(c.radius, c.precision, centre, circle);
        const double r = std::fabs(c.radius);
        const std::size_t n = circle.size() - 1;
        ASSERT_GE(n, 8u);
        EXPECT_EQ(circle[0], circle[n]) << "closed by repeating the first point";
        EXPECT_TRUE(circle[0].isEqualTo({centre.x() + r, centre.y(), centre.z()}, 1e-12));
        EXPECT_GT(circle[1].y(), centre.y()) << "counter-clockwise";
        for (const point3d& q : circle) {
            EXPECT_NEAR(centre.distanceTo(q), r, 1e-12 * r);
            EXPECT_EQ(q.z(), centre.z());
        }
        EXPECT_LE(maxSagitta(circle, centre, r), c.precision * (1 + 1e-9));
        if (n > 8) {
            EXPECT_GT(r * (1 - std::cos(kPi / (n - 1))), c.precision) << "one segment fewer would do";
        }
    }
    // Degenerate input: no crash, bounded output.
    polyline3d p;
    polylinefactory::generateCircularPolyline(0.0, 0.01, centre, p);
    EXPECT_EQ(p.size(), 9u);
    EXPECT_TRUE(std::all_of(p.begin(), p.end(), [&](const point3d& q) { return q == centre; }));
    polylinefactory::generateCircularPolyline(1.0, -1.0, centre, p);
    EXPECT_EQ(p.size(), 65537u);
    polylinefactory::generateCircularPolyline(1.0, 1e-300, centre, p);
    EXPECT_EQ(p.size(), 65537u);
}

TEST(polylinefactory, arcs) {
    const point3d centre(0, 0, 3);
    struct testCase {
        double degrees, radius, precision;
        point3d end;
    };
    const testCase cases[] = {
        {90, 2, 0.01, {0, 2, 3}}, {-90, 2, 0.01, {0, -2, 3}}, {270, 1, 1e-4, {0, -1, 3}}, {1, 1, 0.5, {std::cos(kPi / 180), std::sin(kPi / 180), 3}},
    };
    for (const auto& c : cases) {
        polyline3d arc;
        polylinefactory::generateArcPolyline(c.radius, ox::angle::fromDegree(c.degrees), c.precision, centre, arc);
        const std::size_t n = arc.size() - 1;
        const double step = std::fabs(c.degrees) * kPi / 180 / n;
        EXPECT_TRUE(arc[0].isEqualTo({c.radius, 0, 3}, 1e-12));
        EXPECT_TRUE(arc[n].isEqualTo(c.end, 1e-12)) << c.degrees;
        EXPECT_LE(maxSagitta(arc, centre, c.radius), c.precision * (1 + 1e-9));
        const std::size_t minimum = static_cast<std::size_t>(std::ceil(8 * std::fabs(c.degrees) / 360));
        EXPECT_GE(n, minimum);
        if (n > minimum) {
            EXPECT_GT(c.radius * (1 - std::cos(step * n / (n - 1) / 2)), c.precision);
        }
    }
    polyline3d none;
    polylinefactory::generateArcPolyline(1, ox::angle(), 0.1, centre, none);
    EXPECT_EQ(none.size(), 1u);
}
