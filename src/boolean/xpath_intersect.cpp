// Intersections of compound paths, and their division at the locations found.

#include "path/xpath.h"

#include "boolean/koboundopt.h"
#include "boolean/kostyle.h"
#include "curve/kocurvelocation.h"
#include "curve/koopparam.h"
#include "geometry/koline.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <algorithm>
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

// Puts the segment that divided a curve at \a point, the location's point.
// The division evaluates the point from the curve time, which rounds even on
// axis-parallel lines (a vertical line from y 0 to 100 split at the time of
// y 60 may give 59.999999999999986). The point of a crossing with a line is
// computed on the line, exact where the lines are axis-parallel, and both
// partners carry it, so the segments of the two paths meet at one point. A
// straight curve (\a straight, from \a start to \a end) takes the point when
// it lies on its line; a curve takes it when its partner shares that point and
// it lies within rounding of the evaluated one.
void placeAtPoint(koSegment *segment, const koCurveLocation *location, bool straight,
                  const koPoint &start, const koPoint &end)
{
    const koPoint &point = location->point;
    if (!segment || !std::isfinite(point.x) || !std::isfinite(point.y))
        return;
    if (segment->point.x == point.x && segment->point.y == point.y)
        return;
    const double tol = koTolerance::Geometric;
    bool take = false;
    if (straight) {
        const bool within = point.x >= std::min(start.x, end.x) - tol
                && point.x <= std::max(start.x, end.x) + tol
                && point.y >= std::min(start.y, end.y) - tol
                && point.y <= std::max(start.y, end.y) + tol;
        take = within
                && std::abs(koLine::getSignedDistance(start.x, start.y, end.x, end.y, point.x,
                                                      point.y, false))
                        <= tol;
    } else {
        const koCurveLocation *partner = location->intersection;
        take = partner && partner->point.x == point.x && partner->point.y == point.y
                && std::abs(segment->point.x - point.x) <= tol
                && std::abs(segment->point.y - point.y) <= tol;
    }
    if (take)
        segment->setPoint(point);
}

// Candidate pairs by a sweep over the x ranges of the curves' control boxes
// (a cubic lies inside the box of its control points), so that long paths do
// not pay for every pair: only boxes that overlap, padded beyond the pairwise
// pre-test's margin, are tested. Curves with non-finite values have no box
// and stay candidates of every curve, as the pairwise test decides on them.
class CandidateSweep
{
public:
    explicit CandidateSweep(const QVector<QVector<double>> &values)
    {
        const int n = values.size();
        boxes.resize(n);
        for (int i = 0; i < n; ++i) {
            boxes[i] = boxOf(values.at(i));
            if (boxes[i].finite) {
                byX0.append(i);
                maxWidth = std::max(maxWidth, boxes[i].x1 - boxes[i].x0);
            } else {
                unboxed.append(i);
            }
        }
        std::sort(byX0.begin(), byX0.end(),
                  [this](int a, int b) { return boxes[a].x0 < boxes[b].x0; });
        x0s.reserve(byX0.size());
        for (int i : qAsConst(byX0))
            x0s.append(boxes[i].x0);
    }

    // Indices j >= from whose boxes meet the box of \a v, ascending (the
    // order of a plain loop over all j).
    void candidates(const QVector<double> &v, int from, QVector<int> &out) const
    {
        out.clear();
        const Box b = boxOf(v);
        if (!b.finite) {
            for (int j = from; j < boxes.size(); ++j)
                out.append(j);
            return;
        }
        auto it = std::lower_bound(x0s.begin(), x0s.end(), b.x0 - maxWidth);
        for (int k = int(it - x0s.begin()); k < x0s.size() && x0s.at(k) <= b.x1; ++k) {
            const int j = byX0.at(k);
            const Box &c = boxes.at(j);
            if (j >= from && c.x1 >= b.x0 && c.y0 <= b.y1 && c.y1 >= b.y0)
                out.append(j);
        }
        for (int j : unboxed) {
            if (j >= from)
                out.append(j);
        }
        std::sort(out.begin(), out.end());
    }

private:
    struct Box
    {
        double x0, y0, x1, y1;
        bool finite;
    };

    static Box boxOf(const QVector<double> &v)
    {
        // Twice the pre-test's margin: rounding can never drop a pair that
        // the pairwise test would look at.
        const double pad = 2 * koTolerance::Geometric;
        Box b{v[0], v[1], v[0], v[1], true};
        for (int i = 0; i < 8; i += 2) {
            b.x0 = std::min(b.x0, v[i]);
            b.x1 = std::max(b.x1, v[i]);
            b.y0 = std::min(b.y0, v[i + 1]);
            b.y1 = std::max(b.y1, v[i + 1]);
            b.finite = b.finite && std::isfinite(v[i]) && std::isfinite(v[i + 1]);
        }
        b.x0 -= pad;
        b.y0 -= pad;
        b.x1 += pad;
        b.y1 += pad;
        return b;
    }

    QVector<Box> boxes;
    QVector<int> byX0; // finite boxes by their left edge
    QVector<double> x0s;
    QVector<int> unboxed;
    double maxWidth = 0;
};

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

    const CandidateSweep sweep(values2);
    QVector<int> candidates;

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
        // Kept behaviour: the early return comes before the first pairwise
        // test. It is always reached on the first curve with a partner to
        // test, so the current group is everything found so far.
        if (returnFirst && (self ? i + 1 : 0) < curves2.size())
            return handOver(group);
        sweep.candidates(values1, self ? i + 1 : 0, candidates);
        for (int j : qAsConst(candidates)) {
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
            // The ends before the division moves the second one.
            const koPoint lineStart = curve->segment1()->point;
            const koPoint lineEnd = curve->segment2()->point;
            koCurve *newCurve = curve->divideAtTime(t, true);
            if (!newCurve)
                continue;
            placeAtPoint(newCurve->segment1(), location, noHandles, lineStart, lineEnd);
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
            // A chain corrupted into a cycle has no start: every link below
            // would end in chainStart(inter) and change nothing, after two
            // bounded walks each (millions of steps per location).
            koCurveLocation *other = chainStart(inter) ? inter : nullptr;
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
