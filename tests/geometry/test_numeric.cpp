#include "geometry/konumeric.h"

#include "geometry/geometrytest.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

namespace {

using Poly = std::vector<double>; // coefficients, highest degree first

long double eval(const Poly &c, long double x)
{
    long double v = 0;
    for (double k : c)
        v = v * x + k;
    return v;
}

// Roots on [0, 1] have small residuals, no repeats, and cover every scanned sign change.
void checkRoots(const Poly &c, const QVector<double> &roots, int count)
{
    std::string what;
    double scale = 0;
    for (double k : c) {
        what += hexf(k) + ", ";
        scale += std::abs(k);
    }
    ASSERT_GE(count, 0) << what;
    for (int i = 0; i < count; ++i) {
        const double r = roots.at(i);
        EXPECT_TRUE(r >= 0 && r <= 1) << what << hexf(r);
        EXPECT_LE(std::abs(double(eval(c, r))), 1e-9 * scale) << what << hexf(r);
        for (int j = 0; j < i; ++j)
            EXPECT_NE(roots.at(j), r) << what;
    }
    const int steps = 2000;
    for (int i = 0; i < steps; ++i) {
        const double t0 = double(i) / steps, t1 = double(i + 1) / steps;
        const long double v0 = eval(c, t0), v1 = eval(c, t1);
        if ((v0 < 0 && v1 > 0) || (v0 > 0 && v1 < 0)) {
            bool found = false;
            for (int j = 0; j < count; ++j)
                found = found || (roots.at(j) >= t0 - 1e-7 && roots.at(j) <= t1 + 1e-7);
            EXPECT_TRUE(found) << what << " sign change in [" << t0 << ", " << t1 << "]";
        }
    }
}

} // namespace

TEST(KoNumericTables, PublishedValues)
{
    const struct
    {
        int row, i;
        double abscissa, weight;
    } pinned[] = {{0, 0, 0.5773502691896257, 1.0},
                  {1, 0, 0, 0.8888888888888888},
                  {1, 1, 0.7745966692414834, 0.5555555555555556},
                  {2, 0, 0.33998104358485626, 0.6521451548625461},
                  {2, 1, 0.8611363115940526, 0.34785484513745385},
                  {14, 7, 0.9894009349916499, 0.027152459411754096}};
    for (const auto &p : pinned) {
        EXPECT_EQ(koNumeric::abscissas[p.row][p.i], p.abscissa) << p.row << " " << p.i;
        EXPECT_EQ(koNumeric::weights[p.row][p.i], p.weight) << p.row << " " << p.i;
    }
}

// Each row, mirrored, is the n-point rule on [-1, 1]: exact for x^k, k < 2n.
TEST(KoNumericTables, RowsIntegrateMonomialsExactly)
{
    for (int n = 2; n <= 16; ++n) {
        const int row = n - 2, half = (n + 1) / 2;
        for (int i = 1; i < half; ++i)
            EXPECT_LT(koNumeric::abscissas[row][i - 1], koNumeric::abscissas[row][i]) << n;
        for (int i = half; i < 8; ++i)
            EXPECT_EQ(koNumeric::abscissas[row][i] + koNumeric::weights[row][i], 0) << n;
        for (int k = 0; k < 2 * n; k += 2) {
            long double sum = 0;
            for (int i = 0; i < half; ++i)
                sum += (n % 2 && i == 0 ? 1 : 2) * koNumeric::weights[row][i]
                        * std::pow((long double)koNumeric::abscissas[row][i], k);
            EXPECT_NEAR(double(sum), 2.0 / (k + 1), 1e-15) << "n " << n << " k " << k;
        }
    }
}

TEST(KoNumericIntegrate, ExactForDegreeTwoNMinusOne)
{
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-2, 2);
    int calls = 0;
    for (int n = 2; n <= 16; ++n) {
        Poly c(2 * n), antiderivative(2 * n + 1, 0.0);
        for (int i = 0; i < 2 * n; ++i) {
            c[i] = u(rng);
            antiderivative[i] = c[i] / (2 * n - i);
        }
        const double a = u(rng), b = a + 1 + std::abs(u(rng));
        const double exact = double(eval(antiderivative, b) - eval(antiderivative, a));
        calls = 0;
        const auto f = [&](double x) { return ++calls, double(eval(c, x)); };
        EXPECT_NEAR(koNumeric::integrate(f, a, b, n), exact, 1e-12 * (1 + std::abs(exact))) << n;
        EXPECT_EQ(calls, n);
    }
    // n outside 2..16 is clamped, never read beyond the tables.
    calls = 0;
    EXPECT_DOUBLE_EQ(koNumeric::integrate([&](double) { return ++calls, 1.0; }, 0, 3, 99), 3);
    EXPECT_EQ(calls, 16);
    EXPECT_DOUBLE_EQ(koNumeric::integrate([](double x) { return x; }, 0, 2, -5), 2);
}

TEST(KoNumericQuadratic, PinnedCases)
{
    QVector<double> roots;
    ASSERT_EQ(koNumeric::solveQuadratic(1, -3, 2, roots, 0, 0), 2);
    EXPECT_EQ(roots, (QVector<double>{2, 1}));
    EXPECT_EQ(koNumeric::solveQuadratic(0, 0, 0, roots, 0, 1), -1);
    EXPECT_EQ(koNumeric::solveQuadratic(0, 0, 1, roots, 0, 1), 0);
    // Overwrites from index 0 and leaves later entries alone.
    ASSERT_EQ(koNumeric::solveQuadratic(0, 2, -1, roots, 0, 1), 1);
    EXPECT_EQ(roots, (QVector<double>{0.5, 1}));
    // Tolerant interval: 1 + 1e-13 is stored as 1, 1 + 1e-11 is rejected.
    roots.clear();
    ASSERT_EQ(koNumeric::solveQuadratic(0, 1, -(1 + 1e-13), roots, 0, 1), 1);
    EXPECT_EQ(roots.at(0), 1);
    EXPECT_EQ(koNumeric::solveQuadratic(0, 1, -(1 + 1e-11), roots, 0, 1), 0);
    // Roots 5e-13 and 2e-13 both clamp onto 0 of [-1, 0]: stored once.
    ASSERT_EQ(koNumeric::solveQuadratic(1, -7e-13, 1e-25, roots, -1, 0), 1);
    EXPECT_EQ(roots.at(0), 0);
}

TEST(KoNumericCubic, PinnedCases)
{
    QVector<double> roots;
    ASSERT_EQ(koNumeric::solveCubic(1, 0, 0, 0, roots, 0, 1), 1);
    EXPECT_EQ(roots.at(0), 0);
    EXPECT_EQ(koNumeric::solveCubic(0, 0, 0, 0, roots, 0, 1), -1);
    ASSERT_EQ(koNumeric::solveCubic(2, -12, 22, -12, roots, 0, 0), 3); // roots 1, 2, 3
}

// Integer inputs give the exact b*b - a*c in 128 bits; the plain double form
// would be off by up to 2^-53 b^2 where the products cancel.
TEST(KoNumericDiscriminant, ExactWhenTermsCancel)
{
    EXPECT_EQ(koNumeric::getDiscriminant(1, 1 + std::ldexp(1, -27), 1 + std::ldexp(1, -26)),
              std::ldexp(1, -54));
    std::mt19937_64 rng(77);
    for (int i = 0; i < 500; ++i) {
        const __int128 a = (rng() >> 14) | (__int128(1) << 49);
        const __int128 b = (rng() >> 13) | (__int128(1) << 50);
        const __int128 c = b * b / a;
        if (c >= (__int128(1) << 53))
            continue;
        const double got = koNumeric::getDiscriminant(double(a), double(b), double(c));
        EXPECT_NEAR(got, double(b * b - a * c), std::ldexp(double(b * b), -74))
                << hexf(double(a)) << " " << hexf(double(b)) << " " << hexf(double(c));
    }
}

// Roots in and around [0, 1], double roots, leading coefficients 1e-30..1e30.
TEST(KoNumericSolvers, RandomPolynomialsAgainstSignScan)
{
    std::mt19937 rng(1234);
    std::uniform_real_distribution<double> u(-0.5, 1.5), e(-30, 30);
    for (int i = 0; i < 1500; ++i) {
        const double r1 = u(rng), r2 = i % 4 == 0 ? r1 : u(rng), r3 = u(rng);
        const double k = (i % 2 ? -1 : 1) * std::pow(10.0, e(rng));
        Poly cubic{k, -k * (r1 + r2 + r3), k * (r1 * r2 + r1 * r3 + r2 * r3), -k * r1 * r2 * r3};
        if (i % 5 == 0)
            cubic = {k * u(rng), k * u(rng), k * u(rng), k * u(rng)};
        QVector<double> roots;
        checkRoots(cubic, roots,
                   koNumeric::solveCubic(cubic[0], cubic[1], cubic[2], cubic[3], roots, 0, 1));
        // The quadratic has no prescaling: below 1e-12 a term counts as zero.
        if (std::abs(k) < 1e-10)
            continue;
        const Poly quad{k, -k * (r1 + r2), k * r1 * r2};
        checkRoots(quad, roots, koNumeric::solveQuadratic(quad[0], quad[1], quad[2], roots, 0, 1));
    }
}

TEST(KoNumericFindRoot, BoundedAndInside)
{
    const auto one = [](double) { return 1.0; };
    EXPECT_EQ(koNumeric::findRoot(one, one, 0.3, 0, 1, 0, 1e-12), 0.3);
    EXPECT_EQ(koNumeric::clamp(5, 10, 0), 10);
    int calls = 0;
    const auto f = [&](double x) { return ++calls, x * x - 2; };
    EXPECT_NEAR(koNumeric::findRoot(
                        f, [](double x) { return 2 * x; }, 1, 0, 2, 32, 1e-12),
                std::sqrt(2.0), 1e-15);
    EXPECT_LE(calls, 32);
    // Zero slope, NaN values, a start outside: at most n calls, result inside.
    calls = 0;
    const auto flat = [&](double) { return ++calls, 1.0; };
    const double r = koNumeric::findRoot(
            flat, [](double) { return 0.0; }, 0.5, 0, 1, 10, 1e-12);
    EXPECT_TRUE(r >= 0 && r <= 1);
    EXPECT_EQ(calls, 10);
    const double n = koNumeric::findRoot([](double) { return qQNaN(); }, one, 0.5, 0, 1, 10, 1e-12);
    EXPECT_TRUE(n >= 0 && n <= 1);
    const double o = koNumeric::findRoot([](double x) { return x - 0.25; }, one, 7, 0, 1, 5, 1e-12);
    EXPECT_TRUE(o >= 0 && o <= 1);
}

TEST(KoNumericEllipse, PointsOnTheInscribedEllipse)
{
    EXPECT_EQ(koNumeric::ellipsePoint(QRectF(1, 2, 6, 4), 0), koPoint(7, 4));
    for (double a = -360; a <= 360; a += 13) {
        const koPoint p = koNumeric::ellipsePoint(QRectF(1, 2, 6, 4), a);
        EXPECT_NEAR(p.x, 4 + 3 * std::cos(a * M_PI / 180), 1e-14) << hexf(a);
        EXPECT_NEAR(p.y, 4 - 2 * std::sin(a * M_PI / 180), 1e-14) << hexf(a); // y up
    }
}

TEST(KoNumericNoise, HashSmoothingInterpolation)
{
    EXPECT_EQ(koNumeric::intNoise_1D(0), 1 - 1376312589 * (1.0 / 1073741824));
    for (int x : {INT_MIN, INT_MIN + 1, -7, -1, 1, 2, 12345, INT_MAX})
        EXPECT_TRUE(koNumeric::intNoise_1D(x) > -1 && koNumeric::intNoise_1D(x) <= 1) << x;
    EXPECT_EQ(koNumeric::smoothNoise_1D(5),
              koNumeric::intNoise_1D(5) / 2 + koNumeric::intNoise_1D(4) / 4
                      + koNumeric::intNoise_1D(6) / 4);
    EXPECT_EQ(koNumeric::interpolateNoise_1D(-3), koNumeric::smoothNoise_1D(-3));
    EXPECT_EQ(koNumeric::cubicInterpolate_1D(1, 2, 3, 5, 0), 2);
    EXPECT_EQ(koNumeric::cubicInterpolate_1D(1, 2, 3, 5, 1), 3);
    EXPECT_DOUBLE_EQ(koNumeric::cubicInterpolate_1D(0, 1, 2, 3, 0.25), 1.25); // lines stay lines
    EXPECT_DOUBLE_EQ(koNumeric::cosineInterpolate_1D(2, 4, 0.5), 3);
}

TEST(KoNumericNoise, PerlinIsBoundedContinuousAndTotal)
{
    double prev = koNumeric::perlinNoise_1D(-50);
    for (double x = -50; x < 50; x += 0.001) {
        const double v = koNumeric::perlinNoise_1D(x);
        EXPECT_LE(std::abs(v), 1.875) << hexf(x);
        EXPECT_LT(std::abs(v - prev), 0.05) << hexf(x);
        prev = v;
    }
    EXPECT_TRUE(std::isnan(koNumeric::perlinNoise_1D(qQNaN())));
    EXPECT_TRUE(std::isnan(koNumeric::perlinNoise_1D(qInf())));
    EXPECT_TRUE(std::isfinite(koNumeric::perlinNoise_1D(-1e300)));
}
