#include "noise/noise.h"

#include <QtGui/QColor>

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

// pi as the float the interpolation works with.
constexpr float PiF = 3.1415927f;
// 2^-30: maps the 31-bit hash onto [0, 2).
constexpr float HashScale = 9.313226e-10f;
static_assert(double(HashScale) == 1.0 / 1073741824.0, "hash scale must be 2^-30");

// Octave count of the Perlin sums; frequency 2^i, amplitude 0.1^i.
constexpr int Octaves = 4;

// The noise line of perlinNoise(): row offset, vertical scale and the
// column-to-noise step.
constexpr int LineRow = 200;
constexpr float LineScale = 5.0f;
constexpr double ColumnStep = 0.05;

// Hash of a lattice index in wrapping 32-bit arithmetic (unsigned, so that
// the wrap is defined), mapped to (-1, 1] in float.
float hash(uint32_t n)
{
    n = (n << 13) ^ n;
    const uint32_t v = (n * (n * n * 15731u + 789221u) + 1376312589u) & 0x7fffffffu;
    return 1.0f - float(v) * HashScale;
}

// float to int by truncation toward zero, saturated to the int range; NaN
// gives 0 (a plain conversion of such values is undefined).
int truncToInt(float x)
{
    if (!(x == x))
        return 0;
    if (x >= 2147483648.0f)
        return std::numeric_limits<int>::max();
    if (x <= -2147483648.0f)
        return std::numeric_limits<int>::min();
    return int(x);
}

// The neighbour index i + 1 with 32-bit wrap.
int next(int i)
{
    return int(uint32_t(i) + 1u);
}

// 0.1^i as a float: 0.1f raised in double and rounded once.
float amplitude(int octave)
{
    return float(std::pow(double(0.1f), octave));
}

} // namespace

float Noise::intNoise_1D(int x)
{
    return hash(uint32_t(x));
}

float Noise::intNoise_2D(int x, int y)
{
    return hash(uint32_t(x) + uint32_t(y) * 57u);
}

float Noise::smoothNoise_1D(float x)
{
    return intNoise_1D(truncToInt(x));
}

float Noise::smoothNoise_2D(float x, float y)
{
    const int i = truncToInt(x);
    const int j = truncToInt(y);
    const int il = truncToInt(x - 1);
    const int ir = truncToInt(x + 1);
    const int jt = truncToInt(y - 1);
    const int jb = truncToInt(y + 1);
    const float corners =
            (intNoise_2D(il, jt) + intNoise_2D(ir, jt) + intNoise_2D(il, jb) + intNoise_2D(ir, jb))
            * 0.0625f;
    const float sides =
            (intNoise_2D(il, j) + intNoise_2D(ir, j) + intNoise_2D(i, jt) + intNoise_2D(i, jb))
            * 0.125f;
    const float centre = intNoise_2D(i, j) * 0.25f;
    return corners + sides + centre;
}

float Noise::cosineInterpolate_1D(float a, float b, float t)
{
    const float f = (1.0f - std::cos(t * PiF)) * 0.5f;
    return a * (1.0f - f) + b * f;
}

float Noise::cosineInterpolate_2D(float a, float b, float t)
{
    return cosineInterpolate_1D(a, b, t);
}

float Noise::cubicInterpolate_1D(float a, float b, float c, float d, float t)
{
    const float p = (d - c) - (a - b);
    const float q = (a - b) - p;
    const float r = c - a;
    return p * t * t * t + q * t * t + r * t + b;
}

float Noise::interpolateNoise_1D(float x)
{
    const int i = truncToInt(x);
    const float fraction = x - float(i);
    return cosineInterpolate_1D(intNoise_1D(i), intNoise_1D(next(i)), fraction);
}

float Noise::interpolateNoise_2D(float x, float y)
{
    // Rounded to the nearest lattice point, so the fractions run over
    // [-0.5, 0.5).
    const float i = std::floor(x + 0.5f);
    const float j = std::floor(y + 0.5f);
    const float s00 = smoothNoise_2D(i, j);
    const float s10 = smoothNoise_2D(i + 1, j);
    const float s01 = smoothNoise_2D(i, j + 1);
    const float s11 = smoothNoise_2D(i + 1, j + 1);
    const float top = cosineInterpolate_1D(s00, s10, x - i);
    const float bottom = cosineInterpolate_1D(s01, s11, x - i);
    return cosineInterpolate_1D(top, bottom, y - j);
}

float Noise::perlinNoise_1D(float x)
{
    float total = 0;
    for (int octave = 0; octave < Octaves; ++octave) {
        const float frequency = float(1 << octave);
        total += amplitude(octave) * interpolateNoise_1D(x * frequency);
    }
    return total;
}

float Noise::perlinNoise_2D(float x, float y)
{
    float total = 0;
    for (int octave = 0; octave < Octaves; ++octave) {
        const float frequency = float(1 << octave);
        total += amplitude(octave) * interpolateNoise_2D(x * frequency, y * frequency);
    }
    return total;
}

QImage Noise::perlinNoise(QImage image)
{
    if (image.isNull() || image.depth() != 32)
        return image;
    const int width = image.width();
    const int height = image.height();
    for (int x = 1; x < width; ++x) {
        const float v = perlinNoise_1D(float(x * ColumnStep));
        const int row = truncToInt(std::floor(v * LineScale)) + LineRow;
        for (int y = row; y <= row + 1; ++y) {
            if (y < 0 || y >= height)
                continue;
            // Black with the pixel's own alpha, whatever the 32-bit layout.
            QColor colour = image.pixelColor(x, y);
            colour.setRgb(0, 0, 0, colour.alpha());
            image.setPixelColor(x, y, colour);
        }
    }
    return image;
}
