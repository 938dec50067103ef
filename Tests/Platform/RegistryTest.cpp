#include "CRegKey.h"
#include "CTemporaryRegistry.h"
#include "Environment.h"
#include "Event.h"
#include "ManyThreads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cwchar>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace
{
using Bytes = std::vector<BYTE>;

/// Result as an error number.
DWORD Code(LONG result)
{
    return static_cast<DWORD>(result);
}

CUniqueKey MakeKey(const wchar_t* path, HKEY parent = HKEY_LOCAL_MACHINE)
{
    HKEY key = 0;
    EXPECT_EQ(RegCreateKey(parent, path, &key), 0);
    return CUniqueKey(key);
}

DWORD Set(HKEY key, const wchar_t* name, const Bytes& data, DWORD type = REG_BINARY)
{
    return Code(RegSetValueEx(key, name, 0, type, data.data(), static_cast<DWORD>(data.size())));
}

/// The value behind its type; nothing behind the error number when it cannot be read.
std::pair<DWORD, Bytes> Get(HKEY key, const wchar_t* name)
{
    DWORD type = 0;
    DWORD size = 0;
    DWORD error = Code(RegQueryValueEx(key, name, nullptr, &type, nullptr, &size));
    Bytes data(size);
    if (error == ERROR_SUCCESS)
    {
        error = Code(RegQueryValueEx(key, name, nullptr, &type, data.data(), &size));
    }
    return error == ERROR_SUCCESS ? std::pair(type, data) : std::pair(error, Bytes());
}

/// Every function that works on a key.
std::vector<std::pair<const char*, std::function<LONG(HKEY)>>> RegistryUses()
{
    static const CUniqueEvent event(CreateEvent(TRUE, FALSE));
    static HKEY opened = 0;
    static wchar_t name[8];
    static DWORD length = 8;
    // clang-format off
    return {
        {"open", [](HKEY key) { return RegOpenKey(key, nullptr, &opened); }},
        {"open below", [](HKEY key) { return RegOpenKey(key, L"none", &opened); }},
        {"create", [](HKEY key) { return RegCreateKey(key, L"made", &opened); }},
        {"delete", [](HKEY key) { return RegDeleteKey(key, L"none"); }},
        {"delete tree", [](HKEY key) { return RegDeleteTree(key, L"none"); }},
        {"query", [](HKEY key) { return RegQueryValueEx(key, L"none", nullptr, nullptr, nullptr, nullptr); }},
        {"set", [](HKEY key) { return RegSetValueEx(key, L"set", 0, REG_SZ, nullptr, 0); }},
        {"delete value", [](HKEY key) { return RegDeleteValue(key, L"none"); }},
        {"info", [](HKEY key) { return RegQueryInfoKey(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                       nullptr, nullptr, nullptr, nullptr, nullptr); }},
        {"enum value", [](HKEY key) { return RegEnumValue(key, 9, name, &length, nullptr, nullptr, nullptr, nullptr); }},
        {"enum key", [](HKEY key) { return RegEnumKey(key, 9, name, length); }},
        {"notify", [](HKEY key) { return RegNotifyChangeKeyValue(key, FALSE, 1, event.Get(), TRUE); }}};
    // clang-format on
}

class Registry : public testing::Test
{
protected:
    CTemporaryRegistry m_registry;
};

TEST_F(Registry, FindsKeysByPath)
{
    const std::wstring longest(kRegistryMaximumKeyName, L'n');
    std::wstring deepest;
    for (DWORD i = 0; i < kRegistryMaximumDepth; ++i)
    {
        deepest += L"d\\";
    }
    // The path made and the path opened, with their results.
    const std::tuple<std::wstring, std::wstring, DWORD, DWORD> cases[] = {
        // clang-format off
        {L"A\\b", L"A\\b", 0, 0}, {L"A\\b", L"a\\B", 0, 0}, {L"C\\", L"C", 0, 0}, {L"", L"", 0, 0},
        {L"\u00C4\u0416\u03B1", L"\u00E4\u0436\u0391", 0, 0}, {L"\U0001F600", L"\U0001F600", 0, 0},
        {L"D", L"D\\E", 0, ERROR_FILE_NOT_FOUND},
        {L"\\F", L"F", ERROR_BAD_PATHNAME, ERROR_FILE_NOT_FOUND},
        {L"G\\\\H", L"G", ERROR_BAD_PATHNAME, ERROR_FILE_NOT_FOUND},
        {longest, longest, 0, 0}, {deepest, deepest, 0, 0},
        {longest + L"n", longest + L"n", ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
        {deepest + L"d", L"e", ERROR_INVALID_PARAMETER, ERROR_FILE_NOT_FOUND},
        {L"\xD800", L"I", ERROR_NO_UNICODE_TRANSLATION, ERROR_FILE_NOT_FOUND}};
    // clang-format on
    for (const auto& [making, opening, made, opened] : cases)
    {
        HKEY key = 99;
        EXPECT_EQ(Code(RegCreateKey(HKEY_LOCAL_MACHINE, making.c_str(), &key)), made) << opening.c_str();
        EXPECT_EQ(key == 0, made != ERROR_SUCCESS);
        const CUniqueKey owner(key);
        EXPECT_EQ(Code(RegOpenKey(HKEY_LOCAL_MACHINE, opening.c_str(), &key)), opened) << opening.c_str();
        RegCloseKey(key);
    }
    HKEY key = 0;
    const CUniqueKey deep = MakeKey(deepest.c_str());
    EXPECT_EQ(Code(RegCreateKey(deep.Get(), L"d", &key)), ERROR_INVALID_PARAMETER)
        << "depth counts from the root";
}

TEST_F(Registry, RootsAreApartAlwaysOpenAndAcceptedWithEitherExtension)
{
    for (HKEY root = HKEY_CLASSES_ROOT; root <= HKEY_DYN_DATA; ++root)
    {
        const HKEY signExtended = root | 0xFFFFFFFF00000000;
        EXPECT_EQ(Set(root, L"number", {static_cast<BYTE>(root)}), ERROR_SUCCESS);
        EXPECT_EQ(RegCloseKey(signExtended), 0);
        EXPECT_EQ(Get(signExtended, L"number").second, Bytes{static_cast<BYTE>(root)}) << root;
    }
}

TEST_F(Registry, RefusesHandlesThatAreNoOpenKey)
{
    const CUniqueEvent event(CreateEvent(TRUE, FALSE));
    const HKEY closed = MakeKey(L"closed").Get();
    const CUniqueKey open = MakeKey(L"open");
    // clang-format off
    const HKEY handles[] = {0, closed, event.Get(), 0x80000007, 0x1'80000000, ~0UL, open.Get() | 1UL << 40,
                            open.Get() ^ 0x40000000};
    // clang-format on
    for (const HKEY handle : handles)
    {
        for (const auto& use : RegistryUses())
        {
            EXPECT_EQ(Code(use.second(handle)), ERROR_INVALID_HANDLE) << use.first << " " << handle;
        }
        EXPECT_EQ(Code(RegCloseKey(handle)), ERROR_INVALID_HANDLE) << handle;
    }
    EXPECT_EQ(CloseHandle(open.Get()), FALSE) << "a key is no event";
    EXPECT_EQ(Code(RegNotifyChangeKeyValue(open.Get(), FALSE, 1, open.Get(), TRUE)), ERROR_INVALID_HANDLE);
}

TEST_F(Registry, TellsOfDeletedKeysAlsoWhenTheyAreMadeAgain)
{
    const CUniqueKey open = MakeKey(L"top\\key");
    EXPECT_EQ(RegDeleteTree(HKEY_LOCAL_MACHINE, L"top"), 0);
    const CUniqueKey again = MakeKey(L"top\\key");
    for (const auto& use : RegistryUses())
    {
        EXPECT_EQ(Code(use.second(open.Get())), ERROR_KEY_DELETED) << use.first;
        EXPECT_NE(Code(use.second(again.Get())), ERROR_KEY_DELETED) << use.first;
    }
}

TEST_F(Registry, KeepsValuesOfEveryTypeAndSize)
{
    const CUniqueKey key = MakeKey(L"values");
    const std::tuple<const wchar_t*, DWORD, std::size_t, DWORD> cases[] = {
        {L"", REG_SZ, 4, 0},
        {nullptr, REG_NONE, 0, 0},
        {L"text", REG_SZ, 5, 0},
        {L"TEXT", REG_EXPAND_SZ, 40, 0},
        {L"number", REG_DWORD, 4, 0},
        {L"wide", REG_QWORD, 8, 0},
        {L"texts", REG_MULTI_SZ, 80, 0},
        {L"unknown", 0xFFFFFFFF, 3, 0},
        {L"largest", REG_BINARY, kRegistryMaximumValueSize, 0},
        {L"too large", REG_BINARY, kRegistryMaximumValueSize + 1, ERROR_INVALID_PARAMETER}};
    for (const auto& [name, type, size, result] : cases)
    {
        Bytes data(size);
        std::ranges::generate(data, [i = type]() mutable { return static_cast<BYTE>(i += 37); });
        EXPECT_EQ(Set(key.Get(), name, data, type), result) << size;
        m_registry.Use();
        EXPECT_TRUE(Get(key.Get(), name) ==
                    (result == 0 ? std::pair(type, data) : std::pair(ERROR_FILE_NOT_FOUND, Bytes())))
            << type;
    }
    EXPECT_EQ(RegFlushKey(key.Get()), 0);
    const std::wstring longest(kRegistryMaximumValueName, L'n');
    EXPECT_EQ(Set(key.Get(), longest.c_str(), {1}), ERROR_SUCCESS);
    EXPECT_EQ(Set(key.Get(), (longest + L"n").c_str(), {1}), ERROR_INVALID_PARAMETER);
}

TEST_F(Registry, ReadsIntoWhatTheCallerOffers)
{
    Set(HKEY_USERS, L"v", {1, 2, 3, 4}, REG_DWORD);
    BYTE data[4] = {};
    DWORD size = 3;
    const std::tuple<DWORD*, BYTE*, DWORD*, DWORD> cases[] = {
        {nullptr, data, &size, ERROR_MORE_DATA},
        {nullptr, data, &size, 0},
        {nullptr, nullptr, nullptr, 0},
        {nullptr, data, nullptr, ERROR_INVALID_PARAMETER},
        {&size, data, &size, ERROR_INVALID_PARAMETER}};
    for (const auto& [reserved, buffer, bufferSize, result] : cases)
    {
        EXPECT_EQ(Code(RegQueryValueEx(HKEY_USERS, L"V", reserved, nullptr, buffer, bufferSize)), result);
        EXPECT_EQ(data[3], result == ERROR_MORE_DATA ? 0 : 4) << "a buffer that is too small is left alone";
    }
    EXPECT_EQ(Code(RegSetValueEx(HKEY_USERS, L"v", 0, 1, nullptr, 1)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Code(RegSetValueEx(HKEY_USERS, L"v", 1, 1, data, 1)), ERROR_INVALID_PARAMETER);
}

TEST_F(Registry, DeletesKeysAndValues)
{
    const CUniqueKey top = MakeKey(L"top");
    const CUniqueKey leaf = MakeKey(L"top\\middle\\leaf");
    Set(leaf.Get(), L"v", {1});
    Set(top.Get(), L"v", {1});
    EXPECT_EQ(Code(RegDeleteValue(leaf.Get(), L"V")), ERROR_SUCCESS);
    EXPECT_EQ(Code(RegDeleteValue(leaf.Get(), L"v")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Code(RegDeleteKey(HKEY_LOCAL_MACHINE, L"")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Code(RegDeleteKey(top.Get(), nullptr)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Code(RegDeleteKey(top.Get(), L"middle")), ERROR_ACCESS_DENIED) << "a key is below it";
    EXPECT_EQ(Code(RegDeleteKey(top.Get(), L"none")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Code(RegDeleteKey(leaf.Get(), L"")), ERROR_SUCCESS);
    EXPECT_EQ(Code(RegDeleteTree(top.Get(), L"none")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Code(RegDeleteTree(top.Get(), nullptr)), ERROR_SUCCESS);
    EXPECT_EQ(Get(top.Get(), L"v").first, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Code(RegDeleteKey(top.Get(), L"middle")), ERROR_FILE_NOT_FOUND);
    CRegKey owner(MakeKey(L"top\\a\\b").Detach());
    EXPECT_EQ(Code(CRegKey(HKEY_LOCAL_MACHINE).RecurseDeleteKey(nullptr)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Code(CRegKey(HKEY_LOCAL_MACHINE).RecurseDeleteKey(L"TOP")), ERROR_SUCCESS);
    EXPECT_EQ(Code(owner.SetDWORDValue(L"v", 1)), ERROR_KEY_DELETED);
}

/// All names and data of a key, in the order in which they are numbered.
using Entries = std::vector<std::pair<std::wstring, Bytes>>;
Entries EnumerateValues(HKEY key)
{
    Entries found;
    for (DWORD error = ERROR_SUCCESS; error == ERROR_SUCCESS;)
    {
        wchar_t name[32];
        Bytes data(10'000);
        DWORD length = std::size(name);
        auto size = static_cast<DWORD>(data.size());
        error = Code(RegEnumValue(
            key, static_cast<DWORD>(found.size()), name, &length, nullptr, nullptr, data.data(), &size));
        if (error == ERROR_SUCCESS)
        {
            data.resize(size);
            found.emplace_back(std::wstring(name, length), data);
        }
        EXPECT_TRUE(error == ERROR_SUCCESS || error == ERROR_NO_MORE_ITEMS);
    }
    return found;
}

TEST_F(Registry, EnumeratesAndCountsWhatIsThereWhateverChangesInBetween)
{
    constexpr unsigned kSeed = 4711;
    std::mt19937 random(kSeed);
    const CUniqueKey read = MakeKey(L"key");
    m_registry.Use();
    const CUniqueKey written = MakeKey(L"key");
    std::map<std::wstring, Bytes> model;
    std::set<std::wstring> keys;
    for (int round = 0; round < 400; ++round)
    {
        const std::wstring name = L"NAME" + std::to_wstring(random() % 40);
        // Small ones, of which many are read at once, and some that are too large for that.
        const Bytes data(random() % 100 * (random() % 8 == 0 ? 100 : 1), static_cast<BYTE>(random()));
        const CUniqueKey& key = random() % 2 == 0 ? read : written;
        switch (random() % 4)
        {
        case 0:
            EXPECT_EQ(RegDeleteValue(key.Get(), name.c_str()) == 0, model.erase(name) == 1);
            break;
        case 1:
            EXPECT_EQ(RegDeleteKey(key.Get(), name.c_str()) == 0, keys.erase(name) == 1);
            break;
        case 2:
            EXPECT_EQ(Set(key.Get(), name.c_str(), data), ERROR_SUCCESS);
            model[name] = data;
            break;
        default:
            MakeKey(name.c_str(), key.Get());
            keys.insert(name);
        }
        const DWORD index = static_cast<DWORD>(static_cast<std::size_t>(round) % (keys.size() + 1));
        wchar_t found[32] = {};
        EXPECT_EQ(Code(RegEnumKey(read.Get(), index, found, 32)),
                  index < keys.size() ? ERROR_SUCCESS : ERROR_NO_MORE_ITEMS);
        EXPECT_TRUE(index == keys.size() || found == *std::next(keys.begin(), index));
        ASSERT_TRUE(EnumerateValues(read.Get()) == Entries(model.begin(), model.end())) << round;
        DWORD counts[2];
        // clang-format off
        EXPECT_EQ(RegQueryInfoKey(read.Get(), nullptr, nullptr, nullptr, &counts[0], nullptr, nullptr, &counts[1],
                                  nullptr, nullptr, nullptr, nullptr), 0);
        // clang-format on
        ASSERT_TRUE(counts[0] == keys.size() && counts[1] == model.size()) << round;
    }
}

TEST_F(Registry, EnumeratesIntoWhatTheCallerOffers)
{
    Set(HKEY_USERS, L"\u00E4\u00F6\u00FC", {1, 2});
    // Room for the name, size of the buffer; result; length and size afterwards.
    const std::tuple<DWORD, DWORD, DWORD, DWORD, DWORD> cases[] = {
        {3, 1, ERROR_MORE_DATA, 3, 1},
        {4, 1, ERROR_MORE_DATA, 3, 2},
        {4, 2, ERROR_SUCCESS, 3, 2},
    };
    for (auto [length, size, result, expectedLength, expectedSize] : cases)
    {
        wchar_t name[4] = {};
        BYTE data[2] = {};
        EXPECT_EQ(Code(RegEnumValue(HKEY_USERS, 0, name, &length, nullptr, nullptr, data, &size)), result);
        EXPECT_TRUE(length == expectedLength && size == expectedSize && (data[1] == 2) == (result == 0));
    }
}

TEST_F(Registry, OwnerReadsAndWritesTypedValues)
{
    CRegKey key;
    ASSERT_EQ(key.Create(HKEY_CURRENT_USER, L"key"), 0);
    EXPECT_EQ(key.SetStringValue(L"text", L"ab"), 0);
    EXPECT_EQ(key.SetQWORDValue(L"wide", 1ULL << 40), 0);
    EXPECT_EQ(Set(key, L"open end", Bytes(4, 'x'), REG_SZ), ERROR_SUCCESS);
    wchar_t text[3] = {};
    // Room, result, length afterwards.
    const std::tuple<const wchar_t*, ULONG, DWORD, ULONG> cases[] = {// clang-format off
        {L"text", 2, ERROR_MORE_DATA, 3}, {L"text", 3, 0, 3}, {L"wide", 3, ERROR_INVALID_DATA, 3},
        {L"open end", 1, ERROR_MORE_DATA, 2}, {L"open end", 3, 0, 2}};
    // clang-format on
    for (auto [name, length, result, expectedLength] : cases)
    {
        EXPECT_EQ(Code(key.QueryStringValue(name, text, &length)), result) << length;
        EXPECT_EQ(length, expectedLength);
        EXPECT_TRUE(result != ERROR_SUCCESS || text[length - 1] == 0);
    }
    ULONGLONG wide = 0;
    DWORD number = 7;
    EXPECT_EQ(key.QueryQWORDValue(L"wide", wide), 0);
    EXPECT_EQ(Code(key.QueryDWORDValue(L"wide", number)), ERROR_INVALID_DATA);
    EXPECT_TRUE(number == 7 && wide == 1ULL << 40);
    EXPECT_EQ(key.Close(), 0);
}

TEST_F(Registry, LosesNoWriteOfManyThreads)
{
    const CUniqueKey key = MakeKey(L"key");
    std::atomic<int> thread{0};
    std::atomic<int> faults{0};
    RunOnManyThreads([&] {
        const std::wstring prefix = std::to_wstring(thread++) + L"-";
        for (int i = 0; i < 100; ++i)
        {
            const std::wstring name = prefix + std::to_wstring(i);
            const Bytes data(8, static_cast<BYTE>(i));
            HKEY own = 0;
            const bool isGood = Set(key.Get(), name.c_str(), data) == 0 &&
                                Get(key.Get(), name.c_str()).second == data &&
                                RegCreateKey(key.Get(), L"same\\path", &own) == 0 && RegCloseKey(own) == 0;
            faults += isGood ? 0 : 1;
        }
    });
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(EnumerateValues(key.Get()).size(), 400U);
}

TEST(Environment, ExpandsVariables)
{
    ::setenv("ZO_ONE", "\xC3\xA4", 1);
    ::setenv("ZO_EMPTY", "", 1);
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {// clang-format off
        {L"", L""}, {L"plain", L"plain"}, {L"<%ZO_ONE%%ZO_ONE%>", L"<\u00E4\u00E4>"}, {L"%ZO_EMPTY%", L""},
        {L"%ZO_NONE%", L"%ZO_NONE%"}, {L"100% of %ZO_ONE%", L"100% of \u00E4"}, {L"%%", L"%%"},
        {L"%ZO_NONE%ZO_ONE%", L"%ZO_NONE\u00E4"}, {L"%zo_one%", L"%zo_one%"}};
    // clang-format on
    for (const auto& [text, expected] : cases)
    {
        wchar_t buffer[32] = L"untouched";
        const auto length = static_cast<DWORD>(std::wcslen(expected) + 1);
        EXPECT_EQ(ExpandEnvironmentStringsW(text, buffer, length - 1), length);
        EXPECT_STREQ(buffer, L"untouched");
        EXPECT_EQ(ExpandEnvironmentStringsW(text, buffer, length), length);
        EXPECT_STREQ(buffer, expected);
    }
    EXPECT_EQ(ExpandEnvironmentStringsW(nullptr, nullptr, 0), 0U);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

} // namespace
