// Seeded properties over random cubics, near-degenerate ones included, against dense
// sampling, the whole curve at mapped times, and a composite reference length.

#include "curve/curvetesthelpers.h"

#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

// n sixteen-node rules: accurate to rounding on all but the sharpest cusps.
double referenceLength(const QVector<double> &v, double a, double b, int n = 64)
{
    const std::function<double(double)> speed = koCurve::_getLengthIntegrand(v);
    double sum = 0;
    for (int k = 0; k < n; ++k)
        sum += koNumeric::integrate(speed, a + (b - a) * k / n, a + (b - a) * (k + 1) / n, 16);
    return sum;
}

constexpr int Count = 4000;

} // namespace

// Bounds: the sampled box, widened at most by M h^2 / 8 (spacing h, |coordinate''| <= M).
// Nearest time: a local minimum within the last step (< 8e-7) and within speed x 0.005 of the
// dense minimum (101 seeds); curves within 2e-7 of their chord answer through the chord.
// Time at length: at most 16 Gauss nodes (2 below 1/32) are a few percent off near cusps by
// design, so the found time is judged against those rules' own error on the curve.
TEST(koCurveProperties, BoundsNearestTimeAndLengthInversion)
{
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (int i = 0; i < Count; ++i) {
        const QVector<double> v = randomCurve(rng, i);
        const double s = scaleOf(v), tol = 1e-9 * s;
        const koPoint p = i % 3 ? koPoint(unit(rng) * s, unit(rng) * s)
                                : koCurve::getPoint(v, (unit(rng) + 1) / 2);
        const double t = koCurve::getNearestTime(v, p);
        ASSERT_TRUE(t >= 0 && t <= 1) << text(v, {p.x, p.y});
        auto distanceAt = [&](double u) {
            return u < 0 || u > 1 ? qInf() : p.getDistance(koCurve::getPoint(v, u));
        };
        double lo[2] = {v[0], v[1]}, hi[2] = {v[0], v[1]}, dense = qInf(), local = qInf();
        for (int k = 0; k <= 2000; ++k) {
            const koPoint q = koCurve::getPoint(v, k / 2000.0);
            lo[0] = std::min(lo[0], q.x), lo[1] = std::min(lo[1], q.y);
            hi[0] = std::max(hi[0], q.x), hi[1] = std::max(hi[1], q.y);
            dense = std::min(dense, p.getDistance(q));
            local = std::min(local, k > 20 ? qInf() : distanceAt(t + (k - 10) * 1e-7));
        }
        const koRect r = koCurve::getBounds(v);
        const double rlo[2] = {r.x, r.y}, rhi[2] = {r.x + r.width, r.y + r.height};
        for (int c = 0; c < 2; ++c) {
            const double m = 6
                    * std::max(std::abs(v[c] - 2 * v[c + 2] + v[c + 4]),
                               std::abs(v[c + 2] - 2 * v[c + 4] + v[c + 6]));
            const double miss = m / (8 * 2000.0 * 2000) + tol;
            ASSERT_TRUE(rlo[c] <= lo[c] + tol && rhi[c] >= hi[c] - tol) << text(v);
            ASSERT_TRUE(rlo[c] >= lo[c] - miss && rhi[c] <= hi[c] + miss) << text(v);
        }
        double speed = 0;
        for (int k = 0; k < 6; k += 2)
            speed = std::max(speed, 3 * std::hypot(v[k + 2] - v[k], v[k + 3] - v[k + 1]));
        const double d = distanceAt(t),
                     near = tol + (koCurve::isStraight(v) ? 2 * koTolerance::Geometric : 0);
        ASSERT_LE(d, local + speed * 2 * koTolerance::CurveTimeMin + near) << text(v, {p.x, p.y});
        ASSERT_LE(d, dense + speed * 0.005 + near) << text(v, {p.x, p.y});

        const double lt = (unit(rng) + 1) / 2, offset = koCurve::getLength(v, 0, lt);
        const double found = koCurve::getTimeAt(v, offset);
        // -100 only when the quadrature measured [0, t] longer than [0, 1].
        if (found == koTolerance::NoTime && offset > koCurve::getLength(v) + koTolerance::Epsilon)
            continue;
        ASSERT_TRUE(found >= 0 && found <= 1) << text(v, {lt});
        double ruleError = 0, sum = 0;
        for (double a = 0, b = 1 / 32.0; b <= 1; a = b, b += 1 / 32.0) {
            const double span = referenceLength(v, a, b, 4);
            sum += span;
            ruleError = std::max({ruleError, std::abs(koCurve::getLength(v, a, b) - span),
                                  std::abs(koCurve::getLength(v, 0, b) - sum)});
        }
        const double reference = referenceLength(v, 0, lt);
        ASSERT_NEAR(referenceLength(v, 0, found), reference, 32 * ruleError + 1e-9 * reference)
                << text(v, {lt, found});
    }
}

// Pieces from subdivide, getPart and divideAtTime (in a path and free) trace the whole
// curve at the mapped times; division keeps links and reference counts consistent.
TEST(koCurveProperties, PiecesTraceTheCurve)
{
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> time(0.001, 0.999);
    for (int i = 0; i < Count; ++i) {
        const QVector<double> v = randomCurve(rng, i);
        const double t = time(rng), from = time(rng), to = time(rng);
        koRef<koPath> path(new koPath(nullptr, i % 2));
        path->addSegment(new koSegment({v[0], v[1]}, {}, {v[2] - v[0], v[3] - v[1]}));
        path->addSegment(new koSegment({v[6], v[7]}, {v[4] - v[6], v[5] - v[7]}, {}));
        path->addSegment(new koSegment(v[0] + 1, v[1] - 1));
        koCurve *second = path->getCurves().first()->divideAtTime(t, i % 3 == 0);
        ASSERT_TRUE(second && pathIsConsistent(path.get()) && path->getSegments().size() == 4);
        ASSERT_EQ(second, path->getCurves().at(1));
        koRef<koCurve> free(new koCurve(v, nullptr));
        koRef<koCurve> rest(free->divideAtTime(t, false));
        ASSERT_TRUE(rest && free->segment2() == rest->segment1() && !rest->path());
        EXPECT_TRUE(rest->segment1()->refCount == 2 && rest->segment2()->refCount == 1);

        const auto halves = koCurve::subdivide(v, t);
        const QVector<double> pieces[] = {halves[0],
                                          halves[1],
                                          koCurve::getPart(v, from, to),
                                          path->getCurves().at(0)->getValues(),
                                          second->getValues(),
                                          free->getValues(),
                                          rest->getValues()};
        const double ranges[][2] = {{0, t}, {t, 1}, {from, to}, {0, t}, {t, 1}, {0, t}, {t, 1}};
        for (int k = 0; k < 7; ++k) {
            for (double s : {0.0, 0.25, 0.5, 0.75, 1.0}) {
                // Handle-less pieces of a handle-less curve keep only the split point.
                if (k > 2 && !koCurve::hasHandles(v) && s != 0 && s != 1)
                    continue;
                const koPoint e =
                        koCurve::getPoint(v, ranges[k][0] + (ranges[k][1] - ranges[k][0]) * s);
                ASSERT_LE(koCurve::getPoint(pieces[k], s).getDistance(e),
                          64e-12 * std::max(1.0, scaleOf(v)))
                        << k << ": " << text(v, {t, from, to});
            }
        }
    }
}
