#include "oraclegeometry.h"

#include <QtCore/QtMath>

#include <algorithm>
#include <cmath>

namespace rvOracle {
namespace geom {

QPointF Piece::pointAt(double t) const
{
    if (!curve)
        return p[0] + (p[3] - p[0]) * t;
    const double u = 1 - t;
    return p[0] * (u * u * u) + p[1] * (3 * u * u * t) + p[2] * (3 * u * t * t)
            + p[3] * (t * t * t);
}

QPointF Piece::derivativeAt(double t) const
{
    if (!curve)
        return p[3] - p[0];
    const double u = 1 - t;
    return (p[1] - p[0]) * (3 * u * u) + (p[2] - p[1]) * (6 * u * t) + (p[3] - p[2]) * (3 * t * t);
}

QVector<Subpath> subpathsOf(const QPainterPath &path)
{
    QVector<Subpath> result;
    QPointF start, current;
    bool open = false;
    auto finish = [&]() {
        if (open && !result.last().pieces.isEmpty() && current != start) {
            Piece closing;
            closing.p[0] = current;
            closing.p[3] = start;
            result.last().pieces.append(closing);
        }
        if (open && result.last().pieces.isEmpty())
            result.removeLast();
        open = false;
    };
    const int count = path.elementCount();
    for (int i = 0; i < count; ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (e.type == QPainterPath::MoveToElement || !open) {
            finish();
            result.append(Subpath());
            open = true;
            start = current = QPointF(e.x, e.y);
            if (e.type == QPainterPath::MoveToElement)
                continue;
        }
        Piece piece;
        piece.p[0] = current;
        if (e.type == QPainterPath::CurveToElement && i + 2 < count) {
            piece.curve = true;
            piece.p[1] = QPointF(e.x, e.y);
            piece.p[2] = path.elementAt(i + 1);
            piece.p[3] = path.elementAt(i + 2);
            i += 2;
        } else {
            piece.p[3] = QPointF(e.x, e.y);
        }
        current = piece.p[3];
        result.last().pieces.append(piece);
    }
    finish();
    return result;
}

double signedArea(const Subpath &subpath)
{
    // Nodes and weights of 3-point Gauss-Legendre on [0, 1].
    static const double r = std::sqrt(0.6);
    static const double nodes[3] = {(1 - r) / 2, 0.5, (1 + r) / 2};
    static const double weights[3] = {5.0 / 18, 8.0 / 18, 5.0 / 18};
    double sum = 0;
    for (const Piece &piece : subpath.pieces) {
        if (!piece.curve) {
            sum += piece.p[0].x() * piece.p[3].y() - piece.p[3].x() * piece.p[0].y();
            continue;
        }
        for (int k = 0; k < 3; ++k) {
            const QPointF q = piece.pointAt(nodes[k]);
            const QPointF d = piece.derivativeAt(nodes[k]);
            sum += weights[k] * (q.x() * d.y() - q.y() * d.x());
        }
    }
    return sum / 2;
}

// The curve lies in the hull of its control points, so it stays within the
// larger control-point distance from the chord; the chord then stays within
// the same distance of the curve.
static double chordDeviation(const Piece &c)
{
    const QLineF chord(c.p[0], c.p[3]);
    return std::max(distanceToSegment(c.p[1], chord), distanceToSegment(c.p[2], chord));
}

static void splitCubic(const Piece &c, Piece *left, Piece *right)
{
    const QPointF ab = (c.p[0] + c.p[1]) / 2, bc = (c.p[1] + c.p[2]) / 2,
                  cd = (c.p[2] + c.p[3]) / 2;
    const QPointF abc = (ab + bc) / 2, bcd = (bc + cd) / 2, mid = (abc + bcd) / 2;
    left->curve = right->curve = true;
    left->p[0] = c.p[0];
    left->p[1] = ab;
    left->p[2] = abc;
    left->p[3] = mid;
    right->p[0] = mid;
    right->p[1] = bcd;
    right->p[2] = cd;
    right->p[3] = c.p[3];
}

QPolygonF flatten(const Subpath &subpath, double tolerance)
{
    QPolygonF polygon;
    if (subpath.pieces.isEmpty())
        return polygon;
    polygon.append(subpath.pieces.first().p[0]);
    for (const Piece &piece : subpath.pieces) {
        if (!piece.curve) {
            polygon.append(piece.p[3]);
            continue;
        }
        // Depth-first halving, at most 2^16 pieces per curve.
        struct Item
        {
            Piece c;
            int depth;
        };
        QVector<Item> stack;
        stack.append({piece, 0});
        while (!stack.isEmpty()) {
            const Item item = stack.takeLast();
            const double deviation = chordDeviation(item.c);
            if (item.depth >= 16 || !(deviation > tolerance)) {
                polygon.append(item.c.p[3]);
                continue;
            }
            Piece left, right;
            splitCubic(item.c, &left, &right);
            stack.append({right, item.depth + 1});
            stack.append({left, item.depth + 1});
        }
    }
    if (polygon.size() > 1 && polygon.last() == polygon.first())
        polygon.removeLast();
    return polygon;
}

QVector<QPolygonF> flatten(const QVector<Subpath> &subpaths, double tolerance)
{
    QVector<QPolygonF> result;
    for (const Subpath &s : subpaths)
        result.append(flatten(s, tolerance));
    return result;
}

double perimeter(const QVector<QPolygonF> &polygons)
{
    double sum = 0;
    for (const QPolygonF &p : polygons)
        for (int i = 0; i < p.size(); ++i)
            sum += QLineF(p[i], p[(i + 1) % p.size()]).length();
    return sum;
}

bool hasCurves(const QVector<Subpath> &subpaths)
{
    for (const Subpath &s : subpaths)
        for (const Piece &piece : s.pieces)
            if (piece.curve && chordDeviation(piece) > 0)
                return true;
    return false;
}

static double cross(const QPointF &o, const QPointF &a, const QPointF &b)
{
    return (a.x() - o.x()) * (b.y() - o.y()) - (a.y() - o.y()) * (b.x() - o.x());
}

bool crossProperly(const QLineF &a, const QLineF &b)
{
    const double d1 = cross(a.p1(), a.p2(), b.p1()), d2 = cross(a.p1(), a.p2(), b.p2());
    const double d3 = cross(b.p1(), b.p2(), a.p1()), d4 = cross(b.p1(), b.p2(), a.p2());
    return ((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0));
}

static QVector<QLineF> edgesOf(const QVector<QPolygonF> &polygons)
{
    QVector<QLineF> edges;
    for (const QPolygonF &p : polygons)
        for (int i = 0; i < p.size(); ++i)
            if (p[i] != p[(i + 1) % p.size()])
                edges.append(QLineF(p[i], p[(i + 1) % p.size()]));
    return edges;
}

// Pairs of edges whose boxes overlap, found by a sweep over x.
template<typename F>
static bool forOverlappingEdges(const QVector<QLineF> &edges, F f)
{
    QVector<int> order(edges.size());
    for (int i = 0; i < order.size(); ++i)
        order[i] = i;
    auto minX = [&](int i) { return std::min(edges[i].x1(), edges[i].x2()); };
    auto maxX = [&](int i) { return std::max(edges[i].x1(), edges[i].x2()); };
    std::sort(order.begin(), order.end(), [&](int i, int j) { return minX(i) < minX(j); });
    for (int a = 0; a < order.size(); ++a) {
        const QLineF &e = edges[order[a]];
        const double right = maxX(order[a]);
        const double top = std::min(e.y1(), e.y2()), bottom = std::max(e.y1(), e.y2());
        for (int b = a + 1; b < order.size() && minX(order[b]) <= right; ++b) {
            const QLineF &g = edges[order[b]];
            if (std::max(g.y1(), g.y2()) < top || std::min(g.y1(), g.y2()) > bottom)
                continue;
            if (f(e, g))
                return true;
        }
    }
    return false;
}

bool polygonsCross(const QVector<QPolygonF> &polygons)
{
    return forOverlappingEdges(edgesOf(polygons), [](const QLineF &a, const QLineF &b) {
        return crossProperly(a, b);
    });
}

int winding(const QPolygonF &polygon, const QPointF &point)
{
    int w = 0;
    const int n = polygon.size();
    for (int i = 0; i < n; ++i) {
        const QPointF a = polygon[i], b = polygon[(i + 1) % n];
        if (a.y() <= point.y()) {
            if (b.y() > point.y() && cross(a, b, point) > 0)
                ++w;
        } else if (b.y() <= point.y() && cross(a, b, point) < 0) {
            --w;
        }
    }
    return w;
}

bool insideByRule(int w, Qt::FillRule rule)
{
    return rule == Qt::WindingFill ? w != 0 : (w & 1) != 0;
}

double fillArea(const QVector<QPolygonF> &polygons, Qt::FillRule rule)
{
    const QVector<QLineF> edges = edgesOf(polygons);
    QVector<double> ys;
    for (const QLineF &e : edges)
        ys << e.y1() << e.y2();
    forOverlappingEdges(edges, [&](const QLineF &a, const QLineF &b) {
        QPointF at;
        if (crossProperly(a, b) && a.intersects(b, &at) != QLineF::NoIntersection)
            ys.append(at.y());
        return false;
    });
    std::sort(ys.begin(), ys.end());
    ys.erase(std::unique(ys.begin(), ys.end()), ys.end());

    double area = 0;
    QVector<QPair<double, int>> hits;
    for (int i = 0; i + 1 < ys.size(); ++i) {
        const double y0 = ys[i], y1 = ys[i + 1], y = (y0 + y1) / 2;
        if (!(y1 > y0))
            continue;
        hits.clear();
        for (const QLineF &e : edges) {
            if ((e.y1() < y) == (e.y2() < y))
                continue;
            const double x = e.x1() + (e.x2() - e.x1()) * (y - e.y1()) / (e.y2() - e.y1());
            hits.append(qMakePair(x, e.y2() > e.y1() ? 1 : -1));
        }
        std::sort(hits.begin(), hits.end());
        int w = 0;
        double length = 0;
        for (int k = 0; k + 1 < hits.size(); ++k) {
            w += hits[k].second;
            if (insideByRule(w, rule))
                length += hits[k + 1].first - hits[k].first;
        }
        area += length * (y1 - y0);
    }
    return area;
}

double exactArea(const QVector<Subpath> &subpaths, Qt::FillRule rule, double tolerance)
{
    const QVector<QPolygonF> polygons = flatten(subpaths, tolerance);
    if (polygonsCross(polygons))
        return qQNaN();
    double total = 0;
    for (int i = 0; i < subpaths.size(); ++i) {
        const double a = signedArea(subpaths[i]);
        const QPolygonF &poly = polygons[i];
        if (a == 0 || poly.size() < 2)
            continue;
        // The middle of the longest edge stands for the contour: it is the
        // point least likely to touch another contour.
        int longest = 0;
        for (int k = 1; k < poly.size(); ++k)
            if (QLineF(poly[k], poly[(k + 1) % poly.size()]).length()
                > QLineF(poly[longest], poly[(longest + 1) % poly.size()]).length())
                longest = k;
        const QPointF probe = (poly[longest] + poly[(longest + 1) % poly.size()]) / 2;
        // Winding just outside this contour from the others around it; the
        // contour itself adds +-1 on its inner side.
        int around = 0;
        for (int j = 0; j < polygons.size(); ++j)
            if (j != i)
                around += winding(polygons[j], probe);
        const int own = a > 0 ? 1 : -1;
        // Polygon winding counts +1 for a clockwise (y-down) contour when the
        // edges go down on the right: the same sign convention as the area.
        const int inner = around + own;
        total += std::abs(a) * (int(insideByRule(inner, rule)) - int(insideByRule(around, rule)));
    }
    // Contours that meet at a vertex escape the crossing test; the area of
    // the flattening, which is right in any case, unmasks them.
    const double rough = fillArea(polygons, rule);
    if (!(std::abs(total - rough) <= 2 * tolerance * perimeter(polygons) + 1e-9 * std::abs(rough)))
        return qQNaN();
    return total;
}

EdgeIndex::EdgeIndex(const QVector<QPolygonF> &polygons, const QRectF &box, double reach)
    : m_edges(edgesOf(polygons)), m_box(box)
{
    const double side = std::max(box.width(), box.height());
    m_side = 64;
    m_cell = side > 0 && std::isfinite(side) ? side / m_side : 1;
    m_cell = std::max(m_cell, reach);
    m_side = std::max(1, std::min(64, int(std::ceil(side / m_cell)) + 1));
    m_cells.resize(m_side * m_side);
    for (int i = 0; i < m_edges.size(); ++i) {
        const QLineF &e = m_edges[i];
        const int x0 = cellOf(std::min(e.x1(), e.x2()) - reach, box.left());
        const int x1 = cellOf(std::max(e.x1(), e.x2()) + reach, box.left());
        const int y0 = cellOf(std::min(e.y1(), e.y2()) - reach, box.top());
        const int y1 = cellOf(std::max(e.y1(), e.y2()) + reach, box.top());
        for (int y = y0; y <= y1; ++y)
            for (int x = x0; x <= x1; ++x)
                m_cells[y * m_side + x].append(i);
    }
}

int EdgeIndex::cellOf(double v, double origin) const
{
    const double c = std::floor((v - origin) / m_cell);
    if (!(c > 0))
        return 0;
    return c >= m_side - 1 ? m_side - 1 : int(c);
}

bool EdgeIndex::near(const QPointF &p, double radius) const
{
    const QVector<int> &cell =
            m_cells[cellOf(p.y(), m_box.top()) * m_side + cellOf(p.x(), m_box.left())];
    for (int i : cell)
        if (distanceToSegment(p, m_edges[i]) < radius)
            return true;
    return false;
}

double distanceToSegment(const QPointF &p, const QLineF &line)
{
    const QPointF d = line.p2() - line.p1();
    const double len2 = d.x() * d.x() + d.y() * d.y();
    double t = len2 > 0 ? ((p.x() - line.x1()) * d.x() + (p.y() - line.y1()) * d.y()) / len2 : 0;
    t = std::max(0.0, std::min(1.0, t));
    const QPointF q = line.p1() + d * t;
    return std::hypot(p.x() - q.x(), p.y() - q.y());
}

} // namespace geom
} // namespace rvOracle
