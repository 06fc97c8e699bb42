#ifndef XPATH_H
#define XPATH_H

#include "rvgraphics_global.h"
#include "geometry/korect.h"

#include <QtCore/QList>
#include <QtCore/QVector>

#include <functional>

class koCurve;
class koHitOpt;
class koHitResult;
class koMono;
class koSegment;
class koStyle;
struct koWinding;
class koCurveLocation;
class koMatrix;
class koPoint;
class koPath;

/*!
    \class XPath
    A compound path: an ordered list of koPath children, each held by one
    reference. Unlike its children an XPath is not reference counted: it is
    owned by whoever created it and destroyed with delete, which releases the
    children.

    Child orientation rule: after children are added or removed, every closed
    child whose orientation is not already fixed is oriented clockwise when it
    is the first child and counter-clockwise otherwise (y-down coordinates),
    so that a compound path reads as an outline with holes under the non-zero
    rule.
*/
class RVGRAPHICS_EXPORT XPath
{
public:
    //! The fill rule of the compound path as an operand of the boolean
    //! operations: true (the default) even-odd, false non-zero. Copied by
    //! assign(). Containment and hit testing take their rule from koStyle.
    bool m_flag = true;
    QVector<koPath *> children; //!< each counted
    koRect m_bounds;            //!< bounds cache, copied by assign()

    XPath() = default;
    ~XPath();

    //! The fill rule held by m_flag.
    bool isEvenOdd() const { return m_flag; }
    void setEvenOdd(bool evenOdd) { m_flag = evenOdd; }

    koPath *getFirstChild() const;
    koPath *getLastChild() const;
    const QVector<koPath *> &getChildren() const { return children; }
    //! The curves of all children in order (each child's list is built on
    //! demand); the children keep the references.
    QList<koCurve *> getCurves() const;

    //! Inserts \a path at \a index (-1, any negative index or one beyond the
    //! end appends), taking one reference; a null path is ignored.
    void addChild(koPath *path, int index = -1);
    //! The same for several paths, kept in order; null entries are skipped.
    void addChildren(const QVector<koPath *> &paths, int index = -1);
    //! Removes \a path if it is a child, then releases it once in any case.
    void removeChild(koPath *path);
    //! Releases and removes the children in [from, to) (to = -1 or beyond the
    //! end: the end; a negative from counts as 0; an empty range does nothing).
    void removeChildren(int from, int to = -1);
    //! Replaces the children; \a paths may name current children.
    void setChildren(const QVector<koPath *> &paths);
    //! Appends copies of \a other's children; copies the flag and bounds.
    void assign(const XPath *other);
    XPath *clone() const;

    //! Reverses every child in place; the order of children is kept.
    void reverse();
    //! Reduces every child (last to first); children left empty are removed.
    XPath *reduce(bool simplify);
    //! Flattens every child (koPath::flatten()).
    void flatten(double flatness);
    /*!
        Flattens and then drops points that deviate less than \a tolerance:
        each child is flattened with half the tolerance (at least 2e-7) and
        the points of the polyline are thinned by Ramer-Douglas-Peucker with
        the rest, a closed child as the polyline back to its first point. The
        result stays within \a tolerance of the original (within 2e-7 for a
        smaller tolerance) both ways, as far as flatten()'s depth limit
        allows. A negative or NaN tolerance counts as 0.
    */
    void simplify(double tolerance);
    //! Blends child by child (koPath::interpolate()); nothing happens when
    //! either is null or the numbers of children differ.
    void interpolate(const XPath *from, const XPath *to, double factor);
    /*!
        Splits the child holding \a offset, walking the children's lengths
        (koPath::getLength()) in order; a negative offset counts from the end
        of the total. A child's end belongs to the next child, the very end to
        the last child. Returns the child's splitAt() result: a new path added
        after the child (held by this compound path), the child itself when it
        was closed, or null (also for NaN or an offset off the paths).
    */
    koPath *splitAt(double offset);
    //! Transforms every child (koPath::transformContent(); null: nothing) and
    //! clears the bounds cache.
    void transformContent(const koMatrix *matrix);

    //! A new location (caller owns it) of the point nearest to \a point on any
    //! child, or null.
    koCurveLocation *getNearestLocation(const koPoint &point) const;
    //! The nearest point, or (NaN, NaN) without curves.
    koPoint getNearestPoint(const koPoint &point) const;
    //! The orientation of the first child; false when there is none.
    bool isClockwise() const;
    //! Reverses all children when isClockwise() differs from \a clockwise.
    void setClockwise(bool clockwise);

    // --- intersections and division ----------------------------------------

    /*!
        Every meeting of this compound path's curves with \a other's (null or
        this: self-intersections, adjacent curves excluded). Compound paths
        whose bounds do not touch give an empty list at once. Kept behaviour:
        \a returnFirst returns before the first pairwise test.

        Ownership: the list holds one reference on each listed location and
        one on its partner (which is not listed), both the caller's. Release
        them with releaseLocations(list, true), or, after
        koCurveLocation::expand(), release each entry of the expanded list
        once (releaseLocations(expanded, false)). Segments that division links
        to a location hold references of their own.
    */
    QList<koCurveLocation *>
    getIntersections(XPath *other, const std::function<bool(koCurveLocation *)> &include = {},
                     bool returnFirst = false);
    //! The intersections that are crossings or overlaps (touches dropped).
    QList<koCurveLocation *> getCrossings(XPath *other);
    /*!
        Splits the curves at \a locations (sorted by path, curve and time, as
        insert/expand leave them), attaches each location to its new segment
        and links the partner chains. Mode 0 processes all, 1 only overlaps,
        2 only locations whose curves were lost (kept behaviour: the others
        are skipped), any other mode all; returns the processed locations
        (none in mode 0), or the input when none was collected.

        A segment at a location takes a reference on the partner location
        (koSegment::setIntersection); locations meeting at one segment are
        chained through next/previous. Pieces of straight curves stay
        without handles. A location whose curve is gone or outside any path
        is collected but not divided.
    */
    static QList<koCurveLocation *> divideLocations(const QList<koCurveLocation *> &locations,
                                                    int mode);
    //! Releases each location of \a locations once, and its partner too when
    //! \a withPartners (for lists as getIntersections() returns them). A
    //! location freed here first leaves its chain and its partner's link, so
    //! that locations still held by segments point at no freed location.
    static void releaseLocations(const QList<koCurveLocation *> &locations, bool withPartners);
    //! Appends the chain holding \a to behind the chain holding \a from.
    static void linkIntersections(koCurveLocation *from, koCurveLocation *to);
    /*!
        Replaces the children by contours that neither cross themselves nor
        each other, oriented by nesting depth: the contours are ordered by the
        area of their boxes, largest first; a contour inside none runs like
        the largest one, a contour inside others runs against the nearest
        (next larger) contour that contains its interior point.

        Only crossings and overlaps count (touching points are left alone).
        Where the path runs back along itself, the segments strictly inside
        such an overlap are removed (together with the zero-length curve this
        leaves), since they enclose nothing; the path is then divided at the
        overlaps and crossings and traced into contours, switching to the
        other branch at every crossing. Crossings are located again after
        the overlaps were divided, and links to locations whose curves were
        removed are dropped before tracing. Without crossings or overlaps the
        children are kept and only reordered and oriented. Traced contours
        are closed; zero-area traces are dropped by the tracer. Links and
        visited marks left on the segments by earlier work are cleared first.

        As orientation alternates with depth, the result fills the same under
        both fill rules: the fill of the original under its own rule (m_flag).
        Even-odd: a self-crossing star loses its centre. Even-odd contours that
        share stretches of outline but cross nowhere (a square drawn twice,
        nested squares sharing a corner and two edges) are instead oriented by
        nesting and read by the non-zero rule as below, where shared stretches
        running against each other cancel; that reading is kept when it
        passes the same checks as the non-zero one (a stretch drawn three or
        more times may fail them, and the trace of every segment is taken).
        Non-zero: every
        piece gets the winding of its chain against the path itself and only
        the outline of the non-zero fill is traced (as for unite), even
        without crossings, so that a contour drawn twice or nested inside
        one running the same way merges into one outline. Where that outline
        still crosses itself, or does not fill like the original at a point
        inside each contour (rounding at huge coordinates), the even-odd
        reading is taken instead.
    */
    void resolveCrossings();

    // --- winding, containment and hit testing --------------------------------

    /*!
        Winding of \a point against the monotone pieces \a monoCurves (the
        concatenated getMonoCurves() of one or more paths). The crossings of a
        horizontal ray are summed left and right of the point; with
        \a horizontal (for points where the outline runs horizontally) the
        horizontal-ray windings are taken halfway to the nearest crossings
        above and below on a vertical line instead. The winding is the larger
        absolute side sum; contour is set when exactly one side is zero.
        Crossings within 2e-7 of the point count as the point lying on that
        path; when no crossing is counted on either side, each path the point
        lies on counts as one crossing on each side (so the winding is 1 on a
        single path, and contour false).
    */
    static koWinding getWinding(const koPoint &point, const QList<koMono *> &monoCurves,
                                bool horizontal);
    /*!
        Gives the chain of segments starting at \a segment (up to the next
        segment with an intersection, the end of an open path, or round to
        \a segment again) the winding and contour of the point at half the
        chain's length, measured against \a monoCurves; when that point is a
        segment (a corner the outline may turn back at) the middle of its
        curve is taken. When the point lies on another path's outline (within
        2e-7: a corner of one operand on an edge of the other, a tangent
        contact, where the outlines touch without a division point), the
        chain is sampled instead at the first of its golden-section shares
        (0.382, 0.618, 0.236, 0.764, 0.146, 0.854 of its length, each with
        the same segment rule) that lies on no other path; when all do, the
        middle is kept. For subtraction
        (\a operation 3 with \a path2), a chain of \a path1 inside \a path2,
        or of \a path2 outside \a path1, gets winding 0. A chain of no length
        samples its first point. Null \a segment: nothing happens.
    */
    static void propagateWinding(koSegment *segment, XPath *path1, XPath *path2,
                                 const QList<koMono *> &monoCurves, int operation);
    //! The monotone pieces of all children, in child order (owned by the
    //! children).
    QList<koMono *> getMonoCurves() const;
    //! The union (koRect::unite) of the children's fill bounds, starting from
    //! the all-zero rectangle.
    koRect getBounds() const;
    //! Fill containment of all children together under the style's fill
    //! rule, so that inner contours cut holes (even-odd, or non-zero when they
    //! wind the other way). A point not strictly inside the union of the
    //! children's handle bounds is outside.
    bool contains(const koPoint &point, const koStyle &style) const;
    //! The empty result without children; else hitTestSelf(), and when that
    //! finds nothing hitTestChildren().
    koHitResult hitTest(const koPoint &point, const koStyle &style, const koHitOpt &opt);
    //! Type 2 with this compound path as item (no path or segment) when
    //! \a opt.fill is set and contains() holds; else the empty result.
    koHitResult hitTestSelf(const koPoint &point, const koStyle &style, const koHitOpt &opt);
    //! The first child hit by koPath::_hitTestSelf() with opt.fill switched
    //! off (the compound fill is the one that counts); the empty result when
    //! none is hit.
    koHitResult hitTestChildren(const koPoint &point, const koStyle &style, const koHitOpt &opt);

    // --- boolean operations ----------------------------------------------------

    //! Operation codes of computeBoolean().
    enum Operation { OpNone = 0, OpIntersect = 1, OpUnite = 2, OpSubtract = 3, OpExclude = 4 };

    /*!
        Boolean operations. The operands are never changed; the result is a new
        compound path owned by the caller (delete it), or null. Curves are kept
        as curves; the result's contours are oriented clockwise outside,
        counter-clockwise for holes, and read correctly under both fill rules.

        Operands are filled areas, each under its own fill rule (m_flag):
        every open child is closed implicitly by a straight line from its end
        to its start, as QPainterPath fills it (an open child of fewer than
        three points, or whose points are collinear, encloses nothing). The
        one exception is a first operand that is a single open path: it is
        taken as a line and clipped (computeOpenBoolean()), so intersect and
        subtract give open pieces of it and unite and exclude give null.
    */
    XPath *unite(XPath *other);
    XPath *intersect(XPath *other);
    XPath *subtract(XPath *other);
    XPath *exclude(XPath *other);
    //! Two new compound paths: this minus \a other, then this within \a other.
    QList<XPath *> divide(XPath *other);
    //! A reduced clone, with its self-crossings resolved when \a resolve
    //! (null for a null path).
    static XPath *preparePath(XPath *path, bool resolve);
    /*!
        The boolean operation \a operation (an Operation) of \a path1 with
        \a path2 (null, or path1 itself: path1 alone). A first operand that is
        one open path goes to computeOpenBoolean(). Otherwise both operands are
        prepared (preparePath() without resolution, then every open child is
        closed by a straight line, handles at its two ends dropped, the copy
        is reduced again and its crossings resolved), divided at their
        crossings, every segment gets the winding
        of its chain and the segments kept by the operation (winding 2 for
        intersect, 1 for the others) are traced into closed contours. Null for
        a null \a path1 or an unknown operation; an empty result is an empty
        compound path.
    */
    static XPath *computeBoolean(XPath *path1, XPath *path2, int operation);
    /*!
        Intersect/subtract of an open single path by a filled one (its open
        children closed by straight lines, as for computeBoolean()): the inside
        (intersect) or outside (subtract) pieces, each its own open path, in
        the order along the path. The path is cut at every crossing and
        overlap end; each piece lies wholly on one side and is judged by the
        point halfway along it (measured exactly), with the fill rule given
        by \a path2's flag (true: even-odd). The first piece's incoming handle
        is cleared. Null when either operand is null, when \a path1 is not
        one open path, when \a path2 is one open path, and for operations
        other than intersect and subtract.
    */
    static XPath *computeOpenBoolean(XPath *path1, XPath *path2, int operation);
    /*!
        Traces the divided \a segments (windings assigned, visited cleared)
        into closed contours: each walk starts at the next unused segment the
        operation keeps, follows its path and switches to the other branch
        at crossings, and ends when it returns to its start; a walk that
        leaves the kept outline is discarded. Contours of at most 8 segments
        enclosing no area (within 1e-12) are dropped. Operation 0 keeps
        every segment. Two paths lying exactly on each other (overlaps only)
        give one copy for unite and intersect. The end of an open path joins
        its start by a straight line; its last incoming handle is kept as the
        pending handle and lands on the contour's first point (deliberate).
        The new paths (count 0) are the caller's. Segments are marked visited.
    */
    static QVector<koPath *> tracePaths(const QList<koSegment *> &segments, int operation);
    /*!
        A new compound path of \a paths, taking over one reference of each
        (a fresh path at count 0 simply passes to the result). With
        \a simplify each path is reduced first and empty ones are released.
        Closed paths are oriented by nesting (clockwise outlines,
        counter-clockwise holes; they must not cross each other) before they
        are added. \a path1 and \a path2 are not used.
    */
    static XPath *createResult(const QVector<koPath *> &paths, bool simplify, XPath *path1,
                               XPath *path2);

private:
    void _renumber();
    // Orients \a path by the child rule (closed paths without a fixed
    // orientation only).
    void _orientChild(koPath *path);
    Q_DISABLE_COPY(XPath)
};

#endif // XPATH_H
