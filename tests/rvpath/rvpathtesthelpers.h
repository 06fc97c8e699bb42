#ifndef RVPATHTESTHELPERS_H
#define RVPATHTESTHELPERS_H

// Helpers shared by the RVPath tests: element lists written and printed as
// text, seeded random inputs, and sampling of the drawn geometry.

#include "geometry/geometrytest.h"
#include "rvpath/rvpath.h"

#include <QtCore/QLineF>
#include <QtGui/QPainterPath>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <string>

namespace rvTest {

using E = RVPathElement;

// An element list from {x, y, type} triples (heads 0).
inline RVPath make(std::initializer_list<RVPathElement> elements)
{
    RVPath path;
    for (const RVPathElement &e : elements)
        path.appendElement(e);
    return path;
}
inline RVPathElement el(double x, double y, int type)
{
    RVPathElement e;
    e.x = x;
    e.y = y;
    e.type = type;
    return e;
}

// The elements as pasteable C++ (hex floats), for failure messages.
inline std::string describe(const RVPath &path)
{
    std::string text = "{";
    for (const RVPathElement &e : path.elements()) {
        text += "\n    el(" + hexf(e.x) + ", " + hexf(e.y) + ", " + std::to_string(e.type) + ")";
        if (e.headX != 0 || e.headY != 0)
            text += " /* head " + hexf(e.headX) + ", " + hexf(e.headY) + " */";
        text += ",";
    }
    return text + "\n}";
}

// Number of subpaths (move-tos).
inline int subpathCount(const RVPath &path)
{
    int n = 0;
    for (const RVPathElement &e : path.elements())
        n += e.type == RVPathElement::MoveTo;
    return n;
}

inline std::mt19937 generator(unsigned seed)
{
    return std::mt19937(seed);
}

// A random open polyline of \a n points in [0, size)^2 whose consecutive
// points are at least \a minStep apart (so no nearness merge happens).
inline QVector<QPointF> randomPolyline(std::mt19937 &random, int n, double size = 400,
                                       double minStep = 20)
{
    std::uniform_real_distribution<double> u(0, size);
    QVector<QPointF> pts;
    int guard = 0;
    while (pts.size() < n && guard++ < 100 * n) {
        const QPointF p(u(random), u(random));
        if (pts.isEmpty() || QLineF(pts.last(), p).length() >= minStep)
            pts.append(p);
    }
    return pts;
}

// Distance from \a p to the drawn geometry of \a path (curves flattened by
// Qt's own flattening, which is fine to well below a unit at these sizes).
inline double distanceTo(const QPainterPath &path, const QPointF &p)
{
    double best = INFINITY;
    for (const QPolygonF &poly : path.toSubpathPolygons()) {
        for (int i = 0; i + 1 < poly.size(); ++i) {
            const QPointF a = poly[i], b = poly[i + 1];
            const QPointF d = b - a;
            const double len2 = d.x() * d.x() + d.y() * d.y();
            double t = len2 > 0 ? ((p - a).x() * d.x() + (p - a).y() * d.y()) / len2 : 0;
            t = std::max(0.0, std::min(1.0, t));
            const QPointF q = a + t * d - p;
            best = std::min(best, std::hypot(q.x(), q.y()));
        }
        if (poly.size() == 1)
            best = std::min(best, QLineF(poly[0], p).length());
    }
    return best;
}

inline double distanceTo(const RVPath &path, const QPointF &p)
{
    QPainterPath qt;
    path.toPainterPath(qt);
    return distanceTo(qt, p);
}

} // namespace rvTest

#endif // RVPATHTESTHELPERS_H
