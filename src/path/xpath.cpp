#include "path/xpath.h"

#include "path/kocurve.h"
#include "path/kopath.h"

// After a removal indices shift: a child that moved to the front, or away
// from it, may need the other orientation. A child whose recorded orientation
// already fits its place is left alone.
static void reorientAfterRemoval(const QVector<koPath *> &children)
{
    for (koPath *child : children) {
        const bool first = child->index == 0;
        if (child->isFlags(first ? koPath::Clockwise : koPath::CounterClockwise))
            continue;
        if (child->closed)
            child->setClockwise(first);
    }
}

XPath::~XPath()
{
    const QVector<koPath *> list = children;
    children.clear();
    for (koPath *child : list) {
        if (child->parent == this)
            child->parent = nullptr;
        child->release();
    }
}

koPath *XPath::getFirstChild() const
{
    return children.isEmpty() ? nullptr : children.first();
}

koPath *XPath::getLastChild() const
{
    return children.isEmpty() ? nullptr : children.last();
}

QList<koCurve *> XPath::getCurves() const
{
    QList<koCurve *> list;
    for (koPath *child : children)
        list.append(child->getCurves());
    return list;
}

void XPath::addChild(koPath *path, int index)
{
    if (!path)
        return;
    addChildren(QVector<koPath *>() << path, index);
}

void XPath::addChildren(const QVector<koPath *> &pathList, int index)
{
    const QVector<koPath *> paths = pathList; // may be our own children
    // -1 (and any index outside the list) appends.
    int at = (index < 0 || index > children.size()) ? children.size() : index;
    QVector<koPath *> inserted;
    inserted.reserve(paths.size());
    for (koPath *path : paths) {
        if (!path)
            continue;
        path->addRef();
        path->parent = this;
        children.insert(at++, path);
        inserted.append(path);
    }
    if (inserted.isEmpty())
        return;
    _renumber();
    for (koPath *path : inserted)
        _orientChild(path);
}

void XPath::removeChild(koPath *path)
{
    if (!path)
        return;
    const int i = children.indexOf(path);
    if (i >= 0) {
        children.remove(i);
        if (path->parent == this && !children.contains(path))
            path->parent = nullptr;
    }
    // The caller's reference is consumed whether or not the path was a child.
    path->release();
    _renumber();
    reorientAfterRemoval(children);
}

void XPath::removeChildren(int from, int to)
{
    const int n = children.size();
    if (to < 0 || to > n)
        to = n;
    if (from < 0)
        from = 0;
    if (from >= to)
        return;
    const QVector<koPath *> removed = children.mid(from, to - from);
    children.erase(children.begin() + from, children.begin() + to);
    for (koPath *path : removed) {
        if (path->parent == this && !children.contains(path))
            path->parent = nullptr;
        path->release();
    }
    _renumber();
    reorientAfterRemoval(children);
}

void XPath::setChildren(const QVector<koPath *> &pathList)
{
    const QVector<koPath *> paths = pathList; // may be our own children
    // The new children may include current ones: keep them alive while the
    // old list is released.
    for (koPath *path : paths) {
        if (path)
            path->addRef();
    }
    removeChildren(0, -1);
    addChildren(paths, -1);
    for (koPath *path : paths) {
        if (path)
            path->release();
    }
}

void XPath::assign(const XPath *other)
{
    if (!other)
        return;
    m_flag = other->m_flag;
    m_bounds = other->m_bounds;
    const QVector<koPath *> source = other->children; // other may be this
    for (const koPath *child : source) {
        koPath *copy = child->clone();
        copy->addRef();
        copy->index = children.size();
        copy->parent = this;
        children.append(copy);
    }
}

XPath *XPath::clone() const
{
    XPath *copy = new XPath;
    copy->assign(this);
    return copy;
}

void XPath::reverse()
{
    for (koPath *child : children)
        child->reverse();
}

void XPath::setClockwise(bool clockwise)
{
    if (isClockwise() != clockwise)
        reverse();
}

void XPath::_renumber()
{
    for (int i = 0; i < children.size(); ++i)
        children.at(i)->index = i;
}

void XPath::_orientChild(koPath *path)
{
    if (!path->closed || path->isFlags(koPath::Clockwise | koPath::CounterClockwise))
        return;
    path->setClockwise(path->index == 0);
}
