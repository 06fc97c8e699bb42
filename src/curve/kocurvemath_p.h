#ifndef KOCURVEMATH_P_H
#define KOCURVEMATH_P_H

// Internal, not installed: allocation-free kernels shared by the curve code.

#include <algorithm>

namespace koCurveMath {

// De Casteljau split of the eight curve values \a v at t: the piece before t
// into left, the piece after t into right (either may be null, either may
// alias v). Every interpolation is a * (1 - t) + b * t, as koCurve::subdivide.
inline void subdivideValues(const double *v, double t, double *left, double *right)
{
    const double u = 1 - t;
    const double p1x = v[0], p1y = v[1], p2x = v[6], p2y = v[7];
    const double p3x = u * v[0] + t * v[2], p3y = u * v[1] + t * v[3];
    const double p4x = u * v[2] + t * v[4], p4y = u * v[3] + t * v[5];
    const double p5x = u * v[4] + t * v[6], p5y = u * v[5] + t * v[7];
    const double p6x = u * p3x + t * p4x, p6y = u * p3y + t * p4y;
    const double p7x = u * p4x + t * p5x, p7y = u * p4y + t * p5y;
    const double p8x = u * p6x + t * p7x, p8y = u * p6y + t * p7y;
    if (left) {
        const double l[8] = {p1x, p1y, p3x, p3y, p6x, p6y, p8x, p8y};
        std::copy(l, l + 8, left);
    }
    if (right) {
        const double r[8] = {p8x, p8y, p7x, p7y, p5x, p5y, p2x, p2y};
        std::copy(r, r + 8, right);
    }
}

} // namespace koCurveMath

#endif // KOCURVEMATH_P_H
