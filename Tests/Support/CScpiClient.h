#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ZoVelkor::Testing
{

/// A plain SCPI client over TCP for tests.
///
/// Reads give up after half a minute. Errors: std::runtime_error, so a test fails instead of hanging.
class CScpiClient
{
public:
    explicit CScpiClient(std::uint16_t port, const std::string& address = "127.0.0.1");
    CScpiClient(CScpiClient&& other) noexcept;
    CScpiClient& operator=(CScpiClient&&) = delete;
    ~CScpiClient();

    /// Sends bytes as they are.
    void Send(std::string_view bytes);
    /// Sends a program message with its line feed.
    void Write(std::string_view message);
    /// Reads up to a line feed, which is dropped.
    std::string ReadLine();
    /// Reads exactly so many bytes.
    std::string Read(std::size_t count);
    /// Reads a definite-length block and the line feed behind it; gives the contents.
    std::string ReadBlock();
    std::string Query(std::string_view message);

    /// Closes the sending half.
    void FinishSending();
    /// Breaks the connection at once, with a reset instead of an orderly end.
    void Reset();
    /// Tells whether the server has closed the connection; waits for a byte or the end.
    bool IsClosedByServer();

private:
    void Receive();
    void Close() noexcept;

    int m_socket = -1;
    std::string m_received;
};

/// Runs a conversation and checks each answer.
///
/// One step a line: "-> message" is sent, "<- text" is the next line of the answer. Lines of any other form
/// are comments.
void Converse(CScpiClient& client, std::string_view script);

} // namespace ZoVelkor::Testing
