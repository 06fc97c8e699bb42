// RVPath to and from the compound path XPath: conversions, boolean
// operations, crossings, and the queries that need koPath geometry.

#include "rvpath/rvpath.h"

#include "curve/kocurvelocation.h"
#include "geometry/kopoint.h"
#include "geometry/kotolerance.h"
#include "path/kopath.h"
#include "path/kosegment.h"
#include "path/xpath.h"

#include <algorithm>

namespace {

// A close marker merges a closing point within this distance of the start
// into the first segment: the unit nearness of RVPath points.
constexpr double CloseJoinTolerance = koTolerance::RVNearness;

/*
    One koPath per subpath of elements [first, end): a move-to starts a path
    (its parent set to \a parent, which does not take a reference), a line-to
    and a complete cubic triple extend it, a close marker closes it and merges
    a closing point near the start. Elements before the first move-to, stray
    curve-data and cubics too near the end are skipped. The new paths have
    count 0 and belong to the caller.
*/
QVector<koPath *> buildPaths(const QVector<RVPathElement> &elements, int first, int end,
                             XPath *parent)
{
    QVector<koPath *> paths;
    koPath *current = nullptr;
    for (int i = std::max(first, 0); i < end; ++i) {
        const RVPathElement &e = elements.at(i);
        switch (e.type) {
        case RVPathElement::MoveTo:
            current = new koPath(parent, false);
            paths.append(current);
            current->moveTo(e.x, e.y);
            break;
        case RVPathElement::LineTo:
            if (current)
                current->lineTo(e.x, e.y);
            break;
        case RVPathElement::CurveTo:
            if (i + 2 < end) {
                if (current) {
                    const RVPathElement &c2 = elements.at(i + 1);
                    const RVPathElement &to = elements.at(i + 2);
                    current->cubicCurveTo(koPoint(e.x, e.y), koPoint(c2.x, c2.y),
                                          koPoint(to.x, to.y));
                }
                i += 2;
            }
            break;
        case RVPathElement::Close:
            if (current) {
                current->setClosed(true);
                current->join(current, CloseJoinTolerance);
            }
            break;
        default:
            break;
        }
    }
    return paths;
}

void releaseAll(const QVector<koPath *> &paths)
{
    for (koPath *path : paths)
        path->release();
}

inline bool isZero(const koPoint &p)
{
    return p.x == 0 && p.y == 0;
}

} // namespace

void RVPath::toXPath(XPath &out, int firstElement)
{
    if (!m_elements.isEmpty())
        cleanUp();
    const QVector<koPath *> paths = buildPaths(m_elements, firstElement, m_elements.size(), &out);
    out.setChildren(paths);
}

void RVPath::_toXPathAsDrawn(XPath &out, int firstElement)
{
    if (!m_elements.isEmpty())
        cleanUp();
    const QVector<koPath *> paths = buildPaths(m_elements, firstElement, m_elements.size(), &out);
    // A compound path turns its closed children clockwise (the first) and
    // counter-clockwise (the others); recording each child's own orientation
    // first keeps the direction in which it was drawn.
    for (koPath *path : paths) {
        if (path->isClosed())
            path->addFlags(path->isClockwise() ? koPath::Clockwise : koPath::CounterClockwise);
    }
    out.setChildren(paths);
}

void RVPath::fromXPath(XPath &in, int firstChild, int endChild)
{
    const int count = in.children.size();
    if (endChild < 0 || endChild > count)
        endChild = count;
    for (int c = std::max(firstChild, 0); c < endChild; ++c) {
        const koPath *path = in.children.at(c);
        const QList<koSegment *> &segments = path->segments;
        const int n = segments.size();
        if (n < 2)
            continue;
        moveTo(segments.at(0)->point.x, segments.at(0)->point.y);
        const int pairs = path->isClosed() ? n : n - 1;
        for (int i = 0; i < pairs; ++i) {
            const koSegment *s = segments.at(i);
            const koSegment *t = segments.at((i + 1) % n);
            if (isZero(s->handleOut) && isZero(t->handleIn)) {
                lineTo(t->point.x, t->point.y);
            } else {
                cubicTo(s->point.add(s->handleOut).toPt(), t->point.add(t->handleIn).toPt(),
                        t->point.toPt());
            }
        }
        if (path->isClosed())
            _closeCurrent();
    }
}

namespace {

enum class Boolean { Unite, Intersect, Subtract };

// this op other: the result replaces the elements; no result changes nothing.
void applyBoolean(RVPath &self, RVPath &other, Boolean op)
{
    XPath a;
    XPath b;
    self.toXPath(a, 0);
    other.toXPath(b, 0);
    XPath *result = op == Boolean::Unite ? a.unite(&b)
            : op == Boolean::Intersect   ? a.intersect(&b)
                                         : a.subtract(&b);
    if (!result)
        return;
    self.clear();
    self.fromXPath(*result, 0, -1);
    delete result;
}

} // namespace

void RVPath::unite(RVPath &other)
{
    applyBoolean(*this, other, Boolean::Unite);
}

void RVPath::intersect(RVPath &other)
{
    applyBoolean(*this, other, Boolean::Intersect);
}

void RVPath::subtract(RVPath &other)
{
    applyBoolean(*this, other, Boolean::Subtract);
}

void RVPath::evenOdd()
{
    XPath a;
    toXPath(a, 0);
    fromXPath(a, 0, -1);
}

QVector<QPointF> RVPath::crossPoints(RVPath &other)
{
    XPath a;
    XPath b;
    toXPath(a, 0);
    other.toXPath(b, 0);
    const QList<koCurveLocation *> crossings = a.getCrossings(&b);
    QVector<QPointF> points;
    points.reserve(crossings.size());
    for (const koCurveLocation *location : crossings)
        points.append(location->getPoint().toPt());
    XPath::releaseLocations(crossings, true);
    return points;
}

QPointF RVPath::bestCrossPoint(RVPath &other)
{
    const QVector<QPointF> points = crossPoints(other);
    return points.isEmpty() ? QPointF(0, 0) : points.constFirst();
}

bool RVPath::dividePath(RVPath &other, QPointF &at)
{
    XPath a;
    XPath b;
    toXPath(a, 0);
    other.toXPath(b, 0);
    const QList<koCurveLocation *> crossings = a.getCrossings(&b);
    if (crossings.isEmpty())
        return false;
    koCurveLocation *first = crossings.constFirst();
    const QPointF point = first->getPoint().toPt();
    koPath *after = a.getFirstChild() ? a.getFirstChild()->splitAt(first) : nullptr;
    XPath::releaseLocations(crossings, true);
    // No part after a crossing of the first subpath (the first crossing lies
    // on another subpath): nothing changes.
    if (!after)
        return false;
    at = point;
    XPath part;
    part.addChild(after, -1);
    // The split registered the new part with a (a closed path is split in
    // place); a's reference goes, part's stays.
    if (a.children.contains(after))
        a.removeChild(after);
    m_elements.resize(0);
    fromXPath(part, 0, -1);
    return true;
}

double RVPath::getTangent(int index, bool atStart)
{
    XPath x;
    toXPath(x, index);
    koPath *child = x.getFirstChild();
    if (!child)
        return 0.0;
    const double offset = atStart ? 0.0 : child->getLength();
    return child->getTangentAt(offset).getAngle();
}

bool RVPath::isEvenOdd() const
{
    const QVector<koPath *> paths = buildPaths(m_elements, 0, m_elements.size(), nullptr);
    bool result = false;
    int reference = -1; // orientation of the first closed path, -1 until found
    for (koPath *path : paths) {
        if (!path->isClosed())
            continue;
        const int clockwise = path->isClockwise() ? 1 : 0;
        if (reference == -1) {
            reference = clockwise;
        } else if (clockwise != reference) {
            result = true;
            break;
        }
    }
    releaseAll(paths);
    return result;
}

bool RVPath::isClockWise() const
{
    // The first subpath only: up to the second move-to.
    int end = m_elements.size();
    int moves = 0;
    for (int i = 0; i < m_elements.size(); ++i) {
        if (m_elements.at(i).type == RVPathElement::MoveTo && ++moves == 2) {
            end = i;
            break;
        }
    }
    const QVector<koPath *> paths = buildPaths(m_elements, 0, end, nullptr);
    const bool result = !paths.isEmpty() && paths.constFirst()->isClockwise();
    releaseAll(paths);
    return result;
}
