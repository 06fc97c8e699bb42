// Resolution of a compound path's crossings with itself into simple contours.

#include "path/xpath.h"

#include "boolean/koboundopt.h"
#include "boolean/kostyle.h"
#include "boolean/kowinding.h"
#include "curve/kocurvelocation.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <QtCore/QSet>
#include <QtCore/QtNumeric>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

// Keeps path-model objects alive while resolution edits the paths under the
// locations' plain pointers; everything is released on destruction.
class Keeper
{
public:
    Keeper() = default;
    ~Keeper()
    {
        // Curves first: each holds its two segments.
        for (koCurve *curve : qAsConst(m_curves))
            curve->release();
        for (koSegment *segment : qAsConst(m_segments))
            segment->release();
    }
    void keep(koCurve *curve) { hold(m_curves, curve); }
    void keep(koSegment *segment) { hold(m_segments, segment); }
    // Every curve and segment a location may still point to.
    void keep(koCurveLocation *location)
    {
        keep(location->curve);
        keep(location->segment);
        keep(location->segment1);
        keep(location->segment2);
    }

private:
    template<class T>
    static void hold(QSet<T *> &held, T *object)
    {
        if (object && !held.contains(object)) {
            held.insert(object);
            object->addRef();
        }
    }

    QSet<koCurve *> m_curves;
    QSet<koSegment *> m_segments;
    Q_DISABLE_COPY(Keeper)
};

// The segment meets an overlap that runs back along its own path.
bool hasSelfOverlap(const koSegment *segment, const koPath *path)
{
    const koCurveLocation *inter = segment ? segment->intersection() : nullptr;
    return inter && inter->overlap && inter->path == path;
}

// Locations do not follow edits of their path by themselves (its version is
// never bumped): find the curve and time of \a location again from its point,
// walking from its stored curve over the pieces the curve was divided into.
void relocate(koCurveLocation *location)
{
    koCurve *curve = location->curve;
    if (!curve || !curve->path())
        return;
    const int limit = curve->path()->getCurves().size();
    for (int i = 0; curve && i <= limit; ++i) {
        const double t = curve->getTimeOf(location->point);
        if (t != koTolerance::NoTime) {
            location->setCurve(curve);
            location->time = t;
            location->offset = -1;
            return;
        }
        if (curve->segment2() == location->segment2)
            break;
        curve = curve->getNext();
    }
    // Not on any piece: lost unless its segments lead to it (getCurve()).
    location->curve = nullptr;
    location->time = koTolerance::NoTime;
    location->offset = -1;
}

// Both curves of a crossing are still part of a path.
bool bothInPaths(koCurveLocation *location)
{
    koCurve *c1 = location->getCurve();
    koCurve *c2 = location->intersection ? location->intersection->getCurve() : nullptr;
    return c1 && c2 && c1->path() && c2->path();
}

// A location still usable by the tracer: it sits on a segment of a path.
bool isAttached(const koCurveLocation *location)
{
    return location && location->segment && location->segment->path;
}

// Removes the segments strictly inside overlaps with which a path runs back
// along itself (a spike of zero area), and the zero-length curve this leaves.
void removeSelfOverlaps(const QList<koCurveLocation *> &overlaps, Keeper &keeper)
{
    for (int i = overlaps.size() - 1; i >= 0; --i) {
        koSegment *segment = overlaps.at(i)->segment;
        koPath *path = segment ? segment->path : nullptr;
        if (!path || path->segments.size() < 3)
            continue;
        koSegment *prev = segment->getPrevious();
        koSegment *next = segment->getNext();
        if (!prev || !next || prev == segment || next == segment || !hasSelfOverlap(prev, path)
            || !hasSelfOverlap(next, path)) {
            continue;
        }
        keeper.keep(segment);
        keeper.keep(segment->getCurve());
        keeper.keep(prev->getCurve());
        segment->remove();
        prev->setHandleOut(koPoint());
        next->setHandleIn(koPoint());
        koCurve *rest = prev->getCurve();
        if (prev != next && prev->path && path->segments.size() > 1 && rest && rest->isStraight()
            && prev->point.isClose(next->point, koTolerance::Epsilon)) {
            keeper.keep(prev);
            keeper.keep(rest);
            next->setHandleIn(prev->handleIn);
            prev->remove();
        }
    }
}

// Cuts the tracer's links to locations that lost their segment: segments
// pointing at them forget them, and they leave their chains.
void dropDetached(const QVector<koPath *> &children, const QList<koCurveLocation *> &locations)
{
    for (koPath *child : children) {
        for (koSegment *segment : child->getSegments()) {
            if (segment->intersection() && !isAttached(segment->intersection()))
                segment->setIntersection(nullptr);
        }
    }
    for (koCurveLocation *location : locations) {
        if (isAttached(location))
            continue;
        if (location->previous)
            location->previous->next = location->next;
        if (location->next)
            location->next->previous = location->previous;
        location->previous = location->next = nullptr;
    }
}

// Sorts closed contours by the area of their boxes, largest first, and
// orients them by nesting: a contour inside another runs against its nearest
// container, one inside none runs like the largest contour.
QVector<koPath *> orientByNesting(const QVector<koPath *> &paths)
{
    QVector<koPath *> closed;
    QVector<koPath *> open;
    for (koPath *path : paths)
        (path->isClosed() ? closed : open).append(path);
    if (closed.size() > 1) {
        QVector<QPair<double, koPath *>> keyed;
        keyed.reserve(closed.size());
        for (koPath *path : qAsConst(closed)) {
            const double area = path->getBounds(koBoundOpt(), koStyle(), nullptr).getArea();
            keyed.append(qMakePair(qIsNaN(area) ? -1.0 : area, path));
        }
        std::stable_sort(keyed.begin(), keyed.end(),
                         [](const QPair<double, koPath *> &a, const QPair<double, koPath *> &b) {
                             return a.first > b.first;
                         });
        // The mark of a contour is +1 clockwise, -1 otherwise; once settled
        // it is the orientation the contour is given.
        QVector<int> marks(keyed.size());
        // The box of points and handles that koPath::contains tests first,
        // taken once: the nesting test below asks every larger contour, and
        // most answer no by the box alone.
        QVector<koRect> handleBoxes(keyed.size());
        for (int i = 0; i < keyed.size(); ++i) {
            closed[i] = keyed.at(i).second;
            marks[i] = closed.at(i)->isClockwise() ? 1 : -1;
            handleBoxes[i] = koPath::getHandleBounds(closed.at(i)->segments, koStyle(),
                                                     koBoundOpt(true, false, false, true));
        }
        for (int i = 1; i < closed.size(); ++i) {
            koPath *path = closed.at(i);
            const koPoint inside = path->getInteriorPoint(false);
            int mark = marks.first();
            for (int j = i - 1; j >= 0; --j) {
                // koPath::contains under the non-zero rule.
                if (inside.isInside(handleBoxes.at(j))
                    && XPath::getWinding(inside, closed.at(j)->getMonoCurves(), false).winding
                            != 0) {
                    mark = -marks.at(j);
                    break;
                }
            }
            marks[i] = mark;
        }
        for (int i = 0; i < closed.size(); ++i)
            closed.at(i)->setClockwise(marks.at(i) > 0);
    }
    return closed + open;
}

// The outline of the non-zero fill of the divided \a path: every chain gets
// its winding against the path's own pieces (the larger side sum, and the
// contour flag where one side is empty), and the chains bounding winding 1
// are traced as for unite. Contours lying exactly on each other give one
// copy; contours inside others running the same way (winding 2) vanish.
QVector<koPath *> traceNonZero(XPath *path)
{
    QList<koSegment *> segments;
    QList<koMono *> monoCurves;
    for (koPath *child : qAsConst(path->children)) {
        segments.append(child->getSegments());
        monoCurves.append(child->getMonoCurves());
        child->addFlags(koPath::OverlapsOnly | koPath::ValidOverlapsOnly);
    }
    // Chains start at divisions first, then whole contours without any.
    for (koSegment *segment : qAsConst(segments)) {
        if (segment->intersection() && segment->winding == -1)
            XPath::propagateWinding(segment, path, nullptr, monoCurves, XPath::OpUnite);
    }
    for (koSegment *segment : qAsConst(segments)) {
        if (segment->winding == -1)
            XPath::propagateWinding(segment, path, nullptr, monoCurves, XPath::OpUnite);
        koCurveLocation *inter = segment->intersection();
        if (!(inter && inter->overlap) && segment->path) {
            segment->path->removeFlags(koPath::OverlapsOnly);
            if (segment->winding == 1)
                segment->path->removeFlags(koPath::ValidOverlapsOnly);
        }
    }
    return XPath::tracePaths(segments, XPath::OpUnite);
}

// No contour of the path crosses itself or another.
bool isResolved(XPath *path)
{
    const QList<koCurveLocation *> locations = path->getCrossings(path);
    bool resolved = true;
    for (koCurveLocation *location : locations)
        resolved = resolved && !location->isCrossing();
    XPath::releaseLocations(locations, true);
    return resolved;
}

// Whether \a point lies on a curve of \a path (within 2e-7).
bool onOutline(const XPath *path, const koPoint &point)
{
    for (koCurve *curve : path->getCurves()) {
        if (curve->getTimeOf(point) != koTolerance::NoTime)
            return true;
    }
    return false;
}

// The resolved \a path fills like \a original under its own rule (m_flag)
// at a point inside each contour of either. A point on either outline (the
// centre of one square may be a corner of another) tells nothing and is
// passed over.
bool fillsLike(const XPath *path, const XPath *original)
{
    koStyle evenOdd;
    evenOdd.evenOdd = true;
    koStyle rule;
    rule.evenOdd = original->m_flag;
    for (const XPath *x : {path, original}) {
        for (koPath *child : x->children) {
            if (!child || child->isEmpty())
                continue;
            const koPoint inside = child->getInteriorPoint(false);
            if (onOutline(path, inside) || onOutline(original, inside))
                continue;
            if (path->contains(inside, evenOdd) != original->contains(inside, rule))
                return false;
        }
    }
    return true;
}

// How resolve() reads the path: the even-odd reading traces every segment,
// the non-zero reading its non-zero outline.
enum class Reading { EvenOdd, NonZero };

void resolve(XPath *path, Reading reading);

// Contours that share stretches of outline but cross nowhere (a square drawn
// twice, nested squares sharing a corner and two edges) under the even-odd
// rule. Tracing every segment would walk each shared stretch once per copy,
// leaving a contour that runs along itself. Oriented by nesting, though,
// such contours fill by the non-zero rule as they do by the even-odd rule,
// and the non-zero reading settles shared stretches by winding: copies
// running against each other cancel, copies running the same way merge.
// Adopted only when the result neither crosses itself nor fills otherwise
// than \a path.
bool resolveOverlapsByNesting(XPath *path)
{
    const std::unique_ptr<XPath> nested(path->clone());
    const QVector<koPath *> contours = nested->children;
    for (koPath *contour : contours)
        contour->addRef();
    nested->setChildren(orientByNesting(contours));
    for (koPath *contour : contours)
        contour->release();
    resolve(nested.get(), Reading::NonZero);
    if (!isResolved(nested.get()) || !fillsLike(nested.get(), path))
        return false;
    path->setChildren(nested->children);
    return true;
}

// One resolution of \a path by \a reading.
void resolve(XPath *path, Reading reading)
{
    // Links and marks left by an earlier division or trace would lead the
    // tracer astray.
    for (koPath *child : qAsConst(path->children)) {
        for (koSegment *segment : child->getSegments()) {
            segment->setIntersection(nullptr);
            segment->visited = false;
            segment->winding = -1;
            segment->contour = false;
        }
    }
    // Crossings and overlaps only: where the path merely touches itself there
    // is nothing to resolve.
    QList<koCurveLocation *> locations = koCurveLocation::expand(path->getCrossings(path));
    bool hasOverlaps = false;
    bool hasCrossings = false;
    for (koCurveLocation *location : qAsConst(locations))
        (location->overlap ? hasOverlaps : hasCrossings) = true;
    if (reading == Reading::EvenOdd && hasOverlaps && !hasCrossings
        && resolveOverlapsByNesting(path)) {
        XPath::releaseLocations(locations, false);
        return;
    }

    QVector<koPath *> contours = path->children;
    {
        Keeper keeper;
        if (hasOverlaps) {
            const QList<koCurveLocation *> overlaps = XPath::divideLocations(locations, 1);
            for (koCurveLocation *location : qAsConst(locations))
                keeper.keep(location);
            removeSelfOverlaps(overlaps, keeper);
        }
        if (hasCrossings) {
            QList<koCurveLocation *> remaining;
            if (hasOverlaps) {
                // The overlap division and removal moved the crossings onto
                // other curves; mode 2 drops the links of those whose curves
                // were removed, and the rest are divided as usual.
                for (koCurveLocation *location : qAsConst(locations)) {
                    if (!location->overlap)
                        relocate(location);
                }
                for (koCurveLocation *location : qAsConst(locations)) {
                    if (!location->overlap && bothInPaths(location))
                        remaining.append(location);
                }
                XPath::divideLocations(locations, 2);
                for (koCurveLocation *location : qAsConst(remaining))
                    relocate(location);
            } else {
                remaining = locations;
            }
            XPath::divideLocations(remaining, 0);
        }
        if (hasOverlaps)
            dropDetached(path->children, locations);

        if (reading == Reading::NonZero) {
            contours = traceNonZero(path);
        } else if (hasOverlaps || hasCrossings) {
            QList<koSegment *> segments;
            for (koPath *child : qAsConst(path->children))
                segments.append(child->getSegments());
            contours = XPath::tracePaths(segments, XPath::OpNone);
        }

        // Every contour must hold a reference while it is examined and
        // adopted: traced contours come fresh (count 0) from the tracer.
        for (koPath *contour : qAsConst(contours))
            contour->addRef();
        const QVector<koPath *> ordered = orientByNesting(contours);
        path->setChildren(ordered);
        for (koPath *contour : qAsConst(contours))
            contour->release();
    }
    XPath::releaseLocations(locations, false);
}

} // namespace

void XPath::resolveCrossings()
{
    if (m_flag) {
        resolve(this, Reading::EvenOdd);
        return;
    }
    // Where the windings cannot be told apart (coordinates so large that
    // the pieces' crossings are lost in rounding) the non-zero trace may
    // leave crossing contours or lose some; the even-odd reading of the
    // path is kept then, which at least never does.
    const std::unique_ptr<XPath> nonZero(clone());
    resolve(nonZero.get(), Reading::NonZero);
    if (isResolved(nonZero.get()) && fillsLike(nonZero.get(), this))
        setChildren(nonZero->children);
    else
        resolve(this, Reading::EvenOdd);
}
