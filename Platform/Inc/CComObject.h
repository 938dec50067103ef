#pragma once

#include "CComPtr.h"
#include "Unknown.h"

#include <atomic>
#include <utility>

/// Makes a concrete component out of a base that implements interfaces: reference count, QueryInterface and
/// deletion.
///
/// QueryInterface answers IUnknown and the listed interfaces; an inherited interface is answered when it is
/// listed too. Threads: counting and QueryInterface are safe from any thread.
///
/// @tparam TBase        implements every listed interface and may have any constructor; it must not count
///                      references to itself in its constructor or destructor
/// @tparam TInterfaces  interfaces with a kInterfaceId; without any, TBase itself is the only IUnknown
template <class TBase, class... TInterfaces>
class CComObject final : public TBase
{
public:
    CComObject(const CComObject&) = delete;
    CComObject& operator=(const CComObject&) = delete;

    /// Builds the component; the returned pointer holds its only reference.
    ///
    /// @throws std::bad_alloc and whatever the constructor of TBase throws
    template <class... TArguments>
    [[nodiscard]] static CComPtr<CComObject> Create(TArguments&&... arguments)
    {
        CComPtr<CComObject> object;
        object.Attach(new CComObject(std::forward<TArguments>(arguments)...));
        return object;
    }

    /// Gives IUnknown or one of TInterfaces; compares identifiers in the order of the list.
    ///
    /// @param[out] object  the interface, counted for the caller; null on failure
    /// @return S_OK; E_NOINTERFACE; E_POINTER when object is null
    HRESULT QueryInterface(const IID& iid, void** object) override
    {
        if (object == nullptr)
        {
            return E_POINTER;
        }
        *object = nullptr;
        if (iid == IUnknown::kInterfaceId)
        {
            *object = Identity<TInterfaces...>();
        }
        else
        {
            static_cast<void>((TryInterface<TInterfaces>(iid, object) || ...));
        }
        if (*object == nullptr)
        {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    /// Counts one reference more; the result is the new count, which serves diagnosis only.
    ULONG AddRef() override { return m_references.fetch_add(1, std::memory_order_relaxed) + 1; }

    /// Counts one reference less and deletes the object with the last; the result is the new count.
    ULONG Release() override
    {
        const ULONG left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

private:
    template <class... TArguments>
    explicit CComObject(TArguments&&... arguments) : TBase(std::forward<TArguments>(arguments)...)
    {}
    ~CComObject() = default; // NOLINT(modernize-use-override): only some bases have a virtual destructor

    template <class TFirst = TBase, class...>
    IUnknown* Identity() noexcept
    {
        return static_cast<IUnknown*>(static_cast<TFirst*>(this));
    }

    template <class TInterface>
    bool TryInterface(const IID& iid, void** object) noexcept
    {
        if (iid != TInterface::kInterfaceId)
        {
            return false;
        }
        *object = static_cast<TInterface*>(this);
        return true;
    }

    std::atomic<ULONG> m_references{1};
};
