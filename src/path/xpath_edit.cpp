// Editing and nearness queries of a compound path, child by child.

#include "path/xpath.h"

#include "curve/kocurvelocation.h"
#include "geometry/kotolerance.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

namespace {

// Distance from \a p to the segment from \a a to \a b (to \a a when the
// segment has no length).
double distanceToSegment(const koPoint &p, const koPoint &a, const koPoint &b)
{
    const koPoint ab = b - a;
    const double lengthSquared = ab.dot(ab);
    double t = lengthSquared > 0 ? (p - a).dot(ab) / lengthSquared : 0;
    t = std::min(1.0, std::max(0.0, t));
    return p.getDistance(a + ab * t);
}

/*
    Ramer-Douglas-Peucker on the polyline \a points: marks in \a keep the
    points that must stay so that every dropped point lies within \a tolerance
    of the segment between the kept points around it. Since distance to a
    segment is convex, the whole dropped stretch then lies within the
    tolerance, and the new segment within the tolerance of the stretch.

    An explicit stack replaces recursion. Unbalanced splits make the method
    quadratic, so the distance tests are budgeted (about 64 n log n); a range
    met after the budget is spent keeps all its points, which is always within
    the tolerance.
*/
void markDouglasPeucker(const QVector<koPoint> &points, double tolerance, QVector<bool> &keep)
{
    const int n = points.size();
    keep = QVector<bool>(n, false);
    if (n == 0)
        return;
    keep[0] = keep[n - 1] = true;
    qint64 budget = 64 * qint64(n) * (1 + qint64(std::log2(double(n))));
    QVector<QPair<int, int>> stack;
    stack.append(qMakePair(0, n - 1));
    while (!stack.isEmpty()) {
        const QPair<int, int> range = stack.takeLast();
        budget -= range.second - range.first;
        if (budget < 0) {
            std::fill(keep.begin() + range.first, keep.begin() + range.second, true);
            continue;
        }
        int farthest = -1;
        double farthestDistance = tolerance;
        for (int i = range.first + 1; i < range.second; ++i) {
            const double d = distanceToSegment(points.at(i), points.at(range.first),
                                               points.at(range.second));
            if (d > farthestDistance) {
                farthest = i;
                farthestDistance = d;
            }
        }
        if (farthest < 0)
            continue;
        keep[farthest] = true;
        stack.append(qMakePair(range.first, farthest));
        stack.append(qMakePair(farthest, range.second));
    }
}

// Drops the points of the straight path \a path that deviate less than
// \a tolerance. A closed path is treated as the polyline that returns to its
// first point.
void dropPoints(koPath *path, double tolerance)
{
    const QList<koSegment *> segments = path->getSegments();
    const int n = segments.size();
    if (n < 3)
        return;
    QVector<koPoint> points;
    points.reserve(n + 1);
    for (const koSegment *segment : segments)
        points.append(segment->point);
    if (path->isClosed())
        points.append(points.first());
    QVector<bool> keep;
    markDouglasPeucker(points, tolerance, keep);
    QList<koSegment *> kept;
    for (int i = 0; i < n; ++i) {
        if (keep.at(i))
            kept.append(segments.at(i));
    }
    if (kept.size() != n)
        path->setSegments(kept);
}

} // namespace

XPath *XPath::reduce(bool simplify)
{
    for (int i = children.size() - 1; i >= 0; --i) {
        koPath *child = children.at(i);
        child->reduce(simplify);
        if (child->isEmpty() && child->parent)
            removeChild(child);
    }
    return this;
}

void XPath::flatten(double flatness)
{
    for (koPath *child : children)
        child->flatten(flatness);
}

void XPath::simplify(double tolerance)
{
    if (!(tolerance >= 0))
        tolerance = 0;
    // Half the budget to flattening (which never goes below the geometric
    // epsilon), the rest to dropping points.
    const double flatness = std::max(tolerance / 2, koTolerance::Geometric);
    const double drop = std::max(tolerance - flatness, 0.0);
    for (koPath *child : children) {
        child->flatten(flatness);
        dropPoints(child, drop);
    }
}

void XPath::interpolate(const XPath *from, const XPath *to, double factor)
{
    if (!from || !to)
        return;
    const int n = children.size();
    if (from->children.size() != n || to->children.size() != n)
        return;
    for (int i = 0; i < n; ++i)
        children.at(i)->interpolate(from->children.at(i), to->children.at(i), factor);
}

koPath *XPath::splitAt(double offset)
{
    if (qIsNaN(offset))
        return nullptr;
    const int n = children.size();
    QVector<double> lengths(n);
    double total = 0;
    for (int i = 0; i < n; ++i) {
        lengths[i] = children.at(i)->getLength();
        total += lengths.at(i);
    }
    if (offset < 0)
        offset += total;
    if (offset < 0 || n == 0)
        return nullptr;
    double before = 0;
    for (int i = 0; i < n; ++i) {
        // A child's end is the next child's start: the later child takes it.
        if (offset < before + lengths.at(i))
            return children.at(i)->splitAt(offset - before);
        before += lengths.at(i);
    }
    // The very end of the compound path belongs to its last child.
    if (offset <= total)
        return children.last()->splitAt(offset - (total - lengths.last()));
    return nullptr;
}

void XPath::transformContent(const koMatrix *matrix)
{
    if (!matrix)
        return;
    for (koPath *child : children)
        child->transformContent(matrix);
    m_bounds = koRect();
}

koCurveLocation *XPath::getNearestLocation(const koPoint &point) const
{
    koCurveLocation *best = nullptr;
    double bestDistance = qInf();
    for (koPath *child : children) {
        koCurveLocation *location = child->getNearestLocation(point);
        if (!location)
            continue;
        // Strictly nearer only: the earlier child keeps a tie.
        if (location->distance < bestDistance) {
            if (best)
                best->release();
            best = location;
            bestDistance = location->distance;
        } else {
            location->release();
        }
    }
    return best;
}

koPoint XPath::getNearestPoint(const koPoint &point) const
{
    koCurveLocation *location = getNearestLocation(point);
    if (!location)
        return koPoint(qQNaN(), qQNaN());
    const koPoint nearest = location->getPoint();
    location->release();
    return nearest;
}
