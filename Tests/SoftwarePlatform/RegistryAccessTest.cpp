#include "CBRegistryAccess.h"
#include "CComBSTR.h"
#include "CComObject.h"
#include "CCritSection.h"
#include "CERegistryAccess.h"
#include "CErrorRecorder.h"
#include "CTemporaryRegistry.h"
#include "CTraceRecorder.h"
#include "IZONotificationSink.h"
#include "ModuleServices.h"
#include "RemoteDiagnoseControl.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace ZoVelkor
{
namespace
{

constexpr HRESULT kInvalidData = MakeResult(0x8007000D);
constexpr HRESULT kTooSmall = MakeResult(0x8007007A);
constexpr HRESULT kMoreData = MakeResult(0x800700EA);
constexpr HRESULT kNotFound = MakeResult(0x80070002);
constexpr HRESULT kBadHandle = MakeResult(0x80070006);
constexpr HRESULT kBadParameter = MakeResult(0x80070057);
constexpr HRESULT kNoMore = MakeResult(0x80070103);
constexpr const char* kInvalidResult =
    "hResult == S_OK || hResult == S_FALSE || hResult == E_FAIL|HResult was invalid\n";
constexpr long kMachine = 0x80000002;

/// The service of the module with a registry of its own and the reports of one test.
struct RegistryAccess : testing::Test
{
    RegistryAccess()
    {
        EXPECT_EQ(GetModuleService(L"RegistryServices_2.6", std::addressof(m_service)), S_OK);
        EXPECT_EQ(m_service->RegCreateKey(kMachine, m_name, &m_key), S_OK);
    }
    ~RegistryAccess() override { m_service->RegCloseKey(m_key); }

    std::wstring Read(HRESULT expected, bool expanded = false)
    {
        CComBSTR text;
        EXPECT_EQ(expanded ? m_service->ReadExpandedString(m_key, m_name, &text)
                           : m_service->ReadString(m_key, m_name, &text),
                  expected);
        EXPECT_EQ(text.IsNull(), expected != S_OK);
        return std::wstring(text.View());
    }
    HRESULT Set(long type, std::wstring text, long size)
    {
        return m_service->RegSetValue(
            m_key, m_name, type, size, reinterpret_cast<unsigned char*>(text.data()));
    }
    std::string Reports()
    {
        std::string text;
        for (const auto& entry : m_recorder.Take())
        {
            text += entry.report.condition + ("|" + entry.report.message) + "\n";
        }
        return text;
    }

    CTemporaryRegistry m_registry;
    CErrorRecorder m_recorder;
    CComPtr<IZORegistryAccess> m_service;
    wchar_t m_name[5] = L"name";
    long m_key = 0;
};

TEST_F(RegistryAccess, GivesTheRootsInItsOwnOrder)
{
    std::array<long, 7> keys{};
    auto [classes, machine, user, config, users, performance, dynamic] = keys;
    m_service->GetBasicKeys(&classes, &machine, &user, &config, &users, &performance, &dynamic);
    keys = {classes, user, machine, users, performance, config, dynamic};
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        EXPECT_EQ(keys[i], 0x80000000L + static_cast<long>(i));
    }
    EXPECT_EQ(m_service->GetBasicKeys(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), S_OK);
}

TEST_F(RegistryAccess, ReadsOnlyWholeTexts)
{
    ::setenv("ZO_LONG", std::string(100, 'x').c_str(), 1);
    const std::wstring nul(1, L'\0');
    const std::wstring most(2047, L'm');
    std::wstring expanding;
    for (int i = 0; i < 20; ++i)
    {
        expanding += L"%ZO_LONG%";
    }
    const auto xs = [](std::size_t count) { return std::wstring(count, L'x'); };
    const auto whole = [](const std::wstring& text) { return static_cast<long>(4 * text.size() + 4); };
    // Type, data, size; then result and text of ReadString and of ReadExpandedString.
    const std::tuple<long, std::wstring, long, HRESULT, std::wstring, HRESULT, std::wstring> cases[] = {
        {1, L"abc", 16, S_OK, L"abc", S_OK, L"abc"},
        {2, L"<%ZO_LONG%>", 48, S_OK, L"<%ZO_LONG%>", S_OK, L"<" + xs(100) + L">"},
        {1, L"%ZO_LONG%", 40, S_OK, L"%ZO_LONG%", S_OK, L"%ZO_LONG%"},
        {1, L"", 4, S_OK, L"", S_OK, L""},
        {1, L"a" + nul + L"b", 16, S_OK, L"a" + nul + L"b", S_OK, L"a" + nul + L"b"},
        {4, L"a", 4, kInvalidData, L"", kInvalidData, L""},
        {3, L"a", 8, kInvalidData, L"", kInvalidData, L""},
        {1, L"", 0, kInvalidData, L"", kInvalidData, L""},
        {1, L"ab", 10, kInvalidData, L"", kInvalidData, L""},
        {1, L"ab", 8, S_OK, L"a", kInvalidData, L""},
        {1, most, whole(most), S_OK, most, S_OK, most},
        {1, most + L"m", whole(most + L"m"), S_OK, most + L"m", kMoreData, L""},
        {2, expanding + xs(47), whole(expanding + xs(47)), S_OK, expanding + xs(47), S_OK, xs(2047)},
        {2, expanding + xs(48), whole(expanding + xs(48)), S_OK, expanding + xs(48), kTooSmall, L""},
    };
    for (const auto& [type, data, size, result, text, expandedResult, expanded] : cases)
    {
        EXPECT_EQ(Set(type, data, size), S_OK);
        EXPECT_EQ(Read(result), text) << type << " " << size;
        EXPECT_EQ(Read(expandedResult, true), expanded) << type << " " << size;
    }
    EXPECT_EQ(m_service->RegRecursiveDeleteKey(kMachine, m_name), S_OK);
    Read(MakeResult(0x800703FA));
    Read(MakeResult(0x800703FA), true);
}

TEST_F(RegistryAccess, WritesTextsNumbersAndGuids)
{
    wchar_t text[] = L"abc";
    for (const long wanted : {1, 2})
    {
        long type = 0;
        long size = 0;
        EXPECT_EQ(wanted == 1 ? m_service->WriteString(m_key, m_name, text)
                              : m_service->WriteExpandedString(m_key, m_name, text),
                  S_OK);
        EXPECT_EQ(m_service->RegQueryValue(m_key, m_name, &type, &size, nullptr), S_OK);
        EXPECT_TRUE(type == wanted && size == 16);
    }
    EXPECT_EQ(m_service->WriteString(m_key, m_name, nullptr), E_POINTER);
    EXPECT_EQ(m_service->WriteExpandedString(m_key, m_name, nullptr), E_POINTER);
    EXPECT_EQ(m_service->WriteString(99, m_name, text), kBadHandle);

    const std::tuple<long, HRESULT, long> numbers[] = {// clang-format off
        {0x7FFFFFFF, S_OK, 0x7FFFFFFF}, {-0x80000000L, S_OK, -0x80000000L}, {0xFFFFFFFFL, S_OK, -1},
        {0x100000000L, kBadParameter, -1}, {7, S_OK, 7}, {-0x80000001L, kBadParameter, 7}};
    // clang-format on
    for (const auto& [written, result, read] : numbers)
    {
        long value = 0;
        EXPECT_EQ(m_service->WriteLong(m_key, m_name, written), result) << written;
        EXPECT_EQ(m_service->ReadLong(m_key, m_name, &value), S_OK);
        EXPECT_EQ(value, read);
    }
    const GUID id = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};
    GUID got{};
    EXPECT_EQ(m_service->ReadGuid(m_key, m_name, &got), kInvalidData) << "a number";
    EXPECT_EQ(m_service->WriteGuid(m_key, m_name, &id), S_OK);
    EXPECT_EQ(Read(S_OK), L"{12345678-9ABC-DEF0-0102-030405060708}");
    EXPECT_EQ(m_service->ReadGuid(m_key, m_name, &got), S_OK);
    EXPECT_TRUE(got == id);
    EXPECT_EQ(m_service->WriteString(m_key, m_name, text), S_OK);
    EXPECT_EQ(m_service->ReadGuid(m_key, m_name, &got), CO_E_CLASSSTRING);
}

TEST_F(RegistryAccess, EveryFailureToReadANumberIsInvalidData)
{
    long value = 99;
    for (const auto& [type, size, key] : {std::tuple(3, 4, m_key), {4, 8, m_key}, {1, 4, m_key}, {4, 4, 99L}})
    {
        Set(type, L"ab", size);
        EXPECT_EQ(m_service->ReadLong(key, m_name, &value), kInvalidData);
    }
    EXPECT_EQ(m_service->ReadLong(m_key, nullptr, &value), kInvalidData) << "missing";
    EXPECT_EQ(value, 99);
    Set(4, L"\x89ABCDEF", 2);
    EXPECT_EQ(m_service->ReadLong(m_key, m_name, &value), S_OK);
    EXPECT_EQ(value, 0xCDEF) << "a short number";
}

TEST_F(RegistryAccess, QueriesAndEnumeratesLikeThePlatform)
{
    Set(1, L"ab", 12);
    long type = 0;
    long size = 11;
    unsigned char data[12] = {};
    EXPECT_EQ(m_service->RegQueryValue(m_key, m_name, &type, &size, data), kMoreData);
    EXPECT_TRUE(type == 1 && size == 12);
    CComBSTR name;
    size = 12;
    EXPECT_EQ(m_service->RegEnumValue(m_key, 0, &type, &size, data, &name), S_OK);
    EXPECT_TRUE(type == 1 && size == 12 && data[4] == 'b' && name == L"name");
    size = 1;
    EXPECT_EQ(m_service->RegEnumValue(m_key, 0, nullptr, &size, data, &name), kMoreData);
    EXPECT_TRUE(size == 12 && name.IsNull());
    size = -1;
    const std::pair<HRESULT, HRESULT> cases[] = {
        {m_service->RegQueryValue(m_key, m_name, &type, &size, data), kBadParameter},
        {m_service->RegQueryValue(m_key, m_name, nullptr, nullptr, data), kBadParameter},
        {m_service->RegSetValue(m_key, m_name, 1, -1, data), kBadParameter},
        {m_service->RegSetValue(m_key, m_name, 1, 0x100000001L, data), kBadParameter},
        {m_service->RegEnumValue(m_key, 0, &type, nullptr, data, nullptr), S_OK}, // no data without a size
        {m_service->RegEnumValue(m_key, 1, &type, nullptr, nullptr, nullptr), kNoMore},
        {m_service->RegEnumValue(m_key, -1, &type, nullptr, nullptr, nullptr), kNoMore},
        {m_service->RegEnumValue(m_key, 0x100000000L, &type, nullptr, nullptr, nullptr), kBadParameter}};
    for (const auto& row : cases)
    {
        EXPECT_EQ(row.first, row.second) << &row - cases;
    }
    for (const auto& [length, result] : {std::pair(254U, S_OK), std::pair(255U, kMoreData)})
    {
        std::wstring longName(length, L'a');
        long made = 0;
        EXPECT_EQ(m_service->RegCreateKey(m_key, longName.data(), &made), S_OK);
        EXPECT_EQ(m_service->RegEnumKey(m_key, 0, &name), result) << length;
        EXPECT_EQ(name == longName.c_str(), result == S_OK);
        long counts[5] = {};
        EXPECT_EQ(
            m_service->RegQueryInfoKey(m_key, &counts[0], &counts[1], &counts[2], &counts[3], &counts[4]),
            S_OK);
        EXPECT_EQ((std::vector<long>(counts, counts + 5)), (std::vector<long>{1, length, 1, 4, 12}));
        EXPECT_EQ(m_service->RegCloseKey(made), S_OK);
        EXPECT_EQ(m_service->RegCloseKey(made), kBadHandle);
        EXPECT_EQ(m_service->RegDeleteKey(m_key, longName.data()), S_OK);
    }
    EXPECT_EQ(m_service->RegEnumKey(m_key, 0, &name), kNoMore);
    EXPECT_EQ(m_service->RegCloseKey(0), S_FALSE);
    long opened = 99;
    EXPECT_EQ(m_service->RegOpenKey(m_key, m_name, &opened), kNotFound);
    EXPECT_EQ(opened, 0);
    EXPECT_EQ(m_service->RegCreateKey(m_key, m_name, nullptr), kBadParameter);
    EXPECT_EQ(m_service->RegDeleteKey(kMachine, m_name), S_OK);
    EXPECT_EQ(m_service->SaveRegKeyToFile(m_key, m_name), E_NOTIMPL);
    EXPECT_EQ(m_service->RegRecursiveDeleteKey(kMachine, nullptr), kBadParameter);
}

TEST_F(RegistryAccess, RefusesArgumentsBeforeTheBaseLayerSeesThem)
{
    IZORegistryAccess& service = *m_service;
    wchar_t held[] = L"held";
    wchar_t* full = held;
    long one = 1;
    const auto null = [](const char* name) {
        return std::string(name) + " != NULL|Null pointer detected (" + name + ")\n";
    };
    const std::string lost = "*pbsValue == NULL|The string would be lost (pbsValue)\n";
    const std::string any = "pType != NULL || pSize != NULL || pData != NULL";
    const std::tuple<std::function<HRESULT()>, HRESULT, std::string> cases[] = {
        // clang-format off
        {[&] { return service.ReadString(m_key, m_name, nullptr); }, E_POINTER, null("pbsValue")},
        {[&] { return service.ReadString(m_key, m_name, &full); }, E_INVALIDARG, lost},
        {[&] { return service.ReadExpandedString(m_key, m_name, nullptr); }, E_POINTER, null("pbsValue")},
        {[&] { return service.ReadExpandedString(m_key, m_name, &full); }, E_INVALIDARG, lost},
        {[&] { return service.RegEnumKey(m_key, 0, nullptr); }, E_POINTER, null("pbsValue")},
        {[&] { return service.RegEnumKey(m_key, 0, &full); }, E_INVALIDARG, lost},
        {[&] { return service.RegEnumValue(m_key, 0, &one, nullptr, nullptr, &full); }, E_INVALIDARG, lost},
        {[&] { return service.RegEnumValue(m_key, 0, nullptr, nullptr, nullptr, nullptr); }, E_POINTER,
         any + " || pbsValue != NULL|Null pointer detected (pData)\n"},
        {[&] { return service.RegEnumValue(m_key, 0, nullptr, &one, nullptr, nullptr); }, E_POINTER, null("pData")},
        {[&] { return service.RegQueryValue(m_key, m_name, nullptr, nullptr, nullptr); }, E_POINTER,
         any + "|Null pointer detected (pData)\n"},
        {[&] { return service.RegQueryValue(m_key, m_name, nullptr, &one, nullptr); }, E_POINTER, null("pData")},
        {[&] { return service.ReadLong(m_key, m_name, nullptr); }, E_POINTER, null("piValue")},
        {[&] { return service.ReadGuid(m_key, m_name, nullptr); }, E_POINTER, null("pGuid")},
        {[&] { return service.WriteGuid(m_key, m_name, nullptr); }, E_POINTER, null("pGuid")},
        {[&] { return service.RegOpenKey(m_key, m_name, nullptr); }, E_POINTER, null("piResult")},
        {[&] { return service.UnregisterNotificationRegKey(nullptr); }, E_POINTER, null("pIZONotificationSink")},
        {[&] { return service.RegisterNotificationRegKey(nullptr, 0, nullptr, 0, nullptr, 0, 0); }, E_POINTER,
         null("pIZONotificationSink")}};
    // clang-format on
    for (const auto& [call, result, report] : cases)
    {
        EXPECT_EQ(call(), result) << report;
        EXPECT_EQ(Reports(), report);
    }
    EXPECT_EQ(full, held);
}

/// Fails in every way that a base layer can.
struct CFailingRegistry : CBRegistryAccess
{
    HRESULT Fail() const { return m_throws ? throw std::runtime_error("broken") : m_result; }
    HRESULT ReadString(long, wchar_t*, wchar_t**) override { return Fail(); }
    HRESULT WriteString(long, wchar_t*, wchar_t*) override { return Fail(); }
    HRESULT SaveRegKeyToFile(long, wchar_t*) override { return Fail(); }
    HRESULT WriteLong(long, wchar_t*, long) override { return Fail(); }
    HRESULT RegEnumKey(long, long, wchar_t**) override { return Fail(); }
    HRESULT RegCloseKey(long) override { return Fail(); }
    HRESULT DoRegisterNotificationRegKey(
        IZONotificationSink*, long, wchar_t*, long, wchar_t*, short flag, unsigned long filter) override
    {
        // The section is recursive: only another thread finds it occupied.
        std::jthread([this] {
            m_isLocked = !m_section.TryLock();
            if (!m_isLocked)
            {
                m_section.Unlock();
            }
        }).join();
        m_passed = {flag, filter};
        return Fail();
    }
    HRESULT DoUnregisterNotificationRegKey(IZONotificationSink*) override { return Fail(); }

    bool m_throws = false;
    HRESULT m_result = S_OK;
    CCritSection m_section;
    bool m_isLocked = false;
    std::pair<short, unsigned long> m_passed;
};
using CFailing = CComObject<CERegistryAccess<CFailingRegistry>, IZORegistryAccess>;

TEST_F(RegistryAccess, EachOperationHasItsOwnResultForAnException)
{
    const auto failing = CFailing::Create();
    failing->m_throws = true;
    wchar_t* text = nullptr;
    GUID id{};
    const std::pair<HRESULT, HRESULT> cases[] = {
        // clang-format off
        {failing->ReadString(0, nullptr, &text), E_FAIL}, {failing->WriteString(0, nullptr, m_name), E_FAIL},
        {failing->ReadGuid(0, nullptr, &id), E_FAIL}, {failing->WriteGuid(0, nullptr, &id), E_FAIL},
        {failing->SaveRegKeyToFile(0, nullptr), E_FAIL}, {failing->WriteLong(0, nullptr, 0), E_UNEXPECTED},
        {failing->RegEnumKey(0, 0, &text), E_UNEXPECTED}, {failing->RegCloseKey(0), E_UNEXPECTED},
        {failing->UnregisterNotificationRegKey(reinterpret_cast<IZONotificationSink*>(this)), E_FAIL}};
    // clang-format on
    for (const auto& [result, expected] : cases)
    {
        EXPECT_EQ(result, expected);
    }
    EXPECT_EQ(m_recorder.Take().size(), std::size(cases)) << "each is reported once";
}

TEST_F(RegistryAccess, RegistersNotificationsUnderTheLock)
{
    auto* const sink = reinterpret_cast<IZONotificationSink*>(this); // passed through, never used
    EXPECT_EQ(m_service->RegisterNotificationRegKey(sink, m_key, m_name, 0, nullptr, 0, 0), S_OK);
    EXPECT_EQ(m_service->UnregisterNotificationRegKey(sink), S_OK);

    const auto failing = CFailing::Create();
    const std::tuple<HRESULT, HRESULT, bool> cases[] = {// clang-format off
        {S_OK, S_OK, false}, {S_FALSE, S_FALSE, false}, {E_FAIL, E_FAIL, false}, {E_NOTIMPL, E_NOTIMPL, true},
        {2, E_FAIL, true}};
    // clang-format on
    for (const auto& [result, expected, isReported] : cases)
    {
        failing->m_result = result;
        EXPECT_EQ(failing->RegisterNotificationRegKey(sink, 0, nullptr, 0, nullptr, -1, 9), expected);
        EXPECT_EQ(Reports(), isReported ? kInvalidResult : "");
        EXPECT_EQ(failing->m_passed, std::pair(short{-1}, 9UL));
    }
    EXPECT_FALSE(failing->m_isLocked) << "there is no lock yet";
    failing->m_result = S_OK;
    failing->SetArgumentChecking(false);
    EXPECT_EQ(failing->UnregisterNotificationRegKey(nullptr), S_OK) << "unchecked";
    failing->SetLock(&failing->m_section);
    EXPECT_EQ(failing->RegisterNotificationRegKey(sink, 0, nullptr, 0, nullptr, 0, 0), S_OK);
    EXPECT_TRUE(failing->m_isLocked);
    EXPECT_TRUE(failing->m_section.TryLock()) << "and it is left again";
    failing->m_section.Unlock();
}

TEST_F(RegistryAccess, IsFoundUnderItsVersionAndTracesItsCalls)
{
    CComPtr<IZORegistryAccess> application;
    for (const wchar_t* name : {L"RegistryServices", L"RegistryServices_2.5", L"registryservices_2.6"})
    {
        EXPECT_EQ(GetModuleService(name, std::addressof(application)), E_NOINTERFACE);
    }
    CTraceRecorder trace;
    get_RemoteDiagnoseControl()->bCallStackTraceActive = true;
    m_service->RegCloseKey(0);
    get_RemoteDiagnoseControl()->bCallStackTraceActive = false;
    EXPECT_EQ(trace.Take(),
              (std::vector<std::string>{"[RegistryAccess] > RegCloseKey", "[RegistryAccess] < RegCloseKey"}));
}

} // namespace
} // namespace ZoVelkor
