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
        Clockwise = 0x1,          //!< orientation known: clockwise
        CounterClockwise = 0x2,   //!< orientation known: counter-clockwise
        OverlapsOnly = 0x4,       //!< boolean operand: only overlap segments so far
        ValidOverlapsOnly = 0x8,  //!< boolean operand: only valid overlap segments so far
    };

    bool closed = false;
    quint32 flags = 0;
    int refCount = 0;
    int version = 0;   //!< change counter compared by curve locations
    int id = 0;        //!< unique per process, the first path gets 1
    int index = 0;     //!< position among the parent's children
    double m_length = 0; //!< cached length, 0 when unknown
    double m_area = 0;   //!< cached signed area, 0 when unknown
    XPath *parent = nullptr; //!< not counted
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
    void arcTo(const koPoint &to, const koSize &radii, double rotation, bool clockwise,
               bool large);
    //! arcTo() with \a to relative to the current point; nothing happens on
    //! an empty path.
    void arcBy(const koPoint &to, const koSize &radii, double rotation, bool clockwise,
               bool large);
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
    //! A new location (caller owns it) at \a offset along the path (negative:
    //! from the end), walking the same truncated running length; null beyond
    //! the path.
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
        returns a new path (inserted after it in the parent) holding the part
        after; a closed path is opened at the location and returned itself.
        Both parts share the split point. Null when the location is off the path.
    */
    koPath *splitAt(koCurveLocation *location);
    //! splitAt() at a length along the path.
    koPath *splitAt(double offset);
    //! splitAt() at time \a time of curve \a index.
    koPath *split(int index, double time);
    /*!
        Appends \a path (reversed when that makes the ends meet within
        \a tolerance), merging meeting end points; \a path leaves its parent.
        Then, with \a path null or this path too, a path whose ends meet is
        closed. Returns this path.
    */
    koPath *join(koPath *path, double tolerance);
    //! Removes straight curves shorter than the tolerance (0, or 2e-7 with
    //! \a simplify) and, with \a simplify, merges collinear straight runs.
    koPath *reduce(bool simplify);
    /*!
        Recomputes the handles of segments \a from to \a to (-1: the last)
        so that the path runs smoothly through its points. \a type is one of
        koPath::SmoothType; \a factor scales the handles (0.5 is the usual).
    */
    void smooth(int type, double factor, int from = 0, int to = -1);
    //! Replaces the curves by straight segments, no point farther than
    //! \a flatness from the original curve.
    void flatten(double flatness);
    //! Sets every segment to the blend of \a from and \a to at \a factor;
    //! both must have as many segments as this path.
    void interpolate(const koPath *from, const koPath *to, double factor);
    //! Transforms every segment by \a matrix (null: nothing).
    void transformContent(const koMatrix *matrix);

    //! Kinds of smooth().
    enum SmoothType { SmoothContinuous = 0, SmoothAsymmetric = 1, SmoothCatmullRom = 2,
                      SmoothGeometric = 3 };

    // --- bounds -------------------------------------------------------------

    /*!
        Handle bounds, stroke bounds or fill bounds as \a boundOpt asks, under
        \a matrix (null: none). Kept behaviour: fill bounds flat in one
        direction are widened to one unit in that direction.
    */
    koRect getBounds(const koBoundOpt &boundOpt, const koStyle &style,
                     const koMatrix *matrix = nullptr);
    //! The exact fill bounds of \a segments (with the closing curve when
    //! \a closed), padded by padding[0] / padding[1] at the extremes.
    static koRect getBounds(const QList<koSegment *> &segments, bool closed,
                            const double padding[2], const koMatrix *matrix = nullptr);
    //! A box holding every point and absolute handle.
    static koRect getHandleBounds(const QList<koSegment *> &segments, const koStyle &style,
                                  const koBoundOpt &boundOpt, const koMatrix *matrix = nullptr);
    //! The fill bounds widened by the stroke: half its width, its joins and caps.
    static koRect getStrokeBounds(const QList<koSegment *> &segments, bool closed,
                                  const koStyle &style, const koMatrix *matrix = nullptr);

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
