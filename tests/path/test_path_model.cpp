#include "pathtesthelpers.h"

#include <QtGui/QPainterPath>
#include <QtGui/QTransform>

#include <cmath>
#include <random>

namespace {

template<class Points> // koPoint or QPointF
double shoelace(const Points &pts)
{
    double sum = 0;
    for (int i = 0; i < pts.size(); ++i)
        sum += koPoint(pts.at(i)).cross(koPoint(pts.at((i + 1) % pts.size())));
    return sum / 2;
}

// The area as the toolkit flattens the path, magnified so the chords hug the curves.
double flattenedArea(koPath *path)
{
    const QVector<CubicPoints> pieces = tracedCubics({path});
    QPainterPath qp(pieces.first()[0].toPt());
    for (const CubicPoints &c : pieces)
        qp.cubicTo(c[1].toPt(), c[2].toPt(), c[3].toPt());
    double area = 0;
    for (const QPolygonF &poly : qp.toSubpathPolygons(QTransform::fromScale(1000, 1000)))
        area += shoelace(poly);
    return area / 1e6;
}

} // namespace

TEST(koPathModel, IdsCountCurvesCloneAndAssign)
{
    koRef<koPath> open(polygonPath({}, false));
    koRef<koPath> closed(polygonPath({}, true));
    EXPECT_EQ(closed->id, open->id + 1);
    EXPECT_EQ(closed->_countCurves(), 0);
    EXPECT_FALSE(open->getFirstCurve() || open->getCurrentSegment() || open->getFirstSegment());
    open->reverse(); // no orientation is made up
    EXPECT_EQ(open->flags, 0u);
    open = koRef<koPath>(polygonPath({{0, 0}, {1, 0}, {2, 0}}, false));
    closed = koRef<koPath>(polygonPath({{0, 0}, {1, 0}, {2, 0}}, true));
    EXPECT_EQ(open->_countCurves(), 2);
    EXPECT_EQ(closed->_countCurves(), 3);
    closed->flags = koPath::Clockwise;
    koRef<koPath> copy(closed->clone());
    EXPECT_EQ(copy->id, closed->id + 1);
    EXPECT_EQ(copy->flags, 0u);
    EXPECT_TRUE(copy->equals(closed.get()));
    EXPECT_NE(copy->segments.first(), closed->segments.first());
    copy->closed = false;
    EXPECT_FALSE(copy->equals(closed.get())); // same segments, not closed
    // assign appends without clearing, even from the path itself.
    closed->assign(closed.get());
    EXPECT_EQ(closed->segments.size(), 6);
    EXPECT_TRUE(pathIsConsistent(closed.get()));
}

TEST(koPathModel, AddingAForeignSegmentAddsAClone)
{
    koRef<koPath> a(polygonPath({{0, 0}, {1, 1}}, false));
    koRef<koPath> b(polygonPath({{5, 5}}, false));
    koSegment *taken = a->segments.at(1);
    koSegment *stored = b->addSegment(taken);
    EXPECT_NE(stored, taken);
    EXPECT_EQ(stored->point, koPoint(1, 1));
    EXPECT_EQ(stored->path, b.get());
    EXPECT_TRUE(taken->path == a.get() && taken->index == 1 && taken->refCount == 1);
    EXPECT_NE(b->addSegment(stored), stored); // a segment of this path too
    EXPECT_EQ(b->addSegment(nullptr), nullptr);
    // setSegments adopts this path's own segments again, without copies.
    QList<koSegment *> list = a->segments;
    std::reverse(list.begin(), list.end());
    a->getCurves();
    a->setSegments(list);
    EXPECT_EQ(a->segments, list);
    EXPECT_TRUE(a->curves.isEmpty());
}

TEST(koPathModel, IndicesOutOfRange)
{
    koRef<koPath> path(polygonPath({{0, 0}, {1, 0}, {2, 0}, {3, 0}}, true));
    path->getCurves();
    path->insertSegment(99, new koSegment(4, 0)); // beyond the end: appended
    path->insertSegment(-7, new koSegment(5, 0)); // negative: appended
    EXPECT_EQ(path->segments.last()->point.x, 5);
    QList<koSegment *> segs;
    QList<koCurve *> curves;
    EXPECT_EQ(path->removeSegments(segs, curves, 3, 2), 0);
    EXPECT_EQ(path->removeSegments(segs, curves, 6, -1), 0);
    EXPECT_FALSE(path->removeSegment(-1) || path->removeSegment(6));
    EXPECT_EQ(path->removeSegments(segs, curves, -3, 1), 1); // from counts from 0
    EXPECT_TRUE(segs.isEmpty() && curves.isEmpty());
    // Detached, not released: the caller holds the references.
    EXPECT_EQ(path->removeSegments(segs, curves, 3, 99, false), 2);
    ASSERT_EQ(curves.size(), 2);
    EXPECT_TRUE(segs.at(0)->path == nullptr && segs.at(0)->index == 0
                && curves.at(0)->path() == nullptr);
    for (koCurve *c : curves)
        c->release();
    for (koSegment *s : segs)
        s->release();
    EXPECT_EQ(path->segments.size(), 3);
}

TEST(koPathArea, MatchesShoelaceAndTheFlattenedToolkitPath)
{
    koRef<koPath> circle(circlePath(koPoint(100, -40), 50));
    EXPECT_NEAR(circle->getArea() / (M_PI * 2500), 1, 1e-3);
    EXPECT_TRUE(circle->isClockwise());
    circle->reverse();
    EXPECT_NEAR(circle->getArea() / (M_PI * 2500), -1, 1e-3);
    EXPECT_FALSE(circle->isClockwise());

    std::mt19937 rng(99);
    for (int iter = 0; iter < 350; ++iter) {
        // Polygons against the shoelace formula, curved paths against the toolkit.
        const bool curved = iter >= 300;
        koRef<koPath> path(curved ? randomPath(rng, true, true, 4, -20, 20, 20)
                                  : randomPath(rng, false, true, 3 + iter % 8, -50, 50));
        const double expected = curved ? flattenedArea(path.get()) : shoelace(pointsOf(path.get()));
        const double tolerance = (curved ? 1e-3 : 1e-9) * (1 + std::fabs(expected));
        EXPECT_NEAR(path->getArea(), expected, tolerance) << pathText(path.get());
        EXPECT_TRUE(std::fabs(expected) < tolerance || path->isClockwise() == (expected >= 0))
                << pathText(path.get());
        path->reverse();
        EXPECT_NEAR(path->getArea(), -expected, tolerance);
    }
}

TEST(koPathArea, CacheOpenPathsAndKeptAccumulation)
{
    // Curve terms: -4, 10 and the closing one, 2.
    koRef<koPath> path(polygonPath({{1, 2}, {5, 2}, {5, 6}}, false));
    EXPECT_DOUBLE_EQ(path->getArea(false, false), 6);
    EXPECT_DOUBLE_EQ(path->getArea(false, true), 8);
    EXPECT_EQ(path->m_area, 0);           // uncached calls store nothing
    EXPECT_DOUBLE_EQ(path->getArea(), 6); // cached: the path's own flag
    path->m_area = 100;
    EXPECT_EQ(path->getArea(), 100);
    // Uncached, the stored area is the starting value of the sum.
    EXPECT_DOUBLE_EQ(path->getArea(false, true), 108);
    path->m_area = qQNaN();
    EXPECT_TRUE(std::isnan(path->getArea()));
    path->segments.first()->setPoint(koPoint(1, 1)); // any change forgets it
    EXPECT_EQ(path->m_area, 0);
}

TEST(koPathOrientation, SetClockwiseOnlyTouchesClosedPaths)
{
    koRef<koPath> square(polygonPath({{0, 0}, {0, 4}, {4, 4}, {4, 0}}, true));
    EXPECT_FALSE(square->isClockwise());
    square->reorient();
    EXPECT_EQ(square->flags, quint32(koPath::Clockwise));
    EXPECT_GT(square->getArea(), 0);
    square->setClockwise(false);
    EXPECT_EQ(square->flags, quint32(koPath::CounterClockwise));
    EXPECT_LT(square->getArea(), 0);
    square->flags = koPath::Clockwise; // the recorded orientation is trusted
    square->setClockwise(true);
    EXPECT_LT(square->getArea(), 0);

    koRef<koPath> open(polygonPath({{0, 0}, {0, 4}, {4, 4}}, false));
    open->setClockwise(true);
    open->reorient();
    EXPECT_EQ(open->flags, 0u);
    EXPECT_EQ(open->segments.at(1)->point, koPoint(0, 4));
}

// Random edits on a path with a (mostly) built curve list keep it consistent.
TEST(koPathProperty, CurvesLinkConsecutiveSegmentsAfterRandomEdits)
{
    resetProbes();
    for (bool closed : {false, true}) {
        std::mt19937 rng(closed ? 4242u : 1717u);
        auto pick = [&rng](int lo, int hi) {
            return std::uniform_int_distribution<int>(lo, hi)(rng);
        };
        koRef<koPath> path(new koPath(nullptr, closed));
        koRef<koPath> other(polygonPath({{100, 100}, {200, 200}}, false));
        for (int step = 0; step < 3000; ++step) {
            const int n = path->segments.size();
            if (pick(0, 9) < 8)
                path->getCurves();
            int op = pick(0, 9);
            if (n > 24 && op < 3)
                op += 3;
            QList<koSegment *> segs;
            QList<koCurve *> curves;
            switch (op) {
            case 0:
                path->insertSegment(pick(-2, n + 2), new ProbeSegment(step, n));
                break;
            case 1:
                for (int k = pick(0, 3); k > 0; --k)
                    segs.append(new ProbeSegment(step, k));
                path->addSegments(segs, pick(-1, n + 1));
                break;
            case 2:
                path->insertSegment(pick(0, n), other->segments.at(1)); // stores a clone
                break;
            case 3:
                path->removeSegment(pick(-1, n));
                break;
            case 4:
                if (path->removeSegments(segs, curves, pick(-1, n), pick(-1, n + 1), false) == 0)
                    break;
                // Put the run back elsewhere with its curves, as splitting does, or drop it.
                if (pick(0, 1))
                    path->addSegments(segs, pick(-1, path->segments.size()), curves);
                else
                    for (koCurve *c : curves)
                        c->release();
                for (koSegment *s : segs)
                    s->release();
                break;
            case 5:
                for (int k = pick(0, 4); k > 0; --k)
                    segs.append(n > 0 && pick(0, 1) ? path->segments.at(pick(0, n - 1))
                                                    : new ProbeSegment(step, k));
                path->setSegments(segs);
                break;
            case 6:
                path->reverse();
                break;
            case 7:
                if (!path->getCurves().isEmpty())
                    path->curves.at(pick(0, path->curves.size() - 1))->remove();
                break;
            default:
                if (n > 0)
                    path->segments.at(pick(0, n - 1))->remove();
                break;
            }
            ASSERT_TRUE(pathIsConsistent(path.get())) << "step " << step << " op " << op;
        }
        EXPECT_EQ(other->segments.at(1)->path, other.get());
    }
    EXPECT_GT(ProbeSegment::counter().made, 1000);
    EXPECT_EQ(ProbeSegment::counter().alive(), 0);
}
