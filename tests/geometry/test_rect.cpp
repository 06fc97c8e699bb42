#include "geometry/korect.h"

#include <gtest/gtest.h>

namespace {
void expectRect(const koRect &r, double x, double y, double w, double h)
{
    EXPECT_EQ(r.x, x);
    EXPECT_EQ(r.y, y);
    EXPECT_EQ(r.width, w);
    EXPECT_EQ(r.height, h);
}
} // namespace

TEST(KoRect, ConstructionAndText)
{
    expectRect(koRect(koPoint(5, 1), koPoint(1, 5)), 1, 1, 4, 4);
    EXPECT_EQ(koRect(1, 2, 3, 4).toString(), QStringLiteral("x: 1, y: 2, width: 3, height: 4"));
    EXPECT_TRUE(koRect(0, 0, -1, 5).isEmpty());
    EXPECT_EQ(koRect(0, 0, -1, 5).getArea(), -5);
}

TEST(KoRect, UniteIntersectInclude)
{
    const koRect empty(100, 100, 0, 5), full(1, 2, 3, 4);
    expectRect(empty.unite(full), 1, 2, 3, 4);
    expectRect(full.unite(empty), 1, 2, 3, 4);
    expectRect(full.unite(koRect(10, 10, 1, 1)), 1, 2, 10, 9);
    expectRect(koRect(0, 0, 1, 1).intersect(koRect(2, 2, 1, 1)), 2, 2, -1, -1); // not clamped
    expectRect(koRect().include(koPoint(2, 3)), 0, 0, 2, 3);                    // no emptiness test
    expectRect(koRect(1, 1, 1, 1).include(koPoint(-1, 5)), -1, 1, 3, 4);
}

TEST(KoRect, StrictAndInclusiveTests)
{
    const koRect a(0, 0, 1, 1), b(1, 0, 1, 1);
    EXPECT_FALSE(a.intersects(b));
    EXPECT_TRUE(a.touches(b));
    EXPECT_TRUE(a.containsRect(a));
    EXPECT_FALSE(a.containsPt(koPoint(0, 0.5)));
    EXPECT_TRUE(a.containsPt(koPoint(0.5, 0.5)));
}

TEST(KoRect, SetCenterCopiesOtherEditsInPlace)
{
    koRect r(0, 0, 10, 10);
    expectRect(r.setCenter(koPoint(10, 10)), 5, 5, 10, 10);
    expectRect(r, 0, 0, 10, 10);
    r.expand(2, 4);
    expectRect(r, -1, -2, 12, 14);
    r.adjust(1, 2, 3, 4);
    expectRect(r, 0, 0, 14, 16);
    r.translate(1, 1);
    EXPECT_EQ(r.center(), koPoint(8, 9));
}
