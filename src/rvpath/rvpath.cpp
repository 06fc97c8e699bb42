#include "rvpath/rvpath.h"

#include "geometry/kobezier.h"
#include "geometry/kotolerance.h"
#include "rvpath/rvvector_p.h"

#include <QtGui/QPainterPath>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

// From 2^52 on every double is a whole number; adding 0.5 there would round
// odd values up to the next even one.
constexpr double WholeFrom = 4503599627370496.0;

using rvVector::element;
using rvVector::pointOf;

// The unit nearness of building.
inline bool isNear(const RVPathElement &e, double x, double y)
{
    return rvVector::isNear(pointOf(e), QPointF(x, y));
}

// Ellipses need a rect of some width and height; below the numeric zero the
// Bezier conversion has no arc and answers the origin, which is not drawn.
inline bool hasArea(const QRectF &r)
{
    return r.width() >= koTolerance::Epsilon && r.height() >= koTolerance::Epsilon;
}

} // namespace

// --- element operations -------------------------------------------------------

void RVPath::moveTo(double x, double y)
{
    m_elements.append(element(x, y, RVPathElement::MoveTo));
}

void RVPath::lineTo(double x, double y)
{
    if (!m_elements.isEmpty() && isNear(m_elements.constLast(), x, y))
        return;
    m_elements.append(element(x, y, RVPathElement::LineTo));
}

void RVPath::cubicTo(const QPointF &c1, const QPointF &c2, const QPointF &end)
{
    m_elements.append(element(c1.x(), c1.y(), RVPathElement::CurveTo));
    m_elements.append(element(c2.x(), c2.y(), RVPathElement::CurveData));
    m_elements.append(element(end.x(), end.y(), RVPathElement::CurveData));
}

void RVPath::_startPiece(double x, double y)
{
    if (!m_elements.isEmpty() && m_elements.constLast().type != RVPathElement::Close) {
        // Join the open subpath; lineTo() skips a start near its end.
        lineTo(x, y);
        return;
    }
    moveTo(x, y);
}

void RVPath::_closeCurrent()
{
    if (m_elements.isEmpty() || m_elements.constLast().type == RVPathElement::Close)
        return;
    double sx = 0.0;
    double sy = 0.0;
    for (int i = m_elements.size() - 1; i >= 0; --i) {
        const RVPathElement &e = m_elements.at(i);
        if (e.type == RVPathElement::MoveTo) {
            sx = e.x;
            sy = e.y;
            break;
        }
    }
    RVPathElement &last = m_elements.last();
    if (isNear(last, sx, sy)) {
        // Snap, so that the closed outline meets its start exactly.
        last.x = sx;
        last.y = sy;
    } else {
        m_elements.append(element(sx, sy, RVPathElement::LineTo));
    }
    m_elements.append(element(sx, sy, RVPathElement::Close));
}

// --- painter-path conversion ----------------------------------------------------

void RVPath::fromPainterPath(const QPainterPath &path)
{
    const int n = path.elementCount();
    m_elements.reserve(m_elements.size() + n);
    for (int i = 0; i < n; ++i) {
        const QPainterPath::Element &e = path.elementAt(i);
        m_elements.append(element(e.x, e.y, int(e.type)));
    }
}

void RVPath::fromPainterPath(const QPainterPath &path, bool closeSubpaths)
{
    if (!closeSubpaths) {
        fromPainterPath(path);
        return;
    }
    // A painter path closes a subpath by a line back to its start; such a
    // subpath gets the close marker that the compound-path conversion reads.
    const int n = path.elementCount();
    m_elements.reserve(m_elements.size() + n + n / 4);
    int start = -1; // painter element index of the current subpath's move-to
    const auto closeIfBack = [&](int end) { // end: one past the subpath
        if (start < 0 || end - start < 2)
            return;
        const QPainterPath::Element &s = path.elementAt(start);
        const QPainterPath::Element &e = path.elementAt(end - 1);
        if (e.x == s.x && e.y == s.y)
            m_elements.append(element(s.x, s.y, RVPathElement::Close));
    };
    for (int i = 0; i < n; ++i) {
        const QPainterPath::Element &e = path.elementAt(i);
        if (e.type == QPainterPath::MoveToElement) {
            closeIfBack(i);
            start = i;
        }
        m_elements.append(element(e.x, e.y, int(e.type)));
    }
    closeIfBack(n);
}

void RVPath::toPainterPath(QPainterPath &out) const
{
    out = QPainterPath();
    const int n = m_elements.size();
    for (int i = 0; i < n; ++i) {
        const RVPathElement &e = m_elements.at(i);
        switch (e.type) {
        case RVPathElement::MoveTo:
            out.moveTo(e.x, e.y);
            break;
        case RVPathElement::LineTo:
            out.lineTo(e.x, e.y);
            break;
        case RVPathElement::CurveTo:
            if (i < n - 2) {
                const RVPathElement &c2 = m_elements.at(i + 1);
                const RVPathElement &end = m_elements.at(i + 2);
                out.cubicTo(e.x, e.y, c2.x, c2.y, end.x, end.y);
                i += 2;
            }
            break;
        case RVPathElement::Close:
            out.closeSubpath();
            break;
        default:
            break; // stray curve-data or an unknown kind
        }
    }
}

void RVPath::toPainterPathWithRoundValue(QPainterPath &out) const
{
    const int n = m_elements.size();
    QVector<QPoint> rounded;
    rounded.reserve(n);
    for (const RVPathElement &e : m_elements) {
        if (e.type != RVPathElement::Close)
            rounded.append(QPoint(roundToInt(e.x), roundToInt(e.y)));
    }
    out = QPainterPath();
    // k pairs elements with rounded points; a kind it does not advance on
    // shifts the pairing of the points after it. Points it has run past (a
    // close marker inside a cubic triple) are not drawn.
    const int m = rounded.size();
    int k = 0;
    for (int i = 0; i < n; ++i) {
        switch (m_elements.at(i).type) {
        case RVPathElement::MoveTo:
            if (k < m)
                out.moveTo(rounded.at(k));
            ++k;
            break;
        case RVPathElement::LineTo:
            if (k < m)
                out.lineTo(rounded.at(k));
            ++k;
            break;
        case RVPathElement::CurveTo:
            if (i < n - 2) {
                if (k + 2 < m)
                    out.cubicTo(rounded.at(k), rounded.at(k + 1), rounded.at(k + 2));
                i += 2;
            }
            k += 3;
            break;
        case RVPathElement::Close:
            out.closeSubpath();
            break;
        default:
            break;
        }
    }
}

double RVPath::roundValue(double v)
{
    if (!std::isfinite(v) || std::fabs(v) >= WholeFrom)
        return v;
    if (v >= 0)
        return std::trunc(v + 0.5);
    // Shifting by the whole part first keeps the half exact for large
    // negative values.
    const double k = std::trunc(v - 1.0);
    return std::trunc(v - k + 0.5) + k;
}

int RVPath::roundToInt(double v)
{
    if (std::isnan(v))
        return 0;
    const double r = roundValue(v);
    if (r >= double(INT_MAX))
        return INT_MAX;
    if (r <= double(INT_MIN))
        return INT_MIN;
    return int(r);
}

void RVPath::roundData()
{
    for (RVPathElement &e : m_elements) {
        if (e.type == RVPathElement::Close)
            continue;
        e.x = roundValue(e.x);
        e.y = roundValue(e.y);
    }
}

// --- building -----------------------------------------------------------------

void RVPath::addLine(double x1, double y1, double x2, double y2)
{
    _startPiece(x1, y1);
    lineTo(x2, y2);
}

void RVPath::addLine(const QPointF &p1, const QPointF &p2)
{
    addLine(p1.x(), p1.y(), p2.x(), p2.y());
}

void RVPath::addLines(const QPointF *pts, int n)
{
    if (!pts || n < 1)
        return;
    _startPiece(pts[0].x(), pts[0].y());
    for (int i = 1; i < n; ++i)
        lineTo(pts[i].x(), pts[i].y());
}

void RVPath::addLines(const QPoint *pts, int n)
{
    if (!pts || n < 1)
        return;
    _startPiece(pts[0].x(), pts[0].y());
    for (int i = 1; i < n; ++i)
        lineTo(pts[i].x(), pts[i].y());
}

void RVPath::addBezier(const QPointF &p0, const QPointF &c1, const QPointF &c2, const QPointF &p3)
{
    _startPiece(p0.x(), p0.y());
    cubicTo(c1, c2, p3);
}

void RVPath::addBeziers(const QPointF *pts, int n)
{
    if (!pts || n < 1)
        return;
    _startPiece(pts[0].x(), pts[0].y());
    for (int k = 1; k + 2 < n; k += 3)
        cubicTo(pts[k], pts[k + 1], pts[k + 2]);
}

void RVPath::addRect(const QRectF &r)
{
    const double left = r.left();
    const double top = r.top();
    const double right = left + r.width();
    const double bottom = top + r.height();
    moveTo(left, top);
    lineTo(right, top);
    lineTo(right, bottom);
    lineTo(left, bottom);
    if (m_elements.size() > 1)
        _closeCurrent();
}

void RVPath::addPolygon(const QPolygonF &poly)
{
    if (poly.isEmpty())
        return;
    int from = 0;
    if (m_elements.isEmpty() || m_elements.constLast().type != RVPathElement::MoveTo) {
        moveTo(poly.at(0).x(), poly.at(0).y());
        from = 1;
    }
    for (int i = from; i < poly.size(); ++i)
        m_elements.append(element(poly.at(i).x(), poly.at(i).y(), RVPathElement::LineTo));
}

void RVPath::ellipse(const QRectF &r)
{
    if (!hasArea(r))
        return;
    QVector<QPointF> pts;
    const QPointF start = koBezier::arcToBezier(r, 0.0, -360.0, pts);
    if (!m_elements.isEmpty() && m_elements.constLast().type == RVPathElement::MoveTo)
        m_elements.removeLast();
    moveTo(start.x(), start.y());
    for (int k = 0; k + 2 < pts.size(); k += 3)
        cubicTo(pts.at(k), pts.at(k + 1), pts.at(k + 2));
    m_elements.append(element(start.x(), start.y(), RVPathElement::Close));
}

void RVPath::arcTo(const QRectF &r, double startAngle, double sweepLength)
{
    if (!hasArea(r))
        return;
    QVector<QPointF> pts;
    // The arguments count angles y-up, the geometry core y-down.
    const QPointF start = koBezier::arcToBezier(r, -startAngle, -sweepLength, pts);
    if (!m_elements.isEmpty() && m_elements.constLast().type != RVPathElement::Close)
        lineTo(start.x(), start.y());
    else
        moveTo(start.x(), start.y());
    for (int k = 0; k + 2 < pts.size(); k += 3)
        cubicTo(pts.at(k), pts.at(k + 1), pts.at(k + 2));
}

void RVPath::arcTo(double x, double y, double w, double h, double startAngle, double sweepLength)
{
    arcTo(QRectF(x, y, w, h), startAngle, sweepLength);
}

void RVPath::closeSubpath()
{
    if (m_elements.size() < 2)
        return;
    _closeCurrent();
}

void RVPath::cleanUp()
{
    const int n = m_elements.size();
    if (n == 0)
        return;
    bool changes = m_elements.constFirst().type != RVPathElement::MoveTo;
    for (int i = 0; i + 1 < n && !changes; ++i) {
        changes = m_elements.at(i).type == RVPathElement::MoveTo
                && m_elements.at(i + 1).type == RVPathElement::MoveTo;
    }
    if (!changes)
        return; // a tidy path is not detached
    // Mark every move-to followed by another (the mark is set after its
    // right neighbour was read), then drop the marked ones.
    constexpr int Dropped = -1;
    RVPathElement *e = m_elements.data(); // detaches once
    e[0].type = RVPathElement::MoveTo;
    for (int i = 0; i + 1 < n; ++i) {
        if (e[i].type == RVPathElement::MoveTo && e[i + 1].type == RVPathElement::MoveTo)
            e[i].type = Dropped;
    }
    const auto kept = std::remove_if(m_elements.begin(), m_elements.end(),
                                     [](const RVPathElement &x) { return x.type == Dropped; });
    const int out = int(kept - m_elements.begin());
    m_elements.resize(out);
}

void RVPath::setBackX(double x)
{
    if (!m_elements.isEmpty())
        m_elements.last().x = x;
}

void RVPath::setBackY(double y)
{
    if (!m_elements.isEmpty())
        m_elements.last().y = y;
}

// --- queries --------------------------------------------------------------------

int RVPath::getOpenedStart(QPointF &p0, QPointF &p1, int &index) const
{
    const int n = m_elements.size();
    if (index >= n)
        return -1;
    int m = -1;
    for (int i = std::max(index, 0); i < n; ++i) {
        const RVPathElement &e = m_elements.at(i);
        if (e.type == RVPathElement::MoveTo) {
            if (m != -1) {
                const RVPathElement &next = m_elements.at(m + 1);
                p1 = pointOf(next);
                index = i;
                return m;
            }
            m = i;
            p0 = pointOf(e);
        } else if (e.type == RVPathElement::Close) {
            m = -1;
        }
    }
    if (m == -1 || m >= n - 1)
        return -1;
    const RVPathElement &next = m_elements.at(m + 1);
    p1 = pointOf(next);
    return m;
}

int RVPath::getOpenedEnd(QPointF &pBefore, QPointF &pEnd, int &index, int &startIndex) const
{
    const int n = m_elements.size();
    if (index >= n)
        return -1;
    startIndex = -1;
    for (int i = std::max(index, 0); i < n; ++i) {
        const RVPathElement &e = m_elements.at(i);
        if (e.type == RVPathElement::MoveTo) {
            if (startIndex != -1) {
                if (i > 1) {
                    pBefore = pointOf(m_elements.at(i - 2));
                    pEnd = pointOf(m_elements.at(i - 1));
                }
                index = i;
                return i - 1;
            }
            startIndex = i;
        } else if (e.type == RVPathElement::Close) {
            startIndex = -1;
        }
    }
    if (startIndex == -1 || n < 2)
        return -1;
    pBefore = pointOf(m_elements.at(n - 2));
    pEnd = pointOf(m_elements.at(n - 1));
    index = n;
    return n - 1;
}

void RVPath::reverse()
{
    const int n = m_elements.size();
    if (n < 2)
        return;
    // Scratch for one piece: the new kinds and where the units start.
    QVector<int> kinds;
    QVector<int> units;
    int s = 0;
    while (s < n) {
        // A piece runs from s up to the next move-to, or through a close
        // marker; the close marker stays last.
        int e = s + 1;
        while (e < n && m_elements.at(e).type != RVPathElement::MoveTo
               && m_elements.at(e - 1).type != RVPathElement::Close)
            ++e;
        const bool closed = m_elements.at(e - 1).type == RVPathElement::Close;
        const int last = closed ? e - 2 : e - 1; // last drawn point
        if (last > s) {
            // Units along the piece: cubic triples (curve-to with two elements
            // behind it) and single elements. Their reversed order gives the
            // new kinds; each triple is relabelled from its curve-to.
            kinds.resize(0);
            units.resize(0);
            for (int j = s + 1; j <= last;) {
                units.append(j);
                j += (m_elements.at(j).type == RVPathElement::CurveTo && j + 2 <= last) ? 3 : 1;
            }
            for (int u = units.size() - 1; u >= 0; --u) {
                const int j = units.at(u);
                const int end = u + 1 < units.size() ? units.at(u + 1) : last + 1;
                if (end - j == 3) {
                    kinds << RVPathElement::CurveTo << RVPathElement::CurveData
                          << RVPathElement::CurveData;
                } else {
                    kinds << m_elements.at(j).type;
                }
            }
            std::reverse(m_elements.begin() + s, m_elements.begin() + last + 1);
            // The first kind (a move-to, or whatever a piece after a close
            // marker starts with) stays first.
            m_elements[s].type = m_elements.at(last).type;
            for (int j = 0; j < kinds.size(); ++j)
                m_elements[s + 1 + j].type = kinds.at(j);
            if (closed) {
                RVPathElement &mark = m_elements[e - 1];
                mark.x = m_elements.at(s).x;
                mark.y = m_elements.at(s).y;
            }
        }
        s = e;
    }
}
