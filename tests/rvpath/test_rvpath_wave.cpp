// Wave, hand-drawn and smoothed lines: piece counts, heights and sides of
// the waves measured on the drawn result, jitter bounds of the hand-drawn
// line, closing, and totality on degenerate input.

#include "rvpathtesthelpers.h"
#include "testglyphs.h"

#include <QtGui/QTransform>
#include <gtest/gtest.h>

#include <limits>

using namespace rvTest;

namespace {

RVPath wave(RVPath source, int kind, double wavelength, double amplitude, double factor)
{
    RVPath out;
    source.wavePath(out, kind, wavelength, amplitude, factor);
    return out;
}

int countType(const RVPath &path, int type)
{
    int n = 0;
    for (const RVPathElement &e : path.elements())
        n += e.type == type;
    return n;
}

// A wave along the x axis resampled every 0.05: the runs beyond +-0.9 of
// \a height on each side, and the largest |y|. Flattened at 64 times the
// height, as Qt flattens to about half a unit.
struct Excursions
{
    int above = 0, below = 0;
    double reach = 0;
};

Excursions excursions(const RVPath &path, double height)
{
    QPainterPath qt;
    path.toPainterPath(qt);
    Excursions result;
    int state = 0;
    for (const QPolygonF &poly : QTransform::fromScale(1, 64).map(qt).toSubpathPolygons()) {
        for (int i = 0; i + 1 < poly.size(); ++i) {
            const int steps = 1 + int(QLineF(poly[i], poly[i + 1]).length() / 0.05);
            for (int j = 0; j <= steps; ++j) {
                const double y = (poly[i] + (poly[i + 1] - poly[i]) * j / steps).y() / 64;
                result.reach = std::max(result.reach, std::abs(y));
                const int now = y > 0.9 * height ? 1 : y < -0.9 * height ? -1 : 0;
                result.above += now != state && now == 1;
                result.below += now != state && now == -1;
                state = now;
            }
        }
    }
    return result;
}

} // namespace

TEST(RVPathWave, PieceCountsOnAClosedSquareOfLength50)
{
    RVPath square;
    square.addRect(QRectF(0, 0, 12.5, 12.5));
    // Kind 0 halves alternate (two cubics each): 5 is odd and not below
    // 50 / 10, so 4; 50 / 11 = 4.5 rounds to 5, also 4; 50 / 9.5 = 5.26: 6.
    // Kind 1 keeps 5 bumps, kind 5 five periods of four cubics.
    EXPECT_EQ(countType(wave(square, 0, 10, 2, 1), E::CurveTo), 8);
    EXPECT_EQ(countType(wave(square, 0, 11, 2, 1), E::CurveTo), 8);
    EXPECT_EQ(countType(wave(square, 0, 9.5, 2, 1), E::CurveTo), 12);
    EXPECT_EQ(countType(wave(square, 1, 10, 2, 1), E::CurveTo), 5);
    EXPECT_EQ(countType(wave(square, 5, 10, 2, 1), E::CurveTo), 20);
}

TEST(RVPathWave, KindsOnALineHaveTheirCountHeightAndSide)
{
    RVPath line;
    line.addLine(0, 0, 200, 0);
    // 10 pieces of height 6 on the side (t.y, -t.x): y < 0 along +x.
    const int rows[][3] = {{0, 5, 5},   {1, 0, 10}, {2, 0, 10}, {3, 5, 5},  {4, 10, 10},
                           {5, 10, 10}, {6, 5, 5},  {7, 0, 10}, {-3, 0, 10}};
    for (const auto &row : rows) {
        const RVPath out = wave(line, row[0], 20, 6, 1);
        const Excursions ex = excursions(out, 6);
        EXPECT_TRUE(ex.above == row[1] && ex.below == row[2] && std::abs(ex.reach - 6) < 0.05)
                << "kind " << row[0] << ": " << ex.above << " " << ex.below << " " << ex.reach;
        EXPECT_EQ(QPointF(out.elementAt(0).x, out.elementAt(0).y), QPointF(0, 0));
        EXPECT_EQ(out.elementAt(out.elementCount() - 1).x, 200) << "kind " << row[0];
    }
    // Amplitude -1 is half the wavelength: 5 * factor.
    EXPECT_NEAR(excursions(wave(line, 3, 10, -1, 0.5), 2.5).reach, 2.5, 1e-9);
    EXPECT_NEAR(excursions(wave(line, 3, 10, -2, 1), 2).reach, 2, 1e-9);
}

TEST(RVPathWave, ClosedWavesCloseOnThemselves)
{
    QVector<RVPath> shapes(2);
    shapes[0].ellipse(QRectF(-50, -50, 100, 100));
    const QPointF star[] = {{0, -80}, {20, -25}, {76, -25}, {30, 10},   {47, 65},
                            {0, 32},  {-47, 65}, {-30, 10}, {-76, -25}, {-20, -25}};
    shapes[1].addLines(star, 10);
    shapes[1].closeSubpath();
    for (const RVPath &shape : shapes) {
        for (int kind = 0; kind <= 7; ++kind) {
            const RVPath out = wave(shape, kind, 9, 3, 1);
            const int n = out.elementCount(), lines = countType(out, E::LineTo);
            ASSERT_GT(n, 2);
            EXPECT_EQ(out.elementAt(n - 1).type, int(E::Close));
            // The last cubic ends on the start: no line back to it.
            EXPECT_TRUE(kind == 3 || kind == 4 || kind == 6
                        || out.elementAt(n - 2).type == E::CurveData);
            // Alternating kinds have an even number of pieces.
            EXPECT_TRUE((kind != 0 || countType(out, E::CurveTo) % 4 == 0)
                        && (kind != 3 || lines % 4 == 0) && (kind != 6 || lines % 4 == 1))
                    << "kind " << kind << describe(out);
        }
    }
}

TEST(RVPathWave, ManualPathFollowsTheSourceWithinTheNoise)
{
    RVPath line, out;
    line.addLine(0, 0, 100, 0);
    out.manualPath(line, 0, 10);
    ASSERT_EQ(out.elementCount(), 11) << describe(out);
    for (int i = 0; i < 11; ++i)
        EXPECT_NEAR(out.elementAt(i).x, 10 * i, 1e-9);
    // Shorter than the step: S and E only, or S alone when E is near.
    line = make({el(0, 0, E::MoveTo), el(5, 0, E::LineTo)});
    EXPECT_EQ((out.manualPath(line, 3, 10), out.elementCount()), 2);
    line = make({el(0, 0, E::MoveTo), el(0.5, 0, E::LineTo)});
    EXPECT_EQ((out.manualPath(line, 3, 10), out.elementCount()), 1);
    // A closed source closes, its last line back at S.
    RVPath rect;
    rect.addRect(QRectF(10, 10, 60, 40));
    out.manualPath(rect, 0, 7);
    EXPECT_EQ(out.elementAt(out.elementCount() - 1).type, int(E::Close));
    EXPECT_EQ(QPointF(out.elementAt(out.elementCount() - 2).x,
                      out.elementAt(out.elementCount() - 2).y),
              QPointF(10, 10));
    // Random polylines: amplitude a keeps within 1.875 a of the source.
    std::mt19937 random = generator(3);
    for (int run = 0; run < 30; ++run) {
        const QVector<QPointF> pts = randomPolyline(random, 2 + run % 7);
        RVPath source;
        source.addLines(pts.constData(), pts.size());
        const double amplitude = run % 2 ? 0 : 6;
        out.manualPath(source, amplitude, 3);
        for (const RVPathElement &e : out.elements())
            EXPECT_LE(distanceTo(source, QPointF(e.x, e.y)), 1.875 * amplitude + 1e-6)
                    << describe(source) << " amplitude " << amplitude;
    }
}

TEST(RVPathWave, SmoothKeepsSubpathsAndPoints)
{
    QString why;
    RVPath path;
    path.fromPainterPath(testGlyphs::outline(QStringLiteral("g"), 0, 100, 100, &why));
    path.addRect(QRectF(200, 0, 50, 30));
    const QPointF zig[] = {{0, 200}, {30, 150}, {60, 210}, {90, 160}};
    path.addLines(zig, 4);
    for (int type = 0; type <= 3; ++type) {
        RVPath smoothed = path;
        smoothed.smooth(type);
        EXPECT_EQ(subpathCount(smoothed), subpathCount(path)) << type;
        for (const QPointF &p : zig)
            EXPECT_LT(distanceTo(smoothed, p), 1e-9) << type;
    }
}

TEST(RVPathWave, DegenerateInputs)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    RVPath line, empty;
    line.addLine(0, 0, 100, 0);
    RVPath broken = make({el(0, 0, E::MoveTo), el(0, 0, E::LineTo), el(nan, 5, E::LineTo),
                          el(40, 40, E::LineTo), el(5, 5, E::MoveTo), el(9, 9, E::MoveTo)});
    // Rejected: out empty, or this path unchanged.
    for (double wavelength : {0.0, -5.0, nan})
        EXPECT_TRUE(wave(line, 0, wavelength, 3, 1).isEmpty());
    EXPECT_TRUE(wave(line, 0, 10, nan, 1).isEmpty());
    RVPath kept = line;
    for (double step : {0.0, -2.0, nan})
        kept.manualPath(line, 3, step);
    kept.manualPath(line, nan, 2);
    kept.manualPath(empty, 3, 2);
    EXPECT_TRUE(kept.elementCount() == 2 && kept.elementAt(1).x == 100);
    // Into itself; too short for a wave: copied; huge counts bounded.
    RVPath self = line;
    self.wavePath(self, 0, 10, 2, 1);
    EXPECT_EQ(countType(self, E::CurveTo), 20);
    EXPECT_EQ(wave(line, 0, 1000, 3, 1).elementCount(), 2);
    EXPECT_LE(wave(line, 3, 1e-9, 3, 1).elementCount(), 1 + 100000 * 2);
    // NaN points, zero-length pieces and lone move-tos: no crash.
    for (int kind = 0; kind <= 7; ++kind)
        wave(broken, kind, 7, 3, 1);
    kept.manualPath(broken, 4, 2);
    broken.smooth(0);
    kept = make({el(3, 3, E::MoveTo)});
    kept.smooth(1); // a single point is dropped
    EXPECT_TRUE(kept.isEmpty());
}

// A compound path turns its later closed children round; the wave of a
// closed subpath must not depend on its place in the path (its bumps went
// inwards behind an open line).
TEST(RVPathWave, RegressionLaterClosedSubpathKeepsItsSide)
{
    RVPath circle, both;
    circle.ellipse(QRectF(350, 40, 180, 180));
    both.addLine(0, 0, 200, 50);
    both.ellipse(QRectF(350, 40, 180, 180));
    const RVPath alone = wave(circle, 1, 30, 10, 1), behind = wave(both, 1, 30, 10, 1);
    int first = 1;
    while (first < behind.elementCount() && behind.elementAt(first).type != E::MoveTo)
        ++first;
    ASSERT_EQ(behind.elementCount() - first, alone.elementCount()) << describe(behind);
    for (int i = 0; i < alone.elementCount(); ++i) {
        EXPECT_EQ(behind.elementAt(first + i).x, alone.elementAt(i).x) << i;
        EXPECT_EQ(behind.elementAt(first + i).y, alone.elementAt(i).y) << i;
    }
}
