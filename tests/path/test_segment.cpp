#include "pathtesthelpers.h"

#include "geometry/komatrix.h"

#include <QtGui/QTransform>

TEST(koSegment, TextForms)
{
    koSegment *fresh = new koSegment(1, 2);
    EXPECT_EQ(fresh->toString(),
              QStringLiteral("point: x: 1, y: 2, winding: -1, contour: 0, visited: 0 -1 0"));
    fresh->release(); // never addRef'd: the first release frees it

    koRef<koPath> path(polygonPath({{0, 0}}, false));
    koSegment *s = path->addSegment(new koSegment(koPoint(1, 2), koPoint(-1, 0), koPoint()));
    s->contour = 1;
    s->visited = true;
    EXPECT_EQ(s->toString(),
              QStringLiteral("point: x: 1, y: 2, handleIn: x: -1, y: 0, winding: -1, "
                             "contour: 1, visited: 1 1 1"));
    s->setHandleIn(koPoint(1e-13, 0)); // numerically zero: not shown
    s->setHandleOut(koPoint(0.5, -3));
    EXPECT_EQ(s->toString(),
              QStringLiteral("point: x: 1, y: 2, handleOut: x: 0.5, y: -3, winding: -1, "
                             "contour: 1, visited: 1 1 1"));
}

TEST(koSegment, NeighboursWrapOnlyInClosedPathsForSegmentsAndCurves)
{
    for (bool closed : {false, true}) {
        koRef<koPath> path(polygonPath({{0, 0}, {1, 0}, {1, 1}}, closed));
        const QList<koSegment *> &segs = path->segments;
        const QList<koCurve *> &curves = path->getCurves();
        EXPECT_EQ(segs.first()->getNext(), segs.at(1));
        EXPECT_EQ(segs.last()->getPrevious(), segs.at(1));
        EXPECT_EQ(segs.last()->getNext(), closed ? segs.first() : nullptr);
        EXPECT_EQ(segs.first()->getPrevious(), closed ? segs.last() : nullptr);
        EXPECT_TRUE(segs.first()->isFirst() && segs.last()->isLast() && !segs.first()->isLast());
        EXPECT_EQ(curves.first()->getNext(), curves.at(1));
        EXPECT_EQ(curves.last()->getNext(), closed ? curves.first() : nullptr);
        EXPECT_EQ(curves.first()->getPrevious(), closed ? curves.last() : nullptr);
        EXPECT_TRUE(curves.first()->isFirst() && curves.last()->isLast()
                    && !curves.first()->isLast());
    }
    koRef<koSegment> free(new koSegment(0, 0));
    EXPECT_FALSE(free->getNext() || free->getPrevious() || free->getCurve() || free->getCurvePrev()
                 || free->getLocation() || free->isFirst() || free->remove());
}

TEST(koSegment, CurveLookupKeepsItsAsymmetry)
{
    koRef<koPath> open(polygonPath({{0, 0}, {1, 0}, {1, 1}}, false));
    // The last segment of an open path answers the last curve; asking builds the list.
    koCurve *answer = open->segments.at(2)->getCurve();
    ASSERT_EQ(open->curves.size(), 2);
    EXPECT_EQ(answer, open->curves.at(1));
    EXPECT_EQ(open->segments.at(0)->getCurvePrev(), open->curves.at(0));
    EXPECT_EQ(open->segments.at(2)->getCurvePrev(), open->curves.at(1));

    koRef<koPath> closed(polygonPath({{0, 0}, {1, 0}, {1, 1}}, true));
    const QList<koCurve *> &curves = closed->getCurves();
    // Index 0 wraps to the closing curve; others answer the curve starting there.
    EXPECT_EQ(closed->segments.at(0)->getCurvePrev(), curves.at(2));
    EXPECT_EQ(closed->segments.at(1)->getCurvePrev(), curves.at(1));
    EXPECT_EQ(closed->segments.at(2)->getCurvePrev(), curves.at(2));
}

TEST(koSegment, LocationSitsAtTheSegment)
{
    koRef<koPath> path(polygonPath({{0, 0}, {4, 0}, {4, 4}}, false));
    for (int i : {1, 2}) { // the last segment ends the last curve
        koRef<koCurveLocation> at(path->segments.at(i)->getLocation());
        EXPECT_EQ(at->curve, path->curves.at(1));
        EXPECT_EQ(at->time, i - 1);
        EXPECT_EQ(at->point, path->segments.at(i)->point);
    }
}

TEST(koSegment, SetIntersectionHoldsOneReference)
{
    resetProbes();
    koRef<koPath> path(polygonPath({{0, 0}, {4, 0}}, false));
    {
        koRef<koSegment> s(new koSegment(1, 1));
        auto *a = new ProbeLocation(path->getFirstCurve(), 0.5, koPoint(), false, 0.0);
        s->setIntersection(a);
        s->setIntersection(a); // the same one again: still one reference
        EXPECT_EQ(a->refCount, 1);
        s->setIntersection(new ProbeLocation(nullptr, 0.25, koPoint(), false, 0.0));
        EXPECT_EQ(ProbeLocation::counter().destroyed, 1);
        EXPECT_EQ(ProbeLocation::counter().lastSeen, -2);
    }
    EXPECT_EQ(ProbeLocation::counter().alive(), 0);
}

TEST(koSegment, SegsEqualsIsInclusiveAtNumericZero)
{
    koRef<koPath> a(polygonPath({{0, 0}, {1, 0}}, false));
    koRef<koPath> b(polygonPath({{0, 0}, {1, 1e-12}}, false));
    EXPECT_TRUE(koSegment::segsEquals(a->segments, b->segments));
    b->segments.at(1)->setHandleIn(koPoint(0, 2e-12));
    EXPECT_FALSE(koSegment::segsEquals(a->segments, b->segments));
    EXPECT_TRUE(koSegment::segsEquals({}, {}));
    EXPECT_FALSE(koSegment::segsEquals(a->segments, {}));
}

TEST(koSegment, TransformAndInterpolate)
{
    QTransform qt;
    qt.translate(3, -7);
    qt.rotate(33);
    qt.scale(2, 0.5);
    const koMatrix m(qt);
    koRef<koSegment> s(new koSegment(koPoint(1, 2), koPoint(-1, 0.5), koPoint(2, 3)));
    QVector<double> coords;
    s->transformCoordinates(nullptr, coords, true);
    EXPECT_EQ(coords, QVector<double>({1, 2, 0, 2.5, 3, 5})); // absolute handles
    s->transformCoordinates(&m, coords, false);
    EXPECT_EQ(s->point, koPoint(1, 2)); // not applied
    s->transform(&m);
    const koPoint p(qt.map(QPointF(1, 2)));
    EXPECT_LT(s->point.getDistance(p), 1e-12) << hex(s->point);
    EXPECT_LT((s->point + s->handleIn).getDistance(koPoint(qt.map(QPointF(0, 2.5)))), 1e-12);
    EXPECT_LT((s->point + s->handleOut).getDistance(koPoint(qt.map(QPointF(3, 5)))), 1e-12);

    koRef<koSegment> from(new koSegment(koPoint(0, 0), koPoint(-2, 0), koPoint(2, 0)));
    koRef<koSegment> to(new koSegment(koPoint(10, 20), koPoint(0, -4), koPoint(0, 4)));
    s->interpolate(*from, *to, 0.25);
    EXPECT_EQ(s->point, koPoint(2.5, 5));
    EXPECT_EQ(s->handleIn, koPoint(-1.5, -1));
    EXPECT_EQ(s->handleOut, koPoint(1.5, 1));
}

TEST(koSegment, GeometryChangesInvalidateTheTouchingCaches)
{
    koRef<koPath> path(polygonPath({{0, 0}, {4, 0}, {4, 4}, {0, 4}}, true));
    EXPECT_EQ(path->getArea(), 16);
    const QList<koCurve *> &curves = path->getCurves();
    auto lengths = [&curves] {
        QVector<double> l;
        for (koCurve *c : curves)
            l.append(c->length);
        return l;
    };
    for (koCurve *c : curves) {
        c->length = 4;
        c->bounds = koRect(1, 1, 1, 1);
    }
    path->m_length = 16;
    path->segments.at(0)->setPoint(koPoint(-1, 0));
    EXPECT_EQ(path->m_area, 0);
    EXPECT_EQ(path->m_length, 0);
    // Only the curves ending and starting at segment 0.
    EXPECT_EQ(lengths(), QVector<double>({0, 4, 4, 0}));
    EXPECT_EQ(curves.at(0)->bounds.width, 0);
    EXPECT_EQ(path->getArea(), 18);
    path->segments.at(2)->setHandleOut(koPoint(1, 1));
    EXPECT_EQ(lengths(), QVector<double>({0, 0, 0, 0}));
}
