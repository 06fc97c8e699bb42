// The boolean operations on compound paths: prepare copies of both operands,
// divide them at their crossings, give every segment the winding of its
// chain and trace the segments the operation keeps into new contours.

#include "path/xpath.h"

#include "boolean/koboundopt.h"
#include "boolean/komono.h"
#include "boolean/kostyle.h"
#include "boolean/kowinding.h"
#include "curve/kocurvelocation.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

namespace {

bool isOpenSinglePath(const XPath *path)
{
    return path->children.size() == 1 && path->children.first() && !path->children.first()->closed;
}

// Orients closed contours that do not cross each other by nesting depth:
// clockwise at even depth (outlines), counter-clockwise at odd depth
// (holes), so that the set reads the same under both fill rules. A contour
// is tested against the contours before it in the order of decreasing box
// area (then enclosed area), since only those can contain it.
void orientByNesting(const QVector<koPath *> &paths)
{
    struct Entry
    {
        koPath *path;
        double boxArea;
        double area;
        koRect handleBox;
    };
    koStyle evenOdd;
    evenOdd.evenOdd = true;
    QVector<Entry> entries;
    for (koPath *path : paths) {
        if (path && path->closed && !path->isEmpty()) {
            const double boxArea = path->getBounds(koBoundOpt(), koStyle()).getArea();
            // The box koPath::contains tests first, taken once: the nesting
            // test below asks every larger path, and most answer no by the
            // box alone.
            const koRect handleBox = koPath::getHandleBounds(path->segments, evenOdd,
                                                             koBoundOpt(true, false, false, true));
            entries.append(
                    {path, std::abs(boxArea), std::abs(path->getArea(true, false)), handleBox});
        }
    }
    // NaN sizes sort last, where they contain nothing.
    const auto larger = [](double a, double b) { return a > b || (!qIsNaN(a) && qIsNaN(b)); };
    std::stable_sort(entries.begin(), entries.end(), [&](const Entry &a, const Entry &b) {
        if (a.boxArea != b.boxArea)
            return larger(a.boxArea, b.boxArea);
        return larger(a.area, b.area);
    });
    QVector<bool> clockwise(entries.size());
    for (int i = 0; i < entries.size(); ++i) {
        const koPoint inside = entries.at(i).path->getInteriorPoint(false);
        // The nearest container decides: inside it the contour runs the
        // other way.
        bool outline = true;
        for (int j = i - 1; j >= 0; --j) {
            // koPath::contains under the even-odd rule.
            if (inside.isInside(entries.at(j).handleBox)
                && (XPath::getWinding(inside, entries.at(j).path->getMonoCurves(), false).winding
                    & 1) != 0) {
                outline = !clockwise.at(j);
                break;
            }
        }
        clockwise[i] = outline;
    }
    for (int i = 0; i < entries.size(); ++i)
        entries.at(i).path->setClockwise(clockwise.at(i));
}

// The point halfway along \a path, measured exactly (not by the whole-unit
// path length, which would put the middle of a short piece at its start).
koPoint pieceMiddle(koPath *path)
{
    const QList<koCurve *> &curves = path->getCurves();
    double total = 0;
    for (koCurve *curve : curves)
        total += curve->getLength();
    double offset = total * 0.5;
    for (koCurve *curve : curves) {
        const double length = curve->getLength();
        if (length >= offset) {
            const QVector<double> values = curve->getValues();
            double t = koCurve::getTimeAt(values, offset, koTolerance::NoTime);
            if (t == koTolerance::NoTime)
                t = 0.5;
            return koCurve::getPoint(values, t);
        }
        offset -= length;
    }
    return path->isEmpty() ? koPoint(qQNaN(), qQNaN()) : path->getFirstSegment()->point;
}

// A filled operand closes every open child implicitly, as QPainterPath and
// renderers fill it: a straight line from its end back to its start (the
// handles at the two ends dropped). Tracing and winding would otherwise see
// that line while no crossing with it is ever found. Returns whether any
// child was closed.
bool closeForFilling(XPath *path)
{
    bool closed = false;
    for (koPath *child : qAsConst(path->children)) {
        if (!child || child->closed || child->isEmpty())
            continue;
        child->getFirstSegment()->setHandleIn(koPoint());
        child->getLastSegment()->setHandleOut(koPoint());
        child->setClosed(true);
        closed = true;
    }
    return closed;
}

// preparePath(path, true) for a filled operand, its open children closed
// before the reduction drops a closing line of no length and before the
// self-crossings (also those of the closing lines) are resolved.
XPath *prepareFilled(XPath *path)
{
    XPath *copy = XPath::preparePath(path, false);
    if (copy && closeForFilling(copy))
        copy->reduce(true);
    if (copy)
        copy->resolveCrossings();
    return copy;
}

} // namespace

XPath *XPath::unite(XPath *other)
{
    return computeBoolean(this, other, OpUnite);
}

XPath *XPath::intersect(XPath *other)
{
    return computeBoolean(this, other, OpIntersect);
}

XPath *XPath::subtract(XPath *other)
{
    return computeBoolean(this, other, OpSubtract);
}

XPath *XPath::exclude(XPath *other)
{
    return computeBoolean(this, other, OpExclude);
}

QList<XPath *> XPath::divide(XPath *other)
{
    return QList<XPath *>() << computeBoolean(this, other, OpSubtract)
                            << computeBoolean(this, other, OpIntersect);
}

XPath *XPath::preparePath(XPath *path, bool resolve)
{
    if (!path)
        return nullptr;
    XPath *copy = path->clone();
    copy->reduce(true);
    if (resolve)
        copy->resolveCrossings();
    return copy;
}

XPath *XPath::computeBoolean(XPath *path1, XPath *path2, int operation)
{
    if (!path1 || operation < OpNone || operation > OpExclude)
        return nullptr;
    if (isOpenSinglePath(path1))
        return computeOpenBoolean(path1, path2, operation);

    XPath *p1 = prepareFilled(path1);
    XPath *p2 = path2 && path2 != path1 ? prepareFilled(path2) : nullptr;
    // Subtract and exclude need the operands running against each other,
    // unite and intersect with each other.
    if (p2) {
        const bool opposite = operation == OpSubtract || operation == OpExclude;
        if (opposite != (p1->isClockwise() != p2->isClockwise()))
            p2->reverse();
    }

    // The expanded list holds every crossing with its partner; division
    // links both to their new segments, which take references of their own.
    const QList<koCurveLocation *> crossings = p1->getCrossings(p2);
    const QList<koCurveLocation *> intersections = koCurveLocation::expand(crossings);
    divideLocations(intersections, 0);

    QList<koSegment *> segments;
    QList<koMono *> monoCurves;
    QVector<koPath *> operandPaths = p1->children;
    if (p2)
        operandPaths += p2->children;
    for (koPath *path : qAsConst(operandPaths)) {
        segments.append(path->segments);
        monoCurves.append(path->getMonoCurves());
        path->addFlags(koPath::OverlapsOnly | koPath::ValidOverlapsOnly);
    }

    // The chains that start at a crossing first, then the rest (whole paths
    // without crossings among them).
    for (koCurveLocation *location : intersections)
        propagateWinding(location->segment, p1, p2, monoCurves, operation);
    const int wanted = operation == OpIntersect ? 2 : 1;
    for (koSegment *segment : qAsConst(segments)) {
        if (segment->winding == -1)
            propagateWinding(segment, p1, p2, monoCurves, operation);
        koCurveLocation *inter = segment->intersection();
        if (!(inter && inter->overlap) && segment->path) {
            segment->path->removeFlags(koPath::OverlapsOnly);
            if (segment->winding == wanted)
                segment->path->removeFlags(koPath::ValidOverlapsOnly);
        }
    }

    const QVector<koPath *> paths = tracePaths(segments, operation);
    releaseLocations(intersections, false);
    delete p1;
    delete p2;
    return createResult(paths, true, path1, path2);
}

XPath *XPath::computeOpenBoolean(XPath *path1, XPath *path2, int operation)
{
    if (!path1 || !path2 || !isOpenSinglePath(path1) || isOpenSinglePath(path2)
        || (operation != OpIntersect && operation != OpSubtract)) {
        return nullptr;
    }
    XPath *p1 = preparePath(path1, false);
    XPath *p2 = preparePath(path2, false);
    // The clipping area is filled, its open children closed.
    if (closeForFilling(p2))
        p2->reduce(true);
    koPath *rest = p1->getFirstChild();
    const QList<koCurveLocation *> crossings = p1->getCrossings(p2);

    koStyle style;
    style.evenOdd = p2->m_flag;
    const bool keepInside = operation == OpIntersect;
    // A piece between two crossings lies wholly inside or outside; its middle
    // tells which. Kept pieces are copied out, so that the prepared paths
    // keep sole ownership of theirs.
    const auto keep = [&](koPath *piece, QVector<koPath *> &kept) {
        if (piece->segments.size() < 2 || p2->contains(pieceMiddle(piece), style) != keepInside)
            return;
        koPath *copy = piece->clone();
        copy->getFirstSegment()->setHandleIn(koPoint(0, 0));
        kept.prepend(copy);
    };

    // From the last crossing to the first: each split cuts off the piece up
    // to the previous cut and leaves the part before the crossing in place.
    // A split rebuilds the curve it divides, so each crossing is found by
    // the index of its curve, taken before any split; on a curve already
    // divided (whose straight pieces are not parametrised like the whole)
    // its time is found again from its point.
    QVector<int> indices;
    for (koCurveLocation *crossing : crossings) {
        koCurve *curve = crossing->getCurve();
        indices.append(curve && curve->path() == rest ? curve->index() : -1);
    }
    QVector<koPath *> kept;
    int dividedIndex = -1;
    for (int i = crossings.size() - 1; i >= 0 && rest; --i) {
        const int index = indices.at(i);
        koCurve *curve = index >= 0 ? rest->getCurves().value(index) : nullptr;
        if (!curve)
            continue;
        const double t = index == dividedIndex ? curve->getTimeOf(crossings.at(i)->point)
                                               : crossings.at(i)->getTime();
        if (!(t >= 0 && t <= 1))
            continue;
        koCurveLocation *at = new koCurveLocation(curve, t, koPoint(qQNaN(), qQNaN()), false, 0);
        koPath *piece = curve->splitAt(at);
        at->release();
        dividedIndex = index;
        if (piece && piece != rest)
            keep(piece, kept);
    }
    if (rest)
        keep(rest, kept);

    releaseLocations(crossings, true);
    delete p1;
    delete p2;
    return createResult(kept, true, path1, path2);
}

XPath *XPath::createResult(const QVector<koPath *> &paths, bool simplify, XPath *path1,
                           XPath *path2)
{
    Q_UNUSED(path1)
    Q_UNUSED(path2)
    // Reduced before they are oriented and added, so that no child is left
    // empty by the reduction of the result (a removal would orient the
    // remaining children by their index again).
    QVector<koPath *> list;
    for (koPath *path : paths) {
        if (!path)
            continue;
        if (simplify)
            path->reduce(true);
        if (path->isEmpty())
            path->release();
        else
            list.append(path);
    }
    orientByNesting(list);

    XPath *result = new XPath;
    result->addChildren(list, -1);
    // The result takes over the caller's reference: a fresh path (count 0)
    // is now held by the result alone; a counted one gives up one reference.
    for (koPath *path : qAsConst(list)) {
        if (path->refCount > 1)
            path->release();
    }
    if (simplify)
        result->reduce(true);
    return result;
}
