#ifndef KOPATH_H
#define KOPATH_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"
#include "geometry/korect.h"
#include "geometry/kosize.h"

#include <QtCore/QList>
#include <QtCore/QVector>

class koBoundOpt;
class koCurve;
class koCurveLocation;
class koHitOpt;
class koHitResult;
class koMatrix;
class koStyle;
class koMono;
class koSegment;
class XPath;

/*!
    \class koPath
    One contour: an ordered list of segments, the curves between them (built
    lazily on first use) and a closed flag.

    Ownership: a path holds one reference on each of its segments and curves;
    it is itself reference counted (count 0 at birth, release() frees it at a
    count of 1 or less). Its compound-path parent is not counted. Every change
    of the segment list goes through addSegments()/removeSegments(), which
    re-link the curves so that curve i always joins segments i and i + 1
    (segment 0 for the closing curve of a closed path).

    Construction follows drawing commands. Deliberate behaviours callers rely
    on: moveTo() never starts a second contour (on a path of two or more
    segments it does nothing); the relative commands, quadraticCurveTo() and
    arcTo() need a current segment; arcTo() uses the handle factor
    sin(a/2)/(1 + cos(a/2)) of its pieces as it stands.

    Orientation: in y-down coordinates a positive signed area means clockwise.
    Flag bits 0x1/0x2 cache a known orientation; they are never both set.
*/
class RVGRAPHICS_EXPORT koPath
{
public:
    enum Flag : quint32 {
        Clockwise = 0x1,         //!< orientation known: clockwise
        CounterClockwise = 0x2,  //!< orientation known: counter-clockwise
        OverlapsOnly = 0x4,      //!< boolean operand: only overlap segments so far
        ValidOverlapsOnly = 0x8, //!< boolean operand: only valid overlap segments so far
    };

    bool closed = false;
    quint32 flags = 0;
    int refCount = 0;
    int version = 0;             //!< change counter compared by curve locations
    int id = 0;                  //!< unique per process, the first path gets 1
    int index = 0;               //!< position among the parent's children
    double m_length = 0;         //!< cached length, 0 when unknown
    double m_area = 0;           //!< cached signed area, 0 when unknown
    XPath *parent = nullptr;     //!< not counted
    QList<koSegment *> segments; //!< each counted
    QList<koCurve *> curves;     //!< each counted; empty until first needed
    QList<koMono *> monos;       //!< monotone pieces, owned; see getMonoCurves()

    explicit koPath(XPath *parent = nullptr, bool closed = false);

    void addRef() { ++refCount; }
    void release();

    //! A new path (new id, no parent, index 0, flags 0) with copies of the
    //! segments and the closed flag.
    koPath *clone() const;
    //! Appends copies of \a other's segments and takes its closed flag;
    //! nothing is cleared first (meant for fresh paths).
    void assign(const koPath *other);
    //! Same closed flag and segment geometry within 1e-12.
    bool equals(const koPath *other) const;

    bool isEmpty() const { return segments.isEmpty(); }
    bool isClosed() const { return closed; }
    const QList<koSegment *> &getSegments() const { return segments; }
    //! First and last segment; null when the path is empty.
    koSegment *getFirstSegment() const;
    koSegment *getLastSegment() const;
    //! The last segment, or null when the path is empty.
    koSegment *getCurrentSegment() const;
    //! The curve list, built from the segments when it is empty.
    const QList<koCurve *> &getCurves();
    koCurve *getFirstCurve();
    koCurve *getLastCurve();
    //! Number of curves the segments imply: n closed, n - 1 open (0 if empty).
    double _countCurves() const;

    bool hasHandles() const;
    void clearHandles();
    //! Releases every segment and empties the list; curves are untouched.
    //! A segment that outlives the release (held elsewhere) is detached: no
    //! path, index -1.
    void clearSegments();
    //! Releases every curve and empties the list; a curve held elsewhere
    //! loses its path.
    void clearCurves();

    //! Appends \a segment (a clone when it already belongs to a path) and
    //! returns the segment stored; null for a null segment.
    koSegment *addSegment(koSegment *segment);
    //! Inserts at \a index; a negative index or one beyond the end appends.
    koSegment *insertSegment(int index, koSegment *segment);
    //! Replaces all segments (the curve list is dropped). The list may hold
    //! this path's own segments: they are adopted again, not copied. Null
    //! entries are skipped.
    void setSegments(const QList<koSegment *> &list);
    /*!
        Inserts \a list at \a index (-1 appends). Segments that belong to a
        path are replaced by clones. When the curve list is built, the given
        \a curves (whose references are handed over) and new empty curves are
        inserted and all affected curves re-linked. Returns the list as stored.

        Null entries are skipped; a negative index or one beyond the end
        appends. Given curves beyond the number of new links are released
        without being used. A curve list found out of step with the segments
        is dropped and rebuilt on demand.
    */
    QList<koSegment *> addSegments(QList<koSegment *> list, int index = -1,
                                   const QList<koCurve *> &curves = QList<koCurve *>());
    //! Removes and releases segment \a i; false when \a i is out of range.
    bool removeSegment(int i);
    /*!
        Removes the segments in [from, to) (to = -1: to the end) and the curves
        they imply, re-linking the neighbours. The removed segments and curves
        are detached (index 0, no path) and appended to \a outSegments and
        \a outCurves; with \a release they are released instead and the lists
        emptied. Returns the number of segments removed.

        A negative \a from counts as 0; \a to below 0 or beyond the end means
        the end; an empty range removes nothing. A closed path loses the curves
        [from, to) and the curve before the gap is re-linked to the segment
        after it (segment 0 when the gap reached the end). With \a release only
        the entries this call appended are released and taken off the lists.
    */
    int removeSegments(QList<koSegment *> &outSegments, QList<koCurve *> &outCurves, int from,
                       int to = -1, bool release = true);
    //! Re-links curves [start, end) and their neighbours to the segments.
    void _adjustCurves(int start, int end);
    //! Invalidates cached length, area and monotone pieces after a change of
    //! geometry.
    void _changed();

    void addFlags(quint32 bits) { flags |= bits; }
    void removeFlags(quint32 bits) { flags &= ~bits; }
    bool isFlags(quint32 bits) const { return (flags & bits) != 0; }

    //! Closed paths only: reverses the path when needed so that it runs
    //! clockwise (or counter-clockwise) and records the orientation.
    void setClockwise(bool clockwise);
    //! Closed paths only: orients clockwise.
    void reorient();

    // --- construction -----------------------------------------------------

    void moveTo(double x, double y);
    void moveToPt(const koPoint &p);
    //! Appends a straight segment, also on an empty path.
    void lineTo(double x, double y);
    void lineToPt(const koPoint &p);
    //! Line by \a d from the current point; nothing happens on an empty path.
    void lineBy(const koPoint &d);
    //! Absolute handles and end point; nothing happens on an empty path.
    void cubicCurveTo(const koPoint &h1, const koPoint &h2, const koPoint &to);
    //! cubicCurveTo() relative to the current point; nothing happens on an
    //! empty path.
    void cubicCurveBy(const koPoint &h1, const koPoint &h2, const koPoint &to);
    //! The quadratic as its degree-elevated cubic (handles a third of the way
    //! from \a h to each end); nothing happens on an empty path.
    void quadraticCurveTo(const koPoint &h, const koPoint &to);
    //! quadraticCurveTo() relative to the current point; nothing happens on an
    //! empty path.
    void quadraticCurveBy(const koPoint &h, const koPoint &to);
    /*!
        Elliptical arc from the current point to \a to (SVG-style endpoint
        parametrisation): \a radii are the x and y radii, \a rotation the
        ellipse's rotation in degrees. Radii too small for the chord grow; a
        zero radius draws a line; when no ellipse centre exists the arc falls
        back to the circle through the current point, the chord's perpendicular
        apex and \a to. The last segment lands exactly on \a to. \a clockwise
        is meant on a y-down screen (SVG's sweep flag), \a large picks the
        longer of the two arcs. Each piece spans at most 90 degrees.

        Nothing happens on an empty path. NaN radii or rotation leave no
        ellipse and take the circular fallback; a NaN end point, or one equal
        to the current point, draws a line to \a to.
    */
    void arcTo(const koPoint &to, const koSize &radii, double rotation, bool clockwise, bool large);
    //! arcTo() with \a to relative to the current point; nothing happens on
    //! an empty path.
    void arcBy(const koPoint &to, const koSize &radii, double rotation, bool clockwise, bool large);
    //! Arc of the ellipse inscribed in \a rect from \a start over \a sweep
    //! degrees (both angles negated, so positive sweeps run clockwise on
    //! screen); joined to the current point by a line unless within 0.1.
    void arcTo2(const koRect &rect, double start, double sweep);
    /*!
        Appends a whole ellipse inscribed in \a rect as a move and four cubics;
        the path is left open with its last point on its first. A path holding
        a single segment loses it (taken off the list as it stands and released
        once the ellipse is built).
    */
    void ellipse(const koRect &rect);
    //! Sets the closed flag, adding or dropping the closing curve when the
    //! curve list is built. Coinciding end points are not merged.
    void setClosed(bool closed);

    // --- measurement ----------------------------------------------------------

    /*!
        The path length. Kept behaviour: the length is accumulated as a whole
        number, each curve's length added and the running sum truncated toward
        zero (two curves of 10.7 measure 20). Cached until the path changes.
    */
    double getLength();
    /*!
        A new location (caller owns it) at \a offset along the path (negative:
        from the end), walking the same truncated running length: the curve
        whose truncated running length first exceeds the offset takes it. The
        whole walked length ends at time 1 of the last curve. Null beyond the
        path, for an offset still negative after counting from the end, for
        NaN, and for a path without curves.
    */
    koCurveLocation *getLocationAt(double offset);
    //! The point, tangent, normal and curvature at a length along the path;
    //! NaN when the offset is off the path.
    koPoint getPointAt(double offset);
    koPoint getTangentAt(double offset);
    koPoint getNormalAt(double offset);
    koPoint getWeightedTangentAt(double offset);
    koPoint getWeightedNormalAt(double offset);
    double getCurvatureAt(double offset);
    //! A new location (caller owns it) of a point on the path, or null.
    koCurveLocation *getLocationOf(const koPoint &point);
    //! The length along the path to a point on it; 0 when it is not on it.
    double getOffsetOf(const koPoint &point);
    //! The curve holding \a offset; \a offset becomes the length within it.
    //! Null for the exact total length (the end point belongs to no curve).
    koCurve *getCurveAtOff(double &offset);
    //! A new location (caller owns it) of the path point nearest to \a point;
    //! the earlier curve wins a tie. Null without curves.
    koCurveLocation *getNearestLocation(const koPoint &point);

    // --- editing ------------------------------------------------------------

    //! Reverses the segment order in place (handles swapped, curves rebuilt
    //! on demand); a known orientation flips.
    void reverse();
    /*!
        Splits the path at \a location. An open path keeps the part before and
        returns a new path holding the part after (with this path's closed
        flag and flags); a closed path is opened at the location, the part
        after it moved to the front, and returned itself. Both parts share the
        split point (each has its own segment there). A location inside a curve
        (time 4e-7 or more) divides that curve; a time of 0.9999996 or more
        counts as the start of the next curve.

        Ownership: with a parent compound path the new path is added to it
        right after this one and the parent holds it; without a parent the
        caller owns it (count 0: release once).

        Null, with nothing changed, for a null location, a location on another
        path's curve, a NaN time, or one at or past the end of the last curve.
        Kept asymmetry: a location whose curve cannot be found is taken only
        with a time of 0.9999996 or more, and then splits at the path's start.
    */
    koPath *splitAt(koCurveLocation *location);
    //! splitAt() at a length along the path (see getLocationAt()); the
    //! temporary location is released.
    koPath *splitAt(double offset);
    //! splitAt() at time \a time of curve \a index; null when the index is
    //! not a curve or the time is outside [0, 1] (or NaN).
    koPath *split(int index, double time);
    /*!
        Appends \a path (reversed when that makes the ends meet within
        \a tolerance), merging meeting end points; \a path leaves its parent.
        Then, with \a path null or this path too, a path whose ends meet is
        closed. Returns this path.

        Points meet when their distance is at most \a tolerance. End to start:
        copies of \a path's segments after its first are appended and this
        last segment takes its outgoing handle; start to end: copies before
        its last are put in front and this first segment takes its incoming
        handle; otherwise all are appended. A closed \a path adds its first
        point once more. \a path itself may be left reversed; it keeps its
        segments, and its parent's reference is released (which frees it
        when nobody else holds it). An empty \a path changes nothing.
    */
    koPath *join(koPath *path, double tolerance);
    /*!
        Removes straight curves shorter than the tolerance (0, or 2e-7 with
        \a simplify) and, with \a simplify, straight curves collinear with the
        next curve (a removed curve's end segment goes; its start segment takes
        over the outgoing handle). The walk runs from the last curve to the
        first and starts again from the last after every removal. A curve's
        cached length is used when known; a zero cache is measured and stored,
        a NaN cache is used as it stands (and is never short). reduce(false)
        therefore removes nothing. Returns this path.
    */
    koPath *reduce(bool simplify);
    /*!
        Recomputes the handles of segments \a from to \a to (-1, or any index
        past the end: the last) so that the path runs smoothly through its
        points, which never move. In a closed path a range with \a from after
        \a to runs round through the start; in an open one the two swap. Every
        segment of the range gets both handles, except that the outer handle
        at an end of an open path (which belongs to no curve) is left alone.

        \a type (koPath::SmoothType):
        - SmoothContinuous: the C2 cubic spline through the points with uniform
          parameter spans, solved as a tridiagonal system (natural ends, zero
          curvature, at the ends of an open path) or as the cyclic system of a
          closed path (Sherman-Morrison). Handles are equal and opposite.
        - SmoothAsymmetric: the same spline with centripetal spans (the square
          root of each chord), C2 in that parameter; the two handles at a point
          are collinear but as long as their spans, which keeps short and long
          neighbours from overshooting.
        - SmoothCatmullRom: centripetal Catmull-Rom handles from the previous
          and next point (no overshoot, no cusps).
        - SmoothGeometric: handles parallel to the chord from the previous to
          the next point, each factor times that chord scaled by the adjacent
          segment's share of the two lengths.
        The spline types solve over the range plus one neighbour on each side
        (the whole ring when that covers a closed path). At the ends of an open
        path the local types put the inner handle halfway to the neighbour's
        facing control point (zero curvature there), or on the chord for a
        single curve.

        \a factor scales the handles: 0.5 gives the exact spline (for the
        Catmull-Rom type it is the tension), 0 gives straight segments. Nothing
        happens for fewer than two segments, an unknown type, a non-finite
        factor, or (spline types) a non-finite point among those solved. The
        smooth joints are G1: the incoming and outgoing handle of every
        smoothed point with two neighbours are opposite in direction.
    */
    void smooth(int type, double factor, int from = 0, int to = -1);
    /*!
        Replaces the curves by straight segments whose points lie on them: each
        curve is halved until every piece passes isFlatEnough(), so that the
        polyline and the curves are within \a flatness of each other (both
        ways). Straight curves keep just their ends; all handles go. A flatness
        below 2e-7 (or NaN) counts as 2e-7; the halving stops at depth 12
        (4096 pieces per curve), which bounds the work on huge or degenerate
        curves (the flatness is then met only as far as that depth allows). Curves with non-finite
       values become chords.
    */
    void flatten(double flatness);
    //! Sets every segment to the blend of \a from and \a to at \a factor
    //! (point and handles, 0 gives \a from, 1 gives \a to). Nothing happens
    //! when either is null or their segment counts differ from this path's.
    void interpolate(const koPath *from, const koPath *to, double factor);
    //! Transforms every segment by \a matrix (null: nothing) and forgets the
    //! cached measurements. A known orientation flips under a reflection
    //! (negative determinant) and is forgotten under a singular map.
    void transformContent(const koMatrix *matrix);

    //! Kinds of smooth().
    enum SmoothType {
        SmoothContinuous = 0,
        SmoothAsymmetric = 1,
        SmoothCatmullRom = 2,
        SmoothGeometric = 3
    };

    // --- bounds -------------------------------------------------------------

    /*!
        Handle bounds (boundOpt.handle), else stroke bounds (boundOpt.stroke),
        else fill bounds of this path, under \a matrix (null: none). Kept
        behaviour: fill bounds flat in one direction only are widened to one
        unit in that direction, so a horizontal line from (0, 5) to (10, 5)
        gives (0, 5, 10, 1); a single point stays a zero-size box. No segments:
        the all-zero rectangle.
    */
    koRect getBounds(const koBoundOpt &boundOpt, const koStyle &style,
                     const koMatrix *matrix = nullptr);
    /*!
        The exact fill bounds of \a segments (with the closing curve from the
        last segment to the first when \a closed): the box of the curves
        transformed by \a matrix, not the transformed box. The box is seeded
        with the first point; each curve then widens it per axis through
        koCurve::addBounds() with padding[0] (x) and padding[1] (y), which pads
        its extremes by half that value (null \a padding: none). No segments:
        the all-zero rectangle. A NaN coordinate (or matrix entry) makes that
        axis of the box NaN.
    */
    static koRect getBounds(const QList<koSegment *> &segments, bool closed,
                            const double padding[2], const koMatrix *matrix = nullptr);
    /*!
        A box holding every point and absolute handle of \a segments
        (transformed by \a matrix). With boundOpt.strokePadding and a positive
        stroke width, each handle is widened by the pen (getStrokePadding() of
        half the width) and each point by the farthest reach of a join or cap:
        half the width times the miter limit for miter joins (at least one),
        times sqrt(2) for square caps. Such a box holds the stroke bounds.
        No segments: the all-zero rectangle.
    */
    static koRect getHandleBounds(const QList<koSegment *> &segments, const koStyle &style,
                                  const koBoundOpt &boundOpt, const koMatrix *matrix = nullptr);
    /*!
        The box of the stroke of \a segments drawn with \a style and then
        transformed by \a matrix:
        - the fill bounds widened by the pen: half the stroke width all round,
          under a matrix the box of the pen circle mapped by its linear part
          (this is exact for round joins and caps, and enough for butt caps
          and bevel joins);
        - miter joins: at every join (and the start of a closed path) whose
          miter tip lies within miterLimit * width / 2 of the point, the tip;
          a longer miter is cut to a bevel (as in SVG and Qt::SvgMiterJoin);
        - square caps: the two outer corners at each end of an open path,
          half the width beyond the end along the end tangent.
        Tangents come from the first control point that differs from the end
        point; curves of zero length are skipped. A path without any
        direction (one point, or all points equal) counts as a zero-length
        line along x. A zero, negative or NaN stroke width gives the fill
        bounds.
    */
    static koRect getStrokeBounds(const QList<koSegment *> &segments, bool closed,
                                  const koStyle &style, const koMatrix *matrix = nullptr);
    //! Half the extents (x, y) of the box of a pen of \a radius drawn in path
    //! coordinates and mapped by the linear part of \a matrix (null: none).
    static koPoint getStrokePadding(double radius, const koMatrix *matrix = nullptr);
    /*!
        Appends to \a points the outer outline of the join at \a segment for a
        stroke of half width \a radius: the offset points of the incoming and
        outgoing curves on the outer side of the turn and, for koJoinMiter,
        between them the miter tip when it lies within \a miterLimit (an
        absolute distance from the point). Other join kinds give the bevel.
        With \a isArea the segment's point comes first, so the points form a
        closed area. Mapped by \a matrix. Neighbours are found through the
        segment's path; nothing is appended at the ends of an open path, for a
        segment without path, or when a side has no direction.
    */
    static void addBevelJoin(const koSegment *segment, int join, double radius, double miterLimit,
                             const koMatrix *matrix, QVector<koPoint> &points, bool isArea = false);
    /*!
        Appends to \a points the outline of the cap at \a segment (an end of
        an open path) for a stroke of half width \a radius: the two offset
        points across the end; for koCapSquare moved half the width beyond the
        end along its tangent. With \a isArea (square caps) the two points
        across the end itself come first, so the four points form the cap's
        rectangle. Mapped by \a matrix. The first segment of its path caps
        the start, any other segment the end; an end without direction (or a
        segment without path) uses the x axis.
    */
    static void addSquareCap(const koSegment *segment, int cap, double radius,
                             const koMatrix *matrix, QVector<koPoint> &points, bool isArea = false);

    // --- winding, containment and hit testing --------------------------------

    /*!
        The path cut into y-monotone pieces for winding queries (built on first
        use, cleared by any change of geometry through _changed()). Curves of
        zero length add nothing; a curve that is straight or whose control
        points are ordered in y is one piece, any other is cut at the roots of
        dy/dt inside (4e-7, 0.9999996). A piece whose end points differ by a
        slope below 2e-7 is horizontal (winding 0). An open path of two or more
        segments gets a straight closing piece from its last point to its
        first. The first piece's \c last names the last piece of non-zero
        winding.
    */
    const QList<koMono *> &getMonoCurves();
    /*!
        A point inside the path: the centre of its fill bounds when that lies
        inside under the even-odd rule, otherwise the middle of the two
        leftmost crossings of a horizontal ray through that centre (the centre
        itself when fewer than two crossings exist). \a flag is handed to the
        style of the containment test (koStyle::flag0).
    */
    koPoint getInteriorPoint(bool flag);
    /*!
        Fill containment under the style's fill rule (koStyle::evenOdd). A
        point not strictly inside the handle bounds is outside, so a point on
        the border of that box is outside even where the outline runs along
        it; elsewhere a point on the outline counts as inside. An open path
        is filled as if closed by a straight line. NaN points are outside.
    */
    bool contains(const koPoint &point, const koStyle &style);
    /*!
        Hit test of this path alone; note that the options come before the
        style. Returns the empty result when nothing is hit.

        The outline: with \a opt.stroke the stroke of \a style is tested (type
        1): a point hits within half the stroke width (plus opt.tolerance) of a
        curve, and at segments the join or cap closes the stroke as Qt draws
        it: butt caps end flat at the end point, square caps add a half-width
        square beyond it, round caps the half disc; on the outer side of a
        turn bevel joins fill the triangle between the outer corners, round
        joins the disc sector, and miter joins reach to the miter tip while it
        lies within miterLimit half-widths of the point, falling back to the
        bevel beyond (as Qt::SvgMiterJoin). Joins and caps are widened by
        opt.tolerance; other cap and join kinds count as butt and bevel. A stroke width of 0 leaves
       the plain distance to the outline; a negative or NaN width draws no stroke. Without
       opt.stroke a point within opt.tolerance of the outline hits (type 3 with opt.curves, else
       type 2). The point of an outline hit is the nearest point of the path (the segment's point
       for a join or cap reached from farther away), the segment the nearer end of its curve.

        Then, with \a opt.fill, contains() under \a style (its flag0 taken
        from opt.flag): type 2 with the query point.
    */
    koHitResult _hitTestSelf(const koPoint &point, const koHitOpt &opt, const koStyle &style);

    // --- area and orientation -------------------------------------------------

    /*!
        Signed area (positive when clockwise in y-down coordinates). With
        \a cached, a stored non-zero area is returned and the path's own closed
        flag is used; otherwise the open path is summed without its closing
        curve unless \a closed. Kept behaviour: the sum starts from the stored
        area, so an uncached call on a path with a stored area adds the two.
    */
    double getArea(bool cached = true, bool closed = false);
    //! The cached orientation when known, else getArea() >= 0.
    bool isClockwise();
    //! Deletes the cached monotone pieces.
    void clearMonos();

protected:
    virtual ~koPath();

private:
    // Reverses the path when its orientation differs from the wanted one and
    // records the orientation in the flags.
    void _orient(bool clockwise);
    Q_DISABLE_COPY(koPath)
};

#endif // KOPATH_H
