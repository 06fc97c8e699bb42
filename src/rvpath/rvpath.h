#ifndef RVPATH_H
#define RVPATH_H

#include "rvgraphics_global.h"
#include "rvpath/rvpathelement.h"

#include <QtCore/QPoint>
#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtCore/QVector>
#include <QtGui/QPolygonF>

class QPainterPath;
class XPath;

/*!
    \class RVPath
    The drawing-side path: a flat list of elements in the manner of
    QPainterPath (move-to, line-to, cubic triples) plus a close marker of its
    own. It converts to and from QPainterPath and to and from the compound
    path XPath, runs the boolean operations on itself, and makes line effects
    (parallel paths, tapered strokes, rounded corners, line heads, wave and
    hand-drawn lines).

    An RVPath is a value: its one member is an implicitly shared QVector, so
    copies are cheap and every write detaches first.

    Nearness: building operations merge a point into the previous one when
    both |dx| < 1.0 and |dy| < 1.0 (koTolerance::RVNearness). The unit is
    absolute path units and deliberately not scaled: paths are meant in
    device-like coordinates, and outlines drawn at a scale far below one unit
    lose detail.

    Every reader skips incomplete cubic triples at the end of the list and
    stray curve-data elements. Nothing here reports errors: degenerate input
    leaves the path unchanged or adds nothing, as each operation says.
*/
class RVGRAPHICS_EXPORT RVPath
{
public:
    // --- elements -----------------------------------------------------------

    const QVector<RVPathElement> &elements() const { return m_elements; }
    int elementCount() const { return m_elements.size(); }
    bool isEmpty() const { return m_elements.isEmpty(); }
    const RVPathElement &elementAt(int i) const { return m_elements.at(i); }
    //! Empties the element list, keeping its capacity.
    void clear() { m_elements.resize(0); }
    //! Appends \a e as it is (no nearness test, no checks).
    void appendElement(const RVPathElement &e) { m_elements.append(e); }
    //! Replaces the element list.
    void setElements(const QVector<RVPathElement> &elements) { m_elements = elements; }

    //! Appends a move-to, unconditionally.
    void moveTo(double x, double y);
    //! Appends a line-to unless (x, y) is near the last element's point
    //! (whatever its kind, a close marker included).
    void lineTo(double x, double y);
    //! Appends the cubic triple (c1, c2, end), unconditionally.
    void cubicTo(const QPointF &c1, const QPointF &c2, const QPointF &end);

    // --- painter-path conversion ---------------------------------------------

    //! Appends the painter path's elements, kinds copied; nothing is cleared.
    void fromPainterPath(const QPainterPath &path);
    //! Replaces \a out by the painter path of the elements (close markers
    //! become closeSubpath(); incomplete cubics and stray data are skipped).
    void toPainterPath(QPainterPath &out) const;
    /*!
        As toPainterPath() with every point rounded by roundValue(). Kept
        pairing rule: the rounded points are listed first (close markers
        have none), then consumed one per move-to and line-to and three per
        curve-to; a curve-to too near the end still consumes three, and any
        other kind (a stray curve-data) consumes none, so a stray element
        shifts the pairing of the points after it.
    */
    void toPainterPathWithRoundValue(QPainterPath &out) const;
    //! Rounds x and y of every element but close markers in place.
    void roundData();
    /*!
        Qt's qRound rule in double precision: trunc(v + 0.5) for v >= 0, and
        trunc(v - k + 0.5) + k with k = trunc(v - 1) for v < 0, so half-way
        values round upwards (2.5 -> 3, -2.5 -> -2) and huge negative values
        stay exact. NaN stays NaN; infinities stay.
    */
    static double roundValue(double v);
    //! roundValue() as an int, saturated to the int range (NaN gives 0), for
    //! the integer points of toPainterPathWithRoundValue().
    static int roundToInt(double v);

    // --- building -----------------------------------------------------------

    /*!
        Starts a piece at p1 and draws a line to p2. A piece joins an open
        subpath: when the last point is near p1 nothing is added for it, else
        a line-to p1; after a close marker (or on an empty path) it starts a
        new subpath with a move-to.
    */
    void addLine(double x1, double y1, double x2, double y2);
    void addLine(const QPointF &p1, const QPointF &p2);
    //! Starts a piece at pts[0], then line-tos to the others (nearness test).
    //! Nothing for n < 1 or a null array.
    void addLines(const QPointF *pts, int n);
    void addLines(const QPoint *pts, int n);
    //! Starts a piece at p0 and appends the cubic (c1, c2, p3).
    void addBezier(const QPointF &p0, const QPointF &c1, const QPointF &c2, const QPointF &p3);
    //! Starts a piece at pts[0], then one cubic per full group of three
    //! points; a trailing partial group is ignored. Nothing for n < 1.
    void addBeziers(const QPointF *pts, int n);
    //! A closed rectangle, always in a subpath of its own: move-to the
    //! top-left, line-tos round (nearness test) and, when the path then holds
    //! more than one element, a close marker.
    void addRect(const QRectF &r);
    //! The polygon's points as an open polyline, no nearness test. After a
    //! lone trailing move-to every point, the first included, is a line-to.
    void addPolygon(const QPolygonF &poly);
    //! The whole ellipse inscribed in \a r (four cubics, closed). A trailing
    //! lone move-to is replaced. Nothing unless width > 0 and height > 0.
    void ellipse(const QRectF &r);
    /*!
        Arc of the ellipse inscribed in \a r from \a startAngle over
        \a sweepLength degrees, in QPainterPath's y-up convention (positive
        sweeps run counter-clockwise on screen): both angles are negated for
        the y-down geometry core. Joined to an open subpath by a line-to
        (nearness test), else starts one. Nothing unless width > 0 and
        height > 0.
    */
    void arcTo(const QRectF &r, double startAngle, double sweepLength);
    void arcTo(double x, double y, double w, double h, double startAngle, double sweepLength);
    /*!
        Closes the current subpath: a last point near the subpath's start is
        snapped onto it exactly, else a line-to the start is added; then a
        close marker carrying the start. Nothing with fewer than two elements
        or when the path already ends with a close marker.
    */
    void closeSubpath();
    //! Makes the first element a move-to and removes every move-to directly
    //! followed by another (of a run only the last stays).
    void cleanUp();
    //! Set x (y) of the last element; nothing on an empty path.
    void setBackX(double x);
    void setBackY(double y);

    // --- queries --------------------------------------------------------------

    /*!
        The first open subpath at or after element \a index: returns the index
        of its move-to, with \a p0 its point and \a p1 the point of the element
        after it (the direction of the start); \a index is set past the
        subpath when another subpath follows. -1 when there is none (a lone
        trailing move-to does not count).
    */
    int getOpenedStart(QPointF &p0, QPointF &p1, int &index) const;
    /*!
        The first open subpath at or after element \a index: returns the index
        of its last element, with \a pEnd its point and \a pBefore the point
        before it (the direction of the end); \a startIndex is the subpath's
        move-to and \a index is set past the subpath. -1 when there is none.
    */
    int getOpenedEnd(QPointF &pBefore, QPointF &pEnd, int &index, int &startIndex) const;
    //! True when the closed subpaths do not all run the same way (open ones
    //! are ignored; false when none is closed).
    bool isEvenOdd() const;
    //! Orientation of the first subpath (clockwise on a y-down screen).
    bool isClockWise() const;
    //! Reverses every subpath in place; open and closed ones keep their kind.
    void reverse();
    //! Tangent angle in degrees at the start (or end) of the subpath that
    //! begins at element \a index; 0 when there is none. Tidies this path
    //! with cleanUp() first, as toXPath() does.
    double getTangent(int index, bool atStart);

    // --- compound paths and booleans ------------------------------------------

    /*!
        Replaces \a out's children by one koPath per subpath of the elements
        at and after \a firstElement; a close marker closes its path and merges
        a closing point within 1.0 of the start. Tidies this path with
        cleanUp() first. Points are passed on unrounded.
    */
    void toXPath(XPath &out, int firstElement = 0);
    /*!
        Appends the children firstChild <= i < endChild of \a in (endChild -1:
        all): straight curves become line-tos (nearness test), others cubics;
        closed children are closed with closeSubpath()'s rule. Children with
        fewer than two segments add nothing. Nothing is cleared first.
    */
    void fromXPath(XPath &in, int firstChild = 0, int endChild = -1);
    //! This becomes this op other. Curves are kept; both operands are tidied
    //! by cleanUp() and converted with toXPath(); the result comes back
    //! through fromXPath(). Unchanged when the operation gives no result.
    void unite(RVPath &other);
    void intersect(RVPath &other);
    void subtract(RVPath &other);
    /*!
        Kept behaviour: converts this path to a compound path and appends the
        rebuilt geometry behind the existing elements without clearing them,
        so the path holds its (tidied) elements followed by the same subpaths
        again. Callers that want only the rebuilt geometry clear first.
    */
    void evenOdd();
    //! The points where this path crosses \a other, in the order of the
    //! crossing search (touching points are not crossings).
    QVector<QPointF> crossPoints(RVPath &other);
    //! The first of crossPoints(), or (0, 0) when the paths do not cross.
    QPointF bestCrossPoint(RVPath &other);
    //! Cuts this path's first subpath at its first crossing with \a other and
    //! keeps only the part after it; \a at receives the crossing point.
    //! False, with nothing changed, when the paths do not cross.
    bool dividePath(RVPath &other, QPointF &at);

    // --- line effects ---------------------------------------------------------

    /*!
        Writes into \a out the path parallel to this one at the signed
        \a distance: positive distances lie on the side (v.y, -v.x) of the
        direction of travel v (the left on a y-down screen). Lines are offset
        exactly, curves flattened at arc-length spacing \a step. Corners whose
        miter would reach beyond |distance| * (1 + sqrt 2) from the source
        corner (turns sharper than about 49 degrees) are bevelled. Distance 0
        makes \a out a copy of this path.
    */
    void parallelPath(RVPath &out, double distance, double step) const;
    //! The outline of the first subpath stroked with a width changing
    //! linearly from \a startWidth to \a endWidth, round caps at ends with a
    //! positive width; closed, written into \a out. \a step is the sampling
    //! spacing along curves.
    void thickPath(RVPath &out, double startWidth, double endWidth, double step);
    //! Replaces every sharp corner by one cubic, cutting the two segments
    //! back by \a radius. Radius 0 changes nothing.
    void setCornerRound(double radius);
    //! Cuts every open subpath back by \a startLength at its start and
    //! \a endLength at its end, recording the uncut tips in headX/headY of
    //! the subpath's first and last element. Closed subpaths are not cut.
    void setLineHead(double startLength, double endLength);
    //! Replaces every subpath by its smoothed form (koPath::smooth() of the
    //! given type with factor 0.5).
    void smooth(int type);
    //! Replaces this path by a hand-drawn looking version of the first
    //! subpath of \a source: points every \a step along it, displaced
    //! sideways by one-dimensional Perlin noise times \a amplitude.
    void manualPath(RVPath &source, double amplitude, double step);
    //! Writes into \a out a wave of shape \a kind along every subpath, with
    //! the given \a wavelength and height \a amplitude * \a factor
    //! (amplitude -1: half the wavelength).
    void wavePath(RVPath &out, int kind, double wavelength, double amplitude, double factor);

private:
    // Starts a piece at p: joins an open subpath (line-to p unless near),
    // else a move-to.
    void _startPiece(double x, double y);
    // The close rule of closeSubpath() without its two-element guard.
    void _closeCurrent();

    QVector<RVPathElement> m_elements;
};

Q_DECLARE_TYPEINFO(RVPath, Q_MOVABLE_TYPE);

#endif // RVPATH_H
