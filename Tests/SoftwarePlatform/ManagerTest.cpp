#include "ExecutionFakes.h"
#include "ZoSoftwarePlatform.h"

#include <atomic>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <pthread.h>
#include <stdexcept>

namespace ZoVelkor
{
namespace
{

constexpr long kNoPath = -1;

/// What was asked for, and how it is answered. Calls on the manager's thread end with a '*'.
struct Script
{
    /// @return 1 for the service or step that is missing
    HRESULT Find(const std::string& name)
    {
        const std::lock_guard lock(mutex);
        log += name + ";";
        return name == missing && --findsLeft < 0 ? S_FALSE : S_OK;
    }
    HRESULT Call(const std::string& name)
    {
        char thread[16] = {};
        pthread_getname_np(pthread_self(), thread, sizeof(thread));
        Find(name + (std::string("SwplScpiManager") == thread ? "*" : ""));
        WaitForSingleObject(name == "StopParser" ? gate.Get() : INVALID_HANDLE_VALUE, INFINITE);
        return throws ? throw std::runtime_error("broken service") : result;
    }

    std::mutex mutex;
    std::string log;
    std::string missing;
    int findsLeft = 0; ///< before the missing one is missed
    HRESULT result = S_OK;
    bool throws = false;
    const CUniqueEvent gate{CreateEvent(TRUE, TRUE)}; ///< StopParser waits for it
};

/// Several services in one object, which is registered at the root.
template <class... TServices>
struct CServices : TServices...
{
    CServices()
    {
        static_cast<void>(GetRoot(&root));
        (root->RegisterInterface(TServices::kInterfaceId, static_cast<TServices*>(this)), ...);
    }
    ~CServices() override
    {
        EXPECT_EQ(references, sizeof...(TServices)) << "leaked reference";
        (root->UnregisterInterface(TServices::kInterfaceId), ...);
    }
    HRESULT QueryInterface(const IID& iid, void** object) override
    {
        *object = nullptr;
        const auto give = [&]<class T>(T* service) { Give(kNoPath, &service), *object = service; };
        ((iid == TServices::kInterfaceId ? give(static_cast<TServices*>(this)) : void()), ...);
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }
    /// Logs the service's name with the path.
    template <class T>
    HRESULT Give(long path, T** target)
    {
        // clang-format off
        constexpr const char* kNames[] = {
            "ParserManagement", "ErrorManagement", "StatusManagement", "RemoteControl", "ChannelManagement",
            "DeviceManagement", "SubsystemFormat", "ParserLanguage", "TraceManagement", "Tree", "Administration",
            "Functionality", "Registration", "parser", "sink", "commands", "observer"};
        // clang-format on
        std::size_t i = 0;
        static_cast<void>(((std::derived_from<TServices, T> || (++i, false)) || ...));
        const HRESULT found = script.Find(kNames[i] + (path == kNoPath ? "" : std::to_string(path)));
        *target = found == S_OK ? this : nullptr;
        references += found == S_OK;
        return found;
    }

    CComPtr<IZORoot> root;
    Script script;
    std::atomic<ULONG> references = 0;
};

struct Format : CFakeFormat
{
    Format() : CFakeFormat(s_unused) {}
    static inline Transcript s_unused;
};

// clang-format off
using Services = CServices<
    IZOScpiParserManagement, FakeErrorManagement, FakeStatusManagement, IZOScpiRemoteControl,
    IZOScpiChannelManagement, IZOScpiDeviceManagement, Format, IZOScpiParserLanguage, IZOScpiTraceManagement,
    IZOScpiTree, IZOScpiMultichannelAdministration, IZOScpiMultichannelFunctionality, IZOScpiObjectRegistration,
    CBScpiParser, CBScpiExecutionSink, CBScpiCommands, CBScpiMultichannelEventObserver>;
// clang-format on

/// The kernel and an application with all its interfaces.
struct Kernel : Services
{
    using IObserver = IZOScpiMultichannelEventObserver;
    using Type = tagZO_SCPI_PARSER_TYPE;
    using Tree = tagZO_SCPI_PARSER_TREE;
    HRESULT StartParser() override { return script.Call("StartParser"); }
    HRESULT StopParser() override { return script.Call("StopParser"); }
    HRESULT GotoLocal() override { return script.Call("GotoLocal"); }
    HRESULT GetObjectRegistration(IZOScpiObjectRegistration** p) override { return Give(kNoPath, p); }
    HRESULT RegisterObject(const tagZO_SCPI_PARSER_OBJECT* p) override
    {
        return object = *p, script.Call("in");
    }
    HRESULT UnregisterObject(GUID id) override
    {
        return script.Call(id == object.m_guidObjectId ? "out" : "?");
    }
    HRESULT RegisterPlugIn(IUnknown*) override { return script.Call("plug in"); }
    HRESULT UnregisterPlugIn(IUnknown*) override { return script.Call("unplug"); }
    HRESULT get_RemotePathCount(long* count) override { return *count = 3, script.Call("count"); }
    HRESULT RegisterParser(IZOScpiParser*) override { return script.Call("parser in"); }
    HRESULT UnregisterParser(IZOScpiParser*) override { return script.Call("parser out"); }
    HRESULT RegisterEventObserver(IObserver*) override { return script.Call("observer in"); }
    HRESULT UnregisterEventObserver(IObserver*) override { return script.Call("observer out"); }
    HRESULT put_ParserName(wchar_t*) override { return script.Find("put name"); }
    HRESULT put_ParserType(Type) override { return script.Find("put type"); }
    HRESULT put_ActivatedMeasurementParser(short on) override
    {
        return script.Find("put " + std::to_string(on));
    }
    HRESULT RegisterCommandTree(Type, wchar_t* name, Tree tree, IZOScpiExecutionSink*) override
    {
        return script.Find("put " + CZoString(name).ToStdString() + std::to_string(tree.iSize));
    }

    HRESULT GetScpiStatusManagement(long i, IZOScpiStatusManagement** p) override { return Give(i, p); }
    HRESULT GetScpiParserManagement(long i, IZOScpiParserManagement** p) override { return Give(i, p); }
    HRESULT GetScpiErrorManagement(long i, IZOScpiErrorManagement** p) override { return Give(i, p); }
    HRESULT GetScpiRemoteManagement(long i, IZOScpiRemoteControl** p) override { return Give(i, p); }
    HRESULT GetScpiChannelManagement(long i, IZOScpiChannelManagement** p) override { return Give(i, p); }
    HRESULT GetScpiDeviceManagement(long i, IZOScpiDeviceManagement** p) override { return Give(i, p); }
    HRESULT GetScpiFormatManagement(long i, IZOScpiSubsystemFormat** p) override { return Give(i, p); }
    HRESULT GetScpiLanguageManagement(long i, IZOScpiParserLanguage** p) override { return Give(i, p); }

    // Never called.
    HRESULT Reset() override { return E_NOTIMPL; }
    HRESULT GotoRemote() override { return E_NOTIMPL; }
    HRESULT SystemPreset() override { return E_NOTIMPL; }
    HRESULT LocalLockout(short) override { return E_NOTIMPL; }
    const Tree* DoGetParserTree() override { return nullptr; }
    HRESULT get_RemoteState(short*) override { return E_NOTIMPL; }
    HRESULT get_ChannelCount(long*) override { return E_NOTIMPL; }
    HRESULT get_Language(wchar_t**) override { return E_NOTIMPL; }
    HRESULT get_ParserStarted(short*) override { return E_NOTIMPL; }
    HRESULT put_Language(const wchar_t*) override { return E_NOTIMPL; }
    HRESULT get_LocalLockoutState(short*) override { return E_NOTIMPL; }
    HRESULT put_MessageTraceActive(short) override { return E_NOTIMPL; }
    HRESULT get_LanguageVersion(wchar_t**) override { return E_NOTIMPL; }
    HRESULT get_MessageTraceActive(short*) override { return E_NOTIMPL; }
    HRESULT RemoveConnection(IZOScpiChannel*) override { return E_NOTIMPL; }
    HRESULT GetChannel(long, IZOScpiChannel**) override { return E_NOTIMPL; }
    HRESULT IsHeaderKnown(const wchar_t*, short*) override { return E_NOTIMPL; }
    HRESULT GetChannelEvents(long, HANDLE*, HANDLE*) override { return E_NOTIMPL; }
    HRESULT RegisterDeviceHandler(IZOScpiDeviceHandler*) override { return E_NOTIMPL; }
    HRESULT UnregisterDeviceHandler(IZOScpiDeviceHandler*) override { return E_NOTIMPL; }
    HRESULT AddConnection(IZOScpiChannel*, long*, IZOScpiChannelServiceProvider**) override { return E_FAIL; }

    tagZO_SCPI_PARSER_OBJECT object{};
};

/// An application that has found the kernel; when it goes it checks that nothing has leaked.
struct World
{
    /// @param fault  what is missing and how often it is there before, as "Tree@1"; "kernel" was never found
    explicit World(const std::string& fault = "nothing@0")
    {
        const std::size_t at = fault.find('@');
        fault.starts_with("kernel") ? S_OK : manager.Find();
        kernel.script.missing = fault.substr(0, at);
        kernel.script.findsLeft = std::stoi(fault.substr(at + 1));
        parser.Attach(object);
        kernel.script.log.clear();
    }
    /// Makes the request and waits for its end; with the fault "thread" the pool has none left.
    HRESULT OnThread(HRESULT (CSwplScpiManager::*request)(bool) noexcept)
    {
        auto& pool = GetComponentShellThreadPool();
        std::vector<CThread*> taken;
        const auto take = [&] {
            return taken.emplace_back(pool.GetThread("SwplScpiManagerThread")) != nullptr;
        };
        take() ? pool.ReturnThread(taken[0]) : void();
        while (kernel.script.missing == "thread" && take())
        {}
        const HRESULT result = (manager.*request)(true);
        std::ranges::for_each(taken, [&](CThread* thread) { pool.ReturnThread(thread); });
        return taken[0]->WaitUntilIdle(INFINITE) == S_OK ? result : E_UNEXPECTED;
    }

    CErrorRecorder recorder;
    Kernel kernel;
    IUnknown* const object = static_cast<IZOScpiParser*>(&kernel);
    CSwplScpiManager manager;
    CSwplScpiParser parser;
    CScpiAdministrationTemplate administration;
};

using CManager = CSwplScpiManager;
using CTemplate = CScpiAdministrationTemplate;
using Operation = std::function<HRESULT(World&)>;
constexpr char kTable[2 * sizeof(_CMD_SET_RECORD)] = {};
constexpr auto kType = ZO_PARSER_TYPE_SERVICE;

Operation Administer(HRESULT (CTemplate::*operation)(IUnknown*))
{
    return [operation](World& w) { return (w.administration.*operation)(w.object); };
}

// clang-format off
const std::map<std::string, Operation> kOperations = {
    {"Find",                [](World&) { return CManager().Find(); }},
    {"FindEx",              [](World&) { return CManager().FindEx(7); }},
    {"RegisterParser",      [](World& w) { return w.manager.RegisterParser(&w.parser); }},
    {"UnregisterParser",    [](World& w) { return w.manager.UnregisterParser(&w.parser); }},
    {"StartParser",         [](World& w) { return w.manager.StartParser(false); }},
    {"StopParser",          [](World& w) { return w.manager.StopParser(false); }},
    {"ReturnToLocal",       [](World& w) { return w.manager.ReturnToLocal(false); }},
    {"StartParser*",        [](World& w) { return w.OnThread(&CManager::StartParser); }},
    {"StopParser*",         [](World& w) { return w.OnThread(&CManager::StopParser); }},
    {"ReturnToLocal*",      [](World& w) { return w.OnThread(&CManager::ReturnToLocal); }},
    {"RegisterCommandTree", [](World& w) { return w.parser.RegisterCommandTree(80, kTable, kType, L"Demo"); }},
    {"Attach",              [](World& w) { return w.administration.AttachRemoteSystem(); }},
    {"ParserIn",            Administer(&CTemplate::RegisterMultichannelParser)},
    {"ParserOut",           Administer(&CTemplate::UnregisterMultichannelParser)},
    {"ObserverIn",          Administer(&CTemplate::RegisterMultichannelEventObserver)},
    {"ObserverOut",         Administer(&CTemplate::UnregisterMultichannelEventObserver)},
    {"PlugIn",              Administer(&CTemplate::RegisterScpiPlugIn)},
    {"Unplug",              Administer(&CTemplate::UnregisterScpiPlugIn)},
    {"Aggregate",           [](World& w) {
        return w.administration.SetupAggregatedParser(nullptr, w.object, 80, kTable, kType, L"Demo", true); }},
};
// clang-format on

/// What the services were asked, the result or "raised", and the reports.
std::string Outcome(World& world, const Operation& operation)
{
    std::ostringstream text;
    try
    {
        text << std::hex << static_cast<std::uint32_t>(operation(world));
    }
    catch (const CShellError& error)
    {
        EXPECT_EQ(error.Report().result, ZO_E_SHELL);
        text << "raised";
    }
    for (const auto& [report, thrown] : world.recorder.Take())
    {
        text << " {" << report.sourceUnit << "|" << report.condition << "|" << report.message << "}";
    }
    return world.kernel.script.log + " " + text.str();
}

TEST(ManagerTest, CopiesHoldTheServicesUntilTheyAreDetached)
{
    World world;
    const ULONG held = world.kernel.references;
    CSwplScpiManager copy(world.manager);
    EXPECT_EQ(world.kernel.references, held + 9);
    world.manager.Detach();
    EXPECT_EQ(world.kernel.references, held);
    EXPECT_TRUE(copy.Available() && !world.manager.Available());
    EXPECT_DEATH(copy.Find(), "slot == nullptr");
    EXPECT_DEATH(copy.FindEx(7), "slot == nullptr");
    EXPECT_DEATH(world.parser.Attach(world.object), "slot == nullptr");
}

// Each row has a world of its own.
TEST(ManagerTest, OperationsHaveTheOutcomeOfTheirRow)
{
    std::ifstream file(ZO_MANAGER_OUTCOMES);
    std::string name, fault, result, outcome;
    ASSERT_TRUE(std::getline(file, name)) << "no heading in " ZO_MANAGER_OUTCOMES;
    while (std::getline(file, name, '\t'))
    {
        std::getline(std::getline(std::getline(file, fault, '\t'), result, '\t'), outcome);
        SCOPED_TRACE(name + " without " + fault + ", result " + result);
        World world(fault);
        world.kernel.script.throws = result == "throws";
        world.kernel.script.result =
            result == "throws" ? 0 : static_cast<HRESULT>(std::stoul(result, nullptr, 16));
        EXPECT_EQ(Outcome(world, kOperations.at(name)), outcome);
    }
    EXPECT_TRUE(outcome.ends_with("put -1; 0")) << "the last row was not reached";
}

TEST(ManagerTest, EachRegistrationHasANewIdentity)
{
    World world;
    EXPECT_EQ(world.parser.RegisterCommandTree(80, kTable, kType, L"Demo"), S_OK);
    EXPECT_EQ(world.manager.RegisterParser(&world.parser), S_OK);
    const GUID first = world.parser.GetGuid();
    EXPECT_EQ(world.manager.RegisterParser(&world.parser), S_OK);
    EXPECT_TRUE(first != GUID_NULL && world.parser.GetGuid() != first);
    EXPECT_EQ(world.manager.UnregisterParser(&world.parser), S_OK);
    EXPECT_TRUE(world.kernel.script.log.ends_with("in;Registration;out;")) << world.kernel.script.log;
    EXPECT_EQ(world.kernel.object.pParser, world.object);
    EXPECT_EQ(world.kernel.object.eType, kType);
    EXPECT_EQ(CZoString(world.kernel.object.bsName), "Demo");
}

TEST(ManagerTest, RequestsInFlightHaveThreadsOfTheirOwn)
{
    World world;
    CThread* const thread = GetComponentShellThreadPool().GetThread("SwplScpiManagerThread");
    GetComponentShellThreadPool().ReturnThread(thread);
    ResetEvent(world.kernel.script.gate.Get());
    EXPECT_EQ(world.manager.StopParser(true), S_OK);
    EXPECT_EQ(world.OnThread(&CSwplScpiManager::ReturnToLocal), S_OK) << "the first one is still at work";
    SetEvent(world.kernel.script.gate.Get());
    EXPECT_EQ(thread->WaitUntilIdle(INFINITE), S_OK);
}

TEST(ManagerTest, AttachmentHoldsEveryPathOrNone)
{
    World world;
    const ULONG held = world.kernel.references;
    EXPECT_EQ(world.administration.AttachRemoteSystem() | world.administration.AttachRemoteSystem(), S_OK);
    EXPECT_EQ(world.kernel.references, held + 3);
    EXPECT_EQ(world.administration.GetRemotePathCount(), 3);
    for (const long path : {-1L, 0L, 2L, 3L})
    {
        EXPECT_EQ(world.administration.GetScpiParserManagement(path) != nullptr, path == 0 || path == 2);
    }
    world.kernel.script.missing = "ParserManagement2";
    EXPECT_THROW(world.administration.AttachRemoteSystem(), CShellError);
    EXPECT_EQ(world.kernel.references, held);
    EXPECT_EQ(world.administration.GetScpiParserManagement(0), nullptr);
}

} // namespace
} // namespace ZoVelkor
