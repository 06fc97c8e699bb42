// Wave, hand-drawn and smoothed lines: piece counts, heights and sides of
// the waves measured on the drawn result, the noise bound of the hand-drawn
// line, and closing.

#include "rvpathtesthelpers.h"

#include "geometry/konumeric.h"

#include <gtest/gtest.h>

using namespace rvTest;

namespace {

constexpr int M = E::MoveTo, L = E::LineTo, C = E::CurveTo, D = E::CurveData, Z = E::Close;

RVPath wave(RVPath source, int kind, double wavelength, double amplitude, double factor)
{
    RVPath out;
    source.wavePath(out, kind, wavelength, amplitude, factor);
    return out;
}

// A wave along the x axis, flattened at 64 times its height (Qt flattens to
// about half a unit): the runs beyond +-0.9 of \a height on each side, the
// largest |y| (a polygon's extremes are at its vertices) and the largest
// distance from the sine -height sin(2 pi x / period).
struct Excursions
{
    int above = 0, below = 0;
    double reach = 0, sine = 0;
};

Excursions excursions(const RVPath &path, double height, double period = 1)
{
    Excursions result;
    int state = 0;
    for (const QPolygonF &poly : QTransform::fromScale(1, 64).map(toQt(path)).toSubpathPolygons()) {
        for (const QPointF &p : poly) {
            const double y = p.y() / 64;
            result.reach = std::max(result.reach, std::abs(y));
            result.sine = std::max(result.sine,
                                   std::abs(y + height * std::sin(2 * M_PI * p.x() / period)));
            const int now = y > 0.9 * height ? 1 : y < -0.9 * height ? -1 : 0;
            result.above += now != state && now == 1;
            result.below += now != state && now == -1;
            state = now;
        }
    }
    return result;
}

} // namespace

TEST(RVPathWave, KindsOnALineHaveTheirCountHeightAndSide)
{
    RVPath line;
    line.addLine(0, 0, 200, 0);
    // 10 pieces of height 6 on the side (t.y, -t.x): y < 0 along +x.
    const int rows[][3] = {{0, 5, 5},   {1, 0, 10}, {2, 0, 10}, {3, 5, 5},  {4, 10, 10},
                           {5, 10, 10}, {6, 5, 5},  {7, 0, 10}, {-3, 0, 10}};
    for (const auto &row : rows) {
        const RVPath out = wave(line, row[0], 20, 6, 1);
        const Excursions ex = excursions(out, 6, row[0] == 0 ? 40 : 20);
        EXPECT_TRUE(ex.above == row[1] && ex.below == row[2] && std::abs(ex.reach - 6) < 0.05)
                << "kind " << row[0] << ": " << ex.above << " " << ex.below << " " << ex.reach;
        // The sines: half a period a piece alternating, and a whole one.
        EXPECT_TRUE(row[0] % 5 || ex.sine < 0.02) << "kind " << row[0] << ": " << ex.sine;
        EXPECT_EQ(pointAt(out, 0), QPointF(0, 0));
        EXPECT_EQ(out.elementAt(out.elementCount() - 1).x, 200) << "kind " << row[0];
    }
    // Amplitude -1 is half the wavelength: 5 * factor.
    EXPECT_NEAR(excursions(wave(line, 3, 10, -1, 0.5), 2.5).reach, 2.5, 1e-9);
    EXPECT_NEAR(excursions(wave(line, 3, 10, -2, 1), 2).reach, 2, 1e-9);
    // Shorter than half a wave: the line itself; a huge count is bounded.
    EXPECT_EQ(describe(wave(line, 0, 1000, 3, 1)), describe(line));
    EXPECT_LE(wave(line, 3, 1e-9, 3, 1).elementCount(), 1 + 100000 * 2);
}

TEST(RVPathWave, ClosedWavesCloseOnThemselvesWithEvenAlternatingCounts)
{
    // A square of length 50. Kind 0 alternates halves (two cubics each): 5
    // is odd and not below 50 / 10, so 4; 50 / 11 = 4.5 rounds to 5, also 4;
    // 50 / 9.5 = 5.26: 6. Kind 1 keeps 5 bumps, kind 5 five periods of four.
    RVPath square;
    square.addRect(QRectF(0, 0, 12.5, 12.5));
    const double rows[][3] = {{0, 10, 8}, {0, 11, 8}, {0, 9.5, 12}, {1, 10, 5}, {5, 10, 20}};
    for (const auto &r : rows)
        EXPECT_EQ(countType(wave(square, int(r[0]), r[1], 2, 1), C), r[2]) << r[0] << " " << r[1];

    QVector<RVPath> shapes(2);
    shapes[0].ellipse(QRectF(-50, -50, 100, 100));
    const QPointF star[] = {{0, -80}, {20, -25}, {76, -25}, {30, 10},   {47, 65},
                            {0, 32},  {-47, 65}, {-30, 10}, {-76, -25}, {-20, -25}};
    shapes[1].addLines(star, 10);
    shapes[1].closeSubpath();
    for (const RVPath &shape : shapes) {
        for (int kind = 0; kind <= 7; ++kind) {
            const RVPath out = wave(shape, kind, 9, 3, 1);
            const int n = out.elementCount(), lines = countType(out, L);
            ASSERT_GT(n, 2);
            EXPECT_EQ(out.elementAt(n - 1).type, Z);
            // The last cubic ends on the start: no line back to it.
            EXPECT_TRUE(kind == 3 || kind == 4 || kind == 6 || out.elementAt(n - 2).type == D);
            EXPECT_TRUE((kind != 0 || countType(out, C) % 4 == 0) && (kind != 3 || lines % 4 == 0)
                        && (kind != 6 || lines % 4 == 1))
                    << "kind " << kind << describe(out);
        }
    }
}

TEST(RVPathWave, ManualPathFollowsTheSourceWithinTheNoise)
{
    RVPath line, out;
    line.addLine(0, 0, 100, 0);
    // Every step a point displaced by the 1-D noise at 0.05 of its offset,
    // to the side (t.y, -t.x): y < 0 along +x; S and E stay.
    out.manualPath(line, 3, 10);
    ASSERT_EQ(out.elementCount(), 11) << describe(out);
    for (int i = 0; i < 11; ++i) {
        const double noise = i % 10 ? 3 * koNumeric::perlinNoise_1D(0.05 * 10 * i) : 0;
        EXPECT_TRUE(std::abs(out.elementAt(i).x - 10 * i) < 1e-9
                    && std::abs(out.elementAt(i).y + noise) < 1e-9)
                << describe(out);
    }
    // Shorter than the step: S and E only, or S alone when E is near.
    line = make({el(0, 0, M), el(5, 0, L)});
    EXPECT_EQ((out.manualPath(line, 3, 10), out.elementCount()), 2);
    line = make({el(0, 0, M), el(0.5, 0, L)});
    EXPECT_EQ((out.manualPath(line, 3, 10), out.elementCount()), 1);
    // A closed source closes, its last line back at S.
    RVPath rect;
    rect.addRect(QRectF(10, 10, 60, 40));
    out.manualPath(rect, 0, 7);
    EXPECT_EQ(out.elementAt(out.elementCount() - 1).type, Z);
    EXPECT_EQ(pointAt(out, out.elementCount() - 2), QPointF(10, 10));
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
    RVPath path = glyphPath(QStringLiteral("g"), 0, 100, 100, &why);
    path.addRect(QRectF(200, 0, 50, 30));
    const QPointF zig[] = {{0, 200}, {30, 150}, {60, 210}, {90, 160}};
    path.addLines(zig, 4);
    for (int type = 0; type <= 3; ++type) {
        RVPath smoothed = path, open;
        smoothed.smooth(type);
        EXPECT_EQ(subpathCount(smoothed), subpathCount(path)) << type;
        for (const QPointF &p : zig)
            EXPECT_LT(distanceTo(smoothed, p), 1e-9) << type;
        // The whole zigzag (the last subpath) turns without a corner.
        open.setElements(smoothed.elements().mid(smoothed.elementCount() - 10));
        ASSERT_EQ(open.elementAt(0).type, M) << describe(smoothed);
        for (double turn : junctionTurns(open))
            EXPECT_LT(turn, 1e-6) << type << describe(open);
    }
    path = make({el(3, 3, M)});
    path.smooth(1); // a single point is dropped
    EXPECT_TRUE(path.isEmpty());
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
    RVPath second;
    second.setElements(behind.elements().mid(behind.elementCount() - alone.elementCount()));
    EXPECT_EQ(subpathCount(behind), 2);
    EXPECT_EQ(describe(second), describe(alone));
}
