#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace ZoVelkor
{
/// Counted owner of an object that is no component; the last holder frees it.
///
/// For what has no IUnknown: with that, CComPtr is the owner. Following a null pointer is undefined.
///
/// Threads: holders of the same object may be copied and released in different threads at once; one holder
/// belongs to one thread at a time. The object itself is not protected.
template <class T>
class CSharedPointer
{
public:
    /// Null.
    CSharedPointer() noexcept = default;

    /// Makes a new object out of the arguments and its first holder; throws std::bad_alloc and what the
    /// constructor of T throws.
    template <class... TArguments>
    static CSharedPointer Create(TArguments&&... arguments)
    {
        CSharedPointer pointer;
        pointer.m_object = std::make_shared<T>(std::forward<TArguments>(arguments)...);
        return pointer;
    }

    /// The object, borrowed; null when nothing is held.
    T* Get() const noexcept { return m_object.get(); }
    /// The object, which must be there.
    T& operator*() const noexcept { return *m_object; }
    /// The object's operations; it must be there.
    T* operator->() const noexcept { return m_object.get(); }
    /// Whether nothing is held.
    friend bool operator==(const CSharedPointer& left, std::nullptr_t) noexcept
    {
        return left.m_object == nullptr;
    }

    /// Lets go of the object and becomes null.
    void Release() noexcept { m_object.reset(); }

private:
    std::shared_ptr<T> m_object;
};
} // namespace ZoVelkor
