#pragma once

#include "geometry/geometrytest.h"
#include "path/pathtesthelpers.h"
#include "path/xpath.h"

#include <QtGui/QPainterPath>

#include <string>

// The children's segments (point, handle in, handle out) as pasteable text.
inline std::string describe(const XPath *xp)
{
    std::string text;
    for (koPath *child : xp->getChildren()) {
        text += child->closed ? "\nclosed:" : "\nopen:";
        for (const koSegment *s : child->segments)
            for (const koPoint &p : {s->point, s->handleIn, s->handleOut})
                text += " " + hexf(p.x) + ", " + hexf(p.y) + ",";
    }
    return text;
}

// The same curves for Qt, which closes open subpaths for filling, as the
// library does.
inline QPainterPath toQt(koPath *path)
{
    QPainterPath qt(path->segments.first()->point.toPt());
    for (koCurve *curve : path->getCurves()) {
        const QVector<double> v = curve->getValues();
        qt.cubicTo(v[2], v[3], v[4], v[5], v[6], v[7]);
    }
    return qt;
}

inline QPainterPath toQt(const XPath &xp)
{
    QPainterPath qt;
    for (koPath *child : xp.getChildren())
        qt.addPath(toQt(child));
    return qt;
}
