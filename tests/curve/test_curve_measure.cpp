// Edge cases of length, arc-length inversion, times of points and bounds.

#include "path/pathtesthelpers.h"

#include "geometry/kotolerance.h"

#include <QtCore/QtNumeric>

#include <cmath>

namespace {
// y = k x^2 over x = t in [0, 1], and its arc length up to x.
QVector<double> parabola(double k)
{
    return {0, 0, 1.0 / 3, 0, 2.0 / 3, k / 3, 1, k};
}
double parabolaLength(double k, double x)
{
    const double u = 2 * k * x;
    return (u * std::sqrt(1 + u * u) + std::asinh(u)) / (4 * k);
}
// Handles at the thirds: time proportional to distance.
const QVector<double> Line{0, 0, 10.0 / 3, 0, 20.0 / 3, 0, 10, 0};
constexpr double NoTime = koTolerance::NoTime;
} // namespace

// At most 16 Gauss nodes: the sharper the bend (the nearer the speed's
// complex zeros t = +-i / 2k), the fewer digits; tolerances are about ten
// times the errors seen.
TEST(koCurveLength, ClosedFormsAndInversion)
{
    for (const auto &c : {std::make_pair(0.25, 1e-12), {1, 1e-9}, {4, 1e-6}, {16, 1e-3}}) {
        for (double t : {0.01, 0.1, 0.25, 0.5, 1.0}) {
            const double exact = parabolaLength(c.first, t);
            EXPECT_NEAR(koCurve::getLength(parabola(c.first), 0, t), exact, c.second * exact)
                    << c.first << " " << t;
        }
    }
    // Straight curves are measured exactly, with handles or not.
    const QVector<double> inward{0, 0, 1, 0, 4, 0, 9, 0};
    EXPECT_DOUBLE_EQ(koCurve::getLength(inward, 0.3, 0.8),
                     koCurve::getPoint(inward, 0.8).x - koCurve::getPoint(inward, 0.3).x);
    EXPECT_TRUE(koCurve::getIterations(0, 1) == 16 && koCurve::getIterations(0, 0.01) == 2);
    EXPECT_TRUE(koCurve::getIterations(0.2, 0.1) == 4 && koCurve::getIterations(0, qQNaN()) == 16);

    const QVector<double> v = parabola(1);
    const double length = koCurve::getLength(v);
    EXPECT_TRUE(koCurve::getTimeAt(v, 0) == 0 && koCurve::getTimeAt(v, 0, 0.3) == 0.3);
    EXPECT_TRUE(koCurve::getTimeAt(v, length - 5e-13) == 1 && koCurve::getTimeAt(v, -length) == 0);
    EXPECT_EQ(koCurve::getTimeAt(v, length + 2e-12), NoTime);
    EXPECT_NEAR(koCurve::getTimeAt(v, -koCurve::getLength(v, 0.4, 1)), 0.4, 1e-12);
    EXPECT_NEAR(koCurve::getTimeAt(v, -koCurve::getLength(v, 0.2, 0.6), 0.6), 0.2, 1e-12);
    EXPECT_TRUE(koCurve::getTimeAt(v, qQNaN()) == NoTime && koCurve::getTimeAt(v, 1, 2) == NoTime);
    koRef<koCurve> line(new koCurve(Line, nullptr));
    EXPECT_TRUE(line->getLength() == 10 && line->length == 10);
    EXPECT_TRUE(std::abs(line->getPointAt(-2.5).x - 7.5) < 1e-12 && line->getPointAt(11).isNaN());
}

TEST(koCurveTimes, TimeOfNearestAndRoots)
{
    EXPECT_NEAR(koCurve::getTimeOf(Line, koPoint(5, 1e-7)), 0.5, 1e-15);
    EXPECT_EQ(koCurve::getTimeOf(Line, koPoint(5, 1e-6)), NoTime);
    EXPECT_TRUE(koCurve::getTimeOf(Line, {-1.5e-7, 0}) == 0
                && koCurve::getTimeOf(Line, {10 + 1.5e-7, 0}) == 1);
    EXPECT_EQ(koCurve::getTimeOf(Line, koPoint(-1e-6, 0)), NoTime);
    const QVector<double> v = parabola(1);
    const koPoint normal = koCurve::getNormal(v, 0.37),
                  off = koCurve::getPoint(v, 0.37) + normal * 1e-7;
    EXPECT_NEAR(koCurve::getTimeOf(v, off), 0.37, 1e-7);
    EXPECT_EQ(koCurve::getTimeOf(v, off + normal * 9e-7), NoTime);

    EXPECT_EQ(koCurve::getNearestTime(QVector<double>(8, 1), koPoint(5, 5)), 0);
    EXPECT_TRUE(koCurve::getNearestTime(Line, {12, 3}) == 1
                && koCurve::getNearestTime(Line, {-2, 3}) == 0);
    EXPECT_NEAR(koCurve::getNearestTime(Line, koPoint(4, -3)), 0.4, 1e-12);

    QVector<double> roots; // a constant coordinate equal to the value: -1
    EXPECT_TRUE(koCurve::solveCubic(Line, 1, 0, roots, 0, 1) == -1
                && koCurve::solveCubic(Line, 1.7, 1, roots, 0, 1) == 0);
    EXPECT_EQ(koCurve::solveCubic(Line, 0, 2.5, roots, 0, 1), 1);
    EXPECT_NEAR(roots[0], 0.25, 1e-15);
}

TEST(koCurveBounds, PaddingAndBadValues)
{
    // Monotone: both ends padded. With a turn inside, the far end
    // deliberately carries no padding while the extreme does.
    QVector<double> roots;
    double min[2] = {0, 0}, max[2] = {0, 0};
    koCurve::addBounds(0, -2, -4, -5, 1, 2, min, max, roots);
    EXPECT_TRUE(min[1] == -6 && max[1] == 1);
    min[1] = max[1] = 0;
    koCurve::addBounds(0, 10, 10, -5, 1, 2, min, max, roots);
    const double t = std::sqrt(6.0) - 2;
    EXPECT_EQ(min[1], -5);
    EXPECT_NEAR(max[1], 30 * (1 - t) * t - 5 * t * t * t + 1, 1e-12);
    koCurve::addBounds(0, 0.5, -0.5, 1, 0, 2, min, max, roots); // within [-1, 1]: unchanged
    EXPECT_TRUE(min[0] == 0 && max[0] == 0);

    // Short, NaN and infinite values give NaN, -100 or nothing, and return.
    for (const QVector<double> &bad :
         {QVector<double>{1, 2}, QVector<double>(8, qQNaN()), {0, 0, qInf(), 0, 1, 1, 2, 2}}) {
        EXPECT_FALSE(std::isfinite(koCurve::getLength(bad)));
        EXPECT_TRUE(koCurve::getTimeAt(bad, 1) == NoTime
                    && koCurve::getTimeOf(bad, {1, 1}) == NoTime);
        EXPECT_EQ(koCurve::getNearestTime(bad, koPoint(1, 1)), NoTime);
        EXPECT_TRUE(koCurve::getPart(bad, 0.2, 0.4).size() == 8
                    && koCurve::subdivide(bad, 0.5).size() == 2);
        koCurve::getBounds(bad);
    }
    EXPECT_TRUE(std::isnan(koCurve::getBounds(QVector<double>{1}).width));
}
