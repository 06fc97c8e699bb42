#ifndef RVVECTOR_P_H
#define RVVECTOR_P_H

// Internal, not installed: the small 2-D helpers that RVPath and its line
// effects share.

#include "geometry/kopoint.h"
#include "geometry/kotolerance.h"
#include "rvpath/rvpathelement.h"

#include <QtCore/QPointF>
#include <QtCore/QtNumeric>

#include <cmath>

namespace rvVector {

// Components of cuts and handles below this are zero, so that a cut or a
// handle along a (nearly) axis-parallel line stays exactly on the axis.
constexpr double SnapComponent = 0.01;

inline bool isFinite(const QPointF &p)
{
    return qIsFinite(p.x()) && qIsFinite(p.y());
}

inline bool isFinite(const koPoint &p)
{
    return qIsFinite(p.x) && qIsFinite(p.y);
}

inline double length(const QPointF &v)
{
    return std::hypot(v.x(), v.y());
}

// The unit nearness of RVPath points: strict and per axis, so NaN is never
// near.
inline bool isNear(const QPointF &a, const QPointF &b)
{
    return std::abs(a.x() - b.x()) < koTolerance::RVNearness
            && std::abs(a.y() - b.y()) < koTolerance::RVNearness;
}

inline QPointF pointOf(const RVPathElement &e)
{
    return QPointF(e.x, e.y);
}

inline RVPathElement element(double x, double y, int type)
{
    RVPathElement e;
    e.x = x;
    e.y = y;
    e.type = type;
    return e;
}

// The unit direction from \a from to \a to as the cosine and sine of its
// angle (an axis direction comes out with a tiny other component, which
// snapped() removes).
inline QPointF direction(const QPointF &from, const QPointF &to)
{
    const double angle = std::atan2(to.y() - from.y(), to.x() - from.x());
    return QPointF(std::cos(angle), std::sin(angle));
}

// \a v with components below SnapComponent set to 0.
inline QPointF snapped(QPointF v)
{
    if (std::abs(v.x()) < SnapComponent)
        v.setX(0);
    if (std::abs(v.y()) < SnapComponent)
        v.setY(0);
    return v;
}

inline koPoint snapped(const koPoint &v)
{
    const QPointF s = snapped(QPointF(v.x, v.y));
    return koPoint(s.x(), s.y());
}

} // namespace rvVector

#endif // RVVECTOR_P_H
