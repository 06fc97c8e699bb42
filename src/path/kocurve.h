#ifndef KOCURVE_H
#define KOCURVE_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"
#include "geometry/korect.h"

#include <QtCore/QString>
#include <QtCore/QVector>

class koMatrix;
class koPath;
class koSegment;

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
    koPath *m_path = nullptr; //!< owning path, not counted
    koRect bounds;            //!< cache, all zero when invalid
    double length = 0;        //!< cache, 0 when invalid
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
    koPoint getPoint1() const;
    koPoint getPoint2() const;
    //! segment1's index in the path.
    int index() const;
    bool isFirst() const;
    bool isLast() const;
    //! The neighbouring curve in the path; wraps round only in a closed path.
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
    //! when it is not null.
    static QVector<double> getValues(const koSegment *segment1, const koSegment *segment2,
                                     const koMatrix *matrix = nullptr);
    QVector<double> getValues(const koMatrix *matrix = nullptr) const;

    //! Point (type 0), derivative (1), normal (2) or curvature (3, in x) at
    //! time \a t. Outside [0, 1] the result is (NaN, NaN).
    static koPoint _evaluate(const QVector<double> &v, double t, int type, bool normalized);
    static koPoint getPoint(const QVector<double> &v, double t);
    koPoint getPointAtTime(double t) const;

    //! Signed area between the curve and its chord, closed through the
    //! origin, such that the sum over a closed path is the enclosed area
    //! (positive for clockwise paths in y-down coordinates).
    static double getArea(const QVector<double> &v);
    double getArea() const;

    static bool hasHandles(const QVector<double> &v);
    bool hasHandles() const;

protected:
    virtual ~koCurve();

private:
    Q_DISABLE_COPY(koCurve)
};

#endif // KOCURVE_H
