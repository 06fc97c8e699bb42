#ifndef KOSEGMENT_H
#define KOSEGMENT_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVector>

class koCurve;
class koCurveLocation;
class koMatrix;
class koPath;

/*!
    \class koSegment
    A vertex of a path with its two control handles, stored relative to the
    point: the curve from segment s1 to s2 has the absolute control points
    s1.point, s1.point + s1.handleOut, s2.point + s2.handleIn, s2.point.

    Segments are heap objects shared through an intrusive reference count:
    a new segment has count 0, addRef() adds one, and release() frees the
    segment when the count is 1 or less (after poisoning it with -2), so a
    segment nobody has addRef'd is freed by its first release(). The owning
    path holds one reference, each curve that uses the segment holds one.
    A segment belongs to at most one path at a time; the back pointer \c path
    is not counted.

    Changing the point or a handle through the setters invalidates the cached
    measurements of the owning path and of the curves that use the segment.
*/
class RVGRAPHICS_EXPORT koSegment
{
public:
    bool visited = false; //!< consumed while boolean results are traced
    quint8 contour = 0;   //!< the segment lies on the outline of a boolean result
    int refCount = 0;
    int index = -1;         //!< position in the owning path, -1 when free
    int winding = -1;       //!< winding number of the chain starting here, -1 unknown
    koPath *path = nullptr; //!< owning path, not counted
    koPoint point;
    koPoint handleIn;  //!< relative to point
    koPoint handleOut; //!< relative to point
    // The location on another path that this segment meets (counted). Named
    // with a prefix because intersection() is the accessor.
    koCurveLocation *m_intersection = nullptr;

    koSegment() = default;
    koSegment(double x, double y);
    koSegment(const koPoint &point, const koPoint &handleIn, const koPoint &handleOut);

    void addRef() { ++refCount; }
    //! Drops one reference; frees the segment when it held the last one.
    void release();

    //! A free copy: same point and handles; no path, index, flags or location.
    koSegment *clone() const;

    koPoint getPoint() const { return point; }
    koPoint getHandleIn() const { return handleIn; }
    koPoint getHandleOut() const { return handleOut; }
    void setPoint(const koPoint &p);
    void setHandleIn(const koPoint &h);
    void setHandleOut(const koPoint &h);

    koCurveLocation *intersection() const { return m_intersection; }
    //! Holds a reference on \a location (may be null) and releases the old one.
    void setIntersection(koCurveLocation *location);

    bool hasHandles() const;
    void clearHandles();
    bool isFirst() const;
    bool isLast() const;
    //! Swaps the two handles in place.
    void reverse();
    //! A new free segment with the same point and the handles swapped.
    koSegment *reversed() const;
    //! Removes this segment from its path; false without a path.
    bool remove();

    //! The following segment, wrapping round only in a closed path.
    koSegment *getNext() const;
    //! The preceding segment, wrapping round only in a closed path.
    koSegment *getPrevious() const;
    //! The curve that starts here; the last segment of an open path answers
    //! the last curve. Null without a path.
    koCurve *getCurve() const;
    //! The curve before this segment in an open path. In a closed path only
    //! index 0 wraps to the closing curve; any other index answers the curve
    //! that starts at the segment (a kept asymmetry).
    koCurve *getCurvePrev() const;
    //! A new location (caller owns it) at this segment on getCurve(): time 0
    //! when the segment starts that curve, else 1. Null without a curve.
    koCurveLocation *getLocation() const;

    //! In place: point and handles become from*(1 - t) + to*t.
    void interpolate(const koSegment &from, const koSegment &to, double t);
    /*!
        Recomputes the handles of this segment so that its path runs smoothly
        through it, by koPath::SmoothType \a type and \a factor (0.5 is the
        usual value; see koPath::smooth()). Catmull-Rom and geometric handles
        come from the previous and next point alone; the two spline types are
        solved over the neighbours through koPath::smooth(type, factor, i, i).
        At an end of an open path only the inner handle is set: halfway to the
        neighbour's facing control point (zero curvature at the end), or on the
        chord when the path is a single curve. Nothing happens without a path,
        for an unknown type or a non-finite factor.
    */
    void smooth(int type, double factor = 0.5);
    //! Same length, and pairwise points and handles within 1e-12 per axis.
    static bool segsEquals(const QList<koSegment *> &listA, const QList<koSegment *> &listB);
    //! Fills \a coords with point, absolute handleIn and absolute handleOut
    //! (six numbers), transformed by \a matrix when given; with \a apply the
    //! segment takes the transformed values back.
    void transformCoordinates(const koMatrix *matrix, QVector<double> &coords, bool apply);
    void transform(const koMatrix *matrix);

    //! "point: ..., handleIn: ..., handleOut: ..., winding: %1, contour: %1,
    //! visited: %1 %2 %3" (handles only when not zero).
    QString toString() const;

protected:
    // Freed only through release(); virtual so that instrumented subclasses
    // (tests) can observe destruction.
    virtual ~koSegment();

private:
    // Invalidates the caches of the owning path and of the curves touching
    // this segment after its geometry changed.
    void _changed();
    Q_DISABLE_COPY(koSegment)
};

#endif // KOSEGMENT_H
