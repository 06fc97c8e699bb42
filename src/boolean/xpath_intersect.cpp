// Intersections of compound paths, and their division at the locations found.

#include "path/xpath.h"

#include "boolean/koboundopt.h"
#include "boolean/kostyle.h"
#include "curve/kocurvelocation.h"
#include "curve/koopparam.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <cmath>

namespace {

// Upper bound on the steps of any walk along an intersection chain. A chain
// holds the locations that meet at one point, so a real chain is short; the
// bound only stops a walk round a chain that was corrupted into a cycle
// (nested walks stay bounded by its square).
constexpr int ChainWalkLimit = 1024;

// The union of the children's fill bounds, starting from an empty rectangle.
koRect fillBounds(const XPath *path)
{
    koRect bounds;
    for (koPath *child : path->getChildren())
        bounds = bounds.unite(child->getBounds(koBoundOpt(), koStyle(), nullptr));
    return bounds;
}

// The first location of the chain holding \a location; null when the walk
// does not end (a cyclic chain).
koCurveLocation *chainStart(koCurveLocation *location)
{
    for (int i = 0; i < ChainWalkLimit; ++i) {
        if (!location->previous)
            return location;
        location = location->previous;
    }
    return nullptr;
}

// Takes the caller's reference on every location of \a locations and on its
// partner, so that the counts tell the true number of holders once segments
// take their own references during division.
QList<koCurveLocation *> handOver(const QList<koCurveLocation *> &locations)
{
    for (koCurveLocation *location : locations) {
        location->addRef();
        if (location->intersection)
            location->intersection->addRef();
    }
    return locations;
}

// Drops one reference on \a location. When that frees it, it first leaves
// its chain and its partner forgets it: locations held by segments outlive the
// lists, and must not be left pointing at freed ones.
void releaseOne(koCurveLocation *location)
{
    if (location->refCount <= 1) {
        if (location->previous)
            location->previous->next = location->next;
        if (location->next)
            location->next->previous = location->previous;
        location->previous = location->next = nullptr;
        if (location->intersection && location->intersection->intersection == location)
            location->intersection->intersection = nullptr;
    }
    location->release();
}

} // namespace

QList<koCurveLocation *>
XPath::getIntersections(XPath *other, const std::function<bool(koCurveLocation *)> &include,
                        bool returnFirst)
{
    const bool self = !other || other == this;
    // Compound paths whose boxes do not even touch cannot meet.
    if (!self && !fillBounds(this).touches(fillBounds(other)))
        return QList<koCurveLocation *>();

    const QList<koCurve *> curves1 = getCurves();
    const QList<koCurve *> curves2 = self ? curves1 : other->getCurves();
    QVector<QVector<double>> values2;
    values2.reserve(curves2.size());
    for (koCurve *curve : curves2)
        values2.append(koCurve::getValues(curve->segment1(), curve->segment2(), nullptr));

    // One curve whose ends meet: its two halves meet there too, which is no
    // self-intersection.
    bool singleClosedCurve = false;
    if (self && values2.size() == 1) {
        const QVector<double> &v = values2.first();
        singleClosedCurve = std::abs(v[0] - v[6]) <= koTolerance::Epsilon
                && std::abs(v[1] - v[7]) <= koTolerance::Epsilon;
    }

    // One sorted group per path of this compound path, concatenated at the
    // end: insert() keeps each group sorted within its path.
    QList<QList<koCurveLocation *>> groups;
    koPath *groupPath = nullptr;
    for (int i = 0; i < curves1.size(); ++i) {
        koCurve *c1 = curves1.at(i);
        if (groups.isEmpty() || c1->path() != groupPath) {
            groups.append(QList<koCurveLocation *>());
            groupPath = c1->path();
        }
        QList<koCurveLocation *> &group = groups.last();
        const QVector<double> values1 =
                self ? values2.at(i) : koCurve::getValues(c1->segment1(), c1->segment2(), nullptr);
        if (self) {
            opParam param;
            param.include = include;
            param.excludeStart = singleClosedCurve;
            koCurve::getSelfIntersection(values1, c1, group, param);
        }
        for (int j = self ? i + 1 : 0; j < curves2.size(); ++j) {
            // Kept behaviour: the early return comes before the first pairwise
            // test. It is always reached on the first curve, so the current
            // group is everything found so far.
            if (returnFirst)
                return handOver(group);
            koCurve *c2 = curves2.at(j);
            opParam param;
            param.include = include;
            // Neighbours on one path share an end point, which is no meeting.
            param.excludeStart = self && c2 == c1->getPrevious();
            param.excludeEnd = self && c2 == c1->getNext();
            koCurve::getIntersections(values1, values2.at(j), c1, c2, group, param);
        }
    }

    QList<koCurveLocation *> result;
    for (const QList<koCurveLocation *> &group : qAsConst(groups))
        result.append(group);
    return handOver(result);
}

QList<koCurveLocation *> XPath::getCrossings(XPath *other)
{
    return getIntersections(
            other,
            [](koCurveLocation *location) { return location->overlap || location->isCrossing(); },
            false);
}

void XPath::releaseLocations(const QList<koCurveLocation *> &locations, bool withPartners)
{
    for (koCurveLocation *location : locations) {
        if (!location)
            continue;
        koCurveLocation *partner = location->intersection;
        releaseOne(location);
        if (withPartners && partner)
            releaseOne(partner);
    }
}

void XPath::linkIntersections(koCurveLocation *from, koCurveLocation *to)
{
    if (!from || !to)
        return;
    // Already one chain when to lies before from ...
    koCurveLocation *walk = from;
    for (int i = 0; walk && i < ChainWalkLimit; ++i) {
        if (walk == to)
            return;
        walk = walk->previous;
    }
    // ... or after it.
    koCurveLocation *last = from;
    int steps = 0;
    while (last->next && last->next != to) {
        if (++steps >= ChainWalkLimit)
            return;
        last = last->next;
    }
    if (last->next == to)
        return;
    koCurveLocation *first = chainStart(to);
    if (!first)
        return;
    last->next = first;
    first->previous = last;
}

QList<koCurveLocation *> XPath::divideLocations(const QList<koCurveLocation *> &locations, int mode)
{
    QList<koCurveLocation *> results;
    QList<koCurve *> clearCurves;
    koCurveLocation *prevLocation = nullptr;
    koCurve *prevCurve = nullptr;
    double prevTime = 0;
    bool noHandles = false;

    // Last to first: dividing a curve leaves its first part in place, so the
    // times of locations still to come on it stay valid up to a scale.
    for (int i = locations.size() - 1; i >= 0; --i) {
        koCurveLocation *location = locations.at(i);
        if (!location)
            continue;
        if (mode == 1) {
            if (!location->overlap)
                continue;
            results.prepend(location);
        } else if (mode == 2) {
            // Kept behaviour: only the locations whose curve (or partner's
            // curve) left its path are taken; their old segment link goes.
            koSegment *oldSegment = location->segmentM();
            koCurve *curve1 = location->getCurve();
            koCurveLocation *partner = location->intersection;
            koCurve *curve2 = partner ? partner->getCurve() : nullptr;
            if (curve1 && curve2 && curve1->path() && curve2->path())
                continue;
            if (oldSegment)
                oldSegment->setIntersection(nullptr);
            results.prepend(location);
        } else if (mode != 0) {
            results.prepend(location);
        }

        koCurve *curve = location->getCurve();
        const double time = location->getTime();
        // A curve outside any path, or no time, leaves nothing to divide.
        if (!curve || !curve->path() || !curve->segment1() || !curve->segment2()
            || !(time >= 0 && time <= 1)) {
            continue;
        }
        double t = time;
        if (curve != prevCurve) {
            noHandles = !curve->hasHandles();
            prevLocation = nullptr;
        } else if (prevTime >= koTolerance::CurveTimeMin && prevTime <= koTolerance::CurveTimeMax) {
            // The curve now ends where the previous location split it.
            t = t / prevTime;
        }

        koSegment *segment = nullptr;
        bool attached = false;
        if (t < koTolerance::CurveTimeMin) {
            segment = curve->segment1();
        } else if (t > koTolerance::CurveTimeMax) {
            segment = curve->segment2();
        } else {
            koCurve *newCurve = curve->divideAtTime(t, true);
            if (!newCurve)
                continue;
            if (noHandles)
                clearCurves << curve << newCurve;
            if (prevLocation && prevLocation->time == 1.0) {
                // The previous location sat at the open end of this curve,
                // which now belongs to the new piece.
                prevLocation->setSegment(newCurve->segment2());
                segment = curve->segment2();
                location->setSegmentPrev(segment);
                attached = true;
            } else {
                segment = newCurve->segment1();
            }
        }
        if (!attached)
            location->setSegment(segment);

        // Every location meeting at this segment joins one chain, and every
        // partner of the chain reaches it.
        koCurveLocation *inter = segment->intersection();
        koCurveLocation *dest = location->intersection;
        if (!inter) {
            segment->setIntersection(dest);
        } else {
            linkIntersections(inter, dest);
            koCurveLocation *other = inter;
            for (int step = 0; other && step < ChainWalkLimit; ++step) {
                linkIntersections(other->intersection, inter);
                other = other->next;
            }
        }

        prevLocation = location;
        prevCurve = curve;
        prevTime = time;
    }

    // Straight curves were divided with handles on the pieces; straighten
    // them again.
    for (koCurve *curve : qAsConst(clearCurves))
        curve->clearHandles();
    return results.isEmpty() ? locations : results;
}
