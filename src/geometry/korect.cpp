#include "geometry/korect.h"

#include "geometry/kotolerance.h"

#include <algorithm>

koRect::koRect(const koPoint &p1, const koPoint &p2)
{
    const double left = std::min(p1.x, p2.x);
    const double right = std::max(p1.x, p2.x);
    const double top = std::min(p1.y, p2.y);
    const double bottom = std::max(p1.y, p2.y);
    x = left;
    y = top;
    width = right - left;
    height = bottom - top;
}

void koRect::reset()
{
    x = y = width = height = 0;
}

void koRect::set(double px, double py, double w, double h)
{
    x = px;
    y = py;
    width = w;
    height = h;
}

QString koRect::toString() const
{
    return QStringLiteral("x: %1, y: %2, width: %3, height: %4")
            .arg(x)
            .arg(y)
            .arg(width)
            .arg(height);
}

bool koRect::isEmpty() const
{
    return width < koTolerance::Epsilon || height < koTolerance::Epsilon;
}

double koRect::getArea() const
{
    return width * height;
}

double koRect::right() const
{
    return x + width;
}

double koRect::bottom() const
{
    return y + height;
}

koPoint koRect::center() const
{
    return koPoint(0.5 * width + x, 0.5 * height + y);
}

koPoint koRect::topLeft() const
{
    return koPoint(x, y);
}

koPoint koRect::topRight() const
{
    return koPoint(x + width, y);
}

koPoint koRect::bottomLeft() const
{
    return koPoint(x, y + height);
}

koPoint koRect::bottomRight() const
{
    return koPoint(x + width, y + height);
}

koSize koRect::size() const
{
    return koSize(width, height);
}

koRect koRect::setCenter(const koPoint &p) const
{
    return koRect(p.x - 0.5 * width, p.y - 0.5 * height, width, height);
}

bool koRect::containsPt(const koPoint &p) const
{
    return x < p.x && p.x < x + width && y < p.y && p.y < y + height;
}

bool koRect::containsRect(const koRect &r) const
{
    return r.x >= x && r.y >= y && x + width >= r.x + r.width && y + height >= r.y + r.height;
}

koRect koRect::intersect(const koRect &r) const
{
    const double left = std::max(x, r.x);
    const double top = std::max(y, r.y);
    return koRect(left, top, std::min(right(), r.right()) - left,
                  std::min(bottom(), r.bottom()) - top);
}

bool koRect::intersects(const koRect &r) const
{
    return r.x + r.width > x && r.y + r.height > y && x + width > r.x && y + height > r.y;
}

bool koRect::touches(const koRect &r) const
{
    return r.x + r.width >= x && r.y + r.height >= y && x + width >= r.x && y + height >= r.y;
}

koRect koRect::unite(const koRect &r) const
{
    if (r.width <= 0 || r.height <= 0)
        return *this;
    if (width <= 0 || height <= 0)
        return r;
    const double left = std::min(x, r.x);
    const double top = std::min(y, r.y);
    return koRect(left, top, std::max(right(), r.right()) - left,
                  std::max(bottom(), r.bottom()) - top);
}

koRect koRect::include(const koPoint &p) const
{
    const double left = std::min(x, p.x);
    const double top = std::min(y, p.y);
    return koRect(left, top, std::max(p.x, x + width) - left, std::max(p.y, y + height) - top);
}

void koRect::expand(double dx, double dy)
{
    x -= 0.5 * dx;
    y -= 0.5 * dy;
    width += dx;
    height += dy;
}

void koRect::adjust(double dx1, double dy1, double dx2, double dy2)
{
    x += dx1;
    y += dy1;
    width += dx2 - dx1;
    height += dy2 - dy1;
}

void koRect::translate(double dx, double dy)
{
    x += dx;
    y += dy;
}
