#ifndef KOTOLERANCE_H
#define KOTOLERANCE_H

// The tolerances shared by the whole library. They are absolute (never scaled
// by coordinate size): the library works in the units of the host's drawing,
// where a unit is typically a pixel or a point.
namespace koTolerance {

// Numeric zero: zero-length handles, linear tests, arc-length match,
// end-point meetings, root-finder tolerance, area of dropped contours.
constexpr double Epsilon = 1e-12;

// Curve-time epsilon: a time below CurveTimeMin counts as the start of the
// curve, a time above CurveTimeMax as its end.
constexpr double CurveTimeMin = 4e-7;
constexpr double CurveTimeMax = 0.9999996; // 1 - CurveTimeMin

// Geometric epsilon: straightness distances, point matches, location
// equality, bounds pre-test margin, overlap checks, on-curve winding tests.
constexpr double Geometric = 2e-7;

// Tangent component for horizontal/vertical tests; relative tolerance of the
// collinear/orthogonal vector tests.
constexpr double Trigonometric = 1e-7;

// Fat-line clipping: convergence width, the clip ratio above which the less
// converged curve is halved, the recursion depth and total call budget.
constexpr double ClipConvergence = 1e-9;
constexpr double ClipRatio = 0.8;
constexpr int ClipMaxDepth = 48;
constexpr int ClipMaxCalls = 4096;

// Two RVPath points closer than this on both axes are the same point.
constexpr double RVNearness = 1.0;

// The curve time meaning "no time": returned when no time exists and passed
// when no start time is given.
constexpr double NoTime = -100;

} // namespace koTolerance

#endif // KOTOLERANCE_H
