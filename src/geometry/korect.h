#ifndef KORECT_H
#define KORECT_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"
#include "geometry/kosize.h"

#include <QtCore/QRectF>
#include <QtCore/QString>

/*!
    \class koRect
    An axis-aligned rectangle: top-left corner (x, y) plus extent, y growing
    downwards as in Qt. Width and height may be zero or negative; only the
    two-point constructor normalises. Operations documented "new rect" leave
    the rectangle unchanged; note that setCenter() deliberately returns the
    moved copy and leaves this rectangle as it is.
*/
class RVGRAPHICS_EXPORT koRect
{
public:
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    koRect() = default;
    koRect(const koRect &r) = default;
    koRect &operator=(const koRect &r) = default;
    //! The normalised box spanned by two corner points.
    koRect(const koPoint &p1, const koPoint &p2);
    //! Stored as given, no normalisation.
    koRect(double px, double py, double w, double h) : x(px), y(py), width(w), height(h) {}
    explicit koRect(const QRectF &r) : x(r.x()), y(r.y()), width(r.width()), height(r.height()) {}

    QRectF toRectF() const { return QRectF(x, y, width, height); }

    void reset();
    void set(double px, double py, double w, double h);
    //! "x: %1, y: %2, width: %3, height: %4".
    QString toString() const;
    //! width < 1e-12 or height < 1e-12: zero and negative extents are empty.
    bool isEmpty() const;
    //! width * height, signed.
    double getArea() const;
    double right() const;
    double bottom() const;
    koPoint center() const;
    koPoint topLeft() const;
    koPoint topRight() const;
    koPoint bottomLeft() const;
    koPoint bottomRight() const;
    koSize size() const;
    //! Returns a copy centred on \a p; this rectangle is left unchanged.
    koRect setCenter(const koPoint &p) const;
    //! Strict: a point on the border is not contained.
    bool containsPt(const koPoint &p) const;
    //! Inclusive: r may share edges with this rectangle.
    bool containsRect(const koRect &r) const;
    //! The overlap box, not clamped: disjoint rectangles give a negative extent.
    koRect intersect(const koRect &r) const;
    //! Strict: rectangles that only share an edge do not intersect.
    bool intersects(const koRect &r) const;
    //! Inclusive: sharing an edge counts.
    bool touches(const koRect &r) const;
    //! Smallest box holding both; an empty operand (width or height <= 0) is
    //! ignored.
    koRect unite(const koRect &r) const;
    //! The box grown to hold \a p (no emptiness test).
    koRect include(const koPoint &p) const;
    //! Grows by dx and dy in total, half on each side, in place.
    void expand(double dx, double dy);
    //! Moves the left/top edges by dx1/dy1 and the right/bottom edges by
    //! dx2/dy2, in place.
    void adjust(double dx1, double dy1, double dx2, double dy2);
    void translate(double dx, double dy);
};

Q_DECLARE_TYPEINFO(koRect, Q_PRIMITIVE_TYPE);

#endif // KORECT_H
