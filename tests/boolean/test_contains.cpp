#include "booleantesthelpers.h"

#include "boolean/kohitopt.h"
#include "boolean/kohitresult.h"
#include "boolean/komono.h"
#include "boolean/kostyle.h"
#include "boolean/kowinding.h"
#include "geometry/geometrytest.h"
#include "path/pathtesthelpers.h"
#include "path/xpath.h"

#include <QtGui/QPainterPath>
#include <QtGui/QPainterPathStroker>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

// Over Qt's fine flattening: distance to the outline and ray-crossing winding.
void measure(const QPainterPath &qt, const QPointF &p, double &distance, int &winding)
{
    distance = qInf();
    winding = 0;
    for (QPolygonF poly : qt.toSubpathPolygons(QTransform::fromScale(64, 64))) {
        poly = QTransform::fromScale(1 / 64.0, 1 / 64.0).map(poly);
        for (int i = 0; i < poly.size(); ++i) {
            const QPointF a = poly[i], b = poly[(i + 1) % poly.size()], ab = b - a;
            const double t = std::clamp(
                    QPointF::dotProduct(p - a, ab) / QPointF::dotProduct(ab, ab), 0.0, 1.0);
            distance = std::min(distance, QLineF(p, a + ab * (std::isnan(t) ? 0 : t)).length());
            const double side = ab.x() * (p.y() - a.y()) - ab.y() * (p.x() - a.x());
            winding += (a.y() <= p.y() && b.y() > p.y() && side > 0)
                    - (a.y() > p.y() && b.y() <= p.y() && side < 0);
        }
    }
}

// Stars, open ellipses, self-crossing curved polygons and grid polygons.
koPath *randomShape(std::mt19937 &rng)
{
    std::uniform_real_distribution<double> u(0, 1);
    koPath *path = new koPath(nullptr, true);
    const koPoint c(20 + 60 * u(rng), 20 + 60 * u(rng));
    const int kind = rng() % 4, n = 3 + rng() % 6;
    if (kind == 1) { // a whole ellipse is left open, its end on its start
        path->setClosed(false);
        path->ellipse(koRect(c.x - 30 * u(rng) - 1, c.y - 30 * u(rng) - 1, 60 * u(rng) + 2,
                             60 * u(rng) + 2));
    }
    for (int i = 0; kind != 1 && i < (kind ? n : 2 * n); ++i) {
        const koPoint h(60 * u(rng) - 30, 60 * u(rng) - 30);
        const double a = M_PI * i / n, r = (i % 2 ? 10 : 40) * (0.5 + u(rng));
        if (kind == 0) // star with slightly curved edges
            path->addSegment(
                    new koSegment(c + koPoint(std::cos(a), std::sin(a)) * r, h / 10, -h / 10));
        else if (kind == 2) // grid polygon
            path->addSegment(new koSegment(10.0 * (rng() % 11), 10.0 * (rng() % 11)));
        else
            path->addSegment(new koSegment(koPoint(100 * u(rng), 100 * u(rng)), -h * u(rng), h));
    }
    return path;
}

} // namespace

TEST(ContainsProperty, AgreesWithQtAndCrossingCount)
{
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<double> u(-10, 110);
    int compared = 0;
    for (int shape = 0; shape < 40; ++shape) {
        XPath xp;
        const int children = shape < 20 ? 1 : 1 + rng() % 3;
        for (int i = 0; i < children; ++i)
            xp.addChild(randomShape(rng));
        QPainterPath qt = toQt(xp);
        const QList<koMono *> monos = xp.getMonoCurves();
        const QList<koSegment *> &segs = xp.getFirstChild()->segments;
        for (int i = 0; i < 1000; ++i) {
            koPoint p(u(rng), u(rng));
            if (i % 2) // every other ray runs through a vertex
                p.y = segs.at(rng() % segs.size())->point.y;
            double distance;
            int winding;
            measure(qt, p.toPt(), distance, winding);
            if (distance < 0.05)
                continue;
            const std::string where = hexf(p.x) + ", " + hexf(p.y) + describe(&xp);
            for (bool horizontal : {false, true})
                ASSERT_EQ(XPath::getWinding(p, monos, horizontal).winding, std::abs(winding))
                        << where << "\nhorizontal " << horizontal;
            for (bool evenOdd : {false, true}) {
                koStyle style;
                style.evenOdd = evenOdd;
                qt.setFillRule(evenOdd ? Qt::OddEvenFill : Qt::WindingFill);
                // Qt takes curve pieces flatter than 0.001 as lines, so a ray
                // grazing an extreme may be miscounted: its answer is trusted
                // where rays 0.01 above and below agree.
                const bool inside = qt.contains(p.toPt());
                if (inside != qt.contains(QPointF(p.x, p.y - 0.01))
                    || inside != qt.contains(QPointF(p.x, p.y + 0.01)))
                    continue;
                ++compared;
                ASSERT_EQ(xp.contains(p, style), inside) << where << "\neven-odd " << evenOdd;
                ASSERT_TRUE(children > 1 || xp.getFirstChild()->contains(p, style) == inside);
            }
        }
    }
    EXPECT_GT(compared, 40000);
}

TEST(Contains, EdgeCasesAndNestedContours)
{
    koRef<koPath> square(polygonPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    const koStyle nonZero;
    koStyle evenOdd;
    evenOdd.evenOdd = true;
    // On the border of the box: outside, though the outline passes there.
    EXPECT_FALSE(square->contains(koPoint(0, 5), nonZero));
    EXPECT_FALSE(square->contains(koPoint(5, 10), evenOdd));
    EXPECT_TRUE(square->contains(koPoint(5, 5), nonZero));
    EXPECT_FALSE(square->contains(koPoint(qQNaN(), 5), nonZero));

    // Rings (two circles; a rhombus in a square), the hole wound the other
    // way by the child rule, or the same way when its orientation is fixed.
    for (int shape = 0; shape < 4; ++shape) {
        const bool sameWay = shape & 2;
        XPath ring;
        ring.addChild(shape & 1 ? polygonPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true)
                                : circlePath(koPoint(5, 5), 5));
        koPath *hole = shape & 1 ? polygonPath({{5, 2}, {8, 5}, {5, 8}, {2, 5}}, true)
                                 : circlePath(koPoint(5, 5), 2);
        if (sameWay)
            hole->setClockwise(ring.getFirstChild()->isClockwise());
        ring.addChild(hole);
        EXPECT_FALSE(ring.contains(koPoint(5, 5), evenOdd));
        EXPECT_EQ(ring.contains(koPoint(5, 5), nonZero), sameWay);
        EXPECT_TRUE(ring.contains(koPoint(0.8, 5), evenOdd));
        EXPECT_TRUE(ring.contains(koPoint(0.8, 5), nonZero));
        EXPECT_FALSE(ring.contains(koPoint(11, 5), nonZero));
    }

    // Interior points: the centre of a U lies in its notch.
    koRef<koPath> u(polygonPath(
            {{0, 0}, {30, 0}, {30, 30}, {20, 30}, {20, 10}, {10, 10}, {10, 30}, {0, 30}}, true));
    EXPECT_EQ(u->getInteriorPoint(false), koPoint(5, 15));
    koRef<koPath> circle(circlePath(koPoint(5, 5), 5));
    EXPECT_EQ(circle->getInteriorPoint(true), koPoint(5, 5));
}

TEST(HitTest, EdgeCases)
{
    XPath empty;
    koHitOpt all;
    all.fill = all.stroke = all.curves = true;
    const koHitResult none = empty.hitTest(koPoint(0, 0), koStyle(), all);
    EXPECT_EQ(none.type, koHitResult::None);
    EXPECT_TRUE(!none.item && !none.path && !none.segment);

    XPath xp;
    xp.addChild(polygonPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    koPath *child = xp.getFirstChild();
    koHitOpt fill;
    fill.fill = true;
    fill.tolerance = 1;
    koHitResult r = xp.hitTest(koPoint(5, 5), koStyle(), fill);
    EXPECT_TRUE(r.type == koHitResult::Fill && r.item == &xp && !r.path);
    // Outside the fill, within tolerance of the outline: the child.
    r = xp.hitTest(koPoint(10.5, 4), koStyle(), fill);
    EXPECT_TRUE(r.type == koHitResult::Fill && r.item == &xp && r.path == child);
    EXPECT_LT(r.point.getDistance(koPoint(10, 4)), 1e-6);
    fill.curves = true;
    EXPECT_EQ(child->_hitTestSelf(koPoint(4, -0.9), fill, koStyle()).type, koHitResult::Curve);
    EXPECT_EQ(child->_hitTestSelf(koPoint(5, 5), fill, koStyle()).type, koHitResult::Fill);
    EXPECT_EQ(child->_hitTestSelf(koPoint(4, -1.1), fill, koStyle()).type, koHitResult::None);

    // Stroke: a negative width is never hit, a zero width within tolerance.
    koStyle style;
    koHitOpt stroke;
    stroke.stroke = true;
    stroke.tolerance = 0.5;
    style.strokeWidth = -4;
    EXPECT_EQ(xp.hitTest(koPoint(10, 5), style, stroke).type, koHitResult::None);
    style.strokeWidth = 0;
    EXPECT_EQ(xp.hitTest(koPoint(10.4, 5), style, stroke).type, koHitResult::Stroke);
    EXPECT_EQ(xp.hitTest(koPoint(10.4, 10.4), style, stroke).type, koHitResult::None);
    // A miter tip whose point lies nearer to another stretch of the path.
    XPath vee;
    vee.addChild(polygonPath({{0, 0}, {10, 2}, {0, 4}, {20, 6}}, false));
    style.strokeWidth = 2;
    stroke.tolerance = 0;
    EXPECT_EQ(vee.hitTest(koPoint(14, 2), style, stroke).type, koHitResult::Stroke);
    EXPECT_EQ(vee.hitTest(koPoint(16, 2), style, stroke).type, koHitResult::None);
    style.join = koJoinBevel;
    EXPECT_EQ(vee.hitTest(koPoint(14, 2), style, stroke).type, koHitResult::None);
    for (double bad : {qQNaN(), qInf()})
        EXPECT_EQ(xp.hitTest(koPoint(bad, 5), style, all).type, koHitResult::None);
}

// Random polylines stroked with every cap and join, against Qt's stroker.
TEST(HitTest, StrokeAgreesWithQtStroker)
{
    std::mt19937 rng(7321);
    std::uniform_real_distribution<double> u(0, 1);
    const Qt::PenCapStyle caps[] = {Qt::FlatCap, Qt::RoundCap, Qt::SquareCap};
    const Qt::PenJoinStyle joins[] = {Qt::SvgMiterJoin, Qt::RoundJoin, Qt::BevelJoin};
    int compared = 0;
    for (int shape = 0; shape < 200; ++shape) {
        koStyle style;
        style.strokeWidth = 2 + 18 * u(rng);
        style.cap = rng() % 3;
        style.join = rng() % 3;
        style.miterLimit = 1 + 5 * u(rng);
        XPath xp;
        koPath *path = new koPath(nullptr, rng() % 2);
        xp.addChild(path);
        QPainterPath qt;
        for (int i = 2 + rng() % 4; i > 0; --i) {
            const koPoint p(100 * u(rng), 100 * u(rng));
            // Renderers differ on inner joins of pieces shorter than the width.
            if (path->getCurrentSegment()
                && p.getDistance(path->getCurrentSegment()->point) < 1.5 * style.strokeWidth)
                continue;
            path->lineToPt(p);
            qt.elementCount() ? qt.lineTo(p.toPt()) : qt.moveTo(p.toPt());
        }
        if (path->closed)
            qt.closeSubpath();
        QPainterPathStroker stroker;
        stroker.setWidth(style.strokeWidth);
        stroker.setCapStyle(caps[style.cap]);
        stroker.setJoinStyle(joins[style.join]);
        stroker.setMiterLimit(style.miterLimit);
        const QPainterPath outline = stroker.createStroke(qt);
        koHitOpt opt;
        opt.stroke = true;
        for (int i = 0; i < 300 && path->segments.size() > 1; ++i) {
            const koPoint p(140 * u(rng) - 20, 140 * u(rng) - 20);
            // Only points whose side is clear 0.02 around.
            const bool inside = outline.contains(p.toPt());
            bool clear = true;
            for (const koPoint &d :
                 {koPoint(1, 1), koPoint(1, -1), koPoint(-1, 1), koPoint(-1, -1)})
                clear = clear && outline.contains((p + d * 0.015).toPt()) == inside;
            if (!clear)
                continue;
            ++compared;
            const koHitResult r = xp.hitTest(p, style, opt);
            ASSERT_EQ(r.type == koHitResult::Stroke, inside)
                    << hexf(p.x) << ", " << hexf(p.y) << describe(&xp) << "\nwidth "
                    << hexf(style.strokeWidth) << " cap " << style.cap << " join " << style.join
                    << " miter " << hexf(style.miterLimit);
            ASSERT_TRUE(!inside || r.path == path);
        }
    }
    EXPECT_GT(compared, 40000);
}
