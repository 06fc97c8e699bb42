// Seeded properties over random cubics, near-degenerate ones included,
// against independent oracles: dense sampling, the whole curve at mapped
// times, and a composite reference length.

#include "path/pathtesthelpers.h"

#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace {

// Hex-float text of the curve values and further inputs, for regressions.
std::string text(const QVector<double> &v, std::initializer_list<double> more = {})
{
    std::string s;
    char buffer[32];
    for (double c : v + QVector<double>(more))
        s += std::string(buffer, std::snprintf(buffer, sizeof buffer, "%a, ", c));
    return s;
}

// In turn: ordinary, zero handles, collinear (overshooting too), loop, cusp,
// tiny (1e-6), huge (1e6), handles 1e-13 or 1e-9 off the chord.
QVector<double> randomCurve(std::mt19937 &rng, int i)
{
    std::uniform_real_distribution<double> unit(-100, 100);
    const koPoint o(unit(rng), unit(rng)), a(unit(rng), unit(rng)), b(unit(rng), unit(rng)),
            e(unit(rng), unit(rng));
    const double s = unit(rng) / 100, r = unit(rng) / 100, j = i % 16 < 8 ? 1e-13 : 1e-9;
    const int z = i / 8 % 3; // which handles are zero: 1, 2 or both
    // B(t) = o + a (t - t0)^2 + b (t - t0)^3 in powers of t.
    const double t0 = 0.5 + 0.4 * s;
    const koPoint d1 = a * (-2 * t0) + b * (3 * t0 * t0), d2 = a - b * (3 * t0);
    const QVector<koPoint> shapes[] = {
            {o, a, b, e},
            {o, z != 1 ? o : a, z != 0 ? e : b, e},
            {o, o + a * s * 1.5, o + a * r * 1.5, o + a},
            {o, o + a + b, o + b + a * (s * 0.2), o + a + b * (r * 0.2)},
            {o, o + d1 / 3, o + d1 * (2.0 / 3) + d2 / 3, o + d1 + d2 + b},
            {o * 1e-8, a * 1e-8, b * 1e-8, e * 1e-8},
            {o * 1e4, a * 1e4, b * 1e4, e * 1e4},
            {o, o + (e - o) * (s + 1) / 2 + a * j, o + (e - o) * (r + 1) / 2 + b * j, e}};
    const QVector<koPoint> &p = shapes[i % 8];
    return {p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y};
}

double scaleOf(const QVector<double> &v)
{
    double s = 0;
    for (double c : v)
        s = std::max(s, std::abs(c));
    return s;
}

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

// The box holds every sample and exceeds the sampled box at most by what
// sampling can miss at an extreme, M h^2 / 8 for spacing h and a coordinate
// whose second derivative is bounded by M.
TEST(koCurveProperties, BoundsAreTheSampledBox)
{
    std::mt19937 rng(20240611);
    for (int i = 0; i < Count; ++i) {
        const QVector<double> v = randomCurve(rng, i);
        const koRect r = koCurve::getBounds(v);
        const double rlo[2] = {r.x, r.y}, rhi[2] = {r.x + r.width, r.y + r.height};
        double lo[2] = {v[0], v[1]}, hi[2] = {v[0], v[1]}, tol = 1e-9 * scaleOf(v);
        for (int k = 1; k <= 2000; ++k) {
            const koPoint p = koCurve::getPoint(v, k / 2000.0);
            lo[0] = std::min(lo[0], p.x), lo[1] = std::min(lo[1], p.y);
            hi[0] = std::max(hi[0], p.x), hi[1] = std::max(hi[1], p.y);
        }
        for (int c = 0; c < 2; ++c) {
            const double m = 6
                    * std::max(std::abs(v[c] - 2 * v[c + 2] + v[c + 4]),
                               std::abs(v[c + 2] - 2 * v[c + 4] + v[c + 6]));
            const double miss = m / (8 * 2000.0 * 2000) + tol;
            ASSERT_TRUE(rlo[c] <= lo[c] + tol && rhi[c] >= hi[c] - tol) << text(v);
            ASSERT_TRUE(rlo[c] >= lo[c] - miss && rhi[c] <= hi[c] + miss) << text(v);
        }
    }
}

// Walking the measured length comes back as far as the quadrature allows:
// Gauss-Legendre with at most 16 nodes over [0, t] and 2 over steps below
// 1/32 is off by up to a few percent near cusps, by design. So by the
// reference the found time must measure the offset within a small multiple
// of those rules' error on the curve (covering the few Newton spans summed),
// and within 1e-9 of it where they are exact.
TEST(koCurveProperties, TimeAtInvertsLength)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> time(0, 1);
    for (int i = 0; i < Count; ++i) {
        const QVector<double> v = randomCurve(rng, i);
        const double t = time(rng), offset = koCurve::getLength(v, 0, t);
        const double found = koCurve::getTimeAt(v, offset);
        // -100 only when the quadrature measured [0, t] longer than [0, 1].
        if (found == koTolerance::NoTime && offset > koCurve::getLength(v) + koTolerance::Epsilon)
            continue;
        ASSERT_TRUE(found >= 0 && found <= 1) << text(v, {t});
        double ruleError = 0, sum = 0;
        for (double a = 0, b = 1 / 32.0; b <= 1; a = b, b += 1 / 32.0) {
            const double span = referenceLength(v, a, b, 4);
            sum += span;
            ruleError = std::max({ruleError, std::abs(koCurve::getLength(v, a, b) - span),
                                  std::abs(koCurve::getLength(v, 0, b) - sum)});
        }
        const double reference = referenceLength(v, 0, t);
        ASSERT_NEAR(referenceLength(v, 0, found), reference, 32 * ruleError + 1e-9 * reference)
                << text(v, {t, found});
    }
}

// The nearest time refines the nearest of 101 samples to a local minimum: no
// point within 1e-6 in time is nearer beyond what the last step (below 8e-7)
// can miss, and the global minimum is missed by at most what the samples can
// miss, the maximum speed (3 times the longest control leg) times 0.005.
// Curves within 2e-7 of their chord are answered through the chord.
TEST(koCurveProperties, NearestTimeIsALocalMinimumNearTheBest)
{
    std::mt19937 rng(99);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (int i = 0; i < Count; ++i) {
        const QVector<double> v = randomCurve(rng, i);
        const double s = scaleOf(v);
        const double tol = 1e-9 * s + (koCurve::isStraight(v) ? 2 * koTolerance::Geometric : 0);
        const koPoint p = i % 3 ? koPoint(unit(rng) * s, unit(rng) * s)
                                : koCurve::getPoint(v, (unit(rng) + 1) / 2);
        const double t = koCurve::getNearestTime(v, p);
        ASSERT_TRUE(t >= 0 && t <= 1) << text(v, {p.x, p.y});
        auto distanceAt = [&](double u) {
            return u < 0 || u > 1 ? qInf() : p.getDistance(koCurve::getPoint(v, u));
        };
        double dense = qInf(), local = qInf(), speed = 0;
        for (int k = 0; k <= 2000; ++k) {
            dense = std::min(dense, distanceAt(k / 2000.0));
            local = std::min(local, k > 20 ? qInf() : distanceAt(t + (k - 10) * 1e-7));
        }
        for (int k = 0; k < 6; k += 2)
            speed = std::max(speed, 3 * std::hypot(v[k + 2] - v[k], v[k + 3] - v[k + 1]));
        const double d = distanceAt(t);
        ASSERT_LE(d, local + speed * 2 * koTolerance::CurveTimeMin + tol) << text(v, {p.x, p.y});
        ASSERT_LE(d, dense + speed * 0.005 + tol) << text(v, {p.x, p.y});
    }
}

// Pieces from subdivide, getPart and divideAtTime (in a path and free) trace
// the whole curve at the mapped times; division keeps links and reference
// counts consistent (leaks show under LSan).
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

        const QVector<double> pieces[] = {koCurve::subdivide(v, t)[0],
                                          koCurve::subdivide(v, t)[1],
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
