#ifndef KOPOINT_H
#define KOPOINT_H

#include "rvgraphics_global.h"

#include <QtCore/QPointF>
#include <QtCore/QString>

class koMatrix;
class koRect;

/*!
    \class koPoint
    A point or a free vector (handle, tangent, normal) in double precision.

    Operations documented as "new point" leave the object unchanged and return
    the result; those documented as "in place" modify the object. Note that
    translated() deliberately works in place, despite its name.

    Angles are in degrees unless the name contains InRadians. Near-zero tests
    use the library's numeric zero, 1e-12, inclusive.
*/
class RVGRAPHICS_EXPORT koPoint
{
public:
    double x = 0;
    double y = 0;

    koPoint() = default;
    koPoint(double px, double py) : x(px), y(py) {}
    explicit koPoint(const QPointF &p) : x(p.x()), y(p.y()) {}

    QPointF toPt() const;
    //! "x: %1, y: %2" with QString::arg's default number format.
    QString toString() const;

    //! Strict per-axis test: |dx| < tolerance and |dy| < tolerance.
    //! equals(p, 0) is therefore always false.
    bool equals(const koPoint &other, double tolerance) const;
    //! Inclusive Euclidean test: distance <= tolerance.
    bool isClose(const koPoint &other, double tolerance) const;

    double getLength() const;
    //! Scales the vector to \a length, in place. A zero vector becomes NaN
    //! (there is deliberately no guard).
    void setLength(double length);
    double dot(const koPoint &other) const;
    double cross(const koPoint &other) const;

    //! With \a other: the unsigned angle between the two vectors (0..pi), or
    //! a signalling NaN when the product of their lengths is within 1e-12 of
    //! zero (so also for two tiny vectors). Without: atan2(y, x), 0 for the
    //! zero vector.
    double getAngleInRadians(const koPoint *other = nullptr) const;
    double getAngle(const koPoint *other = nullptr) const;
    //! Keeps the length and sets the direction, in place; a zero vector is
    //! left unchanged.
    void setAngleInRadians(double angle);
    void setAngle(double angle);
    //! Signed angle from this vector to \a other, in (-180, 180].
    double getDirectedAngle(const koPoint &other) const;
    //! 1..4 counter-clockwise from the positive quadrant; zero counts as
    //! positive.
    double getQuadrant() const;
    double getDistance(const koPoint &other, bool squared = false) const;

    //! New vector of the given length in the same direction; the zero vector
    //! stays zero.
    koPoint normalize(double length = 1) const;
    koPoint add(const koPoint &other) const;
    koPoint subtract(const koPoint &other) const;
    koPoint multiply(double factor) const;
    koPoint divide(double divisor) const;
    koPoint negate() const;
    //! New point rotated by \a angle degrees about the origin or \a center.
    //! An angle of exactly 0 returns an exact copy.
    koPoint rotate(double angle, const koPoint *center = nullptr) const;
    //! New point mapped by \a matrix; a null matrix returns a copy.
    koPoint transform(const koMatrix *matrix) const;
    //! Moves this point by (dx, dy) IN PLACE and returns nothing.
    void translated(double dx, double dy);

    //! Strictly inside \a rect: a point on the border is outside.
    bool isInside(const koRect &rect) const;
    static bool isCollinear(double x1, double y1, double x2, double y2);
    bool isCollinear(const koPoint &other) const;
    static bool isOrthogonal(double x1, double y1, double x2, double y2);
    bool isOrthogonal(const koPoint &other) const;
    bool isZero() const;
    bool isNaN() const;
    //! Replaces this vector by its projection onto \a other, in place.
    void project(const koPoint &other);

    static koPoint min(const koPoint &a, const koPoint &b);
    static koPoint max(const koPoint &a, const koPoint &b);
    //! Two qrand() calls: the first gives y, the second x (0..RAND_MAX).
    static koPoint random();
    //! Rounds both coordinates with qRound's rule, in place: halves round
    //! toward positive infinity, so (2.5, -2.5) becomes (3, -2). Values too
    //! large for a 32-bit int follow the same rule without the int
    //! conversion; NaN and infinities are kept.
    void round();

    // Operator forms of add/subtract/multiply/divide/negate for Qt-style code.
    koPoint operator+(const koPoint &o) const { return koPoint(x + o.x, y + o.y); }
    koPoint operator-(const koPoint &o) const { return koPoint(x - o.x, y - o.y); }
    koPoint operator*(double f) const { return koPoint(x * f, y * f); }
    koPoint operator/(double f) const { return koPoint(x / f, y / f); }
    koPoint operator-() const { return koPoint(-x, -y); }
    koPoint &operator+=(const koPoint &o)
    {
        x += o.x;
        y += o.y;
        return *this;
    }
    koPoint &operator-=(const koPoint &o)
    {
        x -= o.x;
        y -= o.y;
        return *this;
    }
    //! Exact comparison (no tolerance).
    bool operator==(const koPoint &o) const { return x == o.x && y == o.y; }
    bool operator!=(const koPoint &o) const { return !(*this == o); }
};

Q_DECLARE_TYPEINFO(koPoint, Q_PRIMITIVE_TYPE);

#endif // KOPOINT_H
