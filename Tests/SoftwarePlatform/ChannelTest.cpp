#include "CBScpiChannel.h"
#include "CBScpiChannelServiceProvider.h"
#include "CComObject.h"
#include "CErrorRecorder.h"
#include "CTraceRecorder.h"
#include "IZOScpiMultichannelAdministration.h"
#include "IZOScpiMultichannelFunctionality.h"
#include "RemoteDiagnoseControl.h"
#include "Root.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <latch>
#include <thread>

namespace ZoVelkor
{
namespace
{

using CProvider = CComObject<CBScpiChannelServiceProvider, IZOScpiChannelServiceProvider>;
using Size = unsigned long;
constexpr const IID& kAdministration = IID_IZOScpiMultichannelAdministration;
constexpr const IID& kFunctionality = IID_IZOScpiMultichannelFunctionality;

void InEightThreads(const std::function<void()>& body)
{
    std::latch start(8);
    std::array<std::jthread, 8> threads;
    const auto run = [&] { start.arrive_and_wait(), body(); };
    std::generate(threads.begin(), threads.end(), [&] { return std::jthread(run); });
}

/// Logs the hooks that are called, with their plain arguments.
class CLoggingChannel : public CBScpiChannel
{
public:
    using Info = tag_ScpiChannelInfo;
    using Bytes = unsigned char*;

    short DoGetCapabilityRemoteLocal() override { return -1; }
    short DoGetCapabilityStatus() override { return 5; }
    HRESULT DoOpenChannel() override { return Log("Open"); }
    HRESULT DoCloseChannel() override { return Log("Close"); }
    HRESULT DoRead(Size n, Bytes p, Size* got) override { return Log("R", *got, {p, p + n}); }
    HRESULT DoDataAvailable(Size* count) override { return Log("Count", *count); }
    HRESULT DoWrite(Size n, Bytes p, Size* done) override { return Log("W", *done, {p, p + n}); }
    HRESULT DoWritePartial(Size n, Bytes p, Size* done) override { return Log("P", *done, {p, p + n}); }
    HRESULT DoDelete(tagZO_SCPI_CHANNEL_TYPES which) override { return Log("Delete", which); }
    HRESULT DoSetProtocolMode(tagZO_SCPI_PROTOCOL_MODE m) override { return Log("Mode", m.eProtocol); }
    HRESULT DoSetChannelStatus(tagZO_SCPI_CHANNEL_STATUS* s) override { return Log("Status", s->vtbRemote); }
    HRESULT DoFlush() override { return Log("Flush"); }
    HRESULT DoProgramMessageEnd() override { return Log("End"); }
    HRESULT DoDeviceClearAcknowledge() override { return Log("Ack"); }
    HRESULT DoReturnToLocal() override { return Log("Local"); }
    HRESULT DoAbort() override { return Log("Abort"); }
    HRESULT do_get_ChannelProperties(Info* info) override { return Log("Get", ++info->iMessages); }
    HRESULT do_put_ChannelProperties(const Info& info) override { return Log("Put", info.iMessages); }

    using CBScpiChannel::ChannelStatus;
    std::string m_log;
    std::function<HRESULT()> m_answer = [] { return S_OK; };

private:
    template <class T = int>
    HRESULT Log(const char* hook, T number = 0, const std::string& data = "")
    {
        m_log += fmt::format("{}{}{} ", hook, number, data);
        return m_answer();
    }
};
using CTestChannel = CComObject<CLoggingChannel, IZOScpiChannel>;

/// The kernel's side: holds what is connected, and answers as a test wants.
class CFakeKernel : public IZOScpiMultichannelAdministration, public IZOScpiMultichannelFunctionality
{
public:
    HRESULT AddConnection(IZOScpiChannel* c, long* path, IZOScpiChannelServiceProvider** out) override
    {
        std::this_thread::yield(); // lets a second caller in, if there is one
        ++m_adds;
        m_channel = c;
        *path = m_path;
        *out = CProvider::Create().Detach();
        return m_addResult;
    }
    HRESULT RemoveConnection(IZOScpiChannel* /*channel*/) override
    {
        m_duringRemove();
        m_channel.Release();
        return m_removeResult;
    }
    HRESULT GetChannelEvents(long path, HANDLE* deviceClear, HANDLE* shutdown) override
    {
        *deviceClear = 11;
        *shutdown = 12;
        return path == 7 ? S_OK : E_INVALIDARG;
    }
    HRESULT get_RemotePathCount(long*) override { return E_NOTIMPL; }
    HRESULT RegisterParser(IZOScpiParser*) override { return E_NOTIMPL; }
    HRESULT UnregisterParser(IZOScpiParser*) override { return E_NOTIMPL; }
    HRESULT RegisterEventObserver(IZOScpiMultichannelEventObserver*) override { return E_NOTIMPL; }
    HRESULT UnregisterEventObserver(IZOScpiMultichannelEventObserver*) override { return E_NOTIMPL; }
    HRESULT GetScpiStatusManagement(long, IZOScpiStatusManagement**) override { return E_NOTIMPL; }
    HRESULT GetScpiParserManagement(long, IZOScpiParserManagement**) override { return E_NOTIMPL; }
    HRESULT GetScpiErrorManagement(long, IZOScpiErrorManagement**) override { return E_NOTIMPL; }
    HRESULT GetScpiRemoteManagement(long, IZOScpiRemoteControl**) override { return E_NOTIMPL; }
    HRESULT GetScpiChannelManagement(long, IZOScpiChannelManagement**) override { return E_NOTIMPL; }
    HRESULT GetScpiDeviceManagement(long, IZOScpiDeviceManagement**) override { return E_NOTIMPL; }
    HRESULT GetScpiFormatManagement(long, IZOScpiSubsystemFormat**) override { return E_NOTIMPL; }
    HRESULT GetScpiLanguageManagement(long, IZOScpiParserLanguage**) override { return E_NOTIMPL; }

    int m_adds = 0;
    HRESULT m_addResult = S_OK;
    HRESULT m_removeResult = S_OK;
    long m_path = 7;
    std::function<void()> m_duringRemove = [] {};
    CComPtr<IZOScpiChannel> m_channel;

protected:
    virtual ~CFakeKernel() = default;
};

using CKernel = CComObject<CFakeKernel, IZOScpiMultichannelAdministration, IZOScpiMultichannelFunctionality>;

class Channel : public testing::Test
{
protected:
    Channel() { GetRoot(&m_root), Publish(kAdministration), Publish(kFunctionality); }
    ~Channel() override { Withdraw(kAdministration), Withdraw(kFunctionality); }
    void Publish(const IID& iid)
    {
        m_root->RegisterInterface(iid, static_cast<IZOScpiMultichannelAdministration*>(m_kernel));
    }
    void Withdraw(const IID& iid) { m_root->UnregisterInterface(iid); }
    HRESULT Connect() { return m_channel->GetServiceProvider(&m_provider); }
    /// Path and events of the connection.
    std::string State() const
    {
        const HANDLE deviceClear = m_channel->GetCurrentDeviceClearHandle();
        const HANDLE shutdown = m_channel->GetCurrentShutdownEventHandle();
        return fmt::format("{} {} {}", m_channel->GetRemotePath(), deviceClear, shutdown);
    }
    void Fails(bool connecting, const char* message, const char* condition)
    {
        const std::string before = State();
        EXPECT_THROW(connecting ? Connect() : m_channel->DisconnectRemotePath(), CShellError);
        const tagErrorReport report = m_recorder.Take().at(0).report;
        EXPECT_EQ(report.message, message);
        EXPECT_STREQ(report.condition, condition);
        EXPECT_EQ(report.result, ZO_E_SHELL);
        EXPECT_STREQ(report.sourceUnit, "Interfaces/_Src/CBScpiChannel");
        EXPECT_EQ(State(), before);
    }

    CErrorRecorder m_recorder;
    CComPtr<IZORoot> m_root;
    CComPtr<CKernel> m_kernel = CKernel::Create();
    CComPtr<CTestChannel> m_channel = CTestChannel::Create();
    CComPtr<IZOScpiChannelServiceProvider> m_provider;
};

unsigned char g_bytes[] = {'a', 'b'};
Size g_count;
tagZO_SCPI_CHANNEL_STATUS g_status{0, 65, 0};

using Call = HRESULT (*)(CBScpiChannel&);
const std::pair<const char*, Call> kCalls[] = {
    {"Open0 ", [](CBScpiChannel& c) { return c.Open(); }},
    {"Close0 ", [](CBScpiChannel& c) { return c.Close(); }},
    {"R0ab ", [](CBScpiChannel& c) { return c.Read(2, g_bytes, &(g_count = 9)); }},
    {"Count0 ", [](CBScpiChannel& c) { return c.DataAvailable(&(g_count = 9)); }},
    {"W0ab ", [](CBScpiChannel& c) { return c.Write(2, g_bytes, &(g_count = 9)); }},
    {"P0a ", [](CBScpiChannel& c) { return c.WritePartial(1, g_bytes, &(g_count = 9)); }},
    {"W0&000\r\n ", [](CBScpiChannel& c) { return c.GenericIeee1174PolResponse(0); }},
    {"W0&065\r\n ", [](CBScpiChannel& c) { return c.GenericIeee1174PolResponse(65); }},
    {"W0&255\r\n ", [](CBScpiChannel& c) { return c.GenericIeee1174PolResponse(255); }},
    {"Delete2 ", [](CBScpiChannel& c) { return c.Delete(ZO_CHANNEL_OUTPUT); }},
    {"Mode1 ", [](CBScpiChannel& c) { return c.SetProtocolMode({ZO_PROTOCOL_IEEE_1174}); }},
    {"Status65 ", [](CBScpiChannel& c) { return c.SetChannelStatus(&g_status); }},
    {"Flush0 ", [](CBScpiChannel& c) { return c.Flush(); }},
    {"End0 ", [](CBScpiChannel& c) { return c.ProgramMessageEnd(); }},
    {"Ack0 ", [](CBScpiChannel& c) { return c.DeviceClearAcknowledge(); }},
    {"Local0 ", [](CBScpiChannel& c) { return c.ReturnToLocal(); }},
    {"Abort0 ", [](CBScpiChannel& c) { return c.Abort(); }},
};
TEST_F(Channel, CallsReachTheirHookAndReturnItsResult)
{
    const auto silent = CComObject<CBScpiChannel, IZOScpiChannel>::Create();
    const auto throwing = CTestChannel::Create();
    throwing->m_answer = []() -> HRESULT { throw std::bad_alloc(); };
    m_channel->m_answer = [] { return E_PENDING; };
    for (const auto& [expected, call] : kCalls)
    {
        m_channel->m_log.clear();
        EXPECT_EQ(call(*m_channel), E_PENDING);
        EXPECT_EQ(m_channel->m_log, expected);
        EXPECT_EQ(call(*silent), S_OK) << expected;
        EXPECT_EQ(call(*throwing), E_OUTOFMEMORY) << expected;
    }
    EXPECT_EQ(m_channel->ChannelStatus().vtbRemote, 65);
    short flags[2] = {};
    EXPECT_EQ(m_channel->GetCapabilities(&flags[0], &flags[1]), S_OK);
    EXPECT_EQ(flags[0] * 10 + flags[1], -5);
    EXPECT_EQ(silent->GetCapabilities(&flags[0], &flags[1]), S_OK);
    EXPECT_EQ(flags[0] * 10 + flags[1], 0);
    EXPECT_EQ(m_channel->Write(1, g_bytes, nullptr), E_POINTER);
    EXPECT_EQ(m_recorder.Take().back().report.message, "Null pointer detected (written)");
    EXPECT_EQ(m_channel->GetServiceProvider(nullptr), E_POINTER);
    EXPECT_EQ(m_recorder.Take().back().report.message, "Null pointer detected (provider)");
}

TEST_F(Channel, OpensOnceUntilClosedEvenAfterAFailure)
{
    m_channel->m_answer = [] { return std::this_thread::yield(), E_FAIL; };
    std::atomic<int> failures = 0;
    InEightThreads([&] { failures += FAILED(m_channel->Open()) ? 1 : 0; });
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(m_channel->Close(), E_FAIL);
    EXPECT_EQ(m_channel->Open(), E_FAIL);
    EXPECT_EQ(m_channel->m_log, "Open0 Close0 Open0 ");
}

TEST_F(Channel, ConnectsOnceForAllThreadsAndTheKernelsGetThroughAtTheEnd)
{
    EXPECT_EQ(State(), "-1 0 0");
    InEightThreads([this] {
        CComPtr<IZOScpiChannelServiceProvider> provider;
        EXPECT_EQ(m_channel->GetServiceProvider(&provider), S_OK);
        EXPECT_EQ(provider->SignalTrigger(), E_NOTIMPL);
        EXPECT_EQ(provider->ReportError(-410, nullptr), S_OK);
    });
    EXPECT_EQ(m_kernel->m_adds, 1);
    EXPECT_EQ(m_channel->ReleaseServiceProvider(CProvider::Create()), S_OK);
    EXPECT_EQ(State(), "7 11 12");

    m_channel->Open();
    m_kernel->m_duringRemove = [this] {
        std::jthread([this] {
            EXPECT_EQ(Connect(), S_OK);
            EXPECT_EQ(State(), "7 11 12");
            for (const auto& [expected, call] : kCalls)
            {
                EXPECT_EQ(call(*m_channel), S_OK) << expected;
            }
        });
    };
    CTraceRecorder recorder;
    EXPECT_EQ(m_channel->DisconnectRemotePath(), S_OK);
    EXPECT_EQ(State(), "-1 0 0");
    get_RemoteDiagnoseControl()->bRpcModeActive = true;
    EXPECT_EQ(m_channel->DisconnectRemotePath(), S_OK);
    get_RemoteDiagnoseControl()->bRpcModeActive = false;
    const auto line = fmt::format("[Velkor] Disconnect interface = {}", fmt::ptr(m_channel.Get()));
    EXPECT_EQ(recorder.Take(), std::vector{line});
}

TEST_F(Channel, FailuresOfTheKernelAreRaised)
{
    for (const HRESULT result : {2, E_FAIL})
    {
        m_kernel->m_addResult = result;
        Fails(true, "Unexpected result adding new connection to remote kernel", "stop on error");
    }
    m_kernel->m_addResult = m_kernel->m_removeResult = S_FALSE;
    m_kernel->m_path = 8;
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(State(), "8 0 0") << "a connection without events";
    EXPECT_EQ(m_recorder.Take().size(), 1U);
    EXPECT_EQ(m_channel->DisconnectRemotePath(), S_OK);
    Withdraw(kFunctionality);
    Fails(true, "Missing interface", "p_MultichannelFunc != NULL");
    m_channel->SetServiceProvider(CProvider::Create());
    m_kernel->m_removeResult = 2;
    Fails(false, "Unexpected result removing connection from remote kernel", "stop on error");
    Withdraw(kAdministration);
    Fails(false, "Missing interface", "pMultichannelAdmin != NULL");
    m_channel->SetServiceProvider(nullptr);
    Fails(true, "Missing interface", "pMultichannelAdmin != NULL");
}

TEST_F(Channel, PropertiesAreCopiesWithStringsOfTheirOwn)
{
    CSmartScpiChannelInfo info;
    wchar_t* const name = info->bsName = SysAllocStringLen(L"a\0b", 3);
    info->bsRemoteAddress = SysAllocString(L"");
    info->iMessages = 16;
    CSmartScpiChannelInfo::CopyData(*info.operator->(), info.Get());
    EXPECT_EQ(m_channel->put_ChannelProperties(info.Get()), S_OK);
    tag_ScpiChannelInfo out{};
    out.bsLocalAddress = SysAllocString(L"freed");
    info.Detach(out);
    EXPECT_EQ(out.bsName, name);
    EXPECT_EQ(info->bsName, nullptr);
    EXPECT_EQ(m_channel->get_ChannelProperties(&out), S_OK);
    EXPECT_EQ(SysStringLen(out.bsName), 3U);
    EXPECT_STREQ(out.bsRemoteAddress, L"");
    info = out;
    EXPECT_EQ(CSmartScpiChannelInfo(info).CopyTo(&out), S_OK);
    EXPECT_EQ(CSmartScpiChannelInfo(info).CopyTo(nullptr), E_POINTER);
    m_channel->m_answer = [] { return E_FAIL; };
    EXPECT_EQ(m_channel->get_ChannelProperties(&out), E_FAIL);
    EXPECT_EQ(out.iMessages, 17);
    CSmartScpiChannelInfo::ClearData(out);
    EXPECT_EQ(out.bsName, nullptr);
}

} // namespace
} // namespace ZoVelkor
