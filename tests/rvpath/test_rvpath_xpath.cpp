// RVPath through the compound path: conversions both ways, the booleans
// judged against QPainterPath containment, crossings and division.

#include "rvpathtesthelpers.h"
#include "testglyphs.h"

#include "path/kopath.h"
#include "path/xpath.h"

#include <QtGui/QTransform>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using namespace rvTest;

namespace {

constexpr int M = RVPathElement::MoveTo, L = RVPathElement::LineTo, C = RVPathElement::CurveTo,
              Z = RVPathElement::Close;

QPainterPath toQt(const RVPath &path)
{
    QPainterPath qt;
    path.toPainterPath(qt);
    return qt;
}

bool hasCurves(const RVPath &path)
{
    const auto &e = path.elements();
    return std::any_of(e.begin(), e.end(), [](const RVPathElement &x) { return x.type == C; });
}

RVPath circle(double cx, double cy, double r)
{
    RVPath path;
    path.ellipse(QRectF(cx - r, cy - r, 2 * r, 2 * r));
    return path;
}

// Qt ends a closed subpath on its start without a marker; the reading that
// marks them must keep every painter element and close every outline.
RVPath closedFromQt(const QPainterPath &qt)
{
    RVPath path;
    path.fromPainterPath(qt, true);
    QPainterPath back;
    path.toPainterPath(back);
    EXPECT_EQ(back.elementCount(), qt.elementCount());
    for (int i = 0; i < std::min(back.elementCount(), qt.elementCount()); ++i)
        EXPECT_EQ(QPointF(back.elementAt(i)), QPointF(qt.elementAt(i))) << i;
    EXPECT_EQ(subpathCount(path),
              std::count_if(path.elements().begin(), path.elements().end(),
                            [](const RVPathElement &e) { return e.type == Z; }));
    return path;
}

// Distance to the drawn outline with Qt's flattening made 1024 times finer.
double fineDistance(const RVPath &path, const QPointF &p)
{
    return distanceTo(QTransform::fromScale(1024, 1024).map(toQt(path)), p * 1024) / 1024;
}

// Seeded operands in [0, 300)^2: circles, rectangles and glyph outlines.
RVPath randomShape(std::mt19937 &random)
{
    static const QPainterPath glyphs = [] {
        QString why;
        return testGlyphs::outline(QStringLiteral("B&o"), 40, 200, 140, &why);
    }();
    std::uniform_real_distribution<double> u(60, 240), size(30, 110);
    const int kind = random() % (glyphs.isEmpty() ? 2 : 3);
    RVPath path = kind == 0 ? circle(u(random), u(random), size(random) / 1.5) : RVPath();
    if (kind == 1)
        path.addRect(QRectF(u(random) - 50, u(random) - 50, size(random), size(random)));
    return kind == 2 ? closedFromQt(glyphs.translated(u(random) - 150, u(random) - 150)) : path;
}

void (RVPath::*const booleans[])(RVPath &) = {&RVPath::unite, &RVPath::intersect,
                                              &RVPath::subtract};

} // namespace

TEST(RVPathXPath, ConversionEdgeCases)
{
    // firstElement at or beyond the end replaces old children by none.
    RVPath square;
    square.addRect(QRectF(0, 0, 10, 10));
    XPath x;
    square.toXPath(x, 0);
    ASSERT_EQ(x.children.size(), 1);
    EXPECT_TRUE(x.children.at(0)->isClosed());
    EXPECT_EQ(x.children.at(0)->segments.size(), 4); // closing point merged
    square.toXPath(x, square.elementCount());
    EXPECT_TRUE(x.children.isEmpty());
    RVPath().toXPath(x, 0);
    EXPECT_TRUE(x.children.isEmpty());

    // A closed child comes back with a line to its start only when the last
    // point is not near it; fromXPath appends behind existing elements.
    koPath *child = new koPath;
    child->moveTo(0, 0);
    child->lineTo(10, 0);
    child->lineTo(10, 10);
    child->lineTo(0.5, 0.5);
    child->setClosed(true);
    koPath *single = new koPath;
    single->moveTo(50, 50);
    x.setChildren({child, single});
    RVPath path = make({el(-5, -5, M)});
    path.fromXPath(x, 0, -1);
    const RVPath want = make(
            {el(-5, -5, M), el(0, 0, M), el(10, 0, L), el(10, 10, L), el(0, 0, L), el(0, 0, Z)});
    EXPECT_EQ(describe(path), describe(want));
    RVPath none;
    none.fromXPath(x, 1, 7); // the one-segment child adds nothing
    none.fromXPath(x, -3, 0);
    EXPECT_TRUE(none.isEmpty());

    // evenOdd keeps the tidied elements and appends the rebuilt ones.
    RVPath twice = make({el(7, 7, M), el(0, 0, M), el(10, 0, L), el(10, 10, L), el(0, 10, L),
                         el(0, 0, L), el(0, 0, Z)});
    twice.evenOdd();
    ASSERT_EQ(twice.elementCount(), 12) << describe(twice);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(twice.elementAt(i).type, twice.elementAt(i + 6).type) << describe(twice);
    EXPECT_EQ(twice.elementAt(6).x, 0);
}

TEST(RVPathXPath, BooleansFillLikeTheOperandsAndKeepCurves)
{
    auto random = generator(61);
    const char *names[] = {"unite", "intersect", "subtract"};
    int curvedResults = 0;
    for (int k = 0; k < 45; ++k) {
        const RVPath a = randomShape(random), b = randomShape(random);
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
                                 << ", " << hexf(first.y()) << "\nA " << describe(a) << "\nB "
                                 << describe(b) << "\nresult " << describe(result);
        if (hasCurves(a) && hasCurves(b) && !result.isEmpty()) {
            EXPECT_TRUE(hasCurves(result)) << names[op] << " case " << k;
            ++curvedResults;
        }
    }
    EXPECT_GT(curvedResults, 5);
}

TEST(RVPathXPath, CrossPointsLieOnBothOutlines)
{
    auto random = generator(62);
    for (int k = 0; k < 40; ++k) {
        RVPath a = randomShape(random), b = randomShape(random);
        const QVector<QPointF> points = a.crossPoints(b);
        for (const QPointF &p : points) {
            EXPECT_LT(std::max(fineDistance(a, p), fineDistance(b, p)), 1e-3)
                    << hexf(p.x()) << ", " << hexf(p.y()) << "\nA " << describe(a) << "\nB "
                    << describe(b);
        }
        EXPECT_EQ(a.bestCrossPoint(b), points.value(0, QPointF(0, 0)));
    }
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
    EXPECT_LT(distanceTo(line, QPointF(100, 50)), 1e-9); // the second crossing is kept

    away.addLine(0, 500, 10, 500);
    EXPECT_FALSE(away.dividePath(band, at));
    EXPECT_EQ(away.elementCount(), 2);
    EXPECT_NEAR(at.x(), 50, 1e-9);
}

TEST(RVPathXPath, TangentAtSubpathEnds)
{
    RVPath path;
    path.addLine(0, 0, 10, 10);
    path.moveTo(0, 0);
    path.lineTo(0, -10);
    EXPECT_NEAR(path.getTangent(0, true), 45, 1e-9);
    EXPECT_NEAR(path.getTangent(0, false), 45, 1e-9);
    EXPECT_NEAR(path.getTangent(2, false), -90, 1e-9);
    EXPECT_EQ(path.getTangent(9, true), 0);
}

TEST(RVPathXPath, DegenerateOperandsDoNotCrash)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const RVPath inputs[] = {RVPath(), make({el(5, 5, M)}),
                             make({el(nan, 0, M), el(10, nan, L), el(20, 20, L), el(0, 0, Z)}),
                             circle(50, 50, 30), make({el(0, 0, L), el(1, 1, C), el(3, 3, Z)})};
    for (const RVPath &a : inputs) {
        for (const RVPath &b : inputs) {
            RVPath x = a, y = b;
            QPointF at;
            for (auto op : booleans)
                (x.*op)(y);
            (void)x.crossPoints(y), (void)x.dividePath(y, at), x.evenOdd();
        }
    }
    RVPath c = circle(50, 50, 30), empty;
    c.intersect(empty);
    EXPECT_TRUE(c.isEmpty()) << describe(c);
}
