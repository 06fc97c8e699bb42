#include "path/kopath.h"

#include "boolean/komono.h"
#include "path/kocurve.h"
#include "path/kosegment.h"

double koPath::getArea(bool cached, bool isClosedArea)
{
    if (cached) {
        // 0.0 means "not computed"; a NaN counts as a stored value.
        if (m_area != 0.0)
            return m_area;
        isClosedArea = closed;
    }
    const int n = segments.size();
    const int count = isClosedArea ? n : n - 1;
    // Kept behaviour: the sum starts from the stored area, so an uncached call
    // on a path with a stored area returns the two added together.
    double area = m_area;
    for (int i = 0; i < count; ++i) {
        const koSegment *s1 = segments.at(i);
        const koSegment *s2 = segments.at(i + 1 < n ? i + 1 : 0);
        area += koCurve::getArea(koCurve::getValues(s1, s2));
    }
    if (cached)
        m_area = area;
    return area;
}

bool koPath::isClockwise()
{
    if (isFlags(Clockwise | CounterClockwise))
        return isFlags(Clockwise);
    return getArea(true, false) >= 0;
}

void koPath::clearMonos()
{
    const QList<koMono *> list = monos;
    monos.clear();
    qDeleteAll(list);
}
