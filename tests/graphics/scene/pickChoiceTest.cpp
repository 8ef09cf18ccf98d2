// Which hit pickSelect takes, on depths given here (no GL): the nearest, a preferred type within the
// depth band, and the band itself. pickingTest.cpp checks that real hits reach the rule.
#include "scene/pickchoice.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace {

using oxGraphics::choosePick;
using oxGraphics::pickCandidate_t;
using oxGraphics::pickDepthTolerance;

TEST(pickChoiceTest, theNearestWinsUnlessAPreferredTypeIsWithinTheBand) {
    constexpr std::optional<std::size_t> none;
    const struct {
        const char* what;
        std::uint32_t tolerance;
        std::vector<pickCandidate_t> hits;
        std::optional<std::size_t> chosen;
    } cases[] = {
        {"no hits", 10, {}, none},
        {"one hit", 10, {{500, false}}, 0},
        {"a nearer hit beyond the band", 10, {{500, false}, {400, false}}, 1},
        {"a farther hit beyond the band", 10, {{400, false}, {500, false}}, 0},
        {"strictly nearer within the band", 10, {{500, false}, {495, false}}, 1},
        {"equally near: the first stays", 10, {{500, false}, {500, false}}, 0},
        {"farther within the band", 10, {{500, false}, {505, false}}, 0},
        {"preferred and farther within the band", 10, {{500, false}, {509, true}}, 1},
        {"preferred but just beyond the band", 10, {{500, false}, {510, true}}, 0},
        {"a preferred best keeps a nearer plain hit off", 10, {{505, true}, {496, false}}, 0},
        {"... unless that one is beyond the band", 10, {{505, true}, {495, false}}, 1},
        {"of two preferred within the band the later", 10, {{500, true}, {505, true}}, 1},
        {"no band: preference does not count", 0, {{500, false}, {500, true}}, 0},
        {"no band: strictly nearer wins", 0, {{500, false}, {499, false}}, 1},
        // Depths nearer the front than the band wrap around (unsigned arithmetic): the first such
        // hit is taken and a nearer one after it is not; a hit at exactly tolerance − 1 never is.
        {"near the front, the first", 10, {{5, false}, {3, false}}, 0},
        {"at tolerance - 1", 10, {{9, false}}, none},
        {"the far end of the depth range", 0, {{0xFFFFFFFFu, false}}, none},
    };
    for (const auto& c : cases)
        EXPECT_EQ(choosePick(c.hits, c.tolerance), c.chosen) << c.what;
}

TEST(pickChoiceTest, theBandGrowsWithTheSquareAndTheViewScaleAndStaysInTheDepthRange) {
    const struct {
        unsigned int hsize;
        double scaleZ;
        std::uint32_t tolerance;
    } cases[] = {
        {1, 1.0, 40000},         {3, 0.5, 60000},          {0, 7.0, 0},
        {1, 0.00001, 0},         // 0.4: the integer part
        {1, -2.0, 0},            {1, std::numeric_limits<double>::quiet_NaN(), 0},
        {0xFFFFFFFFu, 10000.0, 0xFFFFFFFFu},
    };
    for (const auto& c : cases)
        EXPECT_EQ(pickDepthTolerance(c.hsize, c.scaleZ), c.tolerance) << c.hsize << " x " << c.scaleZ;
}

} // namespace
