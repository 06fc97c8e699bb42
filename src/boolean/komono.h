#ifndef KOMONO_H
#define KOMONO_H

#include "rvgraphics_global.h"

#include <QtCore/QVector>

/*!
    \class koMono
    One y-monotone piece of a curve, as used by winding-number queries.
    \c winding is 0 for a horizontal piece, -1 when the piece runs upwards in
    value (first y greater than last y) and +1 otherwise. \c last is set only
    on the first piece of a path: the path's last piece with a non-zero
    winding (null if none). Pieces are owned by their path's cache.
*/
class RVGRAPHICS_EXPORT koMono
{
public:
    QVector<double> values; //!< the eight curve values of the piece
    int winding = 0;
    koMono *last = nullptr;

    koMono() = default;
    koMono(const QVector<double> &v, int w) : values(v), winding(w) {}
};

#endif // KOMONO_H
