#include "path/kopath.h"

#include "path/kocurve.h"
#include "path/kosegment.h"

// Process-wide path counter: every construction (clones included) takes the
// next number, so the first path gets 1. Not thread-safe, like the rest of
// the model.
static int s_maxID = 0;

koPath::koPath(XPath *parentPath, bool isClosed) : closed(isClosed), parent(parentPath)
{
    id = ++s_maxID;
}

koPath::~koPath()
{
    parent = nullptr;
    clearCurves();
    clearSegments();
    clearMonos();
}

void koPath::release()
{
    if (refCount > 1) {
        --refCount;
        return;
    }
    refCount = -2;
    delete this;
}

koPath *koPath::clone() const
{
    koPath *copy = new koPath(nullptr, false);
    copy->assign(this);
    return copy;
}

void koPath::assign(const koPath *other)
{
    if (!other)
        return;
    // Copy the list first: other may be this path.
    const QList<koSegment *> source = other->segments;
    if (closed != other->closed) {
        closed = other->closed;
        // The closing curve appears or disappears: rebuild on demand.
        clearCurves();
    }
    QList<koSegment *> copies;
    copies.reserve(source.size());
    for (const koSegment *segment : source) {
        if (segment)
            copies.append(segment->clone());
    }
    addSegments(copies, -1);
}

bool koPath::equals(const koPath *other) const
{
    return other && closed == other->closed && koSegment::segsEquals(segments, other->segments);
}

koSegment *koPath::getFirstSegment() const
{
    return segments.isEmpty() ? nullptr : segments.first();
}

koSegment *koPath::getLastSegment() const
{
    return segments.isEmpty() ? nullptr : segments.last();
}

koSegment *koPath::getCurrentSegment() const
{
    return segments.isEmpty() ? nullptr : segments.last();
}

const QList<koCurve *> &koPath::getCurves()
{
    if (curves.isEmpty()) {
        const int count = int(_countCurves());
        const int n = segments.size();
        curves.reserve(count);
        for (int i = 0; i < count; ++i) {
            koCurve *curve = new koCurve(this, segments.at(i), segments.at(i + 1 < n ? i + 1 : 0));
            curve->addRef();
            curves.append(curve);
        }
    }
    return curves;
}

koCurve *koPath::getFirstCurve()
{
    const QList<koCurve *> &list = getCurves();
    return list.isEmpty() ? nullptr : list.first();
}

koCurve *koPath::getLastCurve()
{
    const QList<koCurve *> &list = getCurves();
    return list.isEmpty() ? nullptr : list.last();
}

double koPath::_countCurves() const
{
    const int n = segments.size();
    if (closed)
        return n;
    return n > 0 ? n - 1 : 0;
}

bool koPath::hasHandles() const
{
    for (const koSegment *segment : segments) {
        if (segment->hasHandles())
            return true;
    }
    return false;
}

void koPath::clearHandles()
{
    for (koSegment *segment : segments)
        segment->clearHandles();
}

void koPath::clearSegments()
{
    const QList<koSegment *> list = segments;
    segments.clear();
    for (koSegment *segment : list) {
        // A segment that outlives the path (held elsewhere) must not point
        // back at it.
        if (segment->path == this) {
            segment->path = nullptr;
            segment->index = -1;
        }
        segment->release();
    }
}

void koPath::clearCurves()
{
    const QList<koCurve *> list = curves;
    curves.clear();
    for (koCurve *curve : list) {
        if (curve->m_path == this)
            curve->m_path = nullptr;
        curve->release();
    }
}

koSegment *koPath::addSegment(koSegment *segment)
{
    if (!segment)
        return nullptr;
    const QList<koSegment *> stored = addSegments(QList<koSegment *>() << segment, -1);
    return stored.isEmpty() ? nullptr : stored.first();
}

koSegment *koPath::insertSegment(int i, koSegment *segment)
{
    if (!segment)
        return nullptr;
    const QList<koSegment *> stored = addSegments(QList<koSegment *>() << segment, i);
    return stored.isEmpty() ? nullptr : stored.first();
}

void koPath::setSegments(const QList<koSegment *> &list)
{
    // Hold the new segments while the old ones are let go: the list may name
    // segments of this very path, which clearSegments() would otherwise free.
    QList<koSegment *> held;
    held.reserve(list.size());
    for (koSegment *segment : list) {
        if (segment) {
            segment->addRef();
            held.append(segment);
        }
    }
    clearSegments();
    clearCurves();
    if (!held.isEmpty())
        addSegments(held, -1);
    for (koSegment *segment : held)
        segment->release();
    _changed();
}

QList<koSegment *> koPath::addSegments(QList<koSegment *> list, int index,
                                       const QList<koCurve *> &givenCurves)
{
    list.removeAll(nullptr);
    const int count = list.size();
    const int n = segments.size();
    const bool append = index < 0 || index >= n;
    const int at = append ? n : index;

    for (int i = 0; i < count; ++i) {
        koSegment *segment = list.at(i);
        // A segment belongs to one path at most: adopt a copy of a taken one
        // (this also covers a segment listed twice).
        if (segment->path) {
            segment = segment->clone();
            list[i] = segment;
        }
        segment->path = this;
        segment->index = at + i;
        segment->addRef();
    }
    if (append) {
        segments.append(list);
    } else {
        for (int i = 0; i < count; ++i)
            segments.insert(at + i, list.at(i));
        for (int i = at + count; i < segments.size(); ++i)
            segments.at(i)->index = i;
    }

    if (count > 0 && !curves.isEmpty()) {
        const int total = int(_countCurves());
        int start = at;
        // Appending to an open path: the old last segment now starts a curve.
        if (start >= 1 && total == start + count - 1)
            --start;
        const int end = qMin(start + count, total);
        int pos = start;
        for (koCurve *curve : givenCurves) {
            if (!curve || pos >= end)
                continue;
            curve->addRef();
            curves.insert(pos++, curve);
        }
        for (; pos < end; ++pos) {
            koCurve *curve = new koCurve(this, nullptr, nullptr);
            curve->addRef();
            curves.insert(pos, curve);
        }
        _adjustCurves(start, end);
        // A list that was out of step before the call is simply rebuilt on
        // demand.
        if (curves.size() != total)
            clearCurves();
    }
    // The caller's references on the given curves are handed over.
    for (koCurve *curve : givenCurves) {
        if (curve)
            curve->release();
    }
    if (count > 0)
        _changed();
    return list;
}

bool koPath::removeSegment(int i)
{
    if (i < 0 || i >= segments.size())
        return false;
    QList<koSegment *> outSegments;
    QList<koCurve *> outCurves;
    return removeSegments(outSegments, outCurves, i, i + 1, true) > 0;
}

int koPath::removeSegments(QList<koSegment *> &outSegments, QList<koCurve *> &outCurves, int from,
                           int to, bool release)
{
    const int n = segments.size();
    if (to < 0 || to > n)
        to = n;
    if (from < 0)
        from = 0;
    if (from >= to)
        return 0;
    const bool toEnd = to == n;
    const int count = to - from;

    const int segmentMark = outSegments.size();
    for (int i = from; i < to; ++i) {
        koSegment *segment = segments.at(i);
        segment->index = 0;
        segment->path = nullptr;
        outSegments.append(segment);
    }
    segments.erase(segments.begin() + from, segments.begin() + to);
    for (int i = from; i < segments.size(); ++i)
        segments.at(i)->index = i;

    if (!curves.isEmpty()) {
        // Each removed segment takes the curve that starts at it, except at
        // the end of an open path, where the last remaining segment no longer
        // starts a curve: there the run of curves starts one earlier, or (when
        // everything goes) is one shorter. A closed path always loses the
        // curves [from, to); the curve before the gap is re-linked below to
        // the segment after it, wrapping round to segment 0.
        int first = from;
        int amount = count;
        if (!closed && toEnd) {
            if (from > 0)
                first = from - 1;
            else
                amount = count - 1;
        }
        first = qBound(0, first, curves.size());
        amount = qBound(0, amount, curves.size() - first);
        const int curveMark = outCurves.size();
        for (int k = 0; k < amount; ++k) {
            koCurve *curve = curves.takeAt(first);
            curve->m_path = nullptr;
            outCurves.append(curve);
        }
        if (release) {
            for (int k = curveMark; k < outCurves.size(); ++k)
                outCurves.at(k)->release();
            outCurves.erase(outCurves.begin() + curveMark, outCurves.end());
        }
        _adjustCurves(from, from);
        if (curves.size() != int(_countCurves()))
            clearCurves();
    }

    if (release) {
        for (int k = segmentMark; k < outSegments.size(); ++k)
            outSegments.at(k)->release();
        outSegments.erase(outSegments.begin() + segmentMark, outSegments.end());
    }
    _changed();
    return count;
}

// Points a counted segment slot of a curve at \a segment: the new segment is
// held before the old one is let go, since they may be the same object.
static void relink(koSegment *&slot, koSegment *segment)
{
    if (slot == segment)
        return;
    if (segment)
        segment->addRef();
    koSegment *old = slot;
    slot = segment;
    if (old)
        old->release();
}

void koPath::_adjustCurves(int start, int end)
{
    const int nc = curves.size();
    const int ns = segments.size();
    if (ns == 0)
        return;
    start = qBound(0, start, nc);
    end = qBound(start, end, nc);

    for (int i = start; i < end && i < ns; ++i) {
        koCurve *curve = curves.at(i);
        curve->m_path = this;
        relink(curve->m_segment1, segments.at(i));
        relink(curve->m_segment2, segments.at(i + 1 < ns ? i + 1 : 0));
        curve->_changed();
    }
    // The curve before the range ends at its first segment.
    const int before = start > 0 ? start - 1 : (closed ? nc - 1 : -1);
    if (before >= 0 && before < nc) {
        koCurve *curve = curves.at(before);
        relink(curve->m_segment2, segments.at(start < ns ? start : 0));
        curve->_changed();
    }
    // The curve after the range starts at the segment after it.
    if (end < nc && end < ns) {
        koCurve *curve = curves.at(end);
        relink(curve->m_segment1, segments.at(end));
        curve->_changed();
    }
}

void koPath::_changed()
{
    m_length = 0;
    m_area = 0;
    clearMonos();
}

void koPath::setClockwise(bool clockwise)
{
    if (closed)
        _orient(clockwise);
}

void koPath::reorient()
{
    if (closed)
        _orient(true);
}

void koPath::_orient(bool clockwise)
{
    const bool current = isFlags(Clockwise | CounterClockwise) ? isFlags(Clockwise) : isClockwise();
    if (current != clockwise)
        reverse();
    if (clockwise) {
        addFlags(Clockwise);
        removeFlags(CounterClockwise);
    } else {
        addFlags(CounterClockwise);
        removeFlags(Clockwise);
    }
}
