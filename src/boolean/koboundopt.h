#ifndef KOBOUNDOPT_H
#define KOBOUNDOPT_H

#include "rvgraphics_global.h"

/*!
    \class koBoundOpt
    Which bounds a bounds query returns: handle bounds (every point and
    absolute handle), else stroke bounds (the fill bounds widened by the
    stroke), or, with neither flag, the exact fill bounds of the curves. The
    record is handed on whole to the handle-bounds computation.
*/
class RVGRAPHICS_EXPORT koBoundOpt
{
public:
    bool handle = false;
    bool stroke = false;
    //! Handle bounds are also widened by the stroke of the style (the pen
    //! around each handle, the farthest join or cap around each point), so
    //! that they hold the stroke bounds.
    bool strokePadding = false;
    //! The caller wants a box of the filled area, as containment does. Every
    //! kind of bounds already holds the fill, so the flag leaves the box as
    //! it is.
    bool fill = false;

    koBoundOpt() = default;
    koBoundOpt(bool h, bool s, bool sp, bool f) : handle(h), stroke(s), strokePadding(sp), fill(f)
    {}
};

#endif // KOBOUNDOPT_H
