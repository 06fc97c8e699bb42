#include "geometry/konumeric.h"

#include "geometry/kogausslegendre_p.h"
#include "geometry/kotolerance.h"

#include <QtCore/QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

// Below this a discriminant is within round-off of zero (about the unit
// round-off of a double).
constexpr double MachineEpsilon = 1.12e-16;

// Coefficients whose largest magnitude lies outside this range are rescaled
// by a power of two before solving.
constexpr double MinCoefficientScale = 1e-8;
constexpr double MaxCoefficientScale = 1e8;

// Veltkamp splitting factor, 2^27 + 1: splits a double into two halves whose
// products are exact.
constexpr double SplitFactor = 134217729;

// Kahan's factor for the initial guess of a cubic's outermost root.
constexpr double CubicRootGuess = 1.324717957244746;

// Newton polishing of the cubic root moves monotonically and converges in a
// few dozen steps on any rescaled cubic; this only bounds the loop.
constexpr int MaxCubicNewtonSteps = 1000;

// 2^-30, written as the float constant that denotes it exactly.
constexpr float NoiseScale = 9.313226e-10f;
static_assert(double(NoiseScale) == 1.0 / 1073741824.0, "noise scale must be 2^-30");

constexpr double Pi = 3.141592653589793;

// 2^-k for the rescaling k = round(log2(s)), kept finite for subnormal scales.
double powerOfTwoScale(double s)
{
    const int k = qMax(qRound(koNumeric::log2(s)), -1023);
    return std::ldexp(1.0, -k);
}

bool needsRescaling(double s)
{
    return s != 0 && qIsFinite(s) && (s < MinCoefficientScale || s > MaxCoefficientScale);
}

// The solvers' interval rule: min == max == 0 switches the test off.
bool acceptRoot(double r, double min, double max)
{
    if (!qIsFinite(r))
        return false;
    if (min == 0 && max == 0)
        return true;
    return min - koTolerance::Epsilon < r && r < max + koTolerance::Epsilon;
}

double storedRoot(double r, double min, double max)
{
    if (min == 0 && max == 0)
        return r;
    return koNumeric::clamp(r, min, max);
}

void writeRoot(QVector<double> &roots, int index, double value)
{
    if (index < roots.size())
        roots[index] = value;
    else
        roots.append(value);
}

// Hash of a lattice index in wrapping 32-bit arithmetic, mapped to (-1, 1].
double hashNoise(uint32_t x)
{
    const uint32_t n = (x << 13) ^ x;
    const uint32_t v = (n * (n * n * 15731u + 789221u) + 1376312589u) & 0x7fffffffu;
    return 1 - double(v) * double(NoiseScale);
}

double smoothHashNoise(uint32_t x)
{
    return hashNoise(x) / 2 + hashNoise(x - 1) / 4 + hashNoise(x + 1) / 4;
}

} // namespace

const double koNumeric::abscissas[15][8] = {
        // n = 2
        {0.5773502691896257, 0, 0, 0, 0, 0, 0, 0},
        // n = 3
        {0, 0.7745966692414834, 0, 0, 0, 0, 0, 0},
        // n = 4
        {0.33998104358485626, 0.8611363115940526, 0, 0, 0, 0, 0, 0},
        // n = 5
        {0, 0.5384693101056831, 0.906179845938664, 0, 0, 0, 0, 0},
        // n = 6
        {0.2386191860831969, 0.6612093864662645, 0.932469514203152, 0, 0, 0, 0, 0},
        // n = 7
        {0, 0.4058451513773972, 0.7415311855993945, 0.9491079123427585, 0, 0, 0, 0},
        // n = 8
        {0.1834346424956498, 0.525532409916329, 0.7966664774136267, 0.9602898564975363, 0, 0, 0, 0},
        // n = 9
        {0, 0.3242534234038089, 0.6133714327005904, 0.8360311073266358, 0.9681602395076261, 0, 0,
         0},
        // n = 10
        {0.14887433898163122, 0.4333953941292472, 0.6794095682990244, 0.8650633666889845,
         0.9739065285171717, 0, 0, 0},
        // n = 11
        {0, 0.26954315595234496, 0.5190961292068118, 0.7301520055740494, 0.8870625997680953,
         0.978228658146057, 0, 0},
        // n = 12
        {0.1252334085114689, 0.3678314989981802, 0.5873179542866175, 0.7699026741943047,
         0.9041172563704749, 0.9815606342467192, 0, 0},
        // n = 13
        {0, 0.2304583159551348, 0.44849275103644687, 0.6423493394403402, 0.8015780907333099,
         0.9175983992229779, 0.9841830547185881, 0},
        // n = 14
        {0.10805494870734367, 0.31911236892788974, 0.5152486363581541, 0.6872929048116855,
         0.827201315069765, 0.9284348836635735, 0.9862838086968123, 0},
        // n = 15
        {0, 0.20119409399743451, 0.3941513470775634, 0.5709721726085388, 0.7244177313601701,
         0.8482065834104272, 0.937273392400706, 0.9879925180204854},
        // n = 16
        {0.09501250983763744, 0.2816035507792589, 0.45801677765722737, 0.6178762444026438,
         0.755404408355003, 0.8656312023878318, 0.9445750230732326, 0.9894009349916499},
};
const double koNumeric::weights[15][8] = {
        // n = 2
        {1, 0, 0, 0, 0, 0, 0, 0},
        // n = 3
        {0.8888888888888888, 0.5555555555555556, 0, 0, 0, 0, 0, 0},
        // n = 4
        {0.6521451548625461, 0.34785484513745385, 0, 0, 0, 0, 0, 0},
        // n = 5
        {0.5688888888888889, 0.47862867049936647, 0.23692688505618908, 0, 0, 0, 0, 0},
        // n = 6
        {0.46791393457269104, 0.3607615730481386, 0.17132449237917036, 0, 0, 0, 0, 0},
        // n = 7
        {0.4179591836734694, 0.3818300505051189, 0.27970539148927664, 0.1294849661688697, 0, 0, 0,
         0},
        // n = 8
        {0.362683783378362, 0.31370664587788727, 0.22238103445337448, 0.10122853629037626, 0, 0, 0,
         0},
        // n = 9
        {0.3302393550012598, 0.31234707704000286, 0.26061069640293544, 0.1806481606948574,
         0.08127438836157441, 0, 0, 0},
        // n = 10
        {0.29552422471475287, 0.26926671930999635, 0.21908636251598204, 0.1494513491505806,
         0.06667134430868814, 0, 0, 0},
        // n = 11
        {0.2729250867779006, 0.26280454451024665, 0.23319376459199048, 0.18629021092773426,
         0.1255803694649046, 0.05566856711617366, 0, 0},
        // n = 12
        {0.24914704581340277, 0.2334925365383548, 0.20316742672306592, 0.16007832854334622,
         0.10693932599531843, 0.04717533638651183, 0, 0},
        // n = 13
        {0.2325515532308739, 0.22628318026289723, 0.2078160475368885, 0.17814598076194574,
         0.13887351021978725, 0.09212149983772845, 0.04048400476531588, 0},
        // n = 14
        {0.2152638534631578, 0.2051984637212956, 0.18553839747793782, 0.15720316715819355,
         0.12151857068790319, 0.08015808715976021, 0.03511946033175186, 0},
        // n = 15
        {0.2025782419255613, 0.19843148532711158, 0.1861610000155622, 0.16626920581699392,
         0.13957067792615432, 0.10715922046717194, 0.07036604748810812, 0.03075324199611727},
        // n = 16
        {0.1894506104550685, 0.18260341504492358, 0.16915651939500254, 0.14959598881657674,
         0.12462897125553388, 0.09515851168249279, 0.062253523938647894, 0.027152459411754096},
};

double koNumeric::clamp(double value, double min, double max)
{
    if (min > value)
        return min;
    if (value > max)
        return max;
    return value;
}

double koNumeric::log2(double x)
{
    return std::log(x) / std::log(2.0);
}

double koNumeric::getDiscriminant(double a, double b, double c)
{
    const double bb = b * b;
    const double ac = a * c;
    double D = bb - ac;
    const double E = bb + ac;
    if (std::abs(D) * 3 < E) {
        // The two products nearly cancel: add their rounding errors, which
        // the split halves give exactly.
        auto split = [](double v, double &hi, double &lo) {
            const double t = v * SplitFactor;
            hi = (v - t) + t;
            lo = v - hi;
        };
        double aHi, aLo, bHi, bLo, cHi, cLo;
        split(a, aHi, aLo);
        split(b, bHi, bLo);
        split(c, cHi, cLo);
        const double bError = bLo * bLo + 2 * bHi * bLo + (bHi * bHi - bb);
        const double acError = aLo * cLo + aHi * cLo + aLo * cHi + (aHi * cHi - ac);
        D = D + (bError - acError);
    }
    return D;
}

int koNumeric::solveQuadratic(double a, double b, double c, QVector<double> &roots, double min,
                              double max)
{
    double x1 = qQNaN();
    double x2 = qQNaN();
    if (std::abs(a) < koTolerance::Epsilon) {
        // Linear, or no equation at all.
        if (std::abs(b) < koTolerance::Epsilon)
            return std::abs(c) < koTolerance::Epsilon ? -1 : 0;
        x1 = -c / b;
    } else {
        b *= -0.5;
        double D = getDiscriminant(a, b, c);
        // A tiny discriminant may be all cancellation: bring the coefficients
        // near 1 by a power of two (exact) and compute it again.
        if (D != 0 && std::abs(D) < MachineEpsilon) {
            const double s = std::max({std::abs(a), std::abs(b), std::abs(c)});
            if (needsRescaling(s)) {
                const double m = powerOfTwoScale(s);
                if (m != 0) {
                    a *= m;
                    b *= m;
                    c *= m;
                    D = getDiscriminant(a, b, c);
                }
            }
        }
        if (D >= -MachineEpsilon) {
            double Q = D >= 0 ? std::sqrt(D) : 0;
            if (b < 0)
                Q = -Q;
            // Adding terms of equal sign avoids cancellation; the second root
            // comes from the product of the roots, c / a.
            const double R = b + Q;
            if (R == 0) {
                x1 = c / a;
                x2 = -c / a;
            } else {
                x1 = R / a;
                x2 = c / R;
            }
        }
    }

    int count = 0;
    double first = qQNaN();
    if (acceptRoot(x1, min, max)) {
        first = storedRoot(x1, min, max);
        writeRoot(roots, count++, first);
    }
    if (x2 != x1 && acceptRoot(x2, min, max)) {
        const double second = storedRoot(x2, min, max);
        if (count == 0 || second != first)
            writeRoot(roots, count++, second);
    }
    return count;
}

int koNumeric::solveCubic(double a, double b, double c, double d, QVector<double> &roots,
                          double min, double max)
{
    const double s = std::max({std::abs(a), std::abs(b), std::abs(c), std::abs(d)});
    if (needsRescaling(s)) {
        const double m = powerOfTwoScale(s);
        if (m != 0) {
            a *= m;
            b *= m;
            c *= m;
            d *= m;
        }
    }

    double x;
    double b1;
    double c2;
    if (std::abs(a) < koTolerance::Epsilon) {
        // Really a quadratic; an infinite x adds no third root.
        a = b;
        b1 = c;
        c2 = d;
        x = qInf();
    } else if (std::abs(d) < koTolerance::Epsilon) {
        // 0 is a root; the rest solve a t^2 + b t + c.
        b1 = b;
        c2 = c;
        x = 0;
    } else {
        // Find one real root by Newton's method from Kahan's starting point
        // beyond the outermost root, then deflate to a quadratic. The
        // evaluation at x gives q(x), q'(x) and the deflated coefficients
        // b1, c2 together.
        x = -(b / a) / 3;
        b1 = a * x + b;
        c2 = b1 * x + c;
        double qd = (a * x + b1) * x + c2;
        double q = c2 * x + d;
        double t = q / a;
        double r = std::pow(std::abs(t), 0.3333333333333333);
        const double sign = t < 0 ? -1 : 1;
        t = -qd / a;
        if (t > 0)
            r = CubicRootGuess * std::max(r, std::sqrt(t));
        double x0 = x - sign * r;
        if (x0 != x) {
            // Dividing the step by 1 + 2^-52 keeps the iterate from crossing
            // the root, so the sequence moves one way until it stops.
            int steps = 0;
            do {
                x = x0;
                b1 = a * x + b;
                c2 = b1 * x + c;
                qd = (a * x + b1) * x + c2;
                q = c2 * x + d;
                x0 = qd == 0 ? x : x - q / qd / 1.0000000000000002;
            } while (sign * x0 > sign * x && ++steps < MaxCubicNewtonSteps);
            // Where it is better conditioned, deflate through d / x instead.
            if (std::abs(a) * x * x > std::abs(d / x)) {
                c2 = -d / x;
                b1 = (c2 - c) / x;
            }
        }
    }

    int count = solveQuadratic(a, b1, c2, roots, min, max);
    if (count >= 0 && acceptRoot(x, min, max)) {
        const double value = storedRoot(x, min, max);
        bool isNew = true;
        for (int i = 0; i < count; ++i)
            isNew = isNew && roots.at(i) != value;
        if (isNew)
            writeRoot(roots, count++, value);
    }
    return count;
}

double koNumeric::findRoot(const std::function<double(double)> &f,
                           const std::function<double(double)> &df, double x, double a, double b,
                           int n, double tolerance)
{
    const double lower = a;
    const double upper = b;
    if (n < 1)
        return clamp(x, lower, upper);
    double nx = x;
    for (int i = 0; i < n; ++i) {
        const double fx = f(x);
        const double dx = fx / df(x);
        nx = x - dx;
        if (std::abs(dx) < tolerance)
            return clamp(nx, lower, upper);
        // Keep a bracket, taking f as increasing through the root; a Newton
        // step leaving it (or going nowhere finite) is replaced by bisection.
        if (fx > 0) {
            b = x;
            if (nx <= a || !qIsFinite(nx))
                nx = (a + x) * 0.5;
        } else {
            a = x;
            if (nx >= b || !qIsFinite(nx))
                nx = (b + x) * 0.5;
        }
        x = nx;
    }
    return clamp(nx, lower, upper);
}

double koNumeric::integrate(const std::function<double(double)> &f, double a, double b, int n)
{
    return koQuadrature::gaussLegendre(f, a, b, n);
}

koPoint koNumeric::ellipsePoint(const koRect &rect, double angle)
{
    const double radians = angle * Pi / 180;
    const double rx = rect.width * 0.5;
    const double ry = rect.height * 0.5;
    return koPoint(rect.x + rx + rx * std::cos(radians), rect.y + ry - ry * std::sin(radians));
}

koPoint koNumeric::ellipsePoint(const QRectF &rect, double angle)
{
    return ellipsePoint(koRect(rect.x(), rect.y(), rect.width(), rect.height()), angle);
}

double koNumeric::intNoise_1D(int x)
{
    return hashNoise(uint32_t(x));
}

double koNumeric::smoothNoise_1D(int x)
{
    return smoothHashNoise(uint32_t(x));
}

double koNumeric::cosineInterpolate_1D(double a, double b, double x)
{
    const double f = (1 - std::cos(x * Pi)) * 0.5;
    return a * (1 - f) + b * f;
}

double koNumeric::cubicInterpolate_1D(double v0, double v1, double v2, double v3, double x)
{
    // Catmull-Rom: through v1 and v2 with the slopes (v2 - v0) / 2 and
    // (v3 - v1) / 2.
    return 0.5
            * (2 * v1 + (v2 - v0) * x + (2 * v0 - 5 * v1 + 4 * v2 - v3) * x * x
               + (3 * (v1 - v2) + v3 - v0) * x * x * x);
}

double koNumeric::interpolateNoise_1D(double x)
{
    if (!qIsFinite(x))
        return qQNaN();
    const double cell = std::floor(x);
    // The lattice repeats every 2^32 cells, the period of the 32-bit hash.
    const uint32_t i = uint32_t(int64_t(std::fmod(cell, 4294967296.0)));
    return cosineInterpolate_1D(smoothHashNoise(i), smoothHashNoise(i + 1), x - cell);
}

double koNumeric::perlinNoise_1D(double x)
{
    double sum = 0;
    double frequency = 1;
    double amplitude = 1;
    for (int i = 0; i < 4; ++i) {
        sum += amplitude * interpolateNoise_1D(x * frequency);
        frequency *= 2;
        amplitude *= 0.5;
    }
    return sum;
}
