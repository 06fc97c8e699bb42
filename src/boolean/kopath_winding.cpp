#include "path/kopath.h"

#include "boolean/koboundopt.h"
#include "boolean/komono.h"
#include "boolean/kostyle.h"
#include "boolean/kowinding.h"
#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kosegment.h"
#include "path/xpath.h"

#include <algorithm>
#include <cmath>

namespace {

// Appends one y-monotone piece. Its winding is the direction in which it
// crosses a horizontal ray: -1 when y decreases along it (upwards on a y-down
// screen), +1 otherwise, and 0 for a piece too flat to be crossed reliably.
// A NaN slope (both ends equal) is not flat, nor is a vertical piece.
void addMono(QList<koMono *> &monos, const QVector<double> &v, koMono *&lastNonZero)
{
    const double slope = (v[1] - v[7]) / (v[0] - v[6]);
    int winding = 0;
    if (!(std::abs(slope) < koTolerance::Geometric))
        winding = v[1] > v[7] ? -1 : 1;
    koMono *mono = new koMono(v, winding);
    monos.append(mono);
    if (winding != 0)
        lastNonZero = mono;
}

// Cuts the curve \a v at the extremes of y (the roots of dy/dt inside the
// curve) and appends the pieces. Curves of zero length add nothing.
void addCurve(QList<koMono *> &monos, const QVector<double> &v, koMono *&lastNonZero)
{
    if (koCurve::getLength(v, 0, 1) == 0)
        return;
    const double y0 = v[1], y1 = v[3], y2 = v[5], y3 = v[7];
    const bool a = y0 >= y1, b = y1 >= y2, c = y2 >= y3;
    if (koCurve::isStraight(v) || (a == b && b == c)) {
        addMono(monos, v, lastNonZero);
        return;
    }
    // dy/dt / 3 = qa t^2 + qb t + qc.
    const double qa = 3 * (y1 - y2) - y0 + y3;
    const double qb = 2 * (y0 + y2) - 4 * y1;
    const double qc = y1 - y0;
    QVector<double> roots;
    const int count = koNumeric::solveQuadratic(qa, qb, qc, roots, koTolerance::CurveTimeMin,
                                                koTolerance::CurveTimeMax);
    if (count <= 0) {
        addMono(monos, v, lastNonZero);
        return;
    }
    double t1 = roots.at(0);
    double t2 = count > 1 ? roots.at(1) : 0;
    if (count > 1 && t2 < t1)
        std::swap(t1, t2);
    const QVector<QVector<double>> first = koCurve::subdivide(v, t1);
    addMono(monos, first.at(0), lastNonZero);
    if (count > 1) {
        // The second root in the time of the remaining piece.
        const QVector<QVector<double>> second =
                koCurve::subdivide(first.at(1), (t2 - t1) / (1 - t1));
        addMono(monos, second.at(0), lastNonZero);
        addMono(monos, second.at(1), lastNonZero);
    } else {
        addMono(monos, first.at(1), lastNonZero);
    }
}

} // namespace

const QList<koMono *> &koPath::getMonoCurves()
{
    if (!monos.isEmpty())
        return monos;
    koMono *lastNonZero = nullptr;
    for (const koCurve *curve : getCurves()) {
        if (curve)
            addCurve(monos, koCurve::getValues(curve->segment1(), curve->segment2()), lastNonZero);
    }
    // An open path is filled as if closed by a straight line.
    if (!closed && segments.size() > 1) {
        const koPoint first = segments.first()->point;
        const koPoint last = segments.last()->point;
        addCurve(
                monos,
                QVector<double>{last.x, last.y, last.x, last.y, first.x, first.y, first.x, first.y},
                lastNonZero);
    }
    // The first piece tells a winding query where the path ends, so that a
    // ray through the joint of the path's last and first pieces counts once.
    if (!monos.isEmpty())
        monos.first()->last = lastNonZero;
    return monos;
}

koPoint koPath::getInteriorPoint(bool flag)
{
    koPoint point = getBounds(koBoundOpt(), koStyle()).center();
    koStyle style;
    style.flag0 = flag;
    style.flag1 = true;
    style.evenOdd = true;
    if (contains(point, style))
        return point;
    // The bounds centre lies outside (a ring, a crescent): take the middle
    // between the first two crossings of a horizontal ray at that height.
    const double y = point.y;
    QVector<double> xs;
    QVector<double> roots;
    for (const koMono *mono : getMonoCurves()) {
        const QVector<double> &v = mono->values;
        if ((mono->winding == 1 && v[1] < y && y <= v[7]) || (v[7] <= y && y < v[1])) {
            const int count = koCurve::solveCubic(v, 1, y, roots, 0, 1);
            for (int i = count - 1; i >= 0; --i) {
                const double x = koCurve::getPoint(v, roots.at(i)).x;
                // NaNs would break the ordering of the sort.
                if (!std::isnan(x))
                    xs.append(x);
            }
        }
    }
    if (xs.size() > 1) {
        std::sort(xs.begin(), xs.end());
        point.x = (xs.at(0) + xs.at(1)) * 0.5;
    }
    return point;
}

double koPath::getArea(bool cached, bool isClosedArea)
{
    if (cached) {
        // 0.0 means "not computed"; a NaN counts as a stored value.
        if (m_area != 0.0)
            return m_area;
        isClosedArea = closed;
    }
    const int n = segments.size();
    const int count = isClosedArea ? n : n - 1;
    // Kept behaviour: the sum starts from the stored area, so an uncached call
    // on a path with a stored area returns the two added together.
    double area = m_area;
    for (int i = 0; i < count; ++i) {
        const koSegment *s1 = segments.at(i);
        const koSegment *s2 = segments.at(i + 1 < n ? i + 1 : 0);
        area += koCurve::getArea(koCurve::getValues(s1, s2));
    }
    if (cached)
        m_area = area;
    return area;
}

bool koPath::isClockwise()
{
    if (isFlags(Clockwise | CounterClockwise))
        return isFlags(Clockwise);
    return getArea(true, false) >= 0;
}

void koPath::clearMonos()
{
    const QList<koMono *> list = monos;
    monos.clear();
    qDeleteAll(list);
}
