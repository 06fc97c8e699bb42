#include "path/xpath.h"

#include "boolean/koboundopt.h"
#include "boolean/kohitopt.h"
#include "boolean/kohitresult.h"
#include "boolean/kostyle.h"
#include "boolean/kowinding.h"
#include "path/kopath.h"

koRect XPath::getBounds() const
{
    koRect bounds;
    const koBoundOpt fillBounds;
    const koStyle style;
    for (koPath *child : children) {
        if (child)
            bounds = bounds.unite(child->getBounds(fillBounds, style));
    }
    return bounds;
}

bool XPath::contains(const koPoint &point, const koStyle &style) const
{
    koRect bounds;
    const koBoundOpt handleBounds(true, false, false, true);
    for (koPath *child : children) {
        if (child)
            bounds = bounds.unite(child->getBounds(handleBounds, style));
    }
    // All children count together, so that holes and overlaps follow the
    // fill rule across contours.
    const int winding =
            point.isInside(bounds) ? getWinding(point, getMonoCurves(), false).winding : 0;
    return style.evenOdd ? (winding & 1) != 0 : winding != 0;
}

koHitResult XPath::hitTest(const koPoint &point, const koStyle &style, const koHitOpt &opt)
{
    if (children.isEmpty())
        return koHitResult();
    const koHitResult result = hitTestSelf(point, style, opt);
    if (result.type != koHitResult::None)
        return result;
    return hitTestChildren(point, style, opt);
}

koHitResult XPath::hitTestSelf(const koPoint &point, const koStyle &style, const koHitOpt &opt)
{
    koHitResult result;
    if (opt.fill && contains(point, style)) {
        result.type = koHitResult::Fill;
        result.item = this;
        result.point = point;
    }
    return result;
}

koHitResult XPath::hitTestChildren(const koPoint &point, const koStyle &style, const koHitOpt &opt)
{
    // The fill of the whole compound path was tested already; a child's own
    // fill would ignore the holes the other children cut.
    koHitOpt childOpt = opt;
    childOpt.fill = false;
    koHitResult result;
    for (koPath *child : children) {
        if (!child)
            continue;
        result = child->_hitTestSelf(point, childOpt, style);
        if (result.type != koHitResult::None)
            break;
    }
    return result;
}
