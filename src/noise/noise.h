#ifndef NOISE_H
#define NOISE_H

#include "rvgraphics_global.h"

#include <QtGui/QImage>

/*!
    \class Noise
    Value noise in one and two dimensions ("Perlin noise" in the common
    loose sense): a 32-bit integer hash per lattice point, cosine
    interpolation between lattice points and a sum of four octaves
    (frequency 2^i, amplitude 0.1^i). All noise arithmetic is in single
    precision and the hash wraps in 32 bits, so values are reproducible
    bit for bit across platforms with IEEE floats.

    Kept behaviours: smoothNoise_1D() does no smoothing (it is the hash at
    the truncated argument); interpolateNoise_1D() blends raw hashes;
    interpolateNoise_2D() rounds to the nearest lattice point, so its
    fraction runs over [-0.5, 0.5).

    Float arguments are truncated to lattice indices with saturation to
    the int range (NaN gives 0), so every input is defined.

    The class has no state; every function is static.
*/
class RVGRAPHICS_EXPORT Noise
{
public:
    Noise() = default;
    ~Noise() = default;

    //! Hash of x in (-1, 1].
    static float intNoise_1D(int x);
    //! Hash of x + 57 y in (-1, 1].
    static float intNoise_2D(int x, int y);
    //! The hash at int(x) (truncation), no neighbour smoothing.
    static float smoothNoise_1D(float x);
    //! Centre 1/4, the four axis neighbours 1/8, the four diagonal ones 1/16.
    static float smoothNoise_2D(float x, float y);
    //! a + (b - a) * (1 - cos(pi t)) / 2, in float.
    static float cosineInterpolate_1D(float a, float b, float t);
    static float cosineInterpolate_2D(float a, float b, float t);
    //! Cubic through four successive samples a, b, c, d; b at t = 0.
    static float cubicInterpolate_1D(float a, float b, float c, float d, float t);
    static float interpolateNoise_1D(float x);
    static float interpolateNoise_2D(float x, float y);
    static float perlinNoise_1D(float x);
    static float perlinNoise_2D(float x, float y);
    /*!
        Draws a wavering two-pixel black line around row 200 into \a image and
        returns it: for each column x from 1, row floor(5 perlinNoise_1D(0.05
        x)) + 200 and the row below get their colour bytes zeroed, alpha kept.
        Column 0 is skipped. Any 32-bit format is written (black with the
        pixel's own alpha, whatever the byte order); a null image or one of
        another depth is returned unchanged, and rows outside the image are
        skipped, so short images are only partly drawn and width 1 draws
        nothing.
    */
    static QImage perlinNoise(QImage image);
};

#endif // NOISE_H
