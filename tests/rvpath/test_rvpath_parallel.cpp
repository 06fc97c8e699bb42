// Parallel path: corner joins pinned in a table, distance and side of random
// polylines and glyphs against Qt's drawing of the source.

#include "rvpathtesthelpers.h"

#include <gtest/gtest.h>

using namespace rvTest;

namespace {

const double MiterReach = 1 + std::sqrt(2.0);

// Distance from p to the drawn source and the side of its nearest edge:
// +1 on the side (v.y, -v.x) of the edge direction v.
double sideDistance(const QList<QPolygonF> &source, const QPointF &p, int *side)
{
    double best = INFINITY;
    for (const QPolygonF &poly : source)
        for (int i = 0; i + 1 < poly.size(); ++i) {
            const QPointF a = poly[i], v = poly[i + 1] - a, w = p - a;
            const double t = std::max(
                    0.0, std::min(1.0, QPointF::dotProduct(w, v) / QPointF::dotProduct(v, v)));
            const double dist = QLineF(a + t * v, p).length();
            if (dist < best) {
                best = dist;
                *side = v.y() * w.x() - v.x() * w.y() > 0 ? 1 : -1;
            }
        }
    return best;
}

// Subpaths keep their kind, no vertex lies beyond the miter limit, and the
// edge midpoints away from the source's corners lie at |d| (within tol) on
// the side of d's sign.
void checkOffset(const RVPath &source, double d, double step, double tol, const std::string &what)
{
    RVPath out;
    source.parallelPath(out, d, step);
    const QList<QPolygonF> drawn = toQt(source).toSubpathPolygons();
    ASSERT_TRUE(subpathCount(out) == subpathCount(source)
                && countType(out, E::Close) == countType(source, E::Close))
            << what << describe(out);
    const double limit = std::abs(d) * MiterReach;
    for (const QPolygonF &pts : toQt(out).toSubpathPolygons())
        for (int i = 0; i < pts.size(); ++i) {
            int side = 0;
            EXPECT_LE(sideDistance(drawn, pts[i], &side), limit + tol) << what << describe(out);
            const QPointF p = (pts[i] + pts[std::max(i - 1, 0)]) / 2;
            bool nearCorner = false; // near a segment end of the source
            for (int k = 0; k < source.elementCount(); ++k) {
                const RVPathElement &e = source.elementAt(k);
                const bool control = e.type == E::CurveTo
                        || (e.type == E::CurveData && source.elementAt(k - 1).type == E::CurveTo);
                nearCorner |= !control && QLineF(p, QPointF(e.x, e.y)).length() < limit + 2;
            }
            if (i == 0 || nearCorner)
                continue;
            EXPECT_NEAR(sideDistance(drawn, p, &side), std::abs(d), tol)
                    << what << " at " << hexf(p.x()) << ", " << hexf(p.y());
            EXPECT_EQ(side, d > 0 ? 1 : -1) << what;
        }
}

} // namespace

TEST(RVPathParallel, EdgeCaseTable)
{
    const RVPath square = make(
            {el(0, 0, 0), el(100, 0, 1), el(100, 100, 1), el(0, 100, 1), el(0, 0, 1), el(0, 0, 4)});
    const RVPath corner = make({el(0, 0, 0), el(100, 0, 1), el(100, 100, 1)});
    // A 30 degree corner: its bevel points lie at |d| on the bisector of
    // the normals and on the normals; j: the miter of the 45 degree corner.
    const double sharp = 100 * std::cos(150 * M_PI / 180), b = 10 * std::sin(M_PI / 3);
    const QPointF bisector =
            QPointF(100, 0) + 10 * QPointF(std::cos(M_PI / 12), -std::sin(M_PI / 12));
    const double j = 10 + 10 * std::sqrt(2.0);
    const struct
    {
        const char *what;
        RVPath path;
        double d;
        QVector<QPointF> expected; // vertices; empty: nothing is written
    } cases[] = {
            {"horizontal line", make({el(0, 0, 0), el(10, 0, 1)}), 2, {{0, -2}, {10, -2}}},
            {"right angle: exact miter", corner, 10, {{0, -10}, {110, -10}, {110, 100}}},
            {"right angle: inner side trimmed", corner, -10, {{0, 10}, {90, 10}, {90, 100}}},
            {"short inner edge swallowed",
             make({el(0, 0, 0), el(100, 0, 1), el(102, 2, 1), el(102, 100, 1)}),
             -10,
             {{0, 10}, {92, 10}, {92, 100}}},
            {"30 degree corner: bevel",
             make({el(0, 0, 0), el(100, 0, 1), el(100 + sharp, 50, 1)}),
             10,
             {{0, -10}, {100, -10}, bisector, {105, b}, {100 + sharp + 5, 50 + b}}},
            {"U-turn: tip ahead",
             make({el(0, 0, 0), el(100, 0, 1), el(50, 0, 1)}),
             10,
             {{0, -10}, {100, -10}, {110, 0}, {100, 10}, {50, 10}}},
            {"open path back at its start: joined there",
             make({el(0, 0, 0), el(100, 0, 1), el(100, 100, 1), el(0, 0, 1)}),
             -10,
             {{j, 10}, {90, 10}, {90, 100 - j}, {j, 10}}},
            {"square outside",
             square,
             10,
             {{-10, -10}, {110, -10}, {110, 110}, {-10, 110}, {-10, -10}}},
            {"square inside", square, -10, {{10, 10}, {90, 10}, {90, 90}, {10, 90}, {10, 10}}},
            {"square inside collapses", square, -60, {}},
    };
    for (const auto &c : cases) {
        RVPath out;
        out.moveTo(7, 7); // cleared first
        c.path.parallelPath(out, c.d, 1);
        const QList<QPolygonF> res = toQt(out).toSubpathPolygons();
        ASSERT_EQ(res.size(), c.expected.isEmpty() ? 0 : 1) << c.what << describe(out);
        ASSERT_TRUE(res.isEmpty() || res[0].size() == c.expected.size()) << c.what << describe(out);
        EXPECT_EQ(countType(out, E::Close), c.expected.isEmpty() ? 0 : countType(c.path, E::Close));
        for (int i = 0; i < c.expected.size(); ++i)
            EXPECT_NEAR(QLineF(res[0][i], c.expected[i]).length(), 0, 1e-9)
                    << c.what << " vertex " << i << describe(out);
    }
}

TEST(RVPathParallel, CurvesAreOffsetAlongTheirNormalsAndFoldsTrimmed)
{
    const double k = 0.5522847498 * 100; // quarter circle of radius 100, error < 0.03
    RVPath arc;
    arc.moveTo(100, 0);
    arc.cubicTo(QPointF(100, k), QPointF(k, 100), QPointF(0, 100));
    for (double d : {10.0, -10.0}) {
        RVPath out;
        arc.parallelPath(out, d, 5);       // clockwise on screen: +d is outside
        EXPECT_GE(out.elementCount(), 25); // 157 units at step 5
        for (const RVPathElement &e : out.elements())
            EXPECT_NEAR(std::hypot(e.x, e.y), 100 + d, 0.05) << describe(out);
    }
    // A bend tighter than the distance: its fold is trimmed, no self-crossing.
    RVPath bend, out;
    bend.moveTo(0, 0);
    bend.cubicTo(QPointF(100, 0), QPointF(100, 20), QPointF(0, 20));
    bend.parallelPath(out, 15, 2);
    const QPolygonF pts = toQt(out).toSubpathPolygons().value(0);
    ASSERT_GE(pts.size(), 3);
    for (int i = 0; i + 1 < pts.size(); ++i)
        for (int j = i + 2; j + 1 < pts.size(); ++j)
            EXPECT_NE(QLineF(pts[i], pts[i + 1]).intersects(QLineF(pts[j], pts[j + 1]), nullptr),
                      QLineF::BoundedIntersection)
                    << i << " " << j << describe(out);
    // A vanishing step: a bounded number of chords per curve.
    bend.parallelPath(out, 1, 1e-12);
    EXPECT_TRUE(out.elementCount() > 100 && out.elementCount() < 2000) << out.elementCount();
}

// The first chord of a closed outline was trimmed only against the last one,
// so where the trimming reaches past a neighbour (the inside of a star) the
// result depended on the start vertex.
TEST(RVPathParallel, RegressionClosedInsideOffsetDoesNotDependOnTheStartVertex)
{
    for (int start = 0; start < 10; ++start) {
        QPolygonF star;
        for (int k = start; k < start + 10; ++k)
            star << QPointF((k % 2 ? 60 : 150) * std::cos(k * M_PI / 5 - M_PI / 2),
                            (k % 2 ? 60 : 150) * std::sin(k * M_PI / 5 - M_PI / 2));
        RVPath path, out;
        path.addPolygon(star);
        path.closeSubpath();
        path.parallelPath(out, -40, 1); // leaves a small decagon about the centre
        ASSERT_EQ(subpathCount(out), 1) << start;
        for (const RVPathElement &e : out.elements())
            EXPECT_NEAR(std::hypot(e.x, e.y), 10.5, 1.5) << start << describe(out);
    }
}

TEST(RVPathParallel, RandomPolylinesAndGlyphsKeepTheDistanceOnTheirSide)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::mt19937 random = generator(seed);
        std::uniform_real_distribution<double> u(0, 1);
        // Open: monotone in x, so distinct edges stay apart; closed: star
        // shaped about a centre.
        RVPath open, closed;
        open.moveTo(0, 200 * u(random));
        closed.moveTo(450, 300);
        for (int i = 1; i < 10; ++i) {
            open.lineTo(40 * i + 10 * u(random), 200 * u(random));
            const double a = 2 * M_PI * (i + 0.6 * (u(random) - 0.5)) / 10;
            const double r = 80 + 120 * u(random);
            closed.lineTo(300 + r * std::cos(a), 300 + r * std::sin(a));
        }
        closed.closeSubpath();
        for (double d : {3.0, -3.0}) {
            checkOffset(open, d, 4, 1e-9, "open seed " + std::to_string(seed));
            checkOffset(closed, d, 4, 1e-9, "closed seed " + std::to_string(seed));
        }
    }
    QString why;
    const RVPath source = glyphPath(QStringLiteral("R&"), 20, 330, 380, &why);
    if (source.isEmpty())
        GTEST_SKIP() << why.toStdString();
    // Tolerance: the one-unit merge of near points moves an edge's midpoint
    // by up to half a unit diagonal; chords and Qt's flattening add a little.
    for (double d : {6.0, -6.0})
        checkOffset(source, d, 2, 0.75, "glyphs");
}
