#include "CodePage.h"

#include "CodePage1252.h"
#include "LastError.h"

#include <cstring>
#include <cwchar>
#include <limits>
#include <string_view>

namespace
{
constexpr wchar_t kReplacement = 0xFFFD;

/// Writes what fits and counts everything; without capacity it only counts.
template <class TCharacter>
class CBoundedWriter
{
public:
    CBoundedWriter(TCharacter* buffer, int capacity) noexcept
        : m_buffer(buffer),
          m_capacity(static_cast<std::size_t>(capacity))
    {}

    void Put(TCharacter character) noexcept
    {
        if (m_count < m_capacity)
        {
            m_buffer[m_count] = character;
        }
        ++m_count;
    }

    /// Result of the conversion functions for what was put.
    [[nodiscard]] int Finish() const noexcept
    {
        if (m_capacity != 0 && m_count > m_capacity)
        {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        if (m_count > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return 0;
        }
        return static_cast<int>(m_count);
    }

private:
    TCharacter* m_buffer;
    std::size_t m_capacity;
    std::size_t m_count = 0;
};

constexpr bool IsCharacter(char32_t code) noexcept
{
    return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

/// What a first byte of UTF-8 announces; no row means that the byte cannot come first.
struct Utf8Lead
{
    unsigned char mask;
    unsigned char pattern;
    int followers;
    char32_t lowest; ///< what is below it has a shorter form, and only that one is allowed
};
constexpr Utf8Lead kUtf8Leads[] = {
    {0x80, 0x00, 0, 0},
    {0xE0, 0xC0, 1, 0x80},
    {0xF0, 0xE0, 2, 0x800},
    {0xF8, 0xF0, 3, 0x10000},
};

/// Takes one sequence off the front of a text that is not empty.
///
/// @return the character; kReplacement with valid = false for a sequence that is rejected
wchar_t TakeUtf8(std::string_view& text, bool& valid) noexcept
{
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    for (const Utf8Lead& lead : kUtf8Leads)
    {
        if ((first & lead.mask) != lead.pattern)
        {
            continue;
        }
        char32_t code = first & static_cast<unsigned char>(~lead.mask);
        int missing = lead.followers;
        for (; missing > 0 && !text.empty(); --missing, text.remove_prefix(1))
        {
            const auto next = static_cast<unsigned char>(text.front());
            if ((next & 0xC0U) != 0x80U)
            {
                break;
            }
            code = (code << 6U) | (next & 0x3FU);
        }
        if (missing == 0 && code >= lead.lowest && IsCharacter(code))
        {
            return static_cast<wchar_t>(code);
        }
        break;
    }
    valid = false;
    return kReplacement;
}

void PutUtf8(CBoundedWriter<char>& writer, char32_t code) noexcept
{
    const auto put = [&writer](char32_t byte) {
        writer.Put(static_cast<char>(static_cast<unsigned char>(byte)));
    };
    if (code < 0x80)
    {
        put(code);
        return;
    }
    const int followers = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    put(kUtf8Leads[followers].pattern | (code >> static_cast<unsigned>(6 * followers)));
    for (int i = followers - 1; i >= 0; --i)
    {
        put(0x80U | ((code >> static_cast<unsigned>(6 * i)) & 0x3FU));
    }
}

int Fail(DWORD error) noexcept
{
    SetLastError(error);
    return 0;
}

/// The checks that both directions share; gives ERROR_SUCCESS or the error.
DWORD CheckArguments(
    UINT codePage, const void* text, int length, const void* buffer, int bufferLength) noexcept
{
    const bool knownPage = codePage == CP_ACP || codePage == CP_WINDOWS_1252 || codePage == CP_UTF8;
    const bool valid = knownPage && text != nullptr && length != 0 && length >= -1 && bufferLength >= 0 &&
                       (buffer != nullptr || bufferLength == 0);
    return valid ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

/// Letters with a small and a capital form; toCapital leads from the small to the capital one.
struct CaseRange
{
    wchar_t firstSmall;
    wchar_t lastSmall;
    wchar_t step;
    wchar_t toCapital;
};
constexpr CaseRange kCaseRanges[] = {
    {0x0061, 0x007A, 1, -32},
    {0x00E0, 0x00F6, 1, -32},
    {0x00F8, 0x00FE, 1, -32},
    {0x00FF, 0x00FF, 1, 121},
    {0x0101, 0x012F, 2, -1},
    {0x0133, 0x0137, 2, -1},
    {0x013A, 0x0148, 2, -1},
    {0x014B, 0x0177, 2, -1},
    {0x017A, 0x017E, 2, -1},
    {0x03AC, 0x03AC, 1, -38},
    {0x03AD, 0x03AF, 1, -37},
    {0x03B1, 0x03C1, 1, -32},
    {0x03C3, 0x03CB, 1, -32},
    // The final sigma shares its capital with the row above, which is found first on the way back.
    {0x03C2, 0x03C2, 1, -31},
    {0x03CC, 0x03CC, 1, -64},
    {0x03CD, 0x03CE, 1, -63},
    {0x0430, 0x044F, 1, -32},
    {0x0450, 0x045F, 1, -80},
};

constexpr wchar_t kLastCased = 0x045F;

constexpr bool IsWithin(const CaseRange& range, wchar_t small) noexcept
{
    return small >= range.firstSmall && small <= range.lastSmall &&
           (small - range.firstSmall) % range.step == 0;
}

wchar_t ToCapital(wchar_t character) noexcept
{
    for (const CaseRange& range : kCaseRanges)
    {
        if (IsWithin(range, character))
        {
            return character + range.toCapital;
        }
    }
    return character;
}

wchar_t ToSmall(wchar_t character) noexcept
{
    for (const CaseRange& range : kCaseRanges)
    {
        if (IsWithin(range, character - range.toCapital))
        {
            return character - range.toCapital;
        }
    }
    return character;
}

template <class TConvert>
wchar_t* ConvertInPlace(wchar_t* text, TConvert convert) noexcept
{
    for (wchar_t* next = text; next != nullptr && *next != L'\0'; ++next)
    {
        if (*next > 0 && *next <= kLastCased)
        {
            *next = convert(*next);
        }
    }
    return text;
}
} // namespace

int MultiByteToWideChar(
    UINT codePage, DWORD flags, const char* text, int length, wchar_t* buffer, int bufferLength) noexcept
{
    if (const DWORD error = CheckArguments(codePage, text, length, buffer, bufferLength);
        error != ERROR_SUCCESS)
    {
        return Fail(error);
    }
    if ((flags & ~(MB_ERR_INVALID_CHARS | MB_PRECOMPOSED)) != 0)
    {
        return Fail(ERROR_INVALID_FLAGS);
    }
    std::string_view source(text, length == -1 ? std::strlen(text) + 1 : static_cast<std::size_t>(length));
    CBoundedWriter<wchar_t> writer(buffer, bufferLength);
    if (codePage != CP_UTF8)
    {
        for (const char byte : source)
        {
            writer.Put(CharacterOf1252(byte));
        }
        return writer.Finish();
    }
    bool valid = true;
    while (!source.empty())
    {
        writer.Put(TakeUtf8(source, valid));
    }
    return !valid && (flags & MB_ERR_INVALID_CHARS) != 0 ? Fail(ERROR_NO_UNICODE_TRANSLATION)
                                                         : writer.Finish();
}

int WideCharToMultiByte(UINT codePage,
                        DWORD flags,
                        const wchar_t* text,
                        int length,
                        char* buffer,
                        int bufferLength,
                        const char* defaultCharacter,
                        BOOL* usedDefault) noexcept
{
    const bool isUtf8 = codePage == CP_UTF8;
    if (const DWORD error = CheckArguments(codePage, text, length, buffer, bufferLength);
        error != ERROR_SUCCESS)
    {
        return Fail(error);
    }
    if (isUtf8 && (defaultCharacter != nullptr || usedDefault != nullptr))
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~(isUtf8 ? WC_ERR_INVALID_CHARS : 0U)) != 0)
    {
        return Fail(ERROR_INVALID_FLAGS);
    }
    const std::wstring_view source(text,
                                   length == -1 ? std::wcslen(text) + 1 : static_cast<std::size_t>(length));
    CBoundedWriter<char> writer(buffer, bufferLength);
    const char standIn = defaultCharacter == nullptr ? '?' : *defaultCharacter;
    bool valid = true;
    for (const wchar_t character : source)
    {
        if (isUtf8)
        {
            const auto code = static_cast<char32_t>(character);
            valid = valid && IsCharacter(code);
            PutUtf8(writer, IsCharacter(code) ? code : kReplacement);
            continue;
        }
        const auto byte = ByteOf1252(character);
        valid = valid && byte.has_value();
        writer.Put(byte.value_or(standIn));
    }
    if (usedDefault != nullptr)
    {
        *usedDefault = valid ? FALSE : TRUE;
    }
    return !valid && (flags & WC_ERR_INVALID_CHARS) != 0 ? Fail(ERROR_NO_UNICODE_TRANSLATION)
                                                         : writer.Finish();
}

wchar_t* CharUpper(wchar_t* text) noexcept
{
    return ConvertInPlace(text, ToCapital);
}

wchar_t* CharLower(wchar_t* text) noexcept
{
    return ConvertInPlace(text, ToSmall);
}
