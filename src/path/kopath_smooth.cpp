// Shape editing of a koPath that keeps its points: smoothing (new handles
// through the same vertices), flattening into straight segments, blending two
// paths and transforming the content.

#include "path/kopath.h"

#include "geometry/komatrix.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

namespace {

// Subdivision depth limit of flatten(): 4096 pieces per curve at most. The
// deviation shrinks fourfold per level, so this meets a flatness of 1e-6 on
// curves a thousand units across; finer requests are met as far as it goes.
constexpr int MaxFlattenDepth = 12;

bool isFinite(const koPoint &p)
{
    return qIsFinite(p.x) && qIsFinite(p.y);
}

bool isGlobalType(int type)
{
    return type == koPath::SmoothContinuous || type == koPath::SmoothAsymmetric;
}

bool isKnownType(int type)
{
    return type >= koPath::SmoothContinuous && type <= koPath::SmoothGeometric;
}

// Centripetal Catmull-Rom (knot spacing |chord|^1/2, Barry-Goldman form)
// handles at p1 between p0 and p2: the tangent is
// d1 (p2 - p1) + d2 (p1 - p0) over the knot spans, and each handle covers a
// third of its span. \a tension 0.5 gives the exact spline; 0 gives corners.
void catmullRomHandles(const koPoint &p0, const koPoint &p1, const koPoint &p2, double tension,
                       koPoint &in, koPoint &out)
{
    const double d1 = p0.getDistance(p1);
    const double d2 = p1.getDistance(p2);
    const double a1 = std::sqrt(d1);
    const double a2 = std::sqrt(d2);
    const koPoint tangent = (p2 - p1) * d1 + (p1 - p0) * d2;
    const double scale = 2 * tension;
    const double outDenominator = 3 * a1 * (a1 + a2);
    const double inDenominator = 3 * a2 * (a1 + a2);
    out = outDenominator > 0 ? tangent * (scale / outDenominator) : koPoint();
    in = inDenominator > 0 ? tangent * (-scale / inDenominator) : koPoint();
}

// Handles parallel to the chord p0 -> p2, each as long as factor times the
// chord, split in proportion to the adjacent segment lengths.
void geometricHandles(const koPoint &p0, const koPoint &p1, const koPoint &p2, double factor,
                      koPoint &in, koPoint &out)
{
    const double d1 = p0.getDistance(p1);
    const double d2 = p1.getDistance(p2);
    const double sum = d1 + d2;
    if (!(sum > 0)) {
        in = out = koPoint();
        return;
    }
    const koPoint chord = p2 - p0;
    in = chord * (-factor * d1 / sum);
    out = chord * (factor * d2 / sum);
}

// Thomas algorithm for a[i] x[i-1] + b[i] x[i] + c[i] x[i+1] = r[i] (a[0]
// and c[n-1] unused). The smoothing systems are strictly diagonally dominant,
// so no pivot vanishes for finite input; false if one does anyway.
template<typename T>
bool solveTridiagonal(const QVector<double> &a, const QVector<double> &b, const QVector<double> &c,
                      const QVector<T> &r, QVector<T> &x)
{
    const int n = b.size();
    QVector<double> cp(n);
    QVector<T> rp(n);
    double pivot = b.at(0);
    if (pivot == 0)
        return false;
    cp[0] = c.at(0) / pivot;
    rp[0] = r.at(0) / pivot;
    for (int i = 1; i < n; ++i) {
        pivot = b.at(i) - a.at(i) * cp.at(i - 1);
        if (pivot == 0)
            return false;
        cp[i] = c.at(i) / pivot;
        rp[i] = (r.at(i) - rp.at(i - 1) * a.at(i)) / pivot;
    }
    x.resize(n);
    x[n - 1] = rp.at(n - 1);
    for (int i = n - 2; i >= 0; --i)
        x[i] = rp.at(i) - x.at(i + 1) * cp.at(i);
    return true;
}

// The cyclic system (a[0] couples x[n-1] into row 0, c[n-1] couples x[0]
// into row n - 1), n >= 3, by the Sherman-Morrison correction of two
// tridiagonal solves.
bool solveCyclic(const QVector<double> &a, const QVector<double> &b, const QVector<double> &c,
                 const QVector<koPoint> &r, QVector<koPoint> &x)
{
    const int n = b.size();
    const double alpha = c.at(n - 1);
    const double beta = a.at(0);
    const double gamma = -b.at(0);
    QVector<double> bb = b;
    bb[0] = b.at(0) - gamma;
    bb[n - 1] = b.at(n - 1) - alpha * beta / gamma;
    QVector<double> u(n, 0.0);
    u[0] = gamma;
    u[n - 1] = alpha;
    QVector<double> z;
    if (!solveTridiagonal(a, bb, c, r, x) || !solveTridiagonal(a, bb, c, u, z))
        return false;
    const double denominator = 1 + z.at(0) + beta * z.at(n - 1) / gamma;
    if (denominator == 0)
        return false;
    const koPoint factor = (x.at(0) + x.at(n - 1) * (beta / gamma)) / denominator;
    for (int i = 0; i < n; ++i)
        x[i] -= factor * z.at(i);
    return true;
}

/*
    The derivatives D[k] of the C2 cubic spline through the knots P[k] with
    parameter spans h[k] (span k runs from P[k] to P[k + 1], the last one of a
    cyclic spline back to P[0]). C2 at an inner knot with spans a = h[k - 1],
    b = h[k]:
        b D[k-1] + 2 (a + b) D[k] + a D[k+1] = 3 (a/b (P[k+1] - P[k]) + b/a (P[k] - P[k-1]))
    and at the ends of an open spline zero second derivative (natural ends):
        2 D[0] + D[1] = 3 (P[1] - P[0]) / h[0],  D[n-2] + 2 D[n-1] = 3 (P[n-1] - P[n-2]) / h[n-2].
*/
bool splineDerivatives(const QVector<koPoint> &p, const QVector<double> &h, bool cyclic,
                       QVector<koPoint> &d)
{
    const int n = p.size();
    auto row = [&](int k, int prev, int next, double &a, double &b, double &c, koPoint &r) {
        const double ha = h.at(prev);
        const double hb = h.at(k);
        a = hb;
        b = 2 * (ha + hb);
        c = ha;
        r = ((p.at(next) - p.at(k)) * (ha / hb) + (p.at(k) - p.at(prev)) * (hb / ha)) * 3;
    };
    QVector<double> a(n), b(n), c(n);
    QVector<koPoint> r(n);
    if (cyclic) {
        if (n == 2) {
            // Both neighbours of each knot are the other knot.
            double a0, b0, c0, a1, b1, c1;
            koPoint r0, r1;
            row(0, 1, 1, a0, b0, c0, r0);
            row(1, 0, 0, a1, b1, c1, r1);
            const double off0 = a0 + c0;
            const double off1 = a1 + c1;
            const double det = b0 * b1 - off0 * off1;
            if (det == 0)
                return false;
            d = {(r0 * b1 - r1 * off0) / det, (r1 * b0 - r0 * off1) / det};
            return true;
        }
        for (int k = 0; k < n; ++k)
            row(k, (k + n - 1) % n, (k + 1) % n, a[k], b[k], c[k], r[k]);
        return solveCyclic(a, b, c, r, d);
    }
    b[0] = 2;
    c[0] = 1;
    r[0] = (p.at(1) - p.at(0)) * (3 / h.at(0));
    for (int k = 1; k < n - 1; ++k)
        row(k, k - 1, k + 1, a[k], b[k], c[k], r[k]);
    a[n - 1] = 1;
    b[n - 1] = 2;
    r[n - 1] = (p.at(n - 1) - p.at(n - 2)) * (3 / h.at(n - 2));
    return solveTridiagonal(a, b, c, r, d);
}

// Parameter spans of the knots: 1 each for the uniform spline, the square
// root of the chord for the centripetal one. Coinciding knots get a small
// span instead of zero so that the system stays solvable.
QVector<double> knotSpans(const QVector<koPoint> &p, bool cyclic, bool centripetal)
{
    const int n = p.size();
    const int spans = cyclic ? n : n - 1;
    QVector<double> h(spans, 1.0);
    if (!centripetal)
        return h;
    double largest = 0;
    for (int k = 0; k < spans; ++k) {
        h[k] = std::sqrt(p.at(k).getDistance(p.at((k + 1) % n)));
        largest = std::max(largest, h.at(k));
    }
    if (!(largest > 0))
        return QVector<double>(spans, 1.0);
    const double floor = largest * 1e-6;
    for (double &span : h)
        span = std::max(span, floor);
    return h;
}

// Appends the inner points of the flattened curve \a v (its ends are added by
// the caller) by halving until each piece lies within \a flatness of its
// chord, or the depth limit is reached.
void flattenCurve(const QVector<double> &v, double flatness, int depth, QList<koSegment *> &out)
{
    for (double value : v) {
        if (!qIsFinite(value))
            return; // no geometry to follow: the chord stands for it
    }
    if (depth >= MaxFlattenDepth || koCurve::isFlatEnough(v, flatness))
        return;
    const QVector<QVector<double>> parts = koCurve::subdivide(v, 0.5);
    flattenCurve(parts.at(0), flatness, depth + 1, out);
    out.append(new koSegment(parts.at(0).at(6), parts.at(0).at(7)));
    flattenCurve(parts.at(1), flatness, depth + 1, out);
}

} // namespace

void koSegment::smooth(int type, double factor)
{
    if (!path || !isKnownType(type) || !qIsFinite(factor))
        return;
    if (isGlobalType(type)) {
        // The spline types solve for their tangents over several points.
        path->smooth(type, factor, index, index);
        return;
    }
    koSegment *prev = getPrevious();
    koSegment *next = getNext();
    if (prev && next) {
        koPoint in, out;
        if (type == koPath::SmoothCatmullRom)
            catmullRomHandles(prev->point, point, next->point, factor, in, out);
        else
            geometricHandles(prev->point, point, next->point, factor, in, out);
        setHandleIn(in);
        setHandleOut(out);
        return;
    }
    // An end of an open path: zero curvature there puts the handle halfway
    // to the neighbour's facing control point. Between two ends (a single
    // curve) the handles lie on the chord.
    if (next) {
        if (next->getNext())
            setHandleOut((next->point + next->handleIn - point) / 2);
        else
            setHandleOut((next->point - point) * (2 * factor / 3));
    } else if (prev) {
        if (prev->getPrevious())
            setHandleIn((prev->point + prev->handleOut - point) / 2);
        else
            setHandleIn((prev->point - point) * (2 * factor / 3));
    }
}

void koPath::smooth(int type, double factor, int from, int to)
{
    const int n = segments.size();
    if (n < 2 || !isKnownType(type) || !qIsFinite(factor))
        return;
    if (to < 0 || to >= n)
        to = n - 1;
    from = qBound(0, from, n - 1);
    int count = 0;
    if (from <= to) {
        count = to - from + 1;
    } else if (closed) {
        count = to + n - from + 1; // the range runs round through the start
    } else {
        std::swap(from, to);
        count = to - from + 1;
    }
    auto at = [this, n](int i) { return segments.at(((i % n) + n) % n); };

    if (!isGlobalType(type)) {
        // The inner vertices depend on points only; the open ends read the
        // new handle of their neighbour, so they come last.
        QList<koSegment *> ends;
        for (int k = 0; k < count; ++k) {
            koSegment *segment = at(from + k);
            if (!closed && (segment->index == 0 || segment->index == n - 1))
                ends.append(segment);
            else
                segment->smooth(type, factor);
        }
        for (koSegment *segment : ends)
            segment->smooth(type, factor);
        return;
    }

    // The spline runs through the range and one more point on each side
    // where there is one, so that the range's end tangents see their
    // neighbours. When that covers a closed path, the whole ring is solved.
    const bool cyclic = closed && count + 2 >= n;
    const int padBefore = cyclic ? 0 : (closed || from > 0 ? 1 : 0);
    const int padAfter = cyclic ? 0 : (closed || from + count < n ? 1 : 0);
    const int first = cyclic ? 0 : from - padBefore;
    const int knots = cyclic ? n : count + padBefore + padAfter;
    if (knots < 2)
        return;
    QVector<koPoint> p(knots);
    for (int k = 0; k < knots; ++k) {
        p[k] = at(first + k)->point;
        if (!isFinite(p.at(k)))
            return;
    }
    const QVector<double> h = knotSpans(p, cyclic, type == SmoothAsymmetric);
    QVector<koPoint> d;
    if (!splineDerivatives(p, h, cyclic, d))
        return;

    // Each span's Bezier handles are a third of the span times the end
    // derivatives; factor 0.5 reproduces the spline exactly.
    const double scale = 2 * factor / 3;
    const int spans = h.size();
    for (int k = 0; k < count; ++k) {
        const int knot = cyclic ? (from + k) % n : padBefore + k;
        koSegment *segment = at(first + knot);
        const int outSpan = knot;
        const int inSpan = cyclic ? (knot + n - 1) % n : knot - 1;
        // The outer handles at the ends of an open path belong to no curve.
        if (outSpan < spans)
            segment->setHandleOut(d.at(knot) * (h.at(outSpan) * scale));
        if (inSpan >= 0)
            segment->setHandleIn(d.at(knot) * (-h.at(inSpan) * scale));
    }
}

void koPath::flatten(double flatness)
{
    const int n = segments.size();
    if (n == 0)
        return;
    if (!(flatness >= koTolerance::Geometric))
        flatness = koTolerance::Geometric;
    const int curveCount = int(_countCurves());
    QList<koSegment *> points;
    for (int i = 0; i < n; ++i) {
        const koSegment *segment = segments.at(i);
        points.append(new koSegment(segment->point.x, segment->point.y));
        if (i >= curveCount)
            continue;
        const QVector<double> v = koCurve::getValues(segment, segments.at((i + 1) % n));
        if (!koCurve::isStraight(v))
            flattenCurve(v, flatness, 0, points);
    }
    setSegments(points);
}

void koPath::interpolate(const koPath *from, const koPath *to, double factor)
{
    if (!from || !to)
        return;
    const int n = segments.size();
    if (from->segments.size() != n || to->segments.size() != n)
        return;
    for (int i = 0; i < n; ++i)
        segments.at(i)->interpolate(*from->segments.at(i), *to->segments.at(i), factor);
}

void koPath::transformContent(const koMatrix *matrix)
{
    if (!matrix)
        return;
    for (koSegment *segment : segments)
        segment->transform(matrix);
    // A reflection turns the orientation round; a degenerate map leaves none.
    const double determinant = matrix->a * matrix->d - matrix->b * matrix->c;
    if (determinant < 0 && isFlags(Clockwise | CounterClockwise))
        flags ^= Clockwise | CounterClockwise;
    else if (!(determinant > 0))
        removeFlags(Clockwise | CounterClockwise);
    _changed();
}
