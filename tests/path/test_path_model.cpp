#include "pathtesthelpers.h"

#include <QtGui/QPainterPath>
#include <QtGui/QTransform>

#include <cmath>
#include <random>

namespace {

double shoelace(const QVector<koPoint> &pts)
{
    double sum = 0;
    for (int i = 0; i < pts.size(); ++i)
        sum += pts.at(i).cross(pts.at((i + 1) % pts.size()));
    return sum / 2;
}

// The area of the closed path as the toolkit flattens it, magnified first so
// that the chords hug the curves.
double flattenedArea(koPath *path)
{
    QPainterPath qp;
    const QList<koSegment *> &segs = path->segments;
    qp.moveTo(segs.first()->point.toPt());
    for (int i = 0; i < segs.size(); ++i) {
        const koSegment *a = segs.at(i), *b = segs.at((i + 1) % segs.size());
        qp.cubicTo((a->point + a->handleOut).toPt(), (b->point + b->handleIn).toPt(),
                   b->point.toPt());
    }
    double area = 0;
    for (const QPolygonF &poly : qp.toSubpathPolygons(QTransform::fromScale(1000, 1000))) {
        QVector<koPoint> pts;
        for (const QPointF &p : poly)
            pts.append(koPoint(p));
        area += shoelace(pts);
    }
    return area / 1e6;
}

} // namespace

TEST(koPathModel, IdsCountCurvesAndEmptyAccessors)
{
    koRef<koPath> open(new koPath);
    koRef<koPath> closed(new koPath(nullptr, true));
    EXPECT_EQ(closed->id, open->id + 1);
    EXPECT_EQ(open->_countCurves(), 0);
    EXPECT_EQ(closed->_countCurves(), 0);
    EXPECT_FALSE(open->getFirstCurve() || open->getCurrentSegment() || open->getFirstSegment());
    for (int i = 0; i < 3; ++i) {
        open->addSegment(new koSegment(i, 0));
        closed->addSegment(new koSegment(i, 0));
    }
    EXPECT_EQ(open->_countCurves(), 2);
    EXPECT_EQ(closed->_countCurves(), 3);
    EXPECT_EQ(closed->getLastCurve()->segment2(), closed->getFirstSegment());
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
    EXPECT_TRUE(pathIsConsistent(path.get()));
    EXPECT_EQ(path->segments.size(), 3);
}

TEST(koPathModel, SetSegmentsAcceptsItsOwnSegments)
{
    koRef<koPath> path(polygonPath({{0, 0}, {1, 0}, {2, 0}}, false));
    path->getCurves();
    QList<koSegment *> list = path->segments;
    std::reverse(list.begin(), list.end());
    path->setSegments(list);
    EXPECT_EQ(path->segments, list); // adopted again, not copied
    EXPECT_TRUE(path->curves.isEmpty());
    path->getCurves();
    EXPECT_TRUE(pathIsConsistent(path.get()));
}

TEST(koPathModel, ReverseFlipsOrderHandlesAndKnownOrientation)
{
    koRef<koPath> path(new koPath(nullptr, true));
    path->addSegment(new koSegment(koPoint(0, 0), koPoint(-1, 0), koPoint(1, 0)));
    path->addSegment(new koSegment(koPoint(5, 5), koPoint(0, -1), koPoint(0, 2)));
    path->getCurves();
    path->addFlags(koPath::Clockwise | koPath::OverlapsOnly);
    path->reverse();
    EXPECT_EQ(path->segments.first()->point, koPoint(5, 5));
    EXPECT_EQ(path->segments.first()->handleIn, koPoint(0, 2));
    EXPECT_EQ(path->segments.first()->index, 0);
    EXPECT_TRUE(path->curves.isEmpty());
    EXPECT_EQ(path->flags, quint32(koPath::CounterClockwise | koPath::OverlapsOnly));
    koRef<koPath> empty(new koPath);
    empty->reverse();
    EXPECT_EQ(empty->flags, 0u);
}

TEST(koPathArea, PolygonsMatchTheShoelaceFormula)
{
    std::mt19937 rng(99);
    std::uniform_real_distribution<double> coord(-50, 50);
    for (int iter = 0; iter < 300; ++iter) {
        QVector<koPoint> pts;
        koRef<koPath> path(new koPath(nullptr, true));
        for (int i = 0; i < 3 + iter % 8; ++i) {
            pts.append(koPoint(coord(rng), coord(rng)));
            path->addSegment(new koSegment(pts.last().x, pts.last().y));
        }
        const double expected = shoelace(pts);
        EXPECT_NEAR(path->getArea(), expected, 1e-9 * (1 + std::fabs(expected)))
                << hex(pts.first());
        EXPECT_EQ(path->isClockwise(), expected >= 0);
        path->reverse();
        EXPECT_NEAR(path->getArea(), -expected, 1e-9 * (1 + std::fabs(expected)));
    }
}

TEST(koPathArea, CurvedShapesMatchTheFlattenedToolkitPath)
{
    koRef<koPath> circle(circlePath(koPoint(100, -40), 50));
    EXPECT_NEAR(circle->getArea() / (M_PI * 2500), 1, 1e-3);
    EXPECT_TRUE(circle->isClockwise());
    circle->reverse();
    EXPECT_NEAR(circle->getArea() / (M_PI * 2500), -1, 1e-3);
    EXPECT_FALSE(circle->isClockwise());

    std::mt19937 rng(3);
    std::uniform_real_distribution<double> coord(-20, 20);
    for (int iter = 0; iter < 50; ++iter) {
        koRef<koPath> path(new koPath(nullptr, true));
        for (int i = 0; i < 4; ++i)
            path->addSegment(new koSegment(koPoint(coord(rng), coord(rng)),
                                           koPoint(coord(rng), coord(rng)),
                                           koPoint(coord(rng), coord(rng))));
        const double expected = flattenedArea(path.get());
        // The toolkit flattens with a fixed budget of chords: 1e-3 relative.
        EXPECT_NEAR(path->getArea(), expected, 1e-3 * (1 + std::fabs(expected)))
                << hex(path->segments.first()->point);
    }
}

TEST(koPathArea, CacheOpenPathsAndKeptAccumulation)
{
    // Terms of the three curves: -4, 10 and the closing one, 2.
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

// Whatever edits run on a path whose curve list is (mostly) built, curve i
// joins segments i and i + 1 and every reference has its holder.
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
                // Put the run back elsewhere handing the curves over, as
                // splitting does, or drop it.
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
