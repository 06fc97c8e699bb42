// Path editing against an independent oracle: Bernstein evaluation and a sampled,
// golden-section nearest distance, both ways.

#include "pathtesthelpers.h"

#include "geometry/komatrix.h"
#include "path/xpath.h"

#include <QtCore/QtNumeric>
#include <QtGui/QTransform>

#include <cmath>
#include <random>

namespace {

// Sampled, then refined by golden sections around every sampled local minimum.
double distanceTo(const QVector<CubicPoints> &set, const koPoint &p)
{
    double best = qInf();
    const int n = 128;
    for (const CubicPoints &c : set) {
        double d[n + 1];
        for (int i = 0; i <= n; ++i)
            best = std::min(best, d[i] = p.getDistance(bernstein(c, double(i) / n)));
        for (int i = 0; i <= n; ++i) {
            if ((i > 0 && d[i - 1] < d[i]) || (i < n && d[i + 1] < d[i]))
                continue;
            double lo = std::max(0, i - 1) / double(n), hi = std::min(n, i + 1) / double(n);
            for (int k = 0; k < 50; ++k) {
                const double m1 = lo + (hi - lo) * 0.381966, m2 = hi - (hi - lo) * 0.381966;
                const bool left = p.getDistance(bernstein(c, m1)) < p.getDistance(bernstein(c, m2));
                (left ? hi : lo) = left ? m2 : m1;
            }
            best = std::min(best, p.getDistance(bernstein(c, (lo + hi) / 2)));
        }
    }
    return best;
}

// Both one-sided distances between about 100 samples of each and the other.
testing::AssertionResult sameTrace(const QVector<CubicPoints> &a, const QVector<CubicPoints> &b,
                                   double tolerance)
{
    auto deviation = [](const QVector<CubicPoints> &from, const QVector<CubicPoints> &to) {
        const int samples = std::max(4, 100 / std::max(1, int(from.size())));
        double worst = 0;
        for (const CubicPoints &c : from) {
            for (int i = 0; i <= samples; ++i)
                worst = std::max(worst, distanceTo(to, bernstein(c, double(i) / samples)));
        }
        return worst;
    };
    const double ab = deviation(a, b), ba = deviation(b, a);
    if (ab <= tolerance && ba <= tolerance)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "deviation " << ab << " / " << ba << " > " << tolerance;
}

} // namespace

TEST(PathSplit, EdgeCases)
{
    // Open: this path keeps the first part up to a copy of the split point.
    XPath compound;
    koPath *path = polygonPath({{0, 0}, {10, 0}, {10, 10}}, false);
    compound.addChild(path);
    koPath *rest = path->split(1, 0.5);
    ASSERT_EQ(compound.children, (QVector<koPath *>{path, rest}));
    EXPECT_EQ(pointsOf(path), (QVector<koPoint>{{0, 0}, {10, 0}, {10, 5}}));
    EXPECT_EQ(pointsOf(rest), (QVector<koPoint>{{10, 5}, {10, 10}}));
    EXPECT_TRUE(pathIsConsistent(path) && pathIsConsistent(rest));

    // Closed, at a corner: opened in place, round from that corner to itself.
    koRef<koPath> square(polygonPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    EXPECT_EQ(square->split(2, 0), square.get());
    EXPECT_FALSE(square->closed);
    EXPECT_EQ(pointsOf(square.get()),
              (QVector<koPoint>{{10, 10}, {0, 10}, {0, 0}, {10, 0}, {10, 10}}));
    EXPECT_TRUE(pathIsConsistent(square.get()));

    // 0.9999996 is the start of the next curve: no point is added.
    koRef<koPath> line(polygonPath({{0, 0}, {10, 0}, {20, 0}}, false));
    koRef<koCurveLocation> end(new koCurveLocation(line->getCurves().at(0), 0.9999996,
                                                   koPoint(qQNaN(), qQNaN()), false, 0));
    koRef<koPath> tail(line->splitAt(end.get()));
    EXPECT_EQ(pointsOf(line.get()), (QVector<koPoint>{{0, 0}, {10, 0}}));
    EXPECT_EQ(pointsOf(tail.get()), (QVector<koPoint>{{10, 0}, {20, 0}}));

    // Without a curve only an end time is taken, as the path's start.
    koRef<koCurveLocation> loose(new koCurveLocation(nullptr, 0.5, koPoint(5, 0), false, 0));
    EXPECT_EQ(tail->splitAt(loose.get()), nullptr);
    loose->time = 1;
    koRef<koPath> all(tail->splitAt(loose.get()));
    EXPECT_EQ(tail->segments.size(), 1);
    EXPECT_EQ(all->segments.size(), 2);

    // Off the path: nothing happens.
    EXPECT_EQ(all->splitAt(static_cast<koCurveLocation *>(nullptr)), nullptr);
    EXPECT_EQ(all->split(1, 0.5), nullptr);
    EXPECT_EQ(all->split(0, qQNaN()), nullptr);
    EXPECT_EQ(all->split(0, 0.9999999), nullptr); // the end of an open path
    EXPECT_EQ(all->splitAt(10.5), nullptr);

    // A compound path splits the child holding the offset (-5 is 15 of 20).
    compound.addChild(polygonPath({{0, 5}, {10, 5}}, false));
    EXPECT_EQ(compound.splitAt(qQNaN()), nullptr);
    koPath *piece = compound.splitAt(-5.0);
    ASSERT_EQ(compound.children.size(), 4);
    EXPECT_EQ(compound.children.at(3), piece);
    EXPECT_LT(piece->getFirstSegment()->point.getDistance(koPoint(5, 5)), 1e-9);
}

TEST(PathSplit, RandomSplitsAndReversalKeepTheTrace)
{
    std::mt19937 rng(1234);
    for (int trial = 0; trial < 24; ++trial) {
        koRef<koPath> path(randomPath(rng, trial % 2, trial % 4 >= 2, 2 + trial % 5));
        const QVector<CubicPoints> original = tracedCubics({path.get()});
        const std::string input = pathText(path.get());
        std::uniform_real_distribution<double> unit(0, 1);
        koRef<koPath> rest(trial % 3 ? path->split(int(rng() % path->getCurves().size()), unit(rng))
                                     : path->splitAt(unit(rng) * path->getLength()));
        ASSERT_TRUE(rest) << input;
        if (rest.get() != path.get()) {
            EXPECT_EQ(path->getLastSegment()->point, rest->getFirstSegment()->point) << input;
        }
        EXPECT_TRUE(sameTrace(original, tracedCubics({path.get(), rest.get()}), 1e-7)) << input;
        EXPECT_TRUE(pathIsConsistent(path.get()) && pathIsConsistent(rest.get()));

        path->addFlags(koPath::Clockwise | koPath::OverlapsOnly);
        path->reverse();
        EXPECT_EQ(path->flags, quint32(koPath::CounterClockwise | koPath::OverlapsOnly));
        EXPECT_TRUE(sameTrace(original, tracedCubics({path.get(), rest.get()}), 1e-7)) << input;
    }
}

TEST(PathJoin, EdgeCases)
{
    koRef<koPath> ab(polygonPath({{0, 0}, {10, 0}}, false));
    koRef<koPath> cb(polygonPath({{20, 0}, {10.3, 0}}, false));
    EXPECT_EQ(ab->join(cb.get(), 0.5), ab.get());
    EXPECT_EQ(pointsOf(ab.get()), (QVector<koPoint>{{0, 0}, {10, 0}, {20, 0}}));

    // Joining itself closes a path whose ends meet, dropping the last segment.
    for (double gap : {0.4, 0.6}) {
        koRef<koPath> open(polygonPath({{0, 0}, {10, 0}, {10, 10}, {0, gap}}, false));
        open->join(open.get(), 0.5);
        EXPECT_EQ(open->closed, gap < 0.5);
        EXPECT_EQ(open->segments.size(), gap < 0.5 ? 3 : 4);
    }

    // A joined child leaves its parent; a closed one comes back to its start.
    XPath compound;
    koPath *ring = polygonPath({{30, 0}, {40, 0}, {40, 10}}, true);
    compound.addChild(ring);
    ab->join(ring, 0.5);
    EXPECT_TRUE(compound.children.isEmpty());
    EXPECT_EQ(ab->segments.size(), 7);
    EXPECT_EQ(ab->getLastSegment()->point, ab->segments.at(3)->point);
    EXPECT_TRUE(pathIsConsistent(ab.get()));
}

TEST(PathJoin, SplitThenJoinRestoresTheTrace)
{
    std::mt19937 rng(99);
    for (int trial = 0; trial < 30; ++trial) {
        koRef<koPath> path(randomPath(rng, trial % 2, false, 3 + trial % 4));
        const QVector<CubicPoints> original = tracedCubics({path.get()});
        XPath compound;
        compound.addChild(path.get());
        koPath *rest = path->split(int(rng() % path->getCurves().size()), 0.3 + 0.2 * (trial % 3));
        ASSERT_TRUE(rest);
        path->getLastSegment()->setHandleOut(koPoint()); // the join must bring it back
        if (trial % 3)
            (trial % 3 == 1 ? rest : path.get())->reverse();
        path->join(rest, 1e-9);
        EXPECT_EQ(compound.children.size(), 1);
        EXPECT_TRUE(sameTrace(original, tracedCubics({path.get()}), 1e-7)) << pathText(path.get());
        EXPECT_EQ(path->segments.size(), original.size() + 2);
    }
}

TEST(PathReduce, EdgeCases)
{
    koRef<koPath> path(polygonPath({{0, 0}, {5, 0}, {5, 0}, {10, 0}, {10, 5}}, false));
    EXPECT_EQ(path->reduce(false)->segments.size(), 5);
    EXPECT_EQ(pointsOf(path->reduce(true)), (QVector<koPoint>{{0, 0}, {10, 0}, {10, 5}}));
    EXPECT_TRUE(pathIsConsistent(path.get()));

    // A NaN length cache is used as it stands: never short (the curved curve stays).
    koRef<koPath> tail(polygonPath({{0, 0}, {10, 5}, {10, 5}}, false));
    tail->segments.at(0)->setHandleOut(koPoint(5, -5));
    tail->getCurves().at(1)->length = qQNaN();
    EXPECT_EQ(tail->reduce(true)->segments.size(), 3);
    tail->getCurves().at(1)->length = 0;
    EXPECT_EQ(tail->reduce(true)->segments.size(), 2);

    XPath compound;
    compound.addChild(polygonPath({{1, 1}}, true));
    compound.addChild(polygonPath({{0, 0}, {9, 0}, {0, 9}}, true));
    EXPECT_EQ(compound.reduce(true)->children.size(), 1);
}

TEST(PathReduce, RandomDegenerateInsertionsAreUndone)
{
    std::mt19937 rng(7);
    for (int trial = 0; trial < 30; ++trial) {
        const bool curved = trial % 2;
        koRef<koPath> path(randomPath(rng, curved, trial % 4 >= 2, 3 + trial % 4));
        const QVector<CubicPoints> original = tracedCubics({path.get()});
        const int n = path->segments.size();
        for (int i = n - 1; i >= 0; --i) {
            koSegment *s = path->segments.at(i);
            const koPoint next = path->segments.at((i + 1) % path->segments.size())->point;
            if (!curved && (path->closed || i + 1 < n)) // a collinear midpoint
                path->insertSegment(i + 1, new koSegment((s->point + next) / 2, {}, {}));
            // A duplicate that takes over the outgoing handle: a zero-length curve.
            path->insertSegment(i + 1, new koSegment(s->point, koPoint(), s->handleOut));
            s->setHandleOut(koPoint());
        }
        path->reduce(true);
        EXPECT_EQ(path->segments.size(), n) << pathText(path.get());
        EXPECT_TRUE(sameTrace(original, tracedCubics({path.get()}), 1e-7)) << pathText(path.get());
    }
}

TEST(PathSmooth, KeepsPointsAndJoinsTangents)
{
    std::mt19937 rng(5);
    for (int trial = 0; trial < 48; ++trial) {
        const int type = trial % 4;
        const bool closed = trial % 8 >= 4, spline = type <= koPath::SmoothAsymmetric;
        koRef<koPath> path(randomPath(rng, trial % 3 == 0, closed, 3 + trial % 5));
        koRef<koPath> before(path->clone());
        path->smooth(type, 0.5);
        const QList<koSegment *> &s = path->segments;
        const int n = s.size();
        ASSERT_EQ(pointsOf(path.get()), pointsOf(before.get()));
        for (int i = 0; i < n; ++i) {
            const koSegment *prev = s.at((i + n - 1) % n), *at = s.at(i), *next = s.at((i + 1) % n);
            if (!closed && (i == 0 || i == n - 1)) {
                // The spline types end with zero curvature (natural ends).
                const koPoint c1 = at->point + (i == 0 ? at->handleOut : at->handleIn);
                const koPoint c2 =
                        i == 0 ? next->point + next->handleIn : prev->point + prev->handleOut;
                EXPECT_TRUE(!spline || (at->point - c1 * 2 + c2).getLength() < 1e-9) << type;
                continue;
            }
            // G1: the curve in arrives along the direction the curve out leaves.
            const koPoint in = -at->handleIn, out = at->handleOut;
            ASSERT_GT(in.getLength(), 1e-9) << type << " " << pathText(before.get());
            EXPECT_NEAR(in.normalize().cross(out.normalize()), 0, 1e-12) << type;
            EXPECT_GT(in.dot(out), 0) << type << " " << pathText(before.get());
            if (!spline)
                continue;
            // C1 and C2 in the spline parameter (uniform spans, or sqrt(chord)).
            const double h0 = type == 0 ? 1 : std::sqrt(prev->point.getDistance(at->point));
            const double h1 = type == 0 ? 1 : std::sqrt(at->point.getDistance(next->point));
            const koPoint acc0 = (prev->point + prev->handleOut + at->handleIn * -2 - at->point)
                    * (6 / (h0 * h0));
            const koPoint acc1 = (next->point + next->handleIn + at->handleOut * -2 - at->point)
                    * (6 / (h1 * h1));
            EXPECT_NEAR((in / h0 - out / h1).getLength(), 0, 1e-9 * (1 + out.getLength()));
            EXPECT_NEAR((acc0 - acc1).getLength(), 0, 1e-7 * (1 + acc0.getLength())) << type;
        }
        // A range leaves the other segments alone.
        koRef<koPath> ranged(before->clone());
        ranged->smooth(type, 0.5, 1, 2);
        for (int i = 0; i < n; i = i == 0 ? 3 : i + 1)
            EXPECT_TRUE(koSegment::segsEquals({ranged->segments.at(i)}, {before->segments.at(i)}));
    }
    // Degenerate input stays finite and whole.
    koRef<koPath> same(polygonPath({{1, 1}, {1, 1}, {1, 1}}, true));
    koRef<koPath> lone(polygonPath({{1, 1}}, false));
    for (int type = 0; type < 4; ++type) {
        same->smooth(type, 0.5);
        same->smooth(type, qQNaN());
        lone->smooth(type, 0.5);
        EXPECT_FALSE(same->hasHandles()) << type;
    }
}

TEST(PathFlatten, StaysWithinFlatnessAndSimplifyWithinTolerance)
{
    std::mt19937 rng(11);
    for (int trial = 0; trial < 12; ++trial) {
        const double flatness = std::pow(10.0, -(trial % 3));
        koRef<koPath> path(randomPath(rng, true, trial % 2, 2 + trial % 4));
        const QVector<CubicPoints> original = tracedCubics({path.get()});
        const int n = path->segments.size();
        path->flatten(flatness);
        EXPECT_FALSE(path->hasHandles());
        EXPECT_GT(path->segments.size(), n);
        EXPECT_TRUE(sameTrace(original, tracedCubics({path.get()}), flatness * (1 + 1e-9)))
                << trial;

        XPath compound;
        compound.addChild(randomPath(rng, true, trial % 2, 2 + trial % 4));
        const QVector<CubicPoints> shape = tracedCubics({compound.getFirstChild()});
        compound.simplify(2 * flatness);
        EXPECT_TRUE(sameTrace(shape, tracedCubics({compound.getFirstChild()}),
                              2 * flatness * (1 + 1e-9)));
    }
}

TEST(PathTransform, MapsLikeQTransformFlipsOrientationAndBlends)
{
    std::mt19937 rng(3);
    koRef<koPath> path(randomPath(rng, true, true, 4));
    koRef<koPath> before(path->clone());
    path->transformContent(nullptr);
    EXPECT_TRUE(path->equals(before.get()));
    const koMatrix mirror(-1.5, 0.25, 0.5, 2, 7, -3);
    path->addFlags(koPath::Clockwise);
    path->transformContent(&mirror);
    EXPECT_EQ(path->flags, quint32(koPath::CounterClockwise));
    const QVector<CubicPoints> mapped = tracedCubics({path.get()}),
                               source = tracedCubics({before.get()});
    for (int k = 0; k < source.size(); ++k) {
        for (double t : {0.0, 0.3, 0.71, 1.0}) {
            const QPointF q = mirror.toTransform().map(bernstein(source[k], t).toPt());
            EXPECT_LT(koPoint(q).getDistance(bernstein(mapped[k], t)), 1e-12 * 300);
        }
    }

    // interpolate(): 0 is the first path, 1 the second; mismatches change nothing.
    path->interpolate(before.get(), path.get(), 0);
    EXPECT_TRUE(path->equals(before.get()));
    koRef<koPath> three(polygonPath({{0, 0}, {1, 1}, {2, 2}}, false));
    path->interpolate(three.get(), before.get(), 0.5);
    path->interpolate(nullptr, before.get(), 0.5);
    EXPECT_TRUE(path->equals(before.get()));
}
