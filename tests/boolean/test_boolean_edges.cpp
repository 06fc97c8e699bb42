// Edge cases of the booleans against QPainterPath's booleans and closed forms.

#include "geometry/geometrytest.h"
#include "path/pathtesthelpers.h"
#include "path/xpath.h"

#include "boolean/kostyle.h"

#include <QtCore/QtNumeric>
#include <QtCore/QStringList>
#include <QtGui/QPainterPath>
#include <QtGui/QTransform>

#include <cmath>
#include <functional>
#include <memory>

namespace {

using Result = std::unique_ptr<XPath>;

// One child per subpath, closed when it returns to its start; child rule.
XPath *toXPath(const QPainterPath &qp)
{
    XPath *x = new XPath;
    for (int i = 0; i < qp.elementCount(); ++i) {
        const QPainterPath::Element e = qp.elementAt(i);
        if (e.isMoveTo())
            x->addChild(new koPath);
        if (e.isCurveTo())
            x->getLastChild()->cubicCurveTo(koPoint(e), koPoint(qp.elementAt(i + 1)),
                                            koPoint(qp.elementAt(i + 2)));
        else if (e.isMoveTo() || e.isLineTo())
            x->getLastChild()->lineTo(e.x, e.y);
    }
    for (koPath *p : x->children)
        p->join(nullptr, 0);
    x->setChildren(x->children);
    return x;
}

QPainterPath poly(const QVector<QPointF> &points)
{
    QPainterPath p;
    p.addPolygon(QPolygonF(points));
    p.closeSubpath();
    return p;
}
const auto rect = [](double x, double y, double w, double h) {
    return poly(QPolygonF(QRectF(x, y, w, h)));
};
const auto circle = [](double r, double cx) {
    QPainterPath p;
    p.addEllipse({cx, 0}, r, r);
    return p;
};

// The children's points, "|" between children, "z" after a closed one.
QString describe(const XPath *x)
{
    QStringList children;
    for (koPath *child : x->children) {
        QString text;
        for (koSegment *s : child->segments)
            text += QStringLiteral("(%1,%2)")
                            .arg(qRound64(s->point.x * 1e6) / 1e6)
                            .arg(qRound64(s->point.y * 1e6) / 1e6);
        children << text + (child->closed ? QStringLiteral("z") : QString());
    }
    return children.join(QLatin1Char('|'));
}

double signedArea(const XPath *x)
{
    if (!x)
        return qQNaN();
    double sum = 0;
    for (koPath *child : x->children)
        sum += child->getArea(true, false);
    return sum;
}

// At grid points of \a box (plus \a offset) whose side of both outlines is
// the same \a eps around, \a r contains \a want under every style.
void expectGrid(const XPath *r, const QPainterPath &a, const QPainterPath &b, const QRectF &box,
                const QPointF &step, const QPointF &offset, double eps,
                const std::function<bool(const QPointF &)> &want, const QVector<koStyle> &styles)
{
    for (double y = box.top(); y < box.bottom(); y += step.y()) {
        for (double x = box.left(); x < box.right(); x += step.x()) {
            const QPointF q = QPointF(x, y) + offset;
            bool clear = true;
            for (const QPointF &d : {QPointF(eps, 0), {-eps, 0}, {0, eps}, {0, -eps}})
                clear = clear && a.contains(q + d) == a.contains(q)
                        && b.contains(q + d) == b.contains(q);
            for (const koStyle &style : styles)
                EXPECT_TRUE(!clear || r->contains(koPoint(q), style) == want(q))
                        << hexf(q.x()) << ", " << hexf(q.y()) << " expected inside: " << want(q);
        }
    }
}

const int Ops[4] = {XPath::OpUnite, XPath::OpIntersect, XPath::OpSubtract, XPath::OpExclude};
const double LensArea = 200 * std::acos(0.4) - 4 * std::sqrt(336.0); // r = 10, d = 8

// A V drawn open: filled, it is the triangle closed along y = 50.
const QPainterPath OpenV = [] {
    QPainterPath p({-50, 50});
    p.lineTo(50, -50);
    p.lineTo(150, 50);
    return p;
}();

struct Case
{
    const char *name;
    QPainterPath a, b;
    double areaA, areaB, areaI; // closed-form areas of A, B and A within B
    int children[4];            // per operation of Ops; -1: not pinned
    friend std::ostream &operator<<(std::ostream &os, const Case &c) { return os << c.name; }
};

// clang-format off
const Case Cases[] = {
    {"DisjointSquares", rect(0, 0, 10, 10), rect(20, 0, 10, 10), 100, 100, 0, {2, 0, 1, 2}},
    {"IdenticalSquares", rect(0, 0, 10, 10), rect(0, 0, 10, 10), 100, 100, 100, {1, 1, 0, 0}},
    {"OverlappingSquares", rect(0, 0, 10, 10), rect(5, 5, 10, 10), 100, 100, 25, {1, 1, 1, 2}},
    {"RhombusInSquare", rect(0, 0, 20, 20), poly({{10, 2}, {18, 10}, {10, 18}, {2, 10}}),
     400, 128, 128, {1, 1, 2, 2}},
    {"SharedEdge", rect(0, 0, 10, 10), rect(10, 0, 10, 10), 100, 100, 0, {1, 0, 1, -1}},
    {"SharedVertex", rect(0, 0, 10, 10), rect(10, 10, 10, 10), 100, 100, 0, {2, 0, 1, 2}},
    {"EmptyOperand", rect(0, 0, 10, 10), QPainterPath(), 100, 0, 0, {1, 0, 1, 1}},
    {"ZeroLengthSegments", poly({{0, 0}, {10, 0}, {10, 0}, {10, 10}, {0, 10}}),
     rect(5, -5, 10, 10), 100, 100, 25, {1, 1, 1, 2}},
    {"CirclesKeepCurves", circle(10, 0), circle(10, 8), M_PI * 100, M_PI * 100, LensArea,
     {1, 1, 1, 2}},
    // An open second operand fills as if closed; its closing line crosses A.
    {"OpenOperandFilledAsClosed", rect(0, 0, 100, 100), OpenV, 1e4, 1e4, 5e3, {1, 1, 1, 2}},
};

// A corner of one operand lies on the interior of an edge of the other and
// the outlines only touch there: no division point, so a chain sampled at
// that corner read the other operand as around it (intersect gave both
// operands back). S is the square, T the triangle whose right edges pass
// through S's right corners; rotated, mirrored, inscribed and curved forms.
QPainterPath turned(const QPainterPath &p, double degrees, bool mirror = false)
{
    return QTransform().rotate(degrees).scale(mirror ? -1 : 1, 1).map(p);
}
const QPainterPath CornerS = rect(0, 0, 100, 100);
const QPainterPath CornerT = poly({{50, -50}, {150, 50}, {50, 150}});
const QPainterPath Rhombus = poly({{50, -50}, {150, 50}, {50, 150}, {-50, 50}});
const QPainterPath Inscribed = poly({{50, 0}, {100, 50}, {50, 100}, {0, 50}});
// T with S-shaped cubic edges, each symmetric about the corner it touches
// (so the area is T's): outside S but at the corner.
const QPainterPath CurvedT = [] {
    QPainterPath p({50, -50});
    p.cubicTo(80, -40, 120, 40, 150, 50);
    p.cubicTo(120, 60, 80, 140, 50, 150);
    p.closeSubpath();
    return p;
}();

// clang-format off
const Case CornerOnEdgeCases[] = {
    {"SquareTriangle", CornerS, CornerT, 1e4, 1e4, 5e3, {1, 1, 1, -1}},
    {"TriangleSquare", CornerT, CornerS, 1e4, 1e4, 5e3, {1, 1, -1, -1}},
    {"Mirrored", turned(CornerS, 0, true), turned(CornerT, 0, true), 1e4, 1e4, 5e3, {1, 1, 1, -1}},
    {"Rotated90", turned(CornerS, 90), turned(CornerT, 90), 1e4, 1e4, 5e3, {1, 1, 1, -1}},
    {"Rotated30", turned(CornerS, 30), turned(CornerT, 30), 1e4, 1e4, 5e3, {1, 1, 1, -1}},
    {"SquareInRhombus", Rhombus, CornerS, 2e4, 1e4, 1e4, {1, 1, -1, -1}},
    {"RhombusInSquare", CornerS, Inscribed, 1e4, 5e3, 5e3, {1, 1, -1, -1}},
    {"InscribedRhombus", turned(Inscribed, 30), turned(CornerS, 30), 5e3, 1e4, 5e3,
     {1, 1, 0, -1}},
    {"CurvedEdges", CornerS, CurvedT, 1e4, 1e4, 5e3, {1, 1, 1, -1}},
};
// clang-format on

using BooleanEdges = testing::TestWithParam<Case>;

// Per operation: child count, signed area, containment under both fill rules
// as QPainterPath's booleans give it; operands stay as they were.
TEST_P(BooleanEdges, MatchesPainterPath)
{
    const Case &c = GetParam();
    Result a(toXPath(c.a)), b(toXPath(c.b)), aBefore(a->clone()), bBefore(b->clone());
    const QPainterPath oracles[4] = {c.a.united(c.b), c.a.intersected(c.b), c.a.subtracted(c.b),
                                     c.a.united(c.b).subtracted(c.a.intersected(c.b))};
    const double areaU = c.areaA + c.areaB - c.areaI;
    const double areas[4] = {areaU, c.areaI, c.areaA - c.areaI, areaU - c.areaI};
    const QRectF box = c.a.boundingRect().united(c.b.boundingRect()).adjusted(-2, -2, 2, 2);
    koStyle nonZero, evenOdd;
    evenOdd.evenOdd = true;
    const auto curved = [](const QPainterPath &p) {
        return p.elementCount() > 1 && p.elementAt(1).isCurveTo();
    };
    const bool curvedA = curved(c.a), curvedB = curved(c.b);
    for (int k = 0; k < 4; ++k) {
        SCOPED_TRACE(k);
        Result r(XPath::computeBoolean(a.get(), b.get(), Ops[k]));
        ASSERT_TRUE(r);
        EXPECT_TRUE(c.children[k] < 0 || r->children.size() == c.children[k]) << r->children.size();
        EXPECT_NEAR(signedArea(r.get()), areas[k], 2e-3 * (1 + areas[k]));
        // Curves stay curves, straight edges straight.
        for (koPath *child : r->children)
            EXPECT_TRUE(child->hasHandles() ? curvedA || curvedB : !(curvedA && curvedB));
        expectGrid(r.get(), c.a, c.b, box, QPointF(box.width(), box.height()) / 23,
                   QPointF(0.29, 0.37), 0.3,
                   [&](const QPointF &q) { return oracles[k].contains(q); }, {nonZero, evenOdd});
    }
    const QList<XPath *> parts = a->divide(b.get());
    EXPECT_NEAR(signedArea(parts.value(0)), areas[2], 2e-3 * (1 + areas[2]));
    EXPECT_NEAR(signedArea(parts.value(1)), areas[1], 2e-3 * (1 + areas[1]));
    qDeleteAll(parts);
    for (auto [now, before] : {std::pair{a.get(), aBefore.get()}, {b.get(), bBefore.get()}}) {
        ASSERT_EQ(now->children.size(), before->children.size());
        for (int i = 0; i < now->children.size(); ++i)
            EXPECT_TRUE(koSegment::segsEquals(now->children.at(i)->segments,
                                              before->children.at(i)->segments));
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, BooleanEdges, testing::ValuesIn(Cases),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(CornerOnEdgeOfOtherOperand, BooleanEdges,
                         testing::ValuesIn(CornerOnEdgeCases), testing::PrintToStringParamName());

// A cubic loops back through its start, where the other operand passes: more
// than two branches meet. Tracing must not use up a branch that still bounds
// the result (61d, 65d, 44d) nor skip a start whose walk switched away (95u).
TEST(BooleanTrace, PinchedResultKeepsEveryBranch)
{
    const auto cubicTriangle = [](const QVector<double> &v) {
        QPainterPath p;
        p.moveTo(v[0], v[1]);
        p.cubicTo(v[2], v[3], v[4], v[5], v[6], v[7]);
        p.closeSubpath();
        return p;
    };
    const struct
    {
        const char *name;
        QVector<double> a, b;
        bool evenOdd;
    } cases[] = {
            {"cubicOp61d", {1, 2, 0, 5, 3, 2, 6, 1}, {2, 3, 1, 6, 2, 1, 5, 0}, false},
            {"cubicOp65d", {0, 1, 1, 5, 1, 0, 1, 0}, {0, 1, 0, 1, 1, 0, 5, 1}, false},
            {"cubics44d", {3, 4, 2, 5, 3, 1, 6, 2}, {1, 3, 2, 6, 4, 3, 5, 2}, false},
            {"cubicOp95u", {0, 2, 2, 3, 5, 1, 3, 2}, {1, 5, 2, 3, 2, 0, 3, 2}, true},
    };
    const auto truth = [](int op, bool a, bool b) {
        return op == XPath::OpUnite        ? a || b
                : op == XPath::OpIntersect ? a && b
                : op == XPath::OpSubtract  ? a && !b
                                           : a != b;
    };
    for (const auto &c : cases) {
        const QPainterPath qa = cubicTriangle(c.a), qb = cubicTriangle(c.b);
        Result a(toXPath(qa)), b(toXPath(qb));
        koStyle style;
        style.evenOdd = c.evenOdd;
        for (int op : Ops) {
            SCOPED_TRACE(testing::Message() << c.name << " operation " << op);
            Result r(XPath::computeBoolean(a.get(), b.get(), op));
            ASSERT_TRUE(r);
            expectGrid(r.get(), qa, qb, QRectF(-0.5, -0.5, 7, 7), QPointF(0.03125, 0.03125),
                       QPointF(0.013, 0.007), 0.01,
                       [&](const QPointF &q) { return truth(op, qa.contains(q), qb.contains(q)); },
                       {style});
        }
    }
}

TEST(BooleanDriver, DivideReturnsSubtractionThenIntersection)
{
    Result a(toXPath(rect(0, 0, 10, 10))), b(toXPath(rect(5, 5, 10, 10)));
    const QList<XPath *> parts = a->divide(b.get());
    ASSERT_EQ(parts.size(), 2);
    EXPECT_NEAR(signedArea(parts.at(0)), 75, 1e-9);
    EXPECT_NEAR(signedArea(parts.at(1)), 25, 1e-9);
    qDeleteAll(parts);
}

XPath *openPath(const QVector<koPoint> &points)
{
    XPath *x = new XPath;
    x->addChild(new koPath);
    for (const koPoint &p : points)
        x->getFirstChild()->lineTo(p.x, p.y);
    return x;
}

// Open pieces outside / inside, in order; the second line crosses one curve twice.
TEST(BooleanDriver, OpenLineMinusSquare)
{
    const struct
    {
        QVector<koPoint> line;
        const char *subtracted, *intersected;
    } lines[] = {{{{-10, 5}, {5, 5}, {5, 20}}, "(-10,5)(0,5)|(5,10)(5,20)", "(0,5)(5,5)(5,10)"},
                 {{{-10, 5}, {20, 5}}, "(-10,5)(0,5)|(10,5)(20,5)", "(0,5)(10,5)"}};
    Result square(toXPath(rect(0, 0, 10, 10)));
    for (const auto &l : lines) {
        Result open(openPath(l.line)), outside(open->subtract(square.get())),
                inside(open->intersect(square.get()));
        ASSERT_TRUE(outside && inside);
        EXPECT_EQ(describe(outside.get()), QLatin1String(l.subtracted));
        EXPECT_EQ(describe(inside.get()), QLatin1String(l.intersected));
        EXPECT_EQ(open->children.first()->segments.size(), l.line.size());
    }
}

// Unite and exclude of an open path, and an open path with an open or no
// second operand, are null; null, empty, NaN, point and line operands neither
// crash nor hang.
TEST(BooleanDriver, TotalOnBadInput)
{
    Result open(openPath({{-10, 5}, {20, 5}})), square(toXPath(rect(0, 0, 10, 10))),
            empty(new XPath), nan(toXPath(poly({{0, 0}, {qQNaN(), 3}, {4, 4}}))),
            point(openPath({{3, 3}}));
    EXPECT_EQ(open->unite(square.get()), nullptr);
    EXPECT_EQ(open->exclude(square.get()), nullptr);
    EXPECT_EQ(open->intersect(open.get()), nullptr);
    EXPECT_EQ(open->subtract(nullptr), nullptr);
    EXPECT_EQ(XPath::computeBoolean(nullptr, square.get(), XPath::OpUnite), nullptr);
    for (int op : Ops)
        for (XPath *path : {square.get(), nan.get(), empty.get()})
            for (XPath *other :
                 {path, empty.get(), nan.get(), square.get(), open.get(), point.get()})
                delete XPath::computeBoolean(path, other == path ? nullptr : other, op);
}

// A straight zero-area contour of up to eight segments is dropped, a longer one
// kept; an open path's end joins its start, its last handle in on the first.
TEST(BooleanTrace, ZeroAreaTriangleDropped)
{
    for (int n : {3, 8, 9, -3}) {
        koRef<koPath> path(n > 0 ? new koPath(nullptr, true)
                                 : polygonPath({{0, 0}, {10, 0}, {10, 10}}, false));
        for (int i = 0; i < n; ++i)
            path->addSegment(new koSegment(i % 2 ? 10 - i : i, 0));
        const koPoint handle = n > 0 ? koPoint(0, 0) : koPoint(1, -2);
        path->getLastSegment()->setHandleIn(handle);
        for (koSegment *s : path->segments)
            s->winding = 1;
        const QVector<koPath *> traced = XPath::tracePaths(path->segments, XPath::OpUnite);
        EXPECT_EQ(traced.size(), n == 3 || n == 8 ? 0 : 1) << n;
        for (koPath *contour : traced) {
            EXPECT_TRUE(contour->closed);
            EXPECT_EQ(contour->getFirstSegment()->handleIn, handle);
            contour->release();
        }
    }
}

// Crossings of straight edges were placed by evaluating the curve time, so
// rectangles with integer corners united to points such as 60.00000000000001.
// Axis-parallel crossings are exact now; where a curve meets an edge the
// point stays on the edge and the area stays right.
TEST(BooleanDivide, RectanglesCrossAtExactPoints)
{
    quint32 seed = 7;
    const auto next = [&seed](int n) {
        seed = seed * 1664525u + 1013904223u;
        return int((seed >> 8) % quint32(n));
    };
    for (int i = 0; i < 60; ++i) {
        const QPainterPath a =
                i == 0 ? rect(0, 0, 60, 100) : rect(next(90), next(90), 1 + next(90), 1 + next(90));
        const QPainterPath b = i == 0 ? rect(30, 30, 100, 30)
                                      : rect(next(90), next(90), 1 + next(90), 1 + next(90));
        Result xa(toXPath(a)), xb(toXPath(b));
        for (int op : {XPath::OpUnite, XPath::OpIntersect}) {
            Result r(XPath::computeBoolean(xa.get(), xb.get(), op));
            ASSERT_TRUE(r);
            for (koPath *child : r->children)
                for (koSegment *s : child->segments)
                    EXPECT_TRUE(s->point.x == std::round(s->point.x)
                                && s->point.y == std::round(s->point.y))
                            << hexf(s->point.x) << ", " << hexf(s->point.y) << " op " << op
                            << " in " << describe(r.get()).toStdString();
        }
    }
    // A strip |x| <= 5 cut from a circle of radius 10.
    Result strip(toXPath(rect(-5, -20, 10, 40))), disc(toXPath(circle(10, 0)));
    Result r(XPath::computeBoolean(strip.get(), disc.get(), XPath::OpIntersect));
    ASSERT_TRUE(r);
    const double area = 2 * (5 * std::sqrt(75.0) + 100 * std::asin(0.5));
    EXPECT_NEAR(std::abs(signedArea(r.get())), area, 2e-3 * area);
    int onEdges = 0;
    for (koPath *child : r->children)
        for (koSegment *s : child->segments)
            onEdges += std::abs(s->point.x) == 5;
    EXPECT_EQ(onEdges, 4) << describe(r.get()).toStdString();
}

} // namespace
