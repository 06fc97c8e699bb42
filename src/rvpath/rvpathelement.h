#ifndef RVPATHELEMENT_H
#define RVPATHELEMENT_H

#include "rvgraphics_global.h"

/*!
    \struct RVPathElement
    One element of an RVPath: a point with a kind, laid out like an element of
    QPainterPath plus the tip of a line head.

    Kinds 0 to 3 have the values of QPainterPath::ElementType, so painter-path
    element types are copied without translation; Close has no painter-path
    counterpart. A cubic takes three consecutive elements: (c1, CurveTo),
    (c2, CurveData), (end, CurveData); its start is the point before it.

    headX/headY hold the uncut tip of a line head (RVPath::setLineHead()) on
    the first and last element of an open subpath; every other operation
    writes 0.
*/
struct RVPathElement
{
    enum Type {
        MoveTo = 0,    //!< starts a subpath at (x, y)
        LineTo = 1,    //!< straight line to (x, y)
        CurveTo = 2,   //!< first control point of a cubic
        CurveData = 3, //!< second control point, then the cubic's end point
        Close = 4      //!< closes the subpath; its point is the subpath's start
    };

    double x = 0.0;
    double y = 0.0;
    double headX = 0.0;
    double headY = 0.0;
    int type = MoveTo;
};

Q_DECLARE_TYPEINFO(RVPathElement, Q_PRIMITIVE_TYPE);

#endif // RVPATHELEMENT_H
