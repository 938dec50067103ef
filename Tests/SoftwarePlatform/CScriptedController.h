#pragma once

#include "CBScpiController.h"
#include "ExecutionFakes.h"
#include "ZoString.h"

#include <bit>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <unistd.h>

// clang-format off
namespace ZoVelkor
{

/// What a scripted transport does with a request; 0: nothing, ever.
enum : unsigned
{
    kDone = 1, kError = 2, kAborted = 4, kRefused = 32, kThrow = 64,
    kFromThread = 8, ///< what the lower bits say, from another thread
    kLate = 16       ///< what the lower bits say, when the test calls `late`
};
constexpr HRESULT kRefusal = E_ACCESSDENIED;

/// A transport that answers as its script says and writes down what it was asked.
class CScriptedController : public CFake<CBScpiController>
{
public:
    explicit CScriptedController(std::vector<unsigned> answers = {kDone}) : script(std::move(answers))
    {
        put_Timeout((script.back() & 7U) == 0 || (script.back() & kLate) != 0 ? 1 : -1);
        log.clear();
    }

    HRESULT DoTrigger() override { return Answer("Trigger ", [this] { DoAcknowledgeTrigger(); }); }
    HRESULT DoClear() override { return Answer("Clear ", [this] { DoAcknowledgeClear(); }); }
    HRESULT DoLocal() override { return Answer("Local ", [this] { DoAcknowledgeLocal(); }); }
    HRESULT DoRemote() override { return Answer("Remote ", [this] { DoAcknowledgeRemote(); }); }
    HRESULT DoReadStatusByte() override { return Answer("Poll ", [this] { DoAcknowledgeStatus('\xC1'); }); }
    HRESULT DoLocalLockout(short on) override { return Answer(Line("Lockout", on), [this] { DoAcknowledgeLocalLockout(); }); }
    HRESULT DoRead(bool first, bool counted, long count) override
    {
        const long length = counted ? std::min(count, std::ssize(incoming)) : std::ssize(incoming);
        const bool end = endsIncoming && length == std::ssize(incoming);
        return Answer(Line("Read", first, counted, count), [=, this] { DoAcknowledgeRead(end, true, length + excess); });
    }
    HRESULT DoWrite(unsigned char* data, long length, bool end) override
    {
        outgoing.append(data, data + length);
        const std::string shown(data, data + (length == 1 || length > 99 ? 0 : length));
        return Answer(Line("Write", shown, length, end), [this] { DoAcknowledgeWrite(); });
    }
    short DoGetRemoteState() override { return 7; }
    short DoGetLocalLockoutState() override { return 8; }
    HRESULT DoFetchData(unsigned char* buffer, long* length) override
    {
        std::copy_n(incoming.begin(), *length, buffer);
        incoming.erase(0, static_cast<std::size_t>(*length));
        *length += fetchExcess;
        return fetchResult;
    }
    HRESULT DoFetchString(wchar_t** text) override { return *text = A2WBSTR(incoming.c_str()), fetchResult; }
    HRESULT CheckProtocolError() override { return isQuiet ? E_FAIL : (log += "check ", E_FAIL); }
    HRESULT DoEnableInterrupt() override { return log += "enable ", S_FALSE; }
    HRESULT DoDisableInterrupt() override { return log += "disable ", E_FAIL; }

    std::string LastError()
    {
        CComBSTR text;
        short failed = 7;
        EXPECT_EQ(GetLastError(&text) | get_OperationFailed(&failed), S_OK);
        EXPECT_EQ(failed, text == "No error" ? VARIANT_FALSE : VARIANT_TRUE);
        return CZoString(text).ToStdString();
    }
    template <class... TParts>
    static std::string Line(const TParts&... parts)
    {
        std::ostringstream line;
        ((line << parts << ' '), ...);
        return line.str();
    }

    std::vector<unsigned> script; ///< one answer a request; the last one stays
    std::string log;
    bool isQuiet = false; ///< leaves the checks, which Abort makes too, out of the log
    std::string incoming, outgoing;
    bool endsIncoming = true;         ///< END comes with the last byte of incoming
    long excess = 0, fetchExcess = 0; ///< acknowledged and fetched beyond what is there
    HRESULT fetchResult = S_OK;
    std::function<void()> late, onRequest = [] {};

private:
    HRESULT Answer(const std::string& request, const std::function<void()>& acknowledge)
    {
        log += request;
        onRequest();
        const unsigned answer = script.front();
        if (script.size() > 1) { script.erase(script.begin()); }
        if ((answer & kThrow) != 0) { throw std::runtime_error("transport broke"); }
        isQuiet = isQuiet || (answer & kAborted) != 0;
        const std::function<void()> act = [=, this] {
            if ((answer & kDone) != 0) { acknowledge(); }
            if ((answer & kError) != 0) { DoAcknowledgeError(); }
            if ((answer & kAborted) != 0) { Abort(); }
        };
        if ((answer & kLate) != 0) { late = act; }
        else if ((answer & kFromThread) != 0) { m_thread = std::make_shared<std::jthread>(act); }
        else { act(); }
        return (answer & kRefused) != 0 ? kRefusal : S_OK;
    }

    std::shared_ptr<std::jthread> m_thread;
};

/// Condition, message and result of the error that an operation raises; empty when it raises none.
inline std::string Raised(const std::function<void()>& body)
try
{
    return body(), "";
}
catch (const CShellError& error)
{
    EXPECT_STREQ(error.Report().sourceUnit, "Interfaces/_Src/CBScpiController");
    return CScriptedController::Line(error.Report().condition, error.Report().message, error.Report().result);
}

inline auto OpenDescriptors() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }

struct CControllerTest : testing::Test
{
    CControllerTest() { std::filesystem::create_directory(directory); }
    ~CControllerTest() override
    {
        std::filesystem::remove_all(directory);
        EXPECT_EQ(OpenDescriptors(), descriptors);
    }

    CErrorRecorder errors;
    const std::ptrdiff_t descriptors = OpenDescriptors();
    const std::string directory = testing::TempDir() + "controller." + std::to_string(::getpid()), path = directory + "/file";
    const CComBSTR file{path.c_str()};
    short end = 7;
    long length = 77;
};

} // namespace ZoVelkor
// clang-format on
