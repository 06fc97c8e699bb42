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
    appending otherwise); the return value is the number written.
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
    //! b*b - a*c (note: b is already halved), with the products made exact
    //! by Veltkamp splitting when the two terms nearly cancel.
    static double getDiscriminant(double a, double b, double c);
    //! Roots of a*x^2 + b*x + c. Returns -1 when all coefficients are
    //! (near) zero: every x solves it, there are no isolated roots.
    static int solveQuadratic(double a, double b, double c, QVector<double> &roots, double min,
                              double max);
    //! Roots of a*x^3 + b*x^2 + c*x + d; a root is never stored twice.
    static int solveCubic(double a, double b, double c, double d, QVector<double> &roots,
                          double min, double max);
    //! Newton iteration from \a x kept inside [a, b] by bisection, at most
    //! \a n steps; stops when a step is below \a tolerance.
    static double findRoot(const std::function<double(double)> &f,
                           const std::function<double(double)> &df, double x, double a, double b,
                           int n, double tolerance);
    //! n-point Gauss-Legendre integral of f over [a, b]; n in 2..16 (clamped).
    static double integrate(const std::function<double(double)> &f, double a, double b, int n);

    //! The point at \a angle degrees on the ellipse inscribed in \a rect
    //! (counter-clockwise with y up, 0 at the right-hand point, as Qt's arcs).
    static koPoint ellipsePoint(const koRect &rect, double angle);
    static koPoint ellipsePoint(const QRectF &rect, double angle);

    //! Integer hash noise in (-1, 1], 32-bit wrapping arithmetic.
    static double intNoise_1D(int x);
    //! Hash noise averaged with its neighbours (weights 1/2, 1/4, 1/4).
    static double smoothNoise_1D(int x);
    static double cosineInterpolate_1D(double a, double b, double x);
    //! Catmull-Rom style cubic through v1 (x = 0) and v2 (x = 1).
    static double cubicInterpolate_1D(double v0, double v1, double v2, double v3, double x);
    //! Smoothed lattice noise, cosine-interpolated between the integers.
    static double interpolateNoise_1D(double x);
    //! Four octaves (frequency 2^i, amplitude 0.5^i) of interpolateNoise_1D.
    static double perlinNoise_1D(double x);
};

#endif // KONUMERIC_H
