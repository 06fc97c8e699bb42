#include "path/xpath.h"

#include "boolean/komono.h"
#include "boolean/kowinding.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

koWinding makeWinding(int windLeft, int windRight)
{
    koWinding result;
    result.winding = std::max(std::abs(windLeft), std::abs(windRight));
    // On the outline exactly one side of the ray is outside.
    result.contour = (windLeft == 0) != (windRight == 0);
    return result;
}

// Winding along a horizontal ray through (px, py): the signed crossings left
// and right of the point are summed separately.
koWinding verticalWinding(double px, double py, const QList<koMono *> &monos)
{
    int windLeft = 0, windRight = 0;
    int onCurveLeft = 0, onCurveRight = 0;
    bool onCurve = false;
    // Winding and end x of the previous piece that met the ray; unknown
    // before the first one (a winding no piece has, an end x that compares
    // with nothing).
    int prevWinding = INT_MIN;
    double prevXEnd = qQNaN();
    const double xBefore = px - koTolerance::Geometric;
    const double xAfter = px + koTolerance::Geometric;
    QVector<double> roots;
    const int n = monos.size();
    for (int i = 0; i < n; ++i) {
        const koMono *mono = monos.at(i);
        const QVector<double> &v = mono->values;
        const double y0 = v[1], y1 = v[7];
        const int w = mono->winding;
        if (mono->last) {
            // A new path: its predecessor along the outline is its last piece.
            prevWinding = mono->last->winding;
            prevXEnd = mono->last->values[6];
            onCurve = false;
        }
        if ((py >= y0 && py <= y1) || (py >= y1 && py <= y0)) {
            if (w != 0) {
                double x = qQNaN();
                if (py == y0)
                    x = v[0];
                else if (py == y1)
                    x = v[6];
                else if (koCurve::solveCubic(v, 1, py, roots, 0, 1) == 1)
                    x = koCurve::getPoint(v, roots.at(0)).x;
                if (!std::isnan(x)) {
                    if (x >= xBefore && x <= xAfter) {
                        onCurve = true;
                    } else if ((py != y0 || w != prevWinding)
                               && !(py == y0 && (px - prevXEnd) * (px - x) < 0)) {
                        // A ray through the joint of two pieces counts it
                        // once, and not at all where the outline touches the
                        // ray and turns back across the point.
                        if (x < xBefore)
                            windLeft += w;
                        else if (x > xAfter)
                            windRight += w;
                    }
                }
                prevWinding = w;
                prevXEnd = v[6];
            } else if ((px - v[0]) * (px - v[6]) <= 0) {
                onCurve = true;
            }
        }
        // A point on a path counts once for that path, as if it were a
        // crossing on one side.
        if (onCurve && (i == n - 1 || monos.at(i + 1)->last)) {
            onCurveLeft += 1;
            onCurveRight -= 1;
        }
    }
    if (windLeft == 0 && windRight == 0) {
        windLeft = onCurveLeft;
        windRight = onCurveRight;
    }
    return makeWinding(windLeft, windRight);
}

// Winding along a vertical line through (px, py), for points where the
// outline runs horizontally: the horizontal-ray windings are taken halfway
// to the nearest crossings above and below.
koWinding horizontalWinding(double px, double py, const QList<koMono *> &monos)
{
    double yTop = -qInf();
    double yBottom = qInf();
    const double yBefore = py - koTolerance::Geometric;
    const double yAfter = py + koTolerance::Geometric;
    QVector<double> roots;
    for (const koMono *mono : monos) {
        const QVector<double> &v = mono->values;
        const int count = koCurve::solveCubic(v, 0, px, roots, 0, 1);
        for (int j = count - 1; j >= 0; --j) {
            const double y = koCurve::getPoint(v, roots.at(j)).y;
            if (y < yBefore && y > yTop)
                yTop = y;
            else if (y > yAfter && y < yBottom)
                yBottom = y;
        }
    }
    yTop = (yTop + py) * 0.5;
    yBottom = (py + yBottom) * 0.5;
    const int windLeft = yTop > -qInf() ? verticalWinding(px, yTop, monos).winding : 0;
    const int windRight = yBottom < qInf() ? verticalWinding(px, yBottom, monos).winding : 0;
    return makeWinding(windLeft, windRight);
}

struct ChainEntry
{
    koSegment *segment;
    koCurve *curve;
    double length;
};

} // namespace

koWinding XPath::getWinding(const koPoint &point, const QList<koMono *> &monoCurves,
                            bool horizontal)
{
    return horizontal ? horizontalWinding(point.x, point.y, monoCurves)
                      : verticalWinding(point.x, point.y, monoCurves);
}

void XPath::propagateWinding(koSegment *segment, XPath *path1, XPath *path2,
                             const QList<koMono *> &monoCurves, int operation)
{
    if (!segment)
        return;
    // The chain runs from the segment up to the next segment that meets the
    // other operand, or once around the path.
    QVector<ChainEntry> chain;
    double totalLength = 0;
    const int limit = segment->path ? segment->path->segments.size() + 1 : 1;
    koSegment *current = segment;
    for (int steps = 0; current && steps < limit; ++steps) {
        if (koCurve *curve = current->getCurve()) {
            if (curve->length == 0.0)
                curve->length = koCurve::getLength(curve->getValues(), 0, 1);
            chain.append({current, curve, curve->length});
            totalLength += curve->length;
        }
        current = current->getNext();
        if (!current || current->intersection() || current == segment)
            break;
    }

    // The winding of the chain is sampled at its middle, away from the
    // crossings at its ends.
    koWinding result;
    double offset = totalLength * 0.5;
    for (const ChainEntry &entry : chain) {
        if (!(entry.length >= offset)) {
            offset -= entry.length;
            continue;
        }
        const QVector<double> values = entry.curve->getValues();
        double t = koCurve::getTimeAt(values, offset, koTolerance::NoTime);
        // Half the chain may fall on a segment, where the outline may turn
        // back in y (a corner at the bottom of a shape) so that a ray through
        // the point touches the path without crossing it, or where another
        // path merely touches this one. The middle of the curve is sampled
        // instead.
        if (!(t > koTolerance::CurveTimeMin && t < koTolerance::CurveTimeMax))
            t = koCurve::getTimeAt(values, entry.length * 0.5, koTolerance::NoTime);
        const koPoint point = koCurve::getPoint(values, t);
        // Where the outline runs horizontally a horizontal ray would run
        // along it; a vertical one is used instead.
        const bool horizontal =
                std::abs(koCurve::getTangent(values, t).y) < koTolerance::Trigonometric;
        const koPath *owner = entry.curve->path();
        const XPath *compound = owner ? owner->parent : nullptr;
        bool outside = false;
        if (operation == OpSubtract && path2 && compound) {
            // Subtraction keeps the first operand outside the second and
            // the second inside the first only.
            if (compound == path1)
                outside = getWinding(point, path2->getMonoCurves(), horizontal).winding != 0;
            else if (compound == path2)
                outside = getWinding(point, path1->getMonoCurves(), horizontal).winding == 0;
        }
        if (!outside)
            result = getWinding(point, monoCurves, horizontal);
        break;
    }

    for (int i = chain.size() - 1; i >= 0; --i) {
        koSegment *s = chain.at(i).segment;
        s->winding = result.winding;
        s->contour = result.contour;
    }
}

QList<koMono *> XPath::getMonoCurves() const
{
    QList<koMono *> list;
    for (koPath *child : children) {
        if (child)
            list.append(child->getMonoCurves());
    }
    return list;
}

bool XPath::isClockwise() const
{
    koPath *first = getFirstChild();
    return first ? first->isClockwise() : false;
}
