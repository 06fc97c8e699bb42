#include "curve/kocurvelocation.h"

#include "geometry/koline.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

koCurveLocation::koCurveLocation(koCurve *curve, double time, const koPoint &point, bool overlap,
                                 double distance)
    : overlap(overlap), distance(distance)
{
    // The end of one curve is the start of the next: store it there, so that
    // equal places compare equal by curve and time.
    if (curve && time > koTolerance::CurveTimeMax) {
        if (koCurve *next = curve->getNext()) {
            curve = next;
            time = 0;
        }
    }
    setCurve(curve);
    this->time = time;
    if (!point.isNaN())
        this->point = point;
    else if (curve)
        this->point = curve->getPointAtTime(time);
    else
        this->point = point;
}

koCurveLocation::~koCurveLocation() = default;

void koCurveLocation::release()
{
    if (refCount > 1) {
        --refCount;
        return;
    }
    refCount = -2;
    delete this;
}

void koCurveLocation::setCurve(koCurve *c)
{
    if (!c)
        return;
    path = c->path();
    version = path ? path->version : 0;
    segment = nullptr;
    curve = c;
    segment1 = c->segment1();
    segment2 = c->segment2();
}

void koCurveLocation::setSegment(koSegment *s)
{
    if (!s)
        return;
    if (koCurve *c = s->getCurve())
        setCurve(c);
    segment = s;
    time = s == segment1 ? 0 : 1;
    point = s->point;
}

void koCurveLocation::setSegmentPrev(koSegment *s)
{
    if (!s)
        return;
    if (koCurve *c = s->getCurvePrev())
        setCurve(c);
    segment = s;
    time = s == segment1 ? 0 : 1;
    point = s->point;
}

koCurve *koCurveLocation::getCurve()
{
    // An edited path may have re-linked or divided the curve: forget it and
    // find it again from the point, which still lies on the path.
    if (path && path->version != version) {
        curve = nullptr;
        time = koTolerance::NoTime;
        offset = -1;
    }
    if (curve)
        return curve;
    koSegment *const candidates[3] = {segment, segment1,
                                      segment2 ? segment2->getPrevious() : nullptr};
    for (koSegment *candidate : candidates) {
        koCurve *c = candidate ? candidate->getCurve() : nullptr;
        if (!c)
            continue;
        time = c->getTimeOf(point);
        if (time != koTolerance::NoTime) {
            setCurve(c);
            // Unlike a plain setCurve(), remember the segment that led here.
            segment = candidate;
            return c;
        }
    }
    return nullptr;
}

double koCurveLocation::getTime()
{
    koCurve *c = getCurve();
    if (c && time == koTolerance::NoTime)
        time = c->getTimeOf(point);
    return time;
}

koSegment *koCurveLocation::getSegment()
{
    koCurve *c = getCurve();
    if (segment)
        return segment;
    if (!c)
        return nullptr;
    const double t = getTime();
    if (t == 0) {
        segment = c->segment1();
    } else if (t == 1) {
        segment = c->segment2();
    } else if (t != koTolerance::NoTime) {
        // The end nearer along the curve; a tie goes to segment 2.
        segment = c->getPartLength(0, t) < c->getPartLength(t, 1) ? c->segment1() : c->segment2();
    }
    return segment;
}

double koCurveLocation::getCurveOffset()
{
    koCurve *c = getCurve();
    const double t = getTime();
    if (!c || t == koTolerance::NoTime)
        return 0;
    return c->getPartLength(0, t);
}

double koCurveLocation::getOffset()
{
    if (offset != -1)
        return offset;
    double sum = 0;
    koCurve *c = getCurve();
    koPath *p = c ? c->path() : nullptr;
    const int index = c ? c->index() : -1;
    if (p && index > 0) {
        const QList<koCurve *> &curves = p->getCurves();
        for (int i = 0; i < index && i < curves.size(); ++i)
            sum += curves.at(i)->getLength();
    }
    offset = sum + getCurveOffset();
    return offset;
}

namespace {

// The path of a location's curve (found again when needed); null without one.
koPath *curvePath(koCurveLocation *location)
{
    koCurve *c = location->getCurve();
    return c ? c->path() : nullptr;
}

// The sort key within one path: curve index plus time.
double pathKey(koCurveLocation *location)
{
    koCurve *c = location->getCurve();
    return (c ? c->index() : -1) + location->getTime();
}

} // namespace

bool koCurveLocation::equals(koCurveLocation *other, bool ignoreOther)
{
    if (other == this)
        return true;
    if (!other)
        return false;
    koCurve *c1 = getCurve();
    koCurve *c2 = other->getCurve();
    koPath *p1 = c1 ? c1->path() : nullptr;
    koPath *p2 = c2 ? c2->path() : nullptr;
    if (p1 != p2)
        return false;
    if (!point.isClose(other->point, koTolerance::Geometric))
        return false;

    // Time 1 of the last curve is time 0 of the first: count the last curve's
    // index as -1 when the other location sits on the first curve.
    int i1 = c1 ? c1->index() : -1;
    int i2 = c2 ? c2->index() : -1;
    if (c1 && c2 && c1->isLast() && c2->isFirst())
        i1 = -1;
    if (c1 && c2 && c2->isLast() && c1->isFirst())
        i2 = -1;
    const double t1 = getTime();
    const double t2 = other->getTime();
    if (std::abs((t1 + i1) - (t2 + i2)) >= koTolerance::CurveTimeMin) {
        // Not the same curve place: still the same when the offsets along the
        // path match, directly or across the closing point.
        const double diff = std::abs(getOffset() - other->getOffset());
        const double length = p1 ? p1->getLength() : 0;
        if (diff >= koTolerance::Geometric && std::abs(length - diff) >= koTolerance::Geometric)
            return false;
    }

    if (ignoreOther)
        return true;
    if (intersection)
        return intersection->equals(other->intersection, true);
    return !other->intersection;
}

koCurveLocation *koCurveLocation::insert(QList<koCurveLocation *> &list, koCurveLocation *location,
                                         bool merge)
{
    if (!location)
        return nullptr;
    if (list.isEmpty()) {
        list.append(location);
        return location;
    }
    if (merge) {
        // A cheap pre-check over the leading entries near the point only.
        for (koCurveLocation *entry : qAsConst(list)) {
            if (!entry || !entry->point.isClose(location->point, koTolerance::Geometric))
                break;
            if (location->equals(entry, false)) {
                if (location->overlap) {
                    entry->overlap = true;
                    if (entry->intersection)
                        entry->intersection->overlap = true;
                }
                return entry;
            }
        }
    }
    // Binary search by path id, then by curve index plus time; equal keys go
    // after the entries already there.
    koPath *path = curvePath(location);
    const double key = pathKey(location);
    int l = 0;
    int r = list.size() - 1;
    while (l <= r) {
        const int m = (l + r) / 2;
        koCurveLocation *entry = list.at(m);
        double diff = 1;
        if (entry) {
            koPath *entryPath = curvePath(entry);
            if (entryPath != path)
                diff = double(path ? path->id : 0) - double(entryPath ? entryPath->id : 0);
            else
                diff = key - pathKey(entry);
        }
        if (diff >= 0)
            l = m + 1;
        else
            r = m - 1;
    }
    list.insert(l, location);
    return location;
}

QList<koCurveLocation *> koCurveLocation::expand(const QList<koCurveLocation *> &list)
{
    QList<koCurveLocation *> expanded = list;
    for (int i = list.size() - 1; i >= 0; --i) {
        if (list.at(i) && list.at(i)->intersection)
            insert(expanded, list.at(i)->intersection, false);
    }
    return expanded;
}

namespace {

// The unit tangent at a location; NaN without a curve or time.
koPoint tangentAt(koCurveLocation *location)
{
    koCurve *c = location->getCurve();
    const double t = location->getTime();
    if (!c || t == koTolerance::NoTime)
        return koPoint(qQNaN(), qQNaN());
    return koCurve::getTangent(c->getValues(), t);
}

// Whether angle a lies strictly inside the counter-clockwise sweep from min to
// max (wrapping round when min > max).
bool inRange(double a, double min, double max)
{
    return min < max ? (a > min && a < max) : (a > min || a < max);
}

} // namespace

bool koCurveLocation::isTouching()
{
    if (!intersection)
        return false;
    if (!tangentAt(this).isCollinear(tangentAt(intersection)))
        return false;
    koCurve *c1 = getCurve();
    koCurve *c2 = intersection->getCurve();
    if (c1 && c2 && c1->isStraight() && c2->isStraight()) {
        // Two collinear lines touch only where they do not run into each
        // other.
        const koLine l1(c1->getPoint1(), c1->getPoint2(), false);
        const koLine l2(c2->getPoint1(), c2->getPoint2(), false);
        return l1.intersect(l2, false).isNaN();
    }
    return true;
}

bool koCurveLocation::isCrossing()
{
    // Without both curves there is no direction to compare.
    if (!intersection || !getCurve() || !intersection->getCurve())
        return false;
    const double t1 = getTime();
    const double t2 = intersection->getTime();
    const bool t1Inside = t1 > koTolerance::CurveTimeMin && t1 < koTolerance::CurveTimeMax;
    const bool t2Inside = t2 > koTolerance::CurveTimeMin && t2 < koTolerance::CurveTimeMax;
    if (t1Inside && t2Inside)
        return !isTouching();

    // At a curve end the path turns from the curve before the point (c1, c3)
    // to the curve after it (c2, c4).
    koCurve *c2 = getCurve();
    koCurve *c4 = intersection->getCurve();
    koCurve *c1 = t1 <= koTolerance::CurveTimeMin ? c2->getPrevious() : c2;
    koCurve *c3 = t2 <= koTolerance::CurveTimeMin ? c4->getPrevious() : c4;
    if (t1 >= koTolerance::CurveTimeMax)
        c2 = c2->getNext();
    if (t2 >= koTolerance::CurveTimeMax)
        c4 = c4->getNext();
    if (!c1 || !c2 || !c3 || !c4)
        return false;

    // Probe a short way along each curve that meets at an end: a sixty-fourth
    // of the shortest such curve stays clear of their other ends.
    double shortest = qInf();
    if (!t1Inside)
        shortest = std::min({shortest, c1->getLength(), c2->getLength()});
    if (!t2Inside)
        shortest = std::min({shortest, c3->getLength(), c4->getLength()});
    const double probe = shortest * (1.0 / 64);

    const koPoint pt = point;
    const koPoint v2 =
            t1Inside ? koCurve::getTangent(c2->getValues(), t1) : c2->getPointAt(probe) - pt;
    const koPoint v1 = t1Inside ? -v2 : c1->getPointAt(-probe) - pt;
    const koPoint v4 =
            t2Inside ? koCurve::getTangent(c4->getValues(), t2) : c4->getPointAt(probe) - pt;
    const koPoint v3 = t2Inside ? -v4 : c3->getPointAt(-probe) - pt;
    const double a1 = v1.getAngle();
    const double a2 = v2.getAngle();
    const double a3 = v3.getAngle();
    const double a4 = v4.getAngle();

    // The paths cross when the two directions of one path lie on different
    // sides of the other path, that is in different sweeps between its two
    // directions.
    if (t1Inside)
        return (inRange(a1, a3, a4) != inRange(a2, a3, a4))
                && (inRange(a1, a4, a3) != inRange(a2, a4, a3));
    return (inRange(a3, a1, a2) != inRange(a4, a1, a2))
            && (inRange(a3, a2, a1) != inRange(a4, a2, a1));
}

koCurve *koCurveLocation::divide()
{
    koCurve *c = getCurve();
    if (!c)
        return nullptr;
    koCurve *res = c->divideAtTime(getTime(), false);
    if (res)
        setSegment(res->segment1());
    return res;
}

QString koCurveLocation::toString()
{
    koCurve *c = getCurve();
    const QString s1 = segment1 ? segment1->toString() : QStringLiteral("null");
    const QString s2 = segment2 ? segment2->toString() : QStringLiteral("null");
    return QStringLiteral("point: ") + point.toString()
            + QStringLiteral(" index: %1 %2").arg(c ? c->index() : -1).arg(refCount)
            + QStringLiteral(" time: %1").arg(getTime())
            + QStringLiteral(" distance: %1").arg(distance) + QStringLiteral(" segment1: ") + s1
            + QStringLiteral(" segment2: ") + s2;
}

koCurveLocation *koCurve::getLocationOf(const koPoint &point)
{
    const double t = getTimeOf(point);
    if (!(t >= 0 && t <= 1))
        return nullptr;
    return new koCurveLocation(this, t, koPoint(qQNaN(), qQNaN()), false, 0);
}
