#include "path/pathtesthelpers.h"

#include <QtCore/QtNumeric>

#include <random>

namespace {

koCurveLocation *at(koPath *path, int i, double t)
{
    return new koCurveLocation(path->getCurves().at(i), t, koPoint(qQNaN(), qQNaN()), false, 0);
}

koCurveLocation *link(koCurveLocation *a, koCurveLocation *b)
{
    a->intersection = b;
    b->intersection = a;
    return a;
}

void releaseAll(const QList<koCurveLocation *> &list)
{
    for (koCurveLocation *l : list)
        l->release();
}

} // namespace

TEST(CurveLocation, EndTimesAndEquality)
{
    koRef<koPath> open(polygonPath({{0, 0}, {10, 0}, {10, 10}}, false));
    koRef<koPath> closed(polygonPath({{0, 0}, {10, 0}, {10, 10}}, true));
    // Past the end moves to the next curve; the last curve of an open path keeps it.
    koCurveLocation *moved = at(open.get(), 0, 0.9999999), *kept = at(open.get(), 1, 0.9999999);
    EXPECT_TRUE(moved->getCurve() == open->curves[1] && moved->getTime() == 0);
    EXPECT_TRUE(kept->getCurve() == open->curves[1] && kept->getTime() == 0.9999999);
    // Time 1 of the closing curve equals time 0 of the first.
    koCurveLocation *end = at(closed.get(), 0, 0.5), *start = at(closed.get(), 0, 0);
    end->setSegmentPrev(closed->segments.first());
    EXPECT_TRUE(end->getCurve() == closed->curves[2] && end->getTime() == 1
                && end->equals(start, false) && start->equals(end, false));
    // Behind a zero-length curve: curve index + time differ, offsets match.
    koRef<koPath> zero(polygonPath({{0, 0}, {10, 0}, {10, 0}, {20, 0}}, false));
    koCurveLocation *a = at(zero.get(), 1, 0), *b = at(zero.get(), 2, 0);
    EXPECT_TRUE(a->equals(b, false));
    // Partners decide unless ignored; a partner on one side only differs.
    link(a, at(closed.get(), 1, 0.5));
    EXPECT_FALSE(a->equals(b, false) || a->equals(start, true) || a->equals(nullptr, true));
    link(b, at(closed.get(), 1, 0.25));
    EXPECT_TRUE(!a->equals(b, false) && a->equals(b, true));
    releaseAll({moved, kept, end, start, a, b, a->intersection, b->intersection});
}

TEST(CurveLocation, InsertMergesOnlyAtTheFront)
{
    koRef<koPath> path(polygonPath({{0, 0}, {10, 0}, {10, 10}}, false));
    const auto pair = [&](double t) { return link(at(path.get(), 0, t), at(path.get(), 1, 0.5)); };
    QList<koCurveLocation *> list;
    koCurveLocation *first = pair(0.5), *dup = pair(0.5), *far = pair(0.1), *late = pair(0.5);
    koCurveLocation::insert(list, first, true);
    dup->overlap = true; // merging carries the overlap mark over
    EXPECT_EQ(koCurveLocation::insert(list, dup, true), first);
    EXPECT_TRUE(list.size() == 1 && first->overlap && first->intersection->overlap);
    releaseAll({dup->intersection, dup});
    // An equal location behind a far-away first entry is inserted, after it.
    koCurveLocation::insert(list, far, true);
    EXPECT_EQ(koCurveLocation::insert(list, late, true), late);
    EXPECT_EQ(list, (QList<koCurveLocation *>{far, first, late}));
    releaseAll(koCurveLocation::expand(list));
}

TEST(CurveLocation, DivideTextAndLostCurves)
{
    koRef<koPath> path(circlePath({0, 0}, 10));
    koCurveLocation *loc = at(path.get(), 1, 0.3);
    const koPoint p = loc->getPoint();
    koCurve *res = loc->divide();
    ASSERT_TRUE(res && loc->getTime() == 0 && loc->getSegment() == res->segment1());
    EXPECT_TRUE(loc->getPoint().isClose(p, 1e-9) && pathIsConsistent(path.get()));
    koRef<koPath> line(polygonPath({{0, 0}, {10, 0}}, false));
    koCurveLocation *mid = at(line.get(), 0, 0.5), *lost = at(line.get(), 0, 0.5);
    EXPECT_EQ(mid->toString(),
              QStringLiteral("point: x: 5, y: 0 index: 0 0 time: 0.5 distance: 0 segment1: ")
                      + line->segments[0]->toString() + QStringLiteral(" segment2: ")
                      + line->segments[1]->toString());
    EXPECT_EQ(mid->getSegment(), line->segments[1]); // a tie goes to segment 2
    EXPECT_EQ(line->curves[0]->getLocationOf(koPoint(5, 1)), nullptr);
    // No curve at all, or the point no longer on the edited path.
    koCurveLocation *none = link(new koCurveLocation(nullptr, 0.5, koPoint(), false, 0), loc);
    line->segments.last()->setPoint(koPoint(10, 10));
    ++line->version;
    EXPECT_TRUE(lost->getCurve() == nullptr && lost->getTime() == -100);
    for (koCurveLocation *l : {none, lost})
        EXPECT_FALSE(l->getSegment() || l->getOffset() || l->isCrossing() || l->divide()
                     || l->equals(loc, false) || l->toString().isEmpty());
    releaseAll({loc, mid, lost, none});
}

// Crossing versus touching at interiors and vertices; partners linked by hand at a common point.
TEST(CurveLocation, IsCrossingTable)
{
    // A polyline continued by cubics (handle 1, handle 2, end point).
    const auto cubic = [](std::initializer_list<koPoint> line, const QVector<double> &v) {
        koPath *p = polygonPath(line, false);
        for (int i = 0; i + 5 < v.size(); i += 6)
            p->cubicCurveTo({v[i], v[i + 1]}, {v[i + 2], v[i + 3]}, {v[i + 4], v[i + 5]});
        return p;
    };
    const koPoint o(0, 0), p5(5, 5), p50(5, 0), x(5, 4.625);
    // Mirror images in x = 5 with symmetric x controls meet at time 0.5.
    koPath *bent = cubic({o}, {2, 8, 8, 1, 10, 10});
    const koPoint dir = bent->getCurves()[0]->getTangentAtTime(0.5) * 20;
    // clang-format off
    const struct { const char *name; koPath *a, *b; koPoint at; bool crossing; } rows[] = {
        {"straight X", polygonPath({o, {10, 10}}, false), polygonPath({{0, 10}, {10, 0}}, false),
         p5, true},
        {"curved X", bent, cubic({{10, 0}}, {8, 8, 2, 1, 0, 10}), x, true},
        {"corners meet", polygonPath({o, p5, {10, 0}}, false),
         polygonPath({{0, 10}, p5, {10, 10}}, false), p5, false},
        {"corners cross", polygonPath({o, p5, {10, 10}}, false),
         polygonPath({{0, 10}, p5, {10, 0}}, false), p5, true},
        {"corner on line", polygonPath({o, {10, 0}}, false),
         polygonPath({{2, 5}, p50, {8, 5}}, false), p50, false},
        // Leaves upwards, then curls back below the line further on.
        {"corner across, curling back", polygonPath({o, {10, 0}}, false),
         cubic({{2, 5}, p50}, {5, -5, 8, 5, 8, 5}), p50, true},
        {"collinear overlap", polygonPath({o, {10, 0}}, false),
         polygonPath({{2, 0}, {8, 0}}, false), p50, false},
        {"tangent line", polygonPath({x - dir, x + dir}, false), bent->clone(), x, false},
    };
    // clang-format on
    for (const auto &r : rows) {
        koRef<koPath> a(r.a), b(r.b);
        koCurveLocation *la = a->getCurves()[0]->getLocationOf(r.at);
        koCurveLocation *lb = b->getCurves()[0]->getLocationOf(r.at);
        ASSERT_TRUE(la && lb && link(la, lb)) << r.name;
        EXPECT_TRUE(la->isCrossing() == r.crossing && lb->isCrossing() == r.crossing)
                << r.name << " at " << hex(r.at);
        releaseAll({la, lb});
    }
}

// Random pairs on random paths: insert keeps (path id, curve index + time) sorted, expand
// adds each partner once, a location finds its curve again after its path was divided.
TEST(CurveLocation, SeededInsertExpandAndRefind)
{
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<double> unit(0, 1), coord(-50, 50);
    for (int round = 0; round < 40; ++round) {
        QList<koRef<koPath>> paths;
        for (int i = 0; i < 3; ++i) {
            paths.append(koRef<koPath>(new koPath(nullptr, rng() % 2)));
            const double curved = rng() % 2 * 0.3;
            for (int n = 2 + rng() % 4; n > 0; --n) {
                const koPoint h = koPoint(coord(rng), coord(rng)) * curved;
                paths[i]->addSegment(new koSegment(koPoint(coord(rng), coord(rng)), -h, h));
            }
        }
        const auto randomLoc = [&] {
            koPath *p = paths.at(int(rng() % 3)).get();
            return at(p, int(rng() % p->getCurves().size()), rng() % 5 ? unit(rng) : rng() % 2);
        };
        QList<koCurveLocation *> list;
        for (int i = 0; i < 12; ++i) {
            koCurveLocation *a = link(randomLoc(), randomLoc());
            ASSERT_EQ(koCurveLocation::insert(list, a, true), a);
        }
        const QList<koCurveLocation *> all = koCurveLocation::expand(list);
        ASSERT_EQ(all.size(), 2 * list.size());
        const auto key = [](const koCurveLocation *l) {
            return std::make_pair(l->curve->path()->id, l->curve->index() + l->time);
        };
        for (int i = 0; i < all.size(); ++i) {
            EXPECT_TRUE(all.count(all[i]) == 1 && all.contains(all[i]->intersection));
            EXPECT_LE(key(all[qMax(i - 1, 0)]), key(all[i])) << "round " << round << " entry " << i;
        }
        koCurveLocation *loc = all.at(int(rng() % all.size()));
        const koPoint p = loc->getPoint();
        koPath *path = loc->curve->path();
        path->curves[int(rng() % path->curves.size())]->divideAtTime(0.2 + 0.6 * unit(rng), false);
        ++path->version;
        koCurve *found = loc->getCurve();
        EXPECT_TRUE(found && found->getPointAtTime(loc->getTime()).isClose(p, 1e-6))
                << "round " << round << " point " << hex(p);
        releaseAll(all);
    }
}
