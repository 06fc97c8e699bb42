#ifndef RVCURVE_H
#define RVCURVE_H

#include "rvgraphics_global.h"

#include <QtCore/QPointF>

/*!
    \class RVCurve
    A stand-alone stepper over one cubic Bezier (p0, c1, c2, p3) by forward
    differences: the curve is walked in n equal steps of the parameter, n
    proportional to the length of the control polygon (density 1.5 steps per
    unit, at least 2). Besides the walk it finds the step nearest to a point
    or at a distance from an end, and splits the cubic by de Casteljau.

    The walk state (pos, d1, d2, cursor) persists between queries: getstep(),
    frontPtAtDist() and backPtAtDist() reset the cursor but not pos/d1/d2, so
    only the first walk after init() passes through the exact stepped points
    and later walks continue from where the previous one stopped. This is
    kept behaviour; call init() again to start afresh. vertexn() walks
    backwards and does not undo vertex() exactly.

    Fields are public: it is a plain value object.
*/
class RVGRAPHICS_EXPORT RVCurve
{
public:
    int steps = 0;          //!< number of steps n of the walk
    int cursor = 0;         //!< counts down n .. -1 in vertex(), up 0 .. n+1 in vertexn()
    double density = 1.5;   //!< steps per unit of control-polygon length
    QPointF p0;             //!< start point
    QPointF p3;             //!< end point (stored before the control points)
    QPointF c1;             //!< first control point
    QPointF c2;             //!< second control point
    QPointF pos;            //!< current point of the walk
    QPointF d1, d2, d3;     //!< first, second and third forward differences
    QPointF pos0, d10, d20; //!< pos, d1, d2 as init() left them

    RVCurve(const QPointF &p0, const QPointF &c1, const QPointF &c2, const QPointF &p3);

    //! Stores the points, n = trunc(control-polygon length * density) (at
    //! least 2, a NaN length also gives 2; at most 1000000, so that huge or
    //! infinite polygons still walk in bounded time), cursor = n, and the
    //! forward differences for the step h = 1/n.
    void init(const QPointF &p0, const QPointF &c1, const QPointF &c2, const QPointF &p3);
    void init(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
              double y3);

    //! Forward walk: p0, then n - 1 stepped points, then exactly p3; false
    //! once the walk is over (cursor below 0).
    bool vertex(double *x, double *y);
    //! Backward walk: p0 at cursor 0, stepped points, p3 at cursor n; false
    //! past n.
    bool vertexn(QPointF &p);
    //! The cursor value (after the vertex() call that produced it) of the
    //! walk point nearest to (x, y) by Manhattan distance, or -1 when none is
    //! closer than 4.0.
    int getstep(double x, double y);
    //! De Casteljau split at \a t into left and right (four points each, in
    //! curve order); false for t outside [0, 1] or NaN.
    bool splitcurve(QPointF *left, QPointF *right, double t);
    //! Splits at t = getstep(x, y) / n. Kept: the cursor counts down along
    //! the curve, so t is measured from the end of the walk. False when no
    //! step is near.
    bool splitcurve(QPointF *left, QPointF *right, double x, double y);
    //! The cursor value of the walk point whose squared distance from p0
    //! best matches d * d, among points whose Manhattan distance from p0 lies
    //! strictly between d and 2d; -1 when none does.
    int frontPtAtDist(double d);
    //! As frontPtAtDist(), measured from p3 (and p0 itself is a candidate).
    int backPtAtDist(double d);
};

Q_DECLARE_TYPEINFO(RVCurve, Q_MOVABLE_TYPE);

#endif // RVCURVE_H
