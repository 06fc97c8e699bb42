#ifndef KOHITOPT_H
#define KOHITOPT_H

#include "rvgraphics_global.h"

/*!
    \class koHitOpt
    What a hit test looks for and how far from the outline a hit may be.
*/
class RVGRAPHICS_EXPORT koHitOpt
{
public:
    double tolerance = 0; //!< hit distance in path units
    bool fill = false;    //!< test the fill
    bool stroke = false;  //!< test the stroke
    bool curves = false;  //!< report hits on the curve itself (type 3)
    //! Copied into koStyle::flag0 for the final fill test of a single path.
    bool flag = false;

    koHitOpt() = default;
};

#endif // KOHITOPT_H
