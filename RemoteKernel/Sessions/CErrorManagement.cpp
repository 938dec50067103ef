#include "CErrorManagement.h"

#include "Bstr.h"

#include <array>

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

std::shared_ptr<CErrorQueue> CErrorManagement::Find(long remotePath) const
{
    const std::shared_ptr<CRemotePath> path = m_paths.Find(remotePath);
    return path == nullptr ? nullptr : path->Errors();
}

HRESULT CErrorManagement::SetError(long remotePath, short code, const wchar_t* detail)
{
    const std::shared_ptr<CErrorQueue> queue = Find(remotePath);
    if (queue == nullptr)
    {
        return E_INVALIDARG;
    }
    if (code == 0)
    {
        return S_FALSE;
    }
    std::array<char, kMaxErrorText> narrow{};
    const std::size_t length = Narrow(detail, narrow);
    queue->Push(code, {narrow.data(), length});
    return S_OK;
}

HRESULT CErrorManagement::GetNextError(long remotePath, short* code, wchar_t** text)
{
    if (code == nullptr || text == nullptr)
    {
        return E_POINTER;
    }
    const std::shared_ptr<CErrorQueue> queue = Find(remotePath);
    if (queue == nullptr || *text != nullptr)
    {
        return E_INVALIDARG;
    }
    ErrorEntry entry;
    const bool found = queue->Pop(entry);
    *code = entry.code;
    *text = A2WBSTR(entry.szText, entry.length);
    return found ? S_OK : S_FALSE;
}

HRESULT CErrorManagement::GetErrorCount(long remotePath, unsigned long* count)
{
    if (count == nullptr)
    {
        return E_POINTER;
    }
    const std::shared_ptr<CErrorQueue> queue = Find(remotePath);
    *count = queue == nullptr ? 0 : queue->Count();
    return queue == nullptr ? E_INVALIDARG : S_OK;
}

HRESULT CErrorManagement::ClearErrors(long remotePath)
{
    const std::shared_ptr<CErrorQueue> queue = Find(remotePath);
    if (queue == nullptr)
    {
        return E_INVALIDARG;
    }
    queue->Clear();
    return S_OK;
}

} // namespace ZoVelkor::RemoteKernel
