#include "rvpath/rvpathtesthelpers.h"
#include "testglyphs.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace rvTest;

namespace {

// The turning angle at every junction of two drawn segments, closing
// junctions included, from the segments' own end directions.
QVector<double> junctionTurns(const RVPath &path)
{
    QVector<double> turns;
    QVector<QPair<QPointF, QPointF>> sub; // (start, end) direction per segment
    QPointF cur;
    const auto dir = [](QPointF a, QPointF b, QPointF c) {
        return !a.isNull() ? a : !b.isNull() ? b : c;
    };
    const auto angle = [](QPointF a, QPointF b) {
        return std::abs(std::atan2(a.x() * b.y() - a.y() * b.x(), QPointF::dotProduct(a, b)));
    };
    for (int i = 0; i <= path.elementCount(); ++i) {
        const RVPathElement e = i < path.elementCount() ? path.elementAt(i) : el(0, 0, E::MoveTo);
        const QPointF p(e.x, e.y);
        if (e.type == E::MoveTo || e.type == E::Close) {
            for (int k = 0; k + 1 < sub.size() + (e.type == E::Close); ++k)
                turns.append(angle(sub[k].second, sub[(k + 1) % sub.size()].first));
            sub.clear();
        } else if (e.type == E::LineTo && p != cur) {
            sub.append({p - cur, p - cur});
        } else if (e.type == E::CurveTo && i + 2 < path.elementCount()) {
            const QPointF c2(path.elementAt(i + 1).x, path.elementAt(i + 1).y);
            const QPointF end(path.elementAt(i + 2).x, path.elementAt(i + 2).y);
            sub.append({dir(p - cur, c2 - cur, end - cur), dir(end - c2, end - p, end - cur)});
            i += 2;
            cur = end;
            continue;
        }
        cur = p;
    }
    return turns;
}

int count(const RVPath &path, int type)
{
    int n = 0;
    for (const RVPathElement &e : path.elements())
        n += e.type == type;
    return n;
}

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
    EXPECT_EQ(count(out, E::CurveTo), count(source, E::CurveTo) + corners) << what;
    for (double t : junctionTurns(out))
        EXPECT_LT(t, 0.001) << what << describe(out);
    EXPECT_EQ(count(out, E::MoveTo), count(source, E::MoveTo)) << what;
    EXPECT_EQ(count(out, E::Close), count(source, E::Close)) << what;
    QPainterPath qtSource, qtOut;
    source.toPainterPath(qtSource);
    out.toPainterPath(qtOut);
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
        ASSERT_EQ(out.elementCount(), c.expected.elementCount()) << c.what << describe(out);
        for (int i = 0; i < out.elementCount(); ++i) {
            EXPECT_EQ(out.elementAt(i).type, c.expected.elementAt(i).type) << c.what << i;
            EXPECT_NEAR(out.elementAt(i).x, c.expected.elementAt(i).x, 1e-12) << c.what << i;
            EXPECT_NEAR(out.elementAt(i).y, c.expected.elementAt(i).y, 1e-12) << c.what << i;
        }
    }
}

TEST(RVPathCorner, NoRadiusLeavesThePathBitForBit)
{
    RVPath path = make({el(0, 0, 0), el(10, 0, 1), el(3, 4, 2), el(5, 6, 3), el(9, 9, 3),
                        el(0, 0, 4), el(qQNaN(), 1, 1), el(1, 2, 3)});
    for (double radius : {0.0, -5.0, qQNaN()}) {
        RVPath out = path;
        out.setCornerRound(radius);
        ASSERT_EQ(out.elementCount(), path.elementCount());
        EXPECT_EQ(0,
                  std::memcmp(out.elements().constData(), path.elements().constData(),
                              sizeof(RVPathElement) * path.elementCount()));
    }
}

TEST(RVPathCorner, BridgeHandlesAreLongerWhereTheyMeetACurve)
{
    RVPath path =
            make({el(0, 0, 0), el(100, 0, 1), el(100, 50, 2), el(150, 100, 3), el(200, 100, 3)});
    path.setCornerRound(10);
    ASSERT_EQ(path.elementCount(), 8) << describe(path);
    const auto at = [&](int i) { return QPointF(path.elementAt(i).x, path.elementAt(i).y); };
    EXPECT_EQ(at(1), QPointF(90, 0));
    EXPECT_NEAR(QLineF(at(1), at(2)).length(), 4.48, 1e-9);
    EXPECT_NEAR(QLineF(at(3), at(4)).length(), 6.72, 1e-9) << describe(path);
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
    const QPainterPath glyph = testGlyphs::outline(QStringLiteral("R&"), 20, 330, 380, &why);
    if (glyph.isEmpty())
        GTEST_SKIP() << why.toStdString();
    RVPath raw, source; // closed subpaths
    raw.fromPainterPath(glyph);
    for (const RVPathElement &e : raw.elements()) {
        if (e.type == E::MoveTo)
            source.closeSubpath();
        source.appendElement(e);
    }
    source.closeSubpath();
    checkRounding(source, 8, "glyphs");
}
