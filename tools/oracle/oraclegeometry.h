#ifndef ORACLEGEOMETRY_H
#define ORACLEGEOMETRY_H

// Geometry of the judge, computed on QPainterPath data only, never with the
// library under test: subpaths, exact areas, flattening, crossings of
// polylines, polygon areas under a fill rule and a proximity index.

#include <QtCore/QLineF>
#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtCore/QVector>
#include <QtGui/QPainterPath>
#include <QtGui/QPolygonF>

namespace rvOracle {
namespace geom {

//! A line (curve false: p[0] to p[3]) or a cubic (p[0..3]).
struct Piece
{
    bool curve = false;
    QPointF p[4];
    QPointF pointAt(double t) const;
    QPointF derivativeAt(double t) const;
};

//! One subpath, closed implicitly: a closing line is added when the last
//! point differs from the first.
struct Subpath
{
    QVector<Piece> pieces;
};

QVector<Subpath> subpathsOf(const QPainterPath &path);
//! Exact signed area of the closed subpath (Green's theorem; a cubic's
//! integrand is a polynomial of degree 5, which 3-point Gauss-Legendre
//! integrates exactly). Positive means clockwise in y-down coordinates.
double signedArea(const Subpath &subpath);
//! The subpath as a closed polygon (first point not repeated) whose edges
//! stay within \a tolerance of the curves.
QPolygonF flatten(const Subpath &subpath, double tolerance);
QVector<QPolygonF> flatten(const QVector<Subpath> &subpaths, double tolerance);
double perimeter(const QVector<QPolygonF> &polygons);
bool hasCurves(const QVector<Subpath> &subpaths);

//! True when two edges cross at a point inside both (touching ends and
//! collinear overlaps do not count).
bool crossProperly(const QLineF &a, const QLineF &b);
//! True when some edges of the polygons (of one polygon or of two) cross.
bool polygonsCross(const QVector<QPolygonF> &polygons);
//! Winding number of \a point against a closed polygon.
int winding(const QPolygonF &polygon, const QPointF &point);
bool insideByRule(int winding, Qt::FillRule rule);

/*!
    Area of the set the polygons fill under \a rule, integrated slab by slab
    between the y values of vertices and edge crossings: within a slab the
    inside length is linear in y, so the midpoint rule is exact.
*/
double fillArea(const QVector<QPolygonF> &polygons, Qt::FillRule rule);

/*!
    Exact area of the filled set of subpaths whose contours neither cross nor
    touch along edges: every contour adds its exact area times the change of
    the fill across it, the fill being read from the windings of the
    contours around it (their flattened polygons, \a tolerance). NaN when
    the flattened contours cross, or when the result disagrees with the
    area of the flattening by more than the flattening can explain.
*/
double exactArea(const QVector<Subpath> &subpaths, Qt::FillRule rule, double tolerance);

//! Edges of polygons bucketed on a grid, to ask whether a point lies near
//! any edge.
class EdgeIndex
{
public:
    EdgeIndex(const QVector<QPolygonF> &polygons, const QRectF &box, double reach);
    //! True when an edge lies within \a radius (at most the reach) of \a p.
    bool near(const QPointF &p, double radius) const;
    const QVector<QLineF> &edges() const { return m_edges; }

private:
    int cellOf(double v, double origin) const;
    QVector<QLineF> m_edges;
    QVector<QVector<int>> m_cells;
    QRectF m_box;
    double m_cell = 1;
    int m_side = 1;
};

double distanceToSegment(const QPointF &p, const QLineF &line);

} // namespace geom
} // namespace rvOracle

#endif // ORACLEGEOMETRY_H
