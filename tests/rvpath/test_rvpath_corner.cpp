// Corner rounding: the bridging cubics pinned in a table, and one smooth
// cubic per corner on random polylines and glyphs.

#include "rvpathtesthelpers.h"

#include <gtest/gtest.h>

using namespace rvTest;

namespace {

// One cubic per corner (turn >= 0.001), no corner left, every point of the
// result within the radius of the source, subpaths and closes kept.
void checkRounding(const RVPath &source, double radius, const std::string &what)
{
    RVPath out = source;
    out.setCornerRound(radius);
    int corners = 0;
    for (double t : junctionTurns(source))
        corners += t >= 0.001;
    EXPECT_GT(corners, 0) << what;
    EXPECT_EQ(countType(out, E::CurveTo), countType(source, E::CurveTo) + corners) << what;
    for (double t : junctionTurns(out))
        EXPECT_LT(t, 0.001) << what << describe(out);
    EXPECT_EQ(subpathCount(out), subpathCount(source)) << what;
    EXPECT_EQ(countType(out, E::Close), countType(source, E::Close)) << what;
    const QPainterPath qtSource = toQt(source), qtOut = toQt(out);
    for (double f = 0; f <= 1; f += 1.0 / 200)
        EXPECT_LE(distanceTo(qtSource, qtOut.pointAtPercent(f)), radius + 1e-6) << what << f;
}

} // namespace

TEST(RVPathCorner, ElementTable)
{
    const double h = 4.48, hc = 6.72; // 0.448 of the cuts 10 and 15
    const struct
    {
        const char *what;
        RVPath path;
        double radius;
        RVPath expected;
    } cases[] = {
            {"right angle, radius 10", make({el(0, 0, 0), el(100, 0, 1), el(100, 100, 1)}), 10,
             make({el(0, 0, 0), el(90, 0, 1), el(90 + h, 0, 2), el(100, 10 - h, 3), el(100, 10, 3),
                   el(100, 100, 1)})},
            {"collinear within 0.001 rad", make({el(0, 0, 0), el(50, 0, 1), el(100, 0.04, 1)}), 10,
             make({el(0, 0, 0), el(50, 0, 1), el(100, 0.04, 1)})},
            {"radius clamped to half a segment",
             make({el(0, 0, 0), el(100, 0, 1), el(100, 30, 1), el(200, 30, 1)}), 50,
             make({el(0, 0, 0), el(85, 0, 1), el(85 + hc, 0, 2), el(100, 15 - hc, 3),
                   el(100, 15, 3), el(100, 15 + hc, 2), el(115 - hc, 30, 3), el(115, 30, 3),
                   el(200, 30, 1)})},
            {"closed square starts after its closing corner",
             make({el(0, 0, 0), el(100, 0, 1), el(100, 100, 1), el(0, 100, 1), el(0, 0, 1),
                   el(0, 0, 4)}),
             10,
             make({el(10, 0, 0), el(90, 0, 1), el(90 + h, 0, 2), el(100, 10 - h, 3), el(100, 10, 3),
                   el(100, 90, 1), el(100, 90 + h, 2), el(90 + h, 100, 3), el(90, 100, 3),
                   el(10, 100, 1), el(10 - h, 100, 2), el(0, 90 + h, 3), el(0, 90, 3), el(0, 10, 1),
                   el(0, 10 - h, 2), el(10 - h, 0, 3), el(10, 0, 3), el(10, 0, 4)})},
    };
    for (const auto &c : cases) {
        RVPath out = c.path;
        out.setCornerRound(c.radius);
        EXPECT_EQ(describe(out), describe(c.expected)) << c.what;
    }
    // Where the bridge meets a curve its handle is 1.5 times longer.
    RVPath curve =
            make({el(0, 0, 0), el(100, 0, 1), el(100, 50, 2), el(150, 100, 3), el(200, 100, 3)});
    curve.setCornerRound(10);
    ASSERT_EQ(curve.elementCount(), 8) << describe(curve);
    EXPECT_EQ(pointAt(curve, 1), QPointF(90, 0));
    EXPECT_NEAR(QLineF(pointAt(curve, 1), pointAt(curve, 2)).length(), h, 1e-9);
    EXPECT_NEAR(QLineF(pointAt(curve, 3), pointAt(curve, 4)).length(), 1.5 * h, 1e-9);
}

TEST(RVPathCorner, RandomPolylinesAndGlyphsGetOneSmoothCubicPerCorner)
{
    for (unsigned seed = 1; seed <= 30; ++seed) {
        std::mt19937 random = generator(seed);
        const QVector<QPointF> pts = randomPolyline(random, 8);
        RVPath open;
        open.addLines(pts.constData(), pts.size());
        checkRounding(open, 10, "open seed " + std::to_string(seed));
        open.closeSubpath();
        checkRounding(open, 10, "closed seed " + std::to_string(seed));
    }
    QString why;
    const RVPath glyphs = glyphPath(QStringLiteral("R&"), 20, 330, 380, &why);
    if (glyphs.isEmpty())
        GTEST_SKIP() << why.toStdString();
    checkRounding(glyphs, 8, "glyphs");
}
