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
        throw CToolError(ExitCode::NoAccess, fmt::format("cannot write {}: {}", name, std::strerror(errno)));
    }
}

} // namespace

CInstrumentLink::CInstrumentLink(const InstrumentAddress& address,
                                 std::chrono::milliseconds timeout,
                                 CInterruptWatcher* watcher)
    : m_address(address.Text()),
      m_timeout(timeout),
      m_watcher(watcher),
      m_controller(CComObject<CTransferController, IZOScpiController>::Create(address))
{
    m_controller->put_Timeout(static_cast<long>(timeout.count()));
}

/// @return E_ABORT too when Ctrl-C came before the first wait of the call or after the last one
template <class TCall>
HRESULT CInstrumentLink::Call(TCall call)
{
    const CInterruptWatcher::CCall mark(m_watcher, *m_controller);
    const HRESULT result = mark.IsInterrupted() ? E_ABORT : call();
    return mark.IsInterrupted() ? E_ABORT : result;
}

void CInstrumentLink::Fail(HRESULT result, const std::string& pending) const
{
    if (result == E_ABORT)
    {
        throw CToolError(ExitCode::Interrupted, m_address + ": interrupted");
    }
    if (result == E_PENDING)
    {
        throw CToolError(ExitCode::NoAccess, pending);
    }
    throw CToolError(ExitCode::NoAccess, m_controller->FaultText());
}

void CInstrumentLink::FailSend(HRESULT result) const
{
    const double seconds = std::chrono::duration<double>(m_timeout).count();
    Fail(result, fmt::format("{}: takes nothing within {} s", m_address, seconds));
}

void CInstrumentLink::FailRead(HRESULT result) const
{
    const double seconds = std::chrono::duration<double>(m_timeout).count();
    Fail(result,
         fmt::format("{}: no complete answer within {} s ({} bytes of it came)",
                     m_address,
                     seconds,
                     m_controller->ReceivedBytes()));
}

void CInstrumentLink::Connect()
{
    if (m_watcher != nullptr)
    {
        m_watcher->Forget();
    }
    const HRESULT result = Call([this] { return m_controller->Clear(); });
    if (result != S_OK)
    {
        const double seconds = std::chrono::duration<double>(m_timeout).count();
        Fail(result, fmt::format("cannot connect to {}: nothing within {} s", m_address, seconds));
    }
}

void CInstrumentLink::Send(std::string_view bytes, bool isEnd)
{
    if (bytes.size() > kMaxWrite)
    {
        throw CToolError(ExitCode::Usage, "a command of more than 2 GiB");
    }
    // The interface takes what it only reads as modifiable.
    auto* const data = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data()));
    const HRESULT result = Call([&] {
        const short end = ToVariantBool(isEnd);
        return m_controller->Write(data, static_cast<long>(bytes.size()), end);
    });
    if (result != S_OK)
    {
        FailSend(result);
    }
}

ResponsePart CInstrumentLink::Read(std::size_t count)
{
    ResponsePart part{std::string(count, '\0')};
    long got = 0;
    short end = VARIANT_FALSE;
    const HRESULT result = Call([&] {
        auto* const buffer = reinterpret_cast<unsigned char*>(part.bytes.data());
        return m_controller->Read(static_cast<long>(count), buffer, &got, &end);
    });
    if (result != S_OK)
    {
        FailRead(result);
    }
    part.bytes.resize(static_cast<std::size_t>(got));
    part.isEnd = end == VARIANT_TRUE;
    return part;
}

std::string CInstrumentLink::ReadLine()
{
    ResponsePart part = Read(kMaxLine);
    if (!part.isEnd)
    {
        throw CToolError(ExitCode::Failed,
                         fmt::format("{}: an answer of more than {} bytes", m_address, kMaxLine));
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
    m_controller->ForgetLastResult();
    m_controller->ShowOn(&bar);
    const HRESULT result = Call([&] { return transfer(Wide(name)); });
    m_controller->ShowOn(nullptr);
    if (result == S_FALSE && m_controller->LastResult() == S_OK)
    {
        CComBSTR text;
        m_controller->GetLastError(&text);
        throw CToolError(ExitCode::NoAccess, fmt::format("{}: {}", name, Narrow(text)));
    }
    if (result != S_OK)
    {
        const HRESULT cause = result == E_ABORT ? result : m_controller->LastResult();
        what[0] == 's' ? FailSend(cause) : FailRead(cause);
    }
}

void CInstrumentLink::SendFile(const std::string& name, std::size_t size)
{
    long sent = 0;
    Transfer("sending", name, size, [&](const CComBSTR& file) {
        return m_controller->WriteFromFile(file, static_cast<long>(size), VARIANT_TRUE, &sent);
    });
    if (static_cast<std::size_t>(sent) != size)
    {
        throw CToolError(ExitCode::NoAccess,
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
            return m_controller->ReadToFile(file, static_cast<long>(size), &got, &end);
        });
    }
    catch (const CToolError& error)
    {
        throw CToolError(error.Code(), fmt::format("{}; {} is not complete", error.what(), name));
    }
    if (static_cast<std::size_t>(got) != size)
    {
        throw CToolError(ExitCode::NoAccess,
                         fmt::format("{}: an answer that ends within a block", m_address));
    }
}

} // namespace ZoVelkor::Tools
