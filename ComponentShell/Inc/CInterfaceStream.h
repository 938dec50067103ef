#pragma once

#include "Guid.h"
#include "PlatformTypes.h"
#include "Stream.h"
#include "Unknown.h"
#include "ZoExport.h"

namespace ZoVelkor
{
/// An interface on its way to another thread: a stream with one marshalled interface, or nothing.
///
/// The stream keeps the object alive. Use CStreamQIPtr, which knows the interface's type.
/// Threads: one at a time; the object is filled in one thread and emptied in another.
class ZO_EXPORT CInterfaceStream
{
public:
    /// With nothing in.
    CInterfaceStream() = default;
    CInterfaceStream(CInterfaceStream&& other) noexcept;
    CInterfaceStream& operator=(CInterfaceStream&& other) noexcept;
    CInterfaceStream(const CInterfaceStream&) = delete;
    CInterfaceStream& operator=(const CInterfaceStream&) = delete;
    /// Releases what was never fetched.
    ~CInterfaceStream();

    /// Puts an interface of the object in; what was in before is released.
    ///
    /// @return S_OK; E_POINTER (reported) for null; E_NOINTERFACE when the object does not have the
    ///         interface; else the result of the marshalling. Empty after a failure.
    [[nodiscard]] HRESULT Marshal(const IID& iid, IUnknown* pObject) noexcept;

    /// Takes the interface out, for the calling thread.
    ///
    /// @param[out] ppInterface  counted for the caller; null on failure
    /// @return S_OK; S_FALSE when nothing is in; E_POINTER (reported) for null, with the content kept; else
    ///         the result of the unmarshalling, with the content lost
    [[nodiscard]] HRESULT Unmarshal(const IID& iid, void** ppInterface) noexcept;

    /// Whether nothing is in: not filled yet, fetched, or lost by a failure.
    bool IsEmpty() const noexcept { return m_stream == nullptr; }

    /// Releases the content.
    void Clear() noexcept;

private:
    IStream* m_stream = nullptr; // owned; handed over whole to CoGetInterfaceAndReleaseStream
};
} // namespace ZoVelkor
