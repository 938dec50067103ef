#pragma once

#include "CComPtr.h"

#include <concepts>
#include <cstddef>
#include <utility>

/// CComPtr that fetches its interface from whatever pointer it is given; null when the object lacks it.
template <class T, const IID* TInterfaceId = &T::kInterfaceId>
class CComQIPtr : public CComPtr<T>
{
public:
    constexpr CComQIPtr() noexcept = default;
    constexpr CComQIPtr(std::nullptr_t) noexcept {}
    CComQIPtr(T* pointer) noexcept : CComPtr<T>(pointer) {}
    CComQIPtr(const CComPtr<T>& other) noexcept : CComPtr<T>(other) {}
    CComQIPtr(CComPtr<T>&& other) noexcept : CComPtr<T>(std::move(other)) {}
    template <class U>
    requires(!std::same_as<U, T>) CComQIPtr(U* pointer) { Query(pointer); }
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
