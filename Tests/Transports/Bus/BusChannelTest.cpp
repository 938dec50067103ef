#include "CBScpiChannelServiceProvider.h"
#include "CBusController.h"
#include "CErrorRecorder.h"
#include "IZOScpiDeviceManagement.h"
#include "IZOScpiMultichannelAdministration.h"
#include "IZOScpiParserManagement.h"
#include "IZOScpiRemoteControl.h"

#include <functional>
#include <sstream>

namespace ZoVelkor::Transports::Testing
{

using namespace RemoteKernel;
using namespace RemoteKernel::Testing;

namespace
{

/// Works a script off and gives what can be seen of it. Steps, '.' being END and '~' a line feed:
/// >text send, r kernel reads, <text answer, f end of answer, m end of message, gN read N bytes,
/// t addressed to talk, c device clear, a acknowledged, w controller waits for room, T trigger.
std::string RunExchange(const std::string& script)
{
    CMessageExchange exchange(8, 4);
    std::istringstream steps(script);
    std::string trace;
    const auto fault = [&trace](short error) { trace += error != 0 ? std::to_string(error) + ' ' : ""; };
    for (std::string step; steps >> step;)
    {
        std::replace(step.begin(), step.end(), '~', '\n');
        std::string text = step.substr(1);
        switch (step.front())
        {
        case '>': {
            const bool end = text.ends_with('.');
            text.resize(text.size() - (end ? 1 : 0));
            fault(exchange.Listen());
            const std::size_t taken = exchange.Accept(text, end);
            trace += taken == text.size() ? "" : '+' + std::to_string(taken) + ' ';
            break;
        }
        case 'r': {
            char space[6];
            const CMessageExchange::Handed handed = exchange.Hand(space);
            trace += '[' + std::string(space, handed.count) + "] ";
            fault(handed.error);
            break;
        }
        case '<': {
            std::size_t taken = 0;
            fault(exchange.Answer(text, taken));
            trace += exchange.IsDropped() ? "dropped " : std::to_string(taken) + ' ';
            break;
        }
        case 'g': {
            std::string bytes;
            const bool end = exchange.Take(static_cast<std::size_t>(std::stoi(text)), bytes);
            trace += '(' + bytes + (end ? ".) " : ") ");
            break;
        }
        case 'f':
            exchange.EndAnswer();
            break;
        case 'm':
            exchange.EndMessage();
            break;
        case 't':
            fault(exchange.Talk());
            break;
        case 'c':
            exchange.DeviceClear();
            break;
        case 'a':
            exchange.Acknowledge();
            break;
        case 'w':
            fault(exchange.WaitForRoom(true));
            break;
        default:
            fault(exchange.BeginTrigger());
            break;
        }
    }
    std::replace(trace.begin(), trace.end(), '\n', '~');
    return trace;
}

struct ExchangeRow
{
    const char* name;
    const char* script;
    const char* trace;
};

constexpr ExchangeRow kExchangeRows[] = {
    {"END stands for the line feed", ">ab. r m r t", "[ab~] [] -420 "},
    {"line feed with END is one message", ">ab~. r m r t", "[ab~] [] -420 "},
    {"line feed without END", ">ab~ r m r t", "[ab~] [] -420 "},
    {"END alone, after all was handed out", ">ab r > >. r m r", "[ab] [~] [] "},
    {"END with nothing is nothing", ">. r t", "[] -420 "},
    {"no room for the line feed of END", ">abcdef. r r m r", "[abcdef] [~] [] "},
    {"line feed is data, END ends", ">#1~. r r m r", "[#1~] [~] [] "},
    {"END inside a block", ">#1. r r r a >b. r", "[#1~] [] -161 [] [b~] "},
    {"END inside a block, message waits", ">#1. >b. r r a r", "[#1~] [] -161 [b~] "},
    {"one message at a time", ">a~b~. r r m r m r", "[a~] [b~] [] [] "},
    {"answer, in parts", ">q. r <xyz f g2 g9 m r", "[q~] 3 (xy) (z.) [] "},
    {"last byte waits for its END", ">q. r <x g9 f g9", "[q~] 1 () (x.) "},
    {"answer beyond the buffer", ">q. r <abcdef g9 <def f g9", "[q~] 4 (abc) 3 (ddef.) "},
    {"interrupted before reading", ">q. r <x f >b. g9 m r", "[q~] 1 -410 () [b~] "},
    {"interrupted half way", ">q. r <xy f g1 >b. <z m r", "[q~] 2 (x) -410 dropped [b~] "},
    {"interrupted before the answer", ">q. >b. r <x m r", "[q~] -410 dropped [b~] "},
    {"interrupted by a trigger", ">q. r <x f T g9", "[q~] 1 -410 () "},
    {"interrupted by a trigger before", ">q. T r <x", "[q~] -410 dropped "},
    {"read to its end is not interrupted", ">q. r <x f g9 >b. m r", "[q~] 1 (x.) [b~] "},
    {"nothing asked, kernel has not looked", "t >a. t r t m t r t", "[a~] [] -420 "},
    {"half a message", ">ab r r t r a >c. r", "[ab] [] -420 [] [c~] "},
    {"reading a response is not unterminated", ">q. r <x f t g1 t m r t", "[q~] 1 (x.) [] -420 "},
    {"deadlock, sender waits first", ">abcdefgh+ r >bcd w <xyzvw", "+8 [abcdef] -430 dropped "},
    {"full input alone is no deadlock", ">abcdefghi w r <xy", "+8 [abcdef] 2 "},
    {"clear drops both", ">q. r <x f >b. c r g9 a r", "[q~] 1 -410 [] () [] "},
    {"clear half way through a message", ">ab r c a >c. r", "[ab] [c~] "},
    {"clear while answering", ">q. r c <x a r t", "[q~] dropped [] -420 "},
};

TEST(MessageExchange, KeepsTheRules)
{
    for (const ExchangeRow& row : kExchangeRows)
    {
        EXPECT_EQ(RunExchange(row.script), row.trace) << row.name << ": " << row.script;
    }
}

class Bus : public testing::Test
{
protected:
    Bus() { AtRoot<IZOScpiMultichannelAdministration>()->RegisterEventObserver(m_events); }

    std::string Errors() { return m_bus.Query("SYST:ERR:ALL?"); }

    TestInstrument m_instrument;
    CComPtr<CRecorderObject> m_events = CRecorderObject::Create();
    CBusController m_bus{BusSettings{.primaryAddress = 7, .inputBuffer = 64, .outputBuffer = 8}};
};

/// One conversation. Steps: "> text" message with END, "+ text" without END, '~' being a line feed;
/// "< text" the whole response, "<N text" its next N bytes; "<0" nothing was asked; "!" device clear;
/// "T result" group execute trigger; "P byte" serial poll; "S 0" the service-request line.
void RunBus(CBusController& bus, const std::string& script)
{
    std::istringstream steps(script);
    for (std::string step; std::getline(steps, step);)
    {
        SCOPED_TRACE(step);
        std::replace(step.begin(), step.end(), '~', '\n');
        const std::size_t blank = std::min(step.find(' '), step.size());
        const std::string text = step.substr(std::min(blank + 1, step.size()));
        const std::string count = step.substr(1, blank - 1);
        switch (step.front())
        {
        case '>':
        case '+':
            bus.Send(text, step.front() == '>');
            break;
        case '<':
            if (count.empty())
            {
                EXPECT_EQ(bus.Receive(), text);
            }
            else
            {
                const BusResponse response =
                    bus->Receive(std::max<std::size_t>(std::stoul(count), 1), CBusController::kTimeoutMs);
                EXPECT_EQ(response.result, count == "0" ? S_FALSE : S_OK);
                EXPECT_EQ(response.bytes, text);
            }
            break;
        case '!':
            EXPECT_EQ(bus->DeviceClear(CBusController::kTimeoutMs), S_OK);
            break;
        case 'T':
            EXPECT_EQ(bus->GroupExecuteTrigger(), std::stoi(text));
            break;
        case 'P':
            EXPECT_EQ(bus.Poll(), std::stoul(text));
            break;
        default:
            EXPECT_EQ(
                WaitForSingleObject(bus->ServiceRequestEvent(), text == "1" ? CBusController::kTimeoutMs : 0),
                text == "1" ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
            break;
        }
    }
}

struct ConversationCase
{
    const char* name;
    const char* script;
    const char* errors;
};

constexpr char kNoError[] = "0,\"No error\"";
constexpr char kInterrupted[] = "-410,\"Query interrupted\"";
constexpr char kUnterminated[] = "-420,\"Query unterminated\"";
constexpr char kNotAllowed[] = "-105,\"Get not allowed\"";

constexpr ConversationCase kConversations[] = {
    {"Terminators",
     "> *IDN?\n< Maker,Model,123,1.0\n> *OPC?~\n< 1\n+ *OPC?~\n< 1\n+ *OP\n> C?\n< 1",
     kNoError},
    {"ReadInParts", "> *IDN?\n<5 Maker\n<4 ,Mod\n< el,123,1.0", kNoError},
    {"NothingAsked", "<0\n> *OPC?\n< 1", kUnterminated},
    {"SettingAnswersNothing", "> INT 5\n<0\n> LAST?\n< \"2:0:5;\"", kUnterminated},
    {"HalfAMessage", "+ *ID\n<0\n> *OPC?\n< 1", kUnterminated},
    {"ReadTwice", "> *OPC?\n< 1\n<0", kUnterminated},
    {"Interrupted", "> *IDN?\n> *OPC?\n< 1", kInterrupted},
    {"InterruptedHalfWay", "> *IDN?\n<5 Maker\n> *OPC?\n< 1", kInterrupted},
    {"TwoMessagesInOneTransfer", "> *IDN?~*OPC?\n< 1", kInterrupted},
    {"BlockWithLineFeeds", "> BLOC #14~~~~\n> BLOC?\n< #14~~~~", kNoError},
    {"EndInsideABlock", "> BLOC #210ab\n> *OPC?\n< 1", "-161,\"Invalid block data\""},
    {"IndefiniteBlock", "> BLOC #0abc\n> BLOC?\n< #13abc", kNoError},
    {"Trigger", "> *OPC\nT 0\n> *OPC?\n< 1", kNoError},
    {"TriggerInsideAMessage", "+ INT 1;LA\nT 1\n> ST?\n> *OPC?\n< 1", kNotAllowed},
    {"TriggerInterrupts", "> *IDN?\nT 0\n> *OPC?\n< 1", kInterrupted},
    {"MessageAvailable", "> *SRE 16;*OPC?\nS 1\nP 80\nS 0\nP 16\n< 1\nP 0", kNoError},
    {"ServiceRequest",
     "> *ESE 32;*SRE 32;*CLS\nP 0\nS 0\n> BAD\n> *OPC?\n< 1\nS 1\nP 100\nS 0\nP 36\n> *STB?\n< 100",
     "-113,\"Undefined header;BAD\""},
};

TEST_F(Bus, Conversations)
{
    for (const ConversationCase& row : kConversations)
    {
        SCOPED_TRACE(row.name);
        RunBus(m_bus, row.script);
        EXPECT_EQ(Errors(), row.errors);
        EXPECT_EQ(m_bus->Send("*CLS;*SRE 0;*ESE 0", true, CBusController::kTimeoutMs), S_OK);
        EXPECT_EQ(m_bus.Query("*OPC?"), "1");
    }
}

TEST_F(Bus, DeletingDropsWhatWaitsOnThatSideAlone)
{
    m_bus.Send("OVER;*WAI");
    EXPECT_EQ(WaitForSingleObject(m_instrument.sink->m_operationBegun.Get(), CBusController::kTimeoutMs),
              WAIT_OBJECT_0);
    m_bus.Send("*ESE 4");
    EXPECT_EQ(m_bus.Channel().Delete(ZO_CHANNEL_INPUT), S_OK);
    m_instrument.sink->EndOperations();
    EXPECT_EQ(m_bus.Query("*ESE?"), "0");
    m_bus.Send("*IDN?");
    EXPECT_TRUE(Eventually([this] { return (m_bus.Poll() & 16) != 0; }));
    EXPECT_EQ(m_bus.Channel().Delete(ZO_CHANNEL_INPUT), S_OK);
    EXPECT_EQ(m_bus.Poll() & 16, 16U) << "the answer stays";
    EXPECT_EQ(m_bus.Channel().Delete(ZO_CHANNEL_OUTPUT), S_OK);
    EXPECT_EQ(m_bus.Query("*OPC?"), "1");
    EXPECT_EQ(Errors(), kNoError) << "what is not there is not interrupted";
}

TEST_F(Bus, AChannelWithoutStatusIsNotToldAboutIt)
{
    struct CSilentBus : CBusChannel
    {
        using CBusChannel::CBusChannel;
        short DoGetCapabilityStatus() override { return VARIANT_FALSE; }
    };
    const auto channel = CComObject<CSilentBus, IZOScpiChannel>::Create(BusSettings{});
    channel->SetRemoteEnable(true);
    ASSERT_EQ(channel->Connect(), S_OK);
    EXPECT_EQ(channel->Send("*SRE 32;*ESE 32;BAD;*OPC?", true, CBusController::kTimeoutMs), S_OK);
    EXPECT_EQ(channel->Send("*STB?", true, CBusController::kTimeoutMs), S_OK);
    EXPECT_EQ(channel->Receive(SIZE_MAX, CBusController::kTimeoutMs).bytes, "100\n");
    EXPECT_EQ(WaitForSingleObject(channel->ServiceRequestEvent(), 0), WAIT_TIMEOUT);
    channel->Disconnect();
}

/// What the instrument does when a clear, or the end, comes.
struct BusStateCase
{
    const char* name;
    void (*enter)(CBusController& bus, TestInstrument& instrument);
    int aborted; ///< messages that are cut
};

void Enter(CBusController& bus, std::string_view text, const CUniqueEvent& reached, bool end = true)
{
    bus.Send(text, end);
    EXPECT_EQ(WaitForSingleObject(reached.Get(), CBusController::kTimeoutMs), WAIT_OBJECT_0);
}

const BusStateCase kBusStates[] = {
    {"Idle", [](auto&, auto&) {}, 0},
    {"HalfAMessage", [](auto& bus, auto&) { bus.Send("INT 1;*ID", false); }, 0},
    {"ResponseUnread",
     [](auto& bus, auto&) {
         bus.Send("*IDN?");
         EXPECT_TRUE(Eventually([&bus] { return (bus.Poll() & 16) != 0; }));
     },
     0},
    {"ResponseHalfRead",
     [](auto& bus, auto&) {
         bus.Send("*IDN?");
         EXPECT_EQ(bus->Receive(3, CBusController::kTimeoutMs).bytes, "Mak");
     },
     0},
    {"OperationPending",
     [](auto& bus, auto& instrument) { Enter(bus, "OVER;*OPC?", instrument.sink->m_operationBegun); },
     1},
    {"CompletionRequested", [](auto& bus, auto&) { EXPECT_EQ(bus.Query("OVER;*OPC;LIST? 1"), "0"); }, 0},
    {"StreamedBlock",
     [](auto& bus, auto& instrument) {
         Enter(bus, "TAKE 2000000,#72000000abc", instrument.sink->m_takeEntered, false);
     },
     1},
    {"CollectedBlock", [](auto& bus, auto&) { bus.Send("BLOC #6100000abc", false); }, 0},
    {"ParsingStopped",
     [](auto& bus, auto&) {
         AtRoot<IZOScpiParserManagement>()->StopParser();
         bus.Send("*IDN?");
     },
     0},
};

class BusState : public Bus, public testing::WithParamInterface<BusStateCase>
{
protected:
    ~BusState() override { m_instrument.sink->EndOperations(); }
};

TEST_P(BusState, DeviceClearForgetsTheMessageAndNothingElse)
{
    m_bus.Send("INT 5;*ESE 4");
    m_bus.Query("*OPC?");
    m_events->Take();
    GetParam().enter(m_bus, m_instrument);
    EXPECT_EQ(m_bus->DeviceClear(CBusController::kTimeoutMs), S_OK);
    EXPECT_EQ(m_bus.Poll(), 0U);
    EXPECT_EQ(m_bus->Receive(1, CBusController::kTimeoutMs).result, S_FALSE) << "a response is left";
    AtRoot<IZOScpiParserManagement>()->StartParser();
    m_instrument.sink->EndOperations();
    EXPECT_EQ(m_bus.Query("*OPC?;*ESE?;*ESR?;LAST?"), "1;4;132;\"2:0:5;\"");
    EXPECT_EQ(Errors(), kUnterminated);
    EXPECT_EQ(m_events->Count("Clear"), 1U);
    EXPECT_EQ(m_events->Count("OpcReset(1)"), std::string_view(GetParam().name) == "CompletionRequested");
    EXPECT_GE(m_events->Count("Aborted"), static_cast<std::size_t>(GetParam().aborted));
    EXPECT_EQ(m_events->Count("Begin"), m_events->Count("End") + m_events->Count("Aborted"));
}

TEST_P(BusState, KernelStopEndsTheConnection)
{
    GetParam().enter(m_bus, m_instrument);
    const BusResponse idle = m_bus->Receive(1, 0);
    m_instrument.kernel.Stop();
    EXPECT_EQ(m_instrument.kernel.SessionCount(), 0U);
    EXPECT_EQ(m_bus->Send("*IDN?"), E_UNEXPECTED) << idle.bytes;
    EXPECT_EQ(m_bus->Receive().result, E_UNEXPECTED);
    EXPECT_EQ(m_bus->DeviceClear(), E_UNEXPECTED);
    EXPECT_EQ(m_bus->GroupExecuteTrigger(), E_UNEXPECTED);
    const CErrorRecorder errors; // the kernel is not found any more
    EXPECT_EQ(m_bus->Disconnect(), S_OK);
}

INSTANTIATE_TEST_SUITE_P(In, BusState, testing::ValuesIn(kBusStates), [](const auto& row) {
    return std::string(row.param.name);
});

TEST_F(Bus, DeviceClearFollowsAHandlerThatIsStillRunning)
{
    Enter(m_bus, "HOLD;*IDN?", m_instrument.sink->m_holdEntered);
    EXPECT_EQ(m_bus->DeviceClear(0), E_PENDING);
    EXPECT_EQ(m_bus->Send("*OPC?", true, 0), E_PENDING) << "nothing is taken before the acknowledgement";
    SetEvent(m_instrument.sink->m_holdRelease.Get());
    EXPECT_EQ(m_bus->DeviceClear(CBusController::kTimeoutMs), S_OK);
    EXPECT_EQ(m_bus.Query("*OPC?"), "1");
    // The second one joins the first, unless that was over already.
    EXPECT_LE(m_events->Count("Clear"), 2U);
}

TEST_F(Bus, DeviceClearFreesAControllerThatWaits)
{
    AtRoot<IZOScpiParserManagement>()->StopParser();
    const std::string large = "BLOC #41000" + std::string(1000, 'x') + ";BLOC?";
    HRESULT sent = S_OK;
    std::thread sender([&] { sent = m_bus->Send("*OPC?\n" + large); });
    unsigned long waiting = 0;
    EXPECT_TRUE(Eventually([&] { return m_bus->DataAvailable(&waiting) == S_OK && waiting == 64; }));
    EXPECT_EQ(m_bus->DeviceClear(CBusController::kTimeoutMs), S_OK);
    sender.join();
    EXPECT_EQ(sent, E_ABORT);
    AtRoot<IZOScpiParserManagement>()->StartParser();

    Enter(m_bus, "OVER;*OPC?", m_instrument.sink->m_operationBegun);
    BusResponse response{};
    std::thread reader([&] { response = m_bus->Receive(); });
    EXPECT_EQ(m_bus->DeviceClear(CBusController::kTimeoutMs), S_OK);
    reader.join();
    // A reader that comes after the clear finds that nothing was asked.
    EXPECT_TRUE(response.result == E_ABORT || response.result == S_FALSE);
    m_instrument.sink->EndOperations();
    EXPECT_EQ(m_bus.Query(large), "#41000" + std::string(1000, 'x'));
}

TEST_F(Bus, TriggerInsideAStreamedBlockIsRefusedAtOnce)
{
    Enter(m_bus, "TAKE 2000000,#72000000abc", m_instrument.sink->m_takeEntered, false);
    EXPECT_EQ(m_bus->GroupExecuteTrigger(), S_FALSE);
    m_bus.Send(std::string(1'999'997, '\n') + "\n");
    EXPECT_EQ(m_bus.Query("LAST?"),
              "\"2000000/2000000:" + std::to_string(1'999'997 * 10 + 'a' + 'b' + 'c') + '"');
    EXPECT_EQ(Errors(), kNotAllowed);
    EXPECT_EQ(m_events->Count("Trigger"), 0U);
}

TEST_F(Bus, ReadingInsideAStreamedBlockDropsIt)
{
    Enter(m_bus, "TAKE 2000000,#72000000abc", m_instrument.sink->m_takeEntered, false);
    EXPECT_EQ(m_bus->Receive(1, CBusController::kTimeoutMs).result, S_FALSE);
    EXPECT_EQ(m_bus.Query("*OPC?"), "1");
    EXPECT_EQ(m_instrument.sink->m_takeResult, E_ABORT);
    EXPECT_EQ(Errors(), kUnterminated);
}

TEST_F(Bus, LocalInstrumentChangesNothing)
{
    m_bus.Query("INT 5;*OPC?");
    m_bus->SetRemoteEnable(false);
    for (const char* refused : {"INT 6", "*RST", "*TRG"})
    {
        m_bus.Send(refused);
        EXPECT_EQ(m_bus.Query("LAST?;SYST:ERR?"), "\"2:0:5;\";-201,\"Invalid while in local\"") << refused;
    }
    EXPECT_EQ(m_bus->GroupExecuteTrigger(), S_FALSE);
    EXPECT_EQ(m_bus.Query("*ESE 4;*ESE?;SYST:ERR?"), "4;-201,\"Invalid while in local\"");
    EXPECT_EQ(m_instrument.device->m_resets, 0);
    m_bus->SetRemoteEnable(true);
    EXPECT_EQ(m_bus.Query("INT 7;:LAST?"), "\"2:0:7;\"") << "addressed, it is remote again";
}

TEST_F(Bus, RemoteLocalAndLockout)
{
    const auto panel = AtRoot<IZOScpiRemoteControl>();
    m_events->Take();
    struct Step
    {
        const char* name;
        std::function<HRESULT()> action;
        HRESULT result;
        const char* events;
        const char* states; ///< remote, locked out
    };
    const Step steps[] = {
        {"message",
         [&] { return m_bus.Query("*OPC?") == "1" ? S_OK : E_FAIL; },
         S_OK,
         "Remote Begin End",
         "R-"},
        {"panel", [&] { return panel->GotoLocal(); }, S_OK, "Local", "--"},
        {"panel again", [&] { return panel->GotoLocal(); }, S_FALSE, "", "--"},
        {"LLO", [&] { return m_bus->LocalLockout(); }, S_OK, "Lock", "-L"},
        {"addressed", [&] { return m_bus->GotoRemote(); }, S_OK, "Remote", "RL"},
        {"panel, locked", [&] { return panel->GotoLocal(); }, E_ACCESSDENIED, "", "RL"},
        {"GTL", [&] { return m_bus->GotoLocal(); }, S_OK, "Local", "-L"},
        {"remote by the panel", [&] { return panel->GotoRemote(); }, S_OK, "Remote", "RL"},
        {"REN off", [&] { return m_bus->SetRemoteEnable(false); }, S_OK, "Unlock Local", "--"},
        {"LLO without REN", [&] { return m_bus->LocalLockout(); }, S_FALSE, "", "--"},
    };
    for (const Step& step : steps)
    {
        EXPECT_EQ(step.action(), step.result) << step.name;
        EXPECT_EQ(m_events->Take(), step.events) << step.name;
        short remote = 0;
        short lockout = 0;
        panel->get_RemoteState(&remote);
        panel->get_LocalLockoutState(&lockout);
        const tagZO_SCPI_CHANNEL_STATUS shown = m_bus->Status();
        EXPECT_EQ(std::string(remote != 0 ? "R" : "-") + (lockout != 0 ? "L" : "-"), step.states)
            << step.name;
        EXPECT_EQ(shown.vtbRemote, remote) << step.name;
        EXPECT_EQ(shown.vtbLocalLockout, lockout) << step.name;
    }
}

TEST_F(Bus, TellsTheDeviceHandlerOfTheApplication)
{
    const std::pair<std::function<void()>, const char*> rows[] = {
        {[&] { m_bus.Query("*OPC?"); }, "R"},
        {[&] { m_bus.Query("INT 1;:LIST? 1;*OPC?"); }, "be"},
        {[&] { m_bus->GroupExecuteTrigger(); }, "T"},
        {[&] { m_bus->LocalLockout(); }, "K"},
        {[&] { m_bus->GotoLocal(); }, "L"},
        {[&] { m_bus->SetRemoteEnable(false); }, "k"},
        {[&] { AtRoot<IZOScpiDeviceManagement>()->SystemPreset(); }, "P"},
        {[&] { m_bus->GotoRemote(); }, "R"},
        {[&] {
             Enter(m_bus, "TAKE 2000000,#72000000abc", m_instrument.sink->m_takeEntered, false);
             m_bus->DeviceClear(CBusController::kTimeoutMs);
         },
         "baC"},
    };
    for (const auto& [act, events] : rows)
    {
        act();
        EXPECT_EQ(m_instrument.device->TakeEvents(), events);
    }
}

TEST_F(Bus, TellsObserversAndItsProperties)
{
    m_events->Take();
    m_bus.Query("*RST;*TRG;*OPC?");
    AtRoot<IZOScpiDeviceManagement>()->SystemPreset();
    EXPECT_EQ(m_events->Take(), "Remote Begin Reset Trigger End Preset");
    CSmartScpiChannelInfo info;
    EXPECT_EQ(m_bus->get_ChannelProperties(info.operator->()), S_OK);
    EXPECT_STREQ(info->bsName, L"BUS 7");
    EXPECT_EQ(info->iKind, ZO_CHANNEL_KIND_BUS);
    EXPECT_EQ(info->iMessages, 1);
    EXPECT_EQ(info->iBytesSent, 2);
    m_bus->Disconnect();
    EXPECT_EQ(m_events->Take(), "Broken");
    EXPECT_EQ(m_bus->Connect(), S_OK);
    EXPECT_EQ(m_bus.Query("*OPC?"), "1") << "connected again";
}

class CErrorCollector : public CBScpiChannelServiceProvider
{
public:
    HRESULT DoReportError(short code, wchar_t*) override
    {
        m_codes.push_back(code);
        return S_OK;
    }
    std::vector<short> m_codes;
};

TEST(BusChannel, DeadlockFreesBothSides)
{
    // Stands for a kernel that answers before it has read the whole message.
    const auto kernel = CComObject<CErrorCollector, IZOScpiChannelServiceProvider>::Create();
    const auto channel = CBusChannelObject::Create(BusSettings{.inputBuffer = 16, .outputBuffer = 4});
    channel->Open();
    channel->SetServiceProvider(kernel);
    HRESULT sent = E_FAIL;
    std::thread controller([&] { sent = channel->Send(std::string(100, 'x')); });
    unsigned char data[] = "an answer";
    unsigned long count = 0;
    EXPECT_TRUE(Eventually([&] { return channel->Read(1, data, &count) == S_OK && count == 1; }));
    EXPECT_EQ(channel->Write(sizeof data, data, &count), E_ABORT);
    EXPECT_EQ(channel->ProgramMessageEnd(), S_OK);
    unsigned long total = 1;
    EXPECT_TRUE(Eventually([&] {
        channel->Read(sizeof data, data, &count);
        return (total += count) == 101;
    })) << "the message and the line feed of its END";
    controller.join();
    EXPECT_EQ(sent, S_OK);
    EXPECT_EQ(kernel->m_codes, std::vector<short>{-430});
    channel->SetServiceProvider(nullptr);
}

} // namespace

} // namespace ZoVelkor::Transports::Testing
