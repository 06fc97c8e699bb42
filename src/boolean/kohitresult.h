#ifndef KOHITRESULT_H
#define KOHITRESULT_H

#include "rvgraphics_global.h"
#include "geometry/kopoint.h"

class XPath;
class koPath;
class koSegment;

/*!
    \class koHitResult
    What a hit test found. \c type is 0 none, 1 stroke, 2 fill, 3 curve;
    \c item is the compound path hit (a path's parent, or the compound path
    itself for its own fill). Pointers are not owned.
*/
class RVGRAPHICS_EXPORT koHitResult
{
public:
    enum Type { None = 0, Stroke = 1, Fill = 2, Curve = 3 };

    int type = None;
    XPath *item = nullptr;
    koPath *path = nullptr;
    koSegment *segment = nullptr;
    koPoint point;

    //! The empty result: type 0, every pointer null.
    koHitResult() = default;
    //! Stores the fields; \c item becomes the path's parent.
    koHitResult(int type, koPath *path, koSegment *segment, const koPoint &point);
};

#endif // KOHITRESULT_H
