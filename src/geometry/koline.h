#ifndef KOLINE_H
#define KOLINE_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"

/*!
    \class koLine
    A line through a point with a direction vector, read either as an
    infinite line or as the segment from the point to point + vector. The
    static forms take plain coordinates so that curve code needs no objects;
    their \a asVector flag says whether the second pair is a vector (true) or
    an end point (false).
*/
class RVGRAPHICS_EXPORT koLine
{
public:
    double px = 0;
    double py = 0;
    double vx = 0;
    double vy = 0;

    koLine() = default;
    koLine(double ppx, double ppy, double x2, double y2, bool asVector);
    koLine(const koPoint &point, const koPoint &second, bool asVector);

    koPoint getPoint() const { return koPoint(px, py); }
    koPoint getVector() const { return koPoint(vx, vy); }
    double getLength() const;

    //! Signed distance of (x, y) from the infinite line; positive to the
    //! right of the direction in y-up terms (see the exact axis cases).
    static double getSignedDistance(double px, double py, double vx, double vy, double x, double y,
                                    bool asVector);
    double getDistance(const koPoint &p) const;
    //! -1, 0 or 1: the side of \a p. A point on the infinite line is 0
    //! whatever \a isInfinite says.
    int getSide(const koPoint &p, bool isInfinite) const;
    static int getSide(double px, double py, double vx, double vy, double x, double y,
                       bool asVector, bool isInfinite);
    bool isCollinear(const koLine &line) const;
    bool isOrthogonal(const koLine &line) const;

    //! Intersection of the line through p1 (direction or end a) with the line
    //! through p2 (direction or end b). Bounded segments unless \a isInfinite;
    //! an end meeting passes (tolerance 1e-12). Parallel or missing: a point
    //! of two quiet NaNs (test with koPoint::isNaN).
    static koPoint intersect(double p1x, double p1y, double ax, double ay, double p2x, double p2y,
                             double bx, double by, bool asVector, bool isInfinite);
    koPoint intersect(const koLine &line, bool isInfinite) const;
};

Q_DECLARE_TYPEINFO(koLine, Q_PRIMITIVE_TYPE);

#endif // KOLINE_H
