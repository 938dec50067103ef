#include "CSession.h"

#include "BuiltIn/CBuiltInCommands.h"
#include "CMutexLocker.h"
#include "CPathStatusManagement.h"
#include "Parsing/BrokenString.h"
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
bool AddOnce(std::vector<CApplication*>& list, CApplication* application)
{
    const bool fresh = std::find(list.begin(), list.end(), application) == list.end();
    if (fresh)
    {
        list.push_back(application);
    }
    return fresh;
}

std::shared_ptr<CRemotePath> OpenPath(CPathTable& paths)
{
    std::shared_ptr<CRemotePath> path = paths.Open();
    if (path == nullptr)
    {
        throw std::system_error(EMFILE, std::generic_category(), "All remote paths are taken");
    }
    return path;
}

/// The context of the path's commands: services that reach this path alone.
CComPtr<CComObject<CRemotePathServices, IZOScpiManager>>
MakeServices(const std::shared_ptr<CRemotePath>& path,
             const KernelParts& parts,
             const CComPtr<CComObject<CFormatSubsystem, IZOScpiSubsystemFormat>>& format)
{
    using CStatus = CComObject<CPathStatusManagement, IZOScpiStatusManagement>;
    return CComObject<CRemotePathServices, IZOScpiManager>::Create(
        path->Number(),
        CErrorObject::Create(CServedPaths(parts.paths, path)),
        CStatus::Create(path, parts.status),
        format,
        parts.operations);
}

} // namespace

CSession::CSession(const KernelParts& parts, const SessionLimits& limits, const SessionTransport& transport)
    : m_parts(parts),
      m_output(CSessionOutput::Create(limits.maxResponse)),
      m_format(CComObject<CFormatSubsystem, IZOScpiSubsystemFormat>::Create(m_output)),
      m_breakEvent(MakeSharedEvent("No event for a session")),
      m_status(std::make_shared<CSessionStatus>(m_breakEvent)),
      m_errors(std::make_shared<CErrorQueue>(limits.errorQueueDepth, m_status)),
      m_path(OpenPath(*m_parts.paths)),
      m_services(MakeServices(m_path, m_parts, m_format)),
      m_context(static_cast<IZOScpiManager*>(m_services)),
      m_builtIns(std::make_unique<CBuiltInCommands>(BuiltInContext{*m_output,
                                                                   *m_format,
                                                                   *m_errors,
                                                                   *m_parts.operations,
                                                                   *m_status,
                                                                   *m_parts.status,
                                                                   *m_parts.events,
                                                                   m_applications,
                                                                   m_path->Number(),
                                                                   m_breakEvent->Get(),
                                                                   transport.connection})),
      m_framer(limits.message, transport.source != nullptr),
      m_stream(
          m_input, transport.source, GetEventDescriptor(m_breakEvent->Get()), *this, limits.blockPauseMs),
      m_streams(transport.source != nullptr)
{
    AddPath(transport);
}

void CSession::AddPath(const SessionTransport& transport)
{
    const long path = m_path->Number();
    try
    {
        if (!m_parts.operations->AddPath(path))
        {
            throw std::system_error(EMFILE, std::generic_category(), "No event for a session");
        }
        m_parts.status->AddPath(path, m_status);
        m_parts.format->CopySettingsTo(*m_format);
        m_path->SetErrors(m_errors);
        m_path->SetFormat(CComPtr<IZOScpiSubsystemFormat>(m_format));
        if (transport.channel != nullptr)
        {
            m_path->AttachChannel(transport.channel);
            SetServiceRequestObserver(m_path.get());
        }
        m_status->Enable(m_parts.status->PowerOnMasks());
        m_parts.sessions->Add(*this);
        m_path->Publish();
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
    m_parts.sessions->Remove(*this); // last: the kernel may go then
}

void CSession::RemovePath() noexcept
{
    const long path = m_path->Number();
    SetServiceRequestObserver(nullptr);
    // The services refuse the path from here on.
    m_path->Close();
    m_parts.operations->RemovePath(path);
    m_parts.status->RemovePath(path);
    m_parts.registry->ReleaseEngines(path);
    m_parts.gate->Start(path);
    // Last: from here on the number may stand for another path.
    m_parts.paths->Close(*m_path);
}

void CSession::Break(int reason) noexcept
{
    const bool deviceClear = reason == kBreakForDeviceClear && m_path->DeviceClearEvent() != nullptr;
    {
        const CMutexLocker lock(m_breakMutex);
        m_break.store(std::max(m_break.load(), reason));
        m_breakNext = std::max(m_breakNext, reason);
        m_output->Cancel();
        SetEvent(m_breakEvent->Get());
        if (deviceClear)
        {
            SetEvent(m_path->DeviceClearEvent()->Get());
        }
    }
    m_parts.gate->Wake();
}

void CSession::GoOn() noexcept
{
    const CMutexLocker lock(m_breakMutex);
    m_break.store(m_breakNext);
    if (m_breakNext != kRuns)
    {
        return;
    }
    m_output->Resume();
    ResetEvent(m_breakEvent->Get());
    if (m_path->DeviceClearEvent() != nullptr)
    {
        ResetEvent(m_path->DeviceClearEvent()->Get());
    }
}

void CSession::Cancel() noexcept
{
    Break(kBreakForEver);
    if (m_path->ShutdownEvent() != nullptr)
    {
        SetEvent(m_path->ShutdownEvent()->Get());
    }
}

void CSession::FinishClear()
{
    int reason = kRuns;
    {
        const CMutexLocker lock(m_breakMutex);
        reason = m_break.load();
        m_breakNext = reason == kBreakForEver ? reason : kRuns;
    }
    m_input.Clear();
    m_framer.Reset();
    m_openQuote = '\0';
    m_inMessage = false;
    m_bytesAnnounced = 0;
    Abandon();
    m_output->EndMessage();
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
    const long path = m_path->Number();
    if (m_parts.operations->CancelOperationComplete(path))
    {
        m_parts.events->TellOpcReset(path);
    }
    m_parts.events->Tell(
        path, &IZOScpiDeviceHandler::DeviceClear, &IZOScpiMultichannelEventObserver::DeviceClear);
}

void CSession::Abandon()
{
    if (m_begun)
    {
        TellMessageEnd();
    }
}

HRESULT CSession::Trigger()
{
    if (!m_input.IsEmpty() || m_inMessage || m_framer.IsSkipping())
    {
        RefuseTrigger();
        if (!m_framer.IsSkipping())
        {
            m_framer.Skip(0);
        }
        return S_FALSE;
    }
    RefreshApplications();
    if (m_path->IsHeldLocal())
    {
        ReportError(kScpiInvalidWhileLocal, {});
        return S_FALSE;
    }
    return m_builtIns->GroupExecuteTrigger() == S_OK ? S_OK : S_FALSE;
}

void CSession::RefuseTrigger()
{
    ReportError(kScpiGetNotAllowed, {});
}

std::string_view CSession::Process(std::span<char> bytes)
{
    ClearResponse();
    const bool inPlace = m_input.IsEmpty() && !m_streams;
    while (inPlace && !bytes.empty() && !IsBroken())
    {
        const Frame frame = m_framer.Scan(bytes);
        if (frame.status == FrameStatus::Message)
        {
            ExecuteMessage(bytes.first(frame.length));
        }
        bytes = bytes.subspan(frame.consumed);
        if (HandleFrame(frame))
        {
            break;
        }
    }
    if (!bytes.empty() && !IsBroken())
    {
        m_input.Append(bytes.data(), bytes.size());
    }
    while (!inPlace && ExecuteNext())
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
    m_output->ReleaseMemory();
}

bool CSession::ExecuteNext()
{
    while (!m_input.IsEmpty() && !IsBroken())
    {
        const std::span<char> bytes(m_input.Data(), m_input.Size());
        const Frame frame = m_framer.Scan(bytes);
        if (frame.status == FrameStatus::Block)
        {
            ExecuteUpToBlock(frame);
            continue;
        }
        const bool message = frame.status == FrameStatus::Message;
        if (message)
        {
            ExecuteMessage(bytes.first(frame.length));
        }
        m_input.Consume(frame.consumed);
        const bool incomplete = HandleFrame(frame);
        const bool ended = message || frame.status == FrameStatus::Dropped;
        if (ended || incomplete)
        {
            return ended;
        }
    }
    return false;
}

bool CSession::HandleFrame(const Frame& frame)
{
    if (frame.status == FrameStatus::Error)
    {
        m_openQuote = '\0';
        ReportError(frame.error, FrameErrorDetail(frame.error));
    }
    else if (frame.status == FrameStatus::Dropped)
    {
        m_openQuote = '\0';
        EndMessage();
    }
    const bool incomplete = frame.status == FrameStatus::Incomplete;
    m_bytesAnnounced = incomplete ? frame.bytesNeeded : 0;
    return incomplete;
}

void CSession::ExecuteUpToBlock(const Frame& frame)
{
    if (!m_inMessage)
    {
        BeginMessage();
        m_parser.BeginMessage();
        m_inMessage = true;
        m_openQuote = '\0';
    }
    // The piece stays in place while its commands run; what has arrived behind it goes to fresh memory.
    std::swap(m_piece, m_input);
    m_input.Append(m_piece.Data() + frame.length, m_piece.Size() - frame.length);
    m_piece.Truncate(frame.length);
    m_stream.Begin(frame.blockLength);
    std::size_t heldFrom = 0;
    CMessageTrace::Print(m_path->Number(), '<', {m_piece.Data(), m_piece.Size()});
    const PieceResult result = m_parser.ParsePiece(
        *m_applications->index, {m_piece.Data(), m_piece.Size()}, m_stream, *this, heldFrom);
    if (result == PieceResult::Hold)
    {
        CollectFrom(heldFrom);
    }
    else
    {
        FinishBlock(result == PieceResult::Continue);
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

void CSession::FinishBlock(bool goOn)
{
    if (goOn && SUCCEEDED(m_stream.Finish()))
    {
        return;
    }
    if (m_stream.State() == CBlockStream::Progress::Lost && !IsClearPending())
    {
        Cancel();
    }
    m_framer.Skip(m_stream.Rest());
}

void CSession::RefreshApplications()
{
    if (m_parts.registry->Generation() != m_generation)
    {
        m_applications = m_parts.registry->Current(m_generation);
        const auto& applications = m_applications->applications;
        std::erase_if(m_remoteTold, [&applications](const CApplication* told) {
            return std::none_of(applications.begin(), applications.end(), [&](const auto& application) {
                return application.get() == told;
            });
        });
    }
}

void CSession::ExecuteMessage(std::span<char> message)
{
    const std::string_view text(message.data(), message.size());
    CMessageTrace::Print(m_path->Number(), '<', text);
    const char openQuote = std::exchange(m_openQuote, '\0');
    bool isComplete = true;
    if (m_inMessage)
    {
        isComplete = m_parser.ParseRest(*m_applications->index, message, *this);
    }
    else
    {
        BeginMessage();
        isComplete = (openQuote != '\0' && IsRest(text, openQuote)) ||
                     m_parser.Parse(*m_applications->index, message, *this);
    }
    m_openQuote = isComplete ? '\0' : FindOpenQuote(text);
    EndMessage();
}

bool CSession::IsRest(std::string_view text, char quote) const
{
    // A message with a command of its own is run: nothing that a client asked for gets lost.
    return IsRestOfString(text, quote) && m_applications->index->Find(FirstHeader(text)) == nullptr;
}

void CSession::BeginMessage()
{
    const long path = m_path->Number();
    if (!m_parts.gate->IsOpen(path))
    {
        m_parts.gate->Wait(path, [this] { return IsBroken(); });
    }
    RefreshApplications();
    m_begun = true;
    CEventDistributor& events = *m_parts.events;
    if (m_path->EntersRemote() && m_path->State().GotoRemote() == StateChange::Changed)
    {
        // The applications hear of it with their next command: a busy one must not hold this message up.
        m_tellsRemote = true;
        m_remoteTold.clear();
        events.TellObservers(
            [path](IZOScpiMultichannelEventObserver& observer) { return observer.GotoRemote(path); });
        m_path->PublishStatus();
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
    m_begun = false;
    const long path = m_path->Number();
    const short aborted = ToVariantBool(IsBroken());
    for (CApplication* application : m_involved)
    {
        static_cast<void>(application->CallDeviceHandler(
            path, [aborted](IZOScpiDeviceHandler& handler) { return handler.ProgramMessageEnd(aborted); }));
    }
    m_involved.clear();
    if (m_parts.events->HasObservers())
    {
        m_parts.events->TellObservers([=](IZOScpiMultichannelEventObserver& observer) {
            return observer.ProgramMessageEnd(aborted, path);
        });
    }
}

void CSession::EndMessage()
{
    m_inMessage = false;
    TellMessageEnd();
    CMessageTrace::Print(m_path->Number(), '>', m_output->Message());
    m_output->EndMessage();
    if (!m_output->IsEmpty() && !IsBroken())
    {
        m_status->StatusByte().SetMessageAvailable(true);
    }
}

bool CSession::ExecuteCommand(const ParsedCommand& command)
{
    if (IsBroken())
    {
        return false;
    }
    m_output->BeginCommand();
    m_errors->BeginCommand();
    if (command.query && m_output->HasIndefinite())
    {
        ReportError(kScpiQueryAfterIndefinite, {});
        return false;
    }
    const bool builtIn = command.application->IsBuiltIn();
    if (m_path->IsHeldLocal() && !command.query && (!builtIn || CBuiltInCommands::ChangesInstrument(command)))
    {
        ReportError(kScpiInvalidWhileLocal, {});
        return true;
    }
    HRESULT result = S_OK;
    if (builtIn)
    {
        result = m_builtIns->Execute(command);
    }
    else if (!RunApplication(command, result))
    {
        ReportError(kScpiUndefinedHeader, "Application has left");
        return false;
    }
    return result == S_OK && !m_errors->CommandRaisedError() ? !IsBroken() : CloseCommand(result);
}

bool CSession::RunApplication(const ParsedCommand& command, HRESULT& result)
{
    CApplication& application = *command.application;
    ApplicationNews news;
    news.messageBegin = AddOnce(m_involved, &application);
    // What a front panel has made local meanwhile is told so already.
    news.remote = m_tellsRemote && m_path->State().IsRemote() && AddOnce(m_remoteTold, &application);
    return application.Execute(command, news, m_context, m_path->Number(), m_output, result);
}

bool CSession::CloseCommand(HRESULT result)
{
    if (m_output->IsRefused())
    {
        ReportError(kScpiQueryDeadlocked, "Response too long");
        m_output->DropMessage();
    }
    else if (FAILED(result) && result != E_ABORT && !m_errors->CommandRaisedError())
    {
        m_errors->Push(kScpiExecutionError, {});
    }
    if (result != S_OK || m_errors->CommandFailed())
    {
        m_output->DropCommand();
    }
    return result != E_ABORT && !IsBroken();
}

void CSession::ReportError(short code, std::string_view detail)
{
    m_errors->Push(code, detail);
}

} // namespace ZoVelkor::RemoteKernel
