#include "geometry/kobezier.h"

#include "geometry/kotolerance.h"

#include <QtCore/QtGlobal>

#include <cmath>

namespace {

// Handle length of a quarter ellipse on the unit circle: the quadrant cubic
// (1, 0), (1, K), (K, 1), (0, 1) meets the circle at its ends and its middle.
constexpr double Kappa = 0.55228474983;

// A full turn that starts inside a quadrant touches five quadrant pieces:
// three whole ones and the two partial ends; no arc needs more.
constexpr int MaxArcPieces = 5;

// Start angles beyond this are first reduced modulo 360, so that the
// quadrant index always fits an int.
constexpr double MaxPlainAngle = 1e9;

// Degrees to radians in a single factor (pi/180), as Qt converts arc angles.
constexpr double DegreesToRadians = 0.017453292519943295;

inline bool isNearZero(double v)
{
    return std::abs(v) <= koTolerance::Epsilon;
}

inline koPoint lerp(double ax, double ay, double bx, double by, double t)
{
    return koPoint(ax + (bx - ax) * t, ay + (by - ay) * t);
}

// The point at \a angle degrees on the ellipse of \a rect as QPainterPath's
// arcMoveTo finds it: on the quadrant cubic, at the time arcAngle() gives.
koPoint ellipseCoords(const koRect &rect, double angle)
{
    if (!qIsFinite(angle))
        return koPoint(qQNaN(), qQNaN());
    double theta = angle - 360 * std::floor(angle / 360);
    if (!(theta >= 0 && theta <= 360)) {
        // Huge angles lose the reduction above to round-off.
        theta = std::fmod(angle, 360);
        if (theta < 0)
            theta += 360;
    }
    double t = theta / 90;
    const int quadrant = int(t);
    t -= quadrant;
    t = koBezier::arcAngle(90 * t);
    // Odd quadrants run from the vertical axis to the horizontal one.
    if (quadrant & 1)
        t = 1 - t;

    // Bernstein weights of the unit quadrant cubic.
    const double mt = 1 - t;
    double b = mt * mt;
    double c = t * t;
    const double d = c * t;
    const double a = b * mt;
    b *= 3 * t;
    c *= 3 * mt;
    double px = a + b + c * Kappa;
    double py = d + c + b * Kappa;
    if (quadrant == 1 || quadrant == 2) // left half
        px = -px;
    if (quadrant == 0 || quadrant == 1) // upper half (y grows downwards)
        py = -py;

    const double w2 = rect.width / 2;
    const double h2 = rect.height / 2;
    return koPoint(rect.x + rect.width / 2 + w2 * px, rect.y + rect.height / 2 + h2 * py);
}

} // namespace

koBezier koBezier::fromPoints(const koPoint &p0, const koPoint &p1, const koPoint &p2,
                              const koPoint &p3)
{
    koBezier b;
    b.x0 = p0.x;
    b.y0 = p0.y;
    b.x1 = p1.x;
    b.y1 = p1.y;
    b.x2 = p2.x;
    b.y2 = p2.y;
    b.x3 = p3.x;
    b.y3 = p3.y;
    return b;
}

void koBezier::parameterSplitLeft(double t, koBezier &left)
{
    const koPoint q0 = lerp(x0, y0, x1, y1, t);
    const koPoint q1 = lerp(x1, y1, x2, y2, t);
    const koPoint q2 = lerp(x2, y2, x3, y3, t);
    const koPoint r0 = lerp(q0.x, q0.y, q1.x, q1.y, t);
    const koPoint r1 = lerp(q1.x, q1.y, q2.x, q2.y, t);
    const koPoint s = lerp(r0.x, r0.y, r1.x, r1.y, t);
    left = fromPoints(pt0(), q0, r0, s);
    *this = fromPoints(s, r1, q2, pt3());
}

koBezier koBezier::bezierOnInterval(double t1, double t2) const
{
    if (t1 == 0 && t2 == 1)
        return *this;
    koBezier bezier = *this;
    koBezier result;
    bezier.parameterSplitLeft(t1, result);
    bezier.parameterSplitLeft((t2 - t1) / (1 - t1), result);
    return result;
}

double koBezier::arcAngle(double angle)
{
    if (isNearZero(angle))
        return 0;
    if (qFuzzyCompare(angle, 90.0))
        return 1;

    const double radians = angle * DegreesToRadians;
    const double cosAngle = std::cos(radians);
    const double sinAngle = std::sin(radians);

    // The quadrant cubic is x(t) = ((2 - 3K) t + 3 (K - 1)) t^2 + 1 and
    // y(t) = (((3K - 2) t + 3 - 6K) t + 3K) t. Two Newton steps from the
    // linear guess solve x(t) = cos(angle), two more from there solve
    // y(t) = sin(angle), and the two times are averaged; the step count is
    // fixed. The sine steps divide by (9K - 6) t^2 + (12K - 6) t + 3K exactly
    // as Qt's qt_t_for_arc_angle does: its middle term has the opposite sign
    // of y'(t)'s, so these are only approximate Newton steps, but they
    // keep the pieces identical to those of QPainterPath::arcTo.
    double tc = angle / 90;
    for (int i = 0; i < 2; ++i) {
        tc -= ((((2 - 3 * Kappa) * tc + 3 * (Kappa - 1)) * tc) * tc + 1 - cosAngle)
                / (((6 - 9 * Kappa) * tc + 6 * (Kappa - 1)) * tc);
    }
    double ts = tc;
    for (int i = 0; i < 2; ++i) {
        ts -= ((((3 * Kappa - 2) * ts - 6 * Kappa + 3) * ts + 3 * Kappa) * ts - sinAngle)
                / (((9 * Kappa - 6) * ts + 12 * Kappa - 6) * ts + 3 * Kappa);
    }
    return 0.5 * (tc + ts);
}

koPoint koBezier::arcToBezier(const koRect &rect, double start, double sweep,
                              QVector<koPoint> &points)
{
    if (qIsNaN(rect.x) || qIsNaN(rect.y) || qIsNaN(rect.width) || qIsNaN(rect.height)
        || qIsNaN(start) || qIsNaN(sweep)) {
        qWarning("Arc to bezier, adding arc where a parameter is NaN, results are undefined");
    }
    if (rect.width < koTolerance::Epsilon || rect.height < koTolerance::Epsilon)
        return koPoint(0, 0);
    // Without a finite start and a sweep there is no arc to describe.
    if (!qIsFinite(start) || qIsNaN(sweep))
        return koPoint(qQNaN(), qQNaN());
    if (std::abs(start) > MaxPlainAngle)
        start = std::fmod(start, 360);

    const double x = rect.x;
    const double y = rect.y;
    const double w = rect.width;
    const double w2 = rect.width * 0.5;
    const double w2k = w2 * Kappa;
    const double h = rect.height;
    const double h2 = rect.height * 0.5;
    const double h2k = h2 * Kappa;

    // The whole ellipse, clockwise on screen from the right-hand point:
    // four quadrant cubics sharing their end points.
    const koPoint p[13] = {
            koPoint(x + w, y + h2),

            koPoint(x + w, y + h2 + h2k), // 0 -> 270 degrees
            koPoint(x + w2 + w2k, y + h), koPoint(x + w2, y + h),

            koPoint(x + w2 - w2k, y + h), // 270 -> 180 degrees
            koPoint(x, y + h2 + h2k),     koPoint(x, y + h2),

            koPoint(x, y + h2 - h2k), // 180 -> 90 degrees
            koPoint(x + w2 - w2k, y),     koPoint(x + w2, y),

            koPoint(x + w2 + w2k, y), // 90 -> 0 degrees
            koPoint(x + w, y + h2 - h2k), koPoint(x + w, y + h2),
    };

    if (sweep > 360)
        sweep = 360;
    else if (sweep < -360)
        sweep = -360;

    // The full ellipse from the right-hand point is the table itself.
    if (start == 0) {
        if (sweep == 360) {
            for (int i = 11; i >= 0; --i)
                points.append(p[i]);
            return p[12];
        }
        if (sweep == -360) {
            for (int i = 1; i <= 12; ++i)
                points.append(p[i]);
            return p[0];
        }
    }

    int startSegment = int(std::floor(start / 90));
    int endSegment = int(std::floor((sweep + start) / 90));
    double startT = (start - startSegment * 90) / 90;
    double endT = (start + sweep - endSegment * 90) / 90;

    const int delta = sweep > 0 ? 1 : -1;
    if (delta < 0) {
        startT = 1 - startT;
        endT = 1 - endT;
    }
    // An arc starting at the far end of a quadrant starts in the next one;
    // one ending at the near end of a quadrant ends in the previous one.
    if (isNearZero(startT - 1)) {
        startT = 0;
        startSegment += delta;
    }
    if (isNearZero(endT)) {
        endT = 1;
        endSegment -= delta;
    }

    startT = arcAngle(startT * 90);
    endT = arcAngle(endT * 90);
    const bool splitAtStart = !isNearZero(startT);
    const bool splitAtEnd = !isNearZero(endT - 1);

    const int end = endSegment + delta;
    // Quadrant segment i (angles i*90 .. i*90 + 90) is the table's cubic j.
    auto firstIndex = [](int segment) { return 3 * (3 - ((segment % 4) + 4) % 4); };

    if (startSegment == end) {
        // Nothing left of the arc: it sits on a quadrant boundary.
        const int j = firstIndex(startSegment);
        return delta > 0 ? p[j + 3] : p[j];
    }

    const koPoint startPoint = ellipseCoords(rect, start);
    const koPoint endPoint = ellipseCoords(rect, start + sweep);
    const int first = points.size();
    int pieces = 0;
    for (int i = startSegment; i != end && pieces < MaxArcPieces; i += delta, ++pieces) {
        if (startSegment == endSegment && qFuzzyCompare(startT, endT))
            return startPoint; // an arc too short to have a piece
        const int j = firstIndex(i);
        koBezier b = delta > 0 ? fromPoints(p[j + 3], p[j + 2], p[j + 1], p[j])
                               : fromPoints(p[j], p[j + 1], p[j + 2], p[j + 3]);
        if (i == startSegment) {
            if (i == endSegment && splitAtEnd)
                b = b.bezierOnInterval(startT, endT);
            else if (splitAtStart)
                b = b.bezierOnInterval(startT, 1);
        } else if (i == endSegment && splitAtEnd) {
            b = b.bezierOnInterval(0, endT);
        }
        points.append(b.pt1());
        points.append(b.pt2());
        points.append(b.pt3());
    }
    // The arc ends exactly where arcMoveTo would put its end angle.
    if (points.size() > first)
        points.last() = endPoint;
    return startPoint;
}

QPointF koBezier::arcToBezier(const QRectF &rect, double start, double sweep,
                              QVector<QPointF> &points)
{
    QVector<koPoint> pts;
    const koPoint startPoint = arcToBezier(koRect(rect), start, sweep, pts);
    points.reserve(points.size() + pts.size());
    for (const koPoint &pt : pts)
        points.append(pt.toPt());
    return startPoint.toPt();
}
