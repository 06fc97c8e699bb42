#include "path/kopath.h"

#include "boolean/koboundopt.h"
#include "boolean/kostyle.h"
#include "geometry/komatrix.h"
#include "path/kocurve.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

namespace {

// Null entries carry no geometry; the bounds read the others.
QList<koSegment *> withoutNull(const QList<koSegment *> &segments)
{
    if (!segments.contains(nullptr))
        return segments;
    QList<koSegment *> list;
    for (koSegment *s : segments) {
        if (s)
            list.append(s);
    }
    return list;
}

// A box grown point by point. A NaN coordinate poisons its axis instead of
// slipping through the comparisons unnoticed.
struct BoxBuilder
{
    double min[2] = {qInf(), qInf()};
    double max[2] = {-qInf(), -qInf()};
    bool nan[2] = {false, false};
    bool empty = true;

    void add(double x, double y, const koPoint &pad)
    {
        addAxis(0, x, pad.x);
        addAxis(1, y, pad.y);
        empty = false;
    }
    void addAxis(int c, double v, double pad)
    {
        if (qIsNaN(v) || qIsNaN(pad)) {
            nan[c] = true;
            return;
        }
        min[c] = std::min(min[c], v - pad);
        max[c] = std::max(max[c], v + pad);
    }
    koRect rect() const
    {
        if (empty)
            return koRect();
        return koRect(nan[0] ? qQNaN() : min[0], nan[1] ? qQNaN() : min[1],
                      nan[0] ? qQNaN() : max[0] - min[0], nan[1] ? qQNaN() : max[1] - min[1]);
    }
};

// Walks the curves of a segment list (curve k joins segment k to the next,
// the last one of a closed list back to the first) for the directions of
// travel at the segments.
class Directions
{
public:
    Directions(const QList<koSegment *> &segments, bool closed)
        : m_segments(segments), m_n(segments.size()), m_closed(closed)
    {}

    // The direction arriving at segment i, from the nearest curve of
    // non-zero length ending there; false when there is none.
    bool in(int i, koPoint &dir) const
    {
        for (int step = 1; step <= m_n; ++step) {
            int k = i - step;
            if (k < 0) {
                if (!m_closed)
                    return false;
                k += m_n;
            }
            const koPoint p2 = point(k + 1);
            if (unit(-handle(k + 1, true), dir) || unit(p2 - point(k) - handle(k, false), dir)
                || unit(p2 - point(k), dir))
                return true;
        }
        return false;
    }

    // The direction leaving segment i, from the nearest curve of non-zero
    // length starting there; false when there is none.
    bool out(int i, koPoint &dir) const
    {
        for (int k = i; k < i + m_n; ++k) {
            if (k % m_n == m_n - 1 && !m_closed)
                return false;
            const koPoint p1 = point(k);
            if (unit(handle(k, false), dir) || unit(point(k + 1) + handle(k + 1, true) - p1, dir)
                || unit(point(k + 1) - p1, dir))
                return true;
        }
        return false;
    }

private:
    koPoint point(int k) const { return m_segments.at(k % m_n)->point; }
    koPoint handle(int k, bool in) const
    {
        const koSegment *s = m_segments.at(k % m_n);
        return in ? s->handleIn : s->handleOut;
    }
    // Like Qt, the tangent at an end runs to the first control point apart
    // from the end point.
    static bool unit(const koPoint &d, koPoint &dir)
    {
        if (d.isZero())
            return false;
        dir = d / d.getLength();
        return true;
    }

    const QList<koSegment *> &m_segments;
    const int m_n;
    const bool m_closed;
};

void addMapped(const koPoint &p, const koMatrix *matrix, QVector<koPoint> &points)
{
    points.append(matrix ? matrix->transformPoint(p) : p);
}

// The outer outline of the join at p between the arriving direction t1 and
// the leaving direction t2 (both unit): the two offset points and, for a
// miter within the limit, the tip where the outer offset edges cross.
void joinOutline(const koPoint &p, const koPoint &t1, const koPoint &t2, int join, double radius,
                 double miterLimit, bool isArea, const koMatrix *matrix, QVector<koPoint> &points)
{
    const double cross = t1.cross(t2);
    const double dot = t1.dot(t2);
    // The outer side lies against the turn.
    const double side = cross < 0 ? -1 : 1;
    const koPoint n1 = koPoint(t1.y, -t1.x) * side;
    const koPoint n2 = koPoint(t2.y, -t2.x) * side;
    if (isArea)
        addMapped(p, matrix, points);
    addMapped(p + n1 * radius, matrix, points);
    if (join == koJoinMiter && dot > -1) {
        // The tip lies on the bisector at radius / cos(turn / 2); a U-turn
        // has none.
        const double cosHalf = std::sqrt((1 + dot) / 2);
        if (radius <= miterLimit * cosHalf)
            addMapped(p + (n1 + n2) * (radius / (1 + dot)), matrix, points);
    }
    addMapped(p + n2 * radius, matrix, points);
}

// The outline of the cap at p whose outward direction is dir (unit).
void capOutline(const koPoint &p, const koPoint &dir, int cap, double radius, bool isArea,
                const koMatrix *matrix, QVector<koPoint> &points)
{
    const koPoint across(-dir.y * radius, dir.x * radius);
    koPoint end = p;
    if (cap == koCapSquare) {
        if (isArea) {
            addMapped(p - across, matrix, points);
            addMapped(p + across, matrix, points);
        }
        end = p + dir * radius;
    }
    addMapped(end + across, matrix, points);
    addMapped(end - across, matrix, points);
}

// The outward direction of the cap at segment i of an open list: backwards
// from the start, forwards at the end; along x when the path has none.
koPoint capDirection(const Directions &directions, int i, bool start)
{
    koPoint dir;
    if (start)
        return directions.out(i, dir) ? -dir : koPoint(-1, 0);
    return directions.in(i, dir) ? dir : koPoint(1, 0);
}

} // namespace

koRect koPath::getBounds(const koBoundOpt &boundOpt, const koStyle &style, const koMatrix *matrix)
{
    if (boundOpt.handle)
        return getHandleBounds(segments, style, boundOpt, matrix);
    if (boundOpt.stroke)
        return getStrokeBounds(segments, closed, style, matrix);
    const double zero[2] = {0, 0};
    koRect r = getBounds(segments, closed, zero, matrix);
    // A line along an axis gets a unit of thickness, so that it still has
    // an area; a single point keeps its zero-size box.
    if (r.width > 0 && r.height == 0)
        r.height = 1;
    else if (r.width == 0 && r.height > 0)
        r.width = 1;
    return r;
}

koRect koPath::getBounds(const QList<koSegment *> &segments, bool closed, const double padding[2],
                         const koMatrix *matrix)
{
    const QList<koSegment *> list = withoutNull(segments);
    if (list.isEmpty())
        return koRect();
    const double pad[2] = {padding ? padding[0] : 0, padding ? padding[1] : 0};
    bool nan[2] = {false, false};
    // Six numbers per segment: point, absolute incoming and outgoing handle.
    auto read = [&](koSegment *s, QVector<double> &coords) {
        s->transformCoordinates(matrix, coords, false);
        for (int i = 0; i < 6; ++i)
            nan[i & 1] = nan[i & 1] || qIsNaN(coords.at(i));
    };
    QVector<double> first, prev, cur;
    QVector<double> roots(2);
    read(list.first(), first);
    double min[2] = {first.at(0), first.at(1)};
    double max[2] = {first.at(0), first.at(1)};
    auto addCurve = [&](const QVector<double> &from, const QVector<double> &to) {
        for (int c = 0; c < 2; ++c)
            koCurve::addBounds(from.at(c), from.at(4 + c), to.at(2 + c), to.at(c), c, pad[c], min,
                               max, roots);
    };
    prev = first;
    for (int i = 1; i < list.size(); ++i) {
        read(list.at(i), cur);
        addCurve(prev, cur);
        prev.swap(cur);
    }
    if (closed)
        addCurve(prev, first);
    return koRect(nan[0] ? qQNaN() : min[0], nan[1] ? qQNaN() : min[1],
                  nan[0] ? qQNaN() : max[0] - min[0], nan[1] ? qQNaN() : max[1] - min[1]);
}

koRect koPath::getHandleBounds(const QList<koSegment *> &segments, const koStyle &style,
                               const koBoundOpt &boundOpt, const koMatrix *matrix)
{
    koPoint handlePad(0, 0);
    koPoint pointPad(0, 0);
    const double radius = style.strokeWidth / 2;
    if (boundOpt.strokePadding && radius > 0) {
        // Around a point the stroke reaches farthest at a miter tip or a
        // square cap's corner; around a handle only the pen's reach counts.
        double reach = radius;
        if (style.join == koJoinMiter && style.miterLimit > 1)
            reach = radius * style.miterLimit;
        if (style.cap == koCapSquare)
            reach = std::max(reach, radius * std::sqrt(2.0));
        handlePad = getStrokePadding(radius, matrix);
        pointPad = getStrokePadding(reach, matrix);
    }
    BoxBuilder box;
    QVector<double> coords;
    for (koSegment *s : segments) {
        if (!s)
            continue;
        s->transformCoordinates(matrix, coords, false);
        box.add(coords.at(0), coords.at(1), pointPad);
        box.add(coords.at(2), coords.at(3), handlePad);
        box.add(coords.at(4), coords.at(5), handlePad);
    }
    return box.rect();
}

koRect koPath::getStrokeBounds(const QList<koSegment *> &segments, bool closed,
                               const koStyle &style, const koMatrix *matrix)
{
    const QList<koSegment *> list = withoutNull(segments);
    const double zero[2] = {0, 0};
    const koRect fill = getBounds(list, closed, zero, matrix);
    const double radius = style.strokeWidth / 2;
    if (!(radius > 0) || list.isEmpty())
        return fill;

    // The pen swept along the curves: the box of the mapped pen around the
    // fill bounds. Joins and caps that stick out beyond it add their points.
    const koPoint pad = getStrokePadding(radius, matrix);
    double x0 = fill.x - pad.x;
    double y0 = fill.y - pad.y;
    double x1 = fill.x + fill.width + pad.x;
    double y1 = fill.y + fill.height + pad.y;

    QVector<koPoint> points;
    const int n = list.size();
    const Directions directions(list, closed);
    if (style.join == koJoinMiter) {
        const int from = closed ? 0 : 1;
        const int to = closed ? n : n - 1;
        for (int i = from; i < to; ++i) {
            koPoint t1, t2;
            if (directions.in(i, t1) && directions.out(i, t2))
                joinOutline(list.at(i)->point, t1, t2, koJoinMiter, radius,
                            style.miterLimit * radius, false, matrix, points);
        }
    }
    if (style.cap == koCapSquare && !closed) {
        capOutline(list.first()->point, capDirection(directions, 0, true), koCapSquare, radius,
                   false, matrix, points);
        capOutline(list.last()->point, capDirection(directions, n - 1, false), koCapSquare, radius,
                   false, matrix, points);
    }
    // Comparisons skip NaN points and keep a NaN axis NaN.
    for (const koPoint &p : qAsConst(points)) {
        if (p.x < x0)
            x0 = p.x;
        if (p.x > x1)
            x1 = p.x;
        if (p.y < y0)
            y0 = p.y;
        if (p.y > y1)
            y1 = p.y;
    }
    return koRect(x0, y0, x1 - x0, y1 - y0);
}

koPoint koPath::getStrokePadding(double radius, const koMatrix *matrix)
{
    // A circle of radius r mapped by (a c; b d) spans r * |(a, c)| along x
    // and r * |(b, d)| along y.
    const double r = std::abs(radius);
    if (!matrix)
        return koPoint(r, r);
    return koPoint(r * std::hypot(matrix->a, matrix->c), r * std::hypot(matrix->b, matrix->d));
}

void koPath::addBevelJoin(const koSegment *segment, int join, double radius, double miterLimit,
                          const koMatrix *matrix, QVector<koPoint> &points, bool isArea)
{
    if (!segment || !segment->path)
        return;
    const QList<koSegment *> &list = segment->path->segments;
    const int i = list.indexOf(const_cast<koSegment *>(segment));
    if (i < 0 || list.contains(nullptr))
        return;
    const Directions directions(list, segment->path->closed);
    koPoint t1, t2;
    if (directions.in(i, t1) && directions.out(i, t2))
        joinOutline(segment->point, t1, t2, join, radius, miterLimit, isArea, matrix, points);
}

void koPath::addSquareCap(const koSegment *segment, int cap, double radius, const koMatrix *matrix,
                          QVector<koPoint> &points, bool isArea)
{
    if (!segment)
        return;
    koPoint dir(1, 0);
    const koPath *path = segment->path;
    const int i = path ? path->segments.indexOf(const_cast<koSegment *>(segment)) : -1;
    if (i >= 0 && !path->segments.contains(nullptr))
        dir = capDirection(Directions(path->segments, path->closed), i, i == 0);
    capOutline(segment->point, dir, cap, radius, isArea, matrix, points);
}
