#include "CBScpiDeviceHandler.h"
#include "CBScpiEmulationCallback.h"
#include "CBScpiExecutionSink.h"
#include "CBScpiMultichannelEventObserver.h"
#include "CBScpiMultichannelParser.h"
#include "CComObject.h"
#include "ExecutionFakes.h"
#include "VirtualSlots.h"

#include <cstddef>
#include <utility>

namespace ZoVelkor
{
namespace
{

TEST(SinkComponents, DefaultsSucceedAndPassCalibrationAndSelfTest)
{
    const auto sink = CComObject<CBScpiExecutionSink, IZOScpiExecutionSink>::Create();
    EXPECT_EQ(sink->Execute(nullptr, 0, 1, 0, nullptr, 0, nullptr, nullptr, nullptr), S_OK);

    const auto callback = CComObject<CBScpiEmulationCallback, IZOScpiEmulationCallback>::Create();
    EXPECT_EQ(callback->MapEsrToStb(1, 2), E_NOTIMPL);
    EXPECT_EQ(callback->ProgramMessageEnd(), S_OK);

    const auto handler = CComObject<CBScpiDeviceHandler, IZOScpiDeviceHandler>::Create();
    long result = 99;
    short passed = 0;
    wchar_t text[] = L"old";
    wchar_t* options = text;
    wchar_t* level = text;
    EXPECT_EQ(handler->Calibrate(&result), S_OK);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(handler->Selftest(&passed), S_OK);
    EXPECT_EQ(passed, -1);
    EXPECT_EQ(handler->GetDeviceOptions(&options), S_OK);
    EXPECT_EQ(options, nullptr);
    EXPECT_EQ(handler->GetFirmwareLevel(&level), S_OK);
    EXPECT_EQ(level, nullptr);
    EXPECT_EQ(handler->Calibrate(nullptr), S_OK);
    EXPECT_EQ(handler->GetFirmwareLevel(nullptr), S_OK);
}

/// Notes each notification; answers with a result of its own.
class CNotingObserver : public CBScpiMultichannelEventObserver
{
public:
    std::string m_seen;
    bool m_throws = false;

private:
    HRESULT Note(const char* name, long path, long more = 0)
    {
        m_seen += name + std::to_string(path) + "," + std::to_string(more) + ";";
        return m_throws ? throw std::bad_alloc() : E_PENDING;
    }
    HRESULT DoGotoLocal(long path) override { return Note("Local", path); }
    HRESULT DoGotoRemote(long path) override { return Note("Remote", path); }
    HRESULT DoDeviceClear(long path) override { return Note("Clear", path); }
    HRESULT DoTrigger(long path) override { return Note("Trigger", path); }
    HRESULT DoReset(long path) override { return Note("Reset", path); }
    HRESULT DoSystemPreset(long path) override { return Note("Preset", path); }
    HRESULT DoProgramMessageBegin(long path) override { return Note("Begin", path); }
    HRESULT DoConnectionAccepted(wchar_t* name, long path) override { return Note("Accepted", path, *name); }
    HRESULT DoConnectionBroken(wchar_t* name, long path) override { return Note("Broken", path, *name); }
    HRESULT DoLocalLockout(short on, long path) override { return Note("Lockout", path, on); }
    HRESULT DoProgramMessageEnd(short aborted, long path) override { return Note("End", path, aborted); }
    HRESULT DoOpcReset(long path, unsigned long n, GUID* ids) override
    {
        return Note("Opc", path, ids[n].Data2);
    }
};

/// Sends every notification and expects the same result from each.
void NotifyAll(IZOScpiMultichannelEventObserver& observer, HRESULT expected)
{
    wchar_t name[] = L"n";
    GUID ids[2] = {{}, {0, 9, 0, {}}};
    EXPECT_EQ(observer.ConnectionAccepted(name, 1), expected);
    EXPECT_EQ(observer.ConnectionBroken(name, 2), expected);
    EXPECT_EQ(observer.GotoLocal(3), expected);
    EXPECT_EQ(observer.GotoRemote(4), expected);
    EXPECT_EQ(observer.LocalLockout(1, 5), expected);
    EXPECT_EQ(observer.DeviceClear(6), expected);
    EXPECT_EQ(observer.Trigger(7), expected);
    EXPECT_EQ(observer.Reset(8), expected);
    EXPECT_EQ(observer.SystemPreset(9), expected);
    EXPECT_EQ(observer.ProgramMessageBegin(10), expected);
    EXPECT_EQ(observer.ProgramMessageEnd(0, 11), expected);
    EXPECT_EQ(observer.OpcReset(12, 1, ids), expected);
}

TEST(SinkComponents, ObserverForwardsEachNotificationAndCarriesItsIdentity)
{
    NotifyAll(*CComObject<CBScpiMultichannelEventObserver, IZOScpiMultichannelEventObserver>::Create(), S_OK);
    const auto observer = CComObject<CNotingObserver, IZOScpiMultichannelEventObserver>::Create();
    NotifyAll(*observer, E_PENDING);
    EXPECT_EQ(observer->m_seen,
              "Accepted1,110;Broken2,110;Local3,0;Remote4,0;Lockout5,1;Clear6,0;Trigger7,0;"
              "Reset8,0;Preset9,0;Begin10,0;End11,0;Opc12,9;");

    const CErrorRecorder recorder;
    observer->m_throws = true;
    NotifyAll(*observer, E_OUTOFMEMORY);

    const GUID id{1, 2, 3, {4}};
    GUID got{};
    EXPECT_EQ(observer->put_EventClientId(id), S_OK);
    EXPECT_EQ(observer->get_EventClientId(&got), S_OK);
    EXPECT_TRUE(got == id);
}

class CCloningParser : public CBScpiMultichannelParser
{
public:
    static auto Slots()
    {
        return VirtualSlots(&CCloningParser::DoCreateClone, &CCloningParser::DoReleaseClone);
    }

    IUnknown* m_released = nullptr;

private:
    HRESULT DoCreateClone(IUnknown** ppParserEngine) override
    {
        *ppParserEngine = this;
        AddRef();
        return S_FALSE;
    }
    HRESULT DoReleaseClone(IUnknown* pParserEngine) override
    {
        m_released = pParserEngine;
        return S_FALSE;
    }
};

TEST(SinkComponents, MultichannelParserChecksAndForwards)
{
    const auto parser = CComObject<CCloningParser, IZOScpiMultichannelParser>::Create();
    CComPtr<IUnknown> engine;
    EXPECT_EQ(parser->CreateClone(&engine), S_FALSE);
    EXPECT_NE(engine.Get(), nullptr);
    EXPECT_EQ(parser->ReleaseClone(engine), S_FALSE);
    EXPECT_EQ(parser->m_released, engine.Get());
    EXPECT_EQ(CCloningParser::Slots(), (std::vector<std::size_t>{5, 6})) << "behind the interface";

    CErrorRecorder recorder;
    EXPECT_THROW(static_cast<void>(parser->CreateClone(nullptr)), CShellError);
    EXPECT_THROW(static_cast<void>(parser->ReleaseClone(nullptr)), CShellError);
    const auto entries = recorder.Take();
    EXPECT_EQ(Lines(entries),
              "ppParserEngine != NULL|Null pointer detected (ppParserEngine)|thrown\n"
              "pParserEngine != NULL|Null pointer detected (pParserEngine)|thrown\n");
    EXPECT_NE(entries.back().report.object, nullptr);
    EXPECT_EQ(entries.back().report.result, E_POINTER);
}

} // namespace
} // namespace ZoVelkor
