// Placeholder; replaced once the path model exists.
#include "rvgraphics.h"
#include <cstdio>
int main()
{
    koRect r(koPoint(5, 1), koPoint(1, 5));
    std::printf("%s\n", qPrintable(r.toString()));
    return 0;
}
