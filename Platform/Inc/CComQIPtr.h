#pragma once

#include "CComPtr.h"

#include <concepts>
#include <cstddef>
#include <utility>

/// CComPtr that fetches its interface from whatever pointer it is given; null when the object lacks it.
///
/// The result of the query is not kept: whoever needs the reason calls QueryInterface.
/// @tparam T             interface that is fetched
/// @tparam TInterfaceId  its identifier, where T has none of its own
template <class T, const IID* TInterfaceId = &T::kInterfaceId>
class CComQIPtr : public CComPtr<T>
{
public:
    constexpr CComQIPtr() noexcept = default;
    /// Null, said explicitly.
    constexpr CComQIPtr(std::nullptr_t) noexcept {}
    /// Takes a reference of its own; the type is right, so nothing is queried.
    CComQIPtr(T* pointer) noexcept : CComPtr<T>(pointer) {}
    /// Shares the object without a query.
    CComQIPtr(const CComPtr<T>& other) noexcept : CComPtr<T>(other) {}
    /// Takes the reference over without a query.
    CComQIPtr(CComPtr<T>&& other) noexcept : CComPtr<T>(std::move(other)) {}
    /// Queries a borrowed object for the interface; null stays null.
    template <class U>
    requires(!std::same_as<U, T>) CComQIPtr(U* pointer) { Query(pointer); }
    /// Queries the object of another pointer, which keeps its own reference.
    template <class U>
    requires(!std::same_as<U, T>) CComQIPtr(const CComPtr<U>& other) { Query(other.Get()); }

private:
    template <class U>
    void Query(U* pointer)
    {
        if (pointer == nullptr)
        {
            return;
        }
        void* object = nullptr;
        if (SUCCEEDED(pointer->QueryInterface(*TInterfaceId, &object)))
        {
            this->Attach(static_cast<T*>(object));
        }
    }
};
