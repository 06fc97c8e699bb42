#include "geometry/konumeric.h"
#include "noise/noise.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

// The hash written independently: 64-bit arithmetic masked back to 32 bits.
float hashOracle(int64_t n)
{
    const uint64_t k = ((uint64_t(n) << 13) ^ uint64_t(n)) & 0xffffffffu;
    const uint64_t v = (k * ((k * k * 15731 + 789221) & 0xffffffffu) + 1376312589) & 0x7fffffffu;
    return 1.0f - float(v) * 9.313226e-10f;
}

float smooth2Oracle(float x, float y)
{
    auto h = [](float px, float py) { return hashOracle(int(px) + int64_t(int(py)) * 57); };
    return (h(x - 1, y - 1) + h(x + 1, y - 1) + h(x - 1, y + 1) + h(x + 1, y + 1)) / 16
            + (h(x - 1, y) + h(x + 1, y) + h(x, y - 1) + h(x, y + 1)) / 8 + h(x, y) / 4;
}

float cosineOracle(float a, float b, float t)
{
    const float f = (1 - std::cos(t * 3.1415927f)) / 2;
    return a * (1 - f) + b * f;
}

} // namespace

TEST(Noise, HashMatchesIntegerFormulaAndKoNumeric)
{
    const int big = std::numeric_limits<int>::max(), small = std::numeric_limits<int>::min();
    for (int x : {0, 1, -1, 57, -77777, 123456789, big, small}) {
        EXPECT_EQ(Noise::intNoise_1D(x), hashOracle(x)) << x;
        // koNumeric keeps the same hash in double: equal up to float rounding.
        EXPECT_NEAR(Noise::intNoise_1D(x), koNumeric::intNoise_1D(x), 1.2e-7) << x;
        for (int y : {0, -9, big})
            EXPECT_EQ(Noise::intNoise_2D(x, y), hashOracle(x + int64_t(y) * 57)) << x << " " << y;
    }
    for (int x = -5000; x < 5000; ++x) {
        const float v = Noise::intNoise_1D(x * 7919);
        ASSERT_TRUE(v > -1 && v <= 1) << x;
    }
}

TEST(Noise, SmoothingInterpolationAndOctaves)
{
    EXPECT_EQ(Noise::smoothNoise_1D(2.9f), Noise::intNoise_1D(2)); // no smoothing
    EXPECT_EQ(Noise::smoothNoise_1D(NAN), Noise::intNoise_1D(0));  // total on NaN
    EXPECT_FLOAT_EQ(Noise::cosineInterpolate_2D(2, 6, 0.5f), 4);
    // P = (d - c) - (a - b) = 5, Q = (a - b) - P = -6, R = c - a = 3, at t = 1/2.
    EXPECT_FLOAT_EQ(Noise::cubicInterpolate_1D(1, 2, 4, 8, 0.5f),
                    5 / 8.0f - 6 / 4.0f + 3 / 2.0f + 2);
    for (float x : {0.0f, 1.5f, -3.25f, 17.75f}) {
        for (float y : {0.0f, 2.5f, -7.5f}) {
            EXPECT_FLOAT_EQ(Noise::smoothNoise_2D(x, y), smooth2Oracle(x, y)) << x << " " << y;
            // Rounded to the nearest lattice point: fractions in [-0.5, 0.5).
            const float i = std::floor(x + 0.5f), j = std::floor(y + 0.5f);
            const float top = cosineOracle(smooth2Oracle(i, j), smooth2Oracle(i + 1, j), x - i);
            const float bottom =
                    cosineOracle(smooth2Oracle(i, j + 1), smooth2Oracle(i + 1, j + 1), x - i);
            EXPECT_FLOAT_EQ(Noise::interpolateNoise_2D(x, y), cosineOracle(top, bottom, y - j));
        }
        const int i = int(x);
        EXPECT_FLOAT_EQ(Noise::interpolateNoise_1D(x),
                        cosineOracle(hashOracle(i), hashOracle(i + 1), x - i));
        float sum1 = 0, sum2 = 0, amplitude = 1;
        for (int k = 0; k < 4; ++k, amplitude *= 0.1f) {
            sum1 += amplitude * Noise::interpolateNoise_1D(x * (1 << k));
            sum2 += amplitude * Noise::interpolateNoise_2D(x * (1 << k), -2 * x * (1 << k));
        }
        EXPECT_FLOAT_EQ(Noise::perlinNoise_1D(x), sum1) << x;
        EXPECT_FLOAT_EQ(Noise::perlinNoise_2D(x, -2 * x), sum2) << x;
    }
}

TEST(Noise, PerlinImageLine)
{
    QImage image(300, 250, QImage::Format_ARGB32);
    image.fill(qRgba(200, 150, 100, 77));
    const QImage out = Noise::perlinNoise(image);
    for (int x = 0; x < out.width(); ++x) {
        int black = 0, first = -1;
        for (int y = 0; y < out.height(); ++y) {
            ASSERT_EQ(qAlpha(out.pixel(x, y)), 77) << x << " " << y;
            if (out.pixel(x, y) == qRgba(0, 0, 0, 77) && black++ == 0)
                first = y;
        }
        ASSERT_EQ(black, x == 0 ? 0 : 2) << x;
        if (x > 0) {
            EXPECT_EQ(first, int(std::floor(Noise::perlinNoise_1D(float(x * 0.05)) * 5)) + 200);
        }
    }
    // Width 1, short, null and 8-bit images: unchanged, no crash.
    for (QImage other :
         {QImage(1, 250, QImage::Format_ARGB32), QImage(50, 10, QImage::Format_RGB32), QImage(),
          QImage(50, 250, QImage::Format_Grayscale8)}) {
        other.fill(Qt::white);
        EXPECT_EQ(Noise::perlinNoise(other), other);
    }
}
