// Curve-curve intersection: edge cases, and seeded properties against a subdivision oracle.

#include "curve/curvetesthelpers.h"

#include "curve/koopparam.h"
#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

using Values = QVector<double>;

// The list owns one reference per entry; each entry's partner is freed with it.
void releaseAll(QList<koCurveLocation *> &list)
{
    for (koCurveLocation *location : qAsConst(list)) {
        koCurveLocation *partner = location->intersection;
        location->release();
        if (partner)
            partner->release();
    }
    list.clear();
}

// Free curves for a pair of curve values, and the search between them.
struct Pair
{
    Values v1, v2;
    koCurve *c1, *c2;
    QList<koCurveLocation *> list;
    Pair(const Values &a, const Values &b)
        : v1(a), v2(b), c1(new koCurve(a, nullptr)), c2(new koCurve(b, nullptr))
    {}
    ~Pair() { releaseAll(list), c1->release(), c2->release(); }
    QList<koCurveLocation *> &run(opParam param = opParam())
    {
        return koCurve::getIntersections(v1, v2, c1, c2, list, param);
    }
    // Calls the clipping recursion takes between the whole curves.
    int calls() const
    {
        QList<koCurveLocation *> scratch;
        opParam param;
        const int n = koCurve::addCurveIntersections(v1, v2, c1, c2, scratch, param, 0, 1, 0, 1,
                                                     false, 0, 0);
        releaseAll(scratch);
        return n;
    }
    // The location of an entry's pair that lies on c1 (or c2).
    koCurveLocation *on(int i, koCurve *c) const
    {
        return list[i]->curve == c ? list[i] : list[i]->intersection;
    }
};

opParam excluding(bool start, bool end)
{
    opParam param;
    param.excludeStart = start;
    param.excludeEnd = end;
    return param;
}

// Bernstein evaluation, independent of the library.
koPoint at(const Values &v, double t)
{
    const double u = 1 - t, a = u * u * u, b = 3 * u * u * t, c = 3 * u * t * t, d = t * t * t;
    return koPoint(a * v[0] + b * v[2] + c * v[4] + d * v[6],
                   a * v[1] + b * v[3] + c * v[5] + d * v[7]);
}
koPoint derivative(const Values &v, double t)
{
    const double u = 1 - t;
    return koPoint(3 * (u * u * (v[2] - v[0]) + 2 * u * t * (v[4] - v[2]) + t * t * (v[6] - v[4])),
                   3 * (u * u * (v[3] - v[1]) + 2 * u * t * (v[5] - v[3]) + t * t * (v[7] - v[5])));
}

// Each location lies at its own time on its curve, and the two points together.
testing::AssertionResult onBothCurves(const Pair &pair, double tol)
{
    for (int i = 0; i < pair.list.size(); ++i) {
        koCurveLocation *a = pair.on(i, pair.c1), *b = pair.on(i, pair.c2);
        const double error = std::max({at(pair.v1, a->time).getDistance(a->point),
                                       at(pair.v2, b->time).getDistance(b->point),
                                       a->point.getDistance(b->point)});
        if (!(error < tol))
            return testing::AssertionFailure() << "off by " << error << " at t " << a->time << " u "
                                               << b->time << " of " << text(pair.v1, pair.v2);
    }
    return testing::AssertionSuccess();
}

// Oracle: subdivide both while control boxes overlap, chord crossing on the small
// pieces, then Newton on B1(t) = B2(u). Gives up after 200000 steps (work).
struct Oracle
{
    Values v1, v2;
    int work = 0;
    std::vector<std::pair<double, double>> found;

    static bool apart(const Values &a, const Values &b, int c)
    {
        const auto box = [c](const Values &v) {
            return std::minmax({v[c], v[c + 2], v[c + 4], v[c + 6]});
        };
        return box(a).second < box(b).first || box(b).second < box(a).first;
    }
    void search(double t0, double t1, double u0, double u1, int depth)
    {
        const Values a = koCurve::getPart(v1, t0, t1), b = koCurve::getPart(v2, u0, u1);
        if (++work > 200000 || apart(a, b, 0) || apart(a, b, 1))
            return;
        if (depth == 16) {
            const double ax = a[6] - a[0], ay = a[7] - a[1], bx = b[6] - b[0], by = b[7] - b[1];
            const double cross = ax * by - ay * bx, dx = b[0] - a[0], dy = b[1] - a[1];
            const double s = (dx * by - dy * bx) / cross, r = (dx * ay - dy * ax) / cross;
            if (s >= -0.01 && s <= 1.01 && r >= -0.01 && r <= 1.01)
                refine(t0 + s * (t1 - t0), u0 + r * (u1 - u0));
            return;
        }
        const double t[] = {t0, (t0 + t1) / 2, t1}, u[] = {u0, (u0 + u1) / 2, u1};
        for (int k = 0; k < 4; ++k)
            search(t[k / 2], t[k / 2 + 1], u[k % 2], u[k % 2 + 1], depth + 1);
    }
    void refine(double t, double u)
    {
        for (int i = 0; i < 20 && t >= 0 && t <= 1 && u >= 0 && u <= 1; ++i) {
            const koPoint f = at(v1, t) - at(v2, u), d1 = derivative(v1, t), d2 = derivative(v2, u);
            const double det = d1.y * d2.x - d1.x * d2.y;
            t -= (d2.x * f.y - d2.y * f.x) / det;
            u -= (d1.x * f.y - d1.y * f.x) / det;
        }
        if (t >= 0 && t <= 1 && u >= 0 && u <= 1)
            found.emplace_back(t, u);
    }
};

// Random cubics, including near-degenerate shapes, at the given scale.
Values randomCubic(std::mt19937 &rng, double scale, const koPoint &origin)
{
    std::uniform_real_distribution<double> unit(-1, 1);
    const auto pt = [&] { return origin + koPoint(unit(rng), unit(rng)) * scale; };
    koPoint p[4] = {pt(), pt(), pt(), pt()};
    const unsigned kind = rng() % 6;
    if (kind == 0) { // zero handle(s)
        p[1] = p[0];
        p[2] = rng() % 2 ? p[3] : p[2];
    } else if (kind == 1) { // collinear control points, possibly overshooting
        const koPoint d = pt() - origin;
        for (int i = 1; i < 4; ++i)
            p[i] = p[0] + d * (unit(rng) * 1.5);
    } else if (kind < 4) { // a loop or a cusp, turned, maybe disturbed
        static const koPoint shapes[2][4] = {{{0, 0}, {1.5, 1}, {-0.5, 1}, {1, 0}},
                                             {{0, 0}, {1, 1}, {0, 1}, {1, 0}}};
        const double angle = unit(rng) * 180, jitter = (rng() % 2) * 1e-3;
        for (int i = 0; i < 4; ++i)
            p[i] = origin
                    + ((shapes[kind - 2][i] + koPoint(unit(rng), unit(rng)) * jitter) * scale)
                              .rotate(angle);
    }
    return {p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y};
}

} // namespace

TEST(CurveIntersections, AdjacencyReducedPolygonsAndBadInput)
{
    const Values v = {0, 0, 30, 80, 70, -40, 100, 20};
    // End to end: a meeting only when not declared adjacent.
    const Values a = {0, 0, 0, 0, 10, 0, 10, 0}, b = {10, 0, 10, 0, 10, 10, 10, 10};
    EXPECT_TRUE(Pair(a, b).run().size() == 1 && Pair(a, b).run(excluding(false, true)).isEmpty());
    EXPECT_TRUE(Pair(b, a).run().size() == 1 && Pair(b, a).run(excluding(true, false)).isEmpty());
    // Arches whose full control polygons overlap in y (40 against 20 + d)
    // while the reduced polygons (30 against 30 + d) are d apart.
    for (double d : {3e-7, 1.0})
        EXPECT_TRUE(Pair({0, 0, 0, 40, 100, 40, 100, 0},
                         {0, 60 + d, 0, 20 + d, 100, 20 + d, 100, 60 + d})
                            .run()
                            .isEmpty());
    for (const Values &bad : {Values{qQNaN(), 0, 1, 1, 2, 2, 3, 3},
                              Values{0, 0, qInf(), 1, 2, 2, 3, 3}, Values{1, 2, 3}}) {
        Pair pair(v, bad);
        opParam param;
        EXPECT_TRUE(pair.run().isEmpty());
        EXPECT_TRUE(koCurve::getSelfIntersection(bad, nullptr, pair.list, param).isEmpty());
    }
}

TEST(CurveIntersections, LoopGivesOnePairInflectionNoneAndSplitTruncatesCurvature)
{
    koCurve *curve = new koCurve({0, 0, 150, 100, -50, 100, 100, 0}, nullptr);
    QList<koCurveLocation *> list = curve->getIntersectionscurve(curve);
    ASSERT_EQ(list.size(), 1);
    koCurveLocation *first = list[0], *second = first->intersection;
    // The loop is symmetric about x = 50; the entry has the smaller time.
    EXPECT_TRUE(first->curve == curve && second->curve == curve && first->time < second->time);
    EXPECT_NEAR(first->time + second->time, 1, 1e-8);
    EXPECT_NEAR(first->point.x, 50, 1e-6);
    releaseAll(list);
    curve->release();

    opParam param; // an inflection: none
    EXPECT_TRUE(
            koCurve::getSelfIntersection({0, 0, 50, 100, 50, -100, 100, 0}, nullptr, list, param)
                    .isEmpty());
    // The split keeps the best curvature as an integer: roots t = 0.43507 (320.9) and t = 0
    // (0.0185); at 1000 times the size both are below 1, the later wins, the loop is lost.
    for (double scale : {1.0, 1000.0}) {
        const Values v = {0, 0, -30 * scale, 20 * scale, -80 * scale, 10 * scale, 100 * scale, 0};
        param = opParam();
        koCurve::getSelfIntersection(v, nullptr, list, param);
        EXPECT_TRUE(param.renormalize && param.excludeEnd);
        EXPECT_NEAR(param.renormalizeTime, scale == 1 ? 0.43507033708 : 0, 1e-9);
        EXPECT_EQ(list.size(), scale == 1 ? 1 : 0);
        releaseAll(list);
    }
}

TEST(CurveIntersections, AddLocationExclusionsRenormalisationAndListEntry)
{
    const Values v = {0, 0, 30, 80, 70, -40, 100, 20};
    const auto add = [](QList<koCurveLocation *> &list, opParam param, koCurve *a, double t1,
                        koCurve *b, double t2, bool overlap) {
        const koPoint none(qQNaN(), qQNaN());
        koCurve::addLocation(list, param, a->getValues(), a, t1, none, b->getValues(), b, t2, none,
                             overlap);
    };
    // The exclusions apply to t2 crosswise, and not to overlaps.
    const struct
    {
        bool start, end, overlap;
        double t1, t2;
        int kept;
    } cases[] = {{false, true, false, 0.5, 1e-7, 0}, {false, true, false, 0.9999999, 0.5, 0},
                 {true, false, false, 1e-7, 0.5, 0}, {true, false, false, 0.5, 0.9999999, 0},
                 {true, false, false, 0.5, 1e-7, 1}, {false, true, false, 1e-7, 0.5, 1},
                 {true, true, true, 1, 0, 1},        {false, false, false, 1.5, 0.5, 0}};
    for (const auto &c : cases) {
        Pair pair(v, v);
        add(pair.list, excluding(c.start, c.end), pair.c1, c.t1, pair.c2, c.t2, c.overlap);
        EXPECT_EQ(pair.list.size(), c.kept) << c.t1 << " " << c.t2;
    }
    // Renormalised times map the two halves back onto the whole curve.
    Pair pair(v, v);
    opParam param;
    param.renormalize = true;
    param.renormalizeTime = 0.4;
    add(pair.list, param, pair.c1, 0.5, pair.c2, 0.5, false);
    ASSERT_EQ(pair.list.size(), 1);
    EXPECT_DOUBLE_EQ(pair.on(0, pair.c1)->time, 0.2);
    EXPECT_DOUBLE_EQ(pair.on(0, pair.c2)->time, 0.7);
    EXPECT_EQ(pair.on(0, pair.c2)->point, koCurve::getPoint(v, 0.7));

    // On one path the list takes the earlier curve's location; a filtered pair is released.
    koPath *path = polygonPath({{0, 0}, {10, 0}, {10, 10}}, false);
    koCurve *first = path->getCurves()[0], *second = path->getCurves()[1];
    QList<koCurveLocation *> list;
    param = opParam();
    add(list, param, second, 0.5, first, 0.5, false);
    ASSERT_TRUE(list.size() == 1 && list[0]->curve == first);
    releaseAll(list);
    koCurveLocation *seen = nullptr;
    param.include = [&seen](koCurveLocation *location) { return !(seen = location); };
    add(list, param, first, 0.5, second, 0.5, false);
    EXPECT_TRUE(list.isEmpty() && seen);
    path->release();
}

TEST(CurveIntersections, ConvexHullAndClipping)
{
    using Hull = QVector<QVector<QVector<double>>>;
    const double third = 1.0 / 3, twoThirds = 2.0 / 3;
    EXPECT_EQ(koCurve::getConvexHull(0, 1, 1, 0),
              (Hull{{{0, 0}, {third, 1}, {twoThirds, 1}, {1, 0}}, {{0, 0}, {1, 0}}}));
    EXPECT_EQ(koCurve::getConvexHull(0, 1, -1, 0),
              (Hull{{{0, 0}, {third, 1}, {1, 0}}, {{0, 0}, {twoThirds, -1}, {1, 0}}}));
    EXPECT_EQ(koCurve::getConvexHull(0, -1, -1, 0),
              (Hull{{{0, 0}, {1, 0}}, {{0, 0}, {third, -1}, {twoThirds, -1}, {1, 0}}}));

    const QVector<QVector<double>> rising = {{0, -2}, {0.5, -1}, {1, 2}};
    EXPECT_DOUBLE_EQ(koCurve::clipConvexHullPart(rising, true, 0), 2.0 / 3);
    EXPECT_EQ(koCurve::clipConvexHullPart(rising, true, -1), 0.5);
    EXPECT_TRUE(qIsNaN(koCurve::clipConvexHullPart(rising, true, 3)));
    EXPECT_DOUBLE_EQ(koCurve::clipConvexHull(rising, {{0, -2}, {1, 2}}, 0, 1), 2.0 / 3);
    EXPECT_EQ(koCurve::clipConvexHull({{0.25, 0}}, {{0.25, 0}}, -1, 1), 0.25);
}

// Every meeting lies on both curves; every clean transversal crossing of the
// oracle is reported.
TEST(CurveIntersectionProperties, RandomPairsAgainstSubdivisionOracle)
{
    std::mt19937 rng(20240611);
    int checked = 0, skipped = 0;
    for (int n = 0; n < 3000; ++n) {
        const double scale = std::vector<double>{1e-3, 1, 100, 100, 1e4, 1e6}[rng() % 6];
        const double far = scale <= 100 && rng() % 8 == 0 ? 1000 : 1; // small curves far out
        const koPoint origin(far * scale * (rng() % 7), -far * scale * (rng() % 5));
        Pair pair(randomCubic(rng, scale, origin), randomCubic(rng, scale, origin));
        const double tol = std::max(1e-6, 1e-8 * scale);
        pair.run();
        ASSERT_TRUE(onBothCurves(pair, tol));

        // A runaway oracle, a spent call budget or an overlap (reported instead) loses crossings.
        Oracle oracle{pair.v1, pair.v2, 0, {}};
        oracle.search(0, 1, 0, 1, 0);
        if (oracle.work > 200000 || pair.calls() > koTolerance::ClipMaxCalls
            || koCurve::getOverlaps(pair.v1, pair.v2).size() == 2) {
            ++skipped;
            continue;
        }
        for (const auto &hit : oracle.found) {
            const koPoint p = at(pair.v1, hit.first);
            const koPoint d1 = derivative(pair.v1, hit.first), d2 = derivative(pair.v2, hit.second);
            const auto near = [&](const std::pair<double, double> &o) {
                return &o != &hit && at(pair.v1, o.first).getDistance(p) < 1e-4 * scale;
            };
            if (std::min({hit.first, hit.second, 1 - hit.first, 1 - hit.second}) < 0.01
                || std::abs(d1.cross(d2)) < 0.1 * d1.getLength() * d2.getLength()
                || std::any_of(oracle.found.begin(), oracle.found.end(), near))
                continue;
            ++checked;
            ASSERT_TRUE(std::any_of(
                    pair.list.begin(), pair.list.end(),
                    [&](koCurveLocation *loc) { return loc->point.getDistance(p) < tol; }))
                    << "crossing at t " << hit.first << " u " << hit.second << " of "
                    << text(pair.v1, pair.v2);
        }
    }
    EXPECT_GT(checked, 1000);
    EXPECT_LT(skipped, 100) << checked;
}

// A sub-piece, the reversal, or the curve itself (at exactly times 0 and 1).
TEST(CurveIntersectionProperties, SubPiecesReversalsAndTheSameCurveAreOverlaps)
{
    std::mt19937 rng(77);
    std::uniform_real_distribution<double> unit(0, 100);
    for (int n = 0; n < 450; ++n) {
        Values v(8);
        for (double &x : v)
            x = unit(rng);
        const int kind = n % 3;
        const double a = 0.1 + unit(rng) * 0.003, b = 0.6 + unit(rng) * 0.003;
        Pair pair(v,
                  kind == 0           ? koCurve::getPart(v, a, b)
                          : kind == 1 ? koCurve::getPart(v, 1, 0)
                                      : v);
        ASSERT_EQ(pair.run().size(), 2) << text(pair.v1, pair.v2);
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(pair.list[i]->overlap && pair.list[i]->intersection->overlap);
            const double t = pair.on(i, pair.c1)->time, u = pair.on(i, pair.c2)->time;
            if (kind == 2)
                EXPECT_TRUE(t == i && u == i) << text(pair.v1);
            else
                EXPECT_NEAR(u, kind ? 1 - t : (t - a) / (b - a), 1e-6) << text(pair.v1);
        }
    }
}

// Tangent and (nearly) coincident pairs end within the budget plus one call per level.
TEST(CurveIntersectionProperties, NearCoincidentAndTangentPairsTerminate)
{
    const Values arch = {0, 0, 0, 40, 100, 40, 100, 0};
    // Circles of radius 50 round (50, 50), (150, 50): quarter arcs to and round the contact.
    const double k = 0.5522847498307936 * 50, s = 50 * M_SQRT1_2, h = k * M_SQRT1_2;
    std::vector<std::pair<Values, Values>> pairs = {
            {arch, {0, 60, 0, 20, 100, 20, 100, 60}}, // tangent at (50, 30)
            {{50, 0, 50 + k, 0, 100, 50 - k, 100, 50},
             {150, 100, 150 - k, 100, 100, 50 + k, 100, 50}},
            {{50 + s, 50 - s, 50 + s + h, 50 - s + h, 50 + s + h, 50 + s - h, 50 + s, 50 + s},
             {150 - s, 50 - s, 150 - s - h, 50 - s + h, 150 - s - h, 50 + s - h, 150 - s, 50 + s}}};
    for (double offset : {0.0, 1e-10, 1e-8, 1e-6}) {
        Values shifted = arch;
        for (int i = 1; i < 8; i += 2)
            shifted[i] += offset;
        pairs.emplace_back(arch, shifted);
        pairs.emplace_back(arch, koCurve::getPart(shifted, 1, 0));
    }
    for (const auto &p : pairs) {
        Pair pair(p.first, p.second);
        EXPECT_LE(pair.calls(), koTolerance::ClipMaxCalls + koTolerance::ClipMaxDepth)
                << text(p.first, p.second);
        pair.run();
        EXPECT_TRUE(onBothCurves(pair, 1e-6));
    }
}
