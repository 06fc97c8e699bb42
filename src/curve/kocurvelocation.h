#ifndef KOCURVELOCATION_H
#define KOCURVELOCATION_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"

#include <QtCore/QList>
#include <QtCore/QString>

class koCurve;
class koPath;
class koSegment;

/*!
    \class koCurveLocation
    A position on a curve of a path: the curve, the curve time and the point.
    Intersection searches produce locations in linked pairs (\c intersection
    points at the partner on the other curve).

    Reference counted like the path model (count 0 at birth, release() frees
    at a count of 1 or less). All pointers it stores are non-owning: a
    location never changes the counts of its curve, path or segments, so
    those must outlive it (or at least every call that may find the curve
    again).
*/
class RVGRAPHICS_EXPORT koCurveLocation
{
public:
    bool overlap = false;
    int refCount = 0;
    int version = 0;
    koPath *path = nullptr;
    koCurve *curve = nullptr;
    double offset = -1;
    double time = -100;
    double distance = 0;
    koPoint point;
    koCurveLocation *intersection = nullptr;
    koCurveLocation *next = nullptr;
    koCurveLocation *previous = nullptr;
    koSegment *segment = nullptr;
    koSegment *segment1 = nullptr;
    koSegment *segment2 = nullptr;

    /*!
        A location on \a curve at \a time. A time past the curve's end
        (above 0.9999996) moves to time 0 of the next curve when there is one.
        A NaN \a point is computed from the curve and time.
    */
    koCurveLocation(koCurve *curve, double time, const koPoint &point, bool overlap,
                    double distance);

    void addRef() { ++refCount; }
    void release();

    //! Stores \a curve with its path, the path's version and its segments;
    //! a null curve is ignored.
    void setCurve(koCurve *curve);
    //! Lands on \a segment: time 0 of the curve that starts there (time 1
    //! of the last curve for the last segment of an open path). Without such
    //! a curve the stored curve stays and the time is 0 only when \a segment
    //! is its first segment, else 1. A null segment is ignored.
    void setSegment(koSegment *segment);
    //! Lands on \a segment through koSegment::getCurvePrev(): time 1 of the
    //! curve that ends there (in a closed path only the first segment wraps
    //! round; others answer the curve starting at them, at time 0).
    void setSegmentPrev(koSegment *segment);
    //! The cached segment as it is, without computing it.
    koSegment *segmentM() const { return segment; }

    /*!
        The curve. When the path changed since the curve was stored (its
        version differs), the curve is found again from the stored point and
        segments; null when it cannot be found.
    */
    koCurve *getCurve();
    //! The curve time, computed from the point when unknown; -100 if none.
    //! Without a curve the stored time is returned as it is.
    double getTime();
    koPoint getPoint() const { return point; }
    //! The segment nearer along the curve (time 0: segment 1, 1: segment 2,
    //! a tie: segment 2), cached; null without a curve or time.
    koSegment *getSegment();
    //! Length along the curve from its start to the location; 0 without a
    //! curve or time.
    double getCurveOffset();
    //! Length along the path from its start to the location (cached): the
    //! exact lengths of the curves before it plus getCurveOffset().
    double getOffset();

    //! Same path, same point (within 2e-7) and same place in curve index plus
    //! time (or offset, also across the closing point); unless \a ignoreOther,
    //! the partner locations must be equal too.
    bool equals(koCurveLocation *other, bool ignoreOther);
    /*!
        Inserts \a location into the list sorted by path id, then curve index
        plus time. With \a merge, a location equal to one of the leading
        entries near its point is not inserted; that entry is returned instead
        (taking the overlap flag). The cheap pre-check only looks at the front
        of the list, as it stands.

        Ownership: insert() changes no reference count. The caller hands its
        reference over (a fresh location at count 0 counts as one), so a list
        built by insert() owns one reference per entry: release each entry
        once when done with the list. When insert() returns another entry, the
        given location was not stored and stays the caller's to release
        (usually at once, together with its partner). A null location is not
        inserted and gives null.
    */
    static koCurveLocation *insert(QList<koCurveLocation *> &list, koCurveLocation *location,
                                   bool merge);
    /*!
        A sorted copy of \a list that also holds every location's partner
        (inserted from the last entry to the first, without merging). No
        reference count changes: the copy shares the entries of \a list, and
        the partners, which no list held before, join them. Release the entries
        of the expanded list (this frees the partners too) instead of those of
        \a list, not both.
    */
    static QList<koCurveLocation *> expand(const QList<koCurveLocation *> &list);
    //! The two curves meet tangentially here (or run along each other): the
    //! tangents are collinear and, when both curves are straight, their
    //! chords have no single crossing point (collinear chords have none).
    //! False without a partner or a curve.
    bool isTouching();
    /*!
        The two paths cross here (not merely touch). Inside both curves: the
        tangents are not collinear. At a curve end, where a path turns from
        one curve to the next: the directions of each path a short way (a
        sixty-fourth of the shortest curve met at an end) before and after
        the point separate the directions of the other path. False without a
        partner, when either curve cannot be found, or when a neighbouring
        curve is missing (the open end of a path).
    */
    bool isCrossing();
    //! Divides the curve at the location and moves the location to the new
    //! segment (time 0). Returns the new curve or null.
    koCurve *divide();
    //! "point: ... index: <curve index> <reference count> time: ... distance:
    //! ... segment1: ... segment2: ..." (a missing segment reads "null").
    QString toString();

protected:
    virtual ~koCurveLocation();

private:
    Q_DISABLE_COPY(koCurveLocation)
};

#endif // KOCURVELOCATION_H
