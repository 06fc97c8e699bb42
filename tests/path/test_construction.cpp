// Drawing-command construction of koPath.

#include "pathtesthelpers.h"

#include "geometry/korect.h"
#include "geometry/kosize.h"

#include <QtGui/QPainterPath>

#include <cmath>
#include <limits>
#include <random>

namespace {

const double Pi = 3.141592653589793;
const double Nan = std::numeric_limits<double>::quiet_NaN();
const double Inf = std::numeric_limits<double>::infinity();

koPoint pointAt(koPath *path, int i)
{
    return path->segments.at(i)->point;
}

// A new path whose current point is p.
koRef<koPath> startAt(const koPoint &p)
{
    koRef<koPath> path(new koPath);
    path->moveToPt(p);
    return path;
}

// The cubic from segment k to k + 1.
koPoint pieceAt(koPath *path, int k, double t)
{
    return bernstein(tracedCubics({path}).at(k), t);
}

// An SVG arc in centre form, solved independently of the library.
struct SvgArc
{
    koPoint from, to;
    koSize radii;          // as given, possibly negative or too small
    double phi = 0;        // degrees
    double rx = 0, ry = 0; // the radii in use
    bool sweep = false, large = false;
    koPoint centre;
    double delta = 0; // extent in degrees, y-down frame of the ellipse

    double c = 1, s = 0; // cos, sin of phi

    void solve()
    {
        c = std::cos(phi * Pi / 180);
        s = std::sin(phi * Pi / 180);
        const double dx = (from.x - to.x) / 2, dy = (from.y - to.y) / 2;
        const double x1 = c * dx + s * dy, y1 = -s * dx + c * dy;
        rx = std::abs(radii.width);
        ry = std::abs(radii.height);
        const double lambda = x1 * x1 / (rx * rx) + y1 * y1 / (ry * ry);
        double co = 0;
        if (lambda > 1) {
            rx *= std::sqrt(lambda);
            ry *= std::sqrt(lambda);
        } else {
            const double num = rx * rx * ry * ry - rx * rx * y1 * y1 - ry * ry * x1 * x1;
            co = std::sqrt(std::max(0.0, num / (rx * rx * y1 * y1 + ry * ry * x1 * x1)));
            if (large == sweep)
                co = -co;
        }
        const double cx1 = co * rx * y1 / ry, cy1 = -co * ry * x1 / rx;
        centre = koPoint(c * cx1 - s * cy1 + (from.x + to.x) / 2,
                         s * cx1 + c * cy1 + (from.y + to.y) / 2);
        const koPoint u((x1 - cx1) / rx, (y1 - cy1) / ry), v((-x1 - cx1) / rx, (-y1 - cy1) / ry);
        delta = std::atan2(u.cross(v), u.dot(v)) * 180 / Pi;
        if (!sweep && delta > 0)
            delta -= 360;
        else if (sweep && delta < 0)
            delta += 360;
    }
    std::string describe() const
    {
        return "from " + hex(from) + " to " + hex(to) + " radii " + hex(radii.width) + ", "
                + hex(radii.height) + " rotation " + hex(phi) + " clockwise "
                + std::to_string(sweep) + " large " + std::to_string(large);
    }
    koPoint unit(const koPoint &p) const // in the unit-circle frame
    {
        const koPoint d = p - centre;
        return koPoint((c * d.x + s * d.y) / rx, (-s * d.x + c * d.y) / ry);
    }
};

// Radius at t = 1/2 of the unit-circle cubic over theta with handles tan(theta / 4).
double middleRadius(double theta)
{
    return std::cos(theta / 2) + 0.75 * std::tan(theta / 4) * std::sin(theta / 2);
}

} // namespace

TEST(PathMoveLine, MovesLinesAndRelativeForms)
{
    koRef<koPath> path(new koPath);
    // Without a current point only lineTo starts a path.
    path->cubicCurveTo(koPoint(1, 1), koPoint(2, 2), koPoint(3, 3));
    path->cubicCurveBy(koPoint(1, 1), koPoint(2, 2), koPoint(3, 3));
    path->quadraticCurveTo(koPoint(1, 1), koPoint(3, 3));
    path->quadraticCurveBy(koPoint(1, 1), koPoint(3, 3));
    path->lineBy(koPoint(1, 1));
    path->arcTo(koPoint(1, 1), koSize(1, 1), 0, true, false);
    path->arcBy(koPoint(1, 1), koSize(1, 1), 0, true, false);
    EXPECT_TRUE(path->isEmpty());
    path->lineTo(1, 2);
    path->moveTo(10, 20); // replaces the lone segment
    ASSERT_EQ(path->segments.size(), 1);
    EXPECT_EQ(pointAt(path.get(), 0), koPoint(10, 20));
    path->lineBy(koPoint(1, 2));
    EXPECT_EQ(pointAt(path.get(), 1), koPoint(11, 22));
    path->cubicCurveBy(koPoint(1, 0), koPoint(2, 1), koPoint(3, 3));
    const koSegment *s1 = path->segments.at(1), *s2 = path->segments.at(2);
    EXPECT_EQ(s1->handleOut, koPoint(1, 0));
    EXPECT_EQ(s2->point, koPoint(14, 25));
    EXPECT_EQ(s2->handleIn, koPoint(-1, -2));
    path->arcBy(koPoint(10, 0), koSize(0, 0), 0, false, false);
    path->lineToPt(koPoint(7, 8));
    path->moveTo(9, 9); // a drawn contour is kept: no second contour
    ASSERT_EQ(path->segments.size(), 5);
    EXPECT_EQ(pointAt(path.get(), 0), koPoint(10, 20));
    EXPECT_EQ(pointAt(path.get(), 3), koPoint(24, 25));
    EXPECT_EQ(pointAt(path.get(), 4), koPoint(7, 8));
}

TEST(PathQuadratic, EqualsDegreeElevation)
{
    const koPoint c(3, -7), h(40, 25), to(-12, 9);
    koRef<koPath> path = startAt(c), relative = startAt(c);
    path->quadraticCurveTo(h, to);
    relative->quadraticCurveBy(h - c, to - c);
    ASSERT_EQ(path->segments.size(), 2);
    for (double t = 0; t <= 1; t += 0.125) {
        const koPoint q = c * ((1 - t) * (1 - t)) + h * (2 * t * (1 - t)) + to * (t * t);
        const koPoint p = pieceAt(path.get(), 0, t), r = pieceAt(relative.get(), 0, t);
        EXPECT_LT(p.getDistance(q), 1e-12) << "t " << t << " " << hex(p) << " " << hex(q);
        EXPECT_LT(r.getDistance(q), 1e-12) << "t " << t << " " << hex(r) << " " << hex(q);
    }
}

TEST(PathArcTo, PieceCountFollowsTheExtent)
{
    // No tolerance: a hair over a quarter turn takes two pieces. A zero radius
    // draws a line; too small radii grow, apex above the chord when clockwise.
    struct Case
    {
        koPoint to;
        koSize radii;
        bool clockwise, large;
        int pieces;
        koPoint apex; // segment 1 when there are two pieces
    };
    const Case cases[] = {{koPoint(10, 10), koSize(10, 10), true, false, 1, {}},
                          {koPoint(20, 0), koSize(10, 10), true, false, 2, koPoint(10, -10)},
                          {koPoint(10, 10), koSize(10, 10), true, true, 3, {}},
                          {koPoint(-1e-3, 1e-3), koSize(10, 10), true, true, 4, {}},
                          {koPoint(10, 10 - 1e-9), koSize(10, 10), true, false, 1, {}},
                          {koPoint(10, 10 + 1e-9), koSize(10, 10), true, false, 2, {}},
                          {koPoint(10, 5), koSize(1e-13, 20), true, true, 1, {}},
                          {koPoint(10, 0), koSize(1, 1), true, false, 2, koPoint(5, -5)},
                          {koPoint(10, 0), koSize(1, 1), false, false, 2, koPoint(5, 5)}};
    for (const Case &c : cases) {
        koRef<koPath> path = startAt(koPoint(0, 0));
        path->arcTo(c.to, c.radii, c.radii.width < 1e-12 ? 30 : 0, c.clockwise, c.large);
        ASSERT_EQ(path->segments.size() - 1, c.pieces) << hex(c.to);
        EXPECT_EQ(path->getLastSegment()->point, c.to);
        EXPECT_TRUE(c.radii.width >= 1e-12 || !path->hasHandles());
        const koPoint apex = pointAt(path.get(), 1);
        EXPECT_TRUE(c.apex.isZero() || apex.getDistance(c.apex) < 1e-12) << hex(apex);
    }
}

TEST(PathArcTo, NonFiniteInputStaysBounded)
{
    const koPoint targets[] = {koPoint(10, 0), koPoint(Nan, 0), koPoint(Inf, 5), koPoint(0, 0)};
    const koSize radii[] = {koSize(Nan, 5), koSize(Inf, Inf), koSize(5, 5), koSize(1e300, 1e-300)};
    for (const koPoint &to : targets) {
        for (const koSize &r : radii) {
            for (double rotation : {0.0, Nan}) {
                koRef<koPath> path = startAt(koPoint(0, 0));
                path->arcTo(to, r, rotation, false, true);
                ASSERT_GE(path->segments.size(), 2);
                ASSERT_LE(path->segments.size(), 5);
                const koPoint last = path->getLastSegment()->point;
                EXPECT_TRUE(to.isNaN() ? last.isNaN() : last == to) << hex(to) << hex(last);
            }
        }
    }
    // Without an ellipse: the half circle through the apex on the turning side.
    koRef<koPath> path = startAt(koPoint(0, 0));
    path->arcTo(koPoint(10, 0), koSize(Nan, 5), 0, false, false);
    ASSERT_EQ(path->segments.size(), 3);
    EXPECT_LT(pointAt(path.get(), 1).getDistance(koPoint(5, -5)), 1e-12)
            << hex(pointAt(path.get(), 1));
}

TEST(PathArcTo, RandomArcsEndOnTheTargetWithPiecesOnTheEllipse)
{
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<double> coord(-100, 100), radius(-150, 150), angle(-360, 360);
    for (int i = 0; i < 400; ++i) {
        SvgArc a;
        a.from = koPoint(coord(rng), coord(rng));
        a.to = koPoint(coord(rng), coord(rng));
        a.radii = koSize(radius(rng), radius(rng));
        a.phi = angle(rng);
        a.sweep = rng() & 1;
        a.large = rng() & 1;
        a.solve();
        koRef<koPath> path = startAt(a.from);
        path->arcTo(a.to, a.radii, a.phi, a.sweep, a.large);
        const int count = path->segments.size() - 1;
        ASSERT_GE(count, 1);
        ASSERT_LE(count, 4);
        const std::string inputs = a.describe();
        EXPECT_TRUE(path->getLastSegment()->point == a.to) << inputs;
        double turned = 0;
        for (int k = 0; k < count; ++k) {
            const koPoint u0 = a.unit(pointAt(path.get(), k));
            const koPoint u1 = a.unit(pointAt(path.get(), k + 1));
            EXPECT_NEAR(u0.getLength(), 1, 1e-9) << inputs;
            const double signedTheta = std::atan2(u0.cross(u1), u0.dot(u1));
            turned += signedTheta * 180 / Pi;
            const double theta = std::abs(signedTheta);
            EXPECT_LE(theta, Pi / 2 + 1e-9) << inputs;
            // Each piece bows inwards, from radius 1 down to rMid and back.
            const double rMid = middleRadius(theta);
            for (double t = 0.1; t < 1; t += 0.1) {
                const double r = a.unit(pieceAt(path.get(), k, t)).getLength();
                EXPECT_GE(r, rMid - 1e-9) << inputs << " piece " << k << " t " << t;
                EXPECT_LE(r, 1 + 1e-9) << inputs << " piece " << k << " t " << t;
            }
            EXPECT_NEAR(a.unit(pieceAt(path.get(), k, 0.5)).getLength(), rMid, 1e-9) << inputs;
        }
        // The pieces turn the oracle's way round by its extent.
        EXPECT_NEAR(turned, a.delta, 1e-7) << inputs;
    }
}

TEST(PathArcTo2, JoinsWithALineOnlyBeyondATenth)
{
    const koRect rect(0, 0, 100, 100); // the arc starts at (100, 50)
    for (double dx : {0.0, 0.05, 0.2}) {
        koRef<koPath> path = startAt(koPoint(100 + dx, 50));
        path->arcTo2(rect, 0, 90);
        EXPECT_EQ(path->segments.size(), dx > 0.1 ? 3 : 2) << dx;
        // Negated angles: a positive sweep turns clockwise on screen, down.
        const koPoint end = path->getLastSegment()->point;
        EXPECT_LT(end.getDistance(koPoint(50, 100)), 1e-9) << hex(end);
    }
    koRef<koPath> path(new koPath);
    path->arcTo2(koRect(0, 0, 100, 0), 0, 90);
    EXPECT_TRUE(path->isEmpty());
    path->arcTo2(rect, 30, 200);
    QPainterPath qt;
    qt.arcMoveTo(rect.toRectF(), -30);
    qt.arcTo(rect.toRectF(), -30, -200);
    EXPECT_LT(pointAt(path.get(), 0).getDistance(koPoint(qt.elementAt(0))), 1e-6);
    EXPECT_LT(path->getLastSegment()->point.getDistance(koPoint(qt.currentPosition())), 1e-6);
}

TEST(PathEllipse, FiveSegmentsReplacingOnlyALoneStartPoint)
{
    koRef<koPath> path(new koPath);
    path->ellipse(koRect(10, 20, 60, 30));
    ASSERT_EQ(path->segments.size(), 5);
    EXPECT_FALSE(path->isClosed());
    EXPECT_EQ(pointAt(path.get(), 4), pointAt(path.get(), 0));
    for (const koSegment *s : path->segments) {
        const double u = (s->point.x - 40) / 30, v = (s->point.y - 35) / 15;
        EXPECT_NEAR(u * u + v * v, 1, 1e-12) << hex(s->point);
    }
    path->ellipse(koRect(0, 0, -1, 5));
    EXPECT_EQ(path->segments.size(), 5);

    // A lone point goes, even closed with its closing curve built; a drawn contour stays.
    for (int kind = 0; kind < 3; ++kind) {
        koRef<koPath> path(new koPath(nullptr, kind == 1));
        path->moveTo(-5, -5);
        if (kind == 1) {
            ASSERT_EQ(path->getCurves().size(), 1);
        } else if (kind == 2) {
            path->lineTo(-5, 5);
        }
        path->ellipse(koRect(0, 0, 10, 10));
        ASSERT_EQ(path->segments.size(), kind == 2 ? 6 : 5);
        EXPECT_EQ(pointAt(path.get(), 0), kind == 2 ? koPoint(-5, -5) : koPoint(10, 5));
    }
}

TEST(PathSetClosed, AddsAndDropsTheClosingCurve)
{
    koRef<koPath> path(new koPath);
    path->setClosed(true); // empty, nothing built
    EXPECT_TRUE(path->isClosed());
    path->setClosed(false);
    path->moveTo(0, 0);
    path->lineTo(10, 0);
    path->lineTo(10, 10);
    ASSERT_EQ(path->getCurves().size(), 2);
    for (bool closed : {true, true, false}) {
        path->setClosed(closed);
        EXPECT_EQ(path->isClosed(), closed);
        EXPECT_EQ(path->curves.size(), closed ? 3 : 2);
        EXPECT_EQ(path->segments.size(), 3);
        EXPECT_TRUE(pathIsConsistent(path.get()));
    }
}
