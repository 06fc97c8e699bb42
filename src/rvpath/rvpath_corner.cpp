#include "rvpath/rvpath.h"

#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "rvpath/rvvector_p.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

namespace {

// A junction turning by less than this (radians) runs straight on.
constexpr double StraightTurn = 0.001;
// Handle length of the bridging cubic per unit of cut length: close to the
// quarter-circle ratio for the corner angles that occur in drawings.
constexpr double HandleFactor = 0.448;
// Where the bridge meets a curved segment its handle is longer by this, so
// that the bridge follows the curve's bend into the corner.
constexpr double CurveHandleFactor = 1.5;

const double Pi = std::acos(-1.0);

using rvVector::isFinite;
using rvVector::snapped;

koPoint pointOf(const RVPathElement &e)
{
    return koPoint(e.x, e.y);
}

// One drawn segment of a subpath. \c element is the index of its line-to or
// curve-to, -1 for the closing line that a close marker implies.
struct Segment
{
    bool curve = false;
    bool curved = false; // a curve that is not straight
    koPoint p0, c1, c2, p1;
    int element = -1;
    double length = 0;
    koPoint tin, tout; // unit tangents at the start and the end
    bool finite = false;

    QVector<double> values() const { return {p0.x, p0.y, c1.x, c1.y, c2.x, c2.y, p1.x, p1.y}; }
};

Segment lineSegment(const koPoint &a, const koPoint &b, int element)
{
    Segment s;
    s.p0 = a;
    s.p1 = b;
    s.element = element;
    const koPoint v = b - a;
    s.length = v.getLength();
    s.finite = isFinite(a) && isFinite(b) && qIsFinite(s.length);
    s.tin = s.tout = v / s.length;
    return s;
}

Segment curveSegment(const koPoint &a, const koPoint &c1, const koPoint &c2, const koPoint &b,
                     int element)
{
    Segment s;
    s.curve = true;
    s.p0 = a;
    s.c1 = c1;
    s.c2 = c2;
    s.p1 = b;
    s.element = element;
    s.finite = isFinite(a) && isFinite(c1) && isFinite(c2) && isFinite(b);
    if (s.finite) {
        const QVector<double> v = s.values();
        s.length = koCurve::getLength(v);
        s.tin = koCurve::getTangent(v, 0);
        s.tout = koCurve::getTangent(v, 1);
        s.curved = !koCurve::isStraight(v);
        s.finite = qIsFinite(s.length) && isFinite(s.tin) && isFinite(s.tout);
    }
    return s;
}

// Rounds the corners of one subpath and writes it to \a out.
class CornerRounder
{
public:
    CornerRounder(const QVector<RVPathElement> &source, QVector<RVPathElement> &out, double radius)
        : m_src(source), m_out(out), m_radius(radius)
    {}

    // \a move is the subpath's move-to (-1: it starts implicitly at
    // \a start), \a close its close marker (-1: open).
    void round(const QVector<Segment> &segs, int move, const koPoint &start, int close)
    {
        const int n = segs.size();
        const bool closed = close >= 0;
        const int junctions = n == 0 ? 0 : (closed ? n : n - 1);
        m_corner.fill(false, junctions);
        m_cut.fill(0, junctions);
        for (int j = 0; j < junctions; ++j)
            m_corner[j] = isCorner(segs.at(j), segs.at((j + 1) % n));
        // Junction j lies between segment j and segment j + 1 (mod n).
        const auto cornerBefore = [&](int i) {
            const int j = i > 0 ? i - 1 : (closed ? n - 1 : -1);
            return j >= 0 && m_corner.at(j);
        };
        const auto cornerAfter = [&](int i) { return i < junctions && m_corner.at(i); };
        for (int j = 0; j < junctions; ++j) {
            if (!m_corner.at(j))
                continue;
            // A segment rounded at both ends gives each end half of itself,
            // so that neighbouring corners never overlap.
            const int k = (j + 1) % n;
            const double in = segs.at(j).length * (cornerBefore(j) ? 0.5 : 1);
            const double out = segs.at(k).length * (cornerAfter(k) ? 0.5 : 1);
            m_cut[j] = std::min(m_radius, std::min(in, out));
        }

        // Cut every segment back at its rounded ends.
        m_parts.clear();
        m_parts.reserve(n);
        for (int i = 0; i < n; ++i) {
            const double startCut = cornerBefore(i) ? m_cut.at(i > 0 ? i - 1 : n - 1) : 0;
            const double endCut = cornerAfter(i) ? m_cut.at(i) : 0;
            m_parts.append(cutBack(segs.at(i), startCut, endCut));
        }

        const bool startMoves = closed && n > 0 && m_corner.at(n - 1);
        const koPoint first = startMoves ? m_parts.at(0).p0 : start;
        if (move >= 0 || startMoves) {
            RVPathElement e = move >= 0 ? m_src.at(move) : RVPathElement();
            e.type = RVPathElement::MoveTo;
            e.x = first.x;
            e.y = first.y;
            m_out.append(e);
        }
        koPoint current = first;
        for (int i = 0; i < n; ++i) {
            const Part &p = m_parts.at(i);
            const Segment &s = segs.at(i);
            if (!p.changed && s.element >= 0) {
                const int count = s.curve ? 3 : 1;
                for (int k = 0; k < count; ++k)
                    m_out.append(m_src.at(s.element + k));
                current = s.p1;
            } else if (s.curve) {
                if (!p.empty) {
                    append(p.c1, RVPathElement::CurveTo);
                    append(p.c2, RVPathElement::CurveData);
                    append(p.p1, RVPathElement::CurveData);
                    current = p.p1;
                }
            } else if (p.p1.getDistance(current) > koTolerance::Geometric) {
                append(p.p1, RVPathElement::LineTo);
                current = p.p1;
            }
            if (cornerAfter(i)) {
                const int k = (i + 1) % n;
                const Part &next = m_parts.at(k);
                const double cut = m_cut.at(i);
                const double hIn = cut * HandleFactor * (s.curved ? CurveHandleFactor : 1);
                const double hOut =
                        cut * HandleFactor * (segs.at(k).curved ? CurveHandleFactor : 1);
                append(current + snapped(p.tout * hIn), RVPathElement::CurveTo);
                append(next.p0 - snapped(next.tin * hOut), RVPathElement::CurveData);
                append(next.p0, RVPathElement::CurveData);
                current = next.p0;
            }
        }
        if (closed) {
            RVPathElement e = m_src.at(close);
            e.x = first.x;
            e.y = first.y;
            m_out.append(e);
        }
    }

private:
    // A segment cut back at its ends, with its tangents at the cut points.
    struct Part
    {
        koPoint p0, c1, c2, p1;
        koPoint tin, tout;
        bool changed = false;
        bool empty = false;
    };

    static bool isCorner(const Segment &a, const Segment &b)
    {
        if (!a.finite || !b.finite || !(a.length > 0) || !(b.length > 0))
            return false;
        double turn = std::atan2(b.tin.y, b.tin.x) - std::atan2(a.tout.y, a.tout.x);
        if (turn > Pi)
            turn -= 2 * Pi;
        else if (turn <= -Pi)
            turn += 2 * Pi;
        return std::abs(turn) >= StraightTurn;
    }

    static Part cutBack(const Segment &s, double startCut, double endCut)
    {
        Part p;
        p.p0 = s.p0;
        p.c1 = s.c1;
        p.c2 = s.c2;
        p.p1 = s.p1;
        p.tin = s.tin;
        p.tout = s.tout;
        p.changed = startCut > 0 || endCut > 0 || s.element < 0;
        if (!(startCut > 0 || endCut > 0))
            return p;
        if (!s.curve) {
            const koPoint dir(rvVector::direction(s.p0.toPt(), s.p1.toPt()));
            p.p0 = s.p0 + snapped(dir * startCut);
            p.p1 = s.p1 - snapped(dir * endCut);
            p.tin = p.tout = dir;
            return p;
        }
        const QVector<double> v = s.values();
        double t0 = 0;
        double t1 = 1;
        if (startCut > 0) {
            t0 = koCurve::getTimeAt(v, startCut, koTolerance::NoTime);
            if (t0 == koTolerance::NoTime)
                t0 = 1;
        }
        if (endCut > 0) {
            t1 = koCurve::getTimeAt(v, -endCut, koTolerance::NoTime);
            if (t1 == koTolerance::NoTime)
                t1 = 0;
        }
        if (t0 > t1)
            t0 = t1 = (t0 + t1) / 2;
        if (t0 == t1) {
            // Fully consumed: the bridges meet on the curve.
            p.p0 = p.p1 = koCurve::getPoint(v, t0);
            p.tin = p.tout = koCurve::getTangent(v, t0);
            p.empty = true;
            return p;
        }
        const QVector<double> part = koCurve::getPart(v, t0, t1);
        p.p0 = koPoint(part[0], part[1]);
        p.c1 = koPoint(part[2], part[3]);
        p.c2 = koPoint(part[4], part[5]);
        p.p1 = koPoint(part[6], part[7]);
        p.tin = koCurve::getTangent(v, t0);
        p.tout = koCurve::getTangent(v, t1);
        return p;
    }

    void append(const koPoint &p, int type) { m_out.append(rvVector::element(p.x, p.y, type)); }

    const QVector<RVPathElement> &m_src;
    QVector<RVPathElement> &m_out;
    const double m_radius;
    QVector<bool> m_corner;
    QVector<double> m_cut;
    QVector<Part> m_parts;
};

} // namespace

void RVPath::setCornerRound(double radius)
{
    if (radius == 0 || !(radius > 0) || m_elements.isEmpty())
        return;

    const QVector<RVPathElement> &src = m_elements;
    QVector<RVPathElement> out;
    out.reserve(src.size() + src.size() / 2);
    CornerRounder rounder(src, out, radius);
    QVector<Segment> segs;

    // The subpath being read: its move-to (-1 when it starts implicitly, at
    // (0, 0) before any move-to or at the start of a closed subpath).
    int move = -1;
    koPoint start, current;
    bool active = false;
    const auto flush = [&](int close) {
        if (active || close >= 0)
            rounder.round(segs, move, start, close);
        segs.clear();
        active = false;
        move = -1;
    };

    const int count = src.size();
    for (int i = 0; i < count; ++i) {
        const RVPathElement &e = src.at(i);
        switch (e.type) {
        case RVPathElement::MoveTo:
            flush(-1);
            move = i;
            start = current = pointOf(e);
            active = true;
            break;
        case RVPathElement::LineTo: {
            active = true;
            const koPoint p = pointOf(e);
            if (p.x == current.x && p.y == current.y)
                break; // no length, no direction: dropped
            segs.append(lineSegment(current, p, i));
            current = p;
            break;
        }
        case RVPathElement::CurveTo: {
            if (i + 2 >= count) {
                i = count; // an incomplete cubic at the end is dropped
                break;
            }
            active = true;
            const koPoint c1 = pointOf(e);
            const koPoint c2 = pointOf(src.at(i + 1));
            const koPoint end = pointOf(src.at(i + 2));
            const bool point = c1.x == current.x && c1.y == current.y && c2.x == current.x
                    && c2.y == current.y && end.x == current.x && end.y == current.y;
            if (!point)
                segs.append(curveSegment(current, c1, c2, end, i));
            current = end;
            i += 2;
            break;
        }
        case RVPathElement::Close:
            if (!(current.x == start.x && current.y == start.y))
                segs.append(lineSegment(current, start, -1));
            current = start;
            flush(i);
            break;
        default:
            break; // stray curve-data
        }
    }
    flush(-1);
    m_elements = out;
}
