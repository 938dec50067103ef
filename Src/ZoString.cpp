#include "ZoString.h"

#include "Assertion.h"
#include "Bstr.h"
#include "CodePage.h"
#include "ErrorRaising.h"
#include "NarrowText.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

namespace ZoVelkor
{

namespace
{

ZO_SOURCE_UNIT("Src/ZoString");

/// A copy of a BSTR with its whole length; null for null.
wchar_t* CopyOf(const wchar_t* text) noexcept
{
    return text == nullptr ? nullptr : SysAllocStringLen(text, SysStringLen(text));
}

} // namespace

CZoString::CZoString(const char* text) noexcept : m_str(A2WBSTR(text))
{}

CZoString::CZoString(const std::string& text) noexcept : CZoString(text.c_str())
{}

CZoString::CZoString(const wchar_t* text) noexcept : m_str(SysAllocString(text))
{}

CZoString::CZoString(const CZoString& other) noexcept : m_str(CopyOf(other.m_str))
{}

CZoString::CZoString(CZoString&& other) noexcept : m_str(other.DetachBSTR())
{}

CZoString::CZoString(const CComBSTR& text) noexcept : m_str(CopyOf(text))
{}

CZoString::~CZoString()
{
    SysFreeString(m_str);
}

wchar_t* CZoString::FromCharacter(char character) noexcept
{
    const char text[] = {character, '\0'};
    return A2WBSTR(text);
}

CZoString& CZoString::Adopt(wchar_t* text) noexcept
{
    SysFreeString(std::exchange(m_str, text));
    return *this;
}

CZoString& CZoString::operator=(const char* text) noexcept
{
    Adopt(A2WBSTR(text));
    return *this;
}

CZoString& CZoString::operator=(const std::string& text) noexcept
{
    Adopt(A2WBSTR(text.c_str()));
    return *this;
}

CZoString& CZoString::operator=(char character) noexcept
{
    Adopt(FromCharacter(character));
    return *this;
}

CZoString& CZoString::operator=(const wchar_t* text) noexcept
{
    Adopt(SysAllocString(text));
    return *this;
}

CZoString& CZoString::operator=(const CZoString& other) noexcept
{
    if (this != std::addressof(other))
    {
        Adopt(CopyOf(other.m_str));
    }
    return *this;
}

CZoString& CZoString::operator=(CZoString&& other) noexcept
{
    if (this != std::addressof(other))
    {
        Adopt(other.DetachBSTR());
    }
    return *this;
}

CZoString& CZoString::operator=(const CComBSTR& text) noexcept
{
    const wchar_t* source = text;
    if (source != m_str)
    {
        Adopt(CopyOf(source));
    }
    return *this;
}

void CZoString::AttachBSTR(wchar_t* text) noexcept
{
    ZO_ASSERT(m_str == __null); // NOLINT(modernize-use-nullptr): the wording of the assertion is fixed
    m_str = text;
}

wchar_t* CZoString::DetachBSTR() noexcept
{
    return std::exchange(m_str, nullptr);
}

HRESULT CZoString::AssignBSTR(const wchar_t* text) noexcept
{
    Adopt(CopyOf(text));
    // Deliberate: no failure when memory is short; callers ask IsNull.
    return S_OK;
}

wchar_t* CZoString::CopyBSTR() const noexcept
{
    return CopyOf(m_str);
}

CComBSTR CZoString::ToCComBSTR() const
{
    return m_str == nullptr ? CComBSTR() : CComBSTR(static_cast<int>(Length()), m_str);
}

void CZoString::Clear() noexcept
{
    Adopt(nullptr);
}

// NOLINTBEGIN(readability-convert-member-functions-to-static): operations of the string, supported or not
HRESULT CZoString::WriteToStream(IStream*) const noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}

HRESULT CZoString::ReadFromStream(IStream*) noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}

HRESULT CZoString::CopyToVariant(VARIANT*) const noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}

HRESULT CZoString::BSTRToArray(SAFEARRAY**) const noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}

HRESULT CZoString::ArrayToBSTR(const SAFEARRAY*) noexcept
{
    ZO_ASSERT(false);
    return E_NOTIMPL;
}
// NOLINTEND(readability-convert-member-functions-to-static)

HRESULT CZoString::AppendCharacters(const wchar_t* text, std::size_t count) noexcept
{
    const std::size_t oldLength = Length();
    if (oldLength + count > std::numeric_limits<UINT>::max())
    {
        return E_OUTOFMEMORY;
    }
    wchar_t* joined = SysAllocStringLen(nullptr, static_cast<UINT>(oldLength + count));
    if (joined == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    if (oldLength > 0)
    {
        std::wmemcpy(joined, m_str, oldLength);
    }
    if (count > 0)
    {
        std::wmemcpy(joined + oldLength, text, count);
    }
    joined[oldLength + count] = L'\0';
    Adopt(joined);
    return S_OK;
}

HRESULT CZoString::AppendRun(std::size_t count) noexcept
{
    if (count > std::numeric_limits<UINT>::max())
    {
        return E_OUTOFMEMORY;
    }
    CZoString run;
    run.m_str = SysAllocStringLen(nullptr, static_cast<UINT>(count));
    return run.IsNull() ? E_OUTOFMEMORY : Append(run);
}

HRESULT CZoString::Append(const CZoString& text) noexcept
{
    return AppendCharacters(text.m_str, text.Length());
}

HRESULT CZoString::Append(const CComBSTR& text) noexcept
{
    return AppendBSTR(text);
}

HRESULT CZoString::AppendBSTR(const wchar_t* text) noexcept
{
    return AppendCharacters(text, SysStringLen(text));
}

HRESULT CZoString::Append(const wchar_t* text) noexcept
{
    return AppendCharacters(text, text == nullptr ? 0 : std::wcslen(text));
}

HRESULT CZoString::Append(const wchar_t* text, int count) noexcept
{
    return AppendCharacters(text, text == nullptr || count < 0 ? 0 : static_cast<std::size_t>(count));
}

HRESULT CZoString::Append(const char* text) noexcept
{
    // Null comes of a null text and of a lack of memory alike; only the latter is a failure.
    const CZoString wide(text);
    return text != nullptr && wide.IsNull() ? E_OUTOFMEMORY : Append(wide);
}

HRESULT CZoString::Append(char character) noexcept
{
    // Deliberate: the code is a length, callers reserve room for a text with it.
    return AppendRun(static_cast<unsigned char>(character));
}

HRESULT CZoString::Append(wchar_t character) noexcept
{
    // Deliberate: the code is a length, as for char.
    return AppendRun(static_cast<std::make_unsigned_t<wchar_t>>(character));
}

HRESULT CZoString::AppendBytes(const char* data, int count) noexcept
{
    const std::size_t added = data == nullptr || count < 0 ? 0 : static_cast<std::size_t>(count);
    const std::size_t oldSize = SysStringByteLen(m_str);
    if (oldSize + added > std::numeric_limits<UINT>::max())
    {
        return E_OUTOFMEMORY;
    }
    wchar_t* joined = SysAllocStringByteLen(nullptr, static_cast<UINT>(oldSize + added));
    if (joined == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    char* bytes = reinterpret_cast<char*>(joined);
    if (oldSize > 0)
    {
        std::memcpy(bytes, m_str, oldSize);
    }
    if (added > 0)
    {
        std::memcpy(bytes + oldSize, data, added);
    }
    Adopt(joined);
    return S_OK;
}

CZoString& CZoString::operator+=(const CZoString& text) noexcept
{
    Append(text);
    return *this;
}

CZoString& CZoString::operator+=(const CComBSTR& text) noexcept
{
    Append(text);
    return *this;
}

CZoString& CZoString::operator+=(const wchar_t* text) noexcept
{
    Append(text);
    return *this;
}

CZoString& CZoString::operator+=(const char* text) noexcept
{
    Append(text);
    return *this;
}

CZoString& CZoString::operator+=(const std::string& text) noexcept
{
    Append(text.c_str());
    return *this;
}

CZoString& CZoString::operator+=(char character) noexcept
{
    Append(character);
    return *this;
}

std::string CZoString::ToStdString() const
{
    if (IsNull())
    {
        return {};
    }
    return WithNarrowText(m_str, [](const char* text) { return std::string(text); });
}

CZoString& CZoString::sprintf(const char* format, ...)
{
    char buffer[1000];
    buffer[0] = '\0';
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return *this = static_cast<const char*>(buffer);
}

CZoString& CZoString::ConvertToUpper() noexcept
{
    return Adopt(SysAllocString(CharUpper(m_str)));
}

CZoString& CZoString::ConvertToLower() noexcept
{
    return Adopt(SysAllocString(CharLower(m_str)));
}

CZoString CZoString::Upper() const noexcept
{
    CZoString copy(*this);
    copy.ConvertToUpper();
    return copy;
}

CZoString CZoString::Lower() const noexcept
{
    CZoString copy(*this);
    copy.ConvertToLower();
    return copy;
}

bool ZoStringEqual(const wchar_t* left, const wchar_t* right) noexcept
{
    return left == nullptr || right == nullptr ? left == right : std::wcscmp(left, right) == 0;
}

bool ZoStringLess(const wchar_t* left, const wchar_t* right) noexcept
{
    return left == nullptr || right == nullptr ? right != left && left == nullptr
                                               : std::wcscmp(left, right) < 0;
}

bool ZoStringGreater(const wchar_t* left, const wchar_t* right) noexcept
{
    return left == nullptr || right == nullptr ? right != left && left == nullptr
                                               : std::wcscmp(left, right) > 0;
}

void ZOStringListConv(wchar_t** pbsDest, const CArrayAccessor<CZoString>& zoSourceList, long iElementCount)
{
    if (pbsDest == nullptr)
    {
        ThrowError(ZO_NULL_POINTER(nullptr, "pbsDest"));
    }
    if (zoSourceList.GetSize() < static_cast<unsigned long>(iElementCount))
    {
        ThrowError(ZO_ERROR(nullptr,
                            "zoSourceList.GetSize() >= static_cast<unsigned long>( iElementCount )",
                            "String list has " + std::to_string(zoSourceList.GetSize()) + " elements, " +
                                std::to_string(iElementCount) + " are wanted",
                            ZO_E_SHELL));
    }
    for (long i = 0; i < iElementCount; ++i)
    {
        pbsDest[i] = zoSourceList[static_cast<unsigned long>(i)].CopyBSTR();
    }
}

void ZOStringListConv(CArrayAccessor<CZoString>& zoDestList, wchar_t** pbsSource, long iElementCount)
{
    if (pbsSource == nullptr)
    {
        ThrowError(ZO_NULL_POINTER(nullptr, "pbsSource"));
    }
    if (iElementCount < 0)
    {
        ThrowError(ZO_ERROR(nullptr,
                            "iElementCount >= 0",
                            "String list of " + std::to_string(iElementCount) + " elements",
                            ZO_E_SHELL));
    }
    CArrayAccessor<CZoString> list;
    list.SetSize(static_cast<unsigned long>(iElementCount));
    for (long i = 0; i < iElementCount; ++i)
    {
        list[static_cast<unsigned long>(i)].AssignBSTR(pbsSource[i]);
    }
    zoDestList = std::move(list);
}

} // namespace ZoVelkor
