#include "path/kosegment.h"

#include "curve/kocurvelocation.h"
#include "geometry/komatrix.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/koneighbour_p.h"
#include "path/kopath.h"

#include <QtCore/QtNumeric>

#include <cmath>

koSegment::koSegment(double x, double y) : point(x, y) {}

koSegment::koSegment(const koPoint &p, const koPoint &hIn, const koPoint &hOut)
    : point(p), handleIn(hIn), handleOut(hOut)
{}

koSegment::~koSegment()
{
    path = nullptr;
    if (m_intersection) {
        koCurveLocation *location = m_intersection;
        m_intersection = nullptr;
        location->release();
    }
}

void koSegment::release()
{
    if (refCount > 1) {
        --refCount;
        return;
    }
    refCount = -2; // poison: a dangling pointer to a freed segment shows -2
    delete this;
}

koSegment *koSegment::clone() const
{
    return new koSegment(point, handleIn, handleOut);
}

void koSegment::setPoint(const koPoint &p)
{
    point = p;
    _changed();
}

void koSegment::setHandleIn(const koPoint &h)
{
    handleIn = h;
    _changed();
}

void koSegment::setHandleOut(const koPoint &h)
{
    handleOut = h;
    _changed();
}

void koSegment::setIntersection(koCurveLocation *location)
{
    // Take the new reference first: the old and new location may be the same
    // object held only by this segment.
    if (location)
        location->addRef();
    koCurveLocation *old = m_intersection;
    m_intersection = location;
    if (old)
        old->release();
}

bool koSegment::hasHandles() const
{
    return !handleIn.isZero() || !handleOut.isZero();
}

void koSegment::clearHandles()
{
    handleIn = koPoint();
    handleOut = koPoint();
    _changed();
}

bool koSegment::isFirst() const
{
    return path && index == 0;
}

bool koSegment::isLast() const
{
    return path && index == path->segments.size() - 1;
}

void koSegment::reverse()
{
    std::swap(handleIn, handleOut);
    _changed();
}

koSegment *koSegment::reversed() const
{
    return new koSegment(point, handleOut, handleIn);
}

bool koSegment::remove()
{
    // The path may free this segment while removing it: nothing of this
    // object is touched afterwards.
    return path ? path->removeSegment(index) : false;
}

koSegment *koSegment::getNext() const
{
    return path ? koCyclicNeighbour(path->segments, index, 1, path->closed) : nullptr;
}

koSegment *koSegment::getPrevious() const
{
    return path ? koCyclicNeighbour(path->segments, index, -1, path->closed) : nullptr;
}

koCurve *koSegment::getCurve() const
{
    if (!path)
        return nullptr;
    int i = index;
    // The last segment of an open path starts no curve; it answers the curve
    // that ends at it.
    if (!path->closed && i > 0 && i == path->segments.size() - 1)
        --i;
    if (i < 0)
        return nullptr;
    const QList<koCurve *> &curves = path->getCurves();
    return i < curves.size() ? curves.at(i) : nullptr;
}

koCurve *koSegment::getCurvePrev() const
{
    if (!path)
        return nullptr;
    int i = index;
    if (!path->closed && i > 0 && i < path->segments.size())
        --i;
    // Only the first segment of a closed path wraps round to the closing
    // curve; other indices keep the curve that starts at them.
    if (i == 0 && path->closed)
        i = path->segments.size() - 1;
    if (i < 0)
        return nullptr;
    const QList<koCurve *> &curves = path->getCurves();
    return i < curves.size() ? curves.at(i) : nullptr;
}

koCurveLocation *koSegment::getLocation() const
{
    koCurve *curve = getCurve();
    if (!curve)
        return nullptr;
    const double t = curve->segment1() == this ? 0.0 : 1.0;
    return new koCurveLocation(curve, t, koPoint(qQNaN(), qQNaN()), false, 0);
}

void koSegment::interpolate(const koSegment &from, const koSegment &to, double t)
{
    const double u = 1 - t;
    point = koPoint(from.point.x * u + to.point.x * t, from.point.y * u + to.point.y * t);
    handleIn = koPoint(from.handleIn.x * u + to.handleIn.x * t,
                       from.handleIn.y * u + to.handleIn.y * t);
    handleOut = koPoint(from.handleOut.x * u + to.handleOut.x * t,
                        from.handleOut.y * u + to.handleOut.y * t);
    _changed();
}

static bool closeEnough(const koPoint &a, const koPoint &b)
{
    // Written as <= so that a NaN coordinate never compares equal.
    return std::fabs(a.x - b.x) <= koTolerance::Epsilon
            && std::fabs(a.y - b.y) <= koTolerance::Epsilon;
}

bool koSegment::segsEquals(const QList<koSegment *> &listA, const QList<koSegment *> &listB)
{
    if (listA.size() != listB.size())
        return false;
    for (int i = 0; i < listA.size(); ++i) {
        const koSegment *a = listA.at(i);
        const koSegment *b = listB.at(i);
        if (a == b)
            continue;
        if (!a || !b)
            return false;
        if (!closeEnough(a->point, b->point) || !closeEnough(a->handleIn, b->handleIn)
            || !closeEnough(a->handleOut, b->handleOut))
            return false;
    }
    return true;
}

void koSegment::transformCoordinates(const koMatrix *matrix, QVector<double> &coords, bool apply)
{
    coords.resize(6);
    coords[0] = point.x;
    coords[1] = point.y;
    coords[2] = point.x + handleIn.x;
    coords[3] = point.y + handleIn.y;
    coords[4] = point.x + handleOut.x;
    coords[5] = point.y + handleOut.y;
    if (!matrix)
        return;
    matrix->transformCoords(coords, 3);
    if (!apply)
        return;
    // Handles are transformed as absolute positions and made relative again,
    // so that translations leave them unchanged.
    point = koPoint(coords[0], coords[1]);
    handleIn = koPoint(coords[2] - point.x, coords[3] - point.y);
    handleOut = koPoint(coords[4] - point.x, coords[5] - point.y);
    _changed();
}

void koSegment::transform(const koMatrix *matrix)
{
    QVector<double> scratch(6);
    transformCoordinates(matrix, scratch, true);
}

QString koSegment::toString() const
{
    QString text = QStringLiteral("point: ") + point.toString();
    if (!handleIn.isZero())
        text += QStringLiteral(", handleIn: ") + handleIn.toString();
    if (!handleOut.isZero())
        text += QStringLiteral(", handleOut: ") + handleOut.toString();
    text += QStringLiteral(", winding: %1").arg(winding);
    text += QStringLiteral(", contour: %1").arg(int(contour));
    text += QStringLiteral(", visited: %1 %2 %3").arg(visited ? 1 : 0).arg(index).arg(refCount);
    return text;
}

void koSegment::_changed()
{
    if (!path)
        return;
    path->_changed();
    // Only the (at most two) curves that touch this segment need to forget
    // their length and bounds: the one starting here and the one ending here.
    const QList<koCurve *> &curves = path->curves;
    const int n = curves.size();
    if (n == 0 || index < 0)
        return;
    const int before = index > 0 ? index - 1 : (path->closed ? n - 1 : -1);
    for (int i : {index, before}) {
        if (i < 0 || i >= n)
            continue;
        koCurve *curve = curves.at(i);
        if (curve && (curve->m_segment1 == this || curve->m_segment2 == this))
            curve->_changed();
    }
}
