// Structural editing of a koPath: reversing, splitting at a location, joining
// two paths (or closing one whose ends meet) and reducing degenerate or
// redundant straight curves.

#include "path/kopath.h"

#include "curve/kocurvelocation.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kosegment.h"
#include "path/xpath.h"

#include <QtCore/QtNumeric>

#include <algorithm>

void koPath::reverse()
{
    std::reverse(segments.begin(), segments.end());
    for (int i = 0; i < segments.size(); ++i) {
        koSegment *segment = segments.at(i);
        segment->index = i;
        // Running backwards, what came in now goes out.
        std::swap(segment->handleIn, segment->handleOut);
    }
    // Every curve now runs the other way between other segments; the list is
    // rebuilt on demand.
    clearCurves();
    if (isFlags(Clockwise | CounterClockwise))
        flags ^= Clockwise | CounterClockwise;
    _changed();
}

koPath *koPath::splitAt(koCurveLocation *location)
{
    if (!location)
        return nullptr;
    int index = 0;
    double t = 0;
    if (koCurve *curve = location->getCurve()) {
        // A location on another path's curve names no place on this one.
        if (curve->path() != this)
            return nullptr;
        index = curve->index();
        t = location->getTime();
        if (qIsNaN(t))
            return nullptr;
        // The end of a curve is the start of the next one.
        if (t >= koTolerance::CurveTimeMax) {
            ++index;
            t = 0;
        }
        if (index < 0)
            return nullptr;
    } else {
        // Without a curve only a location at a curve end is taken, as the
        // start of the path (kept asymmetry: a start time gives null).
        const double time = location->getTime();
        if (qIsNaN(time) || time < koTolerance::CurveTimeMax)
            return nullptr;
    }
    if (index >= getCurves().size())
        return nullptr;
    if (t >= koTolerance::CurveTimeMin) {
        // The split point becomes a segment of its own.
        if (!curves.at(index)->divideAtTime(t, false))
            return nullptr;
        ++index;
    }

    // The removed segments come back detached, each still holding the
    // reference this path had on it; the removed curves likewise.
    QList<koSegment *> removed;
    QList<koCurve *> removedCurves;
    removeSegments(removed, removedCurves, index, -1, false);
    if (removed.isEmpty()) {
        for (koCurve *curve : removedCurves)
            curve->release();
        return nullptr;
    }

    koPath *result = nullptr;
    if (closed) {
        // A closed path is opened at the split point: what followed it now
        // leads.
        setClosed(false);
        addSegments(removed, 0, removedCurves);
        result = this;
    } else {
        result = new koPath(nullptr, false);
        if (parent)
            parent->addChild(result, this->index + 1);
        result->closed = closed;
        result->flags = flags;
        result->addSegments(removed, -1, removedCurves);
    }
    // Both parts share the split point: this path ends where the other
    // starts (a copy, since the segment now belongs to a path).
    addSegment(removed.first());
    for (koSegment *segment : removed)
        segment->release();
    return result;
}

koPath *koPath::splitAt(double offset)
{
    koCurveLocation *location = getLocationAt(offset);
    koPath *result = splitAt(location);
    if (location)
        location->release();
    return result;
}

koPath *koPath::split(int index, double time)
{
    const QList<koCurve *> &list = getCurves();
    if (index < 0 || index >= list.size() || !(time >= 0 && time <= 1))
        return nullptr;
    koCurveLocation *location =
            new koCurveLocation(list.at(index), time, koPoint(qQNaN(), qQNaN()), false, 0);
    koPath *result = splitAt(location);
    location->release();
    return result;
}

koPath *koPath::join(koPath *path, double tolerance)
{
    if (path && path != this) {
        if (path->segments.isEmpty())
            return this;
        koSegment *last1 = getLastSegment();
        if (last1 && last1->point.isClose(path->getLastSegment()->point, tolerance))
            path->reverse();
        koSegment *first2 = path->getFirstSegment();
        if (last1 && last1->point.isClose(first2->point, tolerance)) {
            // End to start: the shared point keeps this path's segment.
            last1->setHandleOut(first2->handleOut);
            addSegments(path->segments.mid(1), -1);
        } else {
            koSegment *first1 = getFirstSegment();
            if (first1 && first1->point.isClose(first2->point, tolerance))
                path->reverse();
            koSegment *last2 = path->getLastSegment();
            if (first1 && first1->point.isClose(last2->point, tolerance)) {
                // The other path leads into this one.
                first1->setHandleIn(last2->handleIn);
                addSegments(path->segments.mid(0, path->segments.size() - 1), 0);
            } else {
                addSegments(path->segments, -1);
            }
        }
        // A closed path comes back to its start.
        if (path->closed)
            addSegment(path->getFirstSegment());
        // Leaving the parent drops the parent's reference, which may free the
        // path: nothing of it is touched afterwards.
        if (XPath *owner = path->parent)
            owner->removeChild(path);
    }
    // A path whose ends meet is closed, the last segment merged into the first.
    koSegment *first = getFirstSegment();
    koSegment *last = getLastSegment();
    if (first && first != last && first->point.isClose(last->point, tolerance)) {
        first->setHandleIn(last->handleIn);
        last->remove();
        setClosed(true);
    }
    return this;
}

koPath *koPath::reduce(bool simplify)
{
    const double tolerance = simplify ? koTolerance::Geometric : 0;
    // Every removal takes a segment, so there are at most as many restarts as
    // segments; the walk between two removals visits each curve once.
    const int maxRemovals = segments.size();
    int removals = 0;
    int i = getCurves().size() - 1;
    while (i >= 0) {
        koCurve *curve = getCurves().value(i);
        bool removed = false;
        if (curve && curve->isStraight()) {
            double length = curve->length;
            // A zero cache is unknown and measured; a NaN cache is taken as it
            // stands (and never counts as short).
            if (length == 0) {
                length = koCurve::getLength(curve->getValues(), 0, 1);
                curve->length = length;
            }
            if (length < tolerance || (simplify && curve->isCollinear(curve->getNext())))
                removed = curve->remove();
        }
        if (!removed) {
            --i;
            continue;
        }
        // Start again from the (new) last curve.
        if (++removals >= maxRemovals)
            break;
        i = getCurves().size() - 1;
    }
    return this;
}
