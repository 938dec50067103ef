#include "Root.h"

#include "CComObject.h"
#include "CErrorRecorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace ZoVelkor
{
namespace
{
struct ITestService : public IUnknown
{
    static constexpr IID kInterfaceId{1, 2, 3, {4}};
    virtual int Value() = 0;

protected:
    ~ITestService() = default;
};

constexpr IID kServiceId = ITestService::kInterfaceId;
constexpr IID kOtherId{9, 2, 3, {4}};
std::atomic<int> g_instances{0};

/// Waits in its destructor for another thread's look-up, which never ends under the registry's lock.
class CTestService : public ITestService
{
public:
    explicit CTestService(int value) : m_value(value) { ++g_instances; }
    int Value() override { return m_value; }

protected:
    ~CTestService()
    {
        void* pOther = nullptr;
        std::jthread([&pOther] { EXPECT_EQ(ZoGetRegisteredInterface(&kOtherId, &pOther), E_NOINTERFACE); });
        --g_instances;
    }

private:
    const int m_value;
};

class RootTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(GetRoot(&m_root), S_OK); }
    void TearDown() override
    {
        m_root->UnregisterInterface(kServiceId);
        EXPECT_EQ(g_instances, 0);
    }

    HRESULT Register(int value, const IID& iid = kServiceId)
    {
        const auto service = CComObject<CTestService, ITestService>::Create(value);
        return m_root->RegisterInterface(iid, service.Get());
    }

    static int RegisteredValue()
    {
        CComPtr<ITestService> service;
        return ZoGetRegisteredInterface(&kServiceId, &service) == S_OK ? service->Value() : -1;
    }

    CComPtr<IZORoot> m_root;
};

TEST_F(RootTest, RegistryHoldsTheObjectUntilItIsUnregistered)
{
    EXPECT_EQ(Register(1), S_OK);
    EXPECT_EQ(g_instances, 1);
    EXPECT_EQ(RegisteredValue(), 1);
    EXPECT_EQ(m_root->UnregisterInterface(kServiceId), S_OK);
    EXPECT_EQ(g_instances, 0);
    EXPECT_EQ(m_root->UnregisterInterface(kServiceId), S_FALSE);
}

TEST_F(RootTest, LaterRegistrationReplacesTheEarlierWhichItsFindersKeep)
{
    EXPECT_EQ(Register(1), S_OK);
    CComPtr<ITestService> first;
    ASSERT_EQ(ZoGetRegisteredInterface(&kServiceId, std::addressof(first)), S_OK);
    EXPECT_EQ(Register(2), S_FALSE);
    EXPECT_EQ(RegisteredValue(), 2);
    EXPECT_EQ(first->Value(), 1);
    first.Release();
    EXPECT_EQ(Register(3), S_FALSE);
    EXPECT_EQ(g_instances, 1);
}

TEST_F(RootTest, MissingServiceGivesNoInterfaceNullAndNoReport)
{
    CErrorRecorder recorder;
    void* found = this;
    EXPECT_EQ(Register(1, kOtherId), E_NOINTERFACE) << "an object without the interface is refused";
    EXPECT_EQ(ZoGetRegisteredInterface(&kOtherId, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_TRUE(recorder.Take().empty());
}

TEST_F(RootTest, NullPointersAreReported)
{
    CErrorRecorder recorder;
    void* found = nullptr;
    EXPECT_EQ(GetRoot(nullptr), E_POINTER);
    EXPECT_EQ(m_root->RegisterInterface(kServiceId, nullptr), E_POINTER);
    EXPECT_EQ(m_root->GetRegisteredInterface(kServiceId, nullptr), E_POINTER);
    EXPECT_EQ(ZoGetRegisteredInterface(&kServiceId, static_cast<ITestService**>(nullptr)), E_POINTER);
    EXPECT_EQ(ZoGetRegisteredInterface(nullptr, &found), E_POINTER);
    EXPECT_EQ(recorder.Take().size(), 5U);
}

TEST_F(RootTest, SurvivesRegistrationReplacementAndLookUpAtOnce)
{
    constexpr int kRounds = 100;
    const auto change = [this] {
        for (int n = 0; n < kRounds; ++n)
        {
            EXPECT_TRUE(SUCCEEDED(Register(n)));
            m_root->UnregisterInterface(kServiceId);
        }
    };
    const std::jthread first(change);
    const std::jthread second(change);
    for (int n = 0; n < kRounds; ++n)
    {
        EXPECT_LT(RegisteredValue(), kRounds);
    }
}
} // namespace
} // namespace ZoVelkor
