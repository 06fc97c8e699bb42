#ifndef KONEIGHBOUR_P_H
#define KONEIGHBOUR_P_H

// Internal, not installed.

#include <QtCore/QList>

// The entry \a step places from index \a i of a path's segment or curve list:
// past either end it wraps round only in a closed path. Null for an index
// outside the list.
template<class T>
T *koCyclicNeighbour(const QList<T *> &list, int i, int step, bool closed)
{
    const int n = list.size();
    if (n == 0 || i < 0 || i >= n)
        return nullptr;
    const int j = i + step;
    if (j >= 0 && j < n)
        return list.at(j);
    return closed ? list.at(((j % n) + n) % n) : nullptr;
}

#endif // KONEIGHBOUR_P_H
