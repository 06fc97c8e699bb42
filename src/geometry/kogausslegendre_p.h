#ifndef KOGAUSSLEGENDRE_P_H
#define KOGAUSSLEGENDRE_P_H

// Internal, not installed: the n-point Gauss-Legendre rule as a template, so
// that hot callers (curve lengths) avoid the std::function indirection of
// koNumeric::integrate. Both use this loop, so they agree bit for bit.

#include "geometry/konumeric.h"

#include <QtCore/QtGlobal>

namespace koQuadrature {

template<class F>
inline double gaussLegendre(const F &f, double a, double b, int n)
{
    n = qBound(2, n, 16);
    const int row = n - 2;
    const int m = (n + 1) / 2;
    const double A = (b - a) * 0.5;
    const double B = A + a;
    double sum = 0;
    int i = 0;
    if (n & 1) {
        // Odd rules have the node 0 first.
        sum = koNumeric::weights[row][0] * f(B);
        i = 1;
    }
    for (; i < m; ++i) {
        const double x = A * koNumeric::abscissas[row][i];
        sum += koNumeric::weights[row][i] * (f(B + x) + f(B - x));
    }
    return A * sum;
}

} // namespace koQuadrature

#endif // KOGAUSSLEGENDRE_P_H
