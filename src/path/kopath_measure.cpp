// Measurement of a koPath by length along it and by nearness to a point: thin
// drivers over the curve functions, deciding the order of the walk, the
// treatment of the ends and the way lengths are accumulated.

#include "path/kopath.h"

#include "curve/kocurvelocation.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"

#include <QtCore/QtNumeric>

#include <cmath>

namespace {

koPoint nanPoint()
{
    return koPoint(qQNaN(), qQNaN());
}

// The running length is kept whole: every step truncates toward zero. Done
// on doubles so that NaN, infinite or huge lengths stay defined (a cast to an
// integer type would not be).
double truncated(double value)
{
    return std::trunc(value);
}

// Evaluates a static curve function at the location \a offset along \a path;
// \a fallback when the offset is off the path. The temporary location is
// released here.
template<typename Result, typename Function>
Result evaluateAt(koPath *path, double offset, Function function, Result fallback)
{
    koCurveLocation *location = path->getLocationAt(offset);
    if (!location)
        return fallback;
    Result result = fallback;
    koCurve *curve = location->getCurve();
    const double t = location->getTime();
    if (curve && t != koTolerance::NoTime)
        result = function(curve->getValues(), t);
    location->release();
    return result;
}

} // namespace

double koPath::getLength()
{
    if (m_length != 0)
        return m_length;
    double accumulator = 0;
    for (koCurve *curve : getCurves())
        accumulator = truncated(accumulator + curve->getLength());
    m_length = accumulator;
    return accumulator;
}

koCurveLocation *koPath::getLocationAt(double offset)
{
    if (offset < 0)
        offset += getLength();
    // Still before the start after counting from the end: off the path (the
    // curve search below would otherwise walk backwards from a curve's end).
    if (offset < 0)
        return nullptr;
    const QList<koCurve *> &list = getCurves();
    double running = 0;
    for (koCurve *curve : list) {
        const double before = running;
        running = truncated(before + curve->getLength());
        if (offset < running) {
            const double t =
                    koCurve::getTimeAt(curve->getValues(), offset - before, koTolerance::NoTime);
            if (t >= 0 && t <= 1)
                return new koCurveLocation(curve, t, nanPoint(), false, 0);
            return nullptr;
        }
    }
    // The whole path is walked: the end point answers offsets up to the
    // (truncated) length.
    if (!list.isEmpty() && offset <= getLength())
        return new koCurveLocation(list.last(), 1, nanPoint(), false, 0);
    return nullptr;
}

koPoint koPath::getPointAt(double offset)
{
    koCurveLocation *location = getLocationAt(offset);
    if (!location)
        return nanPoint();
    const koPoint point = location->getPoint();
    location->release();
    return point;
}

koPoint koPath::getTangentAt(double offset)
{
    return evaluateAt(this, offset, &koCurve::getTangent, nanPoint());
}

koPoint koPath::getNormalAt(double offset)
{
    return evaluateAt(this, offset, &koCurve::getNormal, nanPoint());
}

koPoint koPath::getWeightedTangentAt(double offset)
{
    return evaluateAt(this, offset, &koCurve::getWeightedTangent, nanPoint());
}

koPoint koPath::getWeightedNormalAt(double offset)
{
    return evaluateAt(this, offset, &koCurve::getWeightedNormal, nanPoint());
}

double koPath::getCurvatureAt(double offset)
{
    return evaluateAt(this, offset, &koCurve::getCurvature, double(qQNaN()));
}

koCurveLocation *koPath::getLocationOf(const koPoint &point)
{
    for (koCurve *curve : getCurves()) {
        if (koCurveLocation *location = curve->getLocationOf(point))
            return location;
    }
    return nullptr;
}

double koPath::getOffsetOf(const koPoint &point)
{
    koCurveLocation *location = getLocationOf(point);
    if (!location)
        return 0;
    const double offset = location->getOffset();
    location->release();
    return offset;
}

koCurve *koPath::getCurveAtOff(double &offset)
{
    const QList<koCurve *> &list = getCurves();
    for (koCurve *curve : list) {
        const double length = curve->getLength();
        offset -= length;
        if (offset < 0) {
            offset += length;
            return curve;
        }
    }
    // Past the last curve the excess stays in offset; the exact total length
    // leaves 0 and belongs to no curve.
    if (!list.isEmpty() && offset > 0)
        return list.last();
    return nullptr;
}

koCurveLocation *koPath::getNearestLocation(const koPoint &point)
{
    koCurveLocation *best = nullptr;
    double bestDistance = qInf();
    for (koCurve *curve : getCurves()) {
        const QVector<double> values = curve->getValues();
        const double t = koCurve::getNearestTime(values, point);
        const koPoint p = koCurve::getPoint(values, t);
        const double distance = point.getDistance(p);
        // Strictly nearer only: on a tie the earlier curve keeps the answer.
        // Locations are only made for improvements, so none is left over.
        if (distance < bestDistance) {
            if (best)
                best->release();
            best = new koCurveLocation(curve, t, p, false, distance);
            bestDistance = distance;
        }
    }
    return best;
}
