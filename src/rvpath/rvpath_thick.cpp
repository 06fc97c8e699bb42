// Thick path: the outline of a stroke whose half-width changes linearly along
// the first subpath (a tapered brush stroke), with rounded caps at its ends.
//
// Each curve contributes two side polylines (the points at +-w along the
// normal), straight curves by their two ends, curved ones by samples every
// step. Where two curves meet at an angle the outer side gets a round join
// about the shared point and the inner side is trimmed at the crossing of its
// two side segments. Sampled runs are drawn as cubics through the samples
// with the sides' own tangents, so the outline is smooth between samples.

#include "rvpath/rvpath.h"

#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/kosegment.h"
#include "path/xpath.h"
#include "rvpath/rvvector_p.h"

#include <QtCore/QtNumeric>
#include <QtGui/QTransform>

#include <algorithm>
#include <cmath>

namespace {

using rvVector::isFinite;
using rvVector::length;

// Sampling of a curved piece stops this close to its end (the end itself is
// the last sample).
constexpr double EndGap = 0.1;
// A curved piece gets at least this many steps, by halving the step while it
// stays at or above HalvingFloor.
constexpr double MinSteps = 4.0;
constexpr double HalvingFloor = 2.0;
// Bound of the samples along the whole path: a finer step grows to the
// path's length divided by this.
constexpr double MaxSamples = 1e5;
// Cap contour: length beyond the end in half-widths; its handles reach
// CapAlong of that length along the line and CapAcross half-widths across it
// (0.55 is close to a quarter ellipse's 0.5523).
constexpr double CapLength = 1.2;
constexpr double CapAlong = 0.6;
constexpr double CapAcross = 0.55;
// Inner corners are trimmed at a crossing of the side segments found within
// this many segments on either side of the corner.
constexpr int TrimSearch = 16;
// Turns whose sine is below this are not turns (no round join).
constexpr double StraightTurn = 1e-9;

struct Node
{
    enum Kind { Line, Smooth, Arc };
    QPointF p;        // point of the side
    QPointF tangent;  // unit direction of the side at p
    QPointF c1, c2;   // handles of an Arc node
    Kind kind = Line; // how the side reaches p from the node before
};

// The two sides of one curve of the source.
struct Piece
{
    QVector<Node> side[2];
    QPointF start, end;   // source points at the piece's ends
    QPointF tStart, tEnd; // source unit tangents there
    double wStart = 0, wEnd = 0;
};

inline double cross(const QPointF &a, const QPointF &b)
{
    return a.x() * b.y() - a.y() * b.x();
}

inline double dot(const QPointF &a, const QPointF &b)
{
    return a.x() * b.x() + a.y() * b.y();
}

inline QPointF unit(const QPointF &v)
{
    const double l = length(v);
    return l > 0 ? v / l : QPointF();
}

// Offset direction of side k for the unit tangent t: side 0 lies at
// (-t.y, t.x), side 1 at (t.y, -t.x).
inline QPointF normal(const QPointF &t, int k)
{
    return k == 0 ? QPointF(-t.y(), t.x()) : QPointF(t.y(), -t.x());
}

// Rate of turn d(angle)/d(length) of the cubic \a v at time t: positive
// when it turns from t towards (-t.y, t.x).
double turnRate(const QVector<double> &v, double t)
{
    const double u = 1 - t;
    const QPointF p0(v[0], v[1]), p1(v[2], v[3]), p2(v[4], v[5]), p3(v[6], v[7]);
    const QPointF d1 = 3 * (u * u * (p1 - p0) + 2 * u * t * (p2 - p1) + t * t * (p3 - p2));
    const QPointF d2 = 6 * (u * (p2 - 2 * p1 + p0) + t * (p3 - 2 * p2 + p1));
    const double speed = length(d1);
    return speed > 0 ? cross(d1, d2) / (speed * speed * speed) : 0;
}

// Adds the two side nodes of a sample: point p, unit tangent t, half-width w,
// its derivative along the path dw and the path's rate of turn there. The
// side p + w n runs along t (1 - w turn) + dw n for side 0's normal n (the
// inner side of a bend is shorter, a taper leans), t (1 + w turn) + dw n for
// side 1's.
void addSample(Piece &piece, const QPointF &p, const QPointF &t, double w, double dw, double turn,
               Node::Kind kind)
{
    for (int k = 0; k < 2; ++k) {
        const QPointF n = normal(t, k);
        Node node;
        node.p = p + w * n;
        node.tangent = unit(t * (1 + (k == 0 ? -w : w) * turn) + dw * n);
        node.kind = kind;
        piece.side[k].append(node);
    }
}

// Crossing of the segments a0-a1 and b0-b1 (inside both, ends included).
bool segmentsCross(const QPointF &a0, const QPointF &a1, const QPointF &b0, const QPointF &b1,
                   QPointF *at)
{
    const QPointF da = a1 - a0, db = b1 - b0;
    const double den = cross(da, db);
    if (!(std::abs(den) > 0))
        return false;
    const double u = cross(b0 - a0, db) / den;
    const double v = cross(b0 - a0, da) / den;
    if (!(u >= 0 && u <= 1 && v >= 0 && v <= 1))
        return false;
    *at = a0 + u * da;
    return true;
}

// Round join from \a from to \a to about \a centre, appended to \a nodes as
// cubic arcs of at most 90 degrees, the radius blended from one end to the
// other. A half turn goes round in front of the corner (direction \a front).
void addArc(QVector<Node> &nodes, const QPointF &from, const QPointF &centre, const QPointF &to,
            const QPointF &front)
{
    const QPointF u = from - centre, v = to - centre;
    double delta = std::atan2(cross(u, v), dot(u, v));
    if (std::abs(cross(u, v)) <= StraightTurn * length(u) * length(v) && dot(u, v) < 0)
        delta = cross(u, front) >= 0 ? M_PI : -M_PI;
    // Quarter turns, without a needless extra piece from rounding.
    const int pieces = std::max(1, int(std::ceil(std::abs(delta) / (M_PI / 2) - 1e-9)));
    const double phi = delta / pieces;
    const double k = 4.0 / 3.0 * std::tan(phi / 4);
    const double a0 = std::atan2(u.y(), u.x());
    const double r0 = length(u), r1 = length(v);
    auto direction = [](double a) { return QPointF(-std::sin(a), std::cos(a)); };
    QPointF at = from;
    for (int j = 0; j < pieces; ++j) {
        const double aj = a0 + phi * j, an = a0 + phi * (j + 1);
        const double rj = r0 + (r1 - r0) * j / pieces;
        const double rn = r0 + (r1 - r0) * (j + 1) / pieces;
        Node node;
        node.kind = Node::Arc;
        node.p = j + 1 == pieces ? to : centre + rn * QPointF(std::cos(an), std::sin(an));
        node.c1 = at + rj * k * direction(aj);
        node.c2 = node.p - rn * k * direction(an);
        node.tangent = unit(delta >= 0 ? direction(an) : -direction(an));
        nodes.append(node);
        at = node.p;
    }
}

// The join on one side where the nodes \a a end and \a b begin, at the
// source point \a corner where the direction turns from \a t1 to \a t2.
// Inner side (the path turns towards it): both are trimmed at the crossing of
// their segments nearest to the corner, else joined by a line. Outer side: a
// round join about the corner. Returns the nodes to insert between them.
// \a samePiece: a and b are one closed curve's nodes.
QVector<Node> join(QVector<Node> &a, QVector<Node> &b, const QPointF &corner, const QPointF &t1,
                   const QPointF &t2, bool inner, bool samePiece)
{
    QVector<Node> inserted;
    const QPointF e = a.last().p, s = b.first().p;
    const bool turn = !(std::abs(cross(t1, t2)) <= StraightTurn && dot(t1, t2) > 0);
    // Meeting sides, or parallel ones (a step in width): a line.
    if (length(e - s) <= koTolerance::Geometric || !turn)
        return inserted;
    if (!inner) {
        addArc(inserted, e, corner, s, t1);
        return inserted;
    }
    const int last = a.size() - 1;
    for (int d = 0; d <= 2 * TrimSearch; ++d) {
        for (int i = 0; i <= d; ++i) {
            const int ia = last - i; // segment a[ia - 1] -> a[ia]
            const int ib = d - i;    // segment b[ib] -> b[ib + 1]
            if (i >= TrimSearch || ib >= TrimSearch || ia < 1 || ib + 1 >= b.size())
                continue;
            if (samePiece && ia - 1 <= ib + 1)
                continue;
            QPointF x;
            if (!segmentsCross(a.at(ia - 1).p, a.at(ia).p, b.at(ib).p, b.at(ib + 1).p, &x))
                continue;
            Node tailNode = a.at(ia);
            tailNode.p = x;
            tailNode.tangent = unit(a.at(ia).p - a.at(ia - 1).p);
            Node headNode = b.at(ib);
            headNode.p = x;
            headNode.tangent = unit(b.at(ib + 1).p - b.at(ib).p);
            headNode.kind = Node::Line;
            if (samePiece) {
                // One closed curve: cut both of its own ends.
                QVector<Node> cut;
                cut << headNode;
                cut += a.mid(ib + 1, ia - ib - 1);
                cut << tailNode;
                a = cut;
                return inserted;
            }
            a.resize(ia);
            a.append(tailNode);
            b.remove(0, ib + 1);
            b.prepend(headNode);
            return inserted;
        }
    }
    return inserted;
}

// Drops nodes near the one before (nearness of the element model); the last
// node is kept exactly, replacing a near predecessor, so that a side always
// ends where the caps begin.
QVector<Node> compact(const QVector<Node> &seq)
{
    QVector<Node> out;
    out.reserve(seq.size());
    for (int j = 0; j < seq.size(); ++j) {
        const Node &node = seq.at(j);
        if (out.isEmpty() || node.kind == Node::Arc || !rvVector::isNear(out.last().p, node.p)) {
            out.append(node);
        } else if (j + 1 == seq.size()) {
            if (out.size() > 1) {
                out.last().p = node.p;
                out.last().tangent = node.tangent;
                if (out.last().kind == Node::Arc)
                    out.last().c2 = node.p;
            } else {
                out.append(node);
            }
        }
    }
    return out;
}

// Writes a side as a subpath of \a path (move-to its first node).
void emitSide(RVPath &path, const QVector<Node> &seq)
{
    const QVector<Node> nodes = compact(seq);
    if (nodes.isEmpty())
        return;
    path.moveTo(nodes.first().p.x(), nodes.first().p.y());
    for (int j = 1; j < nodes.size(); ++j) {
        const Node &a = nodes.at(j - 1), &b = nodes.at(j);
        if (b.kind == Node::Arc) {
            path.cubicTo(b.c1, b.c2, b.p);
            continue;
        }
        const QPointF chord = b.p - a.p;
        // A sample whose side runs against the chord (a fold where the path
        // bends tighter than the half-width) is joined by a line.
        if (b.kind == Node::Smooth && dot(a.tangent, chord) > 0 && dot(b.tangent, chord) > 0) {
            const double d = length(chord) / 3;
            path.cubicTo(a.p + d * a.tangent, b.p - d * b.tangent, b.p);
        } else {
            path.appendElement(rvVector::element(b.p.x(), b.p.y(), RVPathElement::LineTo));
        }
    }
}

// Cap of half-width w at \a p: from the side-0 point round a bulge of
// CapLength * w in the direction \a angle (degrees) to the side-1 point
// (mirrored for the start, whose angle points backwards).
void appendCap(RVPath &out, const QPointF &p, double angle, double w)
{
    QTransform frame;
    frame.translate(p.x(), p.y());
    frame.rotate(angle);
    const double reach = CapLength * w;
    out.cubicTo(frame.map(QPointF(CapAlong * reach, w)), frame.map(QPointF(reach, CapAcross * w)),
                frame.map(QPointF(reach, 0)));
    out.cubicTo(frame.map(QPointF(reach, -CapAcross * w)), frame.map(QPointF(CapAlong * reach, -w)),
                frame.map(QPointF(0, -w)));
}

inline double degrees(const QPointF &t)
{
    return std::atan2(t.y(), t.x()) * 180.0 / M_PI;
}

} // namespace

void RVPath::thickPath(RVPath &out, double startWidth, double endWidth, double step)
{
    XPath x;
    _toXPathAsDrawn(x, 0);
    koPath *first = x.getFirstChild();
    if (!first)
        return;
    out.clear();
    if (!(step > 0) || !qIsFinite(step) || !qIsFinite(startWidth) || !qIsFinite(endWidth))
        return;

    // The curves that have a length; the taper runs along their exact arc
    // length.
    struct Use
    {
        koCurve *curve;
        double length;
    };
    QVector<Use> used;
    double total = 0;
    for (koCurve *curve : first->getCurves()) {
        const double len = curve->getLength();
        if (len > koTolerance::Epsilon && qIsFinite(len) && qIsFinite(total + len)) {
            used.append({curve, len});
            total += len;
        }
    }
    const double slope = total > 0 ? (endWidth - startWidth) / total : 0;
    auto width = [&](double s) {
        return startWidth + (endWidth - startWidth) * std::min(1.0, std::max(0.0, s / total));
    };
    if (total > 0 && total / step > MaxSamples)
        step = total / MaxSamples;

    QVector<Piece> pieces;
    pieces.reserve(used.size());
    double before = 0;
    for (const Use &use : used) {
        const QVector<double> v = use.curve->getValues();
        Piece piece;
        piece.start = QPointF(v[0], v[1]);
        piece.end = QPointF(v[6], v[7]);
        piece.tStart = koCurve::getTangent(v, 0).toPt();
        piece.tEnd = koCurve::getTangent(v, 1).toPt();
        piece.wStart = width(before);
        piece.wEnd = width(before + use.length);
        const bool straight = use.curve->isStraight();
        if (isFinite(piece.tStart) && isFinite(piece.tEnd)) {
            addSample(piece, piece.start, piece.tStart, piece.wStart, slope, turnRate(v, 0),
                      Node::Line);
            if (!straight) {
                double h = step;
                for (int i = 0; i < 64 && use.length / h < MinSteps && h >= HalvingFloor; ++i)
                    h /= 2;
                for (int j = 1;; ++j) {
                    const double u = j * h;
                    if (!(u < use.length - EndGap))
                        break;
                    const double t = koCurve::getTimeAt(v, u, koTolerance::NoTime);
                    if (!(t >= 0 && t <= 1))
                        continue;
                    const QPointF p = koCurve::getPoint(v, t).toPt();
                    const QPointF tangent = koCurve::getTangent(v, t).toPt();
                    if (isFinite(p) && isFinite(tangent))
                        addSample(piece, p, tangent, width(before + u), slope, turnRate(v, t),
                                  Node::Smooth);
                }
            }
            addSample(piece, piece.end, piece.tEnd, piece.wEnd, slope, turnRate(v, 1),
                      straight ? Node::Line : Node::Smooth);
            pieces.append(piece);
        }
        before += use.length;
    }

    // A subpath that ends where it starts is a closed outline (painter paths
    // close glyphs and shapes that way, without a close marker): a ring.
    const koSegment *firstSegment = first->getFirstSegment();
    const koSegment *lastSegment = first->getLastSegment();
    const bool closed = !pieces.isEmpty()
            && (first->isClosed()
                || (firstSegment != lastSegment
                    && firstSegment->point.getDistance(lastSegment->point)
                            <= koTolerance::Geometric));
    if (pieces.isEmpty()) {
        // No length: the caps alone make a dot of the brush round the point.
        const QPointF p = firstSegment ? firstSegment->point.toPt() : QPointF(qQNaN(), 0);
        if (!isFinite(p) || !(startWidth > 0 || endWidth > 0))
            return;
        // Of the larger width, so that it is round on both sides.
        const double w = std::max(startWidth, endWidth);
        Piece piece;
        piece.start = piece.end = p;
        piece.tStart = piece.tEnd = QPointF(1, 0);
        piece.wStart = piece.wEnd = w;
        addSample(piece, p, piece.tStart, w, 0, 0, Node::Line);
        addSample(piece, p, piece.tStart, w, 0, 0, Node::Line);
        pieces.append(piece);
    }

    QVector<Node> side[2];
    const int count = pieces.size();
    for (int k = 0; k < 2; ++k) {
        QVector<QVector<Node>> parts(count);
        for (int i = 0; i < count; ++i)
            parts[i] = pieces.at(i).side[k];
        QVector<QVector<Node>> joins(count);
        for (int i = 0; i + 1 < count || (closed && i < count); ++i) {
            const int j = (i + 1) % count;
            const Piece &a = pieces.at(i), &b = pieces.at(j);
            // Side 0 lies at (-t.y, t.x): a positive turn bends towards it
            // (for a positive width).
            const bool inner = (cross(a.tEnd, b.tStart) * a.wEnd > 0) == (k == 0);
            joins[i] = join(parts[i], parts[j], b.start, a.tEnd, b.tStart, inner, i == j);
        }
        for (int i = 0; i < count; ++i)
            side[k] += parts.at(i) + joins.at(i);
    }

    // Room for the whole outline: at most 3 elements a node, 8 for the caps.
    out.m_elements.reserve(3 * (side[0].size() + side[1].size()) + 16);
    RVPath back;
    back.m_elements.reserve(3 * side[1].size() + 8);
    if (closed) {
        // A ring: each side is a contour of its own, the second reversed.
        emitSide(out, side[0]);
        out.closeSubpath();
        emitSide(back, side[1]);
        back.closeSubpath();
        back.reverse();
        for (const RVPathElement &e : back.elements())
            out.appendElement(e);
        return;
    }

    // One contour: side 0 forward, the end cap, side 1 backward, the start
    // cap.
    const Piece &head = pieces.first(), &tail = pieces.last();
    emitSide(out, side[0]);
    const bool endCap = tail.wEnd > 0;
    if (endCap)
        appendCap(out, tail.end, degrees(tail.tEnd), tail.wEnd);
    emitSide(back, side[1]);
    back.reverse();
    if (!back.isEmpty()) {
        // After a cap its end is there already; else the sides meet by a line.
        if (!endCap)
            out.lineTo(back.elementAt(0).x, back.elementAt(0).y);
        for (int i = 1; i < back.elementCount(); ++i)
            out.appendElement(back.elementAt(i));
    }
    if (head.wStart > 0)
        appendCap(out, head.start, degrees(head.tStart) + 180.0, head.wStart);
    out.closeSubpath();
}
