#include "rvpath/rvcurve.h"
#include "rvpathtesthelpers.h"

#include <gtest/gtest.h>

#include <cstddef>

using namespace rvTest;

namespace {

// Closed-form Bernstein evaluation: the oracle of the forward differences.
QPointF bezier(const QPointF *p, double t)
{
    const double s = 1 - t;
    return s * s * s * p[0] + 3 * s * s * t * p[1] + 3 * s * t * t * p[2] + t * t * t * p[3];
}

QVector<QPointF> walk(RVCurve &curve)
{
    QVector<QPointF> points;
    double x, y;
    while (points.size() < 2000000 && curve.vertex(&x, &y))
        points.append(QPointF(x, y));
    return points;
}

// Straight cubic of length 12: n = 18, walk points at x = 2k/3, and the
// cursor after point k is 17 - k.
const QPointF line[4] = {{0, 0}, {4, 0}, {8, 0}, {12, 0}};

} // namespace

TEST(RVCurve, StepsFieldsAndFirstWalkOnTheBezier)
{
    // Short control polygon: n = 2, the walk is p0, B(0.5), p3.
    const QPointF small[4] = {{10, 10}, {10.25, 10}, {10.75, 10}, {11, 10}};
    RVCurve curve(small[0], small[1], small[2], small[3]);
    EXPECT_EQ(walk(curve), QVector<QPointF>({small[0], bezier(small, 0.5), small[3]}));
    // Deliberate field order: start, end, controls.
    EXPECT_TRUE(offsetof(RVCurve, p3) == offsetof(RVCurve, p0) + sizeof(QPointF)
                && offsetof(RVCurve, c1) == offsetof(RVCurve, p3) + sizeof(QPointF)
                && offsetof(RVCurve, c2) == offsetof(RVCurve, c1) + sizeof(QPointF));
    // n = trunc(L * 1.5): 15 gives 22, 1.99 gives 2; NaN 2, huge capped.
    const double lengths[][2] = {{5, 22}, {1.99 / 3, 2}, {NAN, 2}, {1e300, 1e6}};
    for (const auto &c : lengths) {
        curve.init(0, 0, c[0], 0, c[0], c[0], 0, c[0]);
        EXPECT_EQ(curve.steps, c[1]) << c[0];
    }

    std::mt19937 random = generator(7);
    std::uniform_real_distribution<double> u(-200, 200);
    for (int k = 0; k < 50; ++k) {
        const QPointF p[4] = {{u(random), u(random)},
                              {u(random), u(random)},
                              {u(random), u(random)},
                              {u(random), u(random)}};
        curve.init(p[0], p[1], p[2], p[3]);
        const int n = curve.steps;
        const QVector<QPointF> points = walk(curve);
        ASSERT_EQ(points.size(), n + 1);
        EXPECT_TRUE(points.first() == p[0] && points.last() == p[3]);
        for (int i = 1; i < n; ++i) {
            ASSERT_LT(QLineF(points[i], bezier(p, double(i) / n)).length(), 1e-9)
                    << i << " of " << n << " " << hexf(p[0].x()) << " " << hexf(p[0].y()) << " "
                    << hexf(p[1].x()) << " " << hexf(p[1].y()) << " " << hexf(p[2].x()) << " "
                    << hexf(p[2].y()) << " " << hexf(p[3].x()) << " " << hexf(p[3].y());
        }
    }
}

TEST(RVCurve, StepQueriesContinueTheWalk)
{
    RVCurve curve(line[0], line[1], line[2], line[3]);
    ASSERT_EQ(curve.steps, 18);
    EXPECT_EQ(curve.getstep(0, 3.99), 17); // p0 at Manhattan 3.99
    EXPECT_EQ(curve.getstep(-2, 2), -1);   // p0 at exactly 4.0
    EXPECT_EQ(curve.getstep(NAN, 0), -1);

    // A second query walks on from where the first ended: the stepped points
    // continue the polynomial beyond p3, x = 12 (17 + k) / 18.
    curve.init(line[0], line[1], line[2], line[3]);
    EXPECT_EQ(curve.getstep(4, 0.5), 11);
    EXPECT_EQ(curve.getstep(14, 0), 13);

    RVCurve front(line[0], line[1], line[2], line[3]), back = front, none = front;
    EXPECT_EQ(front.frontPtAtDist(3), 12); // x = 10/3, nearest to 3 in (3, 6)
    EXPECT_EQ(front.frontPtAtDist(3), -1); // walks on beyond p3
    EXPECT_EQ(back.backPtAtDist(3), 4);    // x = 26/3
    EXPECT_EQ(back.backPtAtDist(3), 11);   // x = 12 (17 + 6) / 18 beyond p3
    EXPECT_EQ(none.frontPtAtDist(20), -1);
    EXPECT_EQ(none.backPtAtDist(NAN), -1);
}

TEST(RVCurve, Split)
{
    const QPointF p[4] = {{0, 0}, {0, 10}, {10, 10}, {10, 0}};
    RVCurve curve(p[0], p[1], p[2], p[3]);
    QPointF left[4], right[4];
    ASSERT_TRUE(curve.splitcurve(left, right, 0.5));
    for (double t : {0.0, 0.3, 1.0}) {
        EXPECT_LT(QLineF(bezier(left, t), bezier(p, t / 2)).length(), 1e-12);
        EXPECT_LT(QLineF(bezier(right, t), bezier(p, 0.5 + t / 2)).length(), 1e-12);
    }
    for (double t : {1.0001, -0.0001, double(NAN)})
        EXPECT_FALSE(curve.splitcurve(left, right, t));

    // By point, t = s / n counts from the end of the walk: the walk point
    // B(10/45) has cursor 34 after its vertex call, so t = 34/45.
    ASSERT_EQ(curve.steps, 45);
    const QPointF target = bezier(p, 10.0 / 45);
    ASSERT_TRUE(curve.splitcurve(left, right, target.x(), target.y()));
    EXPECT_LT(QLineF(left[3], bezier(p, 34.0 / 45)).length(), 1e-12);
    EXPECT_FALSE(curve.splitcurve(left, right, 100, 100));
}
