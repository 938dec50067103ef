#include "Stream.h"

#include "CComObject.h"
#include "CMutexLocker.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <vector>

namespace
{
class CMemoryStream : public IStream
{
public:
    HRESULT Read(void* buffer, ULONG size, ULONG* readSize) override;
    HRESULT Write(const void* buffer, ULONG size, ULONG* writtenSize) override;
    HRESULT Seek(LONGLONG offset, STREAM_SEEK origin, ULONGLONG* position) override;
    HRESULT SetSize(ULONGLONG size) override;

protected:
    ~CMemoryStream() = default;

private:
    HRESULT ResizeLocked(ULONGLONG size) noexcept ZO_REQUIRES(m_lock);

    ZoVelkor::CMutex m_lock;
    std::vector<std::byte> m_bytes ZO_GUARDED_BY(m_lock);
    ULONGLONG m_position ZO_GUARDED_BY(m_lock) = 0;
};

void StoreIfWanted(auto* target, auto value) noexcept
{
    if (target != nullptr)
    {
        *target = value;
    }
}

HRESULT CMemoryStream::Read(void* buffer, ULONG size, ULONG* readSize)
{
    StoreIfWanted(readSize, 0U);
    if (buffer == nullptr)
    {
        return E_POINTER;
    }
    const ZoVelkor::CMutexLocker lock(m_lock);
    const ULONGLONG left = m_position < m_bytes.size() ? m_bytes.size() - m_position : 0;
    const auto count = static_cast<ULONG>(std::min<ULONGLONG>(size, left));
    if (count != 0)
    {
        std::memcpy(buffer, m_bytes.data() + m_position, count);
    }
    m_position += count;
    StoreIfWanted(readSize, count);
    return count == size ? S_OK : S_FALSE;
}

HRESULT CMemoryStream::Write(const void* buffer, ULONG size, ULONG* writtenSize)
{
    StoreIfWanted(writtenSize, 0U);
    if (buffer == nullptr)
    {
        return E_POINTER;
    }
    if (size == 0)
    {
        return S_OK;
    }
    const ZoVelkor::CMutexLocker lock(m_lock);
    const ULONGLONG end = m_position + size;
    if (end > m_bytes.size())
    {
        if (const HRESULT result = ResizeLocked(end); FAILED(result))
        {
            return result;
        }
    }
    std::memcpy(m_bytes.data() + m_position, buffer, size);
    m_position = end;
    StoreIfWanted(writtenSize, size);
    return S_OK;
}

HRESULT CMemoryStream::Seek(LONGLONG offset, STREAM_SEEK origin, ULONGLONG* position)
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    ULONGLONG base = 0;
    switch (origin)
    {
    case STREAM_SEEK_SET:
        break;
    case STREAM_SEEK_CUR:
        base = m_position;
        break;
    case STREAM_SEEK_END:
        base = m_bytes.size();
        break;
    default:
        return E_INVALIDARG;
    }
    LONGLONG target = 0;
    if (__builtin_add_overflow(base, offset, &target) || target < 0)
    {
        return E_INVALIDARG;
    }
    m_position = static_cast<ULONGLONG>(target);
    StoreIfWanted(position, m_position);
    return S_OK;
}

HRESULT CMemoryStream::SetSize(ULONGLONG size)
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    return ResizeLocked(size);
}

HRESULT CMemoryStream::ResizeLocked(ULONGLONG size) noexcept
try
{
    m_bytes.resize(size);
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
catch (const std::length_error&)
{
    return E_OUTOFMEMORY;
}
} // namespace

HRESULT CreateMemoryStream(IStream** stream) noexcept
try
{
    if (stream == nullptr)
    {
        return E_POINTER;
    }
    *stream = nullptr;
    *stream = CComObject<CMemoryStream, IStream>::Create().Detach();
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
