#ifndef KOSTYLE_H
#define KOSTYLE_H

#include "rvgraphics_global.h"

//! Line-cap kinds of a stroke: butt ends at the end point, round adds a half
//! disc, square extends by half the stroke width along the end tangent.
enum koCap : int { koCapButt = 0, koCapRound = 1, koCapSquare = 2 };
//! Line-join kinds of a stroke: miter extends the outer edges to their
//! crossing (cut to a bevel beyond the miter limit), round adds a disc
//! sector, bevel joins the outer corners by a straight edge.
enum koJoin : int { koJoinMiter = 0, koJoinRound = 1, koJoinBevel = 2 };

/*!
    \class koStyle
    The drawing style read by bounds, containment and hit testing.

    The stroke is centred on the path: strokeWidth is its full width, and
    miterLimit bounds the distance of a miter tip from its point in units of
    half the width, as in SVG and Qt::SvgMiterJoin: a miter between edges
    meeting at the angle a is drawn when 1 / sin(a / 2) <= miterLimit, and
    cut to a bevel otherwise. A stroke width of zero or less means no stroke.
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
    int cap = koCapButt;    //!< a koCap
    int join = koJoinMiter; //!< a koJoin
    double miterLimit = 10;

    koStyle() = default;
};

#endif // KOSTYLE_H
