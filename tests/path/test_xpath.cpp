#include "pathtesthelpers.h"

#include "path/xpath.h"

#include <memory>

namespace {

// A square, clockwise on screen (positive area) or counter-clockwise.
koPath *square(double x, double size, bool clockwise)
{
    koPath *p = polygonPath({{x, 0}, {x + size, 0}, {x + size, size}, {x, size}}, true);
    if (!clockwise)
        p->reverse();
    return p;
}

} // namespace

TEST(XPathChildren, AddOrientsClosedChildrenByPosition)
{
    XPath xp;
    EXPECT_FALSE(xp.getFirstChild() || xp.getLastChild() || xp.isClockwise());
    koPath *outer = square(0, 10, false);
    koPath *hole = square(2, 2, true);
    koPath *open = polygonPath({{0, 0}, {0, 5}, {5, 5}}, false);
    xp.addChildren({outer, nullptr, hole});
    xp.addChild(open, 99); // beyond the end: appended
    EXPECT_EQ(xp.children, QVector<koPath *>({outer, hole, open}));
    EXPECT_TRUE(outer->refCount == 1 && hole->parent == &xp && open->index == 2);
    EXPECT_GT(outer->getArea(), 0);
    EXPECT_EQ(outer->flags, quint32(koPath::Clockwise));
    EXPECT_LT(hole->getArea(), 0);
    EXPECT_EQ(hole->flags, quint32(koPath::CounterClockwise));
    EXPECT_EQ(open->flags, 0u);
    EXPECT_EQ(xp.getCurves().size(), 4 + 4 + 2);

    // A recorded orientation is kept when the child is added.
    koPath *fixed = square(20, 1, true);
    fixed->addFlags(koPath::Clockwise);
    xp.addChild(fixed, 1);
    EXPECT_TRUE(fixed->index == 1 && hole->index == 2);
    EXPECT_GT(fixed->getArea(), 0);
}

TEST(XPathChildren, RemovalReleasesAndReorients)
{
    XPath xp;
    koRef<koPath> outer(square(0, 10, true));
    koPath *hole = square(2, 2, true);
    xp.addChildren({outer.get(), hole});
    xp.removeChild(outer.get());
    EXPECT_EQ(outer->parent, nullptr);
    EXPECT_EQ(outer->refCount, 1);
    // The hole moved to the front: it now runs clockwise.
    EXPECT_EQ(hole->index, 0);
    EXPECT_EQ(hole->flags, quint32(koPath::Clockwise));
    EXPECT_GT(hole->getArea(), 0);

    // Not a child: released all the same.
    resetProbes();
    xp.removeChild(new ProbePath(nullptr, true));
    EXPECT_EQ(ProbePath::counter().destroyed, 1);
    EXPECT_EQ(ProbePath::counter().lastSeen, -2);
    outer->addRef();
    xp.removeChild(outer.get());
    EXPECT_EQ(outer->refCount, 1);
    EXPECT_EQ(xp.children.size(), 1);
}

TEST(XPathChildren, RemoveChildrenRangesAreClamped)
{
    resetProbes();
    XPath xp;
    for (int i = 0; i < 5; ++i)
        xp.addChild(new ProbePath);
    xp.removeChildren(3, 2);
    xp.removeChildren(7, -1);
    EXPECT_EQ(xp.children.size(), 5);
    xp.removeChildren(3, -1);
    xp.removeChildren(-4, 1);
    EXPECT_EQ(ProbePath::counter().destroyed, 3);
    EXPECT_EQ(xp.children.at(1)->index, 1);
    xp.setChildren(xp.children); // its own children survive the swap
    EXPECT_EQ(xp.children.size(), 2);
    EXPECT_EQ(ProbePath::counter().destroyed, 3);
    xp.setChildren({});
    EXPECT_EQ(ProbePath::counter().alive(), 0);
}

TEST(XPathChildren, CloneAndReverse)
{
    XPath xp;
    xp.m_flag = false;
    xp.m_bounds = koRect(1, 2, 3, 4);
    xp.addChildren({square(0, 10, true), square(2, 2, true)});
    std::unique_ptr<XPath> copy(xp.clone());
    EXPECT_FALSE(copy->m_flag);
    EXPECT_EQ(copy->m_bounds.width, 3);
    ASSERT_EQ(copy->children.size(), 2);
    for (int i = 0; i < 2; ++i) {
        koPath *c = copy->children.at(i);
        EXPECT_TRUE(c != xp.children.at(i) && c->equals(xp.children.at(i)));
        EXPECT_TRUE(c->parent == copy.get() && c->index == i && c->refCount == 1);
    }
    EXPECT_TRUE(xp.isClockwise());
    xp.setClockwise(false); // every child turns
    EXPECT_FALSE(xp.isClockwise());
    EXPECT_LT(xp.getFirstChild()->getArea(), 0);
    EXPECT_GT(xp.getLastChild()->getArea(), 0);
}
