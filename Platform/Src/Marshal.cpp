#include "Marshal.h"

#include "CComObject.h"
#include "CComPtr.h"
#include "CComQIPtr.h"
#include "CMutexLocker.h"

#include <new>
#include <utility>

namespace
{
/// The face by which a marshalling stream is told from other streams.
struct IMarshalledInterface : IUnknown
{
    static constexpr IID kInterfaceId{
        0x6A1E0E52, 0x3B5C, 0x4F0B, {0x9D, 0x41, 0x1C, 0x77, 0x20, 0xE5, 0xA8, 0x36}};

    /// Takes the packed object out; null from the second time on.
    virtual CComPtr<IUnknown> Take() = 0;

protected:
    ~IMarshalledInterface() = default;
};

class CMarshalStream : public IStream, public IMarshalledInterface
{
public:
    explicit CMarshalStream(IUnknown* object) noexcept : m_object(object) {}

    HRESULT Read(void* /*buffer*/, ULONG /*size*/, ULONG* /*readSize*/) override { return E_NOTIMPL; }
    HRESULT Write(const void* /*buffer*/, ULONG /*size*/, ULONG* /*writtenSize*/) override
    {
        return E_NOTIMPL;
    }
    HRESULT Seek(LONGLONG /*offset*/, STREAM_SEEK /*origin*/, ULONGLONG* /*position*/) override
    {
        return E_NOTIMPL;
    }
    HRESULT SetSize(ULONGLONG /*size*/) override { return E_NOTIMPL; }
    CComPtr<IUnknown> Take() override
    {
        const ZoVelkor::CMutexLocker lock(m_lock);
        return std::exchange(m_object, nullptr);
    }

protected:
    ~CMarshalStream() = default;

private:
    ZoVelkor::CMutex m_lock;
    CComPtr<IUnknown> m_object ZO_GUARDED_BY(m_lock);
};
} // namespace

HRESULT CoMarshalInterThreadInterfaceInStream(const IID& iid, IUnknown* object, IStream** stream) noexcept
try
{
    if (stream == nullptr)
    {
        return E_POINTER;
    }
    *stream = nullptr;
    if (object == nullptr)
    {
        return E_POINTER;
    }
    void* wanted = nullptr;
    if (const HRESULT result = object->QueryInterface(iid, &wanted); FAILED(result))
    {
        return result;
    }
    CComPtr<IUnknown> counted;
    counted.Attach(static_cast<IUnknown*>(wanted));
    *stream = CComObject<CMarshalStream, IStream, IMarshalledInterface>::Create(counted.Get()).Detach();
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

HRESULT CoGetInterfaceAndReleaseStream(IStream* stream, const IID& iid, void** object) noexcept
{
    if (object != nullptr)
    {
        *object = nullptr;
    }
    if (stream == nullptr)
    {
        return E_POINTER;
    }
    CComPtr<IStream> released;
    released.Attach(stream);
    if (object == nullptr)
    {
        return E_POINTER;
    }
    const CComQIPtr<IMarshalledInterface> marshalled(released);
    if (marshalled == nullptr)
    {
        return E_INVALIDARG;
    }
    const CComPtr<IUnknown> packed = marshalled->Take();
    return packed == nullptr ? E_UNEXPECTED : packed->QueryInterface(iid, object);
}
