#ifndef CURVETESTHELPERS_H
#define CURVETESTHELPERS_H

#include "path/pathtesthelpers.h"

#include <algorithm>
#include <cmath>

// Hex-float text of the curve values and further inputs, for regressions.
inline std::string text(const QVector<double> &v, const QVector<double> &more = {})
{
    std::string s;
    for (double c : v + more)
        s += hex(c) + ", ";
    return s;
}

// In turn: ordinary, zero handles, collinear (overshooting too), loop, cusp,
// tiny (1e-6), huge (1e6), handles 1e-13 or 1e-9 off the chord.
inline QVector<double> randomCurve(std::mt19937 &rng, int i)
{
    std::uniform_real_distribution<double> unit(-100, 100);
    const koPoint o(unit(rng), unit(rng)), a(unit(rng), unit(rng)), b(unit(rng), unit(rng)),
            e(unit(rng), unit(rng));
    const double s = unit(rng) / 100, r = unit(rng) / 100, j = i % 16 < 8 ? 1e-13 : 1e-9;
    const int z = i / 8 % 3; // which handles are zero: 1, 2 or both
    // B(t) = o + a (t - t0)^2 + b (t - t0)^3 in powers of t.
    const double t0 = 0.5 + 0.4 * s;
    const koPoint d1 = a * (-2 * t0) + b * (3 * t0 * t0), d2 = a - b * (3 * t0);
    const QVector<koPoint> shapes[] = {
            {o, a, b, e},
            {o, z != 1 ? o : a, z != 0 ? e : b, e},
            {o, o + a * s * 1.5, o + a * r * 1.5, o + a},
            {o, o + a + b, o + b + a * (s * 0.2), o + a + b * (r * 0.2)},
            {o, o + d1 / 3, o + d1 * (2.0 / 3) + d2 / 3, o + d1 + d2 + b},
            {o * 1e-8, a * 1e-8, b * 1e-8, e * 1e-8},
            {o * 1e4, a * 1e4, b * 1e4, e * 1e4},
            {o, o + (e - o) * (s + 1) / 2 + a * j, o + (e - o) * (r + 1) / 2 + b * j, e}};
    const QVector<koPoint> &p = shapes[i % 8];
    return {p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y};
}

inline double scaleOf(const QVector<double> &v)
{
    return std::abs(*std::max_element(
            v.begin(), v.end(), [](double a, double b) { return std::abs(a) < std::abs(b); }));
}

#endif // CURVETESTHELPERS_H
