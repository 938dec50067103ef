#include "Analyzer/CSweepEngine.h"
#include "CBScpiStatusRegister.h"
#include "CComObject.h"
#include "CCondition.h"
#include "CMutexLocker.h"
#include "IZOScpiStatusManagement.h"
#include "Root.h"

#include <gtest/gtest.h>

namespace ZoVelkor::Demo
{
namespace
{

constexpr int kOperationEnded = -1;

/// What has happened, in its order: the values of STATus:OPERation and the ends of operations.
class CLog
{
public:
    void Add(int entry)
    {
        const CMutexLocker lock(m_mutex);
        m_entries.push_back(entry);
        m_changed.NotifyAll();
    }

    /// Waits for so many entries and takes all there are.
    std::vector<int> Take(std::size_t count)
    {
        const CMutexLocker lock(m_mutex);
        m_changed.WaitUntil(m_mutex, CCondition::Clock::now() + std::chrono::seconds(30), [&] {
            m_mutex.AssertHeld();
            return m_entries.size() >= count;
        });
        return std::exchange(m_entries, {});
    }

private:
    CMutex m_mutex;
    CCondition m_changed;
    std::vector<int> m_entries ZO_GUARDED_BY(m_mutex);
};

class CLoggedRegister : public CBScpiStatusRegister
{
public:
    explicit CLoggedRegister(CLog* log) : m_log(log) {}

    HRESULT ModifyCondition(wchar_t mask, wchar_t value) override
    {
        wchar_t words[2]{};
        GetCondition(&words[0]);
        const HRESULT result = CBScpiStatusRegister::ModifyCondition(mask, value);
        GetCondition(&words[1]);
        if (m_log != nullptr && words[0] != words[1])
        {
            m_log->Add(static_cast<int>(words[1]));
        }
        return result;
    }

private:
    CLog* m_log;
};

class CLoggedServices : public IZOScpiStatusManagement, public IZOScpiPendingOperations
{
public:
    explicit CLoggedServices(CLog& log) : m_log(log) {}

    HRESULT SerialPoll(long, unsigned char*) override { return E_NOTIMPL; }
    HRESULT GetRegister(long, const wchar_t* name, IZOScpiStatusRegister** statusRegister) override
    {
        CLog* const log = std::wstring_view(name) == L"STATus:OPERation" ? &m_log : nullptr;
        *statusRegister = CComObject<CLoggedRegister, IZOScpiStatusRegister>::Create(log).Detach();
        return S_OK;
    }
    HRESULT BeginOperation(long, unsigned long* operation) override { return *operation = 1, S_OK; }
    HRESULT EndOperation(unsigned long) override { return m_log.Add(kOperationEnded), S_OK; }
    HRESULT GetPendingCount(long, unsigned long*) override { return E_NOTIMPL; }

protected:
    ~CLoggedServices() = default;

private:
    CLog& m_log;
};

class SweepPhases : public testing::Test
{
protected:
    using Entries = std::vector<int>;
    using ServicesObject = CComObject<CLoggedServices, IZOScpiStatusManagement, IZOScpiPendingOperations>;

    SweepPhases()
    {
        CComPtr<IZORoot> root;
        GetRoot(&root);
        root->RegisterInterface(IID_IZOScpiStatusManagement,
                                static_cast<IZOScpiStatusManagement*>(m_services));
        m_status.emplace();
        root->UnregisterInterface(IID_IZOScpiStatusManagement);
        m_engine.emplace(m_traces, *m_status);
        m_settings.sweepPoints = kMinSweepPoints;
        m_settings.manualSweepTimeS = kMinSweepTimeS;
        m_settings.sweepTimeAuto = false;
        Apply(TriggerSource::Immediate);
    }

    void Apply(TriggerSource source)
    {
        m_settings.triggerSource = source;
        m_engine->SetSettings(m_settings);
    }
    bool Initiate()
    {
        Commands::CPendingOperation operation;
        operation.Begin(CComPtr<IZOScpiPendingOperations>(m_services), 0);
        return m_engine->Initiate(std::move(operation));
    }

    CLog m_log;
    CComPtr<ServicesObject> m_services = ServicesObject::Create(m_log);
    CTraceMemory m_traces;
    std::optional<CInstrumentStatus> m_status;
    std::optional<CSweepEngine> m_engine;
    AnalyzerSettings m_settings;
};

TEST_F(SweepPhases, SettlingComesOnlyWithOtherFrequencies)
{
    EXPECT_TRUE(Initiate());
    EXPECT_EQ(m_log.Take(4), (Entries{2, 8, 0, kOperationEnded}));
    EXPECT_TRUE(Initiate());
    EXPECT_EQ(m_log.Take(3), (Entries{8, 0, kOperationEnded}));
    m_settings.Channel(4).frequency.SetStop(1e9);
    m_engine->SetSettings(m_settings);
    EXPECT_TRUE(Initiate());
    EXPECT_EQ(m_log.Take(4), (Entries{2, 8, 0, kOperationEnded}));
    m_engine->Reset();
    EXPECT_TRUE(Initiate());
    EXPECT_EQ(m_log.Take(4), (Entries{2, 8, 0, kOperationEnded}));
}

TEST_F(SweepPhases, EverySweepWaitsForItsOwnTrigger)
{
    Apply(TriggerSource::Bus);
    EXPECT_FALSE(m_engine->Trigger());
    EXPECT_TRUE(Initiate());
    EXPECT_EQ(m_log.Take(1), Entries{32});
    m_engine->SetContinuous(true);
    EXPECT_TRUE(m_engine->Trigger());
    EXPECT_EQ(m_log.Take(5).size(), 5U);
    EXPECT_TRUE(m_engine->Trigger());
    EXPECT_EQ(m_log.Take(3), (Entries{8, 0, 32})) << "the bits fall between the sweeps";
    m_engine->AbortSweep();
    EXPECT_EQ(m_log.Take(2), (Entries{0, 32}));
    m_engine->Reset();
    EXPECT_EQ(m_log.Take(1), Entries{0});
    EXPECT_FALSE(m_engine->Trigger());
}

TEST_F(SweepPhases, TheEndOfTheEngineClearsThePhase)
{
    Apply(TriggerSource::Bus);
    EXPECT_TRUE(Initiate());
    m_engine.reset();
    EXPECT_EQ(m_log.Take(3), (Entries{32, 0, kOperationEnded}));
}

} // namespace
} // namespace ZoVelkor::Demo
