#include "rvpath/rvcurve.h"

#include "rvpath/rvvector_p.h"

#include <cmath>

namespace {

// Walk density after construction: steps per unit of control-polygon length.
constexpr double DefaultDensity = 1.5;
// Bounds of the step count: a walk has at least two steps, and at most a
// million (huge or infinite control polygons would otherwise never finish).
constexpr int MinSteps = 2;
constexpr int MaxSteps = 1000000;
// Start value of the best-distance searches, beyond any sensible distance.
constexpr double FarAway = 1e10;
// getstep() answers only for a walk point closer than this (Manhattan).
constexpr double StepReach = 4.0;

// The cursor of the walk point whose squared distance from \a origin best
// matches d * d, among points whose Manhattan distance from it lies strictly
// between d and 2d; -1 when none does. The walk restarts at p0 (passed over
// when \a skipStart) and goes on from the stepping state the last walk left.
int pointAtDistance(RVCurve &curve, const QPointF &origin, double d, bool skipStart)
{
    curve.cursor = curve.steps;
    int best = -1;
    double bestError = FarAway;
    double qx, qy;
    if (skipStart)
        curve.vertex(&qx, &qy);
    const double d2Wanted = d * d;
    while (curve.vertex(&qx, &qy)) {
        const double dx = qx - origin.x();
        const double dy = qy - origin.y();
        const double m = std::abs(dx) + std::abs(dy);
        if (d < m && m < 2 * d) {
            const double e = std::abs(dx * dx + dy * dy - d2Wanted);
            if (e < bestError) {
                bestError = e;
                best = curve.cursor;
            }
        }
    }
    return best;
}

} // namespace

RVCurve::RVCurve(const QPointF &p0, const QPointF &c1, const QPointF &c2, const QPointF &p3)
    : steps(0), cursor(0), density(DefaultDensity)
{
    init(p0, c1, c2, p3);
}

void RVCurve::init(const QPointF &start, const QPointF &control1, const QPointF &control2,
                   const QPointF &end)
{
    // Stored in the order start, end, controls.
    p0 = start;
    p3 = end;
    c1 = control1;
    c2 = control2;

    using rvVector::length;
    const double polygon = length(c1 - p0) + length(c2 - c1) + length(p3 - c2);
    const double wanted = polygon * density;
    int n = MinSteps;
    if (wanted >= MaxSteps)
        n = MaxSteps;
    else if (wanted > MinSteps)
        n = int(wanted); // truncation toward zero; NaN fails both tests
    steps = n;
    cursor = n;

    // Forward differences of B(t) = p0 + A t + B t^2 + C t^3 for the step
    // h = 1/n, written with a = A/3, b = B/3 and c = C and the factors 3h,
    // 3h^2, 6h^2, h^3, 6h^3 (fixed values for the common n = 2).
    double f3h, f3h2, f6h2, fh3, f6h3;
    if (n == 2) {
        f3h = 1.5;
        f3h2 = 0.75;
        f6h2 = 1.5;
        fh3 = 0.125;
        f6h3 = 0.75;
    } else {
        const double h = 1.0 / n;
        const double h2 = h * h;
        const double h3 = h2 * h;
        f3h = 3 * h;
        f3h2 = 3 * h2;
        f6h2 = 6 * h2;
        fh3 = h3;
        f6h3 = 6 * h3;
    }
    const QPointF a = c1 - p0;
    const QPointF b = p0 - 2 * c1 + c2;
    const QPointF c = p3 - p0 + 3 * (c1 - c2);
    pos = p0;
    d1 = a * f3h + b * f3h2 + c * fh3;
    d2 = b * f6h2 + c * f6h3;
    d3 = c * f6h3;

    pos0 = pos;
    d10 = d1;
    d20 = d2;
}

void RVCurve::init(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                   double y3)
{
    init(QPointF(x0, y0), QPointF(x1, y1), QPointF(x2, y2), QPointF(x3, y3));
}

bool RVCurve::vertex(double *x, double *y)
{
    if (cursor < 0)
        return false;
    QPointF out;
    if (cursor == steps) {
        out = p0;
    } else if (cursor == 0) {
        // The end is exact, whatever the differences accumulated.
        *x = p3.x();
        *y = p3.y();
        cursor = -1;
        return true;
    } else {
        pos += d1;
        d1 += d2;
        d2 += d3;
        out = pos;
    }
    *x = out.x();
    *y = out.y();
    --cursor;
    return true;
}

bool RVCurve::vertexn(QPointF &p)
{
    if (cursor > steps)
        return false;
    if (cursor == 0) {
        p = p0;
        cursor = 1;
        return true;
    }
    if (cursor == steps) {
        p = p3;
    } else {
        pos -= d1;
        d1 -= d2;
        d2 -= d3;
        p = pos;
    }
    ++cursor;
    return true;
}

int RVCurve::getstep(double x, double y)
{
    // The walk restarts at p0 but goes on from the stepping state the last
    // walk left (kept: pos and the differences are not rewound).
    cursor = steps;
    int best = -1;
    double bestDistance = FarAway;
    double qx, qy;
    while (vertex(&qx, &qy)) {
        const double m = std::abs(qx - x) + std::abs(qy - y);
        if (m < bestDistance) {
            bestDistance = m;
            best = cursor;
        }
    }
    return bestDistance < StepReach ? best : -1;
}

bool RVCurve::splitcurve(QPointF *left, QPointF *right, double t)
{
    if (!(t >= 0 && t <= 1))
        return false;
    // de Casteljau.
    const QPointF a = p0 + (c1 - p0) * t;
    const QPointF b = c1 + (c2 - c1) * t;
    const QPointF c = c2 + (p3 - c2) * t;
    const QPointF ab = a + (b - a) * t;
    const QPointF bc = b + (c - b) * t;
    const QPointF mid = ab + (bc - ab) * t;
    left[0] = p0;
    left[1] = a;
    left[2] = ab;
    left[3] = mid;
    right[0] = mid;
    right[1] = bc;
    right[2] = c;
    right[3] = p3;
    return true;
}

bool RVCurve::splitcurve(QPointF *left, QPointF *right, double x, double y)
{
    const int s = getstep(x, y);
    if (s == -1)
        return false;
    // Kept: the cursor counts down along the curve, so this t is measured
    // from the end of the walk.
    return splitcurve(left, right, double(s) / steps);
}

int RVCurve::frontPtAtDist(double d)
{
    return pointAtDistance(*this, p0, d, true);
}

int RVCurve::backPtAtDist(double d)
{
    return pointAtDistance(*this, p3, d, false);
}
