#ifndef KOREF_H
#define KOREF_H

#include <utility>

/*!
    \class koRef
    A small owning handle for the reference-counted path model (koSegment,
    koCurve, koPath, koCurveLocation): it adds a reference when it takes an
    object and releases it when it lets go, so that objects returned by the
    library (which the caller owns) are freed on every exit path.

    \code
    koRef<koPath> path(new koPath);
    path->lineTo(0, 0);
    \endcode
*/
template<typename T>
class koRef
{
public:
    koRef() = default;
    explicit koRef(T *object) : m_object(object)
    {
        if (m_object)
            m_object->addRef();
    }
    koRef(const koRef &other) : koRef(other.m_object) {}
    koRef(koRef &&other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ~koRef()
    {
        if (m_object)
            m_object->release();
    }
    koRef &operator=(koRef other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }

    T *get() const { return m_object; }
    T *operator->() const { return m_object; }
    T &operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }
    //! Lets go of the object without releasing it (its reference is the
    //! caller's to drop).
    T *take() { return std::exchange(m_object, nullptr); }

private:
    T *m_object = nullptr;
};

#endif // KOREF_H
