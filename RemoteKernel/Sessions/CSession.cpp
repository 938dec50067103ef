#include "CSession.h"

#include "BuiltIn/CBuiltInCommands.h"
#include "CPathErrorManagement.h"
#include "CPathStatusManagement.h"
#include "CRemoteKernel.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

namespace
{

/// Room for the first bytes of a large block; a receive is never offered less of one.
constexpr std::size_t kFirstBlockStep = std::size_t{64} << 10;

std::string_view FrameErrorDetail(short error) noexcept
{
    return error == kScpiInputBufferOverrun ? "Program message too long" : "Block too long";
}

/// @return whether it was not there yet
bool AddOnce(std::vector<CApplication*>& list, CApplication* pApplication)
{
    const bool bNew = std::find(list.begin(), list.end(), pApplication) == list.end();
    if (bNew)
    {
        list.push_back(pApplication);
    }
    return bNew;
}

std::shared_ptr<CRemotePath> OpenPath(CPathTable& paths)
{
    std::shared_ptr<CRemotePath> spPath = paths.Open();
    if (spPath == nullptr)
    {
        throw std::system_error(EMFILE, std::generic_category(), "All remote paths are taken");
    }
    return spPath;
}

/// The context of the path's commands: services that reach this path alone.
CComPtr<CComObject<CRemotePathServices, IZOScpiManager>>
MakeServices(const std::shared_ptr<CRemotePath>& spPath,
             const tagKernelParts& parts,
             const CComPtr<CComObject<CFormatSubsystem, IZOScpiSubsystemFormat>>& spFormat)
{
    using CErrors = CComObject<CPathErrorManagement, IZOScpiErrorManagement>;
    using CStatus = CComObject<CPathStatusManagement, IZOScpiStatusManagement>;
    return CComObject<CRemotePathServices, IZOScpiManager>::Create(spPath->Number(),
                                                                   CErrors::Create(spPath, parts.spErrors),
                                                                   CStatus::Create(spPath, parts.spStatus),
                                                                   spFormat,
                                                                   parts.spOperations);
}

} // namespace

CSession::CSession(CRemoteKernel& kernel,
                   const tagSessionLimits& limits,
                   const tagSessionTransport& transport)
    : m_kernel(kernel),
      m_spOutput(CSessionOutput::Create(limits.iMaxResponse)),
      m_spFormat(CComObject<CFormatSubsystem, IZOScpiSubsystemFormat>::Create(m_spOutput)),
      m_spBreakEvent(MakeSharedEvent("No event for a session")),
      m_spStatus(std::make_shared<CSessionStatus>(m_spBreakEvent)),
      m_spErrors(std::make_shared<CErrorQueue>(limits.iErrorQueueDepth, m_spStatus)),
      m_spPath(OpenPath(*kernel.m_parts.spPaths)),
      m_spServices(MakeServices(m_spPath, kernel.m_parts, m_spFormat)),
      m_pContext(static_cast<IZOScpiManager*>(m_spServices)),
      m_spBuiltIns(std::make_unique<CBuiltInCommands>(tagBuiltInContext{*m_spOutput,
                                                                        *m_spFormat,
                                                                        *m_spErrors,
                                                                        *kernel.m_parts.spOperations,
                                                                        *m_spStatus,
                                                                        *kernel.m_parts.spStatus,
                                                                        *kernel.m_parts.spEvents,
                                                                        m_spApplications,
                                                                        m_spPath->Number(),
                                                                        m_spBreakEvent->Get(),
                                                                        transport.iConnection})),
      m_framer(limits.message, transport.pSource != nullptr),
      m_stream(
          m_input, transport.pSource, GetEventDescriptor(m_spBreakEvent->Get()), *this, limits.iBlockPauseMs),
      m_bStreams(transport.pSource != nullptr)
{
    AddPath(transport);
}

void CSession::AddPath(const tagSessionTransport& transport)
{
    const long path = m_spPath->Number();
    try
    {
        if (!m_kernel.m_parts.spOperations->AddPath(path))
        {
            throw std::system_error(EMFILE, std::generic_category(), "No event for a session");
        }
        m_kernel.m_parts.spErrors->AddPath(path, m_spErrors);
        m_kernel.m_parts.spStatus->AddPath(path, m_spStatus);
        m_kernel.m_parts.spFormat->CopySettingsTo(*m_spFormat);
        m_spPath->SetFormat(CComPtr<IZOScpiSubsystemFormat>(m_spFormat));
        if (transport.pChannel != nullptr)
        {
            m_spPath->AttachChannel(transport.pChannel);
            SetServiceRequestObserver(m_spPath.get());
        }
        m_spStatus->Enable(m_kernel.m_parts.spStatus->PowerOnMasks());
        m_kernel.AddSession(*this);
        m_spPath->Publish();
    }
    catch (...)
    {
        RemovePath();
        throw;
    }
}

CSession::~CSession()
{
    Cancel();
    RemovePath();
    m_kernel.RemoveSession(*this); // last: the kernel may go then
}

void CSession::RemovePath() noexcept
{
    const long path = m_spPath->Number();
    SetServiceRequestObserver(nullptr);
    m_kernel.m_parts.spErrors->RemovePath(path);
    m_kernel.m_parts.spOperations->RemovePath(path);
    m_kernel.m_parts.spStatus->RemovePath(path);
    m_kernel.m_parts.spRegistry->ReleaseEngines(path);
    m_kernel.m_parts.spGate->Start(path);
    // Last: from here on the number may stand for another path.
    m_kernel.m_parts.spPaths->Close(*m_spPath);
}

void CSession::Break(int reason) noexcept
{
    const bool bDeviceClear = reason == kBreakForDeviceClear && m_spPath->DeviceClearEvent() != nullptr;
    {
        const std::lock_guard lock(m_breakMutex);
        m_break.store(std::max(m_break.load(), reason));
        m_breakNext = std::max(m_breakNext, reason);
        m_spOutput->Cancel();
        SetEvent(m_spBreakEvent->Get());
        if (bDeviceClear)
        {
            SetEvent(m_spPath->DeviceClearEvent()->Get());
        }
    }
    m_kernel.m_parts.spGate->Wake();
}

void CSession::GoOn() noexcept
{
    const std::lock_guard lock(m_breakMutex);
    m_break.store(m_breakNext);
    if (m_breakNext != kRuns)
    {
        return;
    }
    m_spOutput->Resume();
    ResetEvent(m_spBreakEvent->Get());
    if (m_spPath->DeviceClearEvent() != nullptr)
    {
        ResetEvent(m_spPath->DeviceClearEvent()->Get());
    }
}

void CSession::Cancel() noexcept
{
    Break(kBreakForEver);
    if (m_spPath->ShutdownEvent() != nullptr)
    {
        SetEvent(m_spPath->ShutdownEvent()->Get());
    }
}

void CSession::FinishClear()
{
    int reason = kRuns;
    {
        const std::lock_guard lock(m_breakMutex);
        reason = m_break.load();
        m_breakNext = reason == kBreakForEver ? reason : kRuns;
    }
    m_input.Clear();
    m_framer.Reset();
    m_bInMessage = false;
    m_bytesAnnounced = 0;
    Abandon();
    m_spOutput->EndMessage();
    ClearResponse();
    ReleaseMemory();
    if (reason == kBreakForDeviceClear)
    {
        TellDeviceClear();
    }
    GoOn();
}

void CSession::TellDeviceClear()
{
    const long path = m_spPath->Number();
    if (m_kernel.m_parts.spOperations->CancelOperationComplete(path))
    {
        m_kernel.m_parts.spEvents->TellOpcReset(path);
    }
    m_kernel.m_parts.spEvents->Tell(
        path, &IZOScpiDeviceHandler::DeviceClear, &IZOScpiMultichannelEventObserver::DeviceClear);
}

void CSession::Abandon()
{
    if (m_bBegun)
    {
        TellMessageEnd();
    }
}

HRESULT CSession::Trigger()
{
    if (!m_input.IsEmpty() || m_bInMessage || m_framer.IsSkipping())
    {
        RefuseTrigger();
        if (!m_framer.IsSkipping())
        {
            m_framer.Skip(0);
        }
        return S_FALSE;
    }
    RefreshApplications();
    if (m_spPath->IsHeldLocal())
    {
        ReportError(kScpiInvalidWhileLocal, {});
        return S_FALSE;
    }
    return m_spBuiltIns->GroupExecuteTrigger() == S_OK ? S_OK : S_FALSE;
}

void CSession::RefuseTrigger()
{
    ReportError(kScpiGetNotAllowed, {});
}

std::string_view CSession::Process(std::span<char> bytes)
{
    ClearResponse();
    const bool bInPlace = m_input.IsEmpty() && !m_bStreams;
    while (bInPlace && !bytes.empty() && !IsBroken())
    {
        const tagFrame frame = m_framer.Scan(bytes);
        if (frame.eStatus == tagFrameStatus::Message)
        {
            ExecuteMessage(bytes.first(frame.iLength));
        }
        bytes = bytes.subspan(frame.iConsumed);
        if (HandleFrame(frame))
        {
            break;
        }
    }
    if (!bytes.empty() && !IsBroken())
    {
        m_input.Append(bytes.data(), bytes.size());
    }
    while (!bInPlace && ExecuteNext())
    {}
    return Response();
}

std::span<char> CSession::InputSpace()
{
    if (m_bytesAnnounced <= kMinInputSpace)
    {
        m_input.Reserve(kMinInputSpace);
    }
    else if (m_input.Space() < std::min(m_bytesAnnounced, kFirstBlockStep))
    {
        // An announcement is not believed at once: room grows with what has really arrived.
        m_input.ReserveExactly(std::min(m_bytesAnnounced, std::max(kFirstBlockStep, m_input.Size())));
    }
    return {m_input.Data() + m_input.Size(), m_input.Space()};
}

void CSession::ReleaseMemory() noexcept
{
    m_input.ReleaseMemory(kKeptInput);
    m_spOutput->ReleaseMemory();
}

bool CSession::ExecuteNext()
{
    while (!m_input.IsEmpty() && !IsBroken())
    {
        const std::span<char> bytes(m_input.Data(), m_input.Size());
        const tagFrame frame = m_framer.Scan(bytes);
        if (frame.eStatus == tagFrameStatus::Block)
        {
            ExecuteUpToBlock(frame);
            continue;
        }
        const bool bMessage = frame.eStatus == tagFrameStatus::Message;
        if (bMessage)
        {
            ExecuteMessage(bytes.first(frame.iLength));
        }
        m_input.Consume(frame.iConsumed);
        const bool bIncomplete = HandleFrame(frame);
        const bool bEnded = bMessage || frame.eStatus == tagFrameStatus::Dropped;
        if (bEnded || bIncomplete)
        {
            return bEnded;
        }
    }
    return false;
}

bool CSession::HandleFrame(const tagFrame& frame)
{
    if (frame.eStatus == tagFrameStatus::Error)
    {
        ReportError(frame.iError, FrameErrorDetail(frame.iError));
    }
    else if (frame.eStatus == tagFrameStatus::Dropped)
    {
        EndMessage();
    }
    const bool bIncomplete = frame.eStatus == tagFrameStatus::Incomplete;
    m_bytesAnnounced = bIncomplete ? frame.iBytesNeeded : 0;
    return bIncomplete;
}

void CSession::ExecuteUpToBlock(const tagFrame& frame)
{
    if (!m_bInMessage)
    {
        BeginMessage();
        m_parser.BeginMessage();
        m_bInMessage = true;
    }
    // The piece stays in place while its commands run; what has arrived behind it goes to fresh memory.
    std::swap(m_piece, m_input);
    m_input.Append(m_piece.Data() + frame.iLength, m_piece.Size() - frame.iLength);
    m_piece.Truncate(frame.iLength);
    m_stream.Begin(frame.iBlockLength);
    std::size_t heldFrom = 0;
    CMessageTrace::Print(m_spPath->Number(), '<', {m_piece.Data(), m_piece.Size()});
    const tagPieceResult result = m_parser.ParsePiece(
        *m_spApplications->spIndex, {m_piece.Data(), m_piece.Size()}, m_stream, *this, heldFrom);
    if (result == tagPieceResult::Hold)
    {
        CollectFrom(heldFrom);
    }
    else
    {
        FinishBlock(result == tagPieceResult::Continue);
    }
    m_piece.Clear();
    m_piece.ReleaseMemory(kKeptInput);
    m_bytesAnnounced = 0;
}

void CSession::CollectFrom(std::size_t place)
{
    m_piece.Consume(place);
    m_piece.Append(m_input.Data(), m_input.Size());
    std::swap(m_piece, m_input);
    m_framer.Hold();
}

void CSession::FinishBlock(bool bContinue)
{
    if (bContinue && SUCCEEDED(m_stream.Finish()))
    {
        return;
    }
    if (m_stream.State() == CBlockStream::tagState::Lost && !IsClearPending())
    {
        Cancel();
    }
    m_framer.Skip(m_stream.Rest());
}

void CSession::RefreshApplications()
{
    if (m_kernel.m_parts.spRegistry->Generation() != m_generation)
    {
        m_spApplications = m_kernel.m_parts.spRegistry->Current(m_generation);
        const auto& applications = m_spApplications->applications;
        std::erase_if(m_remoteTold, [&applications](const CApplication* pApplication) {
            return std::none_of(applications.begin(), applications.end(), [&](const auto& spOther) {
                return spOther.get() == pApplication;
            });
        });
    }
}

void CSession::ExecuteMessage(std::span<char> message)
{
    CMessageTrace::Print(m_spPath->Number(), '<', {message.data(), message.size()});
    if (m_bInMessage)
    {
        m_parser.ParseRest(*m_spApplications->spIndex, message, *this);
    }
    else
    {
        BeginMessage();
        m_parser.Parse(*m_spApplications->spIndex, message, *this);
    }
    EndMessage();
}

void CSession::BeginMessage()
{
    const long path = m_spPath->Number();
    if (!m_kernel.m_parts.spGate->IsOpen(path))
    {
        m_kernel.m_parts.spGate->Wait(path, [this] { return IsBroken(); });
    }
    RefreshApplications();
    m_bBegun = true;
    CEventDistributor& events = *m_kernel.m_parts.spEvents;
    if (m_spPath->EntersRemote() && m_spPath->State().GotoRemote() == tagStateChange::Changed)
    {
        // The applications hear of it with their next command: a busy one must not hold this message up.
        m_bTellsRemote = true;
        m_remoteTold.clear();
        events.TellObservers(
            [path](IZOScpiMultichannelEventObserver& observer) { return observer.GotoRemote(path); });
        m_spPath->PublishStatus();
    }
    if (events.HasObservers())
    {
        events.TellObservers([path](IZOScpiMultichannelEventObserver& observer) {
            return observer.ProgramMessageBegin(path);
        });
    }
}

void CSession::TellMessageEnd()
{
    m_bBegun = false;
    const long path = m_spPath->Number();
    const short aborted = IsBroken() ? VARIANT_TRUE : VARIANT_FALSE;
    for (CApplication* pApplication : m_involved)
    {
        static_cast<void>(pApplication->CallDeviceHandler(
            path, [aborted](IZOScpiDeviceHandler& handler) { return handler.ProgramMessageEnd(aborted); }));
    }
    m_involved.clear();
    if (m_kernel.m_parts.spEvents->HasObservers())
    {
        m_kernel.m_parts.spEvents->TellObservers([=](IZOScpiMultichannelEventObserver& observer) {
            return observer.ProgramMessageEnd(aborted, path);
        });
    }
}

void CSession::EndMessage()
{
    m_bInMessage = false;
    TellMessageEnd();
    CMessageTrace::Print(m_spPath->Number(), '>', m_spOutput->Message());
    m_spOutput->EndMessage();
    if (!m_spOutput->IsEmpty() && !IsBroken())
    {
        m_spStatus->StatusByte().SetMessageAvailable(true);
    }
}

bool CSession::ExecuteCommand(const tagParsedCommand& command)
{
    if (IsBroken())
    {
        return false;
    }
    m_spOutput->BeginCommand();
    m_spErrors->BeginCommand();
    if (command.bQuery && m_spOutput->HasIndefinite())
    {
        ReportError(kScpiQueryAfterIndefinite, {});
        return false;
    }
    const bool bBuiltIn = command.pApplication->IsBuiltIn();
    if (m_spPath->IsHeldLocal() && !command.bQuery &&
        (!bBuiltIn || CBuiltInCommands::ChangesInstrument(command)))
    {
        ReportError(kScpiInvalidWhileLocal, {});
        return true;
    }
    HRESULT result = S_OK;
    if (bBuiltIn)
    {
        result = m_spBuiltIns->Execute(command);
    }
    else if (!RunApplication(command, result))
    {
        ReportError(kScpiUndefinedHeader, "Application has left");
        return false;
    }
    return result == S_OK && !m_spErrors->CommandRaisedError() ? !IsBroken() : CloseCommand(result);
}

bool CSession::RunApplication(const tagParsedCommand& command, HRESULT& result)
{
    CApplication& application = *command.pApplication;
    tagApplicationNews news;
    news.bMessageBegin = AddOnce(m_involved, &application);
    // What a front panel has made local meanwhile is told so already.
    news.bRemote = m_bTellsRemote && m_spPath->State().IsRemote() && AddOnce(m_remoteTold, &application);
    return application.Execute(command, news, m_pContext, m_spPath->Number(), m_spOutput, result);
}

bool CSession::CloseCommand(HRESULT result)
{
    if (m_spOutput->IsRefused())
    {
        ReportError(kScpiQueryDeadlocked, "Response too long");
        m_spOutput->DropMessage();
    }
    else if (FAILED(result) && result != E_ABORT && !m_spErrors->CommandRaisedError())
    {
        m_spErrors->Push(kScpiExecutionError, {});
    }
    if (result != S_OK || m_spErrors->CommandFailed())
    {
        m_spOutput->DropCommand();
    }
    return result != E_ABORT && !IsBroken();
}

void CSession::ReportError(short code, std::string_view detail)
{
    m_spErrors->Push(code, detail);
}

} // namespace ZoVelkor::RemoteKernel
