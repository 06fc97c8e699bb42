#include "rvpath/rvpath.h"

#include "geometry/koline.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "rvpath/rvvector_p.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

namespace {

// tan(22.5 degrees): a miter farther than |d| / MiterTan = |d| (1 + sqrt 2)
// from the source corner is cut (turns sharper than about 49 degrees).
constexpr double MiterTan = 0.41421356237309503;
// Chords per curve when the given step cannot be used (<= 0 or NaN).
constexpr int FallbackCurveSamples = 32;
// Hard cap on the chords of one curve, so that a tiny step cannot stall.
constexpr int MaxCurveSamples = 10000;

using rvVector::isFinite;

// One chord of the raw offset outline. a/b are the offset ends (moved by
// the joins), dir the source chord it was offset from (the direction of
// travel), tin/tout the unit source tangents at its ends and src the source
// point at its start (the corner for a join).
struct Edge
{
    koPoint a, b;
    koPoint dir;
    koPoint tin, tout;
    koPoint src;
    bool corner; // a junction of two source segments lies before this edge
    int index;   // position among the raw chords; -1 for a bevel facet
};

// Intersection of the segments p..p2 and q..q2; false when they miss.
bool segmentHit(const koPoint &p, const koPoint &p2, const koPoint &q, const koPoint &q2,
                koPoint *hit)
{
    const koPoint h = koLine::intersect(p.x, p.y, p2.x, p2.y, q.x, q.y, q2.x, q2.y, false, false);
    if (h.isNaN())
        return false;
    *hit = h;
    return true;
}

// Offsets one subpath chord by chord and joins the chords into a parallel
// outline. The chords are pushed through a stack: at corners the outer side
// gets a miter or a bevel, the inner side is trimmed to the crossing of the
// neighbouring chords, and chords swallowed by the trimming (short edges on
// the inside of a turn, the folded part of a curve offset tighter than its
// curvature) are dropped.
class ParallelBuilder
{
public:
    ParallelBuilder(double distance, double step)
        : m_distance(distance),
          m_abs(std::abs(distance)),
          m_sign(distance > 0 ? 1 : -1),
          m_step(step)
    {}

    void reset() { m_raw.clear(); }

    void addLine(const koPoint &a, const koPoint &b)
    {
        const koPoint v = b - a;
        const double len = v.getLength();
        if (!(len > 0) || !isFinite(a) || !isFinite(b) || !qIsFinite(len))
            return;
        const koPoint t = v / len;
        const koPoint off = normal(t);
        m_raw.append(Edge{a + off, b + off, v, t, t, a, true, int(m_raw.size())});
    }

    // The curve flattened while it is offset: samples at arc lengths 0,
    // step, 2 step, ... below its length and at its end, each offset along
    // the normal of the curve's own tangent there.
    void addCurve(const koPoint &p0, const koPoint &c1, const koPoint &c2, const koPoint &p1)
    {
        if (!isFinite(p0) || !isFinite(c1) || !isFinite(c2) || !isFinite(p1))
            return;
        const QVector<double> v{p0.x, p0.y, c1.x, c1.y, c2.x, c2.y, p1.x, p1.y};
        const double length = koCurve::getLength(v);
        if (!qIsFinite(length) || length <= koTolerance::Epsilon)
            return;
        double step = m_step;
        if (!(step > 0))
            step = length / FallbackCurveSamples;
        if (length / step > MaxCurveSamples)
            step = length / MaxCurveSamples;

        bool first = true;
        double t = 0;
        for (double s = 0; s < length; s += step) {
            if (s > 0) {
                // Searched from the previous time: each search walks one step.
                const double next = koCurve::getTimeAt(v, step, t);
                if (next == koTolerance::NoTime || !(next > t) || next >= 1)
                    break;
                t = next;
            }
            sample(v, t, &first);
        }
        sample(v, 1, &first);
    }

    // Joins the collected chords into \a pts, the vertices of the outline.
    // \a joinEnds joins the end back to the start like any corner (a closed
    // subpath, or an open one that ends where it starts); \a closed drops an
    // inside offset that has collapsed.
    void finish(QVector<koPoint> &pts, bool closed, bool joinEnds)
    {
        pts.clear();
        bool gap = pass(0, nullptr);
        int first = 0;
        if (joinEnds) {
            // The first chord was never trimmed against the chords before
            // it, which the closing join alone cannot make up for when the
            // trimming reaches past one neighbour. Start again from a chord
            // whose start came out of a join.
            koPoint start;
            for (int i = 1; i < m_out.size() && first == 0; ++i) {
                first = std::max(m_out.at(i).index, 0);
                start = m_out.at(i).a;
            }
            if (first > 0)
                gap = pass(first, &start);
        }
        if (m_out.isEmpty())
            return;
        if (joinEnds) {
            closeJoin(gap || m_out.first().index != first);
            // Begin the outline where the source begins, as far as it is left.
            int begin = -1;
            for (int i = 0; i < m_out.size(); ++i)
                if (m_out.at(i).index >= 0
                    && (begin < 0 || m_out.at(i).index < m_out.at(begin).index))
                    begin = i;
            if (begin > 0)
                std::rotate(m_out.begin(), m_out.begin() + begin, m_out.end());
        }
        if (closed && collapsed())
            return;
        pts.reserve(m_out.size() * 2 + 1);
        pts.append(m_out.first().a);
        for (int i = 0; i < m_out.size(); ++i) {
            if (i > 0)
                pts.append(m_out.at(i).a);
            pts.append(m_out.at(i).b);
        }
        if (joinEnds)
            pts.append(m_out.first().a);
    }

private:
    // Joins the raw chords from raw index \a first on, all the way round,
    // the first one starting at \a start when given; true when chords were
    // dropped at the end.
    bool pass(int first, const koPoint *start)
    {
        m_out.clear();
        bool gap = false;
        const int n = m_raw.size();
        for (int k = 0; k < n; ++k) {
            Edge e = m_raw.at((first + k) % n);
            if (k == 0 && start)
                e.a = *start;
            if (!isFinite(e.a) || !isFinite(e.b) || (e.b - e.a).dot(e.dir) <= 0) {
                // Runs backwards: the fold of a curve offset beyond its
                // radius of curvature, swallowed by the trimming.
                gap = true;
                continue;
            }
            gap = !join(e, gap);
        }
        return gap;
    }

    koPoint normal(const koPoint &unitTangent) const
    {
        return koPoint(unitTangent.y, -unitTangent.x) * m_distance;
    }

    void sample(const QVector<double> &v, double t, bool *first)
    {
        const koPoint p = koCurve::getPoint(v, t);
        const koPoint tan = koCurve::getTangent(v, t);
        if (!isFinite(p) || !isFinite(tan) || tan.isZero())
            return; // a cusp has no side; its neighbours carry the outline
        const koPoint o = p + normal(tan);
        if (!*first) {
            const koPoint dir = p - m_prevP;
            if (dir.isZero())
                return;
            m_raw.append(
                    Edge{m_prevO, o, dir, m_prevT, tan, m_prevP, m_curveStart, int(m_raw.size())});
            m_curveStart = false;
        } else {
            *first = false;
            m_curveStart = true;
        }
        m_prevP = p;
        m_prevT = tan;
        m_prevO = o;
    }

    // Pushes \a e behind the chords so far; \a gap says that chords were
    // dropped between them. Returns false when e itself was swallowed.
    bool join(Edge e, bool gap)
    {
        if (m_out.isEmpty()) {
            m_out.append(e);
            return true;
        }
        if (!gap) {
            if (!e.corner) {
                m_out.append(e); // consecutive chords of one curve share their end
                return true;
            }
            if (corner(e)) {
                m_out.append(e);
                return true;
            }
        }
        return trim(e);
    }

    // A corner at e's source start: true when handled (straight on, outer
    // side), false for the inner side, which trim() handles. e.a may move.
    bool corner(Edge &e)
    {
        const Edge &q = m_out.last();
        const koPoint c = e.src;
        const koLine before(q.b, q.tout, true);
        const koLine after(e.a, e.tin, true);
        if (before.isCollinear(after)) {
            if (q.tout.dot(e.tin) < 0)
                bevel(c, q.tout, e.tin); // a U-turn: a point ahead of the tip
            return true;
        }
        // The turn goes to the side of the next point; the offset pieces
        // separate when that is not the offset side.
        const int side = koLine::getSide(c.x, c.y, q.tout.x, q.tout.y, c.x + e.tin.x, c.y + e.tin.y,
                                         true, true);
        if (side == m_sign)
            return false;
        const koPoint m = before.intersect(after, true);
        if (!m.isNaN() && m.getDistance(c) <= m_abs / MiterTan) {
            m_out.last().b = m;
            e.a = m;
        } else {
            bevel(c, q.tout, e.tin);
        }
        return true;
    }

    // Inner side: cut both chords at their crossing; a chord that the other
    // passes by entirely is swallowed (the stack top popped, or e dropped).
    bool trim(Edge e)
    {
        while (!m_out.isEmpty()) {
            Edge &q = m_out.last();
            koPoint x;
            if (segmentHit(q.a, q.b, e.a, e.b, &x)) {
                q.b = x;
                e.a = x;
                break;
            }
            const int result = swallow(q, e);
            if (result == 2)
                return false;
            if (result == 0)
                break;
            m_out.removeLast();
        }
        m_out.append(e);
        return true;
    }

    // For chords q (before) and e (after) that do not cross: 1 when q is
    // swallowed (their lines meet behind q), 2 when e is (ahead of e), else
    // 0: both stay, linked through the lines' meeting point when that keeps
    // the miter limit, by a straight line otherwise.
    int swallow(Edge &q, Edge &e) const
    {
        const koPoint vq = q.b - q.a;
        const koPoint ve = e.b - e.a;
        const koPoint m =
                koLine::intersect(q.a.x, q.a.y, vq.x, vq.y, e.a.x, e.a.y, ve.x, ve.y, true, true);
        if (m.isNaN())
            return 0;
        const double lq = vq.dot(vq);
        const double le = ve.dot(ve);
        const double tq = lq > 0 ? (m - q.a).dot(vq) / lq : 0;
        const double te = le > 0 ? (m - e.a).dot(ve) / le : 1;
        if (tq < 0)
            return 1;
        if (te > 1)
            return 2;
        if (m.getDistance(e.src) <= m_abs / MiterTan) {
            q.b = m;
            e.a = m;
        }
        return 0;
    }

    // The cut corner: two facets through the point at |d| from the corner
    // on the bisector of the two offset normals, so that the outline keeps
    // its distance at the bevel's vertices.
    void bevel(const koPoint &c, const koPoint &tout, const koPoint &tin)
    {
        koPoint mid = normal(tout) + normal(tin);
        if (mid.getLength() <= koTolerance::Geometric * m_abs)
            mid = tout; // a U-turn: the tip lies straight ahead
        const koPoint m = c + mid.normalize(m_abs);
        const koPoint from = m_out.last().b;
        const koPoint d = m - from;
        if (!d.isZero() && isFinite(m)) {
            const koPoint t = d.normalize();
            m_out.append(Edge{from, m, d, t, t, c, true, -1});
        }
    }

    // The join of the last chord with the first one (the closing corner).
    void closeJoin(bool gap)
    {
        for (int guard = m_out.size(); m_out.size() >= 2 && guard >= 0; --guard) {
            Edge e = m_out.first();
            if (!gap) {
                e.corner = true;
                if (corner(e)) {
                    m_out.first().a = e.a;
                    return;
                }
            }
            gap = true;
            Edge &q = m_out.last();
            koPoint x;
            if (segmentHit(q.a, q.b, e.a, e.b, &x)) {
                q.b = x;
                m_out.first().a = x;
                return;
            }
            const int result = swallow(q, e);
            if (result == 0) {
                m_out.first().a = e.a;
                return;
            }
            if (result == 1)
                m_out.removeLast();
            else
                m_out.removeFirst();
        }
    }

    // True when the inside offset of a closed subpath has collapsed: what
    // is left runs the other way round than the source, or has no area,
    // which happens when |d| exceeds the room inside the shape.
    bool collapsed() const
    {
        double source = 0;
        for (int i = 0; i < m_raw.size(); ++i) {
            const koPoint &p = m_raw.at(i).src;
            const koPoint &q = m_raw.at((i + 1) % m_raw.size()).src;
            source += p.cross(q);
        }
        if (!(source * m_distance < 0))
            return false; // outward offsets never collapse
        double result = 0;
        for (int i = 0; i < m_out.size(); ++i) {
            const Edge &e = m_out.at(i);
            const Edge &f = m_out.at((i + 1) % m_out.size());
            result += e.a.cross(e.b) + e.b.cross(f.a);
        }
        return !(result * source > 0);
    }

    const double m_distance;
    const double m_abs;
    const int m_sign;
    const double m_step;
    QVector<Edge> m_raw;
    QVector<Edge> m_out;
    koPoint m_prevP, m_prevT, m_prevO;
    bool m_curveStart = false;
};

} // namespace

void RVPath::parallelPath(RVPath &out, double distance, double step) const
{
    const QVector<RVPathElement> src = m_elements; // out may be this path
    if (distance == 0) {
        out.m_elements = src;
        return;
    }
    out.clear();
    if (!qIsFinite(distance))
        return;

    ParallelBuilder builder(distance, step);
    QVector<koPoint> pts;
    koPoint start, current; // drawing starts at (0, 0) before any move-to
    bool active = false;    // a subpath is being collected
    const auto flushSubpath = [&](bool closed) {
        if (!active)
            return;
        active = false;
        const bool meets = closed || current.equals(start, koTolerance::RVNearness);
        builder.finish(pts, closed, meets);
        if (pts.isEmpty())
            return;
        out.moveTo(pts.first().x, pts.first().y);
        for (int i = 1; i < pts.size(); ++i)
            out.lineTo(pts.at(i).x, pts.at(i).y);
        if (closed)
            out._closeCurrent();
    };
    const auto begin = [&](const koPoint &p) {
        flushSubpath(false);
        builder.reset();
        start = current = p;
        active = true;
    };

    // Drawing elements without a move-to continue from the current point:
    // (0, 0) at first, the start of a subpath after its close.
    const int count = src.size();
    for (int i = 0; i < count; ++i) {
        const RVPathElement &e = src.at(i);
        const koPoint p(e.x, e.y);
        switch (e.type) {
        case RVPathElement::MoveTo:
            begin(p);
            break;
        case RVPathElement::LineTo:
            if (!active)
                begin(current);
            builder.addLine(current, p);
            current = p;
            break;
        case RVPathElement::CurveTo: {
            if (i + 2 >= count)
                break; // an incomplete cubic at the end
            const koPoint c2(src.at(i + 1).x, src.at(i + 1).y);
            const koPoint end(src.at(i + 2).x, src.at(i + 2).y);
            i += 2;
            if (!active)
                begin(current);
            builder.addCurve(current, p, c2, end);
            current = end;
            break;
        }
        case RVPathElement::Close:
            if (!active)
                break;
            if (!(current.x == start.x && current.y == start.y))
                builder.addLine(current, start);
            current = start;
            flushSubpath(true);
            break;
        default:
            break; // stray curve-data
        }
    }
    flushSubpath(false);
}
