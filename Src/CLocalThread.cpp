#include "CLocalThread.h"

#include "CComponentShellThreadPool.h"
#include "GuardedEntry.h"
#include "IZOScpiParserManagement.h"
#include "IZOScpiRemoteControl.h"
#include "KernelServices.h"
#include "Marshal.h"

namespace ZoVelkor
{
namespace
{

// The helpers of the manager report under its name.
ZO_SOURCE_UNIT("Src/CSwplScpiManager");

/// Takes the service out of the stream, which is empty afterwards.
template <class T>
CComPtr<T> Unmarshal(CComPtr<IStream>& stream, const char* condition)
{
    void* found = nullptr;
    RequireOk(
        kSourceUnit, CoGetInterfaceAndReleaseStream(stream.Detach(), T::kInterfaceId, &found), condition);
    CComPtr<T> spI;
    spI.Attach(static_cast<T*>(found));
    return spI;
}

/// Nobody waits for the result of a request on a thread, so a refusal, as under local lockout, is reported.
void ReportRefusal(HRESULT result, const char* condition)
{
    if (FAILED(result))
    {
        RepairError(ZO_REPORT(tagErrorSeverity::Warning,
                              nullptr,
                              condition,
                              "The request to the remote kernel failed",
                              result));
    }
}

} // namespace

CLocalThread::CLocalThread(IZOScpiParserManagement* pIZOScpiParserManagement, tagParserRequest request)
    : m_start(request == tagParserRequest::Start),
      m_stop(request == tagParserRequest::Stop)
{
    RequireOk(kSourceUnit,
              CoMarshalInterThreadInterfaceInStream(
                  IID_IZOScpiParserManagement, pIZOScpiParserManagement, &m_pStreamSink),
              "CoMarshalInterThreadInterfaceInStream( IID_IZOScpiParserManagement, "
              "pIZOScpiParserManagement, &m_pStreamSink) == S_OK");
}

CLocalThread::CLocalThread(IZOScpiRemoteControl* pIZOScpiRemoteControl) : m_returnToLocal(true)
{
    RequireOk(kSourceUnit,
              CoMarshalInterThreadInterfaceInStream(
                  IID_IZOScpiRemoteControl, pIZOScpiRemoteControl, &m_pStreamSink),
              "CoMarshalInterThreadInterfaceInStream( IID_IZOScpiRemoteControl, "
              "pIZOScpiRemoteControl, &m_pStreamSink) == S_OK");
}

void CLocalThread::StartOnPoolThread(std::unique_ptr<CLocalThread> localThread)
{
    CThread* const pThread = GetComponentShellThreadPool().GetThread("SwplScpiManagerThread");
    Require(kSourceUnit, pThread != nullptr, "pThread != NULL", "could not get thread for goto local thread");
    RequireOk(kSourceUnit, pThread->Start(localThread.get()), "pThread->Start( pLocalThread ) == S_OK");
    // It may be gone already: from here on it deletes itself.
    static_cast<void>(localThread.release());
}

void CLocalThread::Run()
{
    // What is raised has been reported, and nobody waits for a result.
    static_cast<void>(GuardedEntry([this] {
        CarryOut();
        return S_OK;
    }));
    // The thread would look at the object once more after Run.
    DetachFromThread();
    delete this;
}

void CLocalThread::CarryOut()
{
    if (m_returnToLocal)
    {
        AskRemoteControl();
    }
    else
    {
        AskParserManagement();
    }
}

void CLocalThread::AskParserManagement()
{
    const auto spI = Unmarshal<IZOScpiParserManagement>(
        m_pStreamSink,
        "CoGetInterfaceAndReleaseStream (m_pStreamSink, IID_IZOScpiParserManagement, (void**)&spI) == S_OK");
    if (m_start)
    {
        ReportRefusal(spI->StartParser(), "SUCCEEDED( spI->StartParser() )");
    }
    if (m_stop)
    {
        ReportRefusal(spI->StopParser(), "SUCCEEDED( spI->StopParser() )");
    }
}

void CLocalThread::AskRemoteControl()
{
    const auto spI = Unmarshal<IZOScpiRemoteControl>(
        m_pStreamSink,
        "CoGetInterfaceAndReleaseStream (m_pStreamSink, IID_IZOScpiRemoteControl, (void**)&spI) == S_OK");
    ReportRefusal(spI->GotoLocal(), "SUCCEEDED( spI->GotoLocal() )");
}

} // namespace ZoVelkor
