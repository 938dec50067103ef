#include "CTemporaryRegistry.h"
#include "Event.h"
#include "ManyThreads.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <thread>
#include <utility>

namespace
{
constexpr DWORD kPatienceMs = 20'000;

CUniqueKey MakeKey(HKEY parent, const wchar_t* path)
{
    HKEY key = 0;
    EXPECT_EQ(RegCreateKey(parent, path, &key), 0);
    return CUniqueKey(key);
}

void Set(HKEY key, const wchar_t* name = L"v")
{
    EXPECT_EQ(RegSetValueEx(key, name, 0, REG_SZ, nullptr, 0), 0);
}

class RegistryChanges : public testing::Test
{
protected:
    RegistryChanges()
    {
        Set(m_top.Get());
        MakeKey(m_top.Get(), L"below\\deep");
    }

    void Arm(DWORD filter = REG_NOTIFY_CHANGE_LAST_SET, bool watchSubtree = false)
    {
        ResetEvent(m_event.Get());
        EXPECT_EQ(RegNotifyChangeKeyValue(m_top.Get(), watchSubtree, filter, m_event.Get(), TRUE), 0);
    }
    [[nodiscard]] bool IsTold() const
    {
        return WaitForSingleObject(m_event.Get(), kPatienceMs) == WAIT_OBJECT_0;
    }

    /// Whether the event is set once all changes made so far have been looked at.
    [[nodiscard]] bool IsToldByNow() const
    {
        const CUniqueEvent other(CreateEvent(TRUE, FALSE));
        const auto arm = [&] {
            return RegNotifyChangeKeyValue(
                m_other.Get(), FALSE, REG_NOTIFY_CHANGE_LAST_SET, other.Get(), TRUE);
        };
        EXPECT_EQ(arm(), 0);
        Set(m_other.Get());
        EXPECT_EQ(WaitForSingleObject(other.Get(), kPatienceMs), WAIT_OBJECT_0);
        EXPECT_EQ(arm(), 0) << "comes behind the look that has set the event";
        return WaitForSingleObject(m_event.Get(), 0) == WAIT_OBJECT_0;
    }

    CTemporaryRegistry m_registry;
    CUniqueKey m_top = MakeKey(HKEY_CURRENT_USER, L"top");
    CUniqueKey m_other = MakeKey(HKEY_CURRENT_USER, L"other");
    CUniqueEvent m_event = CUniqueEvent(CreateEvent(TRUE, FALSE));
};

TEST_F(RegistryChanges, AreToldByFilterAndPlace)
{
    m_registry.Use();
    const CUniqueKey stranger = MakeKey(HKEY_CURRENT_USER, L"top");
    // A change, and whether it is told as name, name below, value, value below.
    const struct
    {
        std::function<void()> change;
        std::array<bool, 5> expected;
    } cases[] = {// clang-format off
        {[&] { Set(m_top.Get()); }, {false, false, true, true}},
        {[&] { Set(stranger.Get()); }, {false, false, true, true}},
        {[&] { Set(m_top.Get()); RegDeleteValue(m_top.Get(), L"v"); }, {false, false, true, true}},
        {[&] { Set(MakeKey(m_top.Get(), L"below\\deep").Get()); }, {false, false, false, true}},
        {[&] { MakeKey(m_top.Get(), L"made"); }, {true, true, false, false}},
        {[&] { RegDeleteKey(m_top.Get(), L"made"); }, {true, true, false, false}},
        {[&] { MakeKey(m_top.Get(), L"below\\deep\\made"); }, {false, true, false, false}},
        {[&] { RegDeleteTree(m_top.Get(), L"below\\deep"); }, {false, true, false, false}},
        {[&] { MakeKey(m_top.Get(), L"below"); }, {}},
        {[&] { Set(HKEY_CURRENT_USER); MakeKey(HKEY_CURRENT_USER, L"elsewhere"); }, {}},
        {[&] { RegDeleteKey(HKEY_CURRENT_USER, L"top"); }, {}}};
    constexpr std::pair<DWORD, bool> kWatches[] = {
        {REG_NOTIFY_CHANGE_NAME, false}, {REG_NOTIFY_CHANGE_NAME, true}, {REG_NOTIFY_CHANGE_LAST_SET, false},
        {REG_NOTIFY_CHANGE_LAST_SET, true}, {REG_NOTIFY_CHANGE_SECURITY | REG_NOTIFY_CHANGE_ATTRIBUTES, true}};
    // clang-format on
    for (const auto& [change, expected] : cases)
    {
        std::array<CUniqueKey, std::size(kWatches)> keys;
        std::array<CUniqueEvent, std::size(kWatches)> events;
        for (std::size_t i = 0; i < keys.size(); ++i)
        {
            keys[i] = MakeKey(m_top.Get(), L"");
            events[i] = CUniqueEvent(CreateEvent(TRUE, FALSE));
            const auto [filter, below] = kWatches[i];
            EXPECT_EQ(RegNotifyChangeKeyValue(keys[i].Get(), below, filter, events[i].Get(), TRUE), 0);
        }
        change();
        static_cast<void>(IsToldByNow());
        for (std::size_t i = 0; i < keys.size(); ++i)
        {
            EXPECT_EQ(WaitForSingleObject(events[i].Get(), 0) == WAIT_OBJECT_0, expected[i]) << i;
        }
    }
}

TEST_F(RegistryChanges, BetweenTwoRequestsAreToldByTheSecond)
{
    Arm();
    Set(m_top.Get());
    EXPECT_TRUE(IsTold());
    Arm();
    EXPECT_FALSE(IsToldByNow()) << "that change has been told";
    Set(m_top.Get());
    EXPECT_TRUE(IsTold());
    Set(m_top.Get());
    for (int i = 0; i < 5000; ++i)
    {
        Set(m_other.Get());
    }
    Arm();
    EXPECT_EQ(WaitForSingleObject(m_event.Get(), 0), WAIT_OBJECT_0) << "however much has changed since";
}

TEST_F(RegistryChanges, EndWithTheKey)
{
    Arm(REG_NOTIFY_CHANGE_SECURITY);
    EXPECT_EQ(RegDeleteTree(HKEY_CURRENT_USER, L"top"), 0);
    EXPECT_TRUE(IsTold()) << "whatever the filter";
    m_top = MakeKey(HKEY_CURRENT_USER, L"top");
    Arm();
    m_top.Reset();
    EXPECT_EQ(WaitForSingleObject(m_event.Get(), 0), WAIT_OBJECT_0) << "closed";
    RunOnManyThreads([] {
        for (int i = 0; i < 20; ++i)
        {
            const CUniqueEvent event(CreateEvent(TRUE, FALSE));
            CUniqueKey key = MakeKey(HKEY_CURRENT_USER, L"shared");
            EXPECT_EQ(RegNotifyChangeKeyValue(key.Get(), TRUE, REG_NOTIFY_CHANGE_LAST_SET, event.Get(), TRUE),
                      0);
            Set(key.Get());
            key.Reset();
            EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_OBJECT_0) << "closed during changes";
        }
    });
}

TEST_F(RegistryChanges, CanBeWaitedFor)
{
    for (const bool isClosed : {false, true})
    {
        CUniqueKey key = MakeKey(m_top.Get(), L"waited");
        LONG result = -1;
        std::thread waiter([&, handle = key.Get()] {
            result = RegNotifyChangeKeyValue(handle, FALSE, REG_NOTIFY_CHANGE_LAST_SET, m_event.Get(), FALSE);
        });
        // Until the waiter has been told: it may have begun late.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMs);
        while (!isClosed && !IsToldByNow() && std::chrono::steady_clock::now() < deadline)
        {
            Set(key.Get());
        }
        key.Reset();
        waiter.join();
        EXPECT_TRUE(result == 0 || (isClosed && result == static_cast<LONG>(ERROR_INVALID_HANDLE)));
        ResetEvent(m_event.Get());
    }
}

TEST_F(RegistryChanges, RequestsAreChecked)
{
    for (const DWORD filter : {0U, 16U, 5U | 32U})
    {
        EXPECT_EQ(RegNotifyChangeKeyValue(m_top.Get(), FALSE, filter, m_event.Get(), TRUE),
                  LONG{ERROR_INVALID_PARAMETER});
    }
    EXPECT_EQ(RegNotifyChangeKeyValue(m_top.Get(), FALSE, 1, 0, TRUE), LONG{ERROR_INVALID_HANDLE});
    EXPECT_EQ(RegNotifyChangeKeyValue(m_top.Get(), FALSE, 1, 99, FALSE), LONG{ERROR_INVALID_HANDLE});
}
} // namespace
