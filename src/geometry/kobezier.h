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
        per quadrant touched (at most five); a sweep of exactly 360 or -360
        from 0 gives exactly four triples, the ellipse's own quadrant cubics.
        Sweeps beyond a full turn are cut to one. The start point and the last
        end point are the points QPainterPath::arcMoveTo gives for the two
        angles: on the quadrant cubics, so within about 5e-4 of the radii of
        the exact ellipse points (koNumeric::ellipsePoint).

        A rect thinner than 1e-12 gives the point (0, 0) and no curves. A NaN
        parameter logs "Arc to bezier, adding arc where a parameter is NaN,
        results are undefined" and continues; a NaN or infinite start angle or
        a NaN sweep then gives a NaN point and no curves. Start angles beyond
        1e9 degrees are first reduced modulo 360.
    */
    static koPoint arcToBezier(const koRect &rect, double start, double sweep,
                               QVector<koPoint> &points);
    static QPointF arcToBezier(const QRectF &rect, double start, double sweep,
                               QVector<QPointF> &points);
    //! The curve time on a quadrant's cubic for an angle of 0..90 degrees
    //! within that quadrant, computed as Qt's qt_t_for_arc_angle does: a
    //! fixed number of Newton steps matching the cubic's x to the cosine and
    //! its y to the sine, averaged. 0 and 90 give exactly 0 and 1.
    static double arcAngle(double angle);
};

Q_DECLARE_TYPEINFO(koBezier, Q_PRIMITIVE_TYPE);

#endif // KOBEZIER_H
