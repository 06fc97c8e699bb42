#ifndef KOCURVE_H
#define KOCURVE_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"
#include "geometry/korect.h"

#include <QtCore/QList>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>

class koCurveLocation;
class koLine;
class koMatrix;
class koPath;
class koSegment;
struct opParam;

/*!
    \class koCurve
    The cubic Bezier between two consecutive segments of a path.

    Geometry comes in pairs: a static form on the curve values (a
    QVector<double> of the eight absolute coordinates x1, y1, handle-1 x,
    handle-1 y, handle-2 x, handle-2 y, x2, y2) and a member form that fetches
    this curve's own values and calls it. Times run from 0 to 1; -100
    (koTolerance::NoTime) means "no time".

    A curve holds one reference on each of its two segments; the back pointer
    to the path is not counted. The cached length and bounds are cleared by
    _changed() whenever the segments are re-linked or moved.
*/
class RVGRAPHICS_EXPORT koCurve
{
public:
    int refCount = 0;
    // The fields behind path(), segment1() and segment2() carry a prefix so
    // that the accessors can keep their names.
    koPath *m_path = nullptr;        //!< owning path, not counted
    koRect bounds;                   //!< cache, all zero when invalid
    double length = 0;               //!< cache, 0 when invalid
    koSegment *m_segment1 = nullptr; //!< counted
    koSegment *m_segment2 = nullptr; //!< counted

    //! An empty curve: no path, no segments.
    koCurve() = default;
    //! Holds a reference on each non-null segment.
    koCurve(koPath *path, koSegment *segment1, koSegment *segment2);
    //! Builds two new segments from eight curve values (absolute handles).
    koCurve(const QVector<double> &values, koPath *path);

    void addRef() { ++refCount; }
    void release();
    //! A new curve on the same path sharing the same two segment objects.
    koCurve *clone() const;

    koSegment *segment1() const { return m_segment1; }
    koSegment *segment2() const { return m_segment2; }
    koPath *path() const { return m_path; }
    //! The points of the two segments; (NaN, NaN) for a missing segment.
    koPoint getPoint1() const;
    koPoint getPoint2() const;
    //! segment1's index in the path.
    int index() const;
    bool isFirst() const;
    bool isLast() const;
    //! The neighbouring curve in the path (whose curve list is built when
    //! needed); wraps round only in a closed path. Null without a path.
    koCurve *getNext() const;
    koCurve *getPrevious() const;

    //! Zeroes segment1's outgoing and segment2's incoming handle.
    void clearHandles();
    //! Removes the curve from its path by removing segment2 (segment1 takes
    //! over segment2's outgoing handle). False without a path.
    bool remove();
    //! "point1: ... handle1: ... handle2: ... point2: ..." (handles only when
    //! not zero).
    QString toString() const;
    //! Invalidates the cached length and bounds.
    void _changed();

    // --- curve values -----------------------------------------------------

    //! The curve values from segment1 to segment2, transformed by \a matrix
    //! when it is not null; eight NaNs when a segment is missing.
    static QVector<double> getValues(const koSegment *segment1, const koSegment *segment2,
                                     const koMatrix *matrix = nullptr);
    QVector<double> getValues(const koMatrix *matrix = nullptr) const;

    //! Point (type 0), derivative (1), normal (2) or curvature (3, in x) at
    //! time \a t. Outside [0, 1], for a NaN time or with fewer than eight
    //! values the result is (NaN, NaN).
    static koPoint _evaluate(const QVector<double> &v, double t, int type, bool normalized);
    static koPoint getPoint(const QVector<double> &v, double t);
    koPoint getPointAtTime(double t) const;

    //! Signed area between the curve and its chord, closed through the
    //! origin, such that the sum over a closed path is the enclosed area
    //! (positive for clockwise paths in y-down coordinates). NaN for fewer
    //! than eight values.
    static double getArea(const QVector<double> &v);
    double getArea() const;

    static bool hasHandles(const QVector<double> &v);
    bool hasHandles() const;

    // --- evaluation -------------------------------------------------------

    //! Unit tangent, unit normal (dy, -dx), derivative and turned derivative
    //! at \a t; a zero handle at an end borrows the handle-to-handle direction.
    static koPoint getTangent(const QVector<double> &v, double t);
    static koPoint getNormal(const QVector<double> &v, double t);
    static koPoint getWeightedTangent(const QVector<double> &v, double t);
    static koPoint getWeightedNormal(const QVector<double> &v, double t);
    //! Signed curvature; 0 where the derivative vanishes.
    static double getCurvature(const QVector<double> &v, double t);
    koPoint getTangentAtTime(double t) const;
    koPoint getNormalAtTime(double t) const;
    koPoint getWeightedTangentAtTime(double t) const;
    koPoint getWeightedNormalAtTime(double t) const;
    double getCurvatureAtTime(double t) const;

    // --- length -----------------------------------------------------------

    //! Arc length between times \a a and \a b (a <= b): exact for straight
    //! curves, Gauss-Legendre with getIterations(a, b) nodes otherwise (the
    //! error grows near cusps, where the speed nearly vanishes). NaN for
    //! fewer than eight values.
    static double getLength(const QVector<double> &v, double a = 0, double b = 1);
    //! The speed |B'(t)| of the curve.
    static std::function<double(double)> _getLengthIntegrand(const QVector<double> &v);
    //! max(2, min(16, ceil(|b - a| * 32))) quadrature nodes.
    static int getIterations(double a, double b);
    /*!
        The time reached by walking \a offset along the curve from \a start
        (-100: from 0 for positive offsets, from 1 for negative ones), or -100
        when the offset reaches beyond the curve. Also -100 for a NaN offset,
        a start outside [0, 1], and values that are short or not finite.
    */
    static double getTimeAt(const QVector<double> &v, double offset, double start = -100);
    //! The full length, cached (a zero length is measured again every time).
    double getLength();
    double getPartLength(double a, double b) const;
    double getOffsetAtTime(double t) const;
    //! The point at a length along the curve (or at a time with \a isTime).
    koPoint getPointAt(double offset, bool isTime = false) const;

    // --- times of points ----------------------------------------------------

    //! The time of a point lying on the curve (within 2e-7), or -100 (also
    //! for fewer than eight values).
    static double getTimeOf(const QVector<double> &v, const koPoint &point);
    double getTimeOf(const koPoint &point) const;
    //! The time of the curve point nearest to \a point: the nearest of 101
    //! samples refined to a local minimum; a straight curve is answered
    //! through its chord. -100 when the values (fewer than eight) or the
    //! point are not finite.
    static double getNearestTime(const QVector<double> &v, const koPoint &point);
    //! Times (within [min, max]) at which coordinate \a coord (0 x, 1 y)
    //! equals \a value, written into \a roots from index 0 as
    //! koNumeric::solveCubic does; returns the count, -1 when the coordinate
    //! is constant and equal to \a value (every time solves it), 0 for short
    //! values, a NaN value or a coord outside [0, 2).
    static int solveCubic(const QVector<double> &v, double coord, double value,
                          QVector<double> &roots, double min, double max);

    // --- parts and bounds -----------------------------------------------------

    //! The pieces before and after \a t (de Casteljau, t not clamped);
    //! eight NaNs each for fewer than eight values.
    static QVector<QVector<double>> subdivide(const QVector<double> &v, double t);
    //! The piece between two times, reversed when \a from > \a to; eight
    //! NaNs for fewer than eight values or a NaN time.
    static QVector<double> getPart(const QVector<double> &v, double from, double to);
    //! A new free curve (no path, caller owns it) for the piece between two times.
    koCurve *getPart(double from, double to) const;
    //! The tight bounding box (exact at the extremes); NaN for fewer than
    //! eight values.
    static koRect getBounds(const QVector<double> &v);
    //! The tight bounding box, cached in \c bounds.
    koRect getBounds();
    //! Widens min[coord]/max[coord] to hold the curve's coordinate series
    //! v0..v3, padded by padding / 2 at the extremes. Where the coordinate
    //! turns inside the curve, the end value v3 is deliberately added without
    //! padding (v0 is the caller's seed). \a roots is scratch space.
    static void addBounds(double v0, double v1, double v2, double v3, int coord, double padding,
                          double *min, double *max, QVector<double> &roots);

    // --- shape predicates -------------------------------------------------------

    //! Straight: no handles, or both handles on the chord (within 2e-7),
    //! pointing inward and not overshooting.
    static bool isStraight(const koLine &line, const koPoint &handle1, const koPoint &handle2);
    static bool isStraight(const QVector<double> &v);
    bool isStraight() const;
    //! Linear: straight with the handles at exactly one third of the chord,
    //! so that time is proportional to distance.
    static bool isLinear(const koLine &line, const koPoint &handle1, const koPoint &handle2);
    static bool isLinear(const QVector<double> &v);
    bool isLinear() const;
    static bool isFlatEnough(const QVector<double> &v, double flatness);
    //! The chord from point 1 to point 2.
    koLine getLine() const;
    bool isCollinear(const koCurve *other) const;
    bool isHorizontal() const;
    bool isVertical() const;

    // --- division -----------------------------------------------------------------

    /*!
        Divides the curve at \a t (only inside (4e-7, 0.9999996); otherwise
        null and nothing changes). In a path a segment is inserted and the curve
        that now starts at it is returned (owned by the path); without a path
        this curve ends at the new segment and a new free curve (caller owns it)
        from there to the old end is returned. Null for a NaN time or a
        curve without two segments.
    */
    koCurve *divideAtTime(double t, bool setHandles);
    //! The path's splitAt(location); null without a path.
    koPath *splitAt(koCurveLocation *location);

    // --- locations and intersections -----------------------------------------------

    //! A new location (caller owns it) of a point on the curve, or null.
    koCurveLocation *getLocationOf(const koPoint &point);

    /*!
        Every meeting of curve values \a v1 and \a v2 (of curves \a c1 and
        \a c2), added to \a locations as linked pairs (merged and sorted with
        koCurveLocation::insert); an empty \a v2 searches \a v1 for a loop.
        Crossings are found by fat-line clipping (Sederberg & Nishita 1990),
        curve-line meetings by rotating the line onto the x axis, coincident
        stretches as overlap pairs. The search is bounded (depth 48, 4096
        clipping calls) and allocates no curve objects; pairs whose reduced
        control polygons are apart return at once, without allocating.
        Fewer than eight values or a non-finite value give nothing. Returns
        \a locations.

        Ownership: each pair adds at most one entry (see addLocation()), which
        carries the list's reference; release every entry and its partner
        (\c intersection) once when done. With null curves the values stand
        for the whole curves.
    */
    static QList<koCurveLocation *> &
    getIntersections(const QVector<double> &v1, const QVector<double> &v2, koCurve *c1, koCurve *c2,
                     QList<koCurveLocation *> &locations, opParam &param);
    //! Intersections of this curve with \a curve (itself: its loop; null:
    //! none). The caller owns the returned locations: release each entry and
    //! its partner.
    QList<koCurveLocation *> getIntersectionscurve(koCurve *curve);
    //! Zero or two pairs (time on v1, time on v2) delimiting a stretch where
    //! the two curves coincide (within 2e-7, absolute).
    static QVector<QPair<double, double>> getOverlaps(const QVector<double> &v1,
                                                      const QVector<double> &v2);
    /*!
        The crossing of a loop of \a v1, as one pair on \a c1. The curve is
        split at the root of greatest curvature (compared as whole numbers,
        deliberately) and the halves are searched with \a param's
        renormalize fields and excludeEnd set: \a param is changed.
    */
    static QList<koCurveLocation *> &getSelfIntersection(const QVector<double> &v1, koCurve *c1,
                                                         QList<koCurveLocation *> &locations,
                                                         opParam &param);
    /*!
        One step of fat-line clipping of \a v1 (covering [tMin, tMax] of
        \a c1) against \a v2 (covering [uMin, uMax] of \a c2); \a flip tells
        that the pair is swapped relative to the caller's order. Returns the
        running call count: once 4096 calls are spent, each call still
        pending on the stack adds one more as it returns, so a search from
        calls = 0 returns at most 4096 + 48. Each kept range is widened by the
        rounding of the distances (a few units in the last place), so that a
        crossing at the very end of a range is not lost.
    */
    static int addCurveIntersections(const QVector<double> &v1, const QVector<double> &v2,
                                     koCurve *c1, koCurve *c2, QList<koCurveLocation *> &locations,
                                     opParam &param, double tMin, double tMax, double uMin,
                                     double uMax, bool flip, double recursion, int calls);
    static void addCurveLineIntersections(const QVector<double> &v1, const QVector<double> &v2,
                                          koCurve *c1, koCurve *c2,
                                          QList<koCurveLocation *> &locations, opParam &param);
    static void addLineIntersection(const QVector<double> &v1, const QVector<double> &v2,
                                    koCurve *c1, koCurve *c2, QList<koCurveLocation *> &locations,
                                    opParam &param);
    /*!
        Records one linked pair; a time of -100 is found from the point, a NaN
        point computed from the time. Times outside the curve, or at a joint
        excluded by \a param (not for an overlap), drop the pair. The list
        gets the location on the earlier curve of one path (else the one on
        \a c1); a pair rejected by param.include or merged into an equal
        entry is released at once.
    */
    static void addLocation(QList<koCurveLocation *> &locations, opParam &param,
                            const QVector<double> &v1, koCurve *c1, double t1, const koPoint &p1,
                            const QVector<double> &v2, koCurve *c2, double t2, const koPoint &p2,
                            bool overlap);
    //! Top and bottom of the convex hull of the distance function
    //! (0, d0), (1/3, d1), (2/3, d2), (1, d3), as lists of (x, y) points.
    static QVector<QVector<QVector<double>>> getConvexHull(double d0, double d1, double d2,
                                                           double d3);
    //! The first x at which the hull can enter the band [dMin, dMax], walking
    //! from the first points; NaN for none.
    static double clipConvexHull(const QVector<QVector<double>> &top,
                                 const QVector<QVector<double>> &bottom, double dMin, double dMax);
    static double clipConvexHullPart(const QVector<QVector<double>> &part, bool top,
                                     double threshold);

protected:
    virtual ~koCurve();

private:
    Q_DISABLE_COPY(koCurve)
};

#endif // KOCURVE_H
