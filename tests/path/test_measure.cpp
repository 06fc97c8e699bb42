// Path measurement: truncated length, locations, curve at offset, nearest location.

#include "pathtesthelpers.h"

#include "path/xpath.h"

#include <QtCore/QtNumeric>

#include <cmath>
#include <random>

namespace {

koPath *line(std::initializer_list<koPoint> points)
{
    return polygonPath(points, false);
}

} // namespace

TEST(PathLength, TruncatesAsItAccumulates)
{
    EXPECT_EQ(koRef<koPath>(line({{0, 0}, {10.7, 0}, {21.4, 0}}))->getLength(), 20);
    EXPECT_EQ(koRef<koPath>(line({{0, 0}, {0.9, 0}}))->getLength(), 0);
    EXPECT_EQ(koRef<koPath>(line({{0, 0}}))->getLength(), 0);
}

TEST(PathLocation, EndsAndOffsetsOffThePath)
{
    koRef<koPath> short25(line({{0, 0}, {2.5, 0}}));
    EXPECT_TRUE(short25->getPointAt(2.2).isNaN());      // past the truncated length 2
    EXPECT_EQ(short25->getPointAt(2), koPoint(2.5, 0)); // the end answers the length
    koRef<koPath> ten(line({{0, 0}, {4, 0}, {4, 6}}));
    EXPECT_LT(ten->getPointAt(-1).getDistance(koPoint(4, 5)), 1e-9);
    for (double offset : {-10.5, 10.5, double(qQNaN()), double(qInf())}) {
        EXPECT_TRUE(ten->getPointAt(offset).isNaN()) << offset;
        EXPECT_TRUE(ten->getNormalAt(offset).isNaN()) << offset;
        EXPECT_TRUE(qIsNaN(ten->getCurvatureAt(offset))) << offset;
    }
    koRef<koPath> empty(new koPath);
    EXPECT_EQ(empty->getLocationAt(0), nullptr);
    EXPECT_EQ(empty->getNearestLocation(koPoint(1, 1)), nullptr);
    EXPECT_EQ(ten->getOffsetOf(koPoint(5, 5)), 0); // not on the path

    // getCurveAtOff: the exact total belongs to no curve; past it the last keeps the excess.
    const QList<koCurve *> curves = ten->getCurves();
    const struct
    {
        double offset, rest;
        koCurve *curve;
    } cases[] = {{10, 0, nullptr}, {5.5, 1.5, curves.at(1)}, {12, 2, curves.at(1)}};
    for (auto c : cases) {
        EXPECT_EQ(ten->getCurveAtOff(c.offset), c.curve) << c.offset;
        EXPECT_EQ(c.offset, c.rest);
    }
}

TEST(PathLocation, FollowsThePolyline)
{
    // Whole-length legs (3-4-5) heading right: no truncation loss, no self-contact.
    const koPoint steps[] = {{3, 4}, {4, 3}, {5, 0}, {3, -4}, {4, -3}};
    std::mt19937 rng(23);
    for (int trial = 0; trial < 20; ++trial) {
        QVector<koPoint> points{{0, 0}};
        koRef<koPath> path(line({{0, 0}}));
        for (int i = 0; i < 2 + trial % 5; ++i) {
            points.append(points.last() + steps[rng() % 5] * double(1 + rng() % 3));
            path->lineToPt(points.last());
        }
        for (int k = 0; k < 10; ++k) {
            const double s = std::uniform_real_distribution<double>(0, path->getLength())(rng);
            double rest = s;
            int leg = 0;
            while (rest > points[leg].getDistance(points[leg + 1]))
                rest -= points[leg].getDistance(points[leg + 1]), ++leg;
            const koPoint direction = (points[leg + 1] - points[leg]).normalize();
            const koPoint p = path->getPointAt(s);
            EXPECT_LT(p.getDistance(points[leg] + direction * rest), 1e-9) << s << " " << hex(p);
            EXPECT_LT(path->getTangentAt(s).getDistance(direction), 1e-9);
            EXPECT_LT(path->getNormalAt(s).getDistance(koPoint(direction.y, -direction.x)), 1e-9);
            EXPECT_NEAR(path->getCurvatureAt(s), 0, 1e-12);
            EXPECT_NEAR(path->getOffsetOf(p), s, 1e-9);
        }
    }
}

TEST(PathNearest, StrictlyNearestWithEarlierCurveOnTies)
{
    koRef<koPath> corner(line({{0, 0}, {10, 0}, {10, 10}}));
    koRef<koCurveLocation> tie(corner->getNearestLocation(koPoint(5, 5)));
    ASSERT_TRUE(tie);
    EXPECT_EQ(tie->getCurve(), corner->getCurves().at(0));

    XPath compound;
    EXPECT_TRUE(compound.getNearestPoint(koPoint(0, 0)).isNaN());
    compound.addChild(line({{0, 0}, {10, 0}}));
    compound.addChild(line({{0, 10}, {10, 10}}));
    koRef<koCurveLocation> first(compound.getNearestLocation(koPoint(3, 5)));
    EXPECT_EQ(first->getCurve()->path(), compound.children.at(0));
    EXPECT_LT(compound.getNearestPoint(koPoint(3, 8)).getDistance(koPoint(3, 10)), 1e-9);
}
