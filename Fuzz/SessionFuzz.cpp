// Feeds bytes through a session whose blocks are streamed, in pieces and at once: both must do the same.
#include "CTestApplication.h"
#include "ErrorSink.h"
#include "Sessions/CSession.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{
using namespace ZoVelkor;
using namespace ZoVelkor::RemoteKernel;
using namespace ZoVelkor::RemoteKernel::Testing;

constexpr SessionLimits kLimits{.message = {.maxText = 4096, .maxBlock = 4096, .maxHeld = 8}};

/// Gives a text in pieces of one size.
class CPieces final : public IByteSource
{
public:
    CPieces(const std::string& text, std::size_t piece) : m_text(text), m_piece(piece) {}

    Received Receive(std::span<char> space, int, int) noexcept override
    {
        const std::size_t count = std::min({m_piece, space.size(), m_text.size() - m_place});
        std::copy_n(m_text.data() + m_place, count, space.data());
        m_place += count;
        return {count != 0 ? ReceiveStatus::Received : ReceiveStatus::Ended, count};
    }

private:
    const std::string& m_text;
    const std::size_t m_piece;
    std::size_t m_place = 0;
};

class CSilentSink final : public IErrorSink
{
public:
    void Report(const tagErrorReport&, bool) noexcept override {}
};

/// Takes the known length out of "read/length:sum": an indefinite block may have ended or not.
std::string WithoutLengths(std::string text)
{
    for (std::size_t place = text.find('/'); place != std::string::npos; place = text.find('/', place + 1))
    {
        text.erase(place, text.find(':', place) - place);
    }
    return text;
}

std::string Converse(const std::string& text, std::size_t piece)
{
    TestInstrument instrument;
    SetEvent(instrument.sink->m_holdRelease.Get());
    CPieces source(text, piece);
    CSession session(instrument.kernel.Parts(), kLimits, {.source = &source});
    std::string responses;
    for (bool more = true; more;)
    {
        const Received received = source.Receive(session.InputSpace(), -1, -1);
        session.CommitInput(received.count);
        while (session.ExecuteNext())
        {
            responses += session.Response();
            session.ClearResponse();
        }
        more = received.status == ReceiveStatus::Received && !session.IsCancelled();
    }
    return WithoutLengths(std::move(responses));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static CSilentSink sink;
    SetErrorSink(&sink);
    if (size == 0)
    {
        return 0;
    }
    std::string text(data + 1, data + size);
    // Nobody ends what OVERlap begins.
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == 'v' || c == 'V'; }, 'x');
    text += "\n\nLAST?;:BLOC?;:SYST:ERR:ALL?\n";
    const std::string atOnce = Converse(text, text.size());
    const std::string inPieces = Converse(text, data[0] % 16U + 1U);
    if (atOnce != inPieces)
    {
        std::fprintf(stderr, "at once:\n%s\nin pieces:\n%s\n", atOnce.c_str(), inPieces.c_str());
        std::abort();
    }
    return 0;
}
