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

// The entry of \a chain at \a share of its length \a total, with its
// curve values and the time there; null when no entry is reached (NaN
// lengths). A share that falls on a segment takes the middle of the curve
// instead: at a corner the outline may turn back in y (the bottom of a
// shape), so that a ray through the point touches the path without
// crossing it.
const ChainEntry *chainSample(const QVector<ChainEntry> &chain, double total, double share,
                              QVector<double> *values, double *time)
{
    double offset = total * share;
    for (const ChainEntry &entry : chain) {
        if (!(entry.length >= offset)) {
            offset -= entry.length;
            continue;
        }
        *values = entry.curve->getValues();
        double t = koCurve::getTimeAt(*values, offset, koTolerance::NoTime);
        if (!(t > koTolerance::CurveTimeMin && t < koTolerance::CurveTimeMax))
            t = koCurve::getTimeAt(*values, entry.length * 0.5, koTolerance::NoTime);
        *time = t;
        return &entry;
    }
    return nullptr;
}

// Shares of the chain's length tried after the middle, in order: the golden
// sections 1 - 1/phi, 1/phi, then 1/phi^3 and 1/phi^4 from either end.
// Symmetric shapes put their touching points at simple fractions of a chain
// (halves, quarters, eighths), which none of these is.
constexpr double OtherSampleShares[] = {0.3819660112501051, 0.6180339887498949, 0.2360679774997897,
                                        0.7639320225002103, 0.1458980337503155, 0.8541019662496845};

// Whether \a point lies, within the winding tolerance, on a piece of
// \a monos that is not one of \a own (the pieces of the sampled path).
bool onOtherOutline(const koPoint &point, const QList<koMono *> &monos, const QList<koMono *> &own)
{
    const double tolerance = koTolerance::Geometric;
    for (koMono *mono : monos) {
        const QVector<double> &v = mono->values;
        const auto beside = [&](int coord, double p) {
            const auto [lo, hi] = std::minmax({v[coord], v[coord + 2], v[coord + 4], v[coord + 6]});
            return p < lo - tolerance || p > hi + tolerance;
        };
        if (beside(0, point.x) || beside(1, point.y) || own.contains(mono))
            continue;
        if (koCurve::getTimeOf(v, point) != koTolerance::NoTime)
            return true;
    }
    return false;
}

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
    // crossings at its ends. The chain may still pass through a point where
    // another path only touches it (a corner of one operand on an edge of the
    // other, a tangent contact): no crossing, so no division point, but a
    // sample there lies on both outlines, where the winding cannot tell on
    // which side of the other path the chain runs. Such a middle gives way to
    // the first of the other shares that lies on no other outline (kept when
    // there is none).
    QVector<double> values;
    double t = 0;
    const ChainEntry *chosen = chainSample(chain, totalLength, 0.5, &values, &t);
    if (chosen && chosen->curve->path()) {
        const QList<koMono *> &own = chosen->curve->path()->getMonoCurves();
        if (onOtherOutline(koCurve::getPoint(values, t), monoCurves, own)) {
            QVector<double> otherValues;
            double otherTime = 0;
            for (const double share : OtherSampleShares) {
                const ChainEntry *entry =
                        chainSample(chain, totalLength, share, &otherValues, &otherTime);
                if (entry
                    && !onOtherOutline(koCurve::getPoint(otherValues, otherTime), monoCurves,
                                       own)) {
                    chosen = entry;
                    values = otherValues;
                    t = otherTime;
                    break;
                }
            }
        }
    }

    koWinding result;
    if (chosen) {
        const koPoint point = koCurve::getPoint(values, t);
        // Where the outline runs horizontally a horizontal ray would run
        // along it; a vertical one is used instead.
        const bool horizontal =
                std::abs(koCurve::getTangent(values, t).y) < koTolerance::Trigonometric;
        const koPath *owner = chosen->curve->path();
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
