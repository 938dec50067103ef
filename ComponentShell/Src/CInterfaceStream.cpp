#include "CInterfaceStream.h"

#include "ErrorRaising.h"
#include "Marshal.h"

#include <utility>

namespace ZoVelkor
{
namespace
{
ZO_SOURCE_UNIT("ComponentShell/Src/CInterfaceStream");
} // namespace

CInterfaceStream::CInterfaceStream(CInterfaceStream&& other) noexcept
    : m_stream(std::exchange(other.m_stream, nullptr))
{}

CInterfaceStream& CInterfaceStream::operator=(CInterfaceStream&& other) noexcept
{
    if (this != &other)
    {
        Clear();
        m_stream = std::exchange(other.m_stream, nullptr);
    }
    return *this;
}

CInterfaceStream::~CInterfaceStream()
{
    Clear();
}

HRESULT CInterfaceStream::Marshal(const IID& iid, IUnknown* pObject) noexcept
{
    Clear();
    if (pObject == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "pObject"));
    }
    return CoMarshalInterThreadInterfaceInStream(iid, pObject, &m_stream);
}

HRESULT CInterfaceStream::Unmarshal(const IID& iid, void** ppInterface) noexcept
{
    if (ppInterface == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "ppInterface"));
    }
    *ppInterface = nullptr;
    if (IsEmpty())
    {
        return S_FALSE;
    }
    // Given up first: the call releases the stream whether it succeeds or not.
    return CoGetInterfaceAndReleaseStream(std::exchange(m_stream, nullptr), iid, ppInterface);
}

void CInterfaceStream::Clear() noexcept
{
    if (m_stream != nullptr)
    {
        m_stream->Release();
        m_stream = nullptr;
    }
}
} // namespace ZoVelkor
