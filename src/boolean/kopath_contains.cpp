#include "path/kopath.h"

#include "boolean/koboundopt.h"
#include "boolean/kohitopt.h"
#include "boolean/kohitresult.h"
#include "boolean/kostyle.h"
#include "boolean/kowinding.h"
#include "curve/kocurvelocation.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/koref.h"
#include "path/kosegment.h"
#include "path/xpath.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

koHitResult::koHitResult(int type, koPath *path, koSegment *segment, const koPoint &point)
    : type(type), item(path ? path->parent : nullptr), path(path), segment(segment), point(point)
{}

bool koPath::contains(const koPoint &point, const koStyle &style)
{
    // Containment takes the box of points and handles: it holds the curves
    // and costs no extremum search.
    const koRect bounds = getHandleBounds(segments, style, koBoundOpt(true, false, false, true));
    if (!point.isInside(bounds))
        return false;
    const int winding = XPath::getWinding(point, getMonoCurves(), false).winding;
    return style.evenOdd ? (winding & 1) != 0 : winding != 0;
}

namespace {

double distanceToSegment(const koPoint &p, const koPoint &a, const koPoint &b)
{
    const koPoint ab = b - a;
    const double length2 = ab.dot(ab);
    double t = length2 > 0 ? (p - a).dot(ab) / length2 : 0;
    t = std::clamp(t, 0.0, 1.0);
    return p.getDistance(a + ab * t);
}

// Distance from \a p to the outline of the closed polygon \a points.
double distanceToOutline(const koPoint &p, const QVector<koPoint> &points)
{
    double best = qInf();
    const int n = points.size();
    for (int i = 0; i < n; ++i)
        best = std::min(best, distanceToSegment(p, points.at(i), points.at((i + 1) % n)));
    return best;
}

// Whether \a p lies inside the polygon \a points, or within \a tolerance of
// its outline. The inside test runs on a temporary path, as for any fill.
bool polygonHits(const koPoint &p, const QVector<koPoint> &points, double tolerance)
{
    if (points.size() >= 3) {
        koRef<koPath> area(new koPath(nullptr, true));
        for (const koPoint &q : points)
            area->addSegment(new koSegment(q.x, q.y));
        if (area->contains(p, koStyle()))
            return true;
    }
    return distanceToOutline(p, points) <= tolerance;
}

// The stroke of a path near one of its segments.
struct StrokeTest
{
    koPath *path;
    koPoint point;    // the query point
    double radius;    // half the stroke width, >= 0
    double tolerance; // the hit tolerance without the stroke
    double reach;     // radius + tolerance
    int cap;
    int join;
    double miterLimit; // absolute distance of the farthest miter tip

    // Whether the point hits the join or cap at segment \a index: the area
    // that closes the gap between the square-cut ends of the curves meeting
    // there, on the outer side of a join and beyond the end of a cap. With
    // \a nearest the segment is the path point nearest to the query point,
    // which then also hits the ends of the curves when it lies within reach
    // and outside the gap.
    bool hitsAt(int index, bool nearest) const
    {
        const QList<koCurve *> &curves = path->getCurves();
        const int n = path->segments.size();
        const koSegment *segment = path->segments.at(index);
        const koPoint d = point - segment->point;
        const double distance = d.getLength();
        const bool start = !path->closed && index == 0;
        const bool end = !path->closed && index == n - 1;
        QVector<koPoint> outline;
        if (start || end) {
            // The outward direction of the end: beyond it only the cap.
            const koPoint u = start ? -koCurve::getTangent(curves.first()->getValues(), 0)
                                    : koCurve::getTangent(curves.last()->getValues(), 1);
            const bool beyond = d.dot(u) > 0;
            if (nearest && distance <= reach && !beyond)
                return true;
            if (cap == koCapRound)
                return beyond && distance <= reach;
            koPath::addSquareCap(segment, cap, radius, nullptr, outline, true);
            return polygonHits(point, outline, tolerance);
        }
        // The gap is the wedge ahead of the incoming curve's end and behind
        // the outgoing curve's start; a missing direction leaves no gap.
        bool inGap = false;
        const int before = index > 0 ? index - 1 : curves.size() - 1;
        if (before >= 0 && before < curves.size() && index < curves.size()) {
            const koPoint in = koCurve::getTangent(curves.at(before)->getValues(), 1);
            const koPoint out = koCurve::getTangent(curves.at(index)->getValues(), 0);
            inGap = d.dot(in) > 0 && d.dot(out) < 0;
        }
        if (nearest && distance <= reach && !inGap)
            return true;
        if (join == koJoinRound)
            return inGap && distance <= reach;
        koPath::addBevelJoin(segment, join, radius, miterLimit, nullptr, outline, true);
        return polygonHits(point, outline, tolerance);
    }

    // The point of the first curve whose inside lies within reach, or NaN.
    koPoint hitCurve() const
    {
        for (koCurve *curve : path->getCurves()) {
            const QVector<double> values = curve->getValues();
            const double t = koCurve::getNearestTime(values, point);
            const koPoint p = koCurve::getPoint(values, t);
            if (t > koTolerance::CurveTimeMin && t < koTolerance::CurveTimeMax
                && point.getDistance(p) <= reach)
                return p;
        }
        return koPoint(qQNaN(), qQNaN());
    }
};

} // namespace

koHitResult koPath::_hitTestSelf(const koPoint &point, const koHitOpt &opt, const koStyle &style)
{
    StrokeTest stroke;
    stroke.path = this;
    stroke.point = point;
    stroke.tolerance = stroke.reach = opt.tolerance;
    stroke.cap = style.cap;
    stroke.join = style.join;
    bool testOutline = true;
    if (opt.stroke) {
        const double radius = style.strokeWidth / 2;
        if (radius > 0) {
            stroke.radius = radius;
            stroke.miterLimit = style.miterLimit * radius;
            stroke.reach = opt.tolerance + radius;
        } else {
            // No width: square ends and bevel joins of radius 0, which leaves
            // the plain distance to the outline. A negative (or NaN) width
            // draws no stroke at all.
            stroke.cap = koCapSquare;
            stroke.join = koJoinBevel;
            testOutline = radius == 0;
        }
    }
    const int hitType = opt.stroke ? koHitResult::Stroke
            : opt.curves           ? koHitResult::Curve
                                   : koHitResult::Fill;

    if (testOutline) {
        koRef<koCurveLocation> location(getNearestLocation(point));
        bool vertexWithinReach = false;
        if (location) {
            const double t = location->time;
            const koCurve *curve = location->curve;
            bool hit;
            koSegment *segment = nullptr;
            // Within the curve-time epsilon of an end the location is at a
            // segment, where joins and caps decide.
            const bool atStart = t < koTolerance::CurveTimeMin;
            const bool atEnd = t > koTolerance::CurveTimeMax && segments.size() > 1;
            if (opt.stroke && curve && (atStart || atEnd)) {
                segment = atStart ? curve->segment1() : curve->segment2();
                hit = segment && segment->path == this && stroke.hitsAt(segment->index, true);
                vertexWithinReach = point.getDistance(location->point) <= stroke.reach;
            } else {
                hit = point.getDistance(location->point) <= stroke.reach;
                segment = location->getSegment();
            }
            if (hit)
                return koHitResult(hitType, this, segment, location->point);
        }
        if (opt.stroke && stroke.radius > 0 && !getCurves().isEmpty()) {
            // Miter tips and the corners of square caps reach beyond the
            // stroke radius, and a join may be hit while another part of the
            // path is nearer: every segment within reach is tested.
            double farthest = stroke.radius;
            if (stroke.join == koJoinMiter)
                farthest = std::max(farthest, stroke.miterLimit);
            if (stroke.cap == koCapSquare)
                farthest = std::max(farthest, stroke.radius * std::sqrt(2.0));
            farthest += stroke.tolerance;
            for (koSegment *segment : segments) {
                if (point.getDistance(segment->point) <= farthest
                    && stroke.hitsAt(segment->index, false))
                    return koHitResult(hitType, this, segment, segment->point);
            }
            // A point in the gap of a join may still lie on the stroke of a
            // farther curve that folds back.
            if (vertexWithinReach) {
                const koPoint p = stroke.hitCurve();
                if (!p.isNaN())
                    return koHitResult(hitType, this, nullptr, p);
            }
        }
    }

    if (opt.fill) {
        koStyle fillStyle = style;
        fillStyle.flag0 = opt.flag;
        if (contains(point, fillStyle))
            return koHitResult(koHitResult::Fill, this, nullptr, point);
    }
    return koHitResult();
}
