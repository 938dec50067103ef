#pragma once

#include "CBScpiController.h"
#include "CComBSTR.h"
#include "ExecutionFakes.h"
#include "ZoString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ZoVelkor
{

constexpr HRESULT kRefusal = E_ACCESSDENIED;

enum class tagAnswer
{
    Now,
    OtherThread,
    Error,
    ErrorAndDone,
    Aborted,
    Everything,
    Late,
    Never,
    Refused,
    Throw
};

template <class... TParts>
std::string Line(const TParts&... parts)
{
    std::ostringstream line;
    ((line << parts << ' '), ...);
    return line.str();
}

/// A transport that answers as its script says and writes down what it was asked.
class CScriptedController : public CFake<CBScpiController>
{
public:
    explicit CScriptedController(std::vector<tagAnswer> answers = {tagAnswer::Now})
        : script(std::move(answers))
    {
        EXPECT_EQ(put_Timeout(script.back() == tagAnswer::Now ? -1 : 1), S_OK);
        log.clear();
    }

    HRESULT DoTrigger() override
    {
        return Answer("Trigger ", [this] { DoAcknowledgeTrigger(); });
    }
    HRESULT DoClear() override
    {
        return Answer("Clear ", [this] { DoAcknowledgeClear(); });
    }
    HRESULT DoLocal() override
    {
        return Answer("Local ", [this] { DoAcknowledgeLocal(); });
    }
    HRESULT DoRemote() override
    {
        return Answer("Remote ", [this] { DoAcknowledgeRemote(); });
    }
    HRESULT DoReadStatusByte() override
    {
        return Answer("Poll ", [this] { DoAcknowledgeStatus('\xC1'); });
    }
    HRESULT DoLocalLockout(short on) override
    {
        return Answer(Line("Lockout", on), [this] { DoAcknowledgeLocalLockout(); });
    }
    HRESULT DoRead(bool first, bool counted, long count) override
    {
        const long length = counted ? std::min(count, std::ssize(incoming)) : std::ssize(incoming);
        const bool end = endsIncoming && length == std::ssize(incoming);
        return Answer(Line("Read", first, counted, count),
                      [=, this] { DoAcknowledgeRead(end, true, length + excess); });
    }
    HRESULT DoWrite(unsigned char* data, long length, bool end) override
    {
        const std::string text(data, data + length);
        outgoing += text;
        return Answer(Line("Write", length < 100 ? text : "", length, end), [this] { DoAcknowledgeWrite(); });
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
    HRESULT DoFetchString(wchar_t** text) override
    {
        *text = A2WBSTR(incoming.c_str());
        return fetchResult;
    }
    HRESULT CheckProtocolError() override
    {
        if (!isQuiet)
        {
            log += "check ";
        }
        return E_FAIL; // without effect
    }
    HRESULT DoEnableInterrupt() override { return log += "enable ", S_FALSE; }
    HRESULT DoDisableInterrupt() override { return log += "disable ", E_FAIL; }

    std::string LastError()
    {
        CComBSTR text;
        EXPECT_EQ(GetLastError(&text), S_OK);
        short failed = 7;
        EXPECT_EQ(get_OperationFailed(&failed), S_OK);
        EXPECT_EQ(failed, text == "No error" ? VARIANT_FALSE : VARIANT_TRUE);
        return CZoString(text).ToStdString();
    }

    template <class TOperation>
    static std::size_t Slot(TOperation operation)
    {
        // Pointers to virtual members carry the offset of the slot plus 1.
        return std::bit_cast<std::array<std::size_t, 2>>(operation)[0] / sizeof(void*);
    }

    std::vector<tagAnswer> script; ///< one answer a request; the last one stays
    std::string log;
    bool isQuiet = false; ///< leaves the checks, which Abort makes too, out of the log
    std::string incoming;
    bool endsIncoming = true; ///< END comes with the last byte of incoming
    long excess = 0;          ///< acknowledged beyond what is there
    long fetchExcess = 0;
    HRESULT fetchResult = S_OK;
    std::string outgoing;
    std::function<void()> late;
    std::function<void()> onRequest = [] {};

private:
    HRESULT Answer(const std::string& request, std::function<void()> acknowledge)
    {
        log += request;
        onRequest();
        const tagAnswer answer = script.front();
        if (script.size() > 1)
        {
            script.erase(script.begin());
        }
        switch (answer)
        {
        case tagAnswer::Now:
            acknowledge();
            break;
        case tagAnswer::OtherThread:
            m_spThread = std::make_shared<std::jthread>(acknowledge);
            break;
        case tagAnswer::Error:
            m_spThread = std::make_shared<std::jthread>([this] { DoAcknowledgeError(); });
            break;
        case tagAnswer::ErrorAndDone:
            acknowledge();
            DoAcknowledgeError();
            break;
        case tagAnswer::Aborted:
            isQuiet = true;
            m_spThread = std::make_shared<std::jthread>([this] { Abort(); });
            break;
        case tagAnswer::Everything:
            acknowledge();
            DoAcknowledgeError();
            isQuiet = true;
            Abort();
            break;
        case tagAnswer::Late:
            late = acknowledge;
            break;
        case tagAnswer::Never:
            break;
        case tagAnswer::Refused:
            return kRefusal;
        case tagAnswer::Throw:
            throw std::runtime_error("transport broke");
        }
        return S_OK;
    }

    std::shared_ptr<std::jthread> m_spThread;
};

/// Runs an operation and gives the error it raises, whose source is checked.
template <class TBody>
std::optional<tagErrorReport> Raised(TBody body)
{
    try
    {
        body();
    }
    catch (const CShellError& error)
    {
        EXPECT_STREQ(error.Report().sourceUnit, "Interfaces/_Src/CBScpiController");
        return error.Report();
    }
    return std::nullopt;
}

inline void
ExpectRaised(const std::function<void()>& body, const char* message, const char* condition, HRESULT result)
{
    const std::optional<tagErrorReport> report = Raised(body);
    ASSERT_TRUE(report) << message;
    EXPECT_EQ(report->message, message);
    EXPECT_STREQ(report->condition, condition);
    EXPECT_EQ(report->result, result) << message;
}

inline std::ptrdiff_t OpenDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

struct CControllerTest : testing::Test
{
    CErrorRecorder errors;
    std::ptrdiff_t descriptors = OpenDescriptors();
    std::string directory = testing::TempDir() + "controller." + std::to_string(::getpid());
    CComBSTR file{(directory + "/file").c_str()};
    short end = 7;
    long length = 77;

    CControllerTest() { std::filesystem::create_directory(directory); }
    ~CControllerTest() override
    {
        std::filesystem::remove_all(directory);
        EXPECT_EQ(OpenDescriptors(), descriptors);
    }
};

} // namespace ZoVelkor
