#include "geometry/komatrix.h"

#include <QtCore/QtGlobal>

#include <cmath>

namespace {

// Degrees to radians as one constant (pi/180), unlike koPoint.
constexpr double DegreesToRadians = 0.017453292519943295;

} // namespace

QString koMatrix::toString() const
{
    // The "4%" is historical and kept: each arg() fills the lowest-numbered
    // placeholder left, so d lands in %5, tx in %6 and ty finds none.
    return QStringLiteral("a: %1, b: %2, c: %3, d: 4%, tx: %5, ty: %6")
            .arg(a)
            .arg(b)
            .arg(c)
            .arg(d)
            .arg(tx)
            .arg(ty);
}

void koMatrix::translate(double dx, double dy)
{
    tx += a * dx + c * dy;
    ty += b * dx + d * dy;
}

void koMatrix::scale(double sx, double sy, const koPoint *center)
{
    if (center)
        translate(center->x, center->y);
    a *= sx;
    b *= sx;
    c *= sy;
    d *= sy;
    if (center)
        translate(-center->x, -center->y);
}

void koMatrix::rotate(double angle)
{
    const double r = angle * DegreesToRadians;
    const double cs = std::cos(r);
    const double sn = std::sin(r);
    const double oa = a, ob = b, oc = c, od = d;
    a = cs * oa + sn * oc;
    b = cs * ob + sn * od;
    c = cs * oc - sn * oa;
    d = cs * od - sn * ob;
}

void koMatrix::rotateAt(double angle, const koPoint &center)
{
    translate(center.x, center.y);
    rotate(angle);
    translate(-center.x, -center.y);
}

void koMatrix::shear(double shx, double shy, const koPoint *center)
{
    if (center)
        translate(center->x, center->y);
    const double oa = a, ob = b;
    a = oa + shy * c;
    b = ob + shy * d;
    c = c + shx * oa;
    d = d + shx * ob;
    if (center)
        translate(-center->x, -center->y);
}

void koMatrix::skew(double ax, double ay, const koPoint *center)
{
    shear(std::tan(ax * DegreesToRadians), std::tan(ay * DegreesToRadians), center);
}

void koMatrix::append(const koMatrix &m)
{
    const double oa = a, ob = b, oc = c, od = d;
    a = oa * m.a + oc * m.b;
    b = ob * m.a + od * m.b;
    c = oa * m.c + oc * m.d;
    d = ob * m.c + od * m.d;
    tx = tx + oa * m.tx + oc * m.ty;
    ty = ty + ob * m.tx + od * m.ty;
}

void koMatrix::prepend(const koMatrix &m)
{
    const double oa = a, ob = b, oc = c, od = d, otx = tx, oty = ty;
    a = m.a * oa + m.c * ob;
    b = m.b * oa + m.d * ob;
    c = m.a * oc + m.c * od;
    d = m.b * oc + m.d * od;
    tx = m.a * otx + m.c * oty + m.tx;
    ty = m.b * otx + m.d * oty + m.ty;
}

void koMatrix::invert()
{
    const double det = a * d - b * c;
    if (qIsNaN(det) || !qIsFinite(tx) || !qIsFinite(ty))
        return;
    const double oa = a, ob = b, oc = c, od = d, otx = tx, oty = ty;
    a = od / det;
    b = -ob / det;
    c = -oc / det;
    d = oa / det;
    tx = (oc * oty - od * otx) / det;
    ty = (ob * otx - oa * oty) / det;
}

void koMatrix::_shiftless()
{
    tx = 0;
    ty = 0;
}

bool koMatrix::isIdentity() const
{
    return a == 1 && b == 0 && c == 0 && d == 1 && tx == 0 && ty == 0;
}

bool koMatrix::_orNullIfIdentity() const
{
    return !isIdentity();
}

bool koMatrix::isInvertible() const
{
    const double det = a * d - c * b;
    return det != 0 && !qIsNaN(det) && qIsFinite(tx) && qIsFinite(ty);
}

bool koMatrix::isSingular() const
{
    return !isInvertible();
}

koPoint koMatrix::transformPoint(const koPoint &p) const
{
    return transformXY(p.x, p.y);
}

koPoint koMatrix::transformXY(double x, double y) const
{
    return koPoint(a * x + c * y + tx, b * x + d * y + ty);
}

koPoint koMatrix::inverseTransform(const koPoint &p) const
{
    const double det = a * d - b * c;
    if (qIsNaN(det) || !qIsFinite(tx) || !qIsFinite(ty))
        return p;
    const double u = p.x - tx;
    const double v = p.y - ty;
    return koPoint((d * u - c * v) / det, (a * v - b * u) / det);
}

void koMatrix::transformCoords(QVector<double> &coords, int count) const
{
    // Never read past the vector, whatever count says.
    const int pairs = qMin(count, coords.size() / 2);
    for (int i = 0; i < pairs; ++i) {
        const double x = coords.at(2 * i);
        const double y = coords.at(2 * i + 1);
        coords[2 * i] = a * x + c * y + tx;
        coords[2 * i + 1] = b * x + d * y + ty;
    }
}

void koMatrix::transformCorners(const koRect &r, QVector<double> &coords) const
{
    const double right = r.x + r.width;
    const double bottom = r.y + r.height;
    coords.clear();
    coords.reserve(8);
    coords << r.x << r.y << right << r.y << right << bottom << r.x << bottom;
    transformCoords(coords, 4);
}

koRect koMatrix::transformBounds(const koRect &r) const
{
    QVector<double> coords;
    transformCorners(r, coords);
    double min[2] = {coords.at(0), coords.at(1)};
    double max[2] = {coords.at(0), coords.at(1)};
    for (int i = 2; i < 8; ++i) {
        const double v = coords.at(i);
        const int j = i & 1;
        if (v < min[j])
            min[j] = v;
        else if (v > max[j])
            max[j] = v;
    }
    return koRect(min[0], min[1], max[0] - min[0], max[1] - min[1]);
}

void koMatrix::transformPoints(QVector<koPoint> &points) const
{
    for (koPoint &p : points)
        p = transformXY(p.x, p.y);
}
