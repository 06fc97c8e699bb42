#include "path/kocurve.h"

#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"

#include <QtCore/QtNumeric>

#include <cmath>

// Times of points on a curve: exact time of a point on the curve, nearest
// time of any point, and the times at which one coordinate takes a value.

namespace {

// Samples of the nearest-time search before refinement: t = i / 100.
constexpr int NearestSamples = 100;

// Bound on the refinement steps of the nearest-time search. Each step moves
// to a strictly nearer point or halves the step; in practice a few dozen
// steps reach the time epsilon.
constexpr int MaxNearestSteps = 4096;

bool isFiniteValues(const QVector<double> &v)
{
    if (v.size() < 8)
        return false;
    for (int i = 0; i < 8; ++i) {
        if (!qIsFinite(v[i]))
            return false;
    }
    return true;
}

} // namespace

int koCurve::solveCubic(const QVector<double> &v, double coord, double value,
                        QVector<double> &roots, double min, double max)
{
    if (v.size() < 8 || !(coord >= 0 && coord < 2) || qIsNaN(value))
        return 0;
    const int c = int(coord);
    const double s0 = v[c], s1 = v[c + 2], s2 = v[c + 4], s3 = v[c + 6];
    // A value beyond the whole control polygon is never reached.
    if ((value > s0 && value > s1 && value > s2 && value > s3)
        || (value < s0 && value < s1 && value < s2 && value < s3))
        return 0;
    const double cc = 3 * (s1 - s0);
    const double b = 3 * (s2 - s1) - cc;
    const double a = s3 - s0 - cc - b;
    return koNumeric::solveCubic(a, b, cc, s0 - value, roots, min, max);
}

double koCurve::getTimeOf(const QVector<double> &v, const koPoint &point)
{
    if (v.size() < 8)
        return koTolerance::NoTime;
    const koPoint p1(v[0], v[1]);
    const koPoint p2(v[6], v[7]);
    if (point.isClose(p1, koTolerance::Epsilon))
        return 0;
    if (point.isClose(p2, koTolerance::Epsilon))
        return 1;
    // The solver writes from index 0; a buffer kept per thread spares an
    // allocation on every call.
    static thread_local QVector<double> roots;
    const double coords[2] = {point.x, point.y};
    for (int coord = 0; coord < 2; ++coord) {
        const int count = solveCubic(v, coord, coords[coord], roots, 0, 1);
        for (int i = 0; i < count; ++i) {
            const double u = roots.at(i);
            if (point.isClose(getPoint(v, u), koTolerance::Geometric))
                return u;
        }
    }
    // The solver may miss a root right at an end where the curve is flat.
    if (point.isClose(p1, koTolerance::Geometric))
        return 0;
    if (point.isClose(p2, koTolerance::Geometric))
        return 1;
    return koTolerance::NoTime;
}

double koCurve::getTimeOf(const koPoint &point) const
{
    return getTimeOf(getValues(), point);
}

double koCurve::getNearestTime(const QVector<double> &v, const koPoint &point)
{
    if (!isFiniteValues(v) || !qIsFinite(point.x) || !qIsFinite(point.y))
        return koTolerance::NoTime;
    const koPoint p1(v[0], v[1]);
    if (isStraight(v)) {
        // Project onto the chord, then find that point's time on the curve.
        const koPoint u(v[6] - v[0], v[7] - v[1]);
        const double length2 = u.x * u.x + u.y * u.y;
        if (length2 == 0)
            return 0;
        const double t = (point - p1).dot(u) / length2;
        if (t < koTolerance::Epsilon)
            return 0;
        if (t > 1 - koTolerance::Epsilon)
            return 1;
        return getTimeOf(v, p1 + u * t);
    }

    double minT = 0;
    double minDist = point.getDistance(p1, true);
    for (int i = 1; i <= NearestSamples; ++i) {
        const double t = double(i) / NearestSamples;
        const double dist = point.getDistance(getPoint(v, t), true);
        if (dist < minDist) {
            minDist = dist;
            minT = t;
        }
    }
    // A candidate counts only inside the curve and when strictly nearer.
    auto refine = [&](double t) {
        if (t >= 0 && t <= 1) {
            const double dist = point.getDistance(getPoint(v, t), true);
            if (dist < minDist) {
                minDist = dist;
                minT = t;
                return true;
            }
        }
        return false;
    };
    double step = 1.0 / (NearestSamples * 2);
    for (int i = 0; step > koTolerance::CurveTimeMin && i < MaxNearestSteps; ++i) {
        if (!refine(minT - step) && !refine(minT + step))
            step /= 2;
    }
    return minT;
}
