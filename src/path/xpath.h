#ifndef XPATH_H
#define XPATH_H

#include "rvgraphics_global.h"
#include "geometry/korect.h"

#include <QtCore/QList>
#include <QtCore/QVector>

class koCurve;
class koCurveLocation;
class koMatrix;
class koPoint;
class koPath;

/*!
    \class XPath
    A compound path: an ordered list of koPath children, each held by one
    reference. Unlike its children an XPath is not reference counted: it is
    owned by whoever created it and destroyed with delete, which releases the
    children.

    Child orientation rule: after children are added or removed, every closed
    child whose orientation is not already fixed is oriented clockwise when it
    is the first child and counter-clockwise otherwise (y-down coordinates),
    so that a compound path reads as an outline with holes under the non-zero
    rule.
*/
class RVGRAPHICS_EXPORT XPath
{
public:
    bool m_flag = true;           //!< copied by assign()
    QVector<koPath *> children;   //!< each counted
    koRect m_bounds;              //!< bounds cache, copied by assign()

    XPath() = default;
    ~XPath();

    koPath *getFirstChild() const;
    koPath *getLastChild() const;
    const QVector<koPath *> &getChildren() const { return children; }
    //! The curves of all children in order (each child's list is built on
    //! demand); the children keep the references.
    QList<koCurve *> getCurves() const;

    //! Inserts \a path at \a index (-1, any negative index or one beyond the
    //! end appends), taking one reference; a null path is ignored.
    void addChild(koPath *path, int index = -1);
    //! The same for several paths, kept in order; null entries are skipped.
    void addChildren(const QVector<koPath *> &paths, int index = -1);
    //! Removes \a path if it is a child, then releases it once in any case.
    void removeChild(koPath *path);
    //! Releases and removes the children in [from, to) (to = -1 or beyond the
    //! end: the end; a negative from counts as 0; an empty range does nothing).
    void removeChildren(int from, int to = -1);
    //! Replaces the children; \a paths may name current children.
    void setChildren(const QVector<koPath *> &paths);
    //! Appends copies of \a other's children; copies the flag and bounds.
    void assign(const XPath *other);
    XPath *clone() const;

    //! Reverses every child in place; the order of children is kept.
    void reverse();
    //! Reduces every child (last to first); children left empty are removed.
    XPath *reduce(bool simplify);
    void flatten(double flatness);
    //! Flattens and then drops points that deviate less than \a tolerance.
    void simplify(double tolerance);
    void interpolate(const XPath *from, const XPath *to, double factor);
    //! Splits the child holding \a offset (lengths of children in order).
    koPath *splitAt(double offset);
    void transformContent(const koMatrix *matrix);

    //! A new location (caller owns it) of the point nearest to \a point on any
    //! child, or null.
    koCurveLocation *getNearestLocation(const koPoint &point) const;
    //! The nearest point, or (NaN, NaN) without curves.
    koPoint getNearestPoint(const koPoint &point) const;
    //! The orientation of the first child; false when there is none.
    bool isClockwise() const;
    //! Reverses all children when isClockwise() differs from \a clockwise.
    void setClockwise(bool clockwise);

private:
    void _renumber();
    // Orients \a path by the child rule (closed paths without a fixed
    // orientation only).
    void _orientChild(koPath *path);
    Q_DISABLE_COPY(XPath)
};

#endif // XPATH_H
