#include "CodePage.h"

#include "LastError.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
using namespace std::string_literals;

std::wstring Widen(UINT codePage, DWORD flags, const std::string& text)
{
    std::wstring result(64, L'#');
    const int length =
        MultiByteToWideChar(codePage, flags, text.data(), static_cast<int>(text.size()), result.data(), 64);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

TEST(CodePage, MapsEveryByteAndBack)
{
    for (int code = 0; code < 256; ++code)
    {
        const auto byte = static_cast<char>(code);
        wchar_t wide = L'#';
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, &byte, 1, &wide, 1), 1);
        char back = '#';
        BOOL usedDefault = TRUE;
        EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, &wide, 1, &back, 1, nullptr, &usedDefault), 1);
        EXPECT_EQ(back, byte) << code;
        EXPECT_EQ(usedDefault, FALSE) << code;
    }
}

TEST(CodePage, FollowsWindows1252)
{
    EXPECT_EQ(Widen(CP_ACP, 0, "\x7F\x80\x81\x8A\x8D\x8F\x90\x95\x99\x9D\x9F\xA0\xB5\xFF"),
              L"\x7F\u20AC\x81\u0160\x8D\x8F\x90\u2022\u2122\x9D\u0178\xA0\xB5\xFF");
    EXPECT_EQ(Widen(CP_WINDOWS_1252, 0, "\x80"), L"\u20AC");
}

TEST(CodePage, ReplacesAndReportsWhatItCannotHold)
{
    const wchar_t kText[] = {L'a', 0x0100, 0x1F600, -1, 0x20AC, L'\0'};
    char buffer[8] = {};
    BOOL usedDefault = FALSE;
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, kText, -1, buffer, 8, nullptr, &usedDefault), 6);
    EXPECT_STREQ(buffer, "a???\x80");
    EXPECT_EQ(usedDefault, TRUE);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, kText, -1, buffer, 8, "_", nullptr), 6);
    EXPECT_STREQ(buffer, "a___\x80");
}

TEST(CodePage, CountsTheTerminatorOnlyWithLengthMinusOne)
{
    wchar_t wide[8] = {};
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, nullptr, 0), 4);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, nullptr, 0), 3);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "a\0b", 3, wide, 8), 3);
    EXPECT_EQ(std::wstring(wide, 3), L"a\0b"s);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abc", -1, nullptr, 0, nullptr, nullptr), 4);
}

TEST(CodePage, FillsABufferToItsEndAndNotBeyond)
{
    wchar_t wide[4] = {L'#', L'#', L'#', L'#'};
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abcd", 4, wide, 3), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(std::wstring(wide, 4), L"abc#");
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abcd", 4, wide, 4), 4);
}

/// The error of a call that must give 0.
template <class TCall>
DWORD ErrorOf(TCall call)
{
    SetLastError(ERROR_SUCCESS);
    return call() == 0 ? GetLastError() : ERROR_SUCCESS;
}

TEST(CodePage, RefusesWrongArguments)
{
    wchar_t wide = 0;
    char narrow = 0;
    const auto widen = [&](UINT codePage, const char* text, int length, wchar_t* buffer, int bufferLength) {
        return ErrorOf([=] { return MultiByteToWideChar(codePage, 0, text, length, buffer, bufferLength); });
    };
    const auto narrowUtf8 = [&](const char* standIn, BOOL* used) {
        return ErrorOf([&] { return WideCharToMultiByte(CP_UTF8, 0, L"a", 1, &narrow, 1, standIn, used); });
    };
    BOOL usedDefault = FALSE;
    EXPECT_EQ(widen(CP_ACP, nullptr, 1, &wide, 1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(widen(CP_ACP, "a", 0, &wide, 1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(widen(CP_ACP, "a", -2, &wide, 1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(widen(CP_ACP, "a", 1, &wide, -1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(widen(CP_ACP, "a", 1, nullptr, 1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(widen(437, "a", 1, &wide, 1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(narrowUtf8("_", nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(narrowUtf8(nullptr, &usedDefault), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ErrorOf([] { return MultiByteToWideChar(CP_ACP, 0x100, "a", 1, nullptr, 0); }),
              ERROR_INVALID_FLAGS);
}

TEST(Utf8, RoundTripsTheEndsOfEveryLength)
{
    const std::wstring wide = L"\x01\x7F\x80\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF";
    const std::string narrow = "\x01\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
                               "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    char buffer[64] = {};
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, buffer, 64, nullptr, nullptr),
              static_cast<int>(narrow.size() + 1));
    EXPECT_EQ(buffer, narrow);
    EXPECT_EQ(Widen(CP_UTF8, MB_ERR_INVALID_CHARS, narrow), wide);
}

TEST(Utf8, ReplacesOrRefusesWhatIsNotUtf8)
{
    const struct
    {
        const char* name;
        std::string text;
        std::wstring expected;
    } rows[] = {
        {"LoneFollower", "a\x80z", L"a\uFFFDz"},
        {"Truncated", "a\xE2\x82", L"a\uFFFD"},
        {"CutShort", "\xE2\x82z", L"\uFFFDz"},
        {"Overlong", "\xC0\x80", L"\uFFFD"},
        {"Surrogate", "\xED\xA0\x80", L"\uFFFD"},
        {"AboveUnicode", "\xF4\x90\x80\x80", L"\uFFFD"},
        {"NeverUsed", "\xFF\xFE", L"\uFFFD\uFFFD"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Widen(CP_UTF8, 0, row.text), row.expected) << row.name;
        EXPECT_EQ(Widen(CP_UTF8, MB_ERR_INVALID_CHARS, row.text), L"") << row.name;
        EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION) << row.name;
    }
    const wchar_t kSurrogate = 0xD800;
    char buffer[4] = {};
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, &kSurrogate, 1, buffer, 4, nullptr, nullptr), 3);
    EXPECT_STREQ(buffer, "\xEF\xBF\xBD");
}

struct CaseRow
{
    const char* name;
    std::wstring small;
    std::wstring capital;
};

const CaseRow kCaseRows[] = {
    {"Ascii", L"az", L"AZ"},
    {"Latin1", L"\u00E0\u00F6\u00F8\u00FE", L"\u00C0\u00D6\u00D8\u00DE"},
    {"YDiaeresis", L"\u00FF", L"\u0178"},
    {"CodePage", L"\u0161\u0153\u017E", L"\u0160\u0152\u017D"},
    {"LatinA", L"\u0101\u0137\u013A\u0148\u014B\u0177\u017A", L"\u0100\u0136\u0139\u0147\u014A\u0176\u0179"},
    {"Greek", L"\u03B1\u03C3\u03C9\u03AC\u03CC\u03CE", L"\u0391\u03A3\u03A9\u0386\u038C\u038F"},
    {"Cyrillic", L"\u0430\u044F\u0451", L"\u0410\u042F\u0401"},
};

TEST(CharacterCase, MapsOneToOne)
{
    for (const CaseRow& row : kCaseRows)
    {
        std::wstring text = row.small;
        EXPECT_EQ(CharUpper(text.data()), text.data());
        EXPECT_EQ(text, row.capital) << row.name;
        CharLower(text.data());
        EXPECT_EQ(text, row.small) << row.name;
    }
    const std::wstring caseless = L"@[`{ 09\u00B5\u00D7\u00DF\u00F7\u0131\u0138\u0192\U0001F600";
    std::wstring text = caseless + L'\u03C2';
    CharLower(text.data());
    EXPECT_EQ(text, caseless + L'\u03C2');
    CharUpper(text.data());
    EXPECT_EQ(text, caseless + L'\u03A3') << "the final sigma has a capital that does not lead back";
}

TEST(CharacterCase, StopsAtTheTerminatorAndToleratesAnyValue)
{
    std::wstring text = L"a\0a"s;
    CharUpper(text.data());
    EXPECT_EQ(text, L"A\0a"s);
    wchar_t extremes[] = {0x7FFFFFFF, -0x7FFFFFFF - 1, L'\0'};
    CharUpper(extremes);
    EXPECT_EQ(CharLower(extremes)[0], 0x7FFFFFFF);
    EXPECT_EQ(extremes[1], -0x7FFFFFFF - 1);
    EXPECT_EQ(CharUpper(nullptr), nullptr);
}
} // namespace
