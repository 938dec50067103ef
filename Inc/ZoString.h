#pragma once

#include "CArrayAccessor.h"
#include "CComBSTR.h"
#include "PlatformTypes.h"
#include "ZoExport.h"

#include <concepts>
#include <string>
#include <type_traits>

struct IStream;
struct SAFEARRAY;
struct VARIANT;

namespace ZoVelkor
{

/// The string that the components pass around: owner of one BSTR, as large as a pointer.
///
/// Null and empty are different states. Every change allocates a BSTR of exactly the new length; nothing is
/// shared between instances and no capacity kept in reserve. Where memory is short a string becomes null,
/// unless an operation says otherwise.
///
/// Storage, appending and comparing work on the wide text. The text operations (Find to Fill) go through
/// 8-bit text: characters that code page 0 cannot hold become '?' there, and a text ends at its first zero.
/// They follow QString of Qt 3.3 and have its defaults. Narrow texts are always in code page 0.
///
/// `long` and `unsigned long` carry 32-bit values. Threads: like a plain value; readers may share one.
class ZO_EXPORT CZoString
{
public:
    /// Null.
    CZoString() noexcept = default;
    /// Widened text; null for null.
    CZoString(const char* text) noexcept;
    /// Widened text up to its first zero.
    CZoString(const std::string& text) noexcept;
    /// One character; empty, not null, for '\0'. Takes no number: an index is not a text.
    CZoString(std::same_as<char> auto character) noexcept : m_str(FromCharacter(character)) {}
    /// Copy up to the terminator; null for null.
    CZoString(const wchar_t* text) noexcept;
    CZoString(const CZoString& other) noexcept;
    /// Takes the text over and leaves null.
    CZoString(CZoString&& other) noexcept;
    /// Copy of the whole text, zeros included; null for null.
    CZoString(const CComBSTR& text) noexcept;
    ~CZoString();

    /// Replaces the text as the constructor of the same parameter makes one.
    CZoString& operator=(const char* text) noexcept;
    CZoString& operator=(const std::string& text) noexcept;
    CZoString& operator=(char character) noexcept;
    CZoString& operator=(const wchar_t* text) noexcept;
    CZoString& operator=(const CZoString& other) noexcept;
    CZoString& operator=(CZoString&& other) noexcept;
    CZoString& operator=(const CComBSTR& text) noexcept;

    /// @name The owned BSTR
    /// @{

    /// The owned BSTR itself, borrowed; may be null.
    operator wchar_t*() const noexcept { return m_str; }
    /// Address for an out-parameter; the string must be null, for what it holds would be lost.
    wchar_t** operator&() noexcept { return &m_str; }
    /// Takes over a BSTR. Aborts with the failed assertion "m_str == __null" unless the string is null.
    void AttachBSTR(wchar_t* text) noexcept;
    /// Gives the BSTR to the caller, who frees it, and becomes null.
    [[nodiscard]] wchar_t* DetachBSTR() noexcept;
    /// Replaces the value by a copy of a BSTR with its whole length; null for null.
    ///
    /// @return S_OK, also when memory is short
    HRESULT AssignBSTR(const wchar_t* text) noexcept;
    /// A copy that the caller frees; null for null.
    [[nodiscard]] wchar_t* CopyBSTR() const noexcept;
    /// A copy. Throws std::bad_alloc when memory is short.
    CComBSTR ToCComBSTR() const;
    /// Frees the text and becomes null.
    void Clear() noexcept;
    /// Tells null from empty.
    [[nodiscard]] bool IsNull() const noexcept { return m_str == nullptr; }
    /// Number of characters, 0 for null.
    [[nodiscard]] unsigned int Length() const noexcept { return SysStringLen(m_str); }

    // Not supported on this platform: each of the five aborts with the failed assertion "false".

    /// Not supported; aborts.
    HRESULT WriteToStream(IStream* stream) const noexcept;
    /// Not supported; aborts.
    HRESULT ReadFromStream(IStream* stream) noexcept;
    /// Not supported; aborts.
    HRESULT CopyToVariant(VARIANT* variant) const noexcept;
    /// Not supported; aborts.
    HRESULT BSTRToArray(SAFEARRAY** array) const noexcept;
    /// Not supported; aborts.
    HRESULT ArrayToBSTR(const SAFEARRAY* array) noexcept;
    /// @}

    /// @name Appending
    /// All give S_OK, or E_OUTOFMEMORY with the string unchanged. Null appends nothing; the string itself is
    /// no longer null afterwards.
    /// @{

    /// The whole text, zeros included.
    HRESULT Append(const CZoString& text) noexcept;
    HRESULT Append(const CComBSTR& text) noexcept;
    /// A BSTR with its whole length.
    HRESULT AppendBSTR(const wchar_t* text) noexcept;
    /// Text up to its terminator.
    HRESULT Append(const wchar_t* text) noexcept;
    /// Appends count characters, zeros included; a negative count appends nothing.
    HRESULT Append(const wchar_t* text, int count) noexcept;
    /// Narrow text up to its terminator.
    HRESULT Append(const char* text) noexcept;
    /// Appends a run of characters as long as the character's code says, not the character itself; their
    /// values are left open. 'A' appends 65 characters.
    HRESULT Append(char character) noexcept;
    /// As Append(char): a run as long as the character's code says.
    HRESULT Append(wchar_t character) noexcept;
    /// Appends raw bytes, not converted, behind the bytes of the BSTR: the way to carry a block in a string.
    HRESULT AppendBytes(const char* data, int count) noexcept;

    /// As Append of the same parameter; a failure leaves the string as it was and is not told.
    CZoString& operator+=(const CZoString& text) noexcept;
    CZoString& operator+=(const CComBSTR& text) noexcept;
    CZoString& operator+=(const wchar_t* text) noexcept;
    CZoString& operator+=(const char* text) noexcept;
    CZoString& operator+=(const std::string& text) noexcept;
    /// As Append(char): a run of characters.
    CZoString& operator+=(char character) noexcept;
    /// @}

    /// @name Prepending
    /// Inserts at the start, as Insert does. Unlike Append, a character inserts itself.
    /// @{

    /// Puts a text in front; null and empty put nothing.
    CZoString& Prepend(const CZoString& text);
    CZoString& Prepend(const CComBSTR& text);
    CZoString& Prepend(const wchar_t* text);
    CZoString& Prepend(const char* text);
    CZoString& Prepend(char character);
    /// Puts a BSTR in front.
    CZoString& PrependBSTR(const wchar_t* text);
    /// @}

    /// Narrowed text up to the first zero; empty for null.
    std::string ToStdString() const;
    /// Replaces the value by formatted text of at most 999 characters; what is longer is cut.
    CZoString& sprintf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Converts in place by the rules of CharUpper; the text then ends at its first zero. Null stays null.
    CZoString& ConvertToUpper() noexcept;
    /// The same by the rules of CharLower.
    CZoString& ConvertToLower() noexcept;
    /// A copy in capitals.
    CZoString Upper() const noexcept;
    /// A copy in small letters.
    CZoString Lower() const noexcept;

    /// @name Searching
    /// Indexes count from 0, negative ones from the end. The result is a position, or -1 for not found.
    /// @{

    /// First occurrence at an index or behind it.
    ///
    /// @param cs  case-sensitive; without, letters of both cases are equal
    int Find(const CZoString& text, int index = 0, bool cs = true) const;
    int Find(char character, int index = 0, bool cs = true) const;
    /// Always case sensitive.
    int Find(const char* text, int index = 0) const;
    /// Searches backwards from an index.
    int FindRev(const CZoString& text, int index = -1, bool cs = true) const;
    int FindRev(char character, int index = -1, bool cs = true) const;
    /// Always case sensitive.
    int FindRev(const char* text, int index = -1) const;
    /// First match of a pattern at an index or behind it.
    ///
    /// @param pattern   regular expression of Qt 3.3
    /// @param wildcard  the pattern is one of file names instead: *, ? and [...]
    int FindByRegExp(const CZoString& pattern, bool cs = true, bool wildcard = false, int index = 0) const;
    /// Last match of a pattern at an index or before it; parameters as for FindByRegExp.
    int
    FindRevByRegExp(const CZoString& pattern, bool cs = true, bool wildcard = false, int index = -1) const;
    /// Number of occurrences, overlapping ones included.
    int Contains(const CZoString& text, bool cs = true) const;
    int Contains(const char* text, bool cs = true) const;
    int Contains(char character, bool cs = true) const;
    /// Number of matches, overlapping ones included; parameters as for FindByRegExp.
    int ContainsByRegExp(const CZoString& pattern, bool cs = true, bool wildcard = false) const;
    /// Whether the text begins with another one.
    bool StartsWith(const CZoString& text, bool cs = true) const;
    /// Whether the text ends with another one.
    bool EndsWith(const CZoString& text, bool cs = true) const;
    /// @}

    /// @name Parts of the text
    /// @{

    /// The first characters, all of them when there are fewer; null for an empty text.
    CZoString Left(unsigned length) const;
    /// The last characters; otherwise as Left.
    CZoString Right(unsigned length) const;
    /// The characters from an index on, all of them by default.
    ///
    /// Null for an empty text and for an index at or beyond the end.
    CZoString Mid(unsigned index, unsigned length = 0xFFFFFFFFU) const;
    /// Fills up on the right to a width; a longer text is cut on the right if truncate is set.
    CZoString LeftJustify(unsigned width, char fill = ' ', bool truncate = false) const;
    /// Fills up on the left instead; otherwise as LeftJustify.
    CZoString RightJustify(unsigned width, char fill = ' ', bool truncate = false) const;
    /// Without white space at both ends.
    CZoString StripWhiteSpace() const;
    /// Without white space at both ends, and with one blank for each run of it inside.
    CZoString SimplifyWhiteSpace() const;
    /// Fields start to end between separators; negative numbers count from the last field.
    ///
    /// @param flags  sum of 1 skip empty fields, 2 include the leading and 4 the trailing separator
    CZoString Section(const CZoString& separator, int start, int end = -1, int flags = 0) const;
    CZoString Section(char separator, int start, int end = -1, int flags = 0) const;
    /// @}

    /// @name Substitution
    /// Replaces the first occurrence of the lowest of the placeholders %0 to %9. A positive field width pads
    /// on the left, a negative one on the right. %L1 groups the digits of numbers by commas.
    /// @{

    /// An integer in a base of 2 to 36.
    CZoString Arg(long value, int fieldWidth = 0, int base = 10) const;
    CZoString Arg(unsigned long value, int fieldWidth = 0, int base = 10) const;
    CZoString Arg(long long value, int fieldWidth = 0, int base = 10) const;
    CZoString Arg(unsigned long long value, int fieldWidth = 0, int base = 10) const;
    CZoString Arg(int value, int fieldWidth = 0, int base = 10) const;
    CZoString Arg(unsigned int value, int fieldWidth = 0, int base = 10) const;
    CZoString Arg(short value, int fieldWidth = 0, int base = 10) const;
    CZoString Arg(unsigned short value, int fieldWidth = 0, int base = 10) const;
    /// A number in a format of printf; a precision of -1 is that format's own.
    CZoString Arg(double value, int fieldWidth = 0, char format = 'g', int precision = -1) const;
    /// One character.
    CZoString Arg(char value, int fieldWidth = 0) const;
    /// A text.
    CZoString Arg(const CZoString& value, int fieldWidth = 0) const;
    /// Replace all placeholders in one pass, the lowest digit by the first value; %L1 is left alone.
    CZoString Arg(const CZoString& a1, const CZoString& a2) const;
    CZoString Arg(const CZoString& a1, const CZoString& a2, const CZoString& a3) const;
    CZoString Arg(const CZoString& a1, const CZoString& a2, const CZoString& a3, const CZoString& a4) const;
    /// @}

    /// @name Numbers
    /// Bases are 2 to 36. A negative number in another base than 10 appears as its 64-bit two's complement.
    /// Formats of `double` are those of printf: e, f, g and their capitals.
    /// @{

    /// The text of a number.
    static CZoString Number(long value, int base = 10);
    static CZoString Number(unsigned long value, int base = 10);
    static CZoString Number(long long value, int base = 10);
    static CZoString Number(unsigned long long value, int base = 10);
    static CZoString Number(int value, int base = 10);
    static CZoString Number(unsigned int value, int base = 10);
    static CZoString Number(double value, char format = 'g', int precision = 6);

    /// Replaces the text by that of a number, as Number.
    CZoString& SetNum(double value, char format = 'g', int precision = 6);
    CZoString& SetNum(float value, char format = 'g', int precision = 6);
    CZoString& SetNum(long long value, int base = 10);
    CZoString& SetNum(unsigned long long value, int base = 10);
    CZoString& SetNum(int value, int base = 10);
    CZoString& SetNum(unsigned int value, int base = 10);
    CZoString& SetNum(short value, int base = 10);
    CZoString& SetNum(unsigned short value, int base = 10);
    CZoString& SetNum(long value, int base = 10);
    CZoString& SetNum(unsigned long value, int base = 10);

    /// The number that the text stands for; 0 when it is none or out of range.
    ///
    /// White space behind it leaves ToDouble its value, but not ok.
    /// @param[out] ok    whether the text is such a number; may be null
    double ToDouble(bool* ok = nullptr) const;
    /// As ToDouble; a number beyond the range of float is none.
    float ToFloat(bool* ok = nullptr) const;
    /// @param base  2 to 36, or 0 to go by the prefix: 0x hexadecimal, 0 octal, else decimal
    int ToInt(bool* ok = nullptr, int base = 10) const;
    /// As ToInt, without sign.
    unsigned int ToUInt(bool* ok = nullptr, int base = 10) const;
    /// Range of 32 bits.
    long ToLong(bool* ok = nullptr, int base = 10) const;
    /// Range of 32 bits.
    unsigned long ToULong(bool* ok = nullptr, int base = 10) const;
    /// As ToInt, with the range of 64 bits.
    long long ToLongLong(bool* ok = nullptr, int base = 10) const;
    /// The same without sign.
    unsigned long long ToULongLong(bool* ok = nullptr, int base = 10) const;
    /// As ToInt, with the range of 16 bits.
    short ToShort(bool* ok = nullptr, int base = 10) const;
    /// The same without sign.
    unsigned short ToUShort(bool* ok = nullptr, int base = 10) const;
    /// @}

    /// @name Editing in place
    /// @{

    /// Replaces every occurrence of a text by another one.
    ///
    /// @param cs  case-sensitive
    CZoString& Replace(const CZoString& before, const CZoString& after, bool cs = true);
    /// Replaces length characters from an index on. An index beyond the end appends.
    CZoString& Replace(unsigned index, unsigned length, const CZoString& after);
    /// Inserts in front of an index. An index beyond the end fills the gap with blanks.
    CZoString& Insert(unsigned index, const CZoString& text);
    /// Replaces the text by a run of one character: as many as length says, or as the text has when it is
    /// negative.
    CZoString& Fill(char character, int length = -1);
    /// @}

private:
    static wchar_t* FromCharacter(char character) noexcept;
    /// Frees what is held and takes over a BSTR.
    CZoString& Adopt(wchar_t* text) noexcept;
    HRESULT AppendCharacters(const wchar_t* text, std::size_t count) noexcept;
    HRESULT AppendRun(std::size_t count) noexcept;

    wchar_t* m_str = nullptr;
};

static_assert(sizeof(CZoString) == sizeof(void*));

/// What a string can be compared and concatenated with.
template <class T>
concept CZoStringOperand =
    std::same_as<T, CZoString> || std::same_as<T, CComBSTR> || std::same_as<T, std::string> ||
    std::same_as<T, char> || std::same_as < std::decay_t<T>,
const char* > || std::same_as<std::decay_t<T>, char*> || std::same_as<std::decay_t<T>, const wchar_t*> ||
    std::same_as<std::decay_t<T>, wchar_t*>;

/// Two operands of which at least one is a CZoString.
template <class TLeft, class TRight>
concept CZoStringOperands = CZoStringOperand<TLeft> && CZoStringOperand<TRight> &&
    (std::same_as<TLeft, CZoString> || std::same_as<TRight, CZoString>);

/// The comparisons of CZoString on plain texts; both up to their first zero, by character code.
///
/// A null text equals only another null text.
ZO_EXPORT bool ZoStringEqual(const wchar_t* left, const wchar_t* right) noexcept;
/// Deliberate: a null text on the left is both less and greater than any other, callers sort nulls to the
/// front and to the back with it.
ZO_EXPORT bool ZoStringLess(const wchar_t* left, const wchar_t* right) noexcept;
/// The same the other way round.
ZO_EXPORT bool ZoStringGreater(const wchar_t* left, const wchar_t* right) noexcept;

/// An operand's wide text, converted only where it is narrow.
template <CZoStringOperand T>
auto ZoStringText(const T& operand)
{
    if constexpr (std::is_convertible_v<const T&, const wchar_t*>)
    {
        return static_cast<const wchar_t*>(operand);
    }
    else
    {
        return CZoString(operand);
    }
}

// The comparisons go up to the first zero, by character code, see ZoStringEqual and ZoStringLess. With a null
// text on the left and another one on the right < and > are both true, and <= and >= both false.

/// Equal texts; null equals null alone.
template <class TLeft, class TRight>
requires CZoStringOperands<TLeft, TRight>
bool operator==(const TLeft& left, const TRight& right)
{
    return ZoStringEqual(ZoStringText(left), ZoStringText(right));
}

/// The opposite of operator==.
template <class TLeft, class TRight>
requires CZoStringOperands<TLeft, TRight>
bool operator!=(const TLeft& left, const TRight& right)
{
    return !(left == right);
}

/// By ZoStringLess.
template <class TLeft, class TRight>
requires CZoStringOperands<TLeft, TRight>
bool operator<(const TLeft& left, const TRight& right)
{
    return ZoStringLess(ZoStringText(left), ZoStringText(right));
}

/// By ZoStringGreater.
template <class TLeft, class TRight>
requires CZoStringOperands<TLeft, TRight>
bool operator>(const TLeft& left, const TRight& right)
{
    return ZoStringGreater(ZoStringText(left), ZoStringText(right));
}

/// The opposite of operator>.
template <class TLeft, class TRight>
requires CZoStringOperands<TLeft, TRight>
bool operator<=(const TLeft& left, const TRight& right)
{
    return !(left > right);
}

/// The opposite of operator<.
template <class TLeft, class TRight>
requires CZoStringOperands<TLeft, TRight>
bool operator>=(const TLeft& left, const TRight& right)
{
    return !(left < right);
}

/// A copy of the left operand with the right one appended; a character on the right appends a run, as
/// CZoString::Append(char) does.
template <class TLeft, class TRight>
requires CZoStringOperands<TLeft, TRight> CZoString operator+(const TLeft& left, const TRight& right)
{
    CZoString sum(left);
    sum += right;
    return sum;
}

/// Copies count strings into the caller's array as new BSTRs, which the caller frees; null stays null.
///
/// @throws CShellError when pbsDest is null or the source has fewer elements; nothing is written then
ZO_EXPORT void
ZOStringListConv(wchar_t** pbsDest, const CArrayAccessor<CZoString>& zoSourceList, long iElementCount);

/// Fills the list with copies of count BSTRs; the array stays the caller's.
///
/// @throws CShellError when pbsSource is null or the count negative; the list is unchanged then
ZO_EXPORT void
ZOStringListConv(CArrayAccessor<CZoString>& zoDestList, wchar_t** pbsSource, long iElementCount);

} // namespace ZoVelkor
