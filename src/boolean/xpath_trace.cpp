// Contour tracing of the boolean operations: walks the divided segments whose
// winding the operation keeps, switching to the other operand at crossings,
// and closes the walks into new contours.

#include "path/xpath.h"

#include "curve/kocurvelocation.h"
#include "geometry/kotolerance.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <cmath>

namespace {

// A traced contour of this many segments or fewer is dropped when it encloses
// no area (a collinear back-and-forth left by division).
constexpr int SmallContourSegments = 8;

class Tracer
{
public:
    Tracer(int operation, int walkLimit) : m_operation(operation), m_walkLimit(walkLimit) {}

    // The winding the operation keeps: intersect keeps the area covered
    // twice, the others the area covered once.
    bool hasWanted(const koSegment *segment) const
    {
        return segment->winding == (m_operation == XPath::OpIntersect ? 2 : 1);
    }

    // A segment can still be traced when it is not used yet and lies on the
    // outline the operation keeps; unite may also follow a segment on the
    // outline of the result area (its contour flag) unless excluded.
    bool isValid(const koSegment *segment, bool excludeContour) const
    {
        if (!segment || segment->visited)
            return false;
        if (m_operation == XPath::OpNone || hasWanted(segment))
            return true;
        return !excludeContour && m_operation == XPath::OpUnite && segment->contour;
    }

    bool isStart(const koSegment *segment) const
    {
        return segment && (segment == m_start || segment == m_otherStart);
    }

    // Of the locations meeting at one point, the one whose branch leads on
    // along the result; the given location when there is no choice.
    koCurveLocation *findBestIntersection(koCurveLocation *inter, const koSegment *exclude) const
    {
        if (!inter->next)
            return inter;
        int steps = 0;
        for (koCurveLocation *loc = inter; loc && steps <= m_walkLimit; loc = loc->next, ++steps) {
            koSegment *s = loc->segment;
            if (!s || s == exclude)
                continue;
            koSegment *n = s->getNext();
            if (isStart(s) || isStart(n))
                return loc;
            if (s->visited || (n && n->visited))
                continue;
            if (m_operation == XPath::OpNone)
                return loc;
            if (!isValid(s, false))
                continue;
            if (isValid(n, false))
                return loc;
            koCurveLocation *nextInter = n ? n->intersection() : nullptr;
            if (nextInter && isValid(nextInter->segment, false))
                return loc;
        }
        return inter;
    }

    // Traces the contour that starts at \a seg. Returns a closed contour or
    // null when the walk did not come back to its start.
    koPath *trace(koSegment *seg)
    {
        koCurveLocation *inter = seg->intersection();
        koPoint handleIn(0, 0);
        koPath *contour = nullptr;
        bool finished = false;
        m_start = m_otherStart = nullptr;

        // Every pass either marks a new segment visited or leaves the loop.
        for (int step = 0; step <= m_walkLimit; ++step) {
            if (inter)
                inter = findBestIntersection(inter, seg);
            koSegment *other = inter ? inter->segment : nullptr;
            if (isStart(seg)) {
                finished = true;
            } else if (other) {
                if (isStart(other)) {
                    finished = true;
                    seg = other;
                } else if (isValid(other, isValid(seg, true))) {
                    // Intersect and subtract never come back to the branch
                    // they leave, unless it bounds the result too: where the
                    // result touches itself (a vertex or a loop's touching
                    // point of one operand on the other's outline) it starts
                    // a walk of its own. Along an overlap both branches are
                    // the same outline, so the one left is used up.
                    if ((m_operation == XPath::OpIntersect || m_operation == XPath::OpSubtract)
                        && (!isValid(seg, false) || inter->overlap)) {
                        seg->visited = true;
                    }
                    seg = other;
                }
            }
            if (finished || seg->visited) {
                seg->visited = true;
                break;
            }
            // A path of overlaps only may not leave the result outline.
            if (seg->path && seg->path->isFlags(koPath::ValidOverlapsOnly)
                && m_operation != XPath::OpNone && !isValid(seg, false)) {
                break;
            }
            if (!contour) {
                contour = new koPath(nullptr, false);
                m_start = seg;
                m_otherStart = other;
            }
            koSegment *next = seg->getNext();
            contour->addSegment(
                    new koSegment(seg->point, handleIn, next ? seg->handleOut : koPoint(0, 0)));
            seg->visited = true;
            if (next) {
                handleIn = next->handleIn;
                seg = next;
            } else {
                // The end of an open path is joined straight to its start.
                // The pending handle is deliberately kept as it is.
                seg = seg->path ? seg->path->getFirstSegment() : nullptr;
                if (!seg)
                    break;
            }
            inter = seg->intersection();
        }

        if (!finished || !contour) {
            if (contour)
                contour->release();
            return nullptr;
        }
        contour->getFirstSegment()->setHandleIn(handleIn);
        contour->setClosed(true);
        const double area = contour->getArea(true, false);
        if (contour->segments.size() <= SmallContourSegments
            && std::abs(area) <= koTolerance::Epsilon) {
            contour->release();
            return nullptr;
        }
        return contour;
    }

private:
    const int m_operation;
    const int m_walkLimit;
    koSegment *m_start = nullptr;
    koSegment *m_otherStart = nullptr;
};

// Two operand paths that lie exactly on each other: their segments are all
// overlaps, so no walk would ever switch between them. Unite and intersect
// keep one copy, the other operations nothing; both are used up.
void traceFullOverlap(koSegment *seg, int operation, QVector<koPath *> &paths)
{
    koPath *path = seg->path;
    koCurveLocation *inter = seg->intersection();
    koPath *other = inter && inter->segment ? inter->segment->path : nullptr;
    if (!path || !other || !koSegment::segsEquals(path->segments, other->segments))
        return;
    if (operation == XPath::OpIntersect || operation == XPath::OpUnite) {
        // A NaN area is not zero: such a path is kept.
        if (path->getArea(true, false) != 0)
            paths.append(path->clone());
    }
    for (int i = 0; i < path->segments.size(); ++i) {
        path->segments.at(i)->visited = true;
        other->segments.at(i)->visited = true;
    }
}

} // namespace

QVector<koPath *> XPath::tracePaths(const QList<koSegment *> &segments, int operation)
{
    QVector<koPath *> paths;
    Tracer tracer(operation, segments.size() + 1);
    for (koSegment *seg : segments) {
        if (!seg)
            continue;
        koCurveLocation *inter = seg->intersection();
        if (!seg->visited && seg->path && seg->path->isFlags(koPath::OverlapsOnly))
            traceFullOverlap(seg, operation, paths);
        // No start on a used or discarded segment, nor inside an overlap
        // unless the path consists of valid overlaps only.
        if (!tracer.isValid(seg, true))
            continue;
        if (!(seg->path && seg->path->isFlags(koPath::ValidOverlapsOnly)) && inter
            && inter->overlap) {
            continue;
        }
        // A walk may switch to a partner branch at its very first step and
        // close without using seg (a loop of one operand touching itself
        // where the other passes): seg still bounds the result and is walked
        // from again. Every closed walk uses up segments, so the segment
        // count bounds the retries.
        for (int walk = 0; walk < segments.size() && tracer.isValid(seg, true); ++walk) {
            koPath *contour = tracer.trace(seg);
            if (!contour)
                break;
            paths.append(contour);
        }
    }
    return paths;
}
