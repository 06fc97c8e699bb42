// A program that uses the installed library the way an application does.
#ifdef CONSUMER_PREFIXED_INCLUDE
#include <rvgraphics/rvgraphics.h>
#else
#include "rvgraphics.h"
#endif

#include <cstdio>

int main()
{
    // (a, b, c, d, tx, ty): (x, y) -> (a*x + c*y + tx, b*x + d*y + ty)
    const koMatrix m(2, 0, 0, 3, 10, 20);
    const koPoint p = m.transformPoint(koPoint(1, 1));
    const koRect r(koPoint(5, 1), koPoint(1, 5));
    std::printf("point %g %g area %g version %s\n", p.x, p.y, r.getArea(), RVGRAPHICS_VERSION_STR);
    return 0;
}
