#ifndef KOBOUNDOPT_H
#define KOBOUNDOPT_H

#include "rvgraphics_global.h"

/*!
    \class koBoundOpt
    Which bounds a bounds query returns: handle bounds (every point and
    absolute handle), stroke bounds (the fill bounds widened by the stroke),
    or, with neither flag, the exact fill bounds of the curves.
*/
class RVGRAPHICS_EXPORT koBoundOpt
{
public:
    bool handle = false;
    bool stroke = false;
    //! Handle bounds are also widened by the stroke padding.
    bool strokePadding = false;
    //! Reserved: set by containment queries.
    bool fill = false;

    koBoundOpt() = default;
    koBoundOpt(bool h, bool s, bool sp, bool f) : handle(h), stroke(s), strokePadding(sp), fill(f) {}
};

#endif // KOBOUNDOPT_H
