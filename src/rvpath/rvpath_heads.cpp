// Line heads: open subpaths are cut back at their ends to make room for
// arrow heads, and the uncut tips are recorded in headX/headY.

#include "path/kocurve.h"
#include "rvpath/rvpath.h"
#include "rvpath/rvvector_p.h"

#include <QtCore/QVector>

#include <cmath>

namespace {

using Element = RVPathElement;
using rvVector::pointOf;

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

// What cutting one end segment did: the segment was shortened, it is not
// longer than the cut (the caller drops it), or it could not be measured
// (nothing changes).
enum class Cut { Shortened, Drop, Refused };

// Moves the end point \a tipAt of a line by \a cut towards its other end
// \a towards, recording the uncut tip; the components of the move are
// snapped, so that a nearly axis-parallel line keeps its end on the axis.
Cut cutLine(QVector<Element> &elements, int tipAt, const QPointF &towards, double cut)
{
    const QPointF tip = pointOf(elements.at(tipAt));
    const double segment = rvVector::length(towards - tip);
    if (!qIsFinite(segment))
        return Cut::Refused;
    if (!(cut < segment))
        return Cut::Drop;
    const QPointF d = rvVector::snapped(rvVector::direction(tip, towards) * cut);
    Element &e = elements[tipAt];
    setPoint(e, tip.x() + d.x(), tip.y() + d.y());
    setHead(e, tip);
    return Cut::Shortened;
}

// Cuts the cubic whose triple starts at element \a i by the arc length
// \a cut at its start (\a atStart) or its end. The part that stays is
// written back; its far end is the old point, kept as it is.
Cut cutCubic(QVector<Element> &elements, int i, double cut, bool atStart)
{
    const QVector<double> values = cubicAt(elements, i);
    if (values.isEmpty())
        return Cut::Refused;
    const double segment = koCurve::getLength(values);
    if (!qIsFinite(segment))
        return Cut::Refused;
    if (!(cut < segment))
        return Cut::Drop;
    // From the start forward, or back from the end.
    const double t =
            atStart ? koCurve::getTimeAt(values, cut, 0) : koCurve::getTimeAt(values, -cut, 1);
    if (!(t >= 0 && t <= 1))
        return Cut::Refused;
    const QVector<double> kept = koCurve::subdivide(values, t).at(atStart ? 1 : 0);
    const int tipAt = atStart ? i - 1 : i + 2;
    const QPointF tip = pointOf(elements.at(tipAt));
    // Elements i - 1 .. i + 2 hold the cubic's four points.
    for (int k = atStart ? 0 : 1; k < (atStart ? 3 : 4); ++k)
        setPoint(elements[i - 1 + k], kept.at(2 * k), kept.at(2 * k + 1));
    setHead(elements[tipAt], tip);
    return Cut::Shortened;
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
    Cut cut;
    int last; // the last element of the first segment
    if (kind == Element::LineTo) {
        cut = cutLine(elements, m, pointOf(elements.at(m + 1)), length);
        last = m + 1;
    } else if (kind == Element::CurveTo) {
        cut = cutCubic(elements, m + 1, length, true);
        last = m + 3;
    } else {
        return false; // a lone move-to or stray data: nothing to cut
    }
    if (cut != Cut::Drop)
        return false;
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
    Cut cut;
    int first; // the element before the last segment, holding its start
    if (elements.at(last).type == Element::LineTo) {
        cut = cutLine(elements, last, pointOf(elements.at(last - 1)), length);
        first = last - 1;
    } else if (elements.at(last).type == Element::CurveData && last - 3 >= s) {
        cut = cutCubic(elements, last - 2, length, false);
        first = last - 3;
    } else {
        return false;
    }
    if (cut != Cut::Drop)
        return false;
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
    // Each round handles one open subpath and either removes it or moves
    // past it, so the element count bounds the rounds; the guard only makes
    // that explicit.
    const auto cutAll = [this](bool atStart, double length) {
        int index = 0;
        for (int guard = m_elements.size() + 1; guard > 0; --guard) {
            QPointF a, b;
            int scan = index;
            int start = -1;
            const int last = atStart ? 0 : getOpenedEnd(a, b, scan, start);
            if (atStart)
                start = getOpenedStart(a, b, scan);
            if (last < 0 || start < 0)
                break;
            const bool removed = atStart ? cutStart(m_elements, start, length)
                                         : cutEnd(m_elements, start, last, length);
            index = removed ? start : subpathEnd(m_elements, start);
        }
    };
    if (startLength > 0)
        cutAll(true, startLength);
    if (endLength > 0)
        cutAll(false, endLength);
}
