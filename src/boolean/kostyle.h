#ifndef KOSTYLE_H
#define KOSTYLE_H

#include "rvgraphics_global.h"

//! Line-cap kinds of a stroke.
enum koCap : int { koCapButt = 0, koCapRound = 1, koCapSquare = 2 };
//! Line-join kinds of a stroke.
enum koJoin : int { koJoinMiter = 0, koJoinRound = 1, koJoinBevel = 2 };

/*!
    \class koStyle
    The drawing style read by bounds, containment and hit testing.
*/
class RVGRAPHICS_EXPORT koStyle
{
public:
    //! Set by hit testing from the hit options, and by interior-point searches.
    bool flag0 = false;
    //! Set by interior-point searches.
    bool flag1 = false;
    //! Fill rule: true even-odd, false non-zero.
    bool evenOdd = false;
    double strokeWidth = 0;
    int cap = koCapButt;
    int join = koJoinMiter;
    double miterLimit = 10;

    koStyle() = default;
};

#endif // KOSTYLE_H
