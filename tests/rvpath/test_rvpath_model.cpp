// RVPath element model: building with unit nearness, closing, rounding,
// painter-path conversion, open-subpath queries, orientation and reversal.

#include "rvpathtesthelpers.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

using namespace rvTest;

namespace {

constexpr int M = E::MoveTo, L = E::LineTo, C = E::CurveTo, D = E::CurveData, Z = E::Close;

// "M0,0 L10,0 Z0,0": the elements in short form, for comparing lists.
std::string text(const RVPath &path)
{
    std::string s;
    for (const RVPathElement &e : path.elements())
        s += QStringLiteral("%1%2,%3 ")
                     .arg(QLatin1Char("MLCDZ?"[qBound(0, e.type, 5)]))
                     .arg(e.x)
                     .arg(e.y)
                     .toStdString();
    return s;
}

} // namespace

TEST(RVPathModel, BuildingMergesNearPointsAndClosesByTheRule)
{
    const QPointF snap[] = {{0, 0}, {10, 0}, {10, 10}, {0.6, 0.6}},
                  far[] = {{0, 0}, {10, 0}, {10, 10}, {1, 0}};
    const QPointF beziers[] = {{0, 0}, {1, 5}, {9, 5}, {10, 0}, {11, 1}, {12, 2}};
    QPainterPath wedge; // ends below its start
    wedge.addPolygon(QPolygonF({QPointF(0, 0), QPointF(5, 5), QPointF(0, 5)}));
    const std::pair<std::function<void(RVPath &)>, const char *> cases[] = {
            {[](RVPath &p) { p.addLine(0, 0, 10, 0), p.addLine(10.5, 0.5, 20, 0); },
             "M0,0 L10,0 L20,0 "},
            {[](RVPath &p) { p.addLine(0, 0, 10, 0), p.addLine(30, 0, 40, 0); },
             "M0,0 L10,0 L30,0 L40,0 "},
            {[](RVPath &p) { p.addLine(0, 0, 9, 9), p.closeSubpath(), p.addLine(30, 0, 40, 0); },
             "M0,0 L9,9 L0,0 Z0,0 M30,0 L40,0 "},
            {[&](RVPath &p) { p.addLines(snap, 4), p.closeSubpath(); },
             "M0,0 L10,0 L10,10 L0,0 Z0,0 "},
            {[&](RVPath &p) { p.addLines(far, 4), p.closeSubpath(); },
             "M0,0 L10,0 L10,10 L1,0 L0,0 Z0,0 "},
            {[](RVPath &p) { p.addRect(QRectF(0, 0, 0.5, 0.5)); }, "M0,0 "},
            {[](RVPath &p) { p.addRect(QRectF(5, 5, 0.9, 0.9)); },
             "M5,5 "}, // nearness is not scaled
            {[](RVPath &p) { p.addLine(0, 0, 9, 0), p.addRect(QRectF(1, 2, 3, 4)); },
             "M0,0 L9,0 M1,2 L4,2 L4,6 L1,6 L1,2 Z1,2 "},
            {[](RVPath &p) {
                 p.moveTo(0, 0), p.addPolygon(QVector<QPointF>{{0, 0}, {0.5, 0}});
             },
             "M0,0 L0,0 L0.5,0 "},
            {[&](RVPath &p) { p.addBeziers(beziers, 6); }, "M0,0 C1,5 D9,5 D10,0 "},
            {[&](RVPath &p) { p.fromPainterPath(wedge, true); }, "M0,0 L5,5 L0,5 "},
            {[](RVPath &p) {
                 p = make({el(1, 1, L), el(2, 2, M), el(3, 3, M), el(4, 4, L)}), p.cleanUp();
             },
             "M3,3 L4,4 "},
            {[](RVPath &p) {
                 p.addPolygon(QPolygonF()), p.addLines(static_cast<QPoint *>(nullptr), 3),
                         p.ellipse(QRectF(0, 0, 0, 5));
                 p.ellipse(QRectF(0, 0, 1e-13, 5)), p.arcTo(0, 0, 5, -1, 0, 90), p.closeSubpath(),
                         p.cleanUp();
                 p.setBackX(3), p.setBackY(3);
             },
             ""},
    };
    for (const auto &c : cases) {
        RVPath path;
        c.first(path);
        EXPECT_EQ(text(path), c.second) << describe(path);
    }
}

TEST(RVPathModel, EllipseAndArcFollowTheNegatedAngles)
{
    RVPath path;
    path.moveTo(-50, -50); // a lone move-to is replaced
    path.ellipse(QRectF(0, 0, 100, 60));
    ASSERT_EQ(path.elementCount(), 14) << describe(path); // M, four cubics, Z
    // RVPath's arc is QPainterPath's mirrored (both angles negated), joined
    // to the open subpath by a line.
    path.addLine(100, 50, 100, 60);
    const int before = path.elementCount();
    path.arcTo(QRectF(0, 0, 100, 100), 30, 90);
    QPainterPath oracle, qt;
    oracle.arcMoveTo(0, 0, 100, 100, -30);
    oracle.arcTo(0, 0, 100, 100, -30, -90);
    path.toPainterPath(qt);
    ASSERT_EQ(path.elementCount(), before + oracle.elementCount()) << describe(path);
    EXPECT_EQ(path.elementAt(before).type, L);
    for (int i = 1; i <= oracle.elementCount(); ++i) {
        const QPointF ours = qt.elementAt(qt.elementCount() - i);
        EXPECT_LT(QLineF(ours, oracle.elementAt(oracle.elementCount() - i)).length(), 1e-6) << i;
    }
}

TEST(RVPathModel, RoundingHalvesUpwardsAndPairsRoundedPointsByTheKeptRule)
{
    const double odd = 0x1p52 + 1, big = -0x1p60;
    const double in[] = {2.5, 2.4999, -2.5, -2.6, -0.5, -1e15 - 0.5, -1e15 - 0.75, big, odd, -odd};
    const double out[] = {3, 2, -2, -3, 0, -1e15, -1e15 - 1, big, odd, -odd};
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(RVPath::roundValue(in[i]), out[i]) << hexf(in[i]);
    EXPECT_EQ(RVPath::roundToInt(NAN), 0);
    EXPECT_EQ(RVPath::roundToInt(-1e300), std::numeric_limits<int>::min());
    RVPath path = make({el(2.5, -2.5, M), el(0.4, 9.6, L), el(1.5, 1.5, Z)});
    path.roundData();
    EXPECT_EQ(text(path), "M3,-2 L0,10 Z1.5,1.5 ");

    // A stray curve-data takes no rounded point, so the line after it goes to
    // the stray point and the next move-to to the line's point; close markers
    // have none.
    path = make({el(0.4, 0.4, M), el(10.6, 0, L), el(55, 55, D), el(20, 20.5, L), el(0, 0, Z),
                 el(30, 30, M), el(31, 30, C), el(32, 30, D), el(33.5, 30, D)});
    QPainterPath qt, want;
    path.toPainterPathWithRoundValue(qt);
    want.moveTo(0, 0), want.lineTo(11, 0), want.lineTo(55, 55), want.closeSubpath();
    want.moveTo(20, 21), want.cubicTo(30, 30, 31, 30, 32, 30);
    EXPECT_EQ(qt, want) << describe(path);
    path.toPainterPath(qt); // skips the stray element and the cubic too near the end
    make({el(0, 0, M), el(5, 0, L), el(6, 1, C), el(7, 1, D)}).toPainterPath(want);
    EXPECT_EQ(qt.elementAt(2).x, 20);
    EXPECT_EQ(want.elementCount(), 2);
}

TEST(RVPathModel, OpenedStartAndEndFindOpenSubpaths)
{
    // Open, closed, open, then a lone trailing move-to.
    const RVPath path =
            make({el(0, 0, M), el(1, 0, L), el(2, 0, L), el(10, 0, M), el(11, 0, L), el(10, 0, Z),
                  el(20, 0, M), el(21, 5, L), el(22, 6, L), el(30, 0, M)});
    QPointF p0, p1, before, end;
    int index = 0, start = 0, got = 0;
    std::string trace;
    while ((got = path.getOpenedStart(p0, p1, index)) != -1 && trace.size() < 200)
        trace += QString::asprintf("%d@%d,%g>%g,%g ", got, index, p0.x(), p1.x(), p1.y())
                         .toStdString();
    EXPECT_EQ(trace, "0@3,0>1,0 6@9,20>21,5 ");
    index = 0, trace.clear();
    while ((got = path.getOpenedEnd(before, end, index, start)) != -1 && trace.size() < 200)
        trace += QString::asprintf("%d@%d,%d:%g>%g ", got, index, start, before.x(), end.x())
                         .toStdString();
    EXPECT_EQ(trace, "2@3,0:1>2 8@9,6:21>22 9@10,9:22>30 ");
    index = -5; // below the range counts from the start
    EXPECT_EQ(path.getOpenedStart(p0, p1, index), 0);
    EXPECT_EQ(RVPath().getOpenedEnd(before, end, index = 0, start), -1);
}

TEST(RVPathModel, OrientationQueries)
{
    RVPath outer, inner, same, mixed;
    outer.addRect(QRectF(0, 0, 100, 100)); // clockwise on a y-down screen
    inner.addRect(QRectF(25, 25, 50, 50));
    same.setElements(outer.elements() + inner.elements());
    inner.reverse();
    mixed.setElements(outer.elements() + inner.elements());
    mixed.addLine(200, 0, 200, 100); // open subpaths are ignored
    EXPECT_FALSE(same.isEvenOdd());
    EXPECT_TRUE(mixed.isEvenOdd());
    EXPECT_TRUE(outer.isClockWise());
    EXPECT_FALSE(inner.isClockWise());
    EXPECT_FALSE(RVPath().isClockWise() || RVPath().isEvenOdd());
    // A piece after a close marker keeps the kind it starts with.
    RVPath tail = make({el(0, 0, M), el(9, 0, L), el(0, 0, Z), el(5, 5, L), el(9, 9, L)});
    tail.reverse();
    EXPECT_EQ(text(tail), "M9,0 L0,0 Z9,0 L9,9 L5,5 ");
}

// Painter paths come back element for element, also when the reading marks
// the subpaths that end on their start as closed (Qt draws a closed outline
// that way): every such one, and no other. Reverse twice is the identity;
// once, each subpath keeps its kind and draws as Qt's own reversal of it.
TEST(RVPathModel, RandomPathsRoundTripThroughQtAndReverseLikeQt)
{
    auto roundTrip = [](const QPainterPath &source, const std::string &what) {
        for (bool closing : {false, true}) {
            RVPath path;
            path.fromPainterPath(source, closing);
            QPainterPath back = toQt(path);
            ASSERT_EQ(back.elementCount(), source.elementCount()) << what << describe(path);
            int ending = 0; // subpaths that end on their start
            for (int i = 0, start = 0; i < source.elementCount(); ++i) {
                const QPainterPath::Element &e = source.elementAt(i);
                ASSERT_TRUE(e.type == back.elementAt(i).type && QPointF(e) == back.elementAt(i))
                        << what << " element " << i << describe(path);
                start = e.isMoveTo() ? i : start;
                const bool last =
                        i + 1 == source.elementCount() || source.elementAt(i + 1).isMoveTo();
                ending += last && i > start && QPointF(e) == QPointF(source.elementAt(start));
            }
            ASSERT_EQ(countType(path, Z), closing ? ending : 0) << what << describe(path);
        }
    };
    auto random = generator(52);
    for (int k = 0; k < 300; ++k) {
        const RVPath path = randomPath(random);
        roundTrip(toQt(path), describe(path));
        RVPath once = path, twice;
        once.reverse();
        twice = once;
        twice.reverse();
        ASSERT_EQ(describe(twice), describe(path));
        for (int s = 0, e = 1; s < path.elementCount(); s = e++) {
            while (e < path.elementCount() && path.elementAt(e).type != M)
                ++e;
            const bool closed = path.elementAt(e - 1).type == Z;
            ASSERT_EQ(once.elementAt(e - 1).type == Z, closed) << describe(path);
            RVPath part, reversedPart;
            part.setElements(path.elements().mid(s, e - s - closed));
            reversedPart.setElements(once.elements().mid(s, e - s - closed));
            ASSERT_EQ(toQt(reversedPart), toQt(part).toReversed()) << describe(path);
        }
    }
    QString why;
    const QPainterPath glyphs = testGlyphs::outline(QStringLiteral("Qg@&%8B"), 3, 90, 80, &why);
    if (glyphs.isEmpty())
        GTEST_SKIP() << why.toStdString();
    roundTrip(glyphs, "glyphs");
}
