#include "geometry/koline.h"
#include "geometry/kotolerance.h"

#include "geometry/geometrytest.h"

#include <gtest/gtest.h>

#include <random>

// The segment test's upper bound is the literal 1.000000000001.
static_assert(1 + koTolerance::Epsilon == 1.000000000001, "segment bound");

TEST(KoLineIntersect, SegmentsMeetingAtEndPoints)
{
    // At one segment's end (u1 = 1), at both ends (u1 = u2 = 1), 2e-12 beyond.
    EXPECT_EQ(koLine::intersect(0, 0, 1, 0, 1, -1, 1, 1, false, false), koPoint(1, 0));
    EXPECT_EQ(koLine::intersect(0, 0, 1, 1, 2, 0, 1, 1, false, false), koPoint(1, 1));
    EXPECT_TRUE(koLine::intersect(0, 0, 1, 0, 1 + 2e-12, -1, 1 + 2e-12, 1, false, false).isNaN());
    EXPECT_FALSE(koLine::intersect(0, 0, 1, 0, 1 + 2e-12, -1, 1 + 2e-12, 1, false, true).isNaN())
            << "the infinite lines still cross";
}

TEST(KoLineIntersect, ParallelAndCollinearGiveNaN)
{
    EXPECT_TRUE(koLine(0, 0, 1, 1, true).intersect(koLine(0, 1, 1, 1, true), true).isNaN());
    EXPECT_TRUE(koLine(0, 0, 2, 0, false).intersect(koLine(1, 0, 3, 0, false), false).isNaN());
}

TEST(KoLineIntersect, InfiniteLinesMeetOnBoth)
{
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> u(-10, 10);
    for (int i = 0; i < 200; ++i) {
        const koLine l1(u(rng), u(rng), u(rng), u(rng), true),
                l2(u(rng), u(rng), u(rng), u(rng), true);
        const koPoint p = l1.intersect(l2, true);
        const std::string what =
                hexf(l1.px) + " " + hexf(l1.vx) + " " + hexf(l2.px) + " " + hexf(l2.vx);
        EXPECT_NEAR(l1.getDistance(p) + l2.getDistance(p), 0, 1e-9) << what;
    }
}

TEST(KoLineSide, PointOnLineIsZeroWithinOrBeyondExtent)
{
    const koLine l(0, 0, 1, 1, true);
    for (bool infinite : {false, true}) {
        EXPECT_EQ(l.getSide(koPoint(0.5, 0.5), infinite), 0);
        EXPECT_EQ(l.getSide(koPoint(5, 5), infinite), 0);
    }
    EXPECT_EQ(l.getSide(koPoint(1, 0), false), 1);
    EXPECT_EQ(l.getSide(koPoint(0, 1), true), -1);
    EXPECT_EQ(koLine::getSide(1, 1, 2, 2, 0, 1, false, false), -1);
}

TEST(KoLineDistance, SignConventions)
{
    // Vertical line going up: a point to the right is positive, x - px.
    EXPECT_EQ(koLine::getSignedDistance(1, 0, 0, 5, 4, 7, true), 3);
    EXPECT_EQ(koLine::getSignedDistance(1, 0, 0, -5, 4, 7, true), -3);
    // Horizontal line going left: y - py.
    EXPECT_EQ(koLine::getSignedDistance(0, 1, -2, 0, 3, 4, true), 3);
    // End-point form and the general formula.
    EXPECT_DOUBLE_EQ(koLine::getSignedDistance(0, 0, 3, 4, 4, -3, false), 5);
    EXPECT_DOUBLE_EQ(koLine(0, 0, 3, 4, true).getDistance(koPoint(-4, 3)), 5);
    EXPECT_DOUBLE_EQ(koLine(koPoint(1, 1), koPoint(4, 5), false).getLength(), 5);
    EXPECT_TRUE(koLine(0, 0, 1, 0, true).isOrthogonal(koLine(5, 5, 0, 3, true)));
    EXPECT_TRUE(koLine(0, 0, 1, 1, true).isCollinear(koLine(5, 5, -2, -2, true)));
}
