#include "COutputQueue.h"

#include "Bstr.h"

namespace ZoVelkor::RemoteKernel
{

namespace
{

const wchar_t* FailureText(HRESULT result) noexcept
{
    switch (result)
    {
    case E_ABORT:
        return L"Response cancelled";
    case E_FAIL:
        return L"Response too long";
    case E_OUTOFMEMORY:
        return L"No memory for the response";
    default:
        return L"Response data missing";
    }
}

} // namespace

HRESULT COutputQueue::Write(unsigned long length, const char* text, wchar_t** error)
{
    return Append(length, text, error);
}

HRESULT COutputQueue::WriteBinary(unsigned long length, const unsigned char* data, wchar_t** error)
{
    return Append(length, data, error);
}

HRESULT COutputQueue::Append(std::size_t length, const void* bytes, wchar_t** error) noexcept
{
    HRESULT result = S_OK;
    if (length != 0)
    {
        char* place = nullptr;
        result = bytes == nullptr ? E_POINTER : Prepare(length, &place);
        if (SUCCEEDED(result))
        {
            std::memcpy(place, bytes, length);
            Commit(length);
        }
    }
    if (error != nullptr)
    {
        *error = SUCCEEDED(result) ? nullptr : SysAllocString(FailureText(result));
    }
    return result;
}

HRESULT COutputQueue::Prepare(std::size_t maxBytes, char** place) noexcept
{
    if (m_cancelled.load(std::memory_order_relaxed))
    {
        return E_ABORT;
    }
    const std::size_t separator = m_separatorPending ? 1 : 0;
    const std::size_t used = m_buffer.Size() - m_messageStart + separator;
    // Nothing follows a piece that was refused: a client could not tell that one is missing.
    if (m_refused || used > m_limit || maxBytes > m_limit - used)
    {
        m_refused = true;
        return E_FAIL;
    }
    try
    {
        *place = m_buffer.Reserve(maxBytes + separator);
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    // Only now that something follows: a query that answers nothing leaves no separator behind.
    if (separator != 0)
    {
        *(*place)++ = ';';
        m_buffer.Commit(1);
        m_separatorPending = false;
    }
    return S_OK;
}

void COutputQueue::EndMessage()
{
    if (m_dropped)
    {
        m_buffer.Truncate(m_messageStart);
        m_dropped = false;
    }
    if (m_buffer.Size() != m_messageStart)
    {
        m_buffer.Append("\n", 1);
    }
    m_messageStart = m_commandStart = m_buffer.Size();
    m_indefinite = false;
}

void COutputQueue::Clear() noexcept
{
    m_buffer.Clear();
    m_messageStart = m_commandStart = 0;
}

} // namespace ZoVelkor::RemoteKernel
