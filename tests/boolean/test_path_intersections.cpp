#include "booleantesthelpers.h"

#include "geometry/geometrytest.h"
#include "path/pathtesthelpers.h"
#include "path/xpath.h"

#include "boolean/koboundopt.h"
#include "boolean/kostyle.h"

#include <QtCore/QtNumeric>
#include <QtGui/QPainterPath>
#include <QtGui/QPainterPathStroker>

#include <cmath>
#include <memory>
#include <random>

namespace {

using XPathPtr = std::unique_ptr<XPath>;

XPathPtr compound(std::initializer_list<koPath *> paths)
{
    XPathPtr x(new XPath);
    for (koPath *p : paths)
        x->addChild(p);
    return x;
}

koPath *square(double x, double y, double s)
{
    return polygonPath({{x, y}, {x + s, y}, {x + s, y + s}, {x, y + s}}, true);
}

// A random closed shape (\a kind -1), polygon (0), star (1), crossed star (2).
koPath *randomShape(std::mt19937 &rng, int kind = -1)
{
    std::uniform_real_distribution<double> u(0, 1);
    koPath *path = new koPath(nullptr, true);
    if (kind < 0 ? rng() % 2 : kind == 0) {
        for (int i = 3 + int(rng() % 5); i > 0; --i)
            path->addSegment(new koSegment(100 * u(rng), 100 * u(rng)));
        return path;
    }
    const bool crossed = kind < 0 ? rng() % 2 : kind == 2;
    const int spikes = crossed ? 5 + 2 * int(rng() % 3) : 5 + int(rng() % 4);
    const koPoint c(40 + 20 * u(rng), 40 + 20 * u(rng));
    const double r = 20 + 25 * u(rng), phase = 6.3 * u(rng), bend = 0.3 * (rng() % 2);
    for (int i = 0; i < spikes; ++i) {
        const double a = phase + 2 * M_PI * (i * (crossed ? 2 : 1) % spikes) / spikes;
        const double rr = crossed || i % 2 == 0 ? r : r * 0.4;
        const koPoint d(std::cos(a), std::sin(a)), h = koPoint(-d.y, d.x) * bend * rr;
        path->addSegment(new koSegment(c + d * rr, -h, h));
    }
    return path;
}

QList<koCurveLocation *> onCurve(koCurve *curve, std::initializer_list<double> times)
{
    QList<koCurveLocation *> list;
    for (double t : times)
        list.append(new koCurveLocation(curve, t, koPoint(qQNaN(), qQNaN()), false, 0));
    return list;
}

int count(const QList<koCurveLocation *> &list)
{
    XPath::releaseLocations(list, true);
    return list.size();
}

} // namespace

TEST(PathIntersections, BoundsAdjacencyAndReturnFirst)
{
    XPathPtr a = compound({square(0, 0, 10)}), b = compound({square(5, 5, 10)});
    XPathPtr corner = compound({square(10, 10, 10)});
    EXPECT_EQ(count(a->getIntersections(compound({square(10.5, 0, 10)}).get())), 0);
    // Boxes that only touch are still tested: the corners meet, not cross.
    EXPECT_EQ(count(a->getIntersections(corner.get())), 1);
    EXPECT_EQ(count(a->getCrossings(corner.get())), 0);
    EXPECT_EQ(count(a->getCrossings(b.get())), 2);
    // Kept: returnFirst gives up before the first pairwise test.
    EXPECT_EQ(count(a->getIntersections(b.get(), {}, true)), 0);
    // Neighbours share ends without meeting; so does a lone closed curve.
    EXPECT_EQ(count(a->getIntersections(nullptr)), 0);
    koPath *drop = new koPath(nullptr, true);
    drop->addSegment(new koSegment(koPoint(0, 0), koPoint(-60, 80), koPoint(60, 80)));
    EXPECT_EQ(count(compound({drop})->getIntersections(nullptr)), 0);
    // A loop on the second curve: returnFirst sees only the first curve.
    for (int loopAt : {0, 1}) {
        koPath *p = polygonPath({{0, 0}, {100, 0}, {200, 0}}, false);
        p->segments.at(loopAt)->setHandleOut(koPoint(150, 100));
        p->segments.at(loopAt + 1)->setHandleIn(koPoint(-150, 100));
        XPathPtr x = compound({p});
        for (bool first : {true, false})
            EXPECT_EQ(count(x->getIntersections(x.get(), {}, first)), first && loopAt ? 0 : 1);
    }
}

TEST(PathIntersections, DivideLocations)
{
    // 0.75 is split first, then 0.25 / 0.75 of the rest; straight pieces
    // keep no handles.
    for (bool curved : {false, true}) {
        koRef<koPath> path(polygonPath({{0, 0}, {90, 30}}, false));
        if (curved)
            path->segments.first()->setHandleOut(koPoint(10, 60));
        const QVector<double> v = path->getCurves().first()->getValues();
        QList<koCurveLocation *> l = onCurve(path->getCurves().first(), {0.25, 0.75});
        EXPECT_EQ(XPath::divideLocations(l, 0), l);
        ASSERT_EQ(path->segments.size(), 4);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(l[i]->segmentM(), path->segments.at(i + 1));
            EXPECT_LT(l[i]->point.getDistance(koCurve::getPoint(v, 0.25 + 0.5 * i)), 1e-9);
        }
        EXPECT_EQ(path->hasHandles(), curved);
        XPath::releaseLocations(l, false);
    }
    // Near the ends nothing is split; a location at the open end moves onto
    // the last piece when its curve is split.
    koRef<koPath> path(polygonPath({{0, 0}, {10, 0}, {20, 0}}, false));
    QList<koCurveLocation *> l = onCurve(path->getCurves().at(0), {1e-9});
    l += onCurve(path->getCurves().at(1), {0.5, 0.99999999});
    XPath::divideLocations(l, 0);
    ASSERT_EQ(path->segments.size(), 4);
    const int segmentOf[] = {0, 2, 3}, curveOf[] = {0, 1, 2};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(l[i]->segmentM(), path->segments.at(segmentOf[i])) << i;
        EXPECT_EQ(l[i]->getCurve(), path->getCurves().at(curveOf[i])) << i;
    }
    EXPECT_EQ(l[2]->getTime(), 1.0);

    // Mode 1 without overlaps and mode 2 with live curves take nothing and
    // return their input; kept: mode 2 takes a location whose curve is lost.
    QList<koCurveLocation *> m = onCurve(path->getCurves().first(), {0.5, 0.5});
    m[0]->intersection = m[1];
    m.removeLast();
    EXPECT_EQ(XPath::divideLocations(m, 1), m);
    EXPECT_EQ(XPath::divideLocations(m, 2), m);
    koRef<koCurve> free(new koCurve(QVector<double>{0, 0, 0, 0, 10, 0, 10, 0}, nullptr));
    const QList<koCurveLocation *> lost = onCurve(free.get(), {0.5});
    EXPECT_EQ(XPath::divideLocations(m + lost, 2), lost);
    EXPECT_EQ(path->segments.size(), 4);
    XPath::releaseLocations(l + lost, false);
    XPath::releaseLocations(m, true);
}

// Division at crossings: locations sit on segments, partners meet, outlines stay.
TEST(PathIntersections, DivisionPreservesGeometryProperty)
{
    std::mt19937 rng(20240611);
    int found = 0;
    for (int round = 0; round < 60; ++round) {
        XPathPtr a = compound({randomShape(rng)}), b = compound({randomShape(rng)});
        const std::string inputs = describe(a.get()) + describe(b.get());
        QVector<QPair<XPath *, koPoint>> samples;
        for (XPath *x : {a.get(), b.get()})
            for (koCurve *c : x->getCurves())
                for (double t = 0; t < 1; t += 0.0625)
                    samples.append(qMakePair(x, c->getPointAtTime(t)));

        QList<koCurveLocation *> list = koCurveLocation::expand(a->getCrossings(b.get()));
        XPath::divideLocations(list, 0);
        found += list.size();
        for (koCurveLocation *loc : list) {
            ASSERT_TRUE(loc->segmentM() && loc->segmentM()->path) << inputs;
            EXPECT_LT(loc->segmentM()->point.getDistance(loc->point), 1e-7) << inputs;
            EXPECT_LT(loc->intersection->point.getDistance(loc->point), 1e-7) << inputs;
        }
        for (const auto &sample : qAsConst(samples)) {
            double d = qInf();
            for (koCurve *c : sample.first->getCurves()) {
                const double t = c->getTimeOf(sample.second);
                if (t != -100)
                    d = std::min(d, c->getPointAtTime(t).getDistance(sample.second));
            }
            EXPECT_LT(d, 1e-7) << inputs << hexf(sample.second.x) << ", " << hexf(sample.second.y);
        }
        XPath::releaseLocations(list, false);
    }
    EXPECT_GT(found, 100);
}

// Resolved contours never cross and read as the even-odd fill under both rules;
// for kinds 0, 3, 5 their union is the non-zero fill.
TEST(ResolveCrossings, SimpleContoursKeepTheFillProperty)
{
    std::mt19937 rng(77);
    std::uniform_real_distribution<double> u(0, 100);
    for (int round = 0; round < 45; ++round) {
        XPathPtr x;
        const int kind = round < 3 ? round : 3 + round % 3;
        if (kind == 0) // a spike running back along itself
            x = compound({polygonPath(
                    {{0, 0}, {90, 0}, {90, 45}, {99, 45}, {90, 45}, {90, 90}, {0, 90}}, true)});
        else if (kind == 1) // children sharing an edge, and one crossing both
            x = compound({square(10, 10, 40), square(50, 10, 40), square(30, 30, 40)});
        else if (kind == 2) // overlaps inside curves that are crossed too
            x = compound({square(10, 10, 40),
                          polygonPath({{50, 20}, {90, 20}, {90, 40}, {50, 40}}, true),
                          square(30, 42, 40)});
        else if (kind < 5) // crossed stars, random shapes
            x = compound({randomShape(rng, kind == 3 ? 2 : -1)});
        else { // a figure-eight
            x = compound({polygonPath({{10, 10}, {90, 90}, {90, 10}, {10, 90}}, true)});
            for (koSegment *s : x->getFirstChild()->segments)
                s->handleIn = -(s->handleOut = koPoint(u(rng) - 50, u(rng) - 50) * 0.2);
        }
        const std::string input = describe(x.get());
        QPainterPath original = toQt(*x);
        QPainterPathStroker stroker;
        stroker.setWidth(0.1);
        const QPainterPath outline = stroker.createStroke(original);

        x->resolveCrossings();
        QList<koCurveLocation *> meetings = x->getIntersections(nullptr);
        for (koCurveLocation *loc : meetings) {
            EXPECT_FALSE(loc->isCrossing()) << input;
            EXPECT_FALSE(loc->overlap && loc->path == loc->intersection->path) << input;
        }
        XPath::releaseLocations(meetings, true);
        QPainterPath result;
        QVector<QPainterPath> contours;
        for (koPath *p : x->getChildren()) {
            ASSERT_TRUE(p->isClosed()) << input;
            contours.append(toQt(p));
            result.addPath(contours.last());
        }
        for (int i = 0; i < 300; ++i) {
            const QPointF q(u(rng), u(rng));
            if (outline.contains(q))
                continue;
            const std::string at = input + hexf(q.x()) + ", " + hexf(q.y());
            bool inUnion = false;
            for (const QPainterPath &c : contours)
                inUnion = inUnion || c.contains(q);
            original.setFillRule(Qt::WindingFill);
            EXPECT_TRUE(kind % 3 || inUnion == original.contains(q)) << at;
            original.setFillRule(Qt::OddEvenFill);
            for (Qt::FillRule rule : {Qt::OddEvenFill, Qt::WindingFill}) {
                result.setFillRule(rule);
                EXPECT_EQ(result.contains(q), original.contains(q)) << at;
            }
        }
    }
}

TEST(ResolveCrossings, OrientationAlternatesWithNesting)
{
    XPathPtr x = compound({square(40, 40, 20), square(0, 0, 100), square(20, 20, 60)});
    for (koPath *p : x->getChildren())
        p->setClockwise(true);
    x->resolveCrossings();
    ASSERT_EQ(x->getChildren().size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(x->getChildren().at(i)->getBounds(koBoundOpt(), koStyle()).x, 20.0 * i);
        EXPECT_EQ(x->getChildren().at(i)->isClockwise(), i != 1) << i;
    }
}

// A prepared operand fills like the original under its own rule: a square
// drawn twice, same-way nested squares, a crossed star.
TEST(ResolveCrossings, PreparedOperandKeepsItsFillRule)
{
    QPainterPathStroker stroker;
    stroker.setWidth(0.5);
    for (int i = 0; i < 3; ++i) {
        for (bool evenOdd : {false, true}) {
            XPathPtr x = i == 0 ? compound({square(10, 10, 80), square(10, 10, 80)})
                    : i == 1
                    ? compound({square(5, 5, 90), square(25, 25, 50)})
                    : compound(
                            {polygonPath({{50, 5}, {77, 90}, {5, 35}, {95, 35}, {23, 90}}, true)});
            QPainterPath original, result;
            original.setFillRule(evenOdd ? Qt::OddEvenFill : Qt::WindingFill);
            for (koPath *p : x->getChildren()) {
                p->setClockwise(true);
                original.addPath(toQt(p));
            }
            x->setEvenOdd(evenOdd);
            const XPathPtr prepared(XPath::preparePath(x.get(), true));
            EXPECT_EQ(prepared->isEvenOdd(), evenOdd);
            for (koPath *p : prepared->getChildren())
                result.addPath(toQt(p));
            const QPainterPath outline = stroker.createStroke(original);
            for (double gx = 1; gx < 100; gx += 3) {
                for (double gy = 2; gy < 100; gy += 3) {
                    const QPointF q(gx, gy);
                    if (outline.contains(q))
                        continue;
                    for (Qt::FillRule rule : {Qt::OddEvenFill, Qt::WindingFill}) {
                        result.setFillRule(rule);
                        EXPECT_EQ(result.contains(q), original.contains(q))
                                << "case " << i << " evenOdd " << evenOdd << " at " << hexf(gx)
                                << ", " << hexf(gy) << "\n"
                                << describe(prepared.get());
                    }
                }
            }
        }
    }
}
