// Thick path: tapered stroke outlines checked against Qt's geometry (fill
// containment, distance to the drawn outline) on lines, arcs, random
// polylines and glyph outlines.

#include "rvpathtesthelpers.h"
#include "testglyphs.h"

#include <QtGui/QTransform>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace rvTest;

namespace {

RVPath thick(RVPath source, double startWidth, double endWidth, double step)
{
    RVPath out;
    source.thickPath(out, startWidth, endWidth, step);
    return out;
}

QPainterPath windingPath(const RVPath &path)
{
    QPainterPath qt;
    path.toPainterPath(qt);
    qt.setFillRule(Qt::WindingFill);
    return qt;
}

// Qt flattens to about half a unit: measured at 64 times the size.
double fineDistance(const RVPath &path, const QPointF &p)
{
    const QTransform up = QTransform::fromScale(64, 64);
    return distanceTo(up.map(windingPath(path)), up.map(p)) / 64;
}

// Non-empty, and every subpath ends with a close marker.
bool allClosed(const RVPath &path)
{
    int closes = 0;
    for (const RVPathElement &e : path.elements())
        closes += e.type == E::Close;
    return !path.isEmpty() && path.elementAt(path.elementCount() - 1).type == E::Close
            && closes == subpathCount(path);
}

} // namespace

TEST(RVPathThick, LineSidesAndCaps)
{
    RVPath line;
    line.addLine(0, 0, 100, 0);
    // Equal widths: sides parallel at that distance; caps 1.2 w long.
    const RVPath even = thick(line, 5, 5, 4);
    EXPECT_EQ(windingPath(even).boundingRect(), QRectF(-6, -5, 112, 10));
    for (double x = 2; x < 100; x += 7)
        EXPECT_LT(fineDistance(even, QPointF(x, 5)) + fineDistance(even, QPointF(x, -5)), 1e-9);
    // End width 0: no end cap, the outline tapers to the path's end.
    const RVPath taper = thick(line, 10, 0, 4);
    EXPECT_TRUE(allClosed(taper)) << describe(taper);
    EXPECT_NEAR(windingPath(taper).boundingRect().right(), 100, 1e-9);
    EXPECT_LT(fineDistance(taper, QPointF(100, 0)) + fineDistance(taper, QPointF(50, 5)), 1e-9);
}

TEST(RVPathThick, CurveStepIsHalvedToFourStepsButNotBelowTwo)
{
    RVPath ten, five; // shallow cubics about 10.2 and 5.1 long
    ten.addBezier(QPointF(0, 0), QPointF(3, 1), QPointF(7, 1), QPointF(10, 0));
    five.addBezier(QPointF(0, 0), QPointF(1.5, 0.5), QPointF(3.5, 0.5), QPointF(5, 0));
    // 8 -> 4 -> 2 as 10.2 / 2 >= 4; 3 -> 1.5, which stays below 2 although
    // 5.1 / 1.5 < 4.
    EXPECT_EQ(describe(thick(ten, 1, 1, 8)), describe(thick(ten, 1, 1, 2)));
    EXPECT_NE(describe(thick(ten, 1, 1, 2)), describe(thick(ten, 1, 1, 1.5)));
    EXPECT_EQ(describe(thick(five, 1, 1, 3)), describe(thick(five, 1, 1, 1.5)));
    EXPECT_NE(describe(thick(five, 1, 1, 1.5)), describe(thick(five, 1, 1, 1.2)));
}

TEST(RVPathThick, ArcsKeepTheLinearTaper)
{
    std::mt19937 random = generator(7);
    std::uniform_real_distribution<double> radius(40, 200), angle(-180, 180), sweep(30, 300),
            width(0.5, 12), step(1, 12);
    for (int run = 0; run < 60; ++run) {
        const double r = radius(random), a = angle(random), s = sweep(random);
        const double w0 = width(random), w1 = width(random), h = step(random);
        QPainterPath qt;
        qt.arcMoveTo(QRectF(-r, -r, 2 * r, 2 * r), a);
        qt.arcTo(QRectF(-r, -r, 2 * r, 2 * r), a, s);
        RVPath arc;
        arc.fromPainterPath(qt);
        const RVPath out = thick(arc, w0, w1, h);
        ASSERT_TRUE(allClosed(out));
        // At the fraction f of the arc the outline passes at r +- w(f) from
        // the centre (the cubic arc itself is within 3e-4 r of the circle).
        for (double f = 0.02; f < 0.99; f += 0.06) {
            const double theta = (a + f * s) * M_PI / 180, w = w0 + (w1 - w0) * f;
            const QPointF u(std::cos(theta), -std::sin(theta)); // y-up angles
            const double tolerance = 0.02 + 3e-4 * r;
            EXPECT_TRUE(windingPath(out).contains(r * u)
                        && fineDistance(out, (r + w) * u) < tolerance
                        && fineDistance(out, (r - w) * u) < tolerance)
                    << "arc r " << hexf(r) << " from " << hexf(a) << " sweep " << hexf(s)
                    << " widths " << hexf(w0) << " " << hexf(w1) << " step " << hexf(h) << " at "
                    << f << ": " << fineDistance(out, (r + w) * u) << " "
                    << fineDistance(out, (r - w) * u);
        }
    }
}

TEST(RVPathThick, PolylinesAndGlyphsAreInsideTheirOutline)
{
    std::mt19937 random = generator(11);
    std::uniform_real_distribution<double> width(0.5, 8);
    QVector<RVPath> sources;
    for (int run = 0; run < 40; ++run) {
        const QVector<QPointF> pts = randomPolyline(random, 3 + run % 6);
        sources.append(RVPath());
        sources.last().addLines(pts.constData(), pts.size());
        if (run % 4 == 0)
            sources.last().closeSubpath();
    }
    QString why; // glyph subpaths end on their start: they give rings
    RVPath glyphs;
    glyphs.fromPainterPath(testGlyphs::outline(QStringLiteral("g&S"), 0, 200, 200, &why));
    for (const RVPathElement &e : glyphs.elements()) {
        if (e.type == E::MoveTo)
            sources.append(RVPath());
        sources.last().appendElement(e);
    }
    for (const RVPath &source : sources) {
        const double w0 = width(random), w1 = width(random);
        const RVPath out = thick(source, w0, w1, 3);
        ASSERT_TRUE(allClosed(out)) << describe(source);
        QPainterPath centre;
        source.toPainterPath(centre);
        for (double f = 0.01; f < 1; f += 0.02) {
            const QPointF p = centre.pointAtPercent(f);
            EXPECT_TRUE(windingPath(out).contains(p) || fineDistance(out, p) < 1e-6)
                    << describe(source) << " widths " << hexf(w0) << " " << hexf(w1) << " at " << f;
        }
    }
}

TEST(RVPathThick, DegenerateInputs)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    RVPath out = make({el(1, 2, E::MoveTo)});
    RVPath().thickPath(out, 5, 5, 2); // no subpath: out unchanged
    EXPECT_EQ(out.elementCount(), 1);
    // A lone point: a dot of the brush round it (none of width 0).
    EXPECT_TRUE(windingPath(thick(out, 4, 1, 2)).contains(QPointF(1 - 3.9, 2)));
    EXPECT_TRUE(thick(out, 0, 0, 2).isEmpty());
    // Steps and widths that are not numbers leave out empty.
    RVPath line;
    line.addLine(0, 0, 50, 0);
    for (double step : {0.0, -1.0, nan, std::numeric_limits<double>::infinity()})
        EXPECT_TRUE(thick(line, 5, 5, step).isEmpty()) << step;
    EXPECT_TRUE(thick(line, nan, 5, 2).isEmpty());
    // NaN points and zero-length pieces are left out, the rest is drawn.
    const RVPath broken = make({el(0, 0, E::MoveTo), el(0, 0, E::LineTo), el(40, 0, E::LineTo),
                                el(nan, 5, E::LineTo), el(40, 40, E::LineTo)});
    EXPECT_TRUE(windingPath(thick(broken, 3, 3, 2)).contains(QPointF(20, 2)));
    line.thickPath(line, 5, 5, 2); // into itself
    EXPECT_TRUE(windingPath(line).contains(QPointF(25, 4)));
    // A very fine step on a curve is bounded (1e5 samples).
    RVPath curve;
    curve.addBezier(QPointF(0, 0), QPointF(0, 30), QPointF(30, 30), QPointF(30, 0));
    EXPECT_LT(thick(curve, 2, 2, 1e-300).elementCount(), 700000);
}
