#include "path/kocurve.h"

#include "curve/kocurvemath_p.h"
#include "geometry/koline.h"
#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

// Pieces, bounds, shape predicates and division of a curve.

namespace {

bool withinEpsilon(double v)
{
    return v >= -koTolerance::Epsilon && v <= koTolerance::Epsilon;
}

QVector<double> nanValues()
{
    return QVector<double>(8, qQNaN());
}

// The straightness test on coordinates: chord from (px, py) along (vx, vy),
// handles relative to the chord's two ends.
bool isStraightChord(double px, double py, double vx, double vy, double h1x, double h1y, double h2x,
                     double h2y)
{
    if (withinEpsilon(h1x) && withinEpsilon(h1y) && withinEpsilon(h2x) && withinEpsilon(h2y))
        return true;
    if (withinEpsilon(vx) && withinEpsilon(vy))
        return false;
    const double d1 = std::abs(koLine::getSignedDistance(px, py, vx, vy, px + h1x, py + h1y, true));
    const double d2 =
            std::abs(koLine::getSignedDistance(px, py, vx, vy, px + vx + h2x, py + vy + h2y, true));
    if (d1 < koTolerance::Geometric && d2 < koTolerance::Geometric) {
        // On the chord; the handles must also point inward without reaching
        // past the other end, or the curve would double back on itself.
        const double d = vx * vx + vy * vy;
        const double s1 = (vx * h1x + vy * h1y) / d;
        const double s2 = (vx * h2x + vy * h2y) / d;
        return s1 >= 0 && s1 <= 1 && s2 >= -1 && s2 <= 0;
    }
    return false;
}

bool isLinearChord(double vx, double vy, double h1x, double h1y, double h2x, double h2y)
{
    const double tx = vx / 3, ty = vy / 3;
    return withinEpsilon(h1x - tx) && withinEpsilon(h1y - ty) && withinEpsilon(-h2x - tx)
            && withinEpsilon(-h2y - ty);
}

void widen(double *min, double *max, int coord, double low, double high)
{
    if (low < min[coord])
        min[coord] = low;
    if (high > max[coord])
        max[coord] = high;
}

} // namespace

// --- parts -------------------------------------------------------------------

QVector<QVector<double>> koCurve::subdivide(const QVector<double> &v, double t)
{
    if (v.size() < 8)
        return QVector<QVector<double>>{nanValues(), nanValues()};
    QVector<double> left(8), right(8);
    koCurveMath::subdivideValues(v.constData(), t, left.data(), right.data());
    return QVector<QVector<double>>{left, right};
}

QVector<double> koCurve::getPart(const QVector<double> &v, double from, double to)
{
    if (v.size() < 8 || qIsNaN(from) || qIsNaN(to))
        return nanValues();
    const double lo = std::min(from, to);
    const double hi = std::max(from, to);
    double w[8];
    std::copy(v.constData(), v.constData() + 8, w);
    if (lo > 0)
        koCurveMath::subdivideValues(w, lo, nullptr, w);
    // The second split is in the time of the remaining piece.
    if (hi < 1)
        koCurveMath::subdivideValues(w, (hi - lo) / (1 - lo), w, nullptr);
    if (from > to)
        return QVector<double>{w[6], w[7], w[4], w[5], w[2], w[3], w[0], w[1]};
    return QVector<double>{w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7]};
}

koCurve *koCurve::getPart(double from, double to) const
{
    return new koCurve(getPart(getValues(), from, to), nullptr);
}

// --- bounds --------------------------------------------------------------------

koRect koCurve::getBounds(const QVector<double> &v)
{
    if (v.size() < 8)
        return koRect(qQNaN(), qQNaN(), qQNaN(), qQNaN());
    // The solver writes its roots from index 0; a buffer kept per thread
    // spares an allocation on every call.
    static thread_local QVector<double> roots(2, 0.0);
    double min[2] = {v[0], v[1]};
    double max[2] = {v[0], v[1]};
    for (int coord = 0; coord < 2; ++coord)
        addBounds(v[coord], v[coord + 2], v[coord + 4], v[coord + 6], coord, 0, min, max, roots);
    return koRect(min[0], min[1], max[0] - min[0], max[1] - min[1]);
}

koRect koCurve::getBounds()
{
    if (bounds.x == 0 && bounds.y == 0 && bounds.width == 0 && bounds.height == 0)
        bounds = getBounds(getValues());
    return bounds;
}

void koCurve::addBounds(double v0, double v1, double v2, double v3, int coord, double padding,
                        double *min, double *max, QVector<double> &roots)
{
    if (!min || !max || coord < 0 || coord > 1)
        return;
    const double half = padding / 2;
    const double lo = min[coord] - half;
    const double hi = max[coord] + half;
    // Nothing to do when the whole control polygon is inside already.
    if (v0 >= lo && v0 <= hi && v1 >= lo && v1 <= hi && v2 >= lo && v2 <= hi && v3 >= lo
        && v3 <= hi)
        return;
    if ((v1 < v0) != (v1 < v3) && (v2 < v0) != (v2 < v3)) {
        // Both handles between the ends: the coordinate is monotone and its
        // extremes are the end points.
        widen(min, max, coord, v0 - half, v0 + half);
        widen(min, max, coord, v3 - half, v3 + half);
        return;
    }
    // The extremes inside the curve are the zeros of the derivative / 3.
    const double a = 3 * (v1 - v2) - v0 + v3;
    const double b = 2 * (v0 + v2) - 4 * v1;
    const double c = v1 - v0;
    const int count = koNumeric::solveQuadratic(a, b, c, roots, 0, 0);
    // The end point goes in without padding; point 1 is the caller's seed.
    widen(min, max, coord, v3, v3 + 0);
    for (int i = 0; i < count; ++i) {
        const double t = roots.at(i);
        if (t > koTolerance::CurveTimeMin && t < koTolerance::CurveTimeMax) {
            const double u = 1 - t;
            const double value =
                    u * u * u * v0 + 3 * u * u * t * v1 + 3 * u * t * t * v2 + t * t * t * v3;
            widen(min, max, coord, value - half, value + half);
        }
    }
}

// --- shape predicates -------------------------------------------------------------

bool koCurve::isStraight(const koLine &line, const koPoint &handle1, const koPoint &handle2)
{
    return isStraightChord(line.px, line.py, line.vx, line.vy, handle1.x, handle1.y, handle2.x,
                           handle2.y);
}

bool koCurve::isStraight(const QVector<double> &v)
{
    if (v.size() < 8)
        return false;
    return isStraightChord(v[0], v[1], v[6] - v[0], v[7] - v[1], v[2] - v[0], v[3] - v[1],
                           v[4] - v[6], v[5] - v[7]);
}

bool koCurve::isStraight() const
{
    if (!m_segment1 || !m_segment2)
        return false;
    return isStraight(getLine(), m_segment1->handleOut, m_segment2->handleIn);
}

bool koCurve::isLinear(const koLine &line, const koPoint &handle1, const koPoint &handle2)
{
    return isLinearChord(line.vx, line.vy, handle1.x, handle1.y, handle2.x, handle2.y);
}

bool koCurve::isLinear(const QVector<double> &v)
{
    if (v.size() < 8)
        return false;
    return isLinearChord(v[6] - v[0], v[7] - v[1], v[2] - v[0], v[3] - v[1], v[4] - v[6],
                         v[5] - v[7]);
}

bool koCurve::isLinear() const
{
    if (!m_segment1 || !m_segment2)
        return false;
    return isLinear(getLine(), m_segment1->handleOut, m_segment2->handleIn);
}

bool koCurve::isFlatEnough(const QVector<double> &v, double flatness)
{
    if (v.size() < 8)
        return false;
    // Bound on the distance of the curve from its chord (Roger Willcocks):
    // the handles' deviation from the one-third points, squared.
    const double ux = 3 * v[2] - 2 * v[0] - v[6];
    const double uy = 3 * v[3] - 2 * v[1] - v[7];
    const double vx = 3 * v[4] - 2 * v[6] - v[0];
    const double vy = 3 * v[5] - 2 * v[7] - v[1];
    return std::max(ux * ux, vx * vx) + std::max(uy * uy, vy * vy) <= 16 * flatness * flatness;
}

koLine koCurve::getLine() const
{
    return koLine(getPoint1(), getPoint2(), false);
}

bool koCurve::isCollinear(const koCurve *other) const
{
    if (!other || !isStraight() || !other->isStraight())
        return false;
    return getLine().isCollinear(other->getLine());
}

bool koCurve::isHorizontal() const
{
    return isStraight() && std::abs(getTangentAtTime(0.5).y) < koTolerance::Trigonometric;
}

bool koCurve::isVertical() const
{
    return isStraight() && std::abs(getTangentAtTime(0.5).x) < koTolerance::Trigonometric;
}

// --- division -------------------------------------------------------------------------

koCurve *koCurve::divideAtTime(double t, bool setHandles)
{
    // Also rejects a NaN time: a division at an end would leave an empty curve.
    if (!(t >= koTolerance::CurveTimeMin && t <= koTolerance::CurveTimeMax))
        return nullptr;
    if (!m_segment1 || !m_segment2)
        return nullptr;

    const QVector<double> values = getValues();
    double left[8], right[8];
    koCurveMath::subdivideValues(values.constData(), t, left, right);

    const bool withHandles = setHandles || hasHandles();
    if (withHandles) {
        m_segment1->setHandleOut(koPoint(left[2] - left[0], left[3] - left[1]));
        m_segment2->setHandleIn(koPoint(right[4] - right[6], right[5] - right[7]));
    }
    const koPoint split(left[6], left[7]);
    koSegment *segment = withHandles
            ? new koSegment(split, koPoint(left[4] - split.x, left[5] - split.y),
                            koPoint(right[2] - split.x, right[3] - split.y))
            : new koSegment(split, koPoint(), koPoint());

    if (m_path) {
        // The path re-links its curves: this one now ends at the new segment
        // and the next one starts there.
        if (!m_path->insertSegment(m_segment1->index + 1, segment)) {
            segment->release();
            return nullptr;
        }
        return getNext();
    }

    // A free curve keeps the first half; the second half is a new free
    // curve. Each curve holds one reference on each of its segments.
    koSegment *end = m_segment2;
    segment->addRef();
    m_segment2 = segment;
    koCurve *next = new koCurve(nullptr, segment, end);
    end->release();
    length = 0;
    bounds = koRect();
    return next;
}

koPath *koCurve::splitAt(koCurveLocation *location)
{
    return m_path ? m_path->splitAt(location) : nullptr;
}
