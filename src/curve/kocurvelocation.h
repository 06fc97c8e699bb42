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
    location never changes the counts of its curve, path or segments.
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
    //! Lands at time 0 of the curve that starts at \a segment.
    void setSegment(koSegment *segment);
    //! Lands at time 1 of the curve that ends at \a segment.
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
    double getTime();
    koPoint getPoint() const { return point; }
    //! The segment nearer along the curve (time 0: segment 1, 1: segment 2).
    koSegment *getSegment();
    //! Length along the curve from its start to the location.
    double getCurveOffset();
    //! Length along the path from its start to the location (cached).
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
    */
    static koCurveLocation *insert(QList<koCurveLocation *> &list, koCurveLocation *location,
                                   bool merge);
    //! A sorted copy of \a list that also holds every location's partner.
    static QList<koCurveLocation *> expand(const QList<koCurveLocation *> &list);
    //! The two curves meet tangentially here (or run along each other).
    bool isTouching();
    //! The two curves cross here (not merely touch).
    bool isCrossing();
    //! Divides the curve at the location and moves the location to the new
    //! segment (time 0). Returns the new curve or null.
    koCurve *divide();
    QString toString();

protected:
    virtual ~koCurveLocation();

private:
    Q_DISABLE_COPY(koCurveLocation)
};

#endif // KOCURVELOCATION_H
