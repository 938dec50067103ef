#include "CInstrumentLink.h"

#include "Bstr.h"
#include "CComBSTR.h"
#include "CodePage.h"
#include "Common/CToolError.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::size_t kMaxLine = 65536;

/// What one write may take at most, a 32-bit length.
constexpr std::size_t kMaxWrite = 0x7FFFFFFF;

CComBSTR Wide(const std::string& text)
{
    CComBSTR wide;
    wide.Attach(A2WBSTR(text.data(), static_cast<int>(text.size())));
    return wide;
}

std::string Narrow(const CComBSTR& wide)
{
    const auto length = static_cast<int>(wide.Length());
    std::string text(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide, length, text.data(), length, nullptr, nullptr);
    return text;
}

/// The controller makes files that nobody may read; one that is there keeps its mode.
void MakeFile(const std::string& name)
{
    const CUniqueHandle<&close, int, -1> file(
        open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!file)
    {
        throw CToolError(tagExitCode::NoAccess,
                         fmt::format("cannot write {}: {}", name, std::strerror(errno)));
    }
}

} // namespace

CInstrumentLink::CInstrumentLink(const tagInstrumentAddress& address,
                                 std::chrono::milliseconds timeout,
                                 CInterruptWatcher* watcher)
    : m_sAddress(address.Text()),
      m_timeout(timeout),
      m_pWatcher(watcher),
      m_spController(CComObject<CTransferController, IZOScpiController>::Create(address))
{
    m_spController->put_Timeout(static_cast<long>(timeout.count()));
}

/// @return E_ABORT too when Ctrl-C came before the first wait of the call or after the last one
template <class TCall>
HRESULT CInstrumentLink::Call(TCall call)
{
    const CInterruptWatcher::CCall mark(m_pWatcher, *m_spController);
    const HRESULT hResult = mark.IsInterrupted() ? E_ABORT : call();
    return mark.IsInterrupted() ? E_ABORT : hResult;
}

void CInstrumentLink::Fail(HRESULT hResult, const std::string& pending) const
{
    if (hResult == E_ABORT)
    {
        throw CToolError(tagExitCode::Interrupted, m_sAddress + ": interrupted");
    }
    if (hResult == E_PENDING)
    {
        throw CToolError(tagExitCode::NoAccess, pending);
    }
    throw CToolError(tagExitCode::NoAccess, m_spController->FaultText());
}

void CInstrumentLink::FailSend(HRESULT hResult) const
{
    const double seconds = std::chrono::duration<double>(m_timeout).count();
    Fail(hResult, fmt::format("{}: takes nothing within {} s", m_sAddress, seconds));
}

void CInstrumentLink::FailRead(HRESULT hResult) const
{
    const double seconds = std::chrono::duration<double>(m_timeout).count();
    Fail(hResult,
         fmt::format("{}: no complete answer within {} s ({} bytes of it came)",
                     m_sAddress,
                     seconds,
                     m_spController->ReceivedBytes()));
}

void CInstrumentLink::Connect()
{
    if (m_pWatcher != nullptr)
    {
        m_pWatcher->Forget();
    }
    const HRESULT hResult = Call([this] { return m_spController->Clear(); });
    if (hResult != S_OK)
    {
        const double seconds = std::chrono::duration<double>(m_timeout).count();
        Fail(hResult, fmt::format("cannot connect to {}: nothing within {} s", m_sAddress, seconds));
    }
}

void CInstrumentLink::Send(std::string_view bytes, bool isEnd)
{
    if (bytes.size() > kMaxWrite)
    {
        throw CToolError(tagExitCode::Usage, "a command of more than 2 GiB");
    }
    // The interface takes what it only reads as modifiable.
    auto* const data = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data()));
    const HRESULT hResult = Call([&] {
        const short end = isEnd ? VARIANT_TRUE : VARIANT_FALSE;
        return m_spController->Write(data, static_cast<long>(bytes.size()), end);
    });
    if (hResult != S_OK)
    {
        FailSend(hResult);
    }
}

tagResponsePart CInstrumentLink::Read(std::size_t count)
{
    tagResponsePart part{std::string(count, '\0')};
    long got = 0;
    short end = VARIANT_FALSE;
    const HRESULT hResult = Call([&] {
        auto* const buffer = reinterpret_cast<unsigned char*>(part.bytes.data());
        return m_spController->Read(static_cast<long>(count), buffer, &got, &end);
    });
    if (hResult != S_OK)
    {
        FailRead(hResult);
    }
    part.bytes.resize(static_cast<std::size_t>(got));
    part.isEnd = end == VARIANT_TRUE;
    return part;
}

std::string CInstrumentLink::ReadLine()
{
    tagResponsePart part = Read(kMaxLine);
    if (!part.isEnd)
    {
        throw CToolError(tagExitCode::Failed,
                         fmt::format("{}: an answer of more than {} bytes", m_sAddress, kMaxLine));
    }
    return std::move(part.bytes);
}

template <class TTransfer>
void CInstrumentLink::Transfer(const char* what,
                               const std::string& name,
                               std::size_t size,
                               TTransfer transfer)
{
    CProgressBar bar(what, size);
    m_spController->ForgetLastResult();
    m_spController->ShowOn(&bar);
    const HRESULT hResult = Call([&] { return transfer(Wide(name)); });
    m_spController->ShowOn(nullptr);
    if (hResult == S_FALSE && m_spController->LastResult() == S_OK)
    {
        CComBSTR text;
        m_spController->GetLastError(&text);
        throw CToolError(tagExitCode::NoAccess, fmt::format("{}: {}", name, Narrow(text)));
    }
    if (hResult != S_OK)
    {
        const HRESULT hCause = hResult == E_ABORT ? hResult : m_spController->LastResult();
        what[0] == 's' ? FailSend(hCause) : FailRead(hCause);
    }
}

void CInstrumentLink::SendFile(const std::string& name, std::size_t size)
{
    long sent = 0;
    Transfer("sending", name, size, [&](const CComBSTR& file) {
        return m_spController->WriteFromFile(file, static_cast<long>(size), VARIANT_TRUE, &sent);
    });
    if (static_cast<std::size_t>(sent) != size)
    {
        throw CToolError(tagExitCode::NoAccess,
                         fmt::format("{}: {} bytes were there and not {}", name, sent, size));
    }
}

void CInstrumentLink::FetchFile(const std::string& name, std::size_t size)
{
    MakeFile(name);
    long got = 0;
    short end = VARIANT_FALSE;
    try
    {
        Transfer("fetching", name, size, [&](const CComBSTR& file) {
            return m_spController->ReadToFile(file, static_cast<long>(size), &got, &end);
        });
    }
    catch (const CToolError& error)
    {
        throw CToolError(error.Code(), fmt::format("{}; {} is not complete", error.what(), name));
    }
    if (static_cast<std::size_t>(got) != size)
    {
        throw CToolError(tagExitCode::NoAccess,
                         fmt::format("{}: an answer that ends within a block", m_sAddress));
    }
}

} // namespace ZoVelkor::Tools
