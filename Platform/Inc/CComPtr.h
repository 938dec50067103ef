#pragma once

#include "Assertion.h"
#include "Unknown.h"

#include <concepts>
#include <cstddef>
#include <utility>

/// Owner of one reference to an interface or component.
///
/// A borrowed pointer goes in by construction or assignment and is counted; a pointer that is already
/// counted goes in by Attach or through operator&. Following a null pointer is a mistake of the program and
/// ends it (ZO_ASSERT). Whatever releases may destroy the object, which then runs code of its own: no lock
/// of the caller's should be held that this code needs.
///
/// Threads: one instance belongs to one thread at a time; the counting itself is the object's business.
/// @tparam T  has AddRef and Release; an interface, or a component made by CComObject
template <class T>
class CComPtr
{
public:
    /// What the pointer points to, for generic code.
    using element_type = T;

    constexpr CComPtr() noexcept = default;
    /// Null, said explicitly.
    constexpr CComPtr(std::nullptr_t) noexcept {}
    /// Takes a reference of its own to a borrowed object; null is allowed.
    CComPtr(T* pointer) noexcept : m_pointer(pointer)
    {
        if (m_pointer != nullptr)
        {
            m_pointer->AddRef();
        }
    }
    CComPtr(const CComPtr& other) noexcept : CComPtr(other.m_pointer) {}
    CComPtr(CComPtr&& other) noexcept : m_pointer(other.Detach()) {}
    /// The same from a derived interface or component.
    template <class U>
    requires(std::convertible_to<U*, T*> && !std::same_as<U, T>) CComPtr(U* pointer)
    noexcept : CComPtr(static_cast<T*>(pointer)) {}
    /// Shares the object of a pointer to a derived interface or component.
    template <class U>
    requires std::convertible_to<U*, T*> CComPtr(const CComPtr<U>& other)
    noexcept : CComPtr(static_cast<T*>(other.Get())) {}
    /// Takes the reference of such a pointer over, which becomes null.
    template <class U>
    requires std::convertible_to<U*, T*> CComPtr(CComPtr<U>&& other)
    noexcept : m_pointer(other.Detach()) {}
    ~CComPtr() { Release(); }

    CComPtr& operator=(const CComPtr& other) noexcept
    {
        CComPtr copy(other);
        return *this = std::move(copy);
    }
    CComPtr& operator=(CComPtr&& other) noexcept
    {
        CComPtr taken(std::move(other));
        std::swap(m_pointer, taken.m_pointer);
        return *this;
    }

    /// The borrowed pointer; may be null.
    [[nodiscard]] T* Get() const noexcept { return m_pointer; }
    /// The borrowed pointer, implicitly; null tests and comparisons go through it.
    operator T*() const noexcept { return m_pointer; }
    /// The object; the pointer must not be null.
    T& operator*() const noexcept
    {
        ZO_ASSERT(m_pointer != nullptr);
        return *m_pointer;
    }
    /// The object's operations; the pointer must not be null.
    T* operator->() const noexcept
    {
        ZO_ASSERT(m_pointer != nullptr);
        return m_pointer;
    }

    /// Address for an out-parameter; what is held is released first, so that nothing can leak.
    T** operator&() noexcept
    {
        Release();
        return &m_pointer;
    }

    /// Lets go of the reference and becomes null.
    ///
    /// Becomes null first: a destructor that comes back to this pointer finds nothing.
    void Release() noexcept
    {
        if (T* former = std::exchange(m_pointer, nullptr); former != nullptr)
        {
            former->Release();
        }
    }

    /// Takes over a reference that the caller owns; what was held is released.
    void Attach(T* pointer) noexcept
    {
        Release();
        m_pointer = pointer;
    }

    /// Hands the reference to the caller and becomes null.
    [[nodiscard]] T* Detach() noexcept { return std::exchange(m_pointer, nullptr); }

    /// Stores a further reference for a caller.
    ///
    /// @param[out] target  the pointer, null included; what stood there is overwritten and not released
    /// @return S_OK, also for null; E_POINTER when target is null
    HRESULT CopyTo(T** target) const noexcept
    {
        if (target == nullptr)
        {
            return E_POINTER;
        }
        *target = m_pointer;
        if (m_pointer != nullptr)
        {
            m_pointer->AddRef();
        }
        return S_OK;
    }

    /// Fetches the interface Q of the same object, counted for the caller.
    ///
    /// @param[out] target  null on failure
    /// @return as IUnknown::QueryInterface; E_POINTER when this pointer or target is null
    template <class Q>
    HRESULT QueryInterface(Q** target) const
    {
        if (target == nullptr)
        {
            return E_POINTER;
        }
        *target = nullptr;
        if (m_pointer == nullptr)
        {
            return E_POINTER;
        }
        void* object = nullptr;
        const HRESULT result = m_pointer->QueryInterface(Q::kInterfaceId, &object);
        *target = static_cast<Q*>(object);
        return result;
    }

    /// Tells whether both pointers lead to the same object, whatever their interfaces; null equals null.
    [[nodiscard]] bool IsEqualObject(IUnknown* other) const
    {
        if (m_pointer == nullptr || other == nullptr)
        {
            return m_pointer == nullptr && other == nullptr;
        }
        CComPtr<IUnknown> mine;
        CComPtr<IUnknown> theirs;
        return SUCCEEDED(QueryInterface(&mine)) &&
               SUCCEEDED(CComPtr<IUnknown>(other).QueryInterface(&theirs)) && mine.Get() == theirs.Get();
    }

private:
    T* m_pointer = nullptr;
};
