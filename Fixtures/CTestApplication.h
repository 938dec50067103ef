#pragma once

#include "CBScpiDeviceHandler.h"
#include "CBScpiExecutionSink.h"
#include "CBScpiParser.h"
#include "CComObject.h"
#include "CMutex.h"
#include "CRemoteKernel.h"
#include "CTableBuilder.h"
#include "Event.h"
#include "IZOScpiManager.h"

#include <atomic>
#include <string>
#include <vector>

namespace ZoVelkor::RemoteKernel::Testing
{

/// A small application for conversations: stores what it gets, and fails on request.
class CTestSink : public CBScpiExecutionSink
{
public:
    /// What `FAIL n` and `FAIL? n` do.
    enum Failure : int
    {
        ErrorAndResultOne,
        ErrorAndResultZero,
        FailureWithoutError,
        FailureWithError,
        ShellException,
        OtherException,
        Cancelled,
        QuestionableData
    };

    /// Handler index of a query with the number of values as its parameter.
    static constexpr std::int32_t kAnswerList = 5;

    HRESULT Execute(IUnknown* context,
                    long remotePath,
                    unsigned long command,
                    short isQuery,
                    long* numericSuffixes,
                    unsigned long argumentCount,
                    tagZO_SCPI_PARAMETER* arguments,
                    wchar_t* header,
                    IZOScpiOutputBuffer* output) override;

    /// The command table; pattern and parameters say what each command takes.
    static std::vector<_CMD_SET_RECORD> Table();

    /// Ends all operations that OVERlap has begun.
    void EndOperations();

    CUniqueEvent m_holdEntered{CreateEvent(FALSE, FALSE)};    ///< set when HOLD runs
    CUniqueEvent m_holdRelease{CreateEvent(TRUE, FALSE)};     ///< lets HOLD return
    CUniqueEvent m_operationBegun{CreateEvent(FALSE, FALSE)}; ///< set when OVERlap has begun an operation
    CUniqueEvent m_takeEntered{CreateEvent(FALSE, FALSE)};    ///< set when TAKE and the like run
    std::atomic<HRESULT> m_takeResult{S_OK};                  ///< why they failed
    std::atomic<int> m_running{0};                            ///< handlers at work, never above 1
    std::atomic<bool> m_overlapped{false};                    ///< two ran at once

private:
    struct Call;

    HRESULT Run(const Call& call, unsigned long command);
    HRESULT Store(const Call& call, std::string prefix);
    HRESULT StoreBlock(const Call& call);
    HRESULT TakeBlock(const Call& call);
    HRESULT AnswerBlock(const Call& call) const;
    HRESULT AnswerList(const Call& call) const;
    HRESULT SetFormat(const Call& call) const;
    HRESULT Fail(const Call& call) const;
    HRESULT BeginOperation(const Call& call);

    std::string m_last;
    std::vector<unsigned char> m_block;
    CMutex m_mutex;
    std::vector<unsigned long> m_operations ZO_GUARDED_BY(m_mutex);
    CComPtr<IZOScpiPendingOperations> m_pendingOperations;
};

class CTestDevice : public CBScpiDeviceHandler
{
public:
    HRESULT Reset() override;
    HRESULT Selftest(short* passed) override;
    HRESULT GetDeviceOptions(wchar_t** text) override;
    HRESULT GotoLocal() override { return Note('L'); }
    HRESULT GotoRemote() override { return Note('R'); }
    HRESULT LocalLockout(short on) override { return Note(on != 0 ? 'K' : 'k'); }
    HRESULT DeviceClear() override { return Note('C'); }
    HRESULT Trigger() override { return Note('T'); }
    HRESULT SystemPreset() override { return Note('P'); }
    HRESULT ProgramMessageBegin() override { return Note('b'); }
    HRESULT ProgramMessageEnd(short aborted) override { return Note(aborted != 0 ? 'a' : 'e'); }
    /// The events since the last call, a letter each.
    std::string TakeEvents();

    std::atomic<int> m_resets{0};
    std::atomic<bool> m_healthy{true};
    std::wstring m_options;

private:
    HRESULT Note(char event);

    CMutex m_mutex;
    std::string m_events ZO_GUARDED_BY(m_mutex);
};

using CSinkObject = CComObject<CTestSink, IZOScpiExecutionSink>;
using CDeviceObject = CComObject<CTestDevice, IZOScpiDeviceHandler>;

/// A parser with a tree, as an application registers it.
CComPtr<IZOScpiParser> MakeParser(const std::vector<_CMD_SET_RECORD>& records,
                                  IZOScpiExecutionSink* sink,
                                  IZOScpiDeviceHandler* device = nullptr);

/// A kernel with the test application in it.
struct TestInstrument
{
    TestInstrument();

    /// Registers one more application under a fresh identity.
    ///
    /// @param otherSink  null: the test application's own
    HRESULT
    Register(const std::vector<_CMD_SET_RECORD>& table, GUID& id, IZOScpiExecutionSink* otherSink = nullptr);

    CComPtr<CSinkObject> sink = CSinkObject::Create();
    CComPtr<CDeviceObject> device = CDeviceObject::Create();
    std::vector<_CMD_SET_RECORD> table = CTestSink::Table();
    CRemoteKernel kernel{{"Maker", "Model", "123", "1.0"}};
    GUID id{};
};

} // namespace ZoVelkor::RemoteKernel::Testing
