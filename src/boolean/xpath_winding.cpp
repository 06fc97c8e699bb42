#include "path/xpath.h"

#include "path/kopath.h"

bool XPath::isClockwise() const
{
    koPath *first = getFirstChild();
    return first ? first->isClockwise() : false;
}
