// RVPath through the compound path: conversions both ways, the booleans
// judged against QPainterPath containment, crossings and division.

#include "rvpathtesthelpers.h"

#include "path/kopath.h"
#include "path/xpath.h"

#include <gtest/gtest.h>

using namespace rvTest;

namespace {

constexpr int M = RVPathElement::MoveTo, L = RVPathElement::LineTo, C = RVPathElement::CurveTo,
              Z = RVPathElement::Close;

// Seeded operands in [0, 300)^2: circles, rectangles and glyph outlines.
RVPath randomShape(std::mt19937 &random)
{
    static const QPainterPath glyphs = [] {
        QString why;
        return testGlyphs::outline(QStringLiteral("B&o"), 40, 200, 140, &why);
    }();
    std::uniform_real_distribution<double> u(60, 240), size(30, 110);
    RVPath path;
    switch (random() % (glyphs.isEmpty() ? 2 : 3)) {
    case 0:
        return circle(u(random), u(random), size(random) / 1.5);
    case 1:
        path.addRect(QRectF(u(random) - 50, u(random) - 50, size(random), size(random)));
        return path;
    default:
        path.fromPainterPath(glyphs.translated(u(random) - 150, u(random) - 150), true);
        return path;
    }
}

} // namespace

TEST(RVPathXPath, ConversionEdgeCases)
{
    // A close marker merges a closing point near the start; a lone move-to
    // gives a one-segment child, which comes back as nothing. fromXPath
    // appends behind existing elements and closes on the start.
    const RVPath source = make({el(0, 0, M), el(10, 0, L), el(10, 10, L), el(0.5, 0.5, L),
                                el(0, 0, Z), el(50, 50, M)});
    XPath x;
    RVPath(source).toXPath(x, 0);
    ASSERT_EQ(x.children.size(), 2);
    EXPECT_EQ(x.children.at(0)->segments.size(), 3);
    RVPath path = make({el(-5, -5, M)}), none;
    path.fromXPath(x, 0, -1);
    EXPECT_EQ(describe(path),
              describe(make({el(-5, -5, M), el(0, 0, M), el(10, 0, L), el(10, 10, L), el(0, 0, L),
                             el(0, 0, Z)})));
    none.fromXPath(x, 1, 7), none.fromXPath(x, -3, 0);
    EXPECT_TRUE(none.isEmpty());
    // firstElement at or beyond the end replaces old children by none.
    RVPath(source).toXPath(x, source.elementCount());
    EXPECT_TRUE(x.children.isEmpty());

    // Kept: evenOdd keeps the tidied elements and appends the rebuilt ones.
    RVPath twice = make({el(7, 7, M), el(0, 0, M), el(10, 0, L), el(10, 10, L), el(0, 10, L),
                         el(0, 0, L), el(0, 0, Z)});
    twice.evenOdd();
    ASSERT_EQ(twice.elementCount(), 12) << describe(twice);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(twice.elementAt(i).type, twice.elementAt(i + 6).type) << describe(twice);
    EXPECT_EQ(twice.elementAt(6).x, 0);

    // Tangent angles at subpath ends, by element index.
    path = make({el(0, 0, M), el(10, 10, L), el(0, 0, M), el(0, -10, L)});
    EXPECT_NEAR(path.getTangent(0, true), 45, 1e-9);
    EXPECT_NEAR(path.getTangent(0, false), 45, 1e-9);
    EXPECT_NEAR(path.getTangent(2, false), -90, 1e-9);
    EXPECT_EQ(path.getTangent(9, true), 0);
}

// On seeded pairs: the booleans fill as the operands say at grid points away
// from the outlines (and keep curves), the crossings lie on both outlines.
TEST(RVPathXPath, BooleansFillLikeTheOperandsAndCrossingsLieOnBoth)
{
    void (RVPath::*const booleans[])(RVPath &) = {&RVPath::unite, &RVPath::intersect,
                                                  &RVPath::subtract};
    auto random = generator(61);
    const char *names[] = {"unite", "intersect", "subtract"};
    int curvedResults = 0;
    for (int k = 0; k < 45; ++k) {
        const RVPath a = randomShape(random), b = randomShape(random);
        const std::string what = "\nA " + describe(a) + "\nB " + describe(b);
        const int op = k % 3;
        RVPath result = a, other = b;
        (result.*booleans[op])(other);
        const QPainterPath qa = toQt(a), qb = toQt(b), qr = toQt(result);
        int mismatches = 0;
        QPointF first;
        for (double x = 1.5; x < 300; x += 6) {
            for (double y = 2.5; y < 300; y += 6) {
                const QPointF p(x, y);
                if (distanceTo(qa, p) < 1.5 || distanceTo(qb, p) < 1.5)
                    continue; // near an edge: no verdict
                const bool inA = qa.contains(p), inB = qb.contains(p);
                const bool want = op == 0 ? inA || inB : op == 1 ? inA && inB : inA && !inB;
                if (qr.contains(p) != want && mismatches++ == 0)
                    first = p;
            }
        }
        EXPECT_EQ(mismatches, 0) << names[op] << " case " << k << " first at " << hexf(first.x())
                                 << ", " << hexf(first.y()) << what << "\nresult "
                                 << describe(result);
        if (countType(a, C) && countType(b, C) && !result.isEmpty()) {
            EXPECT_GT(countType(result, C), 0) << names[op] << " case " << k;
            ++curvedResults;
        }
        RVPath a2 = a;
        const QVector<QPointF> points = a2.crossPoints(other);
        for (const QPointF &p : points)
            EXPECT_LT(std::max(fineDistance(a, p), fineDistance(b, p)), 1e-3)
                    << hexf(p.x()) << ", " << hexf(p.y()) << what;
        EXPECT_EQ(a2.bestCrossPoint(other), points.value(0, QPointF(0, 0)));
    }
    EXPECT_GT(curvedResults, 5);
    // Two properly overlapping circles cross twice; apart they do not.
    RVPath c1 = circle(100, 100, 50), c2 = circle(160, 110, 40), far = circle(400, 100, 20);
    EXPECT_EQ(c1.crossPoints(c2).size(), 2);
    EXPECT_EQ(c1.bestCrossPoint(far), QPointF(0, 0));
}

TEST(RVPathXPath, DividePathKeepsThePartAfterTheFirstCrossing)
{
    RVPath line, band, away;
    line.addLine(0, 50, 200, 50);
    band.addRect(QRectF(50, 0, 50, 100));
    QPointF at(-1, -1);
    ASSERT_TRUE(line.dividePath(band, at));
    EXPECT_LT(QLineF(at, QPointF(50, 50)).length(), 1e-9);
    ASSERT_EQ(line.elementCount(), 2) << describe(line);
    EXPECT_NEAR(line.elementAt(0).x, 50, 1e-9);
    EXPECT_EQ(line.elementAt(1).x, 200);
    away.addLine(0, 500, 10, 500);
    EXPECT_FALSE(away.dividePath(band, at));
    EXPECT_EQ(away.elementCount(), 2);
    EXPECT_NEAR(at.x(), 50, 1e-9); // unchanged
}
