#include "geometry/kobezier.h"
#include "geometry/konumeric.h"

#include "geometry/geometrytest.h"

#include <QtGui/QPainterPath>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

koPoint pointAt(const koBezier &b, double t)
{
    const double m = 1 - t;
    const double w0 = m * m * m, w1 = 3 * m * m * t, w2 = 3 * m * t * t, w3 = t * t * t;
    return koPoint(w0 * b.x0 + w1 * b.x1 + w2 * b.x2 + w3 * b.x3,
                   w0 * b.y0 + w1 * b.y1 + w2 * b.y2 + w3 * b.y3);
}

// arcToBezier against QPainterPath::arcTo; start and end points lie on the ellipse.
void expectLikeQt(const QRectF &r, double start, double sweep)
{
    QPainterPath path;
    path.moveTo(-1e6, -1e6);
    path.arcTo(r, start, sweep);
    QVector<QPointF> pts;
    const QPointF first = koBezier::arcToBezier(r, start, sweep, pts);
    const std::string what = "QRectF(" + hexf(r.x()) + ", " + hexf(r.y()) + ", " + hexf(r.width())
            + ", " + hexf(r.height()) + "), " + hexf(start) + ", " + hexf(sweep);
    const double tol = 1e-9 * (1 + r.width() + r.height());
    ASSERT_EQ(pts.size(), path.elementCount() - 2) << what;
    EXPECT_NEAR(first.x(), path.elementAt(1).x, tol) << what;
    EXPECT_NEAR(first.y(), path.elementAt(1).y, tol) << what;
    for (int i = 0; i < pts.size(); ++i) {
        EXPECT_NEAR(pts[i].x(), path.elementAt(i + 2).x, tol) << what << " point " << i;
        EXPECT_NEAR(pts[i].y(), path.elementAt(i + 2).y, tol) << what << " point " << i;
    }
    const koPoint exact = koNumeric::ellipsePoint(r, start);
    EXPECT_LT(exact.getDistance(koPoint(first)), 1e-3 * std::max(r.width(), r.height())) << what;
    const QPointF c = r.center();
    for (int i = 2; i < pts.size(); i += 3) {
        const double ex = (pts[i].x() - c.x()) / (r.width() / 2),
                     ey = (pts[i].y() - c.y()) / (r.height() / 2);
        EXPECT_NEAR(std::sqrt(ex * ex + ey * ey), 1, 1e-3) << what << " end " << i;
    }
}

} // namespace

TEST(KoBezierSplit, PiecesTraceTheSameCurve)
{
    const koBezier b =
            koBezier::fromPoints(koPoint(0, 0), koPoint(1, 3), koPoint(4, -2), koPoint(5, 1));
    EXPECT_EQ(b.bezierOnInterval(0, 1).pt1(), b.pt1());
    const double t1 = 0.2, t2 = 0.7;
    const koBezier piece = b.bezierOnInterval(t1, t2);
    koBezier left, right = b; // split: left keeps [0, t1], right [t1, 1]
    right.parameterSplitLeft(t1, left);
    for (double s = 0; s <= 1; s += 0.125) {
        EXPECT_LT(pointAt(piece, s).getDistance(pointAt(b, t1 + s * (t2 - t1))), 1e-13) << s;
        EXPECT_LT(pointAt(left, s).getDistance(pointAt(b, s * t1)), 1e-13) << s;
        EXPECT_LT(pointAt(right, s).getDistance(pointAt(b, t1 + s * (1 - t1))), 1e-13) << s;
    }
}

TEST(KoBezierArc, FullTurnGivesTwelvePoints)
{
    QVector<koPoint> pts;
    const koPoint start = koBezier::arcToBezier(koRect(0, 0, 4, 2), 0, -360, pts);
    ASSERT_EQ(pts.size(), 12);
    EXPECT_EQ(start, koPoint(4, 1));
    EXPECT_EQ(pts.at(2), koPoint(2, 2)); // clockwise on screen: bottom first
    EXPECT_EQ(pts.at(11), koPoint(4, 1));
    pts.clear();
    koBezier::arcToBezier(koRect(0, 0, 4, 2), 0, 400, pts);
    ASSERT_EQ(pts.size(), 12);
    EXPECT_EQ(pts.at(2), koPoint(2, 0));
}

TEST(KoBezierArc, DegenerateInput)
{
    QVector<koPoint> pts;
    EXPECT_EQ(koBezier::arcToBezier(koRect(1, 1, 0, 5), 10, 90, pts), koPoint(0, 0));
    EXPECT_TRUE(pts.isEmpty());
    {
        WarningCapture warnings;
        EXPECT_TRUE(koBezier::arcToBezier(koRect(0, 0, 1, 1), qQNaN(), 90, pts).isNaN());
        koBezier::arcToBezier(koRect(0, qQNaN(), 1, 1), 0, 90, pts);
        ASSERT_EQ(WarningCapture::messages().size(), 2);
        EXPECT_EQ(WarningCapture::messages().at(0),
                  QStringLiteral("Arc to bezier, adding arc where a parameter is NaN, results are "
                                 "undefined"));
    }
    pts.clear();
    EXPECT_TRUE(koBezier::arcToBezier(koRect(0, 0, 1, 1), qInf(), 90, pts).isNaN());
    EXPECT_TRUE(pts.isEmpty());
    // A huge start angle is reduced, not converted to an out-of-range int.
    const koPoint far = koBezier::arcToBezier(koRect(-1, -1, 2, 2), 1e300 + 1e285, 90, pts);
    EXPECT_NEAR(far.x * far.x + far.y * far.y, 1, 1e-3);
    EXPECT_TRUE(pts.size() == 3 || pts.size() == 6);
}

TEST(KoBezierArc, ArcAngleEnds)
{
    EXPECT_EQ(koBezier::arcAngle(0), 0);
    EXPECT_EQ(koBezier::arcAngle(90), 1);
    EXPECT_NEAR(koBezier::arcAngle(45), 0.5, 1e-11); // the quadrant cubic is symmetric
}

TEST(KoBezierArc, MatchesQPainterPath)
{
    for (double start : {0.0, 90.0, 180.0, -90.0, 45.0, 360.0, -720.0})
        for (double sweep :
             {0.0, 90.0, -90.0, 270.0, -360.0, 360.0, 1e-13, -1e-13, 89.99999999999999})
            expectLikeQt(QRectF(10, -20, 30, 12), start, sweep);
    std::mt19937 rng(99);
    std::uniform_real_distribution<double> u(0, 1);
    for (int i = 0; i < 500; ++i) {
        const QRectF r(200 * u(rng) - 100, 200 * u(rng) - 100, 1e-3 + 200 * u(rng),
                       1e-3 + 200 * u(rng));
        double start = 1440 * u(rng) - 720, sweep = 800 * u(rng) - 400;
        if (i % 5 == 0)
            start = std::round(start / 45) * 45;
        if (i % 7 == 0)
            sweep = std::round(sweep / 90) * 90;
        expectLikeQt(r, start, sweep);
    }
}
