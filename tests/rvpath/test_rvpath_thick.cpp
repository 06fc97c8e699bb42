// Thick path: tapered stroke outlines checked against Qt's geometry (fill
// containment, distance to the drawn outline) on lines, arcs, random
// polylines and glyph outlines.

#include "rvpathtesthelpers.h"

#include <gtest/gtest.h>

using namespace rvTest;

namespace {

RVPath thick(RVPath source, double startWidth, double endWidth, double step)
{
    RVPath out;
    source.thickPath(out, startWidth, endWidth, step);
    return out;
}

bool contains(const RVPath &path, const QPointF &p)
{
    return toQt(path, Qt::WindingFill).contains(p);
}

// Non-empty, and every subpath ends with a close marker.
bool allClosed(const RVPath &path)
{
    return !path.isEmpty() && path.elementAt(path.elementCount() - 1).type == E::Close
            && countType(path, E::Close) == subpathCount(path);
}

} // namespace

TEST(RVPathThick, LineSidesCapsAndDots)
{
    RVPath line;
    line.addLine(0, 0, 100, 0);
    // Equal widths: sides parallel at that distance; caps 1.2 w long.
    const RVPath even = thick(line, 5, 5, 4);
    EXPECT_EQ(toQt(even).boundingRect(), QRectF(-6, -5, 112, 10));
    for (double x = 2; x < 100; x += 7)
        EXPECT_LT(fineDistance(even, QPointF(x, 5)) + fineDistance(even, QPointF(x, -5)), 1e-9);
    // End width 0: no end cap, the outline tapers to the path's end.
    const RVPath taper = thick(line, 10, 0, 4);
    EXPECT_TRUE(allClosed(taper)) << describe(taper);
    EXPECT_NEAR(toQt(taper).boundingRect().right(), 100, 1e-9);
    EXPECT_LT(fineDistance(taper, QPointF(100, 0)) + fineDistance(taper, QPointF(50, 5)), 1e-9);
    // A lone point: a dot of the brush round it (none of width 0).
    const RVPath point = make({el(1, 2, E::MoveTo)});
    EXPECT_TRUE(contains(thick(point, 4, 1, 2), QPointF(1 - 3.9, 2)));
    EXPECT_TRUE(thick(point, 0, 0, 2).isEmpty());
    // NaN points and zero-length pieces are left out, the rest is drawn.
    const RVPath broken = make({el(0, 0, E::MoveTo), el(0, 0, E::LineTo), el(40, 0, E::LineTo),
                                el(qQNaN(), 5, E::LineTo), el(40, 40, E::LineTo)});
    EXPECT_TRUE(contains(thick(broken, 3, 3, 2), QPointF(20, 2)));
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
    // A vanishing step is bounded (1e5 samples).
    EXPECT_LT(thick(ten, 2, 2, 1e-300).elementCount(), 700000);
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
            EXPECT_TRUE(contains(out, r * u) && fineDistance(out, (r + w) * u) < tolerance
                        && fineDistance(out, (r - w) * u) < tolerance)
                    << "arc r " << hexf(r) << " from " << hexf(a) << " sweep " << hexf(s)
                    << " widths " << hexf(w0) << " " << hexf(w1) << " step " << hexf(h) << " at "
                    << f;
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
        const QPainterPath centre = toQt(source);
        for (double f = 0.01; f < 1; f += 0.02) {
            const QPointF p = centre.pointAtPercent(f);
            EXPECT_TRUE(contains(out, p) || fineDistance(out, p) < 1e-6)
                    << describe(source) << " widths " << hexf(w0) << " " << hexf(w1) << " at " << f;
        }
    }
}
