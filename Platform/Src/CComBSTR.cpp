#include "CComBSTR.h"

#include "Assertion.h"
#include "CodePage.h"
#include "CodePage1252.h"
#include "TaskMemory.h"

#include <cstring>
#include <cwchar>
#include <limits>
#include <new>
#include <utility>

namespace
{
/// A copy with its whole byte length, which need not be a multiple of the character size.
BSTR CopyBytes(const wchar_t* text) noexcept
{
    return text == nullptr
               ? nullptr
               : SysAllocStringByteLen(reinterpret_cast<const char*>(text), SysStringByteLen(text));
}

/// Result of an allocation that must not give null unless there was nothing to copy.
BSTR ThrowIfMissing(BSTR allocated, const void* source)
{
    if (allocated == nullptr && source != nullptr)
    {
        throw std::bad_alloc();
    }
    return allocated;
}

UINT ToLength(int length) noexcept
{
    return length > 0 ? static_cast<UINT>(length) : 0;
}

void ThrowIfFailed(HRESULT result)
{
    if (FAILED(result))
    {
        throw std::bad_alloc();
    }
}

HRESULT AppendTo(BSTR& target, const void* bytes, std::size_t byteLength) noexcept
{
    const std::size_t oldLength = SysStringByteLen(target);
    if (byteLength > std::numeric_limits<UINT>::max() - oldLength)
    {
        return E_OUTOFMEMORY;
    }
    BSTR joined = SysAllocStringByteLen(nullptr, static_cast<UINT>(oldLength + byteLength));
    if (joined == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    char* destination = reinterpret_cast<char*>(joined);
    if (oldLength != 0)
    {
        std::memcpy(destination, target, oldLength);
    }
    if (byteLength != 0)
    {
        std::memcpy(destination + oldLength, bytes, byteLength);
    }
    SysFreeString(target);
    target = joined;
    return S_OK;
}
} // namespace

CComBSTR::CComBSTR(const char* text) : m_str(ThrowIfMissing(A2WBSTR(text), text))
{}

CComBSTR::CComBSTR(const wchar_t* text) : m_str(ThrowIfMissing(SysAllocString(text), text))
{}

CComBSTR::CComBSTR(int length) : CComBSTR(length, static_cast<const wchar_t*>(nullptr))
{}

CComBSTR::CComBSTR(int length, const wchar_t* text)
    : m_str(ThrowIfMissing(SysAllocStringLen(text, ToLength(length)), this))
{}

CComBSTR::CComBSTR(int length, const char* text)
    : m_str(ThrowIfMissing(A2WBSTR(text, static_cast<int>(ToLength(length))), text))
{}

CComBSTR::CComBSTR(const GUID& guid)
{
    wchar_t* text = nullptr;
    ThrowIfFailed(StringFromCLSID(guid, &text));
    m_str = SysAllocString(text);
    CoTaskMemFree(text);
    ThrowIfMissing(m_str, this);
}

CComBSTR::CComBSTR(const CComBSTR& other) : m_str(ThrowIfMissing(CopyBytes(other.m_str), other.m_str))
{}

CComBSTR::CComBSTR(CComBSTR&& other) noexcept : m_str(other.Detach())
{}

CComBSTR::~CComBSTR()
{
    SysFreeString(m_str);
}

CComBSTR& CComBSTR::operator=(const CComBSTR& other)
{
    if (m_str != other.m_str)
    {
        Attach(CComBSTR(other).Detach());
    }
    return *this;
}

CComBSTR& CComBSTR::operator=(CComBSTR&& other) noexcept
{
    Attach(other.Detach());
    return *this;
}

CComBSTR& CComBSTR::operator=(const wchar_t* text)
{
    Attach(CComBSTR(text).Detach());
    return *this;
}

CComBSTR& CComBSTR::operator=(const char* text)
{
    Attach(CComBSTR(text).Detach());
    return *this;
}

CComBSTR& CComBSTR::operator=(std::nullptr_t) noexcept
{
    Empty();
    return *this;
}

void CComBSTR::Attach(BSTR text) noexcept
{
    if (text != m_str)
    {
        SysFreeString(m_str);
        m_str = text;
    }
}

BSTR CComBSTR::Detach() noexcept
{
    return std::exchange(m_str, nullptr);
}

BSTR CComBSTR::Copy() const noexcept
{
    return CopyBytes(m_str);
}

HRESULT CComBSTR::CopyTo(BSTR* target) const noexcept
{
    if (target == nullptr)
    {
        return E_POINTER;
    }
    *target = Copy();
    return *target == nullptr && m_str != nullptr ? E_OUTOFMEMORY : S_OK;
}

void CComBSTR::Empty() noexcept
{
    SysFreeString(Detach());
}

HRESULT CComBSTR::Append(const CComBSTR& text) noexcept
{
    return AppendBSTR(text.m_str);
}

HRESULT CComBSTR::Append(const wchar_t* text) noexcept
{
    return text == nullptr ? S_OK : AppendTo(m_str, text, std::wcslen(text) * sizeof(wchar_t));
}

HRESULT CComBSTR::Append(const wchar_t* text, int length) noexcept
{
    if (length < 0 || (text == nullptr && length != 0))
    {
        return E_INVALIDARG;
    }
    return AppendTo(m_str, text, static_cast<std::size_t>(length) * sizeof(wchar_t));
}

HRESULT CComBSTR::Append(const char* text) noexcept
{
    CComBSTR wide;
    wide.Attach(A2WBSTR(text));
    return wide.IsNull() && text != nullptr ? E_OUTOFMEMORY : AppendBSTR(wide);
}

HRESULT CComBSTR::Append(wchar_t character) noexcept
{
    return AppendTo(m_str, &character, sizeof character);
}

HRESULT CComBSTR::Append(char character) noexcept
{
    return Append(CharacterOf1252(character));
}

HRESULT CComBSTR::AppendBSTR(const wchar_t* text) noexcept
{
    return text == nullptr ? S_OK : AppendTo(m_str, text, SysStringByteLen(text));
}

HRESULT CComBSTR::AppendBytes(const char* data, int length) noexcept
{
    if (length < 0 || (data == nullptr && length != 0))
    {
        return E_INVALIDARG;
    }
    return AppendTo(m_str, data, static_cast<std::size_t>(length));
}

HRESULT CComBSTR::AssignBSTR(const wchar_t* text) noexcept
{
    BSTR copy = CopyBytes(text);
    if (copy == nullptr && text != nullptr)
    {
        return E_OUTOFMEMORY;
    }
    SysFreeString(m_str);
    m_str = copy;
    return S_OK;
}

CComBSTR& CComBSTR::operator+=(const CComBSTR& text)
{
    ThrowIfFailed(Append(text));
    return *this;
}

CComBSTR& CComBSTR::operator+=(const wchar_t* text)
{
    ThrowIfFailed(Append(text));
    return *this;
}

CComBSTR& CComBSTR::operator+=(const char* text)
{
    ThrowIfFailed(Append(text));
    return *this;
}

HRESULT CComBSTR::ToUpper() noexcept
{
    CharUpper(m_str);
    return S_OK;
}

HRESULT CComBSTR::WriteToStream(IStream* /*stream*/) const noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}

HRESULT CComBSTR::ReadFromStream(IStream* /*stream*/) noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}

HRESULT CComBSTR::CopyToVariant(VARIANT* /*variant*/) const noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}

HRESULT CComBSTR::BSTRToArray(SAFEARRAY** /*array*/) const noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}

HRESULT CComBSTR::ArrayToBSTR(const SAFEARRAY* /*array*/) noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}
