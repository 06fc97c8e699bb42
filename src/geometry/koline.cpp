#include "geometry/koline.h"

#include "geometry/kotolerance.h"

#include <QtCore/QtGlobal>

#include <cmath>

koLine::koLine(double ppx, double ppy, double x2, double y2, bool asVector)
    : px(ppx), py(ppy), vx(asVector ? x2 : x2 - ppx), vy(asVector ? y2 : y2 - ppy)
{}

koLine::koLine(const koPoint &point, const koPoint &second, bool asVector)
    : koLine(point.x, point.y, second.x, second.y, asVector)
{}

double koLine::getLength() const
{
    return std::sqrt(vx * vx + vy * vy);
}

double koLine::getSignedDistance(double px, double py, double vx, double vy, double x, double y,
                                 bool asVector)
{
    if (!asVector) {
        vx -= px;
        vy -= py;
    }
    // Axis-parallel lines are answered exactly, without the division.
    if (vx == 0)
        return vy > 0 ? x - px : px - x;
    if (vy == 0)
        return vx < 0 ? y - py : py - y;
    return ((x - px) * vy - (y - py) * vx) / std::sqrt(vx * vx + vy * vy);
}

double koLine::getDistance(const koPoint &p) const
{
    return std::abs(getSignedDistance(px, py, vx, vy, p.x, p.y, true));
}

int koLine::getSide(const koPoint &p, bool isInfinite) const
{
    return getSide(px, py, vx, vy, p.x, p.y, true, isInfinite);
}

int koLine::getSide(double px, double py, double vx, double vy, double x, double y, bool asVector,
                    bool isInfinite)
{
    // A point on the infinite line is on neither side; whether it also lies
    // within the segment's extent does not change that answer, so the
    // bounded and the infinite reading give the same result.
    Q_UNUSED(isInfinite);
    if (!asVector) {
        vx -= px;
        vy -= py;
    }
    const double s = vy * (x - px) - vx * (y - py);
    if (s < 0)
        return -1;
    if (s > 0)
        return 1;
    return 0;
}

bool koLine::isCollinear(const koLine &line) const
{
    return koPoint::isCollinear(vx, vy, line.vx, line.vy);
}

bool koLine::isOrthogonal(const koLine &line) const
{
    return koPoint::isOrthogonal(vx, vy, line.vx, line.vy);
}

koPoint koLine::intersect(double p1x, double p1y, double ax, double ay, double p2x, double p2y,
                          double bx, double by, bool asVector, bool isInfinite)
{
    if (!asVector) {
        ax -= p1x;
        ay -= p1y;
        bx -= p2x;
        by -= p2y;
    }
    const double cross = ax * by - ay * bx;
    if (cross >= -koTolerance::Epsilon && cross <= koTolerance::Epsilon)
        return koPoint(qQNaN(), qQNaN());
    const double dx = p1x - p2x;
    const double dy = p1y - p2y;
    double u1 = (bx * dy - by * dx) / cross;
    if (!isInfinite) {
        // Both parameters must lie on their segments, with a hair of slack so
        // that segments meeting exactly at an end point still intersect.
        const double u2 = (ax * dy - ay * dx) / cross;
        const double uMin = -koTolerance::Epsilon;
        const double uMax = 1 + koTolerance::Epsilon;
        if (!(uMin < u1 && u1 < uMax && uMin < u2 && u2 < uMax))
            return koPoint(qQNaN(), qQNaN());
        if (u1 <= 0)
            u1 = 0;
        else if (u1 >= 1)
            u1 = 1;
    }
    return koPoint(p1x + ax * u1, p1y + ay * u1);
}

koPoint koLine::intersect(const koLine &line, bool isInfinite) const
{
    return intersect(px, py, vx, vy, line.px, line.py, line.vx, line.vy, true, isInfinite);
}
