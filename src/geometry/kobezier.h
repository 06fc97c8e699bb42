#ifndef KOBEZIER_H
#define KOBEZIER_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"
#include "geometry/korect.h"

#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtCore/QVector>

/*!
    \class koBezier
    One cubic Bezier as four absolute control points, with de Casteljau
    splitting and the conversion of elliptical arcs to cubic pieces (built the
    way QPainterPath::arcTo builds its curves).
*/
class RVGRAPHICS_EXPORT koBezier
{
public:
    double x0 = 0, y0 = 0; // start
    double x1 = 0, y1 = 0; // control 1
    double x2 = 0, y2 = 0; // control 2
    double x3 = 0, y3 = 0; // end

    koBezier() = default;
    static koBezier fromPoints(const koPoint &p0, const koPoint &p1, const koPoint &p2,
                               const koPoint &p3);

    koPoint pt0() const { return koPoint(x0, y0); }
    koPoint pt1() const { return koPoint(x1, y1); }
    koPoint pt2() const { return koPoint(x2, y2); }
    koPoint pt3() const { return koPoint(x3, y3); }

    //! Splits at \a t in place: \a left receives the piece before t and this
    //! Bezier becomes the piece after t.
    void parameterSplitLeft(double t, koBezier &left);
    //! The piece between t1 and t2 (an exact copy for 0..1).
    koBezier bezierOnInterval(double t1, double t2) const;

    /*!
        Converts the arc of the ellipse inscribed in \a rect, from \a start over
        \a sweep degrees (counter-clockwise with y up, 0 at the right-hand
        point, as in QPainterPath::arcTo), into cubic pieces. Returns the start
        point and appends to \a points one triple (control 1, control 2, end)
        per quadrant touched; a full turn gives exactly four triples. A rect
        thinner than 1e-12 gives the point (0, 0) and no curves. A NaN
        parameter logs "Arc to bezier, adding arc where a parameter is NaN,
        results are undefined" and continues.
    */
    static koPoint arcToBezier(const koRect &rect, double start, double sweep,
                               QVector<koPoint> &points);
    static QPointF arcToBezier(const QRectF &rect, double start, double sweep,
                               QVector<QPointF> &points);
    //! The curve time on a quadrant's cubic for an angle of 0..90 degrees
    //! within that quadrant.
    static double arcAngle(double angle);
};

Q_DECLARE_TYPEINFO(koBezier, Q_PRIMITIVE_TYPE);

#endif // KOBEZIER_H
