// Degenerate input for every RVPath operation: NaN, infinite and huge
// coordinates, zero-length pieces, lone move-tos, stray curve-data and cubics
// cut short neither crash nor hang, and arguments that are not numbers leave
// the output as documented.

#include "rvpathtesthelpers.h"

#include <gtest/gtest.h>

using namespace rvTest;

namespace {

constexpr int M = E::MoveTo, L = E::LineTo, C = E::CurveTo, D = E::CurveData, Z = E::Close;
const double NaN = qQNaN(), inf = qInf();

const RVPath inputs[] = {
        RVPath(),
        make({el(5, 5, M)}),
        make({el(NaN, 0, M), el(10, NaN, L), el(20, 20, L), el(0, 0, Z)}),
        make({el(0, 0, M), el(0, 0, L), el(0, 0, L), el(10, 0, L), el(10, 0, L), el(0, 0, Z)}),
        make({el(5, 5, M), el(5, 5, Z), el(1, 1, D), el(8, 8, L), el(3, 3, C)}),
        make({el(0, 0, D), el(1, 1, C), el(0, 0, Z), el(6, 6, L)}),
        make({el(0, 0, M), el(50, 90, C), el(NaN, 0, D), el(100, 0, D)}),
        make({el(0, 0, M), el(1e300, 1e300, L), el(-1e300, 1e300, C), el(0, 0, D), el(5, 5, D)}),
        make({el(0, 0, M), el(100, 100, C), el(0, 100, D), el(100, 0, D), el(0, 0, Z)}),
        make({el(0, 0, M), el(100, 0, L), el(0, 0, L), el(0, 0, Z)}),
        make({el(0, 0, M), el(0, 0, L), el(40, 0, L), el(NaN, 5, L), el(40, 40, L), el(5, 5, M),
              el(9, 9, M)}),
        make({el(0, 0, M), el(inf, 0, L), el(3, 3, L)}),
};

} // namespace

TEST(RVPathDegenerate, EffectsAndQueriesTerminate)
{
    for (const RVPath &path : inputs) {
        const std::string what = describe(path);
        for (double step : {0.0, -1.0, NaN, 1e9})
            for (double d : {1.0, -5.0, 1e6, NaN, inf}) {
                RVPath out;
                path.parallelPath(out, d, step);
                for (const RVPathElement &e : out.elements())
                    EXPECT_TRUE(qIsFinite(e.x) && qIsFinite(e.y)) << what;
            }
        RVPath source = path, out;
        path.parallelPath(out, 0, 1); // a copy
        EXPECT_EQ(describe(out), what);
        for (double radius : {1.0, 1e9, inf, 0.0, -5.0, NaN}) {
            (out = path).setCornerRound(radius);
            EXPECT_TRUE(radius > 0 ? subpathCount(out) == subpathCount(path)
                                   : describe(out) == what)
                    << what << radius;
        }
        for (int kind = 0; kind <= 7; ++kind)
            source.wavePath(out, kind, 7, 3, 1);
        source.thickPath(out, 3, 3, 2);
        out.manualPath(source, 4, 2);
        for (double length : {5.0, inf})
            (out = path).setLineHead(length, length);
        (out = path).smooth(0);
        (out = path).reverse(), out.roundData(), out.cleanUp();
        QPainterPath qt;
        path.toPainterPath(qt), path.toPainterPathWithRoundValue(qt);
        (void)path.isEvenOdd(), (void)path.isClockWise(), (void)out.getTangent(0, false);
    }
}

TEST(RVPathDegenerate, BooleansAndCrossings)
{
    for (int i = 0; i <= 6; ++i)
        for (int j = 0; j <= 6; ++j) {
            RVPath a = i < 6 ? inputs[i] : circle(50, 50, 30);
            RVPath b = j < 6 ? inputs[j] : circle(60, 50, 30);
            QPointF at;
            RVPath united = a, both = a, cut = a;
            united.unite(b), both.intersect(b), cut.subtract(b);
            (void)a.crossPoints(b), (void)a.dividePath(b, at), a.evenOdd();
        }
    RVPath c = circle(50, 50, 30), empty;
    c.intersect(empty);
    EXPECT_TRUE(c.isEmpty()) << describe(c);
}

TEST(RVPathDegenerate, BuildingWithNonFiniteValues)
{
    WarningCapture quiet; // the NaN arc warns
    RVPath path;
    path.addLine(NaN, 0, 10, NaN);
    path.addBezier(QPointF(NaN, NaN), QPointF(1, 1), QPointF(inf, 2), QPointF(3, 3));
    path.closeSubpath(), path.arcTo(QRectF(0, 0, 10, 10), NaN, 90);
    path.ellipse(QRectF(0, 0, inf, 10));
    EXPECT_EQ(subpathCount(path), 2) << describe(path);
    path = make({el(5, 5, M)});
    EXPECT_TRUE(std::isnan(path.getTangent(0, true))); // no direction
    EXPECT_EQ(path.getTangent(1, true), 0.0);          // no subpath
}

TEST(RVPathDegenerate, ArgumentsThatAreNotNumbers)
{
    RVPath line, out = make({el(1, 2, M)});
    line.addLine(0, 0, 50, 0);
    RVPath().thickPath(out, 5, 5, 2); // no subpath: out unchanged
    EXPECT_EQ(out.elementCount(), 1);
    for (double step : {0.0, -1.0, NaN, inf})
        EXPECT_TRUE((line.thickPath(out, 5, 5, step), out.isEmpty())) << step;
    EXPECT_TRUE((line.thickPath(out, NaN, 5, 2), out.isEmpty()));
    for (double wavelength : {0.0, -5.0, NaN})
        EXPECT_TRUE((line.wavePath(out, 0, wavelength, 3, 1), out.isEmpty()));
    EXPECT_TRUE((line.wavePath(out, 0, 10, NaN, 1), out.isEmpty()));
    // manualPath leaves this path unchanged.
    RVPath kept = line, empty;
    for (double step : {0.0, -2.0, NaN})
        kept.manualPath(line, 3, step);
    kept.manualPath(line, NaN, 2);
    kept.manualPath(empty, 3, 2);
    EXPECT_EQ(describe(kept), describe(line));
}

TEST(RVPathDegenerate, OutMayBeThePathItself)
{
    RVPath line = make({el(0, 0, M), el(100, 0, L)}), path = line;
    path.parallelPath(path, 2, 1);
    EXPECT_EQ(describe(path), describe(make({el(0, -2, M), el(100, -2, L)})));
    (path = line).wavePath(path, 0, 10, 2, 1);
    EXPECT_EQ(countType(path, C), 20) << describe(path);
    (path = line).thickPath(path, 5, 5, 2);
    EXPECT_TRUE(toQt(path, Qt::WindingFill).contains(QPointF(50, 4))) << describe(path);
}
