#ifndef KOOPPARAM_H
#define KOOPPARAM_H

#include "rvgraphics_global.h"

#include <functional>

class koCurveLocation;

/*!
    \struct opParam
    Parameters of one curve-curve intersection search, passed by reference
    through the whole search.
*/
struct RVGRAPHICS_EXPORT opParam
{
    //! The start of curve 1 joins the end of curve 2 (adjacent curves): a
    //! meeting there is not an intersection.
    bool excludeStart = false;
    //! The end of curve 1 joins the start of curve 2.
    bool excludeEnd = false;
    //! The times found lie on the two halves of one curve split at
    //! renormalizeTime and are mapped back (loop search).
    bool renormalize = false;
    double renormalizeTime = 0;
    //! Optional filter: a location pair is kept only when it returns true.
    std::function<bool(koCurveLocation *)> include;
};

#endif // KOOPPARAM_H
