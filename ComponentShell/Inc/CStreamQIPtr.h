#pragma once

#include "CInterfaceStream.h"
#include "Guid.h"
#include "PlatformTypes.h"
#include "Unknown.h"

namespace ZoVelkor
{
/// A pointer to an interface T that is carried to another thread: marshalled here, unmarshalled there.
///
/// Movable, not copyable; a content never fetched is released by the destructor. Threads: as
/// CInterfaceStream.
/// @tparam T     the interface
/// @tparam kIid  its identifier, where T has none of its own
template <class T, const IID* kIid = &T::kInterfaceId>
class CStreamQIPtr
{
public:
    /// Queries the object for T and puts it in; results as for CInterfaceStream::Marshal.
    [[nodiscard]] HRESULT Marshal(IUnknown* pObject) noexcept { return m_stream.Marshal(*kIid, pObject); }

    /// Takes the pointer out, for the calling thread; results as for CInterfaceStream::Unmarshal.
    ///
    /// @param[out] ppInterface  counted for the caller; null on failure
    [[nodiscard]] HRESULT Unmarshal(T** ppInterface) noexcept
    {
        void* pFound = nullptr;
        const HRESULT result = m_stream.Unmarshal(*kIid, ppInterface == nullptr ? nullptr : &pFound);
        if (ppInterface != nullptr)
        {
            *ppInterface = static_cast<T*>(pFound);
        }
        return result;
    }

    /// Whether nothing is in: not filled yet, fetched, or lost by a failure.
    bool IsEmpty() const noexcept { return m_stream.IsEmpty(); }

    /// Releases the content.
    void Clear() noexcept { m_stream.Clear(); }

private:
    CInterfaceStream m_stream;
};
} // namespace ZoVelkor
