#include "path/kocurve.h"

#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

// Arc length of a curve and its inverse, the time at a length.

namespace {

// Root-finder steps of the arc-length inversion.
constexpr int TimeAtSteps = 32;

// The speed |B'(t)| in power form: B'(t) = (a t + b) t + c per axis.
struct Speed
{
    double ax, bx, cx, ay, by, cy;

    explicit Speed(const double *v)
    {
        const double x0 = v[0], y0 = v[1], x1 = v[2], y1 = v[3];
        const double x2 = v[4], y2 = v[5], x3 = v[6], y3 = v[7];
        ax = 9 * (x1 - x2) + 3 * (x3 - x0);
        bx = 6 * (x0 + x2) - 12 * x1;
        cx = 3 * (x1 - x0);
        ay = 9 * (y1 - y2) + 3 * (y3 - y0);
        by = 6 * (y0 + y2) - 12 * y1;
        cy = 3 * (y1 - y0);
    }

    double operator()(double t) const
    {
        const double dx = (ax * t + bx) * t + cx;
        const double dy = (ay * t + by) * t + cy;
        return std::sqrt(dx * dx + dy * dy);
    }
};

// koNumeric::integrate without the std::function indirection: the same
// nodes, weights and order of summation, so the results agree bit for bit.
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
        sum = koNumeric::weights[row][0] * f(B);
        i = 1;
    }
    for (; i < m; ++i) {
        const double x = A * koNumeric::abscissas[row][i];
        sum += koNumeric::weights[row][i] * (f(B + x) + f(B - x));
    }
    return A * sum;
}

void subdivideValues(const double *v, double t, double *left, double *right)
{
    const double u = 1 - t;
    const double p3x = u * v[0] + t * v[2], p3y = u * v[1] + t * v[3];
    const double p4x = u * v[2] + t * v[4], p4y = u * v[3] + t * v[5];
    const double p5x = u * v[4] + t * v[6], p5y = u * v[5] + t * v[7];
    const double p6x = u * p3x + t * p4x, p6y = u * p3y + t * p4y;
    const double p7x = u * p4x + t * p5x, p7y = u * p4y + t * p5y;
    const double p8x = u * p6x + t * p7x, p8y = u * p6y + t * p7y;
    if (left) {
        const double l[8] = {v[0], v[1], p3x, p3y, p6x, p6y, p8x, p8y};
        std::copy(l, l + 8, left);
    }
    if (right) {
        const double r[8] = {p8x, p8y, p7x, p7y, p5x, p5y, v[6], v[7]};
        std::copy(r, r + 8, right);
    }
}

} // namespace

double koCurve::getLength(const QVector<double> &v, double a, double b)
{
    if (v.size() < 8)
        return qQNaN();
    if (isStraight(v)) {
        // Exact: the chord of the piece between a and b.
        double w[8];
        std::copy(v.constData(), v.constData() + 8, w);
        if (b < 1) {
            subdivideValues(w, b, w, nullptr);
            a /= b;
        }
        if (a > 0)
            subdivideValues(w, a, nullptr, w);
        const double dx = w[6] - w[0];
        const double dy = w[7] - w[1];
        return std::sqrt(dx * dx + dy * dy);
    }
    return gaussLegendre(Speed(v.constData()), a, b, getIterations(a, b));
}

std::function<double(double)> koCurve::_getLengthIntegrand(const QVector<double> &v)
{
    if (v.size() < 8)
        return [](double) { return qQNaN(); };
    return Speed(v.constData());
}

int koCurve::getIterations(double a, double b)
{
    const double n = std::ceil(std::abs(b - a) * 32);
    // Written so that NaN and infinite spans take the largest rule.
    if (!(n < 16))
        return 16;
    return n < 2 ? 2 : int(n);
}

double koCurve::getTimeAt(const QVector<double> &v, double offset, double start)
{
    if (v.size() < 8 || qIsNaN(offset))
        return koTolerance::NoTime;
    if (start == koTolerance::NoTime)
        start = offset < 0 ? 1 : 0;
    if (!(start >= 0 && start <= 1))
        return koTolerance::NoTime;
    if (offset == 0)
        return start;
    const bool forward = offset > 0;
    const double a = forward ? start : 0;
    const double b = forward ? 1 : start;
    const double rangeLength = getLength(v, a, b);
    if (!qIsFinite(rangeLength))
        return koTolerance::NoTime;
    const double diff = std::abs(offset) - rangeLength;
    if (std::abs(diff) < koTolerance::Epsilon)
        return forward ? b : a;
    if (diff > koTolerance::Epsilon)
        return koTolerance::NoTime;

    // Newton on the length from start: the integral is accumulated from
    // the previously evaluated time, which the root finder visits in turn.
    const Speed speed(v.constData());
    const double estimate = offset / rangeLength;
    double length = 0;
    double prev = start;
    const std::function<double(double)> f = [&](double t) {
        length += gaussLegendre(speed, prev, t, getIterations(prev, t));
        prev = t;
        return length - offset;
    };
    const std::function<double(double)> ds = speed;
    return koNumeric::findRoot(f, ds, start + estimate, a, b, TimeAtSteps, koTolerance::Epsilon);
}

double koCurve::getLength()
{
    if (length == 0)
        length = getLength(getValues(), 0, 1);
    return length;
}

double koCurve::getPartLength(double a, double b) const
{
    return getLength(getValues(), a, b);
}

double koCurve::getOffsetAtTime(double t) const
{
    return getPartLength(0, t);
}

koPoint koCurve::getPointAt(double offset, bool isTime) const
{
    const QVector<double> values = getValues();
    const double t = isTime ? offset : getTimeAt(values, offset, koTolerance::NoTime);
    return getPoint(values, t);
}
