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
    //! Qt closes a subpath by a line, not a marker, so its closed subpaths
    //! arrive open: toXPath() and the booleans read them as open paths until
    //! closeSubpath() marks them.
    void fromPainterPath(const QPainterPath &path);
    //! As fromPainterPath(); with \a closeSubpaths, every subpath of two or
    //! more elements that ends exactly on its start (as QPainterPath's closed
    //! subpaths, addEllipse(), addRect() and addText() outlines do) gets a
    //! close marker, so that the booleans and effects read it as closed.
    void fromPainterPath(const QPainterPath &path, bool closeSubpaths);
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
    //! lone move-to is replaced. Nothing unless width and height are at
    //! least 1e-12 (NaN: nothing).
    void ellipse(const QRectF &r);
    /*!
        Arc of the ellipse inscribed in \a r from \a startAngle over
        \a sweepLength degrees, counted as the y-down geometry core does: both
        angles are negated before koBezier::arcToBezier() (which counts like
        QPainterPath::arcTo), so positive sweeps run clockwise on screen, the
        mirror of QPainterPath::arcTo. Joined to an open subpath by a line-to
        (nearness test), else starts one. Nothing unless width and height
        are at least 1e-12 (NaN: nothing).
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
    //! begins at element \a index; 0 when there is none, NaN when it has no
    //! direction (a lone point). Tidies this path with cleanUp() first, as
    //! toXPath() does.
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
        exactly; curves are flattened while offset, at arc lengths 0, \a step,
        2 \a step, ... and at their end, each point moved along the normal of
        the curve's own tangent. The result holds move-tos, line-tos (merged
        within one unit) and close markers only. Distance 0 makes \a out a
        copy of this path; otherwise \a out is cleared first (it may be this
        path). A non-finite distance leaves \a out empty.

        Joins, corner by corner (also at the closing corner of a closed
        subpath, whose output closes; open subpaths stay open):
        - outer side (the offset pieces separate): the miter point where the
          two offset lines (tangent lines at curve ends) meet, unless it lies
          farther than |distance| * (1 + sqrt 2) from the source corner (turns
          sharper than about 49 degrees); such a corner is bevelled with two
          facets through the point at |distance| on the bisector of the two
          offset normals, so the cut corner keeps its distance at every vertex.
          A U-turn gets that point straight ahead of the tip.
        - inner side: both pieces are trimmed to their crossing. A piece that
          the other passes by entirely (a short edge inside a turn) is
          dropped, and the trimming goes on with its neighbour; chords of a
          curve offset that run backwards (the fold where |distance| exceeds
          the radius of curvature) are dropped the same way, so no loops or
          spikes are left at corners and folds.
        - tangent-continuous junctions, curve offsets included, run straight
          through.
        Overlaps between pieces that are not neighbours (a stem narrower than
        2 |distance|) are not removed. A closed subpath whose inside offset
        has collapsed (what is left turns the other way round, or encloses
        nothing) is left out. An open subpath that ends within one unit of its
        start is joined there like a corner and ends where its output starts.

        Totality: a step <= 0 or NaN flattens each curve into 32 chords; a
        curve gets at most 10000 chords whatever the step. Elements with
        non-finite coordinates, zero-length segments and lone move-tos add
        nothing; drawing elements before any move-to start at (0, 0), as they
        are drawn.
    */
    void parallelPath(RVPath &out, double distance, double step) const;
    /*!
        Writes into \a out the outline of the first subpath stroked like a
        tapered brush: the half-width (distance from the path to each side)
        changes linearly in arc length from \a startWidth to \a endWidth.
        \a out is cleared first; it is left as it is only when this path has
        no subpath.

        Sides: straight curves are offset exactly by their ends; curved ones
        are sampled every \a step of arc length (halved while a curve gets
        fewer than 4 steps and the step stays at or above 2; the last sample
        within 0.1 of a curve's end gives way to the end itself) and drawn as
        cubics through the samples along the sides' tangents. Each side ends
        exactly at the path's ends (points within 1.0 of the one before are
        merged, never the last), so the caps meet the sides without a gap.
        Where curves meet at an angle, the outer side gets a round join about
        the corner and the inner side is cut at the crossing of its two
        sides (within 16 side segments of the corner).

        Order: side (-t.y, t.x) of the direction t forward, the end cap,
        the other side backward, the start cap, closed. A cap (only at an
        end of positive width w) is two cubics from one side round a bulge
        1.2 w beyond the end to the other, handles 0.6 * 1.2 w along the line
        and 0.55 w across it; an end of width 0 ends in a point. A closed
        subpath, or one that ends exactly where it starts (as closed painter
        paths do), gives a ring instead: each side closed on its own, the
        second reversed, no caps (a taper shows as a step at the start).
        A subpath without length gives the caps alone round its point, both
        of the larger width (a dot of the brush).

        Where the path bends tighter than the half-width, or crosses itself,
        the outline overlaps itself: fill it with the non-zero (winding)
        rule. Negative widths swap the sides and get no cap.

        Totality: a step that is not a positive finite number, or a
        non-finite width, leaves \a out empty; the samples of the whole path
        are at most 1e5 (a finer step grows). Curves of no length or with
        non-finite values are left out.
    */
    void thickPath(RVPath &out, double startWidth, double endWidth, double step);
    /*!
        Replaces every corner (a junction turning by 0.001 radians or more,
        the closing corner of a closed subpath included) by one cubic: both
        segments are cut back by the cut length (lines along their direction,
        curves split at that arc length from the corner) and the cubic
        bridges the two cut points, its handles along the segments' tangents
        at the cut points, towards the corner, 0.448 times the cut length
        long, or 0.448 * 1.5 times where the bridge meets a segment that is a
        curve and not straight. Straight runs and untouched segments are
        copied element for element.

        The cut length is \a radius, clamped so that neighbouring corners
        never overlap: a segment rounded at both ends gives each end at most
        half of its length, one rounded at one end all of it, and both sides
        of a corner are cut by the same length (symmetric bridge). A closed
        subpath whose start is a corner then starts (and its close marker
        lies) at the cut point after that corner.

        Radius 0, negative or NaN changes nothing; an infinite radius rounds
        as far as the clamp allows. Zero-length segments, stray curve-data
        elements and an incomplete cubic at the end are dropped; segments with
        non-finite coordinates are copied and their junctions not rounded.
    */
    void setCornerRound(double radius);
    /*!
        Cuts every open subpath back by \a startLength at its start and
        \a endLength at its end (each only when positive), recording the
        uncut tips in headX/headY of the subpath's first and last element.
        Closed subpaths are not cut.

        Only the end segment is cut: a line is shortened along its direction
        (components of the cut below 0.01 are dropped, so axis-parallel lines
        stay exact), a cubic is split at the time where its arc length from
        the end equals the length (to the accuracy of the length quadrature)
        and keeps its cubic form. An end segment not longer than the length
        is dropped whole, and no further segment is cut: its other end
        becomes the subpath's first (or last) element and takes the tip; a
        subpath whose only segment is dropped is removed and records no tip.
        The start is cut before the end, so a single segment is dropped at
        its end when the start cut left it no longer than \a endLength.
        Tips are written on the subpath they belong to, never carried over
        to another. Other subpaths, head fields of uncut ends, lone move-tos
        and segments of non-finite length are left as they are.
    */
    void setLineHead(double startLength, double endLength);
    /*!
        Replaces every subpath by its smoothed form: koPath::smooth() of the
        given type (koPath::SmoothType, an unknown type changes nothing) with
        factor 0.5 over the whole subpath. The path comes back through
        toXPath()/fromXPath(), so it is tidied by cleanUp() and subpaths of a
        single point are dropped.
    */
    void smooth(int type);
    /*!
        Replaces this path by a hand-drawn looking version of the first
        subpath of \a source: its start S, then the points every \a step of
        length along it (by koPath::getLocationAt()) displaced sideways, to
        (t.y, -t.x) of the direction t, by
        koNumeric::perlinNoise_1D(0.05 * length) * \a amplitude (so up to
        1.875 * amplitude), each dropped when within 1.0 of the point before,
        then the subpath's end E (S again when it is closed, and the result is
        closed too). S and E are not displaced. Where no location is found a
        point repeats the one before (S at first).

        Unchanged when \a source is empty or has no subpath, or when \a step
        is not a positive finite number or \a amplitude is not finite. At
        most 1e6 points: a finer step grows to the length / 1e6. \a source
        is tidied by cleanUp() (it may be this path).
    */
    void manualPath(RVPath &source, double amplitude, double step);
    /*!
        Writes into \a out (cleared first) a wave along every subpath. The
        height is H = \a factor * \a amplitude, or factor * wavelength / 2
        when amplitude is exactly -1; positive heights lie on the side
        (t.y, -t.x) of the direction t (outwards of a clockwise outline).

        A subpath of length L (koPath::getLength(), whole units) is cut into
        n = round(L / wavelength) pieces of L / n; on a closed subpath the
        kinds that alternate sides (0, 3, 6) need n even, and an odd n moves
        to the even neighbour towards L / wavelength. Points come from
        koPath::getLocationAt() displaced sideways. Every piece starts and
        ends on the path (kinds 4 and 6 step off and back at the ends), so a
        closed subpath's wave closes on itself. Kinds, per piece:
        - 0: half a sine wave (two cubics), sides alternating;
        - 1 (and any kind below 0 or above 6): a bump on one side, a half
          ellipse of height H (a half circle when H is half the piece), as a
          cloud's edge;
        - 2: a curl: a prolate cycloid of height H whose loops sit on the
          path where the pieces meet;
        - 3: zigzag, apexes of height H alternating at the pieces' middles;
        - 4: sawtooth rising from -H to H across each piece, dropping at
          its end;
        - 5: a whole sine period (four cubics);
        - 6: square wave, sides alternating.
        The curl and bumps reach past their piece: beyond the ends of an open
        subpath along its end tangents, round the start of a closed one.

        A subpath shorter than half a wavelength (n = 0) is copied as it is;
        subpaths of a single point add nothing. Totality: a wavelength that
        is not positive or a non-finite height leaves \a out empty; a
        subpath gets at most 100000 pieces (longer pieces beyond).
    */
    void wavePath(RVPath &out, int kind, double wavelength, double amplitude, double factor);

private:
    // Starts a piece at p: joins an open subpath (line-to p unless near),
    // else a move-to.
    void _startPiece(double x, double y);
    // The close rule of closeSubpath() without its two-element guard.
    void _closeCurrent();
    // toXPath() that keeps every closed subpath running the way it was
    // drawn (toXPath() lets the compound path reorient them). The effects
    // that walk along a path use it, so that a subpath's wave, jitter or
    // taper does not depend on its place in the path.
    void _toXPathAsDrawn(XPath &out, int firstElement = 0);

    QVector<RVPathElement> m_elements;
};

Q_DECLARE_TYPEINFO(RVPath, Q_MOVABLE_TYPE);

#endif // RVPATH_H
