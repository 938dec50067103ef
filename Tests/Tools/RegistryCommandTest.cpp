#include "CTerminal.h"
#include "Common/CToolError.h"
#include "Registry/RegistryFile.h"
#include "ToolRunner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace ZoVelkor::Tools::Testing
{

namespace
{

using testing::HasSubstr;
using testing::StartsWith;

class RegistryTool : public ToolTest
{
protected:
    RegistryTool() { SetRegistryFile((Folder() / "r.db").c_str()); }
    ~RegistryTool() override { SetRegistryFile(nullptr); }

    ToolRun Registry(const std::string& action, const std::string& rest, std::string_view input = "") const
    {
        return Run("registry " + action + " --file r.db " + rest, input);
    }
};

struct RegistryRow
{
    const char* action;
    const char* rest;
    int exitCode;
    const char* out;
    const char* err;
};

// clang-format off
constexpr RegistryRow kRows[] = {
    {"list",   "HKLM",                           3, "", "zo: cannot read r.db: No such file"},
    {"set",    "hklm\\Zo/a text x",              0, "", ""},
    {"get",    "HKEY_LOCAL_MACHINE\\zo/A TEXT",  0, "x\n", ""},
    {"get",    "HKLM/Zo/a text",                 1, "", "zo: HKEY_LOCAL_MACHINE\\Zo\\a: no such key\n"},
    {"delete", "HKLM -r",                        0, "", ""},
    {"set",    "HKLM/Zo serial 0123",            0, "", ""},
    {"set",    "HKLM/Zo n 4294967295",           0, "", ""},
    {"set",    "HKLM/Zo q 4294967296",           0, "", ""},
    {"set",    "HKLM/Zo h -0x1",                 0, "", ""},
    {"set",    "HKLM/Zo m -- -2147483648",       0, "", ""},
    {"set",    "HKLM/Zo e a%HOME%",              0, "", ""},
    {"set",    "HKLM/Zo p '5% of 6%'",           0, "", ""},
    {"set",    "HKLM/Zo '' ''",                  0, "", ""},
    {"set",    "HKLM/Zo list 'a\n\nb' -t multi", 0, "", ""},
    {"set",    "HKLM/Zo raw '00 fF0A' -t binary",0, "", ""},
    {"set",    "HKLM/Zo/sub/deep v 1",           0, "", ""},
    {"set",    "HKLM/Zo serial 99",              0, "", ""},
    {"set",    "HKLM/Zo n x",                    2, "", "Zo \"n\": \"x\" is no number of up to 64 bits; it is a dword, --type changes that\n"},
    {"set",    "HKLM/Zo n 4294967296",           2, "", "4294967296 does not fit into a dword"},
    {"set",    "HKLM/Zo n -- -2147483649",       2, "", "-2147483649 does not fit into a dword"},
    {"set",    "HKLM/New n 18446744073709551616 -t qword", 2, "", "no number"},
    {"set",    "HKLM/New n abc -t binary",       2, "", "the last byte has one digit only"},
    {"set",    "HKLM/New n g0 -t binary",        2, "", "\"g\" is no hexadecimal digit"},
    {"set",    "HKLM/New n 1 -t word",           2, "", "word is none of string|expand|dword|qword|multi|binary"},
    {"list",   "HKLM/New",                       1, "", "no such key"},
    {"list",   "HKLM --depth 1",                 0, R"(HKEY_LOCAL_MACHINE
  Zo  (1 below)
    "" = string ""
    "e" = expand "a%HOME%"
    "h" = string "-0x1"
    "list" = multi "a" "" "b"
    "m" = dword 2147483648
    "n" = dword 4294967295
    "p" = string "5% of 6%"
    "q" = qword 4294967296
    "raw" = binary 00 ff 0a
    "serial" = string "99"
)", ""},
    {"list",   "HKLM/Zo/sub",                    0, "HKEY_LOCAL_MACHINE\\Zo\\sub\n  deep\n    \"v\" = dword 1\n", ""},
    {"list",   "HKLM/Zo/sub --json",             0, R"({"key":"HKEY_LOCAL_MACHINE\\Zo\\sub","values":[],"keys":[)"
        R"({"key":"HKEY_LOCAL_MACHINE\\Zo\\sub\\deep","values":[{"name":"v","type":"dword","data":1}],"keys":[]}]})" "\n", ""},
    {"list",   "HKLM/Zo/sub --json --depth 0",   0, R"({"key":"HKEY_LOCAL_MACHINE\\Zo\\sub","values":[],"keys":[],"unread":1})" "\n", ""},
    {"get",    "HKLM/Zo list",                   0, "a\n\nb\n", ""},
    {"get",    "HKLM/Zo list --json",            0, R"({"name":"list","type":"multi","data":["a","","b"]})" "\n", ""},
    {"get",    "HKLM/Zo raw",                    0, "00 ff 0a\n", ""},
    {"get",    "HKLM/Zo",                        0, "\n", ""},
    {"get",    "HKLM/Zo 'no\n'",                 1, "", "zo: HKEY_LOCAL_MACHINE\\Zo \"no\\n\": no such value\n"},
    {"get",    "HKEY_LOCAL x",                   2, "", "zo: \"HKEY_LOCAL\" is no root key; these are HKEY_CLASSES_ROOT (HKCR), "},
    {"get",    "HKLM x y",                       2, "", "y"},
    {"get",    "HKLM/a\xFF x",                   2, "", "zo: the text is not UTF-8"},
    {"delete", "HKLM",                           1, "", "a root stays; --recursive deletes"},
    {"delete", "HKLM/Zo",                        1, "", "zo: HKEY_LOCAL_MACHINE\\Zo has keys below it (1); --recursive deletes them too\n"},
    {"delete", "HKLM/Zo e -r",                   2, "", "--recursive goes with a key"},
    {"delete", "HKLM/Zo ''",                     0, "", ""},
    {"delete", "HKLM/Zo ''",                     1, "", "Zo \"\": no such value"},
    {"delete", "HKLM/Zo/sub/deep",               0, "", ""},
    {"delete", "HKLM/Zo -r",                     0, "", ""},
    {"delete", "HKLM/Zo -r",                     1, "", "HKEY_LOCAL_MACHINE\\Zo: no such key\n"},
    {"export", "HKLM",                           0, "zo registry 1\n\n[HKEY_LOCAL_MACHINE]\n\nend\n", ""},
    {"import", "missing",                        3, "", "zo: cannot read missing: No such file"},
};
// clang-format on

TEST_F(RegistryTool, ActionsResultsAndExitCodes)
{
    for (const RegistryRow& row : kRows)
    {
        SCOPED_TRACE(std::string(row.action) + ' ' + row.rest);
        const ToolRun run = Registry(row.action, row.rest);
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_EQ(run.out, row.out);
        EXPECT_THAT(run.err, HasSubstr(row.err));
        EXPECT_EQ(run.err.empty(), *row.err == '\0') << run.err;
    }
}

TEST_F(RegistryTool, HelpHasAnExampleAtEveryLevel)
{
    for (const std::string level : {"", " get", " set", " list", " delete", " export", " import", " watch"})
    {
        EXPECT_THAT(Run("registry" + level + " --help").out, HasSubstr("Example: zo registry" + level))
            << level;
    }
}

struct PathRow
{
    const char* text;
    const char* path; ///< as it is shown; null: no path
};

// clang-format off
constexpr PathRow kPaths[] = {
    {"HKLM",                  "HKEY_LOCAL_MACHINE"},
    {"hkcu\\",                "HKEY_CURRENT_USER"},
    {"hkey_users/a/b\\c/",    "HKEY_USERS\\a\\b\\c"},
    {"HKCC\\a/b",             "HKEY_CURRENT_CONFIG\\a/b"},
    {"HKCR\\a\\u{D}b",        "HKEY_CLASSES_ROOT\\a\\u{D}b"},
    {"HKCR\\\\u{75}{A}",      "HKEY_CLASSES_ROOT\\\\u{75}{A}"},
    {"HKCR\\u{A}",            "HKEY_CLASSES_ROOT\\\\u{75}{A}"},
    {"HKDD/\\u{2F}\\u{E4}",   "HKEY_DYN_DATA\\/ä"},
    {"",                      nullptr},
    {"HKLMX",                 nullptr},
    {"HKLM\\\\a",             nullptr},
    {"HKLM/a//b",             nullptr},
    {"HKLM/a\\u{5C}",         nullptr},
    {"HKLM/a\\u{0}",          nullptr},
    {"HKLM/a\\u{D800}",       nullptr},
    {"HKLM/a\\u{}",           nullptr},
    {"HKLM/a\\u{123456789}",  nullptr},
    {"HKLM/a\\u{12",          nullptr},
};
// clang-format on

TEST(RegistryPath, IsTakenApartAndShownSoThatItCanBeTyped)
{
    for (const PathRow& row : kPaths)
    {
        SCOPED_TRACE(row.text);
        if (row.path == nullptr)
        {
            EXPECT_THROW(ParseRegistryPath(WideText(row.text)), CTextFault);
            continue;
        }
        const RegistryPath path = ParseRegistryPath(WideText(row.text));
        EXPECT_EQ(PathText(path), row.path);
        EXPECT_EQ(ParseRegistryPath(WideText(PathText(path))).keys, path.keys);
    }
    const std::wstring longest(kRegistryMaximumKeyName, L'x');
    EXPECT_NO_THROW(ParseRegistryPath(L"HKLM/" + longest));
    EXPECT_THROW(ParseRegistryPath(L"HKLM/x" + longest), CTextFault);
}

std::vector<BYTE> Bytes(std::wstring_view characters)
{
    const auto* data = reinterpret_cast<const BYTE*>(characters.data());
    return {data, data + characters.size() * sizeof(wchar_t)};
}

/// A value as it lies in the registry, and how it is written.
struct FormRow
{
    RegistryValue value;
    const char* text;
};

std::vector<FormRow> Forms()
{
    using namespace std::string_view_literals;
    const std::wstring strange = {L'a', wchar_t(0xD800), wchar_t(0x7FFFFFFF), wchar_t(-1), L'\0'};
    // clang-format off
    return {
        {{L"", REG_SZ, Bytes(L"abc\0"sv)},                  "\"\" = string \"abc\"\n"},
        {{L"a\n\"\\", REG_SZ, Bytes(L"\0"sv)},              "\"a\\n\\\"\\\\\" = string \"\"\n"},
        {{L"Ä", REG_EXPAND_SZ, Bytes(L"%ö\t\r\n€\0"sv)},    "\"Ä\" = expand \"%ö\\t\\r\\n€\"\n"},
        {{L"nul", REG_SZ, Bytes(L"a\0b\0\0"sv)},            "\"nul\" = string \"a\\u{0}b\\u{0}\"\n"},
        {{L"odd", REG_SZ, Bytes(strange)},                  "string \"a\\u{D800}\\u{7FFFFFFF}\\u{FFFFFFFF}\"\n"},
        {{L"turned", REG_SZ, Bytes(L"\u202E\uFEFF\0"sv)},   "string \"\\u{202E}\\u{FEFF}\"\n"},
        {{L"open", REG_SZ, Bytes(L"x")},                    "\"open\" = type 1\n  78 00 00 00\n"},
        {{L"none", REG_SZ, {}},                             "\"none\" = type 1\n"},
        {{L"cut", REG_SZ, {0, 0, 0}},                       "\"cut\" = type 1\n  00 00 00\n"},
        {{L"d", REG_DWORD, {1, 2, 3, 0xFF}},                "\"d\" = dword 4278387201\n"},
        {{L"d3", REG_DWORD, {1, 2, 3}},                     "\"d3\" = type 4\n  01 02 03\n"},
        {{L"q", REG_QWORD, std::vector<BYTE>(8, 0xFF)},     "\"q\" = qword 18446744073709551615\n"},
        {{L"q4", REG_QWORD, {1, 2, 3, 4}},                  "\"q4\" = type 11\n  01 02 03 04\n"},
        {{L"l0", REG_MULTI_SZ, Bytes(L"\0"sv)},             "\"l0\" = multi\n\""},
        {{L"l1", REG_MULTI_SZ, Bytes(L"\0\0"sv)},           "\"l1\" = multi\n  \"\"\n\""},
        {{L"l3", REG_MULTI_SZ, Bytes(L"a\n\0\0[b]\0\0"sv)}, "\"l3\" = multi\n  \"a\\n\"\n  \"\"\n  \"[b]\"\n"},
        {{L"lopen", REG_MULTI_SZ, Bytes(L"a\0"sv)},         "\"lopen\" = type 7\n  61 00 00 00 00 00 00 00\n"},
        {{L"b0", REG_BINARY, {}},                           "\"b0\" = binary\n\""},
        {{L"b33", REG_BINARY, std::vector<BYTE>(33, 0xAB)}, "ab ab\n  ab\n"},
        {{L"big", REG_BINARY, std::vector<BYTE>(kRegistryMaximumValueSize, 7)}, "\"big\" = binary\n  07 07"},
        {{L"t0", REG_NONE, {5}},                            "\"t0\" = type 0\n  05\n"},
        {{L"tmax", 0xFFFFFFFF, {}},                         "\"tmax\" = type 4294967295\n"},
        {{std::wstring(kRegistryMaximumValueName, L'n'), 17, {1}}, "nnn\" = type 17\n  01\n"},
    };
    // clang-format on
}

TEST_F(RegistryTool, EveryValueComesBackFromAnExport)
{
    const std::wstring keys[] = {L"Zo", L"Zo\\a/b]", L"Zo\\u{A}\\x\ny", L"Zo\\ ä "};
    const std::vector<FormRow> forms = Forms();
    for (const std::wstring& name : keys)
    {
        HKEY key = 0;
        ASSERT_EQ(RegCreateKey(HKEY_CURRENT_USER, name.c_str(), &key), 0);
        const CUniqueKey owner(key);
        for (const auto& [value, text] : forms)
        {
            const auto size = static_cast<DWORD>(value.data.size());
            const bool isWanted = size < kRegistryMaximumValueSize || name == keys[0];
            EXPECT_EQ(
                isWanted ? RegSetValueEx(key, value.name.c_str(), 0, value.type, value.data.data(), size) : 0,
                0);
        }
    }
    ASSERT_EQ(Registry("export", "HKCU/Zo -o a").err, "");
    const std::string file = Read("a");
    for (const auto& [value, text] : forms)
    {
        EXPECT_TRUE(file.find(text) != std::string::npos) << text;
    }
    const auto former = ReadRegistryTree({HKEY_CURRENT_USER, L"Zo"});
    ASSERT_EQ(Registry("delete", "HKCU/Zo -r").exitCode, 0);
    EXPECT_THAT(Registry("import", "a").out, HasSubstr("a: 5 keys, 89 values, 89 of them changed\n"));
    const std::function<void(const RegistryKey&, const RegistryKey&)> compare = [&](const RegistryKey& was,
                                                                                    const RegistryKey& is) {
        EXPECT_EQ(was.name, is.name);
        EXPECT_TRUE(was.values == is.values);
        ASSERT_EQ(was.keys.size(), is.keys.size());
        for (std::size_t i = 0; i < was.keys.size(); ++i)
        {
            compare(was.keys[i], is.keys[i]);
        }
    };
    compare(former.top, ReadRegistryTree({HKEY_CURRENT_USER, L"Zo"}).top);
    EXPECT_TRUE(Registry("export", "HKCU/Zo").out == file);
    EXPECT_THAT(Registry("import", "-", file).out, HasSubstr(" 0 of them changed\n"));
}

TEST(RegistryFile, AnyTruncationIsNoticedAndOtherLineEndsAreNot)
{
    const std::string text =
        "zo registry 1\n# comment\n[HKLM\\a]\n\"b\" = binary\n  01\n\"m\" = multi\n  \"x\"\nend\n";
    for (std::size_t length = 0; length + 1 < text.size(); ++length)
    {
        EXPECT_THROW(ParseRegistryFile(text.substr(0, length), "f"), CToolError) << length;
    }
    std::string other;
    std::ranges::for_each(text,
                          [&](char c) { other += c == '\n' ? std::string("\r\n") : std::string(1, c); });
    const auto keys = ParseRegistryFile(other, "f");
    ASSERT_EQ(keys.size(), 1U);
    EXPECT_EQ(keys[0].values.size(), 2U);
    EXPECT_EQ(keys[0].values[1].line, 6U);
}

// clang-format off
constexpr const char* kDamaged[][2] = {
    {"",                                       "1: the file is cut off"},
    {"zo registry 2\n",                        "1: no export of a registry: the first line is not \"zo registry 1\""},
    {"\n[HKLM]\n",                             "2: the file is cut off: its last line is not \"end\""},
    {"\nend\n\nmore",                          "4: something follows the end"},
    {"\n<<<<<<< HEAD\nend\n",                  "2: neither a [key], nor a \"value\", nor the end"},
    {"\n\"v\" = dword 1\nend\n",               "2: a value stands before the first key"},
    {"\n  00\nend\n",                          "2: an indented line follows a list or bytes only"},
    {"\n[HKXX\\a]\nend\n",                     "2: \"HKXX\" is no root key"},
    {"\n[HKLM\\a\nend\n",                      "2: the bracket behind the key is missing"},
    {"\n[HKLM\\a]\n[HKCU]\n[hklm/A]\nend\n",   "4: the same stands in line 2 already"},
    {"\n[HKLM\\a]\n\"\xFF\" = dword 1\nend\n", "3: the text is not UTF-8"},
    {"\n[HKLM\\a]\n\"v\nend\n",                "3: the closing quote is missing"},
    {"\n[HKLM\\a]\n\"\\x\" = dword 1\nend\n",  "3: a backslash in quotes is followed by none of"},
    {"\n[HKLM\\a]\n\"\\u{g}\" = dword 1\nend\n", "3: \\u is not followed by"},
    {"\n[HKLM\\a]\n\"\\u{0}\" = dword 1\nend\n", "3: the name of a value holds no NUL"},
    {"\n[HKLM\\a]\n\"v\"= dword 1\nend\n",     "3: \" = \" is expected"},
    {"\n[HKLM\\a]\n\"v\" = dword\nend\n",      "3: \" \" is expected"},
    {"\n[HKLM\\a]\n\"v\" = dword 1 2\nend\n",  "3: \"1 2\" is no number"},
    {"\n[HKLM\\a]\n\"v\" = word 1\nend\n",     "3: \"word\" is none of the types string|"},
    {"\n[HKLM\\a]\n\"v\" = type -1\nend\n",    "3: \"-1\" is no number of a type"},
    {"\n[HKLM\\a]\n\"v\" = string a\nend\n",   "3: a text in quotes is expected"},
    {"\n[HKLM\\a]\n\"v\" = string \"a\" \nend\n", "3: \" \" is too much"},
    {"\n[HKLM\\a]\n\"v\" = binary 00\nend\n",  "3: \" 00\" is too much"},
    {"\n[HKLM\\a]\n\"v\" = dword 1\n  00\nend\n", "4: an indented line follows"},
    {"\n[HKLM\\a]\n\"v\" = binary\n  0\nend\n", "4: the last byte has one digit only"},
    {"\n[HKLM\\a]\n\"v\" = multi\n   \nend\n", "4: a text in quotes is expected"},
    {"\n[HKLM\\a]\n\"v\" = multi\n  \"\\u{0}\"\nend\n", "4: a text of a list holds no NUL"},
    {"\n[HKLM\\a]\n\"v\" = dword 1\n\"V\" = dword 1\nend\n", "4: the same stands in line 3 already"},
};
// clang-format on

TEST_F(RegistryTool, DamagedFilesAreNotImportedAtAll)
{
    ASSERT_EQ(Registry("set", "HKCU x 1").exitCode, 0);
    for (const auto& [text, fault] : kDamaged)
    {
        SCOPED_TRACE(fault);
        Write("bad", *text == '\n' ? "zo registry 1" + std::string(text) : text);
        const ToolRun run = Registry("import", "bad");
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.err, StartsWith(std::string("zo: bad:") + fault));
        EXPECT_EQ(Registry("list", "HKLM").out, "HKEY_LOCAL_MACHINE\n");
    }
    Write("good", "zo registry 1\n[HKLM]\nend\n");
    const ToolRun run = Run("registry import good --file good");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.err,
                HasSubstr("zo: good:2: HKEY_LOCAL_MACHINE: the registry is damaged, or the file is"));
    EXPECT_THAT(run.err, HasSubstr("; the lines above it are imported, those from it on are not\n"));
}

TEST_F(RegistryTool, ReadingAtOneMomentNeverMixesOldAndNew)
{
    const auto write = [](const std::string& name, DWORD number) {
        const auto* data = reinterpret_cast<const BYTE*>(&number);
        EXPECT_EQ(RegSetValueEx(HKEY_CURRENT_USER, WideText(name).c_str(), 0, REG_DWORD, data, sizeof number),
                  0);
    };
    for (int i = 0; i < 30; ++i)
    {
        write("between" + std::to_string(i), 0);
    }
    write("a", 0);
    write("z", 0);
    constexpr DWORD kWrites = 1280;
    std::atomic<bool> isWriting = true;
    std::atomic<int> reads = 0;
    std::jthread writer([&] {
        for (DWORD number = 1; number <= kWrites; ++number)
        {
            write("a", number);
            write("z", number);
            // Bursts; in between nothing changes until a reading has succeeded.
            for (const int before = reads; number % 32 == 0 && reads == before;)
            {
                reads.wait(before);
            }
        }
        isWriting = false;
    });
    CWatchedTrees watched({{HKEY_CURRENT_USER, L""}});
    std::uint64_t last = 0;
    while (isWriting || last != kWrites)
    {
        if (const auto trees = watched.ReadAtOneMoment())
        {
            ++reads;
            reads.notify_one();
            const auto& values = trees->front().top.values;
            const auto first = std::get<std::uint64_t>(ContentOf(values.front()));
            last = std::get<std::uint64_t>(ContentOf(values.back()));
            EXPECT_TRUE(first == last || first == last + 1) << first << " " << last;
        }
    }
}

constexpr struct
{
    const char* change;
    const char* line;
    const char* json;
} kChanges[] = {
    {"set HKLM/Zo/new v 5",
     "made HKEY_LOCAL_MACHINE\\Zo\\new\r\nset HKEY_LOCAL_MACHINE\\Zo\\new \"v\" = dword 5\r\n",
     R"({"event":"valueSet","key":"HKEY_LOCAL_MACHINE\\Zo\\new","name":"v","type":"dword","data":5})"},
    {"set HKLM/Zo old x",
     "set HKEY_LOCAL_MACHINE\\Zo \"old\" = string \"x\"\r\n",
     R"({"event":"valueSet","key":"HKEY_LOCAL_MACHINE\\Zo","name":"old","type":"string","data":"x"})"},
    {"delete HKLM/Zo old",
     "deleted HKEY_LOCAL_MACHINE\\Zo \"old\"\r\n",
     R"({"event":"valueDeleted","key":"HKEY_LOCAL_MACHINE\\Zo","name":"old"})"},
    {"delete HKLM/Zo/new",
     "deleted HKEY_LOCAL_MACHINE\\Zo\\new\r\n",
     R"({"event":"keyDeleted","key":"HKEY_LOCAL_MACHINE\\Zo\\new"})"},
};

TEST_F(RegistryTool, WatchShowsWhatOtherProcessesChange)
{
    // The terminal gives its program a registry in its folder.
    const std::string theirs = " --file zosoftwareplatform/registry.db";
    ASSERT_EQ(Run("registry set HKLM/Zo old 1 --type string" + theirs).exitCode, 0);
    CTerminal watch(Folder(), {"registry", "watch", "HKLM/Zo", "--count", "5"});
    CTerminal all(Folder(), {"registry", "watch", "--json"});
    EXPECT_THAT(watch.WaitFor("watching HKEY_LOCAL_MACHINE\\Zo\r\n"), HasSubstr("watching"));
    EXPECT_THAT(all.WaitFor("watching all keys\r\n"), HasSubstr("watching"));
    for (const auto& row : kChanges)
    {
        ASSERT_EQ(Run("registry " + (row.change + theirs)).exitCode, 0) << row.change;
        EXPECT_THAT(watch.WaitFor(row.line), testing::EndsWith(row.line));
        EXPECT_THAT(all.WaitFor(row.json), HasSubstr(row.json));
    }
    EXPECT_EQ(watch.WaitForExit(), 0) << "these were five changes";
    CTerminal gone(Folder(), {"registry", "watch", "HKLM/Zo"});
    gone.WaitFor("watching");
    ASSERT_EQ(Run("registry delete HKLM/Zo" + theirs).exitCode, 0);
    EXPECT_THAT(gone.WaitFor("meanwhile"), HasSubstr("HKEY_LOCAL_MACHINE\\Zo: has been deleted"));
    EXPECT_EQ(gone.WaitForExit(), 1);
    all.Type("\x03");
    EXPECT_EQ(all.WaitForExit(), -1);
}

} // namespace

} // namespace ZoVelkor::Tools::Testing
