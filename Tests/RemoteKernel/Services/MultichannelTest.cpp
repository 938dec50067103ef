#include "CBScpiCommands.h"
#include "CBScpiMultichannelParser.h"
#include "CBusController.h"
#include "CErrorRecorder.h"
#include "CScpiClient.h"
#include "CTcpServer.h"
#include "IZOScpiChannelManagement.h"
#include "IZOScpiDeviceManagement.h"
#include "IZOScpiMultichannelAdministration.h"
#include "IZOScpiMultichannelFunctionality.h"
#include "IZOScpiParserLanguage.h"
#include "IZOScpiParserManagement.h"
#include "IZOScpiRemoteControl.h"
#include "IZOScpiTree.h"
#include "Sessions/CSession.h"

#include <filesystem>
#include <malloc.h>

namespace ZoVelkor::RemoteKernel::Testing
{

using Transports::CTcpServer;

namespace
{

using ZoVelkor::Testing::CScpiClient;
using CFunctionality = IZOScpiMultichannelFunctionality;

class Multichannel : public testing::Test
{
protected:
    static long Path(const CBusController& bus) { return bus->GetRemotePath(); }
    IZOScpiMultichannelAdministration& Administration() { return *m_administration; }
    CFunctionality& Functionality() { return *m_functionality; }

    TestInstrument m_instrument;
    const CComPtr<IZOScpiMultichannelAdministration> m_administration =
        AtRoot<IZOScpiMultichannelAdministration>();
    const CComPtr<CFunctionality> m_functionality = AtRoot<CFunctionality>();
};

TEST_F(Multichannel, ServicesOfAPathReachThatPathAlone)
{
    CComPtr<IZOScpiErrorManagement> errors;
    CComPtr<IZOScpiStatusManagement> status;
    CComPtr<IZOScpiRemoteControl> remote;
    CComPtr<IZOScpiChannelManagement> channels;
    const CBusController other;
    long path = -1;
    long count = 0;
    {
        CBusController bus;
        path = Path(bus);
        ASSERT_EQ(Functionality().GetScpiErrorManagement(path, &errors), S_OK);
        ASSERT_EQ(Functionality().GetScpiStatusManagement(path, &status), S_OK);
        ASSERT_EQ(Functionality().GetScpiRemoteManagement(path, &remote), S_OK);
        ASSERT_EQ(Functionality().GetScpiChannelManagement(path, &channels), S_OK);
        EXPECT_EQ(errors->SetError(path, -222, L"own"), S_OK);
        EXPECT_EQ(errors->SetError(Path(other), -222, L"foreign"), E_INVALIDARG);
        unsigned long queued = 0;
        EXPECT_EQ(errors->GetErrorCount(path, &queued), S_OK);
        EXPECT_EQ(queued, 1U);
        EXPECT_EQ(bus.Query("SYST:ERR:ALL?"), "-222,\"Data out of range;own\"");
        EXPECT_EQ(remote->GotoLocal(), S_OK);
        CComPtr<IZOScpiChannel> channel;
        EXPECT_EQ(channels->GetChannel(path, &channel), S_OK);
        EXPECT_EQ(channel.Get(), static_cast<IZOScpiChannel*>(&bus.Channel()));
        EXPECT_EQ(AtRoot<IZOScpiChannelManagement>()->get_ChannelCount(&count), S_OK);
        EXPECT_EQ(count, 2);
    }
    const auto isStale = [&] {
        unsigned char stb = 0;
        unsigned long errorCount = 0;
        CComPtr<IZOScpiChannel> channel;
        return errors->SetError(path, -222, nullptr) == E_INVALIDARG &&
               errors->GetErrorCount(path, &errorCount) == E_INVALIDARG &&
               status->SerialPoll(path, &stb) == E_INVALIDARG && remote->GotoRemote() == E_INVALIDARG &&
               channels->GetChannel(path, &channel) == E_INVALIDARG;
    };
    EXPECT_TRUE(isStale());
    Administration().get_RemotePathCount(&count);
    for (long round = 0; round < count; ++round)
    {
        CSession session(m_instrument.kernel.Parts());
        if (session.RemotePath() == path)
        {
            EXPECT_TRUE(isStale()) << "the number has been given to another path";
            std::string query = "SYST:ERR:COUN?\n";
            EXPECT_EQ(session.Process(query), "0\n");
            return;
        }
    }
    ADD_FAILURE() << "the path number did not come again";
}

template <class TService, HRESULT (CFunctionality::*TGet)(long, TService**)>
std::string Lookups(CFunctionality& functionality, std::initializer_list<long> paths)
{
    std::string results = (functionality.*TGet)(0, nullptr) == E_POINTER ? "P" : "?";
    for (const long path : paths)
    {
        CComPtr<TService> service;
        const HRESULT result = (functionality.*TGet)(path, &service);
        results += result == S_OK && service != nullptr ? '+' : (result == E_INVALIDARG ? '-' : '?');
    }
    return results;
}

TEST_F(Multichannel, LooksServicesUpByPath)
{
    const CBusController bus;
    long count = 0;
    EXPECT_EQ(Administration().get_RemotePathCount(&count), S_OK);
    const auto paths = {-1L, Path(bus), Path(bus) + 1, count - 1, count};
    using F = CFunctionality;
    const std::pair<const char*, std::string> rows[] = {
        {"P-+---", Lookups<IZOScpiStatusManagement, &F::GetScpiStatusManagement>(Functionality(), paths)},
        {"P-+++-", Lookups<IZOScpiParserManagement, &F::GetScpiParserManagement>(Functionality(), paths)},
        {"P-+---", Lookups<IZOScpiErrorManagement, &F::GetScpiErrorManagement>(Functionality(), paths)},
        {"P-+---", Lookups<IZOScpiRemoteControl, &F::GetScpiRemoteManagement>(Functionality(), paths)},
        {"P-+---", Lookups<IZOScpiChannelManagement, &F::GetScpiChannelManagement>(Functionality(), paths)},
        {"P-+++-", Lookups<IZOScpiDeviceManagement, &F::GetScpiDeviceManagement>(Functionality(), paths)},
        {"P-+---", Lookups<IZOScpiSubsystemFormat, &F::GetScpiFormatManagement>(Functionality(), paths)},
        {"P-+++-", Lookups<IZOScpiParserLanguage, &F::GetScpiLanguageManagement>(Functionality(), paths)},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i)
    {
        EXPECT_EQ(rows[i].second, rows[i].first) << "getter " << i;
    }
    CComPtr<IZOScpiParserLanguage> language;
    ASSERT_EQ(Functionality().GetScpiLanguageManagement(Path(bus), &language), S_OK);
    const std::pair<const wchar_t*, short> headers[] = {{L"*IDN?", VARIANT_TRUE},
                                                        {L"syst:err:next?", VARIANT_TRUE},
                                                        {L"OVERlap", VARIANT_TRUE},
                                                        {L"SYST:NONE?", VARIANT_FALSE},
                                                        {L"", VARIANT_FALSE}};
    for (const auto& [header, expected] : headers)
    {
        short known = 7;
        EXPECT_EQ(language->IsHeaderKnown(header, &known), S_OK);
        EXPECT_EQ(known, expected) << header;
    }
    EXPECT_EQ(language->IsHeaderKnown(L"*IDN?", nullptr), E_POINTER);
}

TEST_F(Multichannel, StopsParsingOfAPathAndOfAll)
{
    CBusController bus;
    CBusController other;
    CComPtr<IZOScpiParserManagement> ofPath;
    ASSERT_EQ(Functionality().GetScpiParserManagement(Path(bus), &ofPath), S_OK);
    const auto ofAll = AtRoot<IZOScpiParserManagement>();
    EXPECT_EQ(ofPath->StopParser(), S_OK);
    EXPECT_EQ(ofPath->StopParser(), S_FALSE);
    bus.Send("*IDN?");
    EXPECT_EQ(other.Query("*OPC?"), "1");
    EXPECT_EQ(ofAll->StopParser(), S_OK);
    other.Send("*OPC?");
    EXPECT_EQ(ofPath->StartParser(), S_OK);
    EXPECT_EQ(bus->Receive(1, 1).result, E_PENDING);
    EXPECT_EQ(other->Receive(1, 1).result, E_PENDING);
    short started = -1;
    EXPECT_EQ(ofAll->get_ParserStarted(&started), S_OK);
    EXPECT_EQ(started, VARIANT_FALSE);
    EXPECT_EQ(ofAll->StartParser(), S_OK);
    EXPECT_EQ(bus.Receive(), "Maker,Model,123,1.0");
    EXPECT_EQ(other.Receive(), "1");
}

/// A parser whose engines each have a state of their own.
class CCloningParser : public CBScpiParser, public CBScpiMultichannelParser
{
public:
    std::atomic<int> m_created{0};
    std::atomic<int> m_released{0};
    CComPtr<CSinkObject> m_first;

protected:
    HRESULT DoCreateClone(IUnknown** engine) override
    {
        const auto sink = CSinkObject::Create();
        m_first = m_created++ == 0 ? sink : m_first;
        return CComPtr<IUnknown>(static_cast<IZOScpiExecutionSink*>(sink)).CopyTo(engine);
    }
    HRESULT DoReleaseClone(IUnknown*) override
    {
        ++m_released;
        return S_OK;
    }
};
using CCloningObject = CComObject<CCloningParser, IZOScpiParser, IZOScpiMultichannelParser>;

CComPtr<CCloningObject> MakeCloning(const std::vector<_CMD_SET_RECORD>& records)
{
    const auto parser = CCloningObject::Create();
    const auto size = static_cast<std::uint32_t>(records.size() * sizeof(_CMD_SET_RECORD));
    CComBSTR name(L"cloning");
    parser->RegisterCommandTree(ZO_PARSER_TYPE_MEASUREMENT,
                                name,
                                {size, records.data()},
                                CComPtr<IZOScpiExecutionSink>(CSinkObject::Create()));
    return parser;
}

TEST_F(Multichannel, GivesEachPathAnEngineOfItsOwn)
{
    const auto parser = MakeCloning(CTestSink::Table());
    ASSERT_EQ(Administration().RegisterParser(parser), S_OK);
    CBusController bus;
    {
        CBusController other;
        EXPECT_EQ(parser->m_created, 0) << "made when first needed";
        EXPECT_EQ(bus.Query("INT 1;:LAST?"), "\"2:0:1;\"");
        EXPECT_EQ(other.Query("INT 2;:LAST?"), "\"2:0:2;\"");
        EXPECT_EQ(bus.Query("LAST?"), "\"2:0:1;\"");
        EXPECT_EQ(parser->m_released, 0);
    }
    EXPECT_EQ(parser->m_released, 1) << "at the end of its path";
    const CErrorRecorder errors;
    EXPECT_EQ(Administration().RegisterParser(parser), E_INVALIDARG) << "registered already";
    EXPECT_EQ(Administration().UnregisterParser(parser), S_OK);
    EXPECT_EQ(parser->m_created, 2);
    EXPECT_EQ(parser->m_released, 2);
    EXPECT_EQ(Administration().UnregisterParser(parser), S_FALSE);
    EXPECT_EQ(bus.Query("LAST?"), "\"\"") << "the instrument's own application has it again";
}

TEST_F(Multichannel, ABusyApplicationHoldsUpNobodyElse)
{
    const auto parser = MakeCloning(CTestSink::Table());
    ASSERT_EQ(Administration().RegisterParser(parser), S_OK);
    CBusController busy;
    auto application = std::make_unique<CBusController>();
    busy.Query("*CLS;:INT 1;*OPC?");
    application->Query("INT 1;*OPC?");
    busy.Send("HOLD");
    WaitForSingleObject(parser->m_first->m_holdEntered.Get(), CBusController::kTimeoutMs);
    std::thread leaving([&application] { application.reset(); });
    EXPECT_TRUE(Eventually([&] { return parser->m_released == 1; })) << "its engine is given back";
    std::atomic<bool> registered{false};
    std::thread coming([&] {
        AtRoot<IZOScpiDeviceManagement>()->RegisterDeviceHandler(CDeviceObject::Create());
        registered = true;
    });
    EXPECT_TRUE(Eventually([&] { return registered.load(); })) << "others register";
    SetEvent(parser->m_first->m_holdRelease.Get());
    leaving.join();
    coming.join();
    EXPECT_EQ(Administration().UnregisterParser(parser), S_OK);
}

/// Its command waits for a bit that never comes.
class CWaitingSink : public CBScpiExecutionSink
{
public:
    CUniqueEvent m_entered{CreateEvent(FALSE, FALSE)};

    HRESULT Execute(IUnknown*,
                    long,
                    unsigned long,
                    short,
                    long*,
                    unsigned long,
                    tagZO_SCPI_PARAMETER*,
                    wchar_t*,
                    IZOScpiOutputBuffer*) override
    {
        CComPtr<IZOScpiStatusRegister> statusRegister;
        AtRoot<IZOScpiStatusManagement>()->GetRegister(kScpiInstrumentPath, L"STAT:OPER", &statusRegister);
        SetEvent(m_entered.Get());
        wchar_t bits = 0;
        return statusRegister->WaitConditionBits(CBusController::kTimeoutMs, 1, &bits);
    }
};

TEST_F(Multichannel, KernelStopEndsACommandThatWaitsForTheInstrument)
{
    const auto sink = CComObject<CWaitingSink, IZOScpiExecutionSink>::Create();
    const auto table = CTableBuilder().Add("WAIT", 0, DEF, 0).Build();
    GUID id{};
    ASSERT_EQ(m_instrument.Register(table, id, sink), S_OK);
    CBusController bus;
    bus.Send("WAIT");
    WaitForSingleObject(sink->m_entered.Get(), CBusController::kTimeoutMs);
    const auto start = std::chrono::steady_clock::now();
    m_instrument.kernel.Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start,
              std::chrono::milliseconds(CBusController::kTimeoutMs));
    const CErrorRecorder errors; // the kernel is not found any more
    bus->Disconnect();
}

/// Takes long enough over each message that two connections keep one of them busy at any time.
class CSlowObserver : public CEventRecorder
{
public:
    CUniqueEvent m_hurry{CreateEvent(TRUE, FALSE)};

    bool IsHurried() const { return WaitForSingleObject(m_hurry.Get(), 0) == WAIT_OBJECT_0; }

protected:
    HRESULT DoProgramMessageBegin(long) override
    {
        WaitForSingleObject(m_hurry.Get(), 2);
        return S_OK;
    }
};

TEST_F(Multichannel, ObserversLeaveWhileMessagesFlow)
{
    const auto observer = CComObject<CSlowObserver, IZOScpiMultichannelEventObserver>::Create();
    ASSERT_EQ(Administration().RegisterEventObserver(observer), S_OK);
    std::atomic<bool> left{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 16; ++i)
    {
        threads.emplace_back([&] {
            for (CBusController bus; !left && !observer->IsHurried();)
            {
                bus.Query("*OPC?");
            }
        });
    }
    ASSERT_TRUE(Eventually([&] { return observer->Count("End") > 100; }));
    threads.emplace_back([&] {
        EXPECT_EQ(Administration().UnregisterEventObserver(observer), S_OK);
        left = true;
    });
    EXPECT_TRUE(Eventually([&] { return left.load(); }));
    SetEvent(observer->m_hurry.Get());
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

class CNameRecorder : public CEventRecorder
{
public:
    std::vector<std::wstring> m_names; // read when the connections are over

protected:
    HRESULT DoConnectionAccepted(wchar_t* name, long) override { return NoteName(name); }
    HRESULT DoConnectionBroken(wchar_t* name, long) override { return NoteName(name); }

private:
    HRESULT NoteName(const wchar_t* name)
    {
        m_names.emplace_back(name);
        return S_OK;
    }
};

TEST_F(Multichannel, AConnectionKeepsItsNameToTheEnd)
{
    const auto names = CComObject<CNameRecorder, IZOScpiMultichannelEventObserver>::Create();
    ASSERT_EQ(Administration().RegisterEventObserver(names), S_OK);
    CTcpServer server({.port = 0});
    server.Start();
    {
        CScpiClient client(server.Port());
        EXPECT_EQ(client.Query("*OPC?"), "1");
    }
    EXPECT_TRUE(Eventually([&] { return m_instrument.kernel.SessionCount() == 0; }));
    Administration().UnregisterEventObserver(names);
    ASSERT_EQ(names->m_names.size(), 2U);
    EXPECT_TRUE(names->m_names[0].starts_with(L"TCPIP 127.0.0.1:"));
    EXPECT_EQ(names->m_names[0], names->m_names[1]);
}

TEST_F(Multichannel, ComponentsComeAndGoWhileClientsTalk)
{
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
    {
        threads.emplace_back([&done] {
            while (!done)
            {
                CBusController bus;
                for (int round = 0; round < 20; ++round)
                {
                    // The application can leave between parser and execution; then it answers nothing.
                    bus.Send("LIST? 2");
                    const Transports::BusResponse response = bus->Receive();
                    ASSERT_EQ(response.bytes, response.result == S_OK ? "0,0.5\n" : "");
                    ASSERT_EQ(bus.Query("*CLS;*OPC?"), "1");
                }
            }
        });
    }
    const auto device = CDeviceObject::Create();
    for (int round = 0; round < 100; ++round)
    {
        const auto parser = MakeCloning(CTestSink::Table());
        const auto observer = CRecorderObject::Create();
        ASSERT_EQ(Administration().RegisterParser(parser), S_OK);
        ASSERT_EQ(Administration().RegisterEventObserver(observer), S_OK);
        ASSERT_EQ(AtRoot<IZOScpiDeviceManagement>()->RegisterDeviceHandler(device), S_OK);
        ASSERT_TRUE(Eventually([&] { return observer->Count("End") != 0; }));
        ASSERT_EQ(AtRoot<IZOScpiDeviceManagement>()->UnregisterDeviceHandler(device), S_OK);
        ASSERT_EQ(Administration().UnregisterEventObserver(observer), S_OK);
        ASSERT_EQ(Administration().UnregisterParser(parser), S_OK);
        EXPECT_EQ(parser->m_created, parser->m_released);
        observer->Take();
        std::this_thread::yield();
        ASSERT_EQ(observer->Take(), "") << "called after it was taken out";
    }
    done = true;
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

TEST_F(Multichannel, ObserversAreKnownByTheirIdentity)
{
    const auto observer = CRecorderObject::Create();
    const auto twin = CRecorderObject::Create();
    GUID id{};
    observer->get_EventClientId(&id);
    twin->put_EventClientId(id);
    observer->m_paths = true;
    EXPECT_EQ(Administration().UnregisterEventObserver(observer), S_FALSE);
    EXPECT_EQ(Administration().RegisterEventObserver(observer), S_OK);
    EXPECT_EQ(Administration().RegisterEventObserver(twin), E_INVALIDARG);
    std::string path;
    {
        CBusController bus;
        path = std::to_string(Path(bus));
        bus.Query("*OPC?");
    }
    EXPECT_EQ(observer->Take(),
              "Accepted" + path + " Remote" + path + " Begin" + path + " End" + path + " Broken" + path);
    EXPECT_EQ(Administration().UnregisterEventObserver(twin), S_OK) << "the same identity";
    twin->put_EventClientId(GUID_NULL);
    EXPECT_EQ(Administration().RegisterEventObserver(twin), E_INVALIDARG);
}

TEST_F(Multichannel, DeviceHandlersStandAloneAndPerPath)
{
    CBusController bus;
    CBusController other;
    CComPtr<IZOScpiDeviceManagement> ofPath;
    ASSERT_EQ(Functionality().GetScpiDeviceManagement(Path(bus), &ofPath), S_OK);
    const auto ofAll = AtRoot<IZOScpiDeviceManagement>();
    const auto everywhere = CDeviceObject::Create();
    const auto there = CDeviceObject::Create();
    EXPECT_EQ(ofAll->RegisterDeviceHandler(everywhere), S_OK);
    EXPECT_EQ(ofAll->RegisterDeviceHandler(everywhere), S_FALSE);
    EXPECT_EQ(ofPath->RegisterDeviceHandler(there), S_OK);
    EXPECT_EQ(ofAll->UnregisterDeviceHandler(there), S_FALSE) << "not registered there";
    bus.Query("*RST;*OPC?");
    other.Query("*RST;*OPC?");
    EXPECT_EQ(ofAll->Reset(), S_OK);
    EXPECT_EQ(everywhere->m_resets, 3);
    EXPECT_EQ(there->m_resets, 1);
    EXPECT_EQ(ofPath->UnregisterDeviceHandler(there), S_OK);
    EXPECT_EQ(ofAll->UnregisterDeviceHandler(everywhere), S_OK);
    bus.Query("*RST;*OPC?");
    EXPECT_EQ(everywhere->m_resets + there->m_resets, 4);
    EXPECT_EQ(ofAll->RegisterDeviceHandler(nullptr), E_POINTER);
}

/// A command tree with its sink, as it is plugged in.
class CPlugIn : public CBScpiCommands, public CTestSink, public CTestDevice
{
public:
    ~CPlugIn() override = default;

protected:
    const tagZO_SCPI_PARSER_TREE* DoGetParserTree() override { return &m_tree; }

private:
    const std::vector<_CMD_SET_RECORD> m_table =
        CTableBuilder().Add("PLUG:LIST", kAnswerList, DEF, QMARK, {{ARG_SINT}}).Build();
    const tagZO_SCPI_PARSER_TREE m_tree{static_cast<std::uint32_t>(m_table.size() * sizeof(_CMD_SET_RECORD)),
                                        m_table.data()};
};
using CPlugInObject = CComObject<CPlugIn, IZOScpiCommands, IZOScpiExecutionSink, IZOScpiDeviceHandler>;

TEST_F(Multichannel, PlugInsExtendTheTree)
{
    const auto tree = AtRoot<IZOScpiTree>();
    const CComPtr<IUnknown> plugIn(static_cast<IZOScpiCommands*>(CPlugInObject::Create()));
    CComPtr<IZOScpiDeviceHandler> handler;
    ASSERT_EQ(plugIn.QueryInterface(&handler), S_OK);
    CBusController bus;
    EXPECT_EQ(
        tree->RegisterPlugIn(CComPtr<IUnknown>(static_cast<IZOScpiExecutionSink*>(CSinkObject::Create()))),
        E_NOINTERFACE);
    EXPECT_EQ(tree->UnregisterPlugIn(plugIn), S_FALSE);
    EXPECT_EQ(tree->RegisterPlugIn(plugIn), S_OK);
    EXPECT_EQ(bus.Query("PLUG:LIST? 2"), "0,0.5");
    const auto devices = AtRoot<IZOScpiDeviceManagement>();
    EXPECT_EQ(devices->UnregisterDeviceHandler(handler), S_FALSE) << "it is no device handler";
    EXPECT_EQ(devices->RegisterDeviceHandler(handler), S_OK) << "but may be one beside";
    EXPECT_EQ(devices->UnregisterDeviceHandler(handler), S_OK);
    const CErrorRecorder errors;
    EXPECT_EQ(tree->RegisterPlugIn(plugIn), E_INVALIDARG);
    EXPECT_EQ(tree->UnregisterPlugIn(plugIn), S_OK);
    bus.Send("PLUG:LIST? 2");
    EXPECT_EQ(bus.Query("SYST:ERR?"), "-113,\"Undefined header;PLUG:LIST?\"");
}

/// A channel with one message in it that lets go of the kernel in one of the kernel's calls.
class CQuitter : public CBScpiChannel
{
public:
    explicit CQuitter(char when) : m_when(when) {}

    HRESULT DoRead(unsigned long, unsigned char* data, unsigned long* got) override
    {
        Quit('R');
        *got = std::exchange(m_rest, std::string_view()).copy(reinterpret_cast<char*>(data), kMessage.size());
        return S_OK;
    }
    HRESULT DoWrite(unsigned long size, unsigned char*, unsigned long* written) override
    {
        Quit('W');
        *written = size;
        return S_OK;
    }
    HRESULT DoFlush() override { return Quit('F'); }
    HRESULT DoProgramMessageEnd() override { return Quit('E'); }
    HRESULT DoDeviceClearAcknowledge() override { return Quit('A'); }
    HRESULT DoAbort() override { return Quit('X'); }

private:
    static constexpr std::string_view kMessage = "*IDN?\n";

    HRESULT Quit(char place) { return place == m_when ? DisconnectRemotePath() : S_OK; }

    const char m_when;
    std::string_view m_rest = kMessage;
};

TEST_F(Multichannel, AChannelMayLetGoInACallOfTheKernel)
{
    for (const char when : std::string("RWFEA"))
    {
        const auto channel = CComObject<CQuitter, IZOScpiChannel>::Create(when);
        CComPtr<IZOScpiChannelServiceProvider> provider;
        ASSERT_EQ(channel->GetServiceProvider(&provider), S_OK);
        ASSERT_EQ(provider->SignalConnected(), S_OK);
        if (when == 'A')
        {
            provider->SignalDeviceClear();
        }
        EXPECT_TRUE(Eventually([&] { return m_instrument.kernel.SessionCount() == 0; })) << when;
        EXPECT_TRUE(Eventually([&] { return channel->GetRemotePath() == -1; })) << when;
        EXPECT_EQ(provider->SignalDeviceClear(), E_UNEXPECTED) << when;
    }
}

std::ptrdiff_t Entries(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

std::size_t MemoryInUse()
{
    return mallinfo2().uordblks; // 0 under sanitizers, which look for leaks themselves
}

TEST_F(Multichannel, ConnectionsLeaveNothingBehind)
{
    CTcpServer server({.port = 0});
    server.Start();
    const auto connect = [&](int rounds, std::size_t atOnce) {
        for (int round = 0; round < rounds; ++round)
        {
            std::vector<CScpiClient> clients;
            for (std::size_t i = 0; i < atOnce; ++i)
            {
                clients.emplace_back(server.Port());
                ASSERT_EQ(clients.back().Query("*OPC?"), "1");
            }
            clients.front().Send("*ID"); // goes in the middle of a message
        }
        ASSERT_TRUE(Eventually([&] { return m_instrument.kernel.SessionCount() == 0; }));
    };
    const std::ptrdiff_t threads = Entries("/proc/self/task");
    connect(1, 64);
    ASSERT_TRUE(Eventually([&] { return Entries("/proc/self/task") <= threads; }));
    const std::ptrdiff_t descriptors = Entries("/proc/self/fd");
    const std::size_t memory = MemoryInUse();
    connect(500, 1);
    connect(2, 64);
    EXPECT_TRUE(Eventually([&] { return Entries("/proc/self/task") <= threads; }));
    EXPECT_TRUE(Eventually([&] { return Entries("/proc/self/fd") <= descriptors; }));
    EXPECT_LT(MemoryInUse(), memory + (std::size_t{64} << 10));
}

} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
