#ifndef RVPATHTESTHELPERS_H
#define RVPATHTESTHELPERS_H

// Helpers shared by the RVPath tests: element lists written and printed as
// text, seeded random inputs, and sampling of the drawn geometry.

#include "geometry/geometrytest.h"
#include "rvpath/rvpath.h"
#include "testglyphs.h"

#include <QtCore/QLineF>
#include <QtGui/QPainterPath>
#include <QtGui/QTransform>

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

inline RVPath circle(double cx, double cy, double r)
{
    RVPath path;
    path.ellipse(QRectF(cx - r, cy - r, 2 * r, 2 * r));
    return path;
}

inline int countType(const RVPath &path, int type)
{
    int n = 0;
    for (const RVPathElement &e : path.elements())
        n += e.type == type;
    return n;
}

// Number of subpaths (move-tos).
inline int subpathCount(const RVPath &path)
{
    return countType(path, RVPathElement::MoveTo);
}

inline QPointF pointAt(const RVPath &path, int i)
{
    return QPointF(path.elementAt(i).x, path.elementAt(i).y);
}

// The turning angle at every junction of two drawn segments, closing
// junctions included, from the segments' own end directions (a handle on
// its end point gives way to the next point).
inline QVector<double> junctionTurns(const RVPath &path)
{
    QVector<double> turns;
    QVector<QPointF> in, out; // start and end directions of a subpath's segments
    QPointF cur;
    for (int i = 0; i <= path.elementCount(); ++i) {
        const int type = i < path.elementCount() ? path.elementAt(i).type : int(E::MoveTo);
        const QPointF p = i < path.elementCount() ? pointAt(path, i) : QPointF();
        if (type == E::MoveTo || type == E::Close) {
            for (int k = 0; k + 1 < in.size() + (type == E::Close); ++k) {
                const QPointF a = out[k], b = in[(k + 1) % in.size()];
                turns << std::abs(
                        std::atan2(a.x() * b.y() - a.y() * b.x(), QPointF::dotProduct(a, b)));
            }
            in.clear(), out.clear();
        } else if (type == E::CurveTo && i + 2 < path.elementCount()) {
            const QPointF c2 = pointAt(path, i + 1), end = pointAt(path, i + 2);
            in << (p != cur ? p - cur : c2 != cur ? c2 - cur : end - cur);
            out << (end != c2 ? end - c2 : end != p ? end - p : end - cur);
            i += 2;
            cur = end;
            continue;
        } else if (type == E::LineTo && p != cur) {
            in << p - cur;
            out << p - cur;
        }
        cur = p;
    }
    return turns;
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

// One to four open and closed subpaths of lines and gentle cubics (handles
// within a quarter of the chord from it) through random points at least 20
// apart.
inline RVPath randomPath(std::mt19937 &random)
{
    std::uniform_real_distribution<double> u(-0.25, 0.25);
    RVPath path;
    for (int k = std::uniform_int_distribution<int>(1, 4)(random); k > 0; --k) {
        const QVector<QPointF> p = randomPolyline(random, 2 + random() % 8);
        path.moveTo(p[0].x(), p[0].y());
        for (int i = 1; i < p.size(); ++i) {
            const QPointF a = p[i - 1], b = p[i], n(a.y() - b.y(), b.x() - a.x());
            if (random() % 3 == 0)
                path.cubicTo(a + (b - a) / 3 + u(random) * n, b - (b - a) / 3 + u(random) * n, b);
            else
                path.lineTo(b.x(), b.y());
        }
        if (random() % 3 == 0)
            path.closeSubpath();
    }
    return path;
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

inline QPainterPath toQt(const RVPath &path, Qt::FillRule rule = Qt::OddEvenFill)
{
    QPainterPath qt;
    path.toPainterPath(qt);
    if (rule != qt.fillRule())
        qt.setFillRule(rule); // (on an empty path this adds a move-to)
    return qt;
}

inline double distanceTo(const RVPath &path, const QPointF &p)
{
    return distanceTo(toQt(path), p);
}

// The distance with Qt's flattening made 1024 times finer.
inline double fineDistance(const RVPath &path, const QPointF &p)
{
    return distanceTo(QTransform::fromScale(1024, 1024).map(toQt(path)), p * 1024) / 1024;
}

// Glyph outlines with every subpath closed by a close marker; empty (with
// the reason in \a why) where the test font is missing.
inline RVPath glyphPath(const QString &text, double x, double y, int size, QString *why)
{
    RVPath path;
    path.fromPainterPath(testGlyphs::outline(text, x, y, size, why), true);
    return path;
}

} // namespace rvTest

#endif // RVPATHTESTHELPERS_H
