#include "CErrorManagement.h"

#include "Bstr.h"

#include <array>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

namespace
{

/// The part of a detail text that an entry can hold; what is not ASCII becomes '?'.
std::size_t Narrow(const wchar_t* text, std::array<char, kMaxErrorText>& narrow) noexcept
{
    std::size_t length = 0;
    while (text != nullptr && text[length] != L'\0' && length < narrow.size())
    {
        narrow[length] = text[length] > 0 && text[length] < 0x80 ? static_cast<char>(text[length]) : '?';
        ++length;
    }
    return length;
}

} // namespace

std::shared_ptr<CErrorQueue> CErrorManagement::Find(long remotePath)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_queues.find(remotePath);
    return found == m_queues.end() ? nullptr : found->second;
}

HRESULT CErrorManagement::SetError(long remotePath, short code, wchar_t const* detail)
{
    const std::shared_ptr<CErrorQueue> spQueue = Find(remotePath);
    if (spQueue == nullptr)
    {
        return E_INVALIDARG;
    }
    if (code == 0)
    {
        return S_FALSE;
    }
    std::array<char, kMaxErrorText> narrow{};
    const std::size_t length = Narrow(detail, narrow);
    spQueue->Push(code, {narrow.data(), length});
    return S_OK;
}

HRESULT CErrorManagement::GetNextError(long remotePath, short* code, wchar_t** text)
{
    if (code == nullptr || text == nullptr)
    {
        return E_POINTER;
    }
    const std::shared_ptr<CErrorQueue> spQueue = Find(remotePath);
    if (spQueue == nullptr || *text != nullptr)
    {
        return E_INVALIDARG;
    }
    tagErrorEntry entry;
    const bool bFound = spQueue->Pop(entry);
    *code = entry.iCode;
    *text = A2WBSTR(entry.szText, entry.iLength);
    return bFound ? S_OK : S_FALSE;
}

HRESULT CErrorManagement::GetErrorCount(long remotePath, unsigned long* count)
{
    if (count == nullptr)
    {
        return E_POINTER;
    }
    const std::shared_ptr<CErrorQueue> spQueue = Find(remotePath);
    *count = spQueue == nullptr ? 0 : spQueue->Count();
    return spQueue == nullptr ? E_INVALIDARG : S_OK;
}

HRESULT CErrorManagement::ClearErrors(long remotePath)
{
    const std::shared_ptr<CErrorQueue> spQueue = Find(remotePath);
    if (spQueue == nullptr)
    {
        return E_INVALIDARG;
    }
    spQueue->Clear();
    return S_OK;
}

void CErrorManagement::AddPath(long remotePath, std::shared_ptr<CErrorQueue> spQueue)
{
    const std::lock_guard lock(m_mutex);
    m_queues[remotePath] = std::move(spQueue);
}

void CErrorManagement::RemovePath(long remotePath) noexcept
{
    const std::lock_guard lock(m_mutex);
    m_queues.erase(remotePath);
}

} // namespace ZoVelkor::RemoteKernel
