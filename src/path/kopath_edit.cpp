#include "path/kopath.h"

#include "path/kosegment.h"

#include <algorithm>

void koPath::reverse()
{
    std::reverse(segments.begin(), segments.end());
    for (int i = 0; i < segments.size(); ++i) {
        koSegment *segment = segments.at(i);
        segment->index = i;
        // Running backwards, what came in now goes out.
        std::swap(segment->handleIn, segment->handleOut);
    }
    // Every curve now runs the other way between other segments; the list is
    // rebuilt on demand.
    clearCurves();
    if (isFlags(Clockwise | CounterClockwise))
        flags ^= Clockwise | CounterClockwise;
    _changed();
}
