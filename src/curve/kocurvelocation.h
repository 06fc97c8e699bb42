#ifndef KOCURVELOCATION_H
#define KOCURVELOCATION_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"

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
    koCurve *getCurve() const { return curve; }
    double getTime() const { return time; }
    koPoint getPoint() const { return point; }

protected:
    virtual ~koCurveLocation();

private:
    Q_DISABLE_COPY(koCurveLocation)
};

#endif // KOCURVELOCATION_H
