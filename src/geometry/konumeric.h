#ifndef KONUMERIC_H
#define KONUMERIC_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"
#include "geometry/korect.h"

#include <QtCore/QRectF>
#include <QtCore/QVector>

#include <functional>

/*!
    \class koNumeric
    Static numerical toolkit: robust quadratic and cubic roots restricted to
    an interval, Gauss-Legendre quadrature, a safeguarded Newton root finder,
    and one-dimensional value noise.

    Interval rule of the solvers: with min == max == 0 every finite root is
    accepted unclamped; otherwise a root r is accepted when
    min - 1e-12 < r < max + 1e-12 and stored clamped into [min, max]. Roots are
    written into \a roots from index 0 on (overwriting entries already there,
    appending otherwise); the return value is the number written. A value is
    never written twice: roots that coincide after clamping are stored once.
    Tolerances are absolute; only coefficients whose largest magnitude lies
    outside [1e-8, 1e8] are brought near 1 by a power of two first (the cubic
    always, the quadratic when its discriminant is within round-off of 0).
*/
class RVGRAPHICS_EXPORT koNumeric
{
public:
    //! Gauss-Legendre tables: row n - 2 holds the non-negative nodes (and
    //! their weights) of the n-point rule, n = 2..16, node 0 first for odd n.
    static const double abscissas[15][8];
    static const double weights[15][8];

    //! min if min > value, else max if value > max, else value.
    static double clamp(double value, double min, double max);
    static double log2(double x);
    //! b*b - a*c (note: b is already halved). When the two products nearly
    //! cancel, their rounding errors, found by Veltkamp splitting, are added
    //! back, which leaves only the far smaller rounding of those corrections.
    static double getDiscriminant(double a, double b, double c);
    //! Roots of a*x^2 + b*x + c. Returns -1 when all coefficients are
    //! (near) zero: every x solves it, there are no isolated roots.
    static int solveQuadratic(double a, double b, double c, QVector<double> &roots, double min,
                              double max);
    //! Roots of a*x^3 + b*x^2 + c*x + d; a root is never stored twice.
    //! Returns -1 when all coefficients are (near) zero.
    static int solveCubic(double a, double b, double c, double d, QVector<double> &roots,
                          double min, double max);
    //! Newton iteration from \a x kept inside [a, b] by bisection, at most
    //! \a n steps (f is called at most n times); stops when a step is below
    //! \a tolerance. The bracket assumes f increases through the root: f > 0
    //! moves the upper end, otherwise the lower end. A step that leaves the
    //! bracket or is not finite is replaced by bisection. The result is
    //! clamped into the given [a, b]; n < 1 returns \a x (clamped).
    static double findRoot(const std::function<double(double)> &f,
                           const std::function<double(double)> &df, double x, double a, double b,
                           int n, double tolerance);
    //! n-point Gauss-Legendre integral of f over [a, b]; n in 2..16 (clamped).
    static double integrate(const std::function<double(double)> &f, double a, double b, int n);

    //! The point at \a angle degrees on the ellipse inscribed in \a rect
    //! (counter-clockwise with y up, 0 at the right-hand point, as Qt's arcs):
    //! the exact point centre + (rx cos(angle), -ry sin(angle)).
    static koPoint ellipsePoint(const koRect &rect, double angle);
    static koPoint ellipsePoint(const QRectF &rect, double angle);

    //! Integer hash noise in (-1, 1], 32-bit wrapping arithmetic.
    static double intNoise_1D(int x);
    //! Hash noise averaged with its neighbours (weights 1/2, 1/4, 1/4); the
    //! neighbours of INT_MIN and INT_MAX wrap around.
    static double smoothNoise_1D(int x);
    //! Blends a (x = 0) into b (x = 1) with the weight (1 - cos(pi x)) / 2.
    static double cosineInterpolate_1D(double a, double b, double x);
    //! Catmull-Rom cubic through v1 (x = 0) and v2 (x = 1), with the slopes
    //! (v2 - v0) / 2 and (v3 - v1) / 2 there.
    static double cubicInterpolate_1D(double v0, double v1, double v2, double v3, double x);
    //! smoothNoise_1D at the integers floor(x) and floor(x) + 1,
    //! cosine-interpolated at the fraction between them. The lattice repeats
    //! every 2^32 cells; a NaN or infinite x gives NaN.
    static double interpolateNoise_1D(double x);
    //! Four octaves (frequency 2^i, amplitude 0.5^i, i = 0..3) of
    //! interpolateNoise_1D; continuous, within [-1.875, 1.875].
    static double perlinNoise_1D(double x);
};

#endif // KONUMERIC_H
