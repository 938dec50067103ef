#pragma once

#include "CComPtr.h"
#include "CThreadRunObject.h"
#include "Stream.h"
#include "ZoExport.h"

#include <memory>

namespace ZoVelkor
{

struct IZOScpiParserManagement;
struct IZOScpiRemoteControl;

/// One request to the remote kernel that is carried out on a pool thread named "SwplScpiManagerThread".
///
/// Several requests may be on their way; each has a thread of its own, so their order is open.
/// Ownership: made with new; Run deletes the object. Until then it keeps the service alive. Threads: made by
/// one thread, run by another.
class ZO_EXPORT CLocalThread final : public CThreadRunObject
{
public:
    /// What can be asked of parser management.
    enum class tagParserRequest
    {
        Start,
        Stop
    };

    /// @param pIZOScpiParserManagement  packed for the other thread
    /// @throws CShellError when the service cannot be packed
    CLocalThread(IZOScpiParserManagement* pIZOScpiParserManagement, tagParserRequest request);
    /// A request to return to local.
    explicit CLocalThread(IZOScpiRemoteControl* pIZOScpiRemoteControl);

    /// Hands a request to a thread of the component shell's pool and does not wait.
    ///
    /// @throws CShellError when there is no thread or it does not start; the request is then deleted
    static void StartOnPoolThread(std::unique_ptr<CLocalThread> localThread);

    /// Carries the request out, lets go of the thread and deletes the object. Failures are reported.
    void Run() override;

    /// Does nothing: the request is short and cannot be called back.
    void Abort() override {}

private:
    void CarryOut();
    void AskParserManagement();
    void AskRemoteControl();

    // Exactly one is set.
    bool m_start = false;
    bool m_stop = false;
    bool m_returnToLocal = false;
    CComPtr<IStream> m_pStreamSink;
};

} // namespace ZoVelkor
