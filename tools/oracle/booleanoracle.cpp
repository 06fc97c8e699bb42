#include "booleanoracle.h"

#include "oraclecommands.h"
#include "oraclegeometry.h"

#include "boolean/kostyle.h"
#include "geometry/kotolerance.h"
#include "path/kopath.h"
#include "path/kosegment.h"
#include "path/xpath.h"

#include <QtCore/QDataStream>
#include <QtCore/QElapsedTimer>
#include <QtCore/QIODevice>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace rvOracle {

static XPath *xpathFromCommands(const QJsonArray &commands);

QString opName(Op op)
{
    switch (op) {
    case Op::Union:
        return QStringLiteral("union");
    case Op::Intersect:
        return QStringLiteral("intersect");
    case Op::Difference:
        return QStringLiteral("difference");
    case Op::ReverseDifference:
        return QStringLiteral("rdifference");
    case Op::Xor:
        return QStringLiteral("xor");
    case Op::Divide:
        return QStringLiteral("divide");
    }
    return QString();
}

bool opFromName(const QString &name, Op *op)
{
    for (Op o :
         {Op::Union, Op::Intersect, Op::Difference, Op::ReverseDifference, Op::Xor, Op::Divide}) {
        if (opName(o) == name) {
            *op = o;
            return true;
        }
    }
    return false;
}

QString statusName(Status status)
{
    switch (status) {
    case Status::Passed:
        return QStringLiteral("passed");
    case Status::Failed:
        return QStringLiteral("failed");
    case Status::Inconclusive:
        return QStringLiteral("inconclusive");
    case Status::Crashed:
        return QStringLiteral("crashed");
    case Status::TimedOut:
        return QStringLiteral("timed out");
    }
    return QString();
}

// --- verdicts -------------------------------------------------------------------

double Verdict::badness() const
{
    if (status == Status::Crashed || status == Status::TimedOut)
        return 1e9;
    if (status != Status::Failed)
        return 0;
    const double share = samples > 0 ? double(mismatches) / samples : 0;
    return 1 + share * 1e3 + std::min(areaError, 1.0);
}

QByteArray Verdict::serialize() const
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << int(status) << reason << repro << samples << mismatches << area << area2 << complement
        << areaUncertainty << areaError << seconds << fillRuleDependent << selfCrossing;
    return bytes;
}

bool Verdict::deserialize(const QByteArray &bytes, Verdict *v)
{
    QDataStream in(bytes);
    int status = 0;
    in >> status >> v->reason >> v->repro >> v->samples >> v->mismatches >> v->area >> v->area2
            >> v->complement >> v->areaUncertainty >> v->areaError >> v->seconds
            >> v->fillRuleDependent >> v->selfCrossing;
    v->status = Status(status);
    return in.status() == QDataStream::Ok;
}

Outcome::Outcome() = default;
Outcome::~Outcome() = default;
Outcome::Outcome(Outcome &&other) = default;

// --- conversion -------------------------------------------------------------------

static geom::Subpath subpathOf(const koPath *path)
{
    geom::Subpath s;
    const QList<koSegment *> &segs = path->segments;
    const int n = segs.size();
    const int curves = path->closed ? n : n - 1;
    // A closed path of one segment is one curve from the point back to
    // itself (a loop), which has area; an open one has no curve.
    for (int i = 0; i < curves && (n > 1 || path->closed); ++i) {
        const koSegment *from = segs[i];
        const koSegment *to = segs[(i + 1) % n];
        geom::Piece piece;
        piece.p[0] = QPointF(from->point.x, from->point.y);
        piece.p[3] = QPointF(to->point.x, to->point.y);
        const koPoint h1 = from->handleOut, h2 = to->handleIn;
        if (h1.x != 0 || h1.y != 0 || h2.x != 0 || h2.y != 0) {
            piece.curve = true;
            piece.p[1] = piece.p[0] + QPointF(h1.x, h1.y);
            piece.p[2] = piece.p[3] + QPointF(h2.x, h2.y);
        }
        s.pieces.append(piece);
    }
    return s;
}

namespace {

// Builds the compound path subpath by subpath, as drawing commands come.
class XPathBuilder
{
public:
    explicit XPathBuilder(bool closeAll) : m_closeAll(closeAll), m_result(new XPath) {}

    void moveTo(const QPointF &p)
    {
        finish(false);
        m_path = new koPath;
        m_path->moveTo(p.x(), p.y());
    }
    void lineTo(const QPointF &p)
    {
        if (m_path)
            m_path->lineTo(p.x(), p.y());
    }
    void cubicTo(const QPointF &c1, const QPointF &c2, const QPointF &p)
    {
        if (m_path)
            m_path->cubicCurveTo(koPoint(c1), koPoint(c2), koPoint(p));
    }
    void close() { finish(true); }
    XPath *take()
    {
        finish(false);
        m_result->addChildren(m_children);
        for (koPath *child : m_children)
            child->release(); // addChildren took its own reference
        return m_result;
    }

private:
    void finish(bool closeRequested)
    {
        koPath *path = m_path;
        m_path = nullptr;
        if (!path)
            return;
        QList<koSegment *> &segs = path->segments;
        if (segs.size() < 2) {
            path->addRef();
            path->release();
            return;
        }
        koSegment *first = segs.first();
        koSegment *last = segs.last();
        const bool meet = first->point.x == last->point.x && first->point.y == last->point.y;
        if (closeRequested || m_closeAll || meet) {
            if (meet) {
                first->setHandleIn(last->handleIn);
                path->removeSegment(segs.size() - 1);
            }
            path->setClosed(true);
            // Keep the orientation as drawn: record it so that the compound
            // path does not reorient the child by its position.
            const double area = geom::signedArea(subpathOf(path));
            path->addFlags(area >= 0 ? koPath::Clockwise : koPath::CounterClockwise);
        }
        path->addRef();
        m_children.append(path);
    }

    bool m_closeAll;
    XPath *m_result;
    koPath *m_path = nullptr;
    QVector<koPath *> m_children;
};

} // namespace

XPath *toXPath(const QPainterPath &path, bool closeAll)
{
    XPathBuilder builder(closeAll);
    const int count = path.elementCount();
    for (int i = 0; i < count; ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        switch (e.type) {
        case QPainterPath::MoveToElement:
            builder.moveTo(e);
            break;
        case QPainterPath::LineToElement:
            builder.lineTo(e);
            break;
        case QPainterPath::CurveToElement:
            if (i + 2 < count)
                builder.cubicTo(e, path.elementAt(i + 1), path.elementAt(i + 2));
            i += 2;
            break;
        default:
            break;
        }
    }
    return builder.take();
}

XPath *xpathFromCommands(const QJsonArray &commands)
{
    XPathBuilder builder(true);
    drawCommands(commands, builder, nullptr);
    return builder.take();
}

QPainterPath toPainterPath(const XPath *path)
{
    QPainterPath result;
    result.setFillRule(Qt::WindingFill);
    if (!path)
        return result;
    for (const koPath *child : path->children) {
        const geom::Subpath s = subpathOf(child);
        if (s.pieces.isEmpty())
            continue;
        result.moveTo(s.pieces.first().p[0]);
        for (const geom::Piece &piece : s.pieces) {
            if (piece.curve)
                result.cubicTo(piece.p[1], piece.p[2], piece.p[3]);
            else
                result.lineTo(piece.p[3]);
        }
        if (child->closed)
            result.closeSubpath();
    }
    return result;
}

// --- operations -----------------------------------------------------------------

static bool truth(Op op, bool a, bool b)
{
    switch (op) {
    case Op::Union:
        return a || b;
    case Op::Intersect:
        return a && b;
    case Op::Difference:
        return a && !b;
    case Op::ReverseDifference:
        return !a && b;
    case Op::Xor:
        return a != b;
    case Op::Divide:
        break;
    }
    return false;
}

// An operation on possibly inverse operands, rewritten on the operands' own
// fills: \c code holds the truth table (bit 0: in B only, bit 1: in A only,
// bit 2: in both) of a set that never holds the points outside both, and
// \c complement says that the wanted set is its complement.
struct Plan
{
    int code = 0;
    bool complement = false;
};

static Plan planFor(Op op, bool inverseA, bool inverseB)
{
    auto g = [&](bool x, bool y) { return truth(op, x != inverseA, y != inverseB); };
    Plan plan;
    plan.complement = g(false, false);
    if (g(false, true) != plan.complement)
        plan.code |= 1;
    if (g(true, false) != plan.complement)
        plan.code |= 2;
    if (g(true, true) != plan.complement)
        plan.code |= 4;
    return plan;
}

// A set that is one operand alone is that operand resolved by the library
// (the operation of a path with itself), like every other result.
static XPath *applyLibrary(int code, XPath *a, XPath *b)
{
    switch (code) {
    case 1:
        return b->subtract(a);
    case 2:
        return a->subtract(b);
    case 3:
        return a->exclude(b);
    case 4:
        return a->intersect(b);
    case 5:
        return b->unite(b);
    case 6:
        return a->unite(a);
    case 7:
        return a->unite(b);
    default:
        return new XPath;
    }
}

static QPainterPath applyQt(int code, const QPainterPath &a, const QPainterPath &b)
{
    switch (code) {
    case 1:
        return b.subtracted(a);
    case 2:
        return a.subtracted(b);
    case 3:
        return a.subtracted(b).united(b.subtracted(a));
    case 4:
        return a.intersected(b);
    case 5:
        return b;
    case 6:
        return a;
    case 7:
        return a.united(b);
    default:
        return QPainterPath();
    }
}

static XPath *operandXPath(const Operand &operand)
{
    XPath *path = operand.commands.isEmpty() ? toXPath(operand.path, true)
                                             : xpathFromCommands(operand.commands);
    // The operand is filled by its own rule.
    if (path)
        path->setEvenOdd(operand.path.fillRule() == Qt::OddEvenFill);
    return path;
}

Outcome runOperation(const Case &c)
{
    Outcome out;
    std::unique_ptr<XPath> a(operandXPath(c.a));
    std::unique_ptr<XPath> b(operandXPath(c.b));
    QElapsedTimer timer;
    timer.start();
    if (c.op == Op::Divide && !c.a.inverse && !c.b.inverse) {
        const QList<XPath *> parts = a->divide(b.get());
        out.parts = parts.size();
        out.first.reset(parts.value(0));
        out.second.reset(parts.value(1));
        for (int i = 2; i < parts.size(); ++i)
            delete parts[i];
    } else if (c.op == Op::Divide) {
        const Plan p1 = planFor(Op::Difference, c.a.inverse, c.b.inverse);
        const Plan p2 = planFor(Op::Intersect, c.a.inverse, c.b.inverse);
        out.first.reset(applyLibrary(p1.code, a.get(), b.get()));
        out.second.reset(applyLibrary(p2.code, a.get(), b.get()));
        out.complement = p1.complement;
        out.complement2 = p2.complement;
        out.parts = 2;
    } else {
        const Plan plan = planFor(c.op, c.a.inverse, c.b.inverse);
        out.first.reset(applyLibrary(plan.code, a.get(), b.get()));
        out.complement = plan.complement;
    }
    out.seconds = timer.nsecsElapsed() * 1e-9;
    return out;
}

// --- text forms -------------------------------------------------------------------

static QString hex(double v)
{
    char text[64];
    std::snprintf(text, sizeof text, "%a", v);
    return QString::fromLatin1(text);
}

static QString hexPoint(const QPointF &p)
{
    return QStringLiteral("QPointF(%1, %2)").arg(hex(p.x()), hex(p.y()));
}

QString toCpp(const QPainterPath &path, const QString &name)
{
    QString s =
            QStringLiteral("QPainterPath %1;\n%1.setFillRule(%2);\n")
                    .arg(name,
                         path.fillRule() == Qt::WindingFill ? QStringLiteral("Qt::WindingFill")
                                                            : QStringLiteral("Qt::OddEvenFill"));
    const int count = path.elementCount();
    for (int i = 0; i < count; ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (e.type == QPainterPath::MoveToElement) {
            s += QStringLiteral("%1.moveTo(%2, %3);\n").arg(name, hex(e.x), hex(e.y));
        } else if (e.type == QPainterPath::LineToElement) {
            s += QStringLiteral("%1.lineTo(%2, %3);\n").arg(name, hex(e.x), hex(e.y));
        } else if (e.type == QPainterPath::CurveToElement && i + 2 < count) {
            const QPainterPath::Element c2 = path.elementAt(i + 1), p = path.elementAt(i + 2);
            s += QStringLiteral("%1.cubicTo(%2, %3, %4, %5, %6, %7);\n")
                         .arg(name, hex(e.x), hex(e.y), hex(c2.x), hex(c2.y), hex(p.x), hex(p.y));
            i += 2;
        }
    }
    return s;
}

QString reproducer(const Case &c)
{
    return QStringLiteral("// %1: %2%3%4\n")
                   .arg(c.name, opName(c.op),
                        c.a.inverse ? QStringLiteral(", A inverse") : QString(),
                        c.b.inverse ? QStringLiteral(", B inverse") : QString())
            + toCpp(c.a.path, QStringLiteral("a")) + toCpp(c.b.path, QStringLiteral("b"));
}

bool hasNonFinite(const QPainterPath &path)
{
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (!std::isfinite(e.x) || !std::isfinite(e.y))
            return true;
    }
    return false;
}

static double pathDiagonal(const QPainterPath &path)
{
    const QRectF r = path.controlPointRect();
    return std::hypot(r.width(), r.height());
}

double exactArea(const QPainterPath &path)
{
    const double tolerance = std::max(pathDiagonal(path) * 1e-5, 1e-9);
    return geom::exactArea(geom::subpathsOf(path), path.fillRule(), tolerance);
}

// --- the judge ----------------------------------------------------------------------

namespace {

struct Part
{
    const XPath *path = nullptr;
    Op op = Op::Union;
    bool complement = false;
    QString label;
    QPainterPath reference; // Qt's boolean of the flattened operands
    int mismatches = 0;
    int evenOddMismatches = 0;
    int referenceMismatches = 0;
    bool needsCurves = false;
    QStringList examples;
};

quint32 nameHash(const QString &name)
{
    quint32 h = 2166136261u;
    for (QChar ch : name)
        h = (h ^ ch.unicode()) * 16777619u;
    return h;
}

QPainterPath polygonPath(const QVector<QPolygonF> &polygons, Qt::FillRule rule)
{
    QPainterPath p;
    p.setFillRule(rule);
    for (const QPolygonF &poly : polygons) {
        if (poly.size() < 2)
            continue;
        p.addPolygon(poly);
        p.closeSubpath();
    }
    return p;
}

bool resultHasHandles(const XPath *path)
{
    if (!path)
        return false;
    for (const koPath *child : path->children)
        for (const koSegment *s : child->segments)
            if (s->handleIn.x != 0 || s->handleIn.y != 0 || s->handleOut.x != 0
                || s->handleOut.y != 0)
                return true;
    return false;
}

bool libraryContains(const XPath *path, const QPointF &p, bool evenOdd)
{
    if (!path)
        return false;
    koStyle style;
    style.evenOdd = evenOdd;
    return path->contains(koPoint(p), style);
}

} // namespace

Verdict judge(const Case &c, const Outcome &o, const Options &opt)
{
    Verdict v;
    v.seconds = o.seconds;
    v.complement = o.complement;
    if (commandsHaveNonFinite(c.a.commands) || commandsHaveNonFinite(c.b.commands)
        || hasNonFinite(c.a.path) || hasNonFinite(c.b.path)) {
        v.status = Status::Passed;
        v.reason =
                QStringLiteral("non-finite coordinates: no crash and no hang, nothing else judged");
        return v;
    }
    if (c.op == Op::Divide && o.parts != 2) {
        v.reason = QStringLiteral("divide returned %1 parts instead of 2").arg(o.parts);
        v.repro = reproducer(c);
        return v;
    }

    QVector<Part> parts;
    if (c.op == Op::Divide) {
        Part d, i;
        d.path = o.first.get();
        d.op = Op::Difference;
        d.complement = o.complement;
        d.label = QStringLiteral("difference part");
        i.path = o.second.get();
        i.op = Op::Intersect;
        i.complement = o.complement2;
        i.label = QStringLiteral("intersection part");
        parts << d << i;
    } else {
        Part p;
        p.path = o.first.get();
        p.op = c.op;
        p.complement = o.complement;
        p.label = QStringLiteral("result");
        parts << p;
    }

    // The sampling box, the margin and the flattening tolerance. The
    // flattening stays well inside the margin, so a judged point is on the
    // same side of the flattened outline as of the exact one.
    QRectF box = c.a.path.boundingRect() | c.b.path.boundingRect();
    if (box.isNull() || !box.isValid())
        box = QRectF(-1, -1, 2, 2) | box;
    const double pad = 0.05 * std::max(box.width(), box.height());
    box.adjust(-pad, -pad, pad, pad);
    const double diagonal = std::hypot(box.width(), box.height());
    const double margin = std::max(opt.margin * diagonal, opt.minMargin);
    const double tolerance = margin / 8;

    const QVector<geom::Subpath> subA = geom::subpathsOf(c.a.path);
    const QVector<geom::Subpath> subB = geom::subpathsOf(c.b.path);
    const QVector<QPolygonF> polyA = geom::flatten(subA, tolerance);
    const QVector<QPolygonF> polyB = geom::flatten(subB, tolerance);
    const geom::EdgeIndex index(polyA + polyB, box, 2 * margin);

    const QPainterPath flatA = polygonPath(polyA, c.a.path.fillRule());
    const QPainterPath flatB = polygonPath(polyB, c.b.path.fillRule());
    for (Part &part : parts) {
        const Plan plan = planFor(part.op, c.a.inverse, c.b.inverse);
        part.reference = applyQt(plan.code, flatA, flatB);
    }

    // The same operands under the other fill rule: where their readings
    // differ, an operand's own contours overlap, and a failure may come from
    // the fill rule rather than from the operation.
    QPainterPath otherA = c.a.path, otherB = c.b.path;
    otherA.setFillRule(c.a.path.fillRule() == Qt::WindingFill ? Qt::OddEvenFill : Qt::WindingFill);
    otherB.setFillRule(c.b.path.fillRule() == Qt::WindingFill ? Qt::OddEvenFill : Qt::WindingFill);
    int ruleSensitiveA = 0, ruleSensitiveB = 0;

    auto inA = [&](const QPointF &p) { return c.a.path.contains(p) != c.a.inverse; };
    auto inB = [&](const QPointF &p) { return c.b.path.contains(p) != c.b.inverse; };

    // Sample points: a grid, uniform random points, and points just beyond
    // the margin on both sides of the outlines, where wrong pieces show.
    std::mt19937 random(opt.seed ^ nameHash(c.name) ^ quint32(c.op) * 0x9e3779b9u);
    std::uniform_real_distribution<double> unit(0, 1);
    QVector<QPointF> points;
    for (int i = 0; i < opt.gridSide; ++i)
        for (int j = 0; j < opt.gridSide; ++j)
            points.append(QPointF(box.left() + (i + 0.5) / opt.gridSide * box.width(),
                                  box.top() + (j + 0.5) / opt.gridSide * box.height()));
    for (int i = 0; i < opt.randomPoints; ++i)
        points.append(QPointF(box.left() + unit(random) * box.width(),
                              box.top() + unit(random) * box.height()));
    const QVector<QLineF> &edges = index.edges();
    QVector<double> cumulative;
    double total = 0;
    for (const QLineF &e : edges)
        cumulative.append(total += e.length());
    for (int i = 0; i < opt.nearPoints && total > 0; ++i) {
        const double at = unit(random) * total;
        const int k = std::min<int>(int(std::lower_bound(cumulative.begin(), cumulative.end(), at)
                                        - cumulative.begin()),
                                    edges.size() - 1);
        const QLineF &e = edges[k];
        const QPointF on = e.pointAt(unit(random));
        const QPointF normal = QPointF(-e.dy(), e.dx()) / e.length();
        const double offset = (1.5 + 2.5 * unit(random)) * margin * (unit(random) < 0.5 ? -1 : 1);
        points.append(on + normal * offset);
    }

    for (const QPointF &p : points) {
        if (index.near(p, margin))
            continue;
        ++v.samples;
        const bool a = inA(p), b = inB(p);
        ruleSensitiveA += (otherA.contains(p) != c.a.inverse) != a;
        ruleSensitiveB += (otherB.contains(p) != c.b.inverse) != b;
        for (Part &part : parts) {
            const bool expected = truth(part.op, a, b);
            const bool got = libraryContains(part.path, p, false) != part.complement;
            if (got != expected) {
                if (part.examples.size() < 3) {
                    const bool qtSays = toPainterPath(part.path).contains(p) != part.complement;
                    part.examples << QStringLiteral("%1 should be %2, the result says %3 (Qt reads "
                                                    "the result as %4)")
                                             .arg(hexPoint(p),
                                                  expected ? QStringLiteral("inside")
                                                           : QStringLiteral("outside"),
                                                  got ? QStringLiteral("inside")
                                                      : QStringLiteral("outside"),
                                                  qtSays ? QStringLiteral("inside")
                                                         : QStringLiteral("outside"));
                }
                ++part.mismatches;
            }
            if (opt.checkEvenOdd
                && (libraryContains(part.path, p, true) != part.complement) != expected)
                ++part.evenOddMismatches;
            if ((part.reference.contains(p) != part.complement) != expected)
                ++part.referenceMismatches;
        }
    }
    if (v.samples == 0) {
        v.status = Status::Inconclusive;
        v.reason =
                QStringLiteral("no sample point lies farther than the margin %1 from the outlines")
                        .arg(margin);
        return v;
    }

    QStringList failures;
    QStringList notes;
    for (const Part &part : parts) {
        v.mismatches += part.mismatches;
        if (part.mismatches > 0)
            failures << QStringLiteral("point test: %1 of %2 samples wrong in the %3%4")
                                .arg(part.mismatches)
                                .arg(v.samples)
                                .arg(part.label,
                                     part.path ? QString() : QStringLiteral(" (null result)"));
        else if (part.evenOddMismatches > 0)
            failures << QStringLiteral("%1 of %2 samples wrong when the %3 is read under the "
                                       "even-odd rule (contour nesting or orientation)")
                                .arg(part.evenOddMismatches)
                                .arg(v.samples)
                                .arg(part.label);
    }

    // Curves kept: where a curved piece of an operand outline bounds the
    // expected set (its two sides differ), the result must have curves too.
    if (opt.checkCurves) {
        const double step = 2 * margin;
        for (const QVector<geom::Subpath> *subs : {&subA, &subB}) {
            for (const geom::Subpath &s : *subs) {
                for (const geom::Piece &piece : s.pieces) {
                    if (!piece.curve)
                        continue;
                    for (double t : {0.5, 0.25, 0.75}) {
                        const QPointF q = piece.pointAt(t), d = piece.derivativeAt(t);
                        const double length = std::hypot(d.x(), d.y());
                        if (!(length > 0))
                            continue;
                        const QPointF n = QPointF(-d.y(), d.x()) / length * step;
                        const QPointF q1 = q + n, q2 = q - n;
                        if (index.near(q1, 0.75 * step) || index.near(q2, 0.75 * step))
                            continue;
                        const bool a1 = inA(q1), b1 = inB(q1), a2 = inA(q2), b2 = inB(q2);
                        for (Part &part : parts)
                            if (truth(part.op, a1, b1) != truth(part.op, a2, b2))
                                part.needsCurves = true;
                    }
                }
            }
        }
        for (const Part &part : parts)
            if (part.needsCurves && !resultHasHandles(part.path) && part.mismatches == 0)
                failures << QStringLiteral("curves lost: curved operand outline bounds the %1, "
                                           "which has only straight segments")
                                    .arg(part.label);
    }

    // Areas: the exact area of each result part, and Qt's boolean of the
    // flattened operands as reference. Every point of the flattened outlines
    // lies within the tolerance of the exact ones, and the result's outline
    // is made of pieces of both, so the two areas differ by at most the
    // tolerance times the operands' perimeters.
    const double perimeters = geom::perimeter(polyA) + geom::perimeter(polyB);
    const double boxArea = box.width() * box.height();
    for (int k = 0; k < parts.size(); ++k) {
        Part &part = parts[k];
        const QVector<geom::Subpath> result = geom::subpathsOf(toPainterPath(part.path));
        double area = geom::exactArea(result, Qt::WindingFill, tolerance);
        double uncertainty = 0;
        if (std::isnan(area)) {
            // Contours that cross are still a set under the non-zero rule.
            const QVector<QPolygonF> flat = geom::flatten(result, tolerance);
            area = geom::fillArea(flat, Qt::WindingFill);
            uncertainty = tolerance * geom::perimeter(flat);
        }
        (k == 0 ? v.area : v.area2) = area;
        v.areaUncertainty = std::max(v.areaUncertainty, uncertainty);
        if (!opt.checkArea || part.mismatches > 0)
            continue;
        if (part.referenceMismatches > 0) {
            notes << QStringLiteral("Qt's reference failed %1 point samples, area not compared")
                             .arg(part.referenceMismatches);
            continue;
        }
        const double reference =
                geom::fillArea(geom::flatten(geom::subpathsOf(part.reference), tolerance),
                               part.reference.fillRule());
        const double allowed = tolerance * perimeters + uncertainty + 1e-9 * boxArea;
        const double error = std::abs(area - reference);
        v.areaError = std::max(v.areaError, error / boxArea);
        if (!(error <= allowed))
            failures << QStringLiteral("area of the %1 is %2, Qt's flattened boolean gives %3 "
                                       "(allowed difference %4)")
                                .arg(part.label)
                                .arg(area, 0, 'g', 12)
                                .arg(reference, 0, 'g', 12)
                                .arg(allowed, 0, 'g', 3);
    }

    if (failures.isEmpty()) {
        v.status = Status::Passed;
        v.reason = QStringLiteral("%1 samples").arg(v.samples);
        if (!notes.isEmpty())
            v.reason += QStringLiteral("; ") + notes.join(QStringLiteral("; "));
        return v;
    }
    v.status = Status::Failed;
    v.reason = failures.join(QStringLiteral("; "));
    // Hints at the cause for the reader of a report: operands whose fill
    // depends on the fill rule, and operands that cross themselves.
    auto which = [](bool a, bool b) {
        return a && b ? QStringLiteral("A and B") : a ? QStringLiteral("A") : QStringLiteral("B");
    };
    v.fillRuleDependent = ruleSensitiveA > 0 || ruleSensitiveB > 0;
    if (v.fillRuleDependent)
        v.reason += QStringLiteral(" [fill-rule dependent operand: %1]")
                            .arg(which(ruleSensitiveA > 0, ruleSensitiveB > 0));
    const bool crossesA = std::isnan(geom::exactArea(subA, c.a.path.fillRule(), tolerance));
    const bool crossesB = std::isnan(geom::exactArea(subB, c.b.path.fillRule(), tolerance));
    v.selfCrossing = crossesA || crossesB;
    if (v.selfCrossing)
        v.reason += QStringLiteral(" [self-crossing or coinciding contours in %1]")
                            .arg(which(crossesA, crossesB));
    v.repro = reproducer(c);
    for (const Part &part : parts)
        for (const QString &example : part.examples)
            v.repro += QStringLiteral("// %1: %2\n").arg(part.label, example);
    return v;
}

Verdict check(const Case &c, const Options &options)
{
    const Outcome outcome = runOperation(c);
    return judge(c, outcome, options);
}

// --- area identities ---------------------------------------------------------------

Verdict checkAreaIdentities(const Operand &a, const Operand &b, const QMap<Op, Verdict> &verdicts)
{
    Verdict v;
    const double areaA = exactArea(a.path), areaB = exactArea(b.path);
    if (a.inverse || b.inverse || std::isnan(areaA) || std::isnan(areaB)) {
        v.status = Status::Inconclusive;
        v.reason = QStringLiteral("identities need finite operands without self-crossings");
        return v;
    }
    const double flat = std::max(pathDiagonal(a.path), pathDiagonal(b.path)) * 1e-5;
    const double perimeters = geom::perimeter(geom::flatten(geom::subpathsOf(a.path), flat))
            + geom::perimeter(geom::flatten(geom::subpathsOf(b.path), flat));

    // Each crossing is located to within the geometric epsilon, so every
    // piece of a result outline lies within it of its true place and each
    // result area is off by at most the epsilon times its outline, which is
    // at most both perimeters. An identity combines up to four results:
    // four times that, and twice again for rounding in the areas themselves.
    const double base = 8 * koTolerance::Geometric * perimeters + 1e-9 * (areaA + areaB);
    auto area = [&](Op op, bool second, double *value, double *uncertainty) {
        const auto it = verdicts.constFind(op);
        if (it == verdicts.constEnd() || it->status == Status::Crashed
            || it->status == Status::TimedOut || it->complement)
            return false;
        *value = second ? it->area2 : it->area;
        *uncertainty = it->areaUncertainty;
        return !std::isnan(*value);
    };
    double u = 0, i = 0, d = 0, r = 0, x = 0, d2 = 0, i2 = 0;
    double uu = 0, ui = 0, ud = 0, ur = 0, ux = 0, ud2 = 0, ui2 = 0;
    const bool hasU = area(Op::Union, false, &u, &uu);
    const bool hasI = area(Op::Intersect, false, &i, &ui);
    const bool hasD = area(Op::Difference, false, &d, &ud);
    const bool hasR = area(Op::ReverseDifference, false, &r, &ur);
    const bool hasX = area(Op::Xor, false, &x, &ux);
    const bool hasDivide = area(Op::Divide, false, &d2, &ud2) && area(Op::Divide, true, &i2, &ui2);

    QStringList failures;
    int checked = 0;
    auto expectEqual = [&](bool have, double lhs, double rhs, double uncertainty,
                           const QString &what) {
        if (!have)
            return;
        ++checked;
        const double allowed = base + uncertainty;
        if (!(std::abs(lhs - rhs) <= allowed))
            failures << QStringLiteral("%1: %2 vs %3 (allowed %4)")
                                .arg(what)
                                .arg(lhs, 0, 'g', 12)
                                .arg(rhs, 0, 'g', 12)
                                .arg(allowed, 0, 'g', 3);
    };
    expectEqual(hasU && hasI, u + i, areaA + areaB, uu + ui,
                QStringLiteral("|AuB|+|AnB| = |A|+|B|"));
    expectEqual(hasD && hasI, d, areaA - i, ud + ui, QStringLiteral("|A-B| = |A|-|AnB|"));
    expectEqual(hasR && hasI, r, areaB - i, ur + ui, QStringLiteral("|B-A| = |B|-|AnB|"));
    expectEqual(hasX && hasU && hasI, x, u - i, ux + uu + ui,
                QStringLiteral("|AxB| = |AuB|-|AnB|"));
    expectEqual(hasDivide && hasD, d2, d, ud2 + ud, QStringLiteral("divide's difference part"));
    expectEqual(hasDivide && hasI, i2, i, ui2 + ui, QStringLiteral("divide's intersection part"));
    if (checked == 0) {
        v.status = Status::Inconclusive;
        v.reason = QStringLiteral("no result areas to compare");
    } else if (failures.isEmpty()) {
        v.status = Status::Passed;
        v.reason = QStringLiteral("%1 identities hold").arg(checked);
    } else {
        v.reason = failures.join(QStringLiteral("; "));
    }
    return v;
}

} // namespace rvOracle
