#ifndef XPATH_H
#define XPATH_H

#include "rvgraphics_global.h"
#include "geometry/korect.h"

#include <QtCore/QList>
#include <QtCore/QVector>

class koCurve;
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

    //! Inserts \a path at \a index (-1 appends), taking one reference.
    void addChild(koPath *path, int index = -1);
    void addChildren(const QVector<koPath *> &paths, int index = -1);
    //! Removes \a path if it is a child, then releases it once in any case.
    void removeChild(koPath *path);
    //! Releases and removes the children in [from, to) (to = -1: the end).
    void removeChildren(int from, int to = -1);
    void setChildren(const QVector<koPath *> &paths);
    //! Appends copies of \a other's children; copies the flag and bounds.
    void assign(const XPath *other);
    XPath *clone() const;

    //! Reverses every child in place; the order of children is kept.
    void reverse();
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
