#include "boolean/koboundopt.h"
#include "boolean/kostyle.h"
#include "geometry/geometrytest.h"
#include "geometry/komatrix.h"
#include "path/pathtesthelpers.h"

#include <QtGui/QPainterPath>
#include <QtGui/QPainterPathStroker>
#include <QtGui/QTransform>

#include <array>
#include <cmath>
#include <random>

namespace {

const koBoundOpt fillOpt(false, false, false, false);
const koBoundOpt strokeOpt(false, true, false, false);
const koBoundOpt paddedOpt(true, false, true, true);

// Exactly equal, NaN matching NaN.
::testing::AssertionResult sameRect(const koRect &r, double x, double y, double w, double h)
{
    auto eq = [](double a, double b) { return a == b || (qIsNaN(a) && qIsNaN(b)); };
    if (eq(r.x, x) && eq(r.y, y) && eq(r.width, w) && eq(r.height, h))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << r.toString().toStdString();
}

// The case as pasteable numbers: closed flag, segments (point, handle in,
// handle out), matrix, then stroke width, cap, join and miter limit.
std::string describe(koPath *path, const QTransform &t, const koStyle &s)
{
    std::string text = path->closed ? "closed" : "open";
    for (const koSegment *g : path->segments)
        for (const koPoint &p : {g->point, g->handleIn, g->handleOut})
            text += " " + hexf(p.x) + ", " + hexf(p.y) + ",";
    for (double v : {t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy(), s.strokeWidth,
                     double(s.cap), double(s.join), s.miterLimit})
        text += " " + hexf(v);
    return text;
}

// How far each side of \a r lies outside \a q: left, right, top, bottom.
std::array<double, 4> outside(const koRect &r, const QRectF &q)
{
    return {q.left() - r.x, r.right() - q.right(), q.top() - r.y, r.bottom() - q.bottom()};
}

// Absolute control points of every curve, mapped by the toolkit's transform.
QVector<QVector<QPointF>> cubics(koPath *path, const QTransform &t)
{
    QVector<QVector<QPointF>> list;
    const int n = path->segments.size();
    for (int i = 0; i + 1 < n || (path->closed && i < n); ++i) {
        const koSegment *a = path->segments.at(i);
        const koSegment *b = path->segments.at((i + 1) % n);
        list.append({t.map(a->point.toPt()), t.map((a->point + a->handleOut).toPt()),
                     t.map((b->point + b->handleIn).toPt()), t.map(b->point.toPt())});
    }
    return list;
}

QPointF bezier(const QVector<QPointF> &c, double t)
{
    const double u = 1 - t;
    return u * u * u * c[0] + 3 * u * u * t * c[1] + 3 * u * t * t * c[2] + t * t * t * c[3];
}

// A fine polyline for Qt's stroker (which offsets curves roughly); tiny end
// pieces give the true end tangents for caps and joins.
void flatten(QPainterPath &qp, const QVector<QPointF> &c, double a, double b, int depth)
{
    const double m = (a + b) / 2;
    const QPointF pa = bezier(c, a), pm = bezier(c, m), pb = bezier(c, b);
    const QPointF u = pm - pa, v = pb - pm;
    const double turn =
            std::atan2(std::abs(u.x() * v.y() - u.y() * v.x()), QPointF::dotProduct(u, v));
    if (depth < 6 || (depth < 30 && (turn > 0.005 || QLineF(pa, pb).length() > 1))) {
        flatten(qp, c, a, m, depth + 1);
        flatten(qp, c, m, b, depth + 1);
    } else {
        qp.lineTo(pb);
    }
}

QPainterPath polyline(koPath *path)
{
    QPainterPath qp;
    qp.moveTo(path->segments.first()->point.toPt());
    for (const QVector<QPointF> &c : cubics(path, QTransform())) {
        qp.lineTo(bezier(c, 1e-5));
        flatten(qp, c, 1e-5, 1 - 1e-5, 0);
        qp.lineTo(c[3]);
    }
    if (path->closed)
        qp.closeSubpath();
    return qp;
}

} // namespace

TEST(koPathBounds, KeptEdgeCases)
{
    // One segment: a zero-size box at its point, through either form.
    const double zero[2] = {0, 0};
    koRef<koPath> dot(polygonPath({{3, 4}}, false));
    dot->segments.first()->handleOut = koPoint(5, 5);
    EXPECT_TRUE(sameRect(dot->getBounds(fillOpt, koStyle()), 3, 4, 0, 0));
    EXPECT_TRUE(sameRect(koPath::getBounds(dot->segments, false, zero), 3, 4, 0, 0));

    // Flat boxes get one unit of thickness through the options only.
    koRef<koPath> flat(polygonPath({{0, 5}, {10, 5}}, false));
    EXPECT_TRUE(sameRect(flat->getBounds(fillOpt, koStyle()), 0, 5, 10, 1));
    EXPECT_TRUE(sameRect(koPath::getBounds(flat->segments, false, zero), 0, 5, 10, 0));
    flat->segments.first()->point = koPoint(10, 13);
    EXPECT_TRUE(sameRect(flat->getBounds(fillOpt, koStyle()), 10, 5, 1, 8));

    // The closing curve bulges down, the open arc only up.
    koRef<koPath> arc(new koPath);
    arc->addSegment(new koSegment(koPoint(0, 0), koPoint(0, 10), koPoint(0, -10)));
    arc->addSegment(new koSegment(koPoint(10, 0), koPoint(0, -10), koPoint(0, 10)));
    EXPECT_TRUE(sameRect(arc->getBounds(fillOpt, koStyle()), 0, -7.5, 10, 7.5));
    arc->setClosed(true);
    EXPECT_TRUE(sameRect(arc->getBounds(fillOpt, koStyle()), 0, -7.5, 10, 15));

    // A rotated circle keeps its box; the rotated box would be sqrt(2) wider.
    koRef<koPath> circle(circlePath(koPoint(0, 0), 10));
    koMatrix rotation;
    rotation.rotate(45);
    EXPECT_NEAR(circle->getBounds(fillOpt, koStyle(), &rotation).width, 20, 0.01);
}

TEST(koPathBounds, TotalOnDegenerateInput)
{
    koStyle style;
    style.strokeWidth = 4;
    koRef<koPath> empty(new koPath);
    koRef<koPath> nan(polygonPath({{qQNaN(), 1}, {2, 3}}, true));
    koRef<koPath> inf(polygonPath({{qInf(), 1}, {2, -qInf()}, {0, 0}}, true));
    for (const koBoundOpt &opt : {fillOpt, strokeOpt, paddedOpt}) {
        EXPECT_TRUE(sameRect(empty->getBounds(opt, style), 0, 0, 0, 0));
        const koRect r = nan->getBounds(opt, style); // NaN poisons its axis only
        EXPECT_TRUE(qIsNaN(r.x) && qIsNaN(r.width) && !qIsNaN(r.y) && !qIsNaN(r.height));
        inf->getBounds(opt, style);
    }
    for (double width : {0.0, -3.0, qQNaN()}) { // no stroke: the fill bounds
        style.strokeWidth = width;
        EXPECT_TRUE(sameRect(nan->getBounds(strokeOpt, style), qQNaN(), 1, qQNaN(), 2)) << width;
    }
}

// The outlines that hit testing builds around a corner and an open end; a
// right-angle miter (sqrt(2) from the point) is cut to a bevel at 1.2.
TEST(koPathBounds, JoinAndCapOutlines)
{
    koRef<koPath> corner(polygonPath({{0, 0}, {10, 0}, {10, 10}}, false));
    QVector<koPoint> tip, bevel, cap;
    koPath::addBevelJoin(corner->segments.at(1), koJoinMiter, 1, 2, nullptr, tip, true);
    EXPECT_EQ(tip, QVector<koPoint>({{10, 0}, {10, -1}, {11, -1}, {11, 0}}));
    koPath::addBevelJoin(corner->segments.at(1), koJoinMiter, 1, 1.2, nullptr, bevel, true);
    EXPECT_EQ(bevel, QVector<koPoint>({{10, 0}, {10, -1}, {11, 0}}));
    koPath::addSquareCap(corner->segments.at(0), koCapSquare, 1, nullptr, cap, true);
    EXPECT_EQ(cap, QVector<koPoint>({{0, 1}, {0, -1}, {-1, -1}, {-1, 1}}));
}

// Random curved paths, open and closed, with and without a matrix, against
// dense sampling, Qt's exact curve bounds and Qt's stroker.
TEST(koPathBounds, PropertyAgainstSamplingAndQtStroker)
{
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<double> coord(-50, 50), handle(-30, 30), lin(-2, 2),
            shift(-20, 20), unit(0, 1);
    for (int iter = 0; iter < 300; ++iter) {
        koRef<koPath> path(new koPath(nullptr, unit(rng) < 0.5));
        for (int i = 0, n = 2 + int(unit(rng) * 5); i < n; ++i) {
            auto h = [&] {
                return unit(rng) < 0.3 ? koPoint() : koPoint(handle(rng), handle(rng));
            };
            const koPoint in = h();
            path->addSegment(new koSegment(koPoint(coord(rng), coord(rng)), in, h()));
        }
        koMatrix matrix;
        if (unit(rng) < 0.5)
            matrix = koMatrix(lin(rng), lin(rng), lin(rng), lin(rng), shift(rng), shift(rng));
        const koMatrix *m = matrix.isIdentity() ? nullptr : &matrix;
        const QTransform t(matrix.a, matrix.b, matrix.c, matrix.d, matrix.tx, matrix.ty);
        koStyle style;
        style.strokeWidth = 0.5 + 8 * unit(rng);
        style.cap = int(unit(rng) * 3);
        style.join = int(unit(rng) * 3);
        style.miterLimit = 1 + 5 * unit(rng);
        SCOPED_TRACE(describe(path.get(), t, style));

        // Fill bounds hold every sample and are Qt's exact box of the
        // transformed curves; handle bounds hold every control point.
        const QVector<QVector<QPointF>> curves = cubics(path.get(), t);
        const QRectF fill = path->getBounds(fillOpt, style, m).toRectF();
        const QRectF handles =
                path->getBounds(koBoundOpt(true, false, false, true), style, m).toRectF();
        QPainterPath exact(curves.first().first());
        for (const QVector<QPointF> &c : curves) {
            exact.cubicTo(c[1], c[2], c[3]);
            for (int i = 0; i <= 200; ++i)
                ASSERT_TRUE(fill.adjusted(-1e-9, -1e-9, 1e-9, 1e-9).contains(bezier(c, i / 200.0)));
            for (const QPointF &p : c)
                ASSERT_TRUE(handles.adjusted(-1e-9, -1e-9, 1e-9, 1e-9).contains(p));
        }
        for (double d : outside(koRect(fill), exact.boundingRect()))
            EXPECT_NEAR(d, 0, 1e-6);

        // Stroke bounds hold Qt's stroke and exceed it by at most the pen
        // (nothing for round joins and caps). SvgMiterJoin bevels long miters
        // as we do; miters right at the limit are left to either side.
        const Qt::PenCapStyle caps[] = {Qt::FlatCap, Qt::RoundCap, Qt::SquareCap};
        const Qt::PenJoinStyle joins[] = {Qt::SvgMiterJoin, Qt::RoundJoin, Qt::BevelJoin};
        QPainterPathStroker stroker;
        stroker.setWidth(style.strokeWidth);
        stroker.setCapStyle(caps[style.cap]);
        stroker.setJoinStyle(joins[style.join]);
        const QPainterPath line = polyline(path.get());
        auto qtStroke = [&](double limitScale) {
            stroker.setMiterLimit(style.miterLimit * limitScale);
            return t.map(stroker.createStroke(line)).boundingRect();
        };
        const QRectF inner = qtStroke(1 - 1e-3);
        const QRectF outer = style.join == koJoinMiter ? qtStroke(1 + 1e-3) : inner;
        const koRect stroke = path->getBounds(strokeOpt, style, m);
        const double pad[2] = {style.strokeWidth / 2 * std::hypot(t.m11(), t.m21()),
                               style.strokeWidth / 2 * std::hypot(t.m12(), t.m22())};
        const double tol = 2e-3 * std::hypot(pad[0], pad[1]);
        const std::array<double, 4> lo = outside(stroke, inner), hi = outside(stroke, outer);
        const bool round = style.cap == koCapRound && style.join == koJoinRound;
        for (int side = 0; side < 4; ++side) {
            EXPECT_GE(lo[side], -tol) << "side " << side;
            EXPECT_LE(hi[side], (round ? 0 : pad[side / 2]) + tol) << "side " << side;
        }
        const QRectF padded = path->getBounds(paddedOpt, style, m).toRectF(); // holds the stroke
        EXPECT_TRUE(padded.adjusted(-1e-9, -1e-9, 1e-9, 1e-9).contains(stroke.toRectF()));
    }
}
