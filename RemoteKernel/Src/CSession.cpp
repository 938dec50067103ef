#include "CSession.h"

#include "CBuiltInCommands.h"
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

} // namespace

CSession::CSession(CRemoteKernel& kernel,
                   const tagSessionLimits& limits,
                   int connection,
                   IByteSource* pSource)
    : m_kernel(kernel),
      m_spOutput(CSessionOutput::Create(limits.iMaxResponse)),
      m_spFormat(CComObject<CFormatSubsystem, IZOScpiSubsystemFormat>::Create(m_spOutput)),
      m_spCancelEvent(MakeSharedEvent("No event for a session")),
      m_spStatus(std::make_shared<CSessionStatus>(m_spCancelEvent)),
      m_spErrors(std::make_shared<CErrorQueue>(limits.iErrorQueueDepth, m_spStatus)),
      m_iRemotePath(kernel.AddPath()),
      m_spServices(CComObject<CRemotePathServices, IZOScpiManager>::Create(
          m_iRemotePath, kernel.m_spErrors, kernel.m_spStatus, m_spFormat, kernel.m_spOperations)),
      m_pContext(static_cast<IZOScpiManager*>(m_spServices)),
      m_spBuiltIns(std::make_unique<CBuiltInCommands>(tagBuiltInContext{*m_spOutput,
                                                                        *m_spFormat,
                                                                        *m_spErrors,
                                                                        *kernel.m_spOperations,
                                                                        *m_spStatus,
                                                                        *kernel.m_spStatus,
                                                                        m_spApplications,
                                                                        m_iRemotePath,
                                                                        m_spCancelEvent->Get(),
                                                                        connection})),
      m_framer(limits.message, pSource != nullptr),
      m_stream(m_input, pSource, GetEventDescriptor(m_spCancelEvent->Get()), *this, limits.iBlockPauseMs),
      m_bStreams(pSource != nullptr)
{
    AddPath();
}

void CSession::AddPath()
{
    if (!m_kernel.m_spOperations->AddPath(m_iRemotePath))
    {
        throw std::system_error(EMFILE, std::generic_category(), "No event for a session");
    }
    try
    {
        m_kernel.m_spErrors->AddPath(m_iRemotePath, m_spErrors);
        m_kernel.m_spStatus->AddPath(m_iRemotePath, m_spStatus);
        m_kernel.AddSession(*this);
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
    m_kernel.RemoveSession(*this);
    RemovePath();
    SetServiceRequestObserver(nullptr);
}

void CSession::RemovePath() noexcept
{
    m_kernel.m_spErrors->RemovePath(m_iRemotePath);
    m_kernel.m_spOperations->RemovePath(m_iRemotePath);
    m_kernel.m_spStatus->RemovePath(m_iRemotePath);
}

void CSession::Cancel() noexcept
{
    m_bCancelled.store(true, std::memory_order_relaxed);
    m_spOutput->Cancel();
    SetEvent(m_spCancelEvent->Get());
}

std::string_view CSession::Process(std::span<char> bytes)
{
    ClearResponse();
    const bool bInPlace = m_input.IsEmpty() && !m_bStreams;
    while (bInPlace && !bytes.empty() && !IsCancelled())
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
    if (!bytes.empty() && !IsCancelled())
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
    while (!m_input.IsEmpty() && !IsCancelled())
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
        RefreshApplications();
        m_parser.BeginMessage();
        m_bInMessage = true;
    }
    // The piece stays in place while its commands run; what has arrived behind it goes to fresh memory.
    std::swap(m_piece, m_input);
    m_input.Append(m_piece.Data() + frame.iLength, m_piece.Size() - frame.iLength);
    m_piece.Truncate(frame.iLength);
    m_stream.Begin(frame.iBlockLength);
    std::size_t heldFrom = 0;
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
    if (m_stream.State() == CBlockStream::tagState::Lost)
    {
        Cancel();
    }
    m_framer.Skip(m_stream.Rest());
}

void CSession::RefreshApplications()
{
    if (m_kernel.m_spRegistry->Generation() != m_generation)
    {
        m_spApplications = m_kernel.m_spRegistry->Current(m_generation);
    }
}

void CSession::ExecuteMessage(std::span<char> message)
{
    if (m_bInMessage)
    {
        m_parser.ParseRest(*m_spApplications->spIndex, message, *this);
    }
    else
    {
        RefreshApplications();
        m_parser.Parse(*m_spApplications->spIndex, message, *this);
    }
    EndMessage();
}

void CSession::EndMessage()
{
    m_bInMessage = false;
    m_spOutput->EndMessage();
    if (!m_spOutput->IsEmpty())
    {
        m_spStatus->StatusByte().SetMessageAvailable(true);
    }
}

bool CSession::ExecuteCommand(const tagParsedCommand& command)
{
    m_spOutput->BeginCommand();
    m_spErrors->BeginCommand();
    if (command.bQuery && m_spOutput->HasIndefinite())
    {
        ReportError(kScpiQueryAfterIndefinite, {});
        return false;
    }
    HRESULT result = S_OK;
    if (command.pApplication->IsBuiltIn())
    {
        result = m_spBuiltIns->Execute(command);
    }
    else if (!command.pApplication->Execute(command, false, m_pContext, m_iRemotePath, m_spOutput, result))
    {
        ReportError(kScpiUndefinedHeader, "Application has left");
        return false;
    }
    return result == S_OK && !m_spErrors->CommandRaisedError() ? !IsCancelled() : CloseCommand(result);
}

bool CSession::CloseCommand(HRESULT result)
{
    if (FAILED(result) && result != E_ABORT && !m_spErrors->CommandRaisedError())
    {
        m_spErrors->Push(kScpiExecutionError, {});
    }
    if (result != S_OK || m_spErrors->CommandFailed())
    {
        m_spOutput->DropCommand();
    }
    return result != E_ABORT && !IsCancelled();
}

void CSession::ReportError(short code, std::string_view detail)
{
    m_spErrors->Push(code, detail);
}

} // namespace ZoVelkor::RemoteKernel
