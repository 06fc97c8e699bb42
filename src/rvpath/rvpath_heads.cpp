// Line heads: open subpaths are cut back at their ends to make room for
// arrow heads, and the uncut tips are recorded in headX/headY.

#include "path/kocurve.h"
#include "rvpath/rvpath.h"

#include <QtCore/QVector>

#include <cmath>

namespace {

using Element = RVPathElement;

// Components of a line cut below this are dropped, so that a nearly axis-
// parallel line keeps its start or end exactly on the axis.
constexpr double CutSnap = 0.01;

QPointF pointOf(const Element &e)
{
    return QPointF(e.x, e.y);
}

void setPoint(Element &e, double x, double y)
{
    e.x = x;
    e.y = y;
}

void setHead(Element &e, const QPointF &tip)
{
    e.headX = tip.x();
    e.headY = tip.y();
}

// The first move-to after \a moveTo, or the element count.
int subpathEnd(const QVector<Element> &elements, int moveTo)
{
    for (int i = moveTo + 1; i < elements.size(); ++i) {
        if (elements.at(i).type == Element::MoveTo)
            return i;
    }
    return elements.size();
}

// The vector of length \a length from \a from towards \a to, each component
// snapped to 0 below CutSnap.
QPointF cutVector(const QPointF &from, const QPointF &to, double length)
{
    const double angle = std::atan2(to.y() - from.y(), to.x() - from.x());
    double dx = std::cos(angle) * length;
    double dy = std::sin(angle) * length;
    if (std::abs(dx) < CutSnap)
        dx = 0;
    if (std::abs(dy) < CutSnap)
        dy = 0;
    return QPointF(dx, dy);
}

// The curve values of the cubic whose triple starts at element i (its start is
// element i - 1), or an empty vector when the triple is incomplete.
QVector<double> cubicAt(const QVector<Element> &elements, int i)
{
    if (i < 1 || i + 2 >= elements.size() || elements.at(i).type != Element::CurveTo
        || elements.at(i + 1).type != Element::CurveData
        || elements.at(i + 2).type != Element::CurveData)
        return QVector<double>();
    QVector<double> values;
    values.reserve(8);
    for (int k = i - 1; k <= i + 2; ++k)
        values << elements.at(k).x << elements.at(k).y;
    return values;
}

// Whether the subpath of the move-to \a m goes on after element \a i.
bool continuesAfter(const QVector<Element> &elements, int i)
{
    return i + 1 < elements.size() && elements.at(i + 1).type != Element::MoveTo;
}

/*
    Cuts the open subpath whose move-to is element \a m back by \a length at
    its start. A first segment not longer than \a length is dropped: its end
    becomes the move-to (keeping the uncut tip), or, when it was the only
    segment, the subpath goes. Returns true when the subpath was removed.
*/
bool cutStart(QVector<Element> &elements, int m, double length)
{
    if (m + 1 >= elements.size())
        return false;
    const QPointF tip = pointOf(elements.at(m));
    const int kind = elements.at(m + 1).type;
    int last; // the last element of the first segment
    if (kind == Element::LineTo) {
        const QPointF p1 = pointOf(elements.at(m + 1));
        const double segment = std::hypot(p1.x() - tip.x(), p1.y() - tip.y());
        if (!qIsFinite(segment))
            return false;
        if (length < segment) {
            const QPointF d = cutVector(tip, p1, length);
            Element &first = elements[m];
            setPoint(first, tip.x() + d.x(), tip.y() + d.y());
            setHead(first, tip);
            return false;
        }
        last = m + 1;
    } else if (kind == Element::CurveTo) {
        const QVector<double> values = cubicAt(elements, m + 1);
        if (values.isEmpty())
            return false;
        const double segment = koCurve::getLength(values);
        if (!qIsFinite(segment))
            return false;
        if (length < segment) {
            const double t = koCurve::getTimeAt(values, length, 0);
            if (!(t >= 0 && t <= 1))
                return false;
            // The part after t; its end point is the old end, kept as it is.
            const QVector<double> right = koCurve::subdivide(values, t).at(1);
            Element &first = elements[m];
            setPoint(first, right.at(0), right.at(1));
            setHead(first, tip);
            setPoint(elements[m + 1], right.at(2), right.at(3));
            setPoint(elements[m + 2], right.at(4), right.at(5));
            return false;
        }
        last = m + 3;
    } else {
        return false; // a lone move-to or stray data: nothing to cut
    }
    if (!continuesAfter(elements, last)) {
        elements.remove(m, last - m + 1);
        return true;
    }
    Element &start = elements[last];
    start.type = Element::MoveTo;
    setHead(start, tip);
    elements.remove(m, last - m);
    return false;
}

/*
    Cuts the open subpath of move-to \a s and last element \a last back by
    \a length at its end. A last segment not longer than \a length is
    dropped: the element before it becomes the last (keeping the uncut tip),
    or, when it was the only segment, the subpath goes. Returns true when
    the subpath was removed.
*/
bool cutEnd(QVector<Element> &elements, int s, int last, double length)
{
    if (last <= s || last >= elements.size())
        return false;
    const QPointF tip = pointOf(elements.at(last));
    int first; // the element before the last segment, holding its start
    if (elements.at(last).type == Element::LineTo) {
        const QPointF before = pointOf(elements.at(last - 1));
        const double segment = std::hypot(tip.x() - before.x(), tip.y() - before.y());
        if (!qIsFinite(segment))
            return false;
        if (length < segment) {
            const QPointF d = cutVector(tip, before, length);
            Element &end = elements[last];
            setPoint(end, tip.x() + d.x(), tip.y() + d.y());
            setHead(end, tip);
            return false;
        }
        first = last - 1;
    } else if (elements.at(last).type == Element::CurveData && last - 3 >= s) {
        const QVector<double> values = cubicAt(elements, last - 2);
        if (values.isEmpty())
            return false;
        const double segment = koCurve::getLength(values);
        if (!qIsFinite(segment))
            return false;
        if (length < segment) {
            // Walking back from the end by the length.
            const double t = koCurve::getTimeAt(values, -length, 1);
            if (!(t >= 0 && t <= 1))
                return false;
            const QVector<double> left = koCurve::subdivide(values, t).at(0);
            setPoint(elements[last - 2], left.at(2), left.at(3));
            setPoint(elements[last - 1], left.at(4), left.at(5));
            Element &end = elements[last];
            setPoint(end, left.at(6), left.at(7));
            setHead(end, tip);
            return false;
        }
        first = last - 3;
    } else {
        return false;
    }
    if (first == s) {
        elements.remove(s, last - s + 1);
        return true;
    }
    setHead(elements[first], tip);
    elements.remove(first + 1, last - first);
    return false;
}

} // namespace

void RVPath::setLineHead(double startLength, double endLength)
{
    // Each round handles one subpath and either removes it or moves past
    // it, so the element count bounds the rounds; the guard only makes that
    // explicit.
    if (startLength > 0) {
        int index = 0;
        for (int guard = m_elements.size() + 1; guard > 0; --guard) {
            QPointF p0, p1;
            int scan = index;
            const int m = getOpenedStart(p0, p1, scan);
            if (m < 0)
                break;
            const bool removed = cutStart(m_elements, m, startLength);
            index = removed ? m : subpathEnd(m_elements, m);
        }
    }
    if (endLength > 0) {
        int index = 0;
        for (int guard = m_elements.size() + 1; guard > 0; --guard) {
            QPointF before, end;
            int scan = index;
            int start = -1;
            const int last = getOpenedEnd(before, end, scan, start);
            if (last < 0 || start < 0)
                break;
            const bool removed = cutEnd(m_elements, start, last, endLength);
            index = removed ? start : subpathEnd(m_elements, start);
        }
    }
}
