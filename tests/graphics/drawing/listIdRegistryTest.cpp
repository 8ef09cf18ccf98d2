// The display-list id registry on its own: the order ids are issued in, without GL.
#include "drawing/gllistidregistry.h"

#include <gtest/gtest.h>

using oxGraphics::openGL::glListIdRegistry;

TEST(glListIdRegistry, issuesInOrderSkipsReservedIdsAndZeroAndWraps) {
    glListIdRegistry registry;
    EXPECT_EQ(registry.next(), 1u);
    registry.reserve(2);
    registry.reserve(3);
    EXPECT_EQ(registry.next(), 4u);
    registry.release(2);
    EXPECT_EQ(registry.next(), 5u) << "monotonic: a released id behind the counter is not reissued";
    EXPECT_FALSE(registry.isReserved(2));
    EXPECT_TRUE(registry.isReserved(3));

    glListIdRegistry top(0xFFFFFFFDu);
    top.reserve(0xFFFFFFFEu);
    top.reserve(1);
    EXPECT_EQ(top.next(), 0xFFFFFFFFu);
    EXPECT_EQ(top.next(), 2u) << "wraps at 2^32, past 0 (no list name) and the reserved 1";
    EXPECT_EQ(top.lastIssued(), 2u);
}
