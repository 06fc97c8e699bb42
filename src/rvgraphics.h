#ifndef RVGRAPHICS_H
#define RVGRAPHICS_H

// Umbrella header: everything the library offers.

#include "rvgraphics_global.h"

#include "geometry/kotolerance.h"
#include "geometry/kopoint.h"
#include "geometry/kosize.h"
#include "geometry/korect.h"
#include "geometry/komatrix.h"
#include "geometry/koline.h"
#include "geometry/kobezier.h"
#include "geometry/konumeric.h"

#include "path/koref.h"
#include "path/kosegment.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/xpath.h"

#include "curve/kocurvelocation.h"
#include "curve/koopparam.h"

#include "boolean/koboundopt.h"
#include "boolean/kohitopt.h"
#include "boolean/kohitresult.h"
#include "boolean/komono.h"
#include "boolean/kostyle.h"
#include "boolean/kowinding.h"

#include "rvpath/rvpathelement.h"
#include "rvpath/rvpath.h"
#include "rvpath/rvcurve.h"

#include "noise/noise.h"

#endif // RVGRAPHICS_H
