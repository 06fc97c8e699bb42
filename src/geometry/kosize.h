#ifndef KOSIZE_H
#define KOSIZE_H

#include "rvgraphics_global.h"

/*!
    \class koSize
    A width/height pair in double precision (for example the radii of
    koPath::arcTo, or koRect::size()). It carries values only.
*/
class RVGRAPHICS_EXPORT koSize
{
public:
    double width = 0;
    double height = 0;

    koSize() = default;
    koSize(double w, double h) : width(w), height(h) {}
};

Q_DECLARE_TYPEINFO(koSize, Q_PRIMITIVE_TYPE);

#endif // KOSIZE_H
