// Edge cases of curve evaluation, shape predicates and division.

#include "path/pathtesthelpers.h"

#include "geometry/koline.h"

#include <QtCore/QtNumeric>

#include <cmath>

namespace {
// y' = 0 and x' = 6, y'' = 24 at t = 0.5, the top at (2, -3).
const QVector<double> Arch{0, 0, 0, -4, 4, -4, 4, 0};
} // namespace

TEST(koCurveEvaluation, EndsTangentsCurvature)
{
    // The power form would not round back to these end points.
    const QVector<double> v{0.1, 0.7, 1.3, 2.9, 3.3, -1.7, 5.1, 0.3};
    EXPECT_TRUE(koCurve::getPoint(v, 0) == koPoint(0.1, 0.7)
                && koCurve::getPoint(v, 1) == koPoint(5.1, 0.3));
    for (double t : {-0.0001, 1.0001, qQNaN()})
        EXPECT_TRUE(koCurve::getTangent(v, t).isNaN() && koCurve::getPoint(v, t).isNaN());
    EXPECT_TRUE(koCurve::getPoint(QVector<double>{1, 2}, 0.5).isNaN());
    // Handle 1 zero: the unit tangent borrows the handle-to-handle direction.
    const QVector<double> w{0, 0, 0, 0, 3, 4, 10, 4};
    EXPECT_EQ(koCurve::getTangent(w, 0), koPoint(0.6, 0.8));
    EXPECT_EQ(koCurve::getNormal(w, 0), koPoint(0.8, -0.6));
    EXPECT_EQ(koCurve::getWeightedTangent(w, 0), koPoint(0, 0));
    // Curvature: 0 where the derivative vanishes (an end, a cusp) and on a line.
    EXPECT_EQ(koCurve::getCurvature(w, 0), 0);
    EXPECT_EQ(koCurve::getCurvature(QVector<double>{0, 0, 4, 2, 0, 2, 4, 0}, 0.5), 0);
    EXPECT_EQ(koCurve::getCurvature(QVector<double>{0, 0, 1, 1, 2, 2, 5, 5}, 0.3), 0);
    EXPECT_DOUBLE_EQ(koCurve::getCurvature(Arch, 0.5), 24.0 / 36);
}

TEST(koCurvePredicates, StraightLinearHandlesFlat)
{
    const struct
    {
        QVector<double> v;
        bool straight, linear, handles;
    } cases[] = {{{0, 0, 0, 0, 9, 0, 9, 0}, true, false, false},
                 {{0, 0, 3, 0, 6, 0, 9, 0}, true, true, true},
                 {{0, 0, 3, 1e-13, 6, 0, 9, 0}, true, true, true},
                 {{0, 0, 1, 0, 4, 0, 9, 0}, true, false, true},
                 {{0, 0, 10, 0, 6, 0, 9, 0}, false, false, true},
                 {{0, 0, 3, 1e-7, 6, 0, 9, 0}, true, false, true},
                 {{0, 0, 3, 1e-6, 6, 0, 9, 0}, false, false, true},
                 {{1, 1, 2, 2, 1, 1, 1, 1}, false, false, true},
                 {{0, 0, 0, 1e-12, 9, 1e-12, 9, 0}, true, false, false},
                 {{1, 2}, false, false, false}};
    for (const auto &c : cases) {
        EXPECT_EQ(koCurve::isStraight(c.v), c.straight) << &c - cases;
        EXPECT_EQ(koCurve::isLinear(c.v), c.linear) << &c - cases;
        EXPECT_EQ(koCurve::hasHandles(c.v), c.handles) << &c - cases;
    }
    // The handle is 4 off its one-third point: 3 * 4 against 4 * flatness.
    EXPECT_TRUE(koCurve::isFlatEnough({0, 0, 0, 4, 0, 0, 0, 0}, 3));
    EXPECT_FALSE(koCurve::isFlatEnough({0, 0, 0, 4, 0, 0, 0, 0}, std::nextafter(3, 0)));

    koRef<koCurve> h(new koCurve(QVector<double>{0, 0, 1, 0, 2, 0, 3, 0}, nullptr));
    koRef<koCurve> v(new koCurve(QVector<double>{5, 0, 5, 1, 5, 2, 5, 3}, nullptr));
    koRef<koCurve> h2(new koCurve(QVector<double>{7, 1, 7, 1, 9, 1, 9, 1}, nullptr));
    koRef<koCurve> arch(new koCurve(Arch, nullptr));
    EXPECT_TRUE(h->isHorizontal() && !h->isVertical() && h->isLinear() && v->isVertical());
    EXPECT_TRUE(h->isCollinear(h2.get()) && !h->isCollinear(v.get()) && !h->isCollinear(nullptr));
    EXPECT_FALSE(arch->isCollinear(h.get()) || arch->isStraight() || arch->splitAt(nullptr));
    EXPECT_TRUE(arch->getLine().getVector() == koPoint(4, 0) && arch->getBounds().y == -3);
    EXPECT_EQ(arch->bounds.toString(), QStringLiteral("x: 0, y: -3, width: 4, height: 3"));
}

TEST(koCurveParts, ReversedPartAndDivision)
{
    const QVector<double> f = koCurve::getPart(Arch, 0.2, 0.8);
    EXPECT_EQ(koCurve::getPart(Arch, 0.8, 0.2),
              (QVector<double>{f[6], f[7], f[4], f[5], f[2], f[3], f[0], f[1]}));

    koRef<koPath> path(polygonPath({{0, 0}, {9, 0}}, false));
    koCurve *curve = path->getCurves().first();
    for (double t : {0.0000001, 0.99999999, qQNaN(), 0.0, 1.0})
        EXPECT_EQ(curve->divideAtTime(t, true), nullptr);
    EXPECT_EQ(path->getSegments().size(), 2);
    // A handle-less line stays handle-less unless handles are asked for.
    koCurve *next = curve->divideAtTime(0.5, false);
    ASSERT_TRUE(next && next->getPoint1() == koPoint(4.5, 0) && !path->hasHandles());
    EXPECT_EQ(next->divideAtTime(0.5, true)->segment1()->handleIn, koPoint(-1.125, 0));
}
