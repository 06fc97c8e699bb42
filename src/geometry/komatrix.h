#ifndef KOMATRIX_H
#define KOMATRIX_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"
#include "geometry/korect.h"

#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QTransform>

/*!
    \class koMatrix
    A 2D affine transformation: (x, y) maps to (a*x + c*y + tx, b*x + d*y + ty).

    Mutating operations compose on the inner side, like QTransform: the new
    operation is applied to points first, then the existing matrix. Where an
    operation of the library takes a matrix pointer, null means identity;
    _orNullIfIdentity() tells callers when a matrix is worth passing.

    invert() and inverseTransform() do not test for a zero determinant: a
    singular matrix with finite entries divides by zero. Test isInvertible()
    first when the matrix may be singular.
*/
class RVGRAPHICS_EXPORT koMatrix
{
public:
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    //! The identity.
    koMatrix() = default;
    koMatrix(double ma, double mb, double mc, double md, double mtx, double mty)
        : a(ma), b(mb), c(mc), d(md), tx(mtx), ty(mty)
    {}
    explicit koMatrix(const QTransform &t)
        : a(t.m11()), b(t.m12()), c(t.m21()), d(t.m22()), tx(t.dx()), ty(t.dy())
    {}
    QTransform toTransform() const { return QTransform(a, b, c, d, tx, ty); }

    //! Debug text. The format string keeps a historical typo, "d: 4%", so
    //! d's value lands after "tx: ", tx's after "ty: " and ty is dropped
    //! (Qt warns about the missing placeholder).
    QString toString() const;

    void translate(double dx, double dy);
    void scale(double sx, double sy, const koPoint *center = nullptr);
    //! Rotates by \a angle degrees (counter-clockwise with y up).
    void rotate(double angle);
    void rotateAt(double angle, const koPoint &center);
    void shear(double shx, double shy, const koPoint *center = nullptr);
    //! shear(tan(ax), tan(ay)) with the angles in degrees.
    void skew(double ax, double ay, const koPoint *center = nullptr);
    //! this = this x m: \a m is applied to points first.
    void append(const koMatrix &m);
    //! this = m x this: this matrix is applied to points first.
    void prepend(const koMatrix &m);
    //! Inverts in place; unchanged when the determinant is NaN or the
    //! translation is not finite. No test for a zero determinant.
    void invert();
    //! Drops the translation, keeping the linear part (for direction vectors).
    void _shiftless();
    //! Exact comparison with the identity, no tolerance.
    bool isIdentity() const;
    //! true when the matrix does something (not the identity).
    bool _orNullIfIdentity() const;
    bool isInvertible() const;
    bool isSingular() const;

    koPoint transformPoint(const koPoint &p) const;
    koPoint transformXY(double x, double y) const;
    koPoint inverseTransform(const koPoint &p) const;
    //! Transforms the first \a count interleaved (x, y) pairs of \a coords in
    //! place; a count below 1 does nothing, and a count beyond the pairs the
    //! vector holds stops at its end.
    void transformCoords(QVector<double> &coords, int count) const;
    //! Fills \a coords with the four transformed corners of \a r: top-left,
    //! top-right, bottom-right, bottom-left.
    void transformCorners(const koRect &r, QVector<double> &coords) const;
    //! The axis-aligned box of the transformed rectangle.
    koRect transformBounds(const koRect &r) const;
    void transformPoints(QVector<koPoint> &points) const;
};

Q_DECLARE_TYPEINFO(koMatrix, Q_PRIMITIVE_TYPE);

#endif // KOMATRIX_H
