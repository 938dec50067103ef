#pragma once

#include "Bstr.h"
#include "Guid.h"
#include "ZoExport.h"

#include <compare>
#include <cstddef>
#include <string_view>

struct IStream;
struct SAFEARRAY;
struct VARIANT;

/// Owner of one BSTR.
///
/// Null and empty are different states that compare as equal. Comparison goes over the whole length, so
/// zeros inside a text count. Constructors and assignments throw std::bad_alloc when memory is short; the
/// operations that return a result code give S_OK, or E_OUTOFMEMORY and leave the string as it was. A plain
/// pointer to wide text is read up to its terminator, unless the operation takes a length or has BSTR in
/// its name; narrow text is in code page 0.
///
/// Threads: one instance belongs to one thread at a time.
class ZO_EXPORT CComBSTR
{
public:
    /// Null.
    constexpr CComBSTR() noexcept = default;
    /// Null, said explicitly.
    constexpr CComBSTR(std::nullptr_t) noexcept {}
    /// Widens a text of code page 0; null stays null.
    CComBSTR(const char* text);
    /// Copies a text up to its terminator; null stays null.
    CComBSTR(const wchar_t* text);
    /// Makes length zeros; a negative length counts as 0.
    explicit CComBSTR(int length);
    /// Copies length characters, zeros included; a negative length counts as 0, a null text gives zeros.
    CComBSTR(int length, const wchar_t* text);
    /// Widens length bytes of code page 0.
    CComBSTR(int length, const char* text);
    /// The braced text of an identifier.
    explicit CComBSTR(const GUID& guid);
    CComBSTR(const CComBSTR& other);
    CComBSTR(CComBSTR&& other) noexcept;
    ~CComBSTR();

    CComBSTR& operator=(const CComBSTR& other);
    CComBSTR& operator=(CComBSTR&& other) noexcept;
    /// Replaces the string by a copy; null makes it null. On std::bad_alloc the former string stays.
    CComBSTR& operator=(const wchar_t* text);
    /// The same with text of code page 0.
    CComBSTR& operator=(const char* text);
    /// Frees the string and becomes null.
    CComBSTR& operator=(std::nullptr_t) noexcept;

    /// The owned string, borrowed; may be null.
    operator BSTR() const noexcept { return m_str; }
    /// True when no string is held; an empty one is held.
    [[nodiscard]] bool operator!() const noexcept { return m_str == nullptr; }
    /// Tells null from empty, which comparison does not.
    [[nodiscard]] bool IsNull() const noexcept { return m_str == nullptr; }

    /// Address for an out-parameter; what is held is freed first, so that nothing can leak.
    BSTR* operator&() noexcept
    {
        Empty();
        return &m_str;
    }

    /// Length in characters; 0 for null.
    [[nodiscard]] unsigned int Length() const noexcept { return SysStringLen(m_str); }
    /// Length in bytes; 0 for null.
    [[nodiscard]] unsigned int ByteLength() const noexcept { return SysStringByteLen(m_str); }
    /// The whole text, zeros included; empty for null.
    [[nodiscard]] std::wstring_view View() const noexcept { return {m_str, Length()}; }

    /// Takes over a string that the caller owns, null included; what was held is freed.
    void Attach(BSTR text) noexcept;
    /// Hands the string to the caller and becomes null.
    [[nodiscard]] BSTR Detach() noexcept;
    /// Gives a copy for the caller to free; null for null and when memory is short.
    [[nodiscard]] BSTR Copy() const noexcept;
    /// Stores a copy for the caller to free.
    ///
    /// @return S_OK; E_POINTER when target is null; E_OUTOFMEMORY (target is then null)
    HRESULT CopyTo(BSTR* target) const noexcept;
    /// Frees the string and becomes null.
    void Empty() noexcept;

    /// Appends the whole text, zeros included; the string itself may be appended. Null appends nothing and
    /// leaves null as it is.
    HRESULT Append(const CComBSTR& text) noexcept;
    /// Appends a text up to its terminator; null appends nothing.
    HRESULT Append(const wchar_t* text) noexcept;
    /// Appends length characters; E_INVALIDARG for a negative length or a null text with a length.
    HRESULT Append(const wchar_t* text, int length) noexcept;
    /// Appends a text of code page 0; null appends nothing.
    HRESULT Append(const char* text) noexcept;
    /// Appends one character, 0 as well.
    HRESULT Append(wchar_t character) noexcept;
    /// Appends the character that has this byte in code page 0.
    HRESULT Append(char character) noexcept;
    /// Appends a BSTR with its whole length; null appends nothing.
    HRESULT AppendBSTR(const wchar_t* text) noexcept;
    /// Appends raw bytes, not converted; E_INVALIDARG for a negative length or null data with a length.
    HRESULT AppendBytes(const char* data, int length) noexcept;
    /// Replaces the string by a copy of a BSTR with its whole length.
    HRESULT AssignBSTR(const wchar_t* text) noexcept;

    /// Appends; throws std::bad_alloc when memory is short.
    CComBSTR& operator+=(const CComBSTR& text);
    /// Appends up to the terminator; throws std::bad_alloc when memory is short.
    CComBSTR& operator+=(const wchar_t* text);
    /// Appends text of code page 0; throws std::bad_alloc when memory is short.
    CComBSTR& operator+=(const char* text);

    /// In place, up to the first zero, by the rules of CharUpper.
    HRESULT ToUpper() noexcept;

    /// @name Not supported on this platform
    /// Declared, so that code that names them compiles; a call fails the assertion "false", which ends the
    /// process.
    /// @{

    /// Would write the string to a stream.
    HRESULT WriteToStream(IStream* stream) const noexcept;
    /// Would read the string from a stream.
    HRESULT ReadFromStream(IStream* stream) noexcept;
    /// Would copy the string into a variant; CComVariant(const CComBSTR&) does.
    HRESULT CopyToVariant(VARIANT* variant) const noexcept;
    /// Would copy the bytes into an array.
    HRESULT BSTRToArray(SAFEARRAY** array) const noexcept;
    /// Would take the bytes of an array.
    HRESULT ArrayToBSTR(const SAFEARRAY* array) noexcept;
    /// @}

    friend bool operator==(const CComBSTR& left, const CComBSTR& right) noexcept
    {
        return left.View() == right.View();
    }
    friend std::strong_ordering operator<=>(const CComBSTR& left, const CComBSTR& right) noexcept
    {
        return left.View() <=> right.View();
    }
    // Both kinds of pointer are named, because the conversion to BSTR would otherwise compare addresses.

    /// Equal to a text up to its terminator; null equals empty.
    friend bool operator==(const CComBSTR& left, const wchar_t* right) noexcept
    {
        return left.View() == AsView(right);
    }
    /// The same for a text that may be changed, as a BSTR is.
    friend bool operator==(const CComBSTR& left, wchar_t* right) noexcept
    {
        return left.View() == AsView(right);
    }
    /// By character code against a text up to its terminator.
    friend std::strong_ordering operator<=>(const CComBSTR& left, const wchar_t* right) noexcept
    {
        return left.View() <=> AsView(right);
    }
    /// The same for a text that may be changed.
    friend std::strong_ordering operator<=>(const CComBSTR& left, wchar_t* right) noexcept
    {
        return left.View() <=> AsView(right);
    }
    /// Equal to a text of code page 0; widens it, so it may throw std::bad_alloc.
    friend bool operator==(const CComBSTR& left, const char* right) { return left == CComBSTR(right); }
    /// Tells whether no string is held at all.
    friend bool operator==(const CComBSTR& left, std::nullptr_t) noexcept { return left.IsNull(); }

private:
    static std::wstring_view AsView(const wchar_t* text) noexcept
    {
        return text == nullptr ? std::wstring_view() : std::wstring_view(text);
    }
    BSTR m_str = nullptr;
};
