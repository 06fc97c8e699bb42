// Drawing-command construction of a koPath: move, line, cubic and quadratic
// curves, elliptical arcs, whole ellipses and closing. Every command ends in
// addSegment()/addSegments() or in a handle of the current segment, so the
// curve list stays linked by the model's own bookkeeping.

#include "path/kopath.h"

#include "geometry/kobezier.h"
#include "geometry/koline.h"
#include "geometry/komatrix.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <cmath>

namespace {

// The control points of a quadratic sit a third of the way from the control
// point to each end of the degree-elevated cubic.
constexpr double QuadraticToCubic = 0.3333333333333333;
constexpr double Pi = 3.141592653589793;
// arcTo2 joins the arc to the current point with a line only when the arc
// starts farther away than this.
constexpr double ArcJoinDistance = 0.1;
// Degrees covered by one cubic piece of an elliptical arc.
constexpr double QuarterTurn = 90;

bool isZeroRadius(double r)
{
    return -koTolerance::Epsilon <= r && r <= koTolerance::Epsilon;
}

bool isFinitePoint(const koPoint &p)
{
    return qIsFinite(p.x) && qIsFinite(p.y);
}

} // namespace

void koPath::moveTo(double x, double y)
{
    moveToPt(koPoint(x, y));
}

void koPath::moveToPt(const koPoint &p)
{
    // A lone segment is only a start point: moving replaces it. A path with
    // a drawn contour is left alone, a path never holds a second contour.
    if (segments.size() == 1)
        removeSegment(0);
    if (segments.isEmpty())
        addSegment(new koSegment(p.x, p.y));
}

void koPath::lineTo(double x, double y)
{
    lineToPt(koPoint(x, y));
}

void koPath::lineToPt(const koPoint &p)
{
    addSegment(new koSegment(p.x, p.y));
}

void koPath::lineBy(const koPoint &d)
{
    const koSegment *current = getCurrentSegment();
    if (!current)
        return;
    lineToPt(current->point + d);
}

void koPath::cubicCurveTo(const koPoint &h1, const koPoint &h2, const koPoint &to)
{
    koSegment *current = getCurrentSegment();
    if (!current)
        return;
    current->setHandleOut(h1 - current->point);
    addSegment(new koSegment(to, h2 - to, koPoint(0, 0)));
}

void koPath::cubicCurveBy(const koPoint &h1, const koPoint &h2, const koPoint &to)
{
    const koSegment *current = getCurrentSegment();
    if (!current)
        return;
    const koPoint c = current->point;
    cubicCurveTo(c + h1, c + h2, c + to);
}

void koPath::quadraticCurveTo(const koPoint &h, const koPoint &to)
{
    const koSegment *current = getCurrentSegment();
    if (!current)
        return;
    const koPoint c = current->point;
    cubicCurveTo(h + (c - h) * QuadraticToCubic, h + (to - h) * QuadraticToCubic, to);
}

void koPath::quadraticCurveBy(const koPoint &h, const koPoint &to)
{
    const koSegment *current = getCurrentSegment();
    if (!current)
        return;
    const koPoint c = current->point;
    quadraticCurveTo(c + h, c + to);
}

void koPath::arcTo(const koPoint &to, const koSize &radii, double rotation, bool clockwise,
                   bool large)
{
    koSegment *current = getCurrentSegment();
    if (!current)
        return;

    // The apex of a half circle over the chord; the fallback below draws its
    // circle through it.
    const koPoint from = current->point;
    const koPoint middle = (from + to) / 2;
    const koPoint through = middle + (from - middle).rotate(clockwise ? -90 : 90);

    if (isZeroRadius(radii.width) || isZeroRadius(radii.height)) {
        lineToPt(to);
        return;
    }

    // Centre of the ellipse in the endpoint parametrisation: work in the
    // ellipse's own axes, where the chord's half vector is (x, y).
    const koPoint p = (from - middle).rotate(-rotation);
    const double x = p.x;
    const double y = p.y;
    double rx = std::abs(radii.width);
    double ry = std::abs(radii.height);
    // Radii too small for the chord grow until the ellipse reaches both ends.
    const double f = std::sqrt(x * x / (rx * rx) + y * y / (ry * ry));
    if (f > 1) {
        rx *= f;
        ry *= f;
    }
    const double rx2 = rx * rx;
    const double ry2 = ry * ry;
    const double x2 = x * x;
    const double y2 = y * y;
    double g = (ry2 * rx2 - y2 * rx2 - x2 * ry2) / (y2 * rx2 + x2 * ry2);
    if (std::abs(g) < koTolerance::Epsilon)
        g = 0;
    // A negative g has no root: the centre becomes NaN and the circular
    // fallback takes over.
    const double sign = clockwise == large ? -1 : 1;
    koPoint centre = koPoint(rx * y / ry, -ry * x / rx) * (sign * std::sqrt(g));
    centre = centre.rotate(rotation) + middle;

    koMatrix matrix;
    koPoint vector;
    double extent;
    // An infinite centre (a chord so short that its squares vanish) is as
    // unusable as a missing one.
    if (isFinitePoint(centre)) {
        // Unit-circle frame of the ellipse: the arc runs from vector over
        // extent degrees, in the direction asked for.
        matrix.translate(centre.x, centre.y);
        matrix.rotate(rotation);
        matrix.scale(rx, ry);
        vector = matrix.inverseTransform(from);
        extent = vector.getDirectedAngle(matrix.inverseTransform(to));
        if (!clockwise && extent > 0)
            extent -= 360;
        else if (clockwise && extent < 0)
            extent += 360;
    } else {
        // The circle through from, the apex and to: its centre is where the
        // perpendicular bisectors of the two chords meet.
        const koLine l1((from + through) / 2, (through - from).rotate(90), true);
        const koLine l2((through + to) / 2, (to - through).rotate(90), true);
        const koLine chord(from, to, false);
        const int throughSide = chord.getSide(through, false);
        centre = l1.intersect(l2, true);
        if (throughSide == 0 && centre.isNaN()) {
            lineToPt(to);
            return;
        }
        vector = from - centre;
        extent = vector.getDirectedAngle(to - centre);
        // The arc must pass the apex: with the centre on the apex's side of
        // the chord that is the long way round.
        const int centreSide = chord.getSide(centre, false);
        if (centreSide == 0)
            extent = throughSide * std::abs(extent);
        else if (throughSide == centreSide)
            extent += extent < 0 ? 360 : -360;
    }

    // NaN input reaches this point as a NaN extent, which has no piece count.
    if (qIsNaN(extent)) {
        lineToPt(to);
        return;
    }

    // At most four pieces of at most a quarter turn each.
    int count;
    double inc;
    if (std::abs(extent) >= 360) {
        count = 4;
        inc = extent * 0.25;
    } else {
        count = int(std::ceil(std::abs(extent) / QuarterTurn));
        inc = extent / count;
    }
    // Handle length along the unit circle for a piece of inc degrees:
    // tan(inc / 4), kept without the customary 4/3, so the pieces bow inwards
    // between their exact end points.
    const double half = inc * Pi / 360;
    const double z = std::sin(half) / (1 + std::cos(half));

    const bool transformed = matrix._orNullIfIdentity();
    QList<koSegment *> list;
    for (int i = 0; i <= count; ++i) {
        koPoint pt = to;
        koPoint out(0, 0);
        if (i < count) {
            out = vector.rotate(90) * z;
            if (transformed) {
                pt = matrix.transformPoint(vector);
                out = matrix.transformPoint(vector + out) - pt;
            } else {
                pt = centre + vector;
            }
        }
        if (i == 0) {
            current->setHandleOut(out);
        } else {
            koPoint in = vector.rotate(-90) * z;
            if (transformed)
                in = matrix.transformPoint(vector + in) - pt;
            list.append(new koSegment(pt, in, out));
        }
        vector = vector.rotate(inc);
    }
    if (!list.isEmpty())
        addSegments(list, -1);
}

void koPath::arcBy(const koPoint &to, const koSize &radii, double rotation, bool clockwise,
                   bool large)
{
    const koSegment *current = getCurrentSegment();
    if (!current)
        return;
    arcTo(current->point + to, radii, rotation, clockwise, large);
}

void koPath::arcTo2(const koRect &rect, double start, double sweep)
{
    if (rect.isEmpty())
        return;
    // The angles run counter-clockwise with y up; negated, a positive sweep
    // runs clockwise on a y-down screen.
    QVector<koPoint> points;
    const koPoint first = koBezier::arcToBezier(rect, -start, -sweep, points);
    if (isEmpty())
        moveToPt(first);
    else if (!first.isClose(getLastSegment()->point, ArcJoinDistance))
        lineToPt(first);
    for (int i = 0; i + 2 < points.size(); i += 3)
        cubicCurveTo(points.at(i), points.at(i + 1), points.at(i + 2));
}

void koPath::ellipse(const koRect &rect)
{
    if (rect.isEmpty())
        return;
    QVector<koPoint> points;
    const koPoint first = koBezier::arcToBezier(rect, 0, -360, points);
    if (points.size() != 12)
        return;
    // A lone start point gives way to the ellipse's start. It is taken off
    // the list as it stands, curves untouched, and let go only after the
    // ellipse is built: a curve of the old list may still hold it.
    koSegment *leftover = segments.size() == 1 ? segments.takeLast() : nullptr;
    moveToPt(first);
    for (int i = 0; i < 12; i += 3)
        cubicCurveTo(points.at(i), points.at(i + 1), points.at(i + 2));
    if (leftover)
        leftover->release();
}

void koPath::setClosed(bool closed)
{
    if (closed == this->closed)
        return;
    this->closed = closed;
    // The closing curve adds to (or leaves) the outline.
    _changed();
    if (curves.isEmpty())
        return; // built lazily with the new flag

    const int wanted = closed || segments.isEmpty() ? segments.size() : segments.size() - 1;
    while (curves.size() > wanted)
        curves.takeLast()->release();
    if (closed && !segments.isEmpty()) {
        koCurve *closing = new koCurve(this, segments.last(), segments.first());
        closing->addRef();
        curves.append(closing);
    }
}
