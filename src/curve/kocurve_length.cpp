#include "path/kocurve.h"

#include "curve/kocurvemath_p.h"
#include "geometry/kogausslegendre_p.h"
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
            koCurveMath::subdivideValues(w, b, w, nullptr);
            a /= b;
        }
        if (a > 0)
            koCurveMath::subdivideValues(w, a, nullptr, w);
        const double dx = w[6] - w[0];
        const double dy = w[7] - w[1];
        return std::sqrt(dx * dx + dy * dy);
    }
    return koQuadrature::gaussLegendre(Speed(v.constData()), a, b, getIterations(a, b));
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
        length += koQuadrature::gaussLegendre(speed, prev, t, getIterations(prev, t));
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
