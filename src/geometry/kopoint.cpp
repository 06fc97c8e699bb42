#include "geometry/kopoint.h"

#include "geometry/komatrix.h"
#include "geometry/konumeric.h"
#include "geometry/korect.h"
#include "geometry/kotolerance.h"

#include <QtCore/QtGlobal>

#include <cmath>

namespace {

// Points convert degrees with pi and 180 as two operands (the matrix uses a
// single pi/180 constant); the two forms differ in the last bit.
constexpr double Pi = 3.141592653589793;

inline double toRadians(double degrees)
{
    return degrees * Pi / 180;
}

inline double toDegrees(double radians)
{
    return radians * 180 / Pi;
}

inline bool isNearZero(double v)
{
    return v >= -koTolerance::Epsilon && v <= koTolerance::Epsilon;
}

// qRound() on the range where it is defined: halves go toward +infinity.
// Outside the 32-bit range the integer conversion would be undefined, so the
// same rule is applied without it; NaN stays NaN.
double roundHalfUp(double v)
{
    if (v >= 0 ? v + 0.5 < 2147483648.0 : v - 1 > -2147483649.0)
        return double(qRound(v));
    return std::floor(v + 0.5);
}

} // namespace

QPointF koPoint::toPt() const
{
    return QPointF(x, y);
}

QString koPoint::toString() const
{
    return QStringLiteral("x: %1, y: %2").arg(x).arg(y);
}

bool koPoint::equals(const koPoint &other, double tolerance) const
{
    return std::abs(other.x - x) < tolerance && std::abs(other.y - y) < tolerance;
}

bool koPoint::isClose(const koPoint &other, double tolerance) const
{
    return getDistance(other, false) <= tolerance;
}

double koPoint::getLength() const
{
    return std::sqrt(x * x + y * y);
}

void koPoint::setLength(double length)
{
    const double s = length / std::sqrt(x * x + y * y);
    x *= s;
    y *= s;
}

double koPoint::dot(const koPoint &other) const
{
    return x * other.x + y * other.y;
}

double koPoint::cross(const koPoint &other) const
{
    return x * other.y - y * other.x;
}

double koPoint::getAngleInRadians(const koPoint *other) const
{
    if (other) {
        const double d = getLength() * other->getLength();
        if (isNearZero(d))
            return qSNaN();
        return std::acos(koNumeric::clamp(dot(*other) / d, -1, 1));
    }
    if (isZero())
        return 0;
    return std::atan2(y, x);
}

double koPoint::getAngle(const koPoint *other) const
{
    return toDegrees(getAngleInRadians(other));
}

void koPoint::setAngleInRadians(double angle)
{
    if (isZero())
        return;
    const double length = std::sqrt(x * x + y * y);
    x = length * std::cos(angle);
    y = length * std::sin(angle);
}

void koPoint::setAngle(double angle)
{
    setAngleInRadians(toRadians(angle));
}

double koPoint::getDirectedAngle(const koPoint &other) const
{
    return toDegrees(std::atan2(cross(other), dot(other)));
}

double koPoint::getQuadrant() const
{
    if (x >= 0)
        return y >= 0 ? 1 : 4;
    return y >= 0 ? 2 : 3;
}

double koPoint::getDistance(const koPoint &other, bool squared) const
{
    const double dx = other.x - x;
    const double dy = other.y - y;
    const double d = dx * dx + dy * dy;
    return squared ? d : std::sqrt(d);
}

koPoint koPoint::normalize(double length) const
{
    const double current = std::sqrt(x * x + y * y);
    if (current == 0)
        return koPoint(x * 0, y * 0);
    return koPoint(x * length / current, y * length / current);
}

koPoint koPoint::add(const koPoint &other) const
{
    return koPoint(x + other.x, y + other.y);
}

koPoint koPoint::subtract(const koPoint &other) const
{
    return koPoint(x - other.x, y - other.y);
}

koPoint koPoint::multiply(double factor) const
{
    return koPoint(x * factor, y * factor);
}

koPoint koPoint::divide(double divisor) const
{
    return koPoint(x / divisor, y / divisor);
}

koPoint koPoint::negate() const
{
    return koPoint(-x, -y);
}

koPoint koPoint::rotate(double angle, const koPoint *center) const
{
    if (angle == 0)
        return *this;
    const double a = toRadians(angle);
    const double s = std::sin(a);
    const double c = std::cos(a);
    if (!center)
        return koPoint(x * c - y * s, x * s + y * c);
    const double dx = x - center->x;
    const double dy = y - center->y;
    return koPoint(center->x + dx * c - dy * s, center->y + dx * s + dy * c);
}

koPoint koPoint::transform(const koMatrix *matrix) const
{
    if (!matrix)
        return *this;
    return matrix->transformPoint(*this);
}

void koPoint::translated(double dx, double dy)
{
    x += dx;
    y += dy;
}

bool koPoint::isInside(const koRect &rect) const
{
    return rect.x < x && x < rect.x + rect.width && rect.y < y && y < rect.y + rect.height;
}

bool koPoint::isCollinear(double x1, double y1, double x2, double y2)
{
    return std::abs(x1 * y2 - y1 * x2)
            <= std::sqrt((x1 * x1 + y1 * y1) * (x2 * x2 + y2 * y2)) * koTolerance::Trigonometric;
}

bool koPoint::isCollinear(const koPoint &other) const
{
    return isCollinear(x, y, other.x, other.y);
}

bool koPoint::isOrthogonal(double x1, double y1, double x2, double y2)
{
    return std::abs(x1 * x2 + y1 * y2)
            <= std::sqrt((x1 * x1 + y1 * y1) * (x2 * x2 + y2 * y2)) * koTolerance::Trigonometric;
}

bool koPoint::isOrthogonal(const koPoint &other) const
{
    return isOrthogonal(x, y, other.x, other.y);
}

bool koPoint::isZero() const
{
    return isNearZero(x) && isNearZero(y);
}

bool koPoint::isNaN() const
{
    return qIsNaN(x) || qIsNaN(y);
}

void koPoint::project(const koPoint &other)
{
    if (other.isZero()) {
        x = other.x * 0;
        y = other.y * 0;
        return;
    }
    const double s = (x * other.x + y * other.y) / (other.y * other.y + other.x * other.x);
    x = other.x * s;
    y = other.y * s;
}

koPoint koPoint::min(const koPoint &a, const koPoint &b)
{
    return koPoint(b.x > a.x ? a.x : b.x, b.y > a.y ? a.y : b.y);
}

koPoint koPoint::max(const koPoint &a, const koPoint &b)
{
    return koPoint(b.x > a.x ? b.x : a.x, b.y > a.y ? b.y : a.y);
}

koPoint koPoint::random()
{
    // qrand() is deprecated since Qt 5.15; it is kept because it shares the
    // seed the host sets with qsrand(), so sequences stay reproducible.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    const double first = qrand();
    const double second = qrand();
    QT_WARNING_POP
    return koPoint(second, first);
}

void koPoint::round()
{
    x = roundHalfUp(x);
    y = roundHalfUp(y);
}
