#include "geometry/komatrix.h"
#include "geometry/kopoint.h"
#include "geometry/korect.h"

#include "geometry/geometrytest.h"

#include <QtGui/QTransform>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

TEST(KoPointAngle, ZeroVectorsAndQuadrants)
{
    const koPoint zero, unit(1, 0);
    EXPECT_EQ(zero.getAngle(), 0);
    EXPECT_TRUE(std::isnan(zero.getAngle(&unit)));
    EXPECT_TRUE(std::isnan(unit.getAngle(&zero)));
    EXPECT_DOUBLE_EQ(koPoint(0, 2).getAngle(&unit), 90);
    EXPECT_DOUBLE_EQ(unit.getDirectedAngle(koPoint(0, -1)), -90);
    EXPECT_DOUBLE_EQ(unit.getDirectedAngle(koPoint(-1, 0)), 180);
    EXPECT_EQ(koPoint(0, 0).getQuadrant(), 1);
    EXPECT_EQ(koPoint(0, -1).getQuadrant(), 4);
    EXPECT_EQ(koPoint(-1, 0).getQuadrant(), 2);
    EXPECT_EQ(koPoint(-1, -1).getQuadrant(), 3);
}

TEST(KoPointRotate, ZeroIsExactNinetyIsPinnedCentreMatchesQTransform)
{
    const koPoint p(0.1, 1e-300), c(0.3, 0.7);
    EXPECT_EQ(p.rotate(0), p);
    EXPECT_EQ(p.rotate(0, &c), p);
    EXPECT_EQ(koPoint(1, 0).rotate(90), koPoint(6.123233995736766e-17, 1));

    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-100, 100);
    for (int i = 0; i < 200; ++i) {
        const koPoint q(u(rng), u(rng)), centre(u(rng), u(rng));
        const double angle = 4 * u(rng);
        const QPointF want = QTransform()
                                     .translate(centre.x, centre.y)
                                     .rotate(angle)
                                     .translate(-centre.x, -centre.y)
                                     .map(q.toPt());
        const koPoint got = q.rotate(angle, &centre);
        const std::string what = hexf(q.x) + " " + hexf(q.y) + " " + hexf(angle);
        EXPECT_NEAR(got.x, want.x(), 1e-11) << what;
        EXPECT_NEAR(got.y, want.y(), 1e-11) << what;
    }
}

TEST(KoPointVector, ZeroVectorAndTolerances)
{
    EXPECT_EQ(koPoint().normalize(1), koPoint());
    koPoint p;
    p.setLength(1); // deliberately unguarded
    EXPECT_TRUE(p.isNaN());
    koPoint q(3, 4);
    q.setAngle(90);
    EXPECT_NEAR(q.x, 0, 1e-15);
    EXPECT_DOUBLE_EQ(q.y, 5);

    const koPoint a(1, 2);
    EXPECT_FALSE(a.equals(a, 0));
    EXPECT_TRUE(a.isClose(a, 0));
    EXPECT_FALSE(a.equals(koPoint(1.5, 2), 0.5));
    EXPECT_TRUE(a.isClose(koPoint(1.5, 2), 0.5));
    EXPECT_TRUE(koPoint(1e-12, -1e-12).isZero());
    EXPECT_FALSE(koPoint(2e-12, 0).isZero());
    EXPECT_TRUE(koPoint::isCollinear(1, 0, 1, 1e-8));
    EXPECT_FALSE(koPoint::isCollinear(1, 0, 1, 1e-6));
    EXPECT_TRUE(koPoint(1, 1e-8).isOrthogonal(koPoint(0, 1)));
}

TEST(KoPointVector, ProjectInsideTranslatedTransform)
{
    koPoint p(3, 4);
    p.project(koPoint(2, 0));
    EXPECT_EQ(p, koPoint(3, 0));
    p.project(koPoint());
    EXPECT_EQ(p, koPoint());
    const koRect r(0, 0, 10, 10);
    EXPECT_TRUE(koPoint(5, 5).isInside(r));
    EXPECT_FALSE(koPoint(0, 5).isInside(r));
    p.translated(4, 6); // in place, despite the name
    EXPECT_EQ(p, koPoint(4, 6));
    const koMatrix m(2, 0, 0, 2, 1, 1);
    EXPECT_EQ(p.transform(&m), koPoint(9, 13));
    EXPECT_EQ(p.transform(nullptr), p);
}

TEST(KoPointRound, HalvesGoUpWithoutOverflow)
{
    koPoint p(2.5, -2.5);
    p.round();
    EXPECT_EQ(p, koPoint(3, -2));
    koPoint q(-2.5000001, 0.49999999999999994); // the latter + 0.5 rounds to 1
    q.round();
    EXPECT_EQ(q, koPoint(-3, 1));
    koPoint big(4e9 + 0.5, -1e300);
    big.round();
    EXPECT_EQ(big, koPoint(4e9 + 1, -1e300));
    koPoint edge(INT_MAX, INT_MIN);
    edge.round();
    EXPECT_EQ(edge, koPoint(INT_MAX, INT_MIN));
    koPoint odd(qQNaN(), qInf());
    odd.round();
    EXPECT_TRUE(std::isnan(odd.x));
    EXPECT_EQ(odd.y, qInf());
}

TEST(KoPointText, ToStringAndRandom)
{
    EXPECT_EQ(koPoint(1.5, -2).toString(), QStringLiteral("x: 1.5, y: -2"));
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    qsrand(42);
    const double first = qrand(), second = qrand();
    qsrand(42);
    QT_WARNING_POP
    EXPECT_EQ(koPoint::random(), koPoint(second, first));
}
