#include "path/kocurve.h"

#include "curve/kocurvelocation.h"
#include "curve/kocurvemath_p.h"
#include "curve/koopparam.h"
#include "geometry/koline.h"
#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

// Curve-curve intersection. The pre-test, the overlap test and the dispatch
// work on the callers' value vectors without copying them; fat-line clipping
// runs on fixed-size values on the stack and allocates nothing until it
// reports a meeting.

namespace {

using koTolerance::NoTime;

// Units in the last place of the largest coordinate kept as a margin round
// each clipped range, against the rounding of the distances (see clipCurves).
constexpr double RoundingUnits = 16;

koPoint nanPoint()
{
    return koPoint(qQNaN(), qQNaN());
}

// Eight curve values on the stack.
struct Values
{
    double v[8];
    double operator[](int i) const { return v[i]; }
    double &operator[](int i) { return v[i]; }
};

Values toValues(const QVector<double> &vector)
{
    Values values;
    const double *d = vector.constData();
    for (int i = 0; i < 8; ++i)
        values.v[i] = d[i];
    return values;
}

bool allFinite(const QVector<double> &v)
{
    for (int i = 0; i < 8; ++i) {
        if (!qIsFinite(v[i]))
            return false;
    }
    return true;
}

// de Casteljau split at t, with the same arithmetic as koCurve::subdivide.
void subdivide(const Values &v, double t, Values &left, Values &right)
{
    // The kernel reads every input before it writes, so the pieces may alias v.
    koCurveMath::subdivideValues(v.v, t, left.v, right.v);
}

// The piece between two times, as koCurve::getPart.
Values getPart(const Values &v, double from, double to)
{
    const double lo = std::min(from, to);
    const double hi = std::max(from, to);
    Values part = v;
    Values rest;
    if (lo > 0)
        subdivide(part, lo, rest, part);
    if (hi < 1)
        subdivide(part, (hi - lo) / (1 - lo), part, rest);
    if (from > to) {
        const Values reversed = {
                {part[6], part[7], part[4], part[5], part[2], part[3], part[0], part[1]}};
        part = reversed;
    }
    return part;
}

// Signed distance from the line through two points, computed exactly as
// koLine::getSignedDistance (axis-parallel lines without the division), with
// the chord length taken once.
struct SignedDistance
{
    double px, py, vx, vy, length;
    SignedDistance(double x1, double y1, double x2, double y2)
        : px(x1), py(y1), vx(x2 - x1), vy(y2 - y1), length(std::sqrt(vx * vx + vy * vy))
    {}
    double operator()(double x, double y) const
    {
        if (vx == 0)
            return vy > 0 ? x - px : px - x;
        if (vy == 0)
            return vx < 0 ? y - py : py - y;
        return ((x - px) * vy - (y - py) * vx) / length;
    }
};

// One side of the convex hull of the distance function: at most four points
// (time, distance).
struct HullPart
{
    double x[4];
    double y[4];
    int count = 0;

    void add(double px, double py)
    {
        x[count] = px;
        y[count] = py;
        ++count;
    }
    void reverse()
    {
        std::reverse(x, x + count);
        std::reverse(y, y + count);
    }
};

struct Hull
{
    HullPart top, bottom;
};

// The hull of the four distance control points (0, d0), (1/3, d1), (2/3, d2),
// (1, d3), split into its upper and lower chains.
Hull convexHull(double d0, double d1, double d2, double d3)
{
    // Distances of the inner points from the chord p0-p3.
    const double dist1 = d1 - (2 * d0 + d3) / 3;
    const double dist2 = d2 - (d0 + 2 * d3) / 3;
    Hull hull;
    HullPart &top = hull.top;
    HullPart &bottom = hull.bottom;
    top.add(0, d0);
    bottom.add(0, d0);
    if (dist1 * dist2 < 0) {
        // The inner points lie on both sides of the chord: one on each chain.
        top.add(1.0 / 3, d1);
        bottom.add(2.0 / 3, d2);
    } else {
        // Both on one side: drop an inner point that lies inside the triangle
        // of the other.
        const double ratio = dist1 / dist2;
        if (ratio >= 2) {
            top.add(1.0 / 3, d1);
        } else if (ratio <= 0.5) {
            top.add(2.0 / 3, d2);
        } else {
            top.add(1.0 / 3, d1);
            top.add(2.0 / 3, d2);
        }
    }
    top.add(1, d3);
    bottom.add(1, d3);
    if (dist1 < 0 || (dist1 == 0 && dist2 < 0))
        std::swap(hull.top, hull.bottom);
    return hull;
}

// Where the chain first enters the band at the threshold, walking from its
// first point; NaN when it never does. xAt(i) and yAt(i) read point i.
template<typename X, typename Y>
double clipChain(int count, const X &xAt, const Y &yAt, bool top, double threshold)
{
    if (count < 2)
        return qQNaN();
    double px = xAt(0);
    double py = yAt(0);
    for (int i = 1; i < count; ++i) {
        const double qx = xAt(i);
        const double qy = yAt(i);
        if (top ? qy >= threshold : qy <= threshold)
            return qy == threshold ? qx : px + (threshold - py) * (qx - px) / (qy - py);
        px = qx;
        py = qy;
    }
    return qQNaN();
}

double clipHullPart(const HullPart &part, bool top, double threshold)
{
    return clipChain(
            part.count, [&part](int i) { return part.x[i]; }, [&part](int i) { return part.y[i]; },
            top, threshold);
}

// The first time (from the side where the chains start) at which the hull
// can lie inside the band [dMin, dMax].
double clipHull(const HullPart &top, const HullPart &bottom, double dMin, double dMax)
{
    if (top.count > 0 && top.y[0] < dMin)
        return clipHullPart(top, true, dMin);
    if (bottom.count > 0 && bottom.y[0] > dMax)
        return clipHullPart(bottom, false, dMax);
    return top.count > 0 ? top.x[0] : qQNaN();
}

// The fixed part of one clipping search.
struct ClipSearch
{
    QList<koCurveLocation *> &locations;
    opParam &param;
    // The two curves in the caller's order, and the values that stand for
    // them when a curve is null.
    koCurve *curve1;
    koCurve *curve2;
    const QVector<double> &whole1;
    const QVector<double> &whole2;
};

void reportClipped(const ClipSearch &s, double t1, double t2)
{
    // Times are on the whole curves: locate them on the curves' own values.
    const QVector<double> w1 = s.curve1 ? s.curve1->getValues() : s.whole1;
    const QVector<double> w2 =
            s.curve2 ? (s.curve2 == s.curve1 ? w1 : s.curve2->getValues()) : s.whole2;
    koCurve::addLocation(s.locations, s.param, w1, s.curve1, t1, nanPoint(), w2, s.curve2, t2,
                         nanPoint(), false);
}

/*
    Bezier clipping with fat lines (T. W. Sederberg and T. Nishita, "Curve
    intersection using Bezier clipping", Computer-Aided Design 22(9), 1990).
    v2 is enclosed in the band of lines parallel to its chord that holds its
    handles, narrowed by 3/4 (handles on one side) or 4/9 (both sides); the
    parts of v1 whose distance hull lies outside the band cannot meet v2 and
    are clipped away. The roles then swap. When a clip removes less than a
    fifth, the less converged curve is halved instead. v1 covers [tMin, tMax]
    of its whole curve, v2 covers [uMin, uMax]; flip tells that v1 is the
    caller's second curve. Returns the running call count.
*/
int clipCurves(const ClipSearch &s, const Values &v1, const Values &v2, double tMin, double tMax,
               double uMin, double uMax, bool flip, double recursion, int calls)
{
    if (recursion + 1 >= koTolerance::ClipMaxDepth)
        return calls;
    if (++calls > koTolerance::ClipMaxCalls)
        return calls;

    const SignedDistance line(v2[0], v2[1], v2[6], v2[7]);
    const double d1 = line(v2[2], v2[3]);
    const double d2 = line(v2[4], v2[5]);
    const double factor = d1 * d2 > 0 ? 3.0 / 4 : 4.0 / 9;
    const double dMin = factor * std::min(0.0, std::min(d1, d2));
    const double dMax = factor * std::max(0.0, std::max(d1, d2));

    const double dp0 = line(v1[0], v1[1]);
    const double dp1 = line(v1[2], v1[3]);
    const double dp2 = line(v1[4], v1[5]);
    const double dp3 = line(v1[6], v1[7]);
    Hull hull = convexHull(dp0, dp1, dp2, dp3);

    // Both curves on one line: that is an overlap, which has its own test.
    if (d1 == 0 && d2 == 0 && dp0 == 0 && dp1 == 0 && dp2 == 0 && dp3 == 0)
        return calls;

    double tMinClip = clipHull(hull.top, hull.bottom, dMin, dMax);
    if (qIsNaN(tMinClip))
        return calls;
    hull.top.reverse();
    hull.bottom.reverse();
    double tMaxClip = clipHull(hull.top, hull.bottom, dMin, dMax);
    if (qIsNaN(tMaxClip))
        return calls;

    // A crossing that this clip puts right at an end of the kept range may
    // fall out of it by the rounding of the distances and be lost at the next
    // clip. Keep a margin of that rounding: a few units in the last place of
    // the coordinates, as a share of the piece's extent.
    double magnitude = 0;
    double lo[2] = {v1[0], v1[1]}, hi[2] = {v1[0], v1[1]};
    for (int i = 0; i < 8; ++i) {
        magnitude = std::max(magnitude, std::max(std::abs(v1[i]), std::abs(v2[i])));
        lo[i % 2] = std::min(lo[i % 2], v1[i]);
        hi[i % 2] = std::max(hi[i % 2], v1[i]);
    }
    const double extent = std::max(hi[0] - lo[0], hi[1] - lo[1]);
    if (extent > 0) {
        const double slack =
                RoundingUnits * std::numeric_limits<double>::epsilon() * magnitude / extent;
        tMinClip = std::max(0.0, tMinClip - slack);
        tMaxClip = std::min(1.0, tMaxClip + slack);
    }

    const double tMinNew = tMin + (tMax - tMin) * tMinClip;
    const double tMaxNew = tMin + (tMax - tMin) * tMaxClip;
    const double uDiff = uMax - uMin;

    if (std::max(tMaxNew - tMinNew, uDiff) < koTolerance::ClipConvergence) {
        const double t = (tMinNew + tMaxNew) * 0.5;
        const double u = (uMin + uMax) * 0.5;
        if (flip)
            reportClipped(s, u, t);
        else
            reportClipped(s, t, u);
        return calls;
    }

    const Values part = getPart(v1, tMinClip, tMaxClip);
    if (tMaxClip - tMinClip <= koTolerance::ClipRatio)
        return clipCurves(s, v2, part, uMin, uMax, tMinNew, tMaxNew, !flip, recursion + 1, calls);

    Values first, second;
    if (tMaxNew - tMinNew > uDiff) {
        subdivide(part, 0.5, first, second);
        const double t = (tMinNew + tMaxNew) * 0.5;
        calls = clipCurves(s, v2, first, uMin, uMax, tMinNew, t, !flip, recursion + 1, calls);
        calls = clipCurves(s, v2, second, uMin, uMax, t, tMaxNew, !flip, recursion + 1, calls);
    } else {
        subdivide(v2, 0.5, first, second);
        const double u = (uMin + uMax) * 0.5;
        calls = clipCurves(s, first, part, uMin, u, tMinNew, tMaxNew, !flip, recursion + 1, calls);
        calls = clipCurves(s, second, part, u, uMax, tMinNew, tMaxNew, !flip, recursion + 1, calls);
    }
    return calls;
}

// Bounds of the control polygon with each handle pulled a quarter of the way
// back toward its point: they still enclose the curve, and are tighter.
void reducedRange(const double *v, int coord, double &min, double &max)
{
    const double a = v[coord];
    const double b = (v[coord] + 3 * v[coord + 2]) / 4;
    const double c = (3 * v[coord + 4] + v[coord + 6]) / 4;
    const double d = v[coord + 6];
    min = std::min(std::min(a, b), std::min(c, d));
    max = std::max(std::max(a, b), std::max(c, d));
}

bool reducedApart(const double *v1, const double *v2, int coord)
{
    double min1, max1, min2, max2;
    reducedRange(v1, coord, min1, max1);
    reducedRange(v2, coord, min2, max2);
    return max1 + koTolerance::Geometric <= min2 || max2 <= min1 - koTolerance::Geometric;
}

// koCurve::getTimeOf, answered at once for a point that is farther than the
// point tolerance from the control polygon's bounds (the curve lies inside
// them, up to the rounding of its evaluation).
double timeOf(const QVector<double> &v, const koPoint &p)
{
    double scale = 0;
    for (int i = 0; i < 8; ++i)
        scale = std::max(scale, std::abs(v[i]));
    const double margin = koTolerance::Geometric + koTolerance::Epsilon * scale;
    for (int coord = 0; coord < 2; ++coord) {
        const double value = coord == 0 ? p.x : p.y;
        const double lo =
                std::min(std::min(v[coord], v[coord + 2]), std::min(v[coord + 4], v[coord + 6]));
        const double hi =
                std::max(std::max(v[coord], v[coord + 2]), std::max(v[coord + 4], v[coord + 6]));
        if (!(value >= lo - margin && value <= hi + margin))
            return NoTime;
    }
    return koCurve::getTimeOf(v, p);
}

QList<koCurveLocation *> &findIntersections(const QVector<double> &v1, const QVector<double> &v2,
                                            koCurve *c1, koCurve *c2,
                                            QList<koCurveLocation *> &locations, opParam &param,
                                            const QVector<double> &whole1,
                                            const QVector<double> &whole2)
{
    // Most pairs end here, without allocating.
    const double *a = v1.constData();
    const double *b = v2.constData();
    if (reducedApart(a, b, 0) || reducedApart(a, b, 1))
        return locations;
    if (!allFinite(v1) || !allFinite(v2))
        return locations;

    const QVector<QPair<double, double>> overlaps = koCurve::getOverlaps(v1, v2);
    if (overlaps.size() == 2) {
        for (const QPair<double, double> &pair : overlaps) {
            koCurve::addLocation(locations, param, v1, c1, pair.first, nanPoint(), v2, c2,
                                 pair.second, nanPoint(), true);
        }
        return locations;
    }

    const bool straight1 = koCurve::isStraight(v1);
    const bool straight2 = koCurve::isStraight(v2);
    if (straight1 && straight2) {
        koCurve::addLineIntersection(v1, v2, c1, c2, locations, param);
        return locations;
    }

    const int count = locations.size();
    if (!straight1 && !straight2) {
        const ClipSearch search{locations, param, c1, c2, whole1, whole2};
        clipCurves(search, toValues(v1), toValues(v2), 0, 1, 0, 1, false, 0, 0);
    } else {
        koCurve::addCurveLineIntersections(v1, v2, c1, c2, locations, param);
    }

    // Curves that only touch at their ends slip through the clipping:
    // check the ends for exact meetings.
    if (locations.size() == count) {
        const koPoint start1(a[0], a[1]), end1(a[6], a[7]);
        const koPoint start2(b[0], b[1]), end2(b[6], b[7]);
        const double eps = koTolerance::Epsilon;
        if (start1.isClose(start2, eps))
            koCurve::addLocation(locations, param, v1, c1, 0, start1, v2, c2, 0, start2, false);
        if (!param.excludeStart && start1.isClose(end2, eps))
            koCurve::addLocation(locations, param, v1, c1, 0, start1, v2, c2, 1, end2, false);
        if (!param.excludeEnd && end1.isClose(start2, eps))
            koCurve::addLocation(locations, param, v1, c1, 1, end1, v2, c2, 0, start2, false);
        if (end1.isClose(end2, eps))
            koCurve::addLocation(locations, param, v1, c1, 1, end1, v2, c2, 1, end2, false);
    }
    return locations;
}

} // namespace

QList<koCurveLocation *> &
koCurve::getIntersections(const QVector<double> &v1, const QVector<double> &v2, koCurve *c1,
                          koCurve *c2, QList<koCurveLocation *> &locations, opParam &param)
{
    if (v2.isEmpty())
        return getSelfIntersection(v1, c1, locations, param);
    if (v1.size() < 8 || v2.size() < 8)
        return locations;
    return findIntersections(v1, v2, c1, c2, locations, param, v1, v2);
}

QList<koCurveLocation *> koCurve::getIntersectionscurve(koCurve *curve)
{
    QList<koCurveLocation *> locations;
    if (!curve)
        return locations;
    opParam param;
    const QVector<double> v2 = curve == this ? QVector<double>() : curve->getValues();
    getIntersections(getValues(), v2, this, curve, locations, param);
    return locations;
}

QVector<QPair<double, double>> koCurve::getOverlaps(const QVector<double> &v1,
                                                    const QVector<double> &v2)
{
    QVector<QPair<double, double>> pairs;
    if (v1.size() < 8 || v2.size() < 8)
        return pairs;

    bool straight1 = isStraight(v1);
    bool straight2 = isStraight(v2);
    bool straightBoth = straight1 && straight2;

    // The curve with the longer chord gives the reference line.
    const auto chord = [](const QVector<double> &v) {
        const double dx = v[6] - v[0], dy = v[7] - v[1];
        return dx * dx + dy * dy;
    };
    const bool swapped = chord(v1) < chord(v2);
    const QVector<double> &l1 = swapped ? v2 : v1;
    const QVector<double> &l2 = swapped ? v1 : v2;
    const koLine line(l1[0], l1[1], l1[6], l1[7], false);
    const auto onLine = [&line](double x, double y) {
        return line.getDistance(koPoint(x, y)) < koTolerance::Geometric;
    };
    if (onLine(l2[0], l2[1]) && onLine(l2[6], l2[7])) {
        // Everything on one line: both curves are straight as far as
        // overlapping goes.
        if (!straightBoth && onLine(l1[2], l1[3]) && onLine(l1[4], l1[5]) && onLine(l2[2], l2[3])
            && onLine(l2[4], l2[5])) {
            straight1 = straight2 = straightBoth = true;
        }
    } else if (straightBoth) {
        return pairs;
    }
    if (straight1 != straight2)
        return pairs;

    // The overlap runs between end points of one curve lying on the other.
    const QVector<double> *curves[2] = {&v1, &v2};
    QPair<double, double> found[2];
    int count = 0;
    for (int i = 0; i < 4 && count < 2; ++i) {
        const int i1 = i % 2;
        const int end = i / 2;
        const QVector<double> &other = *curves[1 - i1];
        const double t = timeOf(*curves[i1], koPoint(other[end * 6], other[end * 6 + 1]));
        if (t == NoTime)
            continue;
        const QPair<double, double> pair =
                i1 == 1 ? qMakePair(double(end), t) : qMakePair(t, double(end));
        // A second pair too close to the first would be a tiny overlap.
        if (count == 0
            || (std::abs(pair.first - found[0].first) > koTolerance::CurveTimeMin
                && std::abs(pair.second - found[0].second) > koTolerance::CurveTimeMin)) {
            found[count++] = pair;
        }
    }
    if (count < 2)
        return pairs;

    if (!straightBoth) {
        // Curved: the two pieces between the pairs must be the same cubic.
        const QVector<double> o1 = getPart(v1, found[0].first, found[1].first);
        const QVector<double> o2 = getPart(v2, found[0].second, found[1].second);
        for (int i = 2; i <= 5; ++i) {
            if (!(std::abs(o2[i] - o1[i]) <= koTolerance::Geometric))
                return pairs;
        }
    }
    pairs.reserve(2);
    pairs.append(found[0]);
    pairs.append(found[1]);
    return pairs;
}

QList<koCurveLocation *> &koCurve::getSelfIntersection(const QVector<double> &v1, koCurve *c1,
                                                       QList<koCurveLocation *> &locations,
                                                       opParam &param)
{
    if (v1.size() < 8 || !allFinite(v1))
        return locations;
    const double p1x = v1[0], p1y = v1[1], h1x = v1[2], h1y = v1[3];
    const double h2x = v1[4], h2y = v1[5], p2x = v1[6], p2y = v1[7];

    // Handles on one side of the chord: a loop needs the control polygon to
    // cross itself.
    const koLine line(p1x, p1y, p2x, p2y, false);
    const int side1 = line.getSide(koPoint(h1x, h1y), true);
    const int side2 = line.getSide(koPoint(h2x, h2y), true);
    if (side1 == side2) {
        const double edgeSum = (p1x - h2x) * (h1y - p2y) + (h1x - p2x) * (h2y - p1y);
        if (edgeSum * side1 > 0)
            return locations;
    }

    // B(t) = a t^3 + 3 b t^2 + 3 c t + p1: a curve with an inflection has no loop.
    const double ax = p2x - 3 * h2x + 3 * h1x - p1x, bx = h2x - 2 * h1x + p1x, cx = h1x - p1x;
    const double ay = p2y - 3 * h2y + 3 * h1y - p1y, by = h2y - 2 * h1y + p1y, cy = h1y - p1y;
    const double ac = ay * cx - ax * cy;
    const double ab = ay * bx - ax * by;
    const double bc = by * cx - bx * cy;
    if (ac * ac - 4 * ab * bc >= 0)
        return locations;

    QVector<double> roots;
    const int n = koNumeric::solveCubic(ax * ax + ay * ay, 3 * (ax * bx + ay * by),
                                        2 * (bx * bx + by * by) + ax * cx + ay * cy,
                                        bx * cx + by * cy, roots, 0, 1);
    if (n <= 0)
        return locations;

    // Split where the curvature is largest, compared as whole numbers: the
    // best is kept truncated, so below a curvature of 1 the last root with a
    // non-zero curvature wins.
    double tSplit = 0.5;
    int best = 0;
    for (int i = 0; i < n; ++i) {
        const double root = roots[i];
        const double k = std::abs(c1 ? c1->getCurvatureAtTime(root) : getCurvature(v1, root));
        if (k > best) {
            tSplit = root;
            best = k >= double(INT_MAX) ? INT_MAX : int(k);
        }
    }

    // The halves meet at the split (excluded) and at the loop's crossing.
    const QVector<QVector<double>> parts = subdivide(v1, tSplit);
    param.renormalizeTime = tSplit;
    param.excludeEnd = true;
    param.renormalize = true;
    return findIntersections(parts[0], parts[1], c1, c1, locations, param, v1, v1);
}

int koCurve::addCurveIntersections(const QVector<double> &v1, const QVector<double> &v2,
                                   koCurve *c1, koCurve *c2, QList<koCurveLocation *> &locations,
                                   opParam &param, double tMin, double tMax, double uMin,
                                   double uMax, bool flip, double recursion, int calls)
{
    if (v1.size() < 8 || v2.size() < 8)
        return calls;
    const ClipSearch search{locations,      param,          flip ? c2 : c1,
                            flip ? c1 : c2, flip ? v2 : v1, flip ? v1 : v2};
    return clipCurves(search, toValues(v1), toValues(v2), tMin, tMax, uMin, uMax, flip, recursion,
                      calls);
}

void koCurve::addCurveLineIntersections(const QVector<double> &v1, const QVector<double> &v2,
                                        koCurve *c1, koCurve *c2,
                                        QList<koCurveLocation *> &locations, opParam &param)
{
    if (v1.size() < 8 || v2.size() < 8)
        return;
    const bool flip = isStraight(v1);
    const QVector<double> &vc = flip ? v2 : v1;
    const QVector<double> &vl = flip ? v1 : v2;
    const double lx1 = vl[0], ly1 = vl[1], lx2 = vl[6], ly2 = vl[7];

    // Turn the line onto the x axis: the meetings are where the turned curve
    // has y = 0.
    const double angle = std::atan2(-(ly2 - ly1), lx2 - lx1);
    const double sin = std::sin(angle), cos = std::cos(angle);
    QVector<double> rotated(8);
    for (int i = 0; i < 8; i += 2) {
        const double x = vc[i] - lx1, y = vc[i + 1] - ly1;
        rotated[i] = x * cos - y * sin;
        rotated[i + 1] = x * sin + y * cos;
    }
    // The ends 0 and 1 are included: addLocation decides about them.
    QVector<double> roots;
    const int n = solveCubic(rotated, 1, 0, roots, 0, 1);
    for (int i = 0; i < n; ++i) {
        const double tc = roots[i];
        const koPoint pc = getPoint(vc, tc);
        const double tl = getTimeOf(vl, pc);
        if (tl == NoTime)
            continue;
        const koPoint pl = getPoint(vl, tl);
        const double t1 = flip ? tl : tc;
        const double t2 = flip ? tc : tl;
        if (param.excludeEnd && t2 <= koTolerance::CurveTimeMin)
            continue;
        // Both locations carry the point on the line (within rounding of
        // the curve's point): the division puts both new segments there, so
        // the pieces of the two paths meet at one point.
        addLocation(locations, param, v1, c1, t1, pl, v2, c2, t2, pl, false);
    }
}

void koCurve::addLineIntersection(const QVector<double> &v1, const QVector<double> &v2, koCurve *c1,
                                  koCurve *c2, QList<koCurveLocation *> &locations, opParam &param)
{
    if (v1.size() < 8 || v2.size() < 8)
        return;
    koPoint point =
            koLine::intersect(v1[0], v1[1], v1[6], v1[7], v2[0], v2[1], v2[6], v2[7], false, false);
    if (point.isNaN())
        return;
    // A line parallel to an axis fixes one coordinate of the crossing exactly;
    // the parametric point p + v * u rounds it (0.3 * 100 is not 30), and the
    // division puts the new segments at this point.
    if (v1[0] == v1[6])
        point.x = v1[0];
    else if (v2[0] == v2[6])
        point.x = v2[0];
    if (v1[1] == v1[7])
        point.y = v1[1];
    else if (v2[1] == v2[7])
        point.y = v2[1];
    addLocation(locations, param, v1, c1, NoTime, point, v2, c2, NoTime, point, false);
}

void koCurve::addLocation(QList<koCurveLocation *> &locations, opParam &param,
                          const QVector<double> &v1, koCurve *c1, double t1, const koPoint &p1,
                          const QVector<double> &v2, koCurve *c2, double t2, const koPoint &p2,
                          bool overlap)
{
    // The ends of an overlap are reported even where the curves join.
    const bool excludeStart = !overlap && param.excludeStart;
    const bool excludeEnd = !overlap && param.excludeEnd;

    if (t1 == NoTime)
        t1 = getTimeOf(v1, p1);
    if (!(t1 >= (excludeStart ? koTolerance::CurveTimeMin : 0)
          && t1 <= (excludeEnd ? koTolerance::CurveTimeMax : 1))) {
        return;
    }
    // Curve 2 joins curve 1 the other way round: its start meets curve 1's
    // end.
    if (t2 == NoTime)
        t2 = getTimeOf(v2, p2);
    if (!(t2 >= (excludeEnd ? koTolerance::CurveTimeMin : 0)
          && t2 <= (excludeStart ? koTolerance::CurveTimeMax : 1))) {
        return;
    }

    if (param.renormalize) {
        t1 *= param.renormalizeTime;
        t2 = param.renormalizeTime + (1 - param.renormalizeTime) * t2;
    }

    const koPoint point1 = p1.isNaN() ? getPoint(v1, t1) : p1;
    const koPoint point2 = p2.isNaN() ? getPoint(v2, t2) : p2;
    koCurveLocation *loc1 = new koCurveLocation(c1, t1, point1, overlap, 0);
    koCurveLocation *loc2 = new koCurveLocation(c2, t2, point2, overlap, 0);
    loc1->intersection = loc2;
    loc2->intersection = loc1;

    // On one path the list holds the location on the earlier curve.
    const int index1 = loc1->curve ? loc1->curve->index() : -1;
    const int index2 = loc2->curve ? loc2->curve->index() : -1;
    koCurveLocation *location = loc1->path == loc2->path && index1 > index2 ? loc2 : loc1;

    if (param.include && !param.include(location)) {
        loc1->release();
        loc2->release();
        return;
    }
    if (koCurveLocation::insert(locations, location, true) != location) {
        // Merged into an equal pair already in the list.
        loc1->release();
        loc2->release();
    }
}

QVector<QVector<QVector<double>>> koCurve::getConvexHull(double d0, double d1, double d2, double d3)
{
    const Hull hull = convexHull(d0, d1, d2, d3);
    QVector<QVector<QVector<double>>> result(2);
    for (int side = 0; side < 2; ++side) {
        const HullPart &part = side == 0 ? hull.top : hull.bottom;
        for (int i = 0; i < part.count; ++i)
            result[side].append(QVector<double>{part.x[i], part.y[i]});
    }
    return result;
}

double koCurve::clipConvexHull(const QVector<QVector<double>> &top,
                               const QVector<QVector<double>> &bottom, double dMin, double dMax)
{
    const auto y0 = [](const QVector<QVector<double>> &part) {
        return !part.isEmpty() && part[0].size() > 1 ? part[0][1] : qQNaN();
    };
    if (y0(top) < dMin)
        return clipConvexHullPart(top, true, dMin);
    if (y0(bottom) > dMax)
        return clipConvexHullPart(bottom, false, dMax);
    return !top.isEmpty() && !top[0].isEmpty() ? top[0][0] : qQNaN();
}

double koCurve::clipConvexHullPart(const QVector<QVector<double>> &part, bool top, double threshold)
{
    // A point with fewer than two numbers reads as NaN.
    const auto coordinate = [&part](int i, int c) {
        return part[i].size() > c ? part[i][c] : qQNaN();
    };
    return clipChain(
            part.size(), [&](int i) { return coordinate(i, 0); },
            [&](int i) { return coordinate(i, 1); }, top, threshold);
}
