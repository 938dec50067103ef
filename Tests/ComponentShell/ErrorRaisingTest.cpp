#include "CErrorRecorder.h"
#include "GuardedEntry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

namespace ZoVelkor
{
namespace
{
ZO_SOURCE_UNIT("Tests/ComponentShell/ErrorRaisingTest");

TEST(ErrorRaising, ThrowErrorCarriesTheWholeReportToSinkAndCatcher)
{
    CErrorRecorder recorder;
    auto thing = std::make_unique<CObjectDataReference>();
    thing->SetObjectName("Channel");
    std::string expected = "Tests/ComponentShell/ErrorRaisingTest(" + std::to_string(__LINE__ + 6);
    expected +=
        "): fatal error thrown: No answer [condition: hr == S_OK] [result: 0x80000007] [object: Channel#";
    expected += std::to_string(thing->ObjectNumber()) + "] [built: " + kSourceUnit.buildStamp + "]";
    try
    {
        ThrowError(ZO_REPORT(tagErrorSeverity::Fatal, thing.get(), "hr == S_OK", "No answer", E_ABORT));
    }
    catch (const CShellError& error)
    {
        const auto entries = recorder.Take();
        ASSERT_EQ(entries.size(), 1U);
        EXPECT_EQ(FormatErrorReport(entries[0].report, entries[0].thrown), expected);
        EXPECT_EQ(FormatErrorReport(error.Report(), true), expected);
        thing.reset();
        EXPECT_EQ(error.what(), expected) << "the text does not need the object";
        return;
    }
    FAIL() << "nothing was thrown";
}

TEST(ErrorRaising, NullPointerReportHasTheFixedText)
{
    const tagErrorReport report = ZO_NULL_POINTER(nullptr, "ppBlockData");
    EXPECT_EQ(report.line, __LINE__ - 1);
    EXPECT_EQ(report.message, "Null pointer detected (ppBlockData)");
    EXPECT_STREQ(report.condition, "ppBlockData != NULL");
    EXPECT_EQ(report.result, E_POINTER);
}

TEST(ErrorRaising, DefaultSinkWritesOneLineWhateverTheMessageHolds)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(
        RepairError(
            {"a == b", "Src/X", "now", 7, tagErrorSeverity::Warning, nullptr, "two\nlines\x7F", E_FAIL}),
        E_FAIL);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[ComponentShell] Src/X(7): warning repaired: two?lines? [condition: a == b] "
              "[result: 0x80000008] [built: now]\n");
}

class CSlowSink final : public IErrorSink
{
public:
    void Report(const tagErrorReport&, bool) noexcept override
    {
        ++m_entered;
        std::this_thread::yield();
        ++m_left;
    }

    std::atomic<int> m_entered{0};
    std::atomic<int> m_left{0};
};

TEST(ErrorSink, NobodyIsInsideASinkThatWasReplaced)
{
    CErrorRecorder recorder;
    std::jthread reporter([](const std::stop_token& stop) {
        while (!stop.stop_requested())
        {
            RepairError({});
        }
    });
    for (int n = 0; n < 200; ++n)
    {
        CSlowSink sink;
        EXPECT_EQ(SetErrorSink(&sink), &recorder);
        while (sink.m_entered == 0)
        {
            std::this_thread::yield();
        }
        EXPECT_EQ(SetErrorSink(&recorder), &sink);
        EXPECT_EQ(sink.m_entered, sink.m_left);
    }
}

HRESULT Raise(HRESULT result)
{
    ThrowError(ZO_ERROR(nullptr, "false", "Raised", result));
}

const struct
{
    const char* name;
    HRESULT (*body)();
    HRESULT expected;
    std::size_t reports;
} kEntryCases[] = {
    {"ResultPasses", []() -> HRESULT { return S_FALSE; }, S_FALSE, 0},
    {"ShellErrorGivesItsResult", [] { return Raise(E_ABORT); }, E_ABORT, 1},
    {"ShellErrorNeverBecomesSuccess", [] { return Raise(S_OK); }, E_FAIL, 1},
    {"NoMemory", []() -> HRESULT { throw std::bad_alloc(); }, E_OUTOFMEMORY, 1},
    {"StandardException", []() -> HRESULT { throw std::logic_error("x"); }, E_FAIL, 1},
    {"AnythingElse", []() -> HRESULT { throw 1; }, E_FAIL, 1},
};

TEST(GuardedEntry, MapsEveryOutcomeToAResultReportedOnce)
{
    for (const auto& row : kEntryCases)
    {
        SCOPED_TRACE(row.name);
        CErrorRecorder recorder;
        EXPECT_EQ(GuardedEntry(row.body), row.expected);
        EXPECT_EQ(recorder.Take().size(), row.reports);
    }
}

TEST(GuardedEntry, RaisingFormLetsTheShellErrorAloneOut)
{
    CErrorRecorder recorder;
    EXPECT_THROW(static_cast<void>(GuardedRaisingEntry([] { return Raise(E_ABORT); })), CShellError);
    EXPECT_EQ(GuardedRaisingEntry([]() -> HRESULT { throw 1; }), E_FAIL);
}

TEST(ObjectDataReference, HasANameANumberAndReportsItsProperties)
{
    CErrorRecorder recorder;
    CObjectDataReference thing;
    EXPECT_EQ(thing.ObjectName(), "ZoVelkor::CObjectDataReference") << "named after its class at first";
    thing.SetObjectName("Register");
    CObjectDataReference copy(thing);
    EXPECT_EQ(copy.ObjectName(), "Register");
    EXPECT_NE(copy.ObjectNumber(), thing.ObjectNumber());
    thing.PropertyError(nullptr, "wrong");
    copy.PropertyWarning(nullptr, "doubtful");
    const auto entries = recorder.Take();
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].report.severity, tagErrorSeverity::Error);
    EXPECT_EQ(entries[1].report.severity, tagErrorSeverity::Warning);
    EXPECT_FALSE(entries[0].thrown || entries[1].thrown);
}
} // namespace
} // namespace ZoVelkor
