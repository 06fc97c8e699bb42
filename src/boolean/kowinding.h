#ifndef KOWINDING_H
#define KOWINDING_H

#include "rvgraphics_global.h"

/*!
    \struct koWinding
    The result of a winding query: the winding number of a point (always
    >= 0, the larger of the windings left and right of the ray) and whether
    the point lies on the outline of the filled area (exactly one side of the
    ray has a zero winding).
*/
struct RVGRAPHICS_EXPORT koWinding
{
    int winding = 0;
    bool contour = false;
};

#endif // KOWINDING_H
