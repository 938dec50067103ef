#include "CBlockStream.h"

#include "CParameterParser.h"
#include "CharacterClasses.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

namespace
{

/// Room for one fetch.
constexpr std::size_t kPiece = std::size_t{64} << 10;
/// Room for what follows a block, and the least that is received straight into a reader's memory.
constexpr std::size_t kSmallPiece = std::size_t{4} << 10;

const char* SkipWhite(std::string_view text) noexcept
{
    return std::find_if_not(text.begin(), text.end(), &IsWhiteSpace);
}

} // namespace

void CBlockStream::Begin(std::int64_t length) noexcept
{
    m_state = Progress::Open;
    m_lengthKnown = length >= 0;
    m_rest = m_lengthKnown ? length : 0;
    m_consumed = 0;
    m_pauseMs = m_stallMs;
    FindEnd(0);
}

void CBlockStream::Consume(std::size_t count) noexcept
{
    m_input.Consume(count);
    m_consumed += static_cast<std::int64_t>(count);
    m_rest -= m_lengthKnown ? static_cast<std::int64_t>(count) : 0;
}

/// An indefinite block ends before a line feed; the bytes before `from` are known to hold none.
void CBlockStream::FindEnd(std::size_t from) noexcept
{
    if (m_lengthKnown || from == m_input.Size())
    {
        return;
    }
    const char* const begin = m_input.Data();
    const auto* const lineFeed =
        static_cast<const char*>(std::memchr(begin + from, '\n', m_input.Size() - from));
    if (lineFeed != nullptr)
    {
        m_lengthKnown = true;
        m_rest = lineFeed - begin;
        m_state = Progress::Checked;
    }
}

HRESULT CBlockStream::Fill(std::size_t count)
{
    while (!HasFailed() && !IsComplete() && WindowSize() < count)
    {
        static_cast<void>(FetchInput(kPiece, -1));
    }
    const bool reachesEnd = IsComplete() && WindowSize() <= count;
    return reachesEnd ? CheckFollower() : (HasFailed() ? E_ABORT : S_OK);
}

HRESULT CBlockStream::Read(std::span<unsigned char> data, std::size_t& got)
{
    got = 0;
    const bool hadEnded = m_lengthKnown && m_rest == 0;
    while (!HasFailed() && got < data.size() && !(m_lengthKnown && m_rest == 0))
    {
        const std::span<unsigned char> target = data.subspan(got);
        const std::span<unsigned char> window = Window();
        if (!window.empty())
        {
            const std::size_t count = std::min(window.size(), target.size());
            std::memcpy(target.data(), window.data(), count);
            Consume(count);
            got += count;
        }
        else if (m_lengthKnown && target.size() >= kSmallPiece)
        {
            // Straight into the handler's memory: no byte is copied twice.
            const auto wanted = std::min<std::uint64_t>(target.size(), static_cast<std::uint64_t>(m_rest));
            std::size_t received = 0;
            static_cast<void>(Receive(
                {reinterpret_cast<char*>(target.data()), static_cast<std::size_t>(wanted)}, -1, received));
            m_consumed += static_cast<std::int64_t>(received);
            m_rest -= static_cast<std::int64_t>(received);
            got += received;
        }
        else
        {
            static_cast<void>(FetchInput(kPiece, -1));
        }
    }
    // With the last byte goes the look at what follows, before the handler believes in the block.
    if (FAILED(Fill(0)))
    {
        return E_ABORT;
    }
    return hadEnded ? S_FALSE : S_OK;
}

HRESULT CBlockStream::Wait(long timeoutMs)
{
    if (!HasFailed() && WindowSize() == 0 && !IsComplete())
    {
        const HRESULT result = FetchInput(kPiece, timeoutMs);
        if (result == E_PENDING)
        {
            return E_PENDING;
        }
    }
    if (HasFailed())
    {
        return E_ABORT;
    }
    return WindowSize() != 0 ? S_OK : S_FALSE;
}

HRESULT CBlockStream::Discard()
{
    HRESULT result = Fill(1);
    while (SUCCEEDED(result) && WindowSize() != 0)
    {
        Consume(WindowSize());
        result = Fill(1);
    }
    if (FAILED(result))
    {
        return result;
    }
    const std::string_view behind = m_input.View();
    m_input.Consume(static_cast<std::size_t>(SkipWhite(behind) - behind.begin()));
    return S_OK;
}

HRESULT CBlockStream::Finish()
{
    // Nobody waits for this command any more: the client may take its time.
    m_pauseMs = -1;
    return Discard();
}

HRESULT CBlockStream::FetchInput(std::size_t room, long timeoutMs)
{
    m_input.Reserve(room);
    const std::size_t known = m_input.Size();
    std::size_t received = 0;
    const HRESULT result = Receive({m_input.Data() + known, m_input.Space()}, timeoutMs, received);
    m_input.Commit(received);
    FindEnd(known);
    return result;
}

HRESULT CBlockStream::Receive(std::span<char> space, long timeoutMs, std::size_t& received)
{
    const long limit = timeoutMs < 0 ? long{m_pauseMs} : timeoutMs;
    const auto wait = static_cast<int>(std::min<long>(limit, std::numeric_limits<int>::max()));
    const Received result = m_source->Receive(space, wait, m_cancelDescriptor);
    received = result.count;
    switch (result.status)
    {
    case ReceiveStatus::Received:
        return S_OK;
    case ReceiveStatus::TimedOut:
        return timeoutMs < 0 ? Refuse(Progress::Stalled, kScpiTimeOutError, "Block data stopped") : E_PENDING;
    default:
        m_state = Progress::Lost;
        return E_ABORT;
    }
}

HRESULT CBlockStream::CheckFollower()
{
    while (m_state == Progress::Open)
    {
        const std::string_view behind = m_input.View().substr(static_cast<std::size_t>(m_rest));
        const auto* const follower = SkipWhite(behind);
        if (follower == behind.end())
        {
            // A client may send as much white space as it likes; one byte stays, since a block can follow it.
            m_input.Truncate(static_cast<std::size_t>(m_rest) + std::min<std::size_t>(behind.size(), 1));
            static_cast<void>(FetchInput(kSmallPiece, -1));
        }
        else if (*follower == '\n' || *follower == ';')
        {
            m_state = Progress::Checked;
        }
        else
        {
            const short error = *follower == ',' ? kScpiParameterNotAllowed : SeparatorError(*follower);
            return Refuse(Progress::Refused, error, "behind a block");
        }
    }
    return HasFailed() ? E_ABORT : S_OK;
}

HRESULT CBlockStream::Refuse(Progress state, short error, const char* detail)
{
    m_state = state;
    m_errors.ReportError(error, detail);
    return E_ABORT;
}

} // namespace ZoVelkor::RemoteKernel
