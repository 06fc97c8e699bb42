#include "boolean/komono.h"
#include "boolean/kowinding.h"
#include "curve/kocurvelocation.h"
#include "geometry/geometrytest.h"
#include "path/pathtesthelpers.h"
#include "path/xpath.h"

#include <QtCore/QtNumeric>

#include <cmath>

namespace {

koWinding windingOf(koPath *path, const koPoint &p, bool horizontal = false)
{
    return XPath::getWinding(p, path->getMonoCurves(), horizontal);
}

} // namespace

TEST(koPathMonoCurves, InsertionRules)
{
    // y(t) = 90 t (1 - t) (1 - 2t) has its extremes at t = (3 -+ sqrt(3)) / 6:
    // three pieces, then the flat closing line of the open path.
    koRef<koPath> wave(new koPath);
    wave->addSegment(new koSegment(koPoint(0, 0), koPoint(), koPoint(10, 30)));
    wave->addSegment(new koSegment(koPoint(30, 0), koPoint(-10, -30), koPoint()));
    const QVector<double> v = wave->getFirstCurve()->getValues();
    const QList<koMono *> &monos = wave->getMonoCurves();
    ASSERT_EQ(monos.size(), 4);
    const double times[2] = {(3 - std::sqrt(3.0)) / 6, (3 + std::sqrt(3.0)) / 6};
    for (int i = 0; i < 2; ++i) {
        const koPoint end(monos.at(i)->values[6], monos.at(i)->values[7]);
        EXPECT_LT(end.getDistance(koCurve::getPoint(v, times[i])), 1e-9) << hexf(end.x);
        EXPECT_EQ(monos.at(i + 1)->values[0], end.x);
        EXPECT_EQ(monos.at(i + 1)->values[1], end.y);
    }
    QVector<int> windings;
    for (const koMono *m : monos)
        windings << m->winding;
    EXPECT_EQ(windings, (QVector<int>{1, -1, 1, 0}));
    EXPECT_EQ(monos.at(3)->values, (QVector<double>{30, 0, 30, 0, 0, 0, 0, 0}));
    // Only the first piece knows the path's last crossing piece.
    EXPECT_EQ(monos.at(0)->last, monos.at(2));
    EXPECT_EQ(monos.at(1)->last, nullptr);

    // A zero-length curve adds nothing; a change of geometry empties the cache.
    koRef<koPath> square(polygonPath({{0, 0}, {0, 0}, {10, 0}, {10, 10}}, true));
    EXPECT_EQ(square->getMonoCurves().size(), 3);
    square->segments.at(1)->setPoint(koPoint(5, -5));
    EXPECT_TRUE(square->monos.isEmpty());
    EXPECT_EQ(square->getMonoCurves().size(), 4);

    // Non-finite values are total.
    koRef<koPath> bad(polygonPath({{qQNaN(), 0}, {qInf(), 1}, {0, -qInf()}}, true));
    for (bool horizontal : {false, true})
        EXPECT_EQ(windingOf(bad.get(), koPoint(0, 0), horizontal).winding, 0);
}

TEST(XPathWinding, EdgeCases)
{
    struct Case
    {
        std::initializer_list<koPoint> polygon;
        bool closed;
        koPoint point;
        bool horizontal;
        int winding;
        bool contour;
    };
    const Case cases[] = {
            // On a lone sloped line (closed back along itself) the on-curve
            // counts +1 and -1 stand in for crossings: neither side is zero.
            {{{0, 0}, {10, 10}}, false, {5, 5}, false, 1, false},
            {{{0, 0}, {10, 10}}, false, {5, 6}, false, 0, false},
            // On a flat piece between its ends, and beyond them.
            {{{0, 0}, {10, 0}}, false, {5, 0}, false, 1, false},
            {{{0, 0}, {10, 0}}, false, {15, 0}, false, 0, false},
            // A ray through the joint of two rising pieces counts it once.
            {{{0, 0}, {0, 5}, {0, 10}, {10, 5}}, true, {3, 5}, false, 1, false},
            {{{0, 0}, {0, 5}, {0, 10}, {10, 5}}, true, {-3, 5}, false, 0, false},
            {{{0, 0}, {0, 5}, {0, 10}, {10, 5}}, true, {13, 5}, false, 0, false},
            // Horizontal queries: above everything nothing lies above.
            {{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true, {5, -5}, true, 0, false},
            {{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true, {5, 5}, true, 1, false},
            {{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true, {5, 0}, true, 1, true},
            {{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true, {5, 0}, false, 1, true},
    };
    for (const Case &c : cases) {
        koRef<koPath> path(polygonPath(c.polygon, c.closed));
        const koWinding w = windingOf(path.get(), c.point, c.horizontal);
        EXPECT_TRUE(w.winding == c.winding && w.contour == c.contour)
                << hexf(c.point.x) << ", " << hexf(c.point.y)
                << (c.horizontal ? " horizontal" : "");
    }
}

TEST(XPathWinding, PropagateWinding)
{
    // A chain of zero-length curves gets winding 0.
    XPath degenerate;
    degenerate.addChild(polygonPath({{3, 3}, {3, 3}, {3, 3}}, true));
    koSegment *s = degenerate.getFirstChild()->segments.first();
    XPath::propagateWinding(s, &degenerate, nullptr, degenerate.getMonoCurves(), 2);
    for (koSegment *g : degenerate.getFirstChild()->segments)
        EXPECT_EQ(g->winding, 0);
    XPath::propagateWinding(nullptr, &degenerate, nullptr, degenerate.getMonoCurves(), 2);

    // A small square inside a big one of the other orientation, as a
    // subtraction prepares them: the hole's outline has winding 1.
    XPath inner, outer;
    inner.addChild(polygonPath({{4, 4}, {6, 4}, {6, 6}, {4, 6}}, true));
    outer.addChild(polygonPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    outer.setClockwise(false);
    const QList<koMono *> monos = inner.getMonoCurves() + outer.getMonoCurves();
    koSegment *a = inner.getFirstChild()->segments.first();
    koSegment *b = outer.getFirstChild()->segments.first();
    XPath::propagateWinding(a, &inner, &outer, monos, XPath::OpUnite);
    EXPECT_TRUE(a->winding == 1 && a->contour);
    // Subtracting drops the first operand inside the second and the second
    // outside the first.
    for (koSegment *g : {a, b}) {
        XPath::propagateWinding(g, &inner, &outer, monos, XPath::OpSubtract);
        EXPECT_TRUE(g->winding == 0 && !g->contour);
    }
    XPath::propagateWinding(b, &outer, &inner, monos, XPath::OpSubtract);
    EXPECT_EQ(b->winding, 1);

    // Half of a rhombus falls on its bottom corner, which a ray only touches:
    // the middle of the curve is sampled, inside the square as well.
    XPath nested;
    nested.addChild(polygonPath({{-1, -1}, {11, -1}, {11, 11}, {-1, 11}}, true));
    nested.addChild(polygonPath({{5, 0}, {10, 5}, {5, 10}, {0, 5}}, true));
    nested.getChildren().at(1)->setClockwise(nested.getFirstChild()->isClockwise());
    koSegment *top = nested.getChildren().at(1)->segments.first();
    XPath::propagateWinding(top, &nested, nullptr, nested.getMonoCurves(), XPath::OpUnite);
    EXPECT_EQ(top->winding, 2);

    // Half a square's outline falls on a corner, and the middle of that
    // edge is a corner of an inscribed rhombus, which touches the square
    // there without crossing it: another share of the chain is sampled.
    XPath square, rhombus;
    square.addChild(polygonPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    rhombus.addChild(polygonPath({{5, 0}, {10, 5}, {5, 10}, {0, 5}}, true));
    koSegment *corner = square.getFirstChild()->segments.first();
    XPath::propagateWinding(corner, &square, &rhombus,
                            square.getMonoCurves() + rhombus.getMonoCurves(), XPath::OpUnite);
    EXPECT_TRUE(corner->winding == 1 && corner->contour);

    // The chain ends before the next segment that carries an intersection.
    koPath *path = outer.getFirstChild();
    for (koSegment *g : path->segments)
        g->winding = -1;
    koSegment *third = path->segments.at(2);
    third->setIntersection(
            new koCurveLocation(third->getCurve(), 0, koPoint(qQNaN(), qQNaN()), false, 0));
    XPath::propagateWinding(b, &outer, nullptr, outer.getMonoCurves(), XPath::OpUnite);
    QVector<int> windings;
    for (const koSegment *g : path->segments)
        windings << g->winding;
    EXPECT_EQ(windings, (QVector<int>{1, 1, -1, -1}));
}
