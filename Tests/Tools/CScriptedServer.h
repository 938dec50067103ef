#pragma once

#include "Instrument/InstrumentAddress.h"

#include <string>
#include <string_view>

namespace ZoVelkor::Tools::Testing
{

/// A connection that the test serves by hand. Faults end the test with std::runtime_error.
class CPeer
{
public:
    explicit CPeer(int socket) : m_socket(socket) {}
    CPeer(CPeer&& other) noexcept;
    CPeer& operator=(CPeer&&) = delete;
    ~CPeer();

    void Send(std::string_view bytes);
    /// One packet a byte.
    void Drip(std::string_view bytes);
    /// Reads until the text has come; gives all that came.
    std::string ReadTo(std::string_view text);
    /// Ends the sending half.
    void FinishSending();
    /// Breaks the connection at once.
    void Reset();

private:
    int m_socket;
};

/// Listens on a free port of the loopback address.
class CScriptedServer
{
public:
    explicit CScriptedServer(int backlog = 100);
    CScriptedServer(const CScriptedServer&) = delete;
    CScriptedServer& operator=(const CScriptedServer&) = delete;
    ~CScriptedServer();

    const InstrumentAddress& Address() const noexcept { return m_address; }
    CPeer Accept();

private:
    int m_listener;
    InstrumentAddress m_address;
};

} // namespace ZoVelkor::Tools::Testing
