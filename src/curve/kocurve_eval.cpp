#include "path/kocurve.h"

#include "geometry/komatrix.h"
#include "geometry/kotolerance.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <cmath>

static koPoint nanPoint()
{
    return koPoint(qQNaN(), qQNaN());
}

static bool withinEpsilon(double v)
{
    return v >= -koTolerance::Epsilon && v <= koTolerance::Epsilon;
}

QVector<double> koCurve::getValues(const koSegment *segment1, const koSegment *segment2,
                                   const koMatrix *matrix)
{
    if (!segment1 || !segment2)
        return QVector<double>(8, qQNaN());
    const koPoint p1 = segment1->point;
    const koPoint p2 = segment2->point;
    QVector<double> values{p1.x,
                           p1.y,
                           p1.x + segment1->handleOut.x,
                           p1.y + segment1->handleOut.y,
                           p2.x + segment2->handleIn.x,
                           p2.y + segment2->handleIn.y,
                           p2.x,
                           p2.y};
    if (matrix)
        matrix->transformCoords(values, 4);
    return values;
}

QVector<double> koCurve::getValues(const koMatrix *matrix) const
{
    return getValues(m_segment1, m_segment2, matrix);
}

koPoint koCurve::_evaluate(const QVector<double> &v, double t, int type, bool normalized)
{
    // Also rejects a NaN time.
    if (v.size() < 8 || !(t >= 0 && t <= 1))
        return nanPoint();

    const double p1x = v[0], p1y = v[1];
    double c1x = v[2], c1y = v[3];
    double c2x = v[4], c2y = v[5];
    const double p2x = v[6], p2y = v[7];

    // A handle within numeric zero of its point is the point: the end
    // derivative is then exactly zero and the tangent falls back below.
    if (withinEpsilon(c1x - p1x) && withinEpsilon(c1y - p1y)) {
        c1x = p1x;
        c1y = p1y;
    }
    if (withinEpsilon(c2x - p2x) && withinEpsilon(c2y - p2y)) {
        c2x = p2x;
        c2y = p2y;
    }

    // Power basis: B(t) = ((a t + b) t + c) t + p1.
    const double cx = 3 * (c1x - p1x);
    const double bx = 3 * (c2x - c1x) - cx;
    const double ax = p2x - p1x - cx - bx;
    const double cy = 3 * (c1y - p1y);
    const double by = 3 * (c2y - c1y) - cy;
    const double ay = p2y - p1y - cy - by;

    if (type == 0) {
        // The end points are returned bit for bit.
        if (t == 0)
            return koPoint(p1x, p1y);
        if (t == 1)
            return koPoint(p2x, p2y);
        return koPoint(((ax * t + bx) * t + cx) * t + p1x, ((ay * t + by) * t + cy) * t + p1y);
    }

    double x, y;
    if (t < koTolerance::CurveTimeMin) {
        x = cx;
        y = cy;
    } else if (t > koTolerance::CurveTimeMax) {
        x = 3 * (p2x - c2x);
        y = 3 * (p2y - c2y);
    } else {
        x = (3 * ax * t + 2 * bx) * t + cx;
        y = (3 * ay * t + 2 * by) * t + cy;
    }

    if (normalized) {
        // With a zero handle the derivative vanishes at that end; the
        // direction between the handles is the limit of the tangent there.
        if (x == 0 && y == 0 && (t < koTolerance::CurveTimeMin || t > koTolerance::CurveTimeMax)) {
            x = c2x - c1x;
            y = c2y - c1y;
        }
        const double len = std::sqrt(x * x + y * y);
        if (len != 0) {
            x /= len;
            y /= len;
        }
    }

    if (type == 3) {
        const double x2 = 6 * ax * t + 2 * bx;
        const double y2 = 6 * ay * t + 2 * by;
        const double d = std::pow(x * x + y * y, 1.5);
        if (d == 0)
            return koPoint(0, 0);
        return koPoint((x * y2 - y * x2) / d, 0);
    }
    if (type == 2)
        return koPoint(y, -x);
    return koPoint(x, y);
}

koPoint koCurve::getPoint(const QVector<double> &v, double t)
{
    return _evaluate(v, t, 0, false);
}

koPoint koCurve::getPointAtTime(double t) const
{
    return getPoint(getValues(), t);
}

double koCurve::getArea(const QVector<double> &v)
{
    if (v.size() < 8)
        return qQNaN();
    const double x0 = v[0], y0 = v[1], x1 = v[2], y1 = v[3];
    const double x2 = v[4], y2 = v[5], x3 = v[6], y3 = v[7];
    // Green's theorem on the cubic, closed through the origin; for a straight
    // curve this is the shoelace term (x0 y3 - x3 y0) / 2.
    return 3
            * ((y3 - y0) * (x1 + x2) - (x3 - x0) * (y1 + y2) + y1 * (x0 - x2) - x1 * (y0 - y2)
               + y3 * (x2 + x0 / 3) - x3 * (y2 + y0 / 3))
            / 20;
}

double koCurve::getArea() const
{
    return getArea(getValues());
}

bool koCurve::hasHandles(const QVector<double> &v)
{
    if (v.size() < 8)
        return false;
    return !(withinEpsilon(v[0] - v[2]) && withinEpsilon(v[1] - v[3]) && withinEpsilon(v[4] - v[6])
             && withinEpsilon(v[5] - v[7]));
}

bool koCurve::hasHandles() const
{
    return (m_segment1 && !m_segment1->handleOut.isZero())
            || (m_segment2 && !m_segment2->handleIn.isZero());
}

koPoint koCurve::getTangent(const QVector<double> &v, double t)
{
    return _evaluate(v, t, 1, true);
}

koPoint koCurve::getNormal(const QVector<double> &v, double t)
{
    return _evaluate(v, t, 2, true);
}

koPoint koCurve::getWeightedTangent(const QVector<double> &v, double t)
{
    return _evaluate(v, t, 1, false);
}

koPoint koCurve::getWeightedNormal(const QVector<double> &v, double t)
{
    return _evaluate(v, t, 2, false);
}

double koCurve::getCurvature(const QVector<double> &v, double t)
{
    return _evaluate(v, t, 3, false).x;
}

koPoint koCurve::getTangentAtTime(double t) const
{
    return getTangent(getValues(), t);
}

koPoint koCurve::getNormalAtTime(double t) const
{
    return getNormal(getValues(), t);
}

koPoint koCurve::getWeightedTangentAtTime(double t) const
{
    return getWeightedTangent(getValues(), t);
}

koPoint koCurve::getWeightedNormalAtTime(double t) const
{
    return getWeightedNormal(getValues(), t);
}

double koCurve::getCurvatureAtTime(double t) const
{
    return getCurvature(getValues(), t);
}
