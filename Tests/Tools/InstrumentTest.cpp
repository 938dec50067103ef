#include "CDemoInstrument.h"
#include "ToolRunner.h"

#include <gmock/gmock.h>

#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace ZoVelkor::Tools::Testing
{

namespace
{

using testing::HasSubstr;

class DemoTable : public ToolTest
{
protected:
    std::string Address() const { return m_instrument.Address(); }
    std::string Resource() const
    {
        return "tcpip0::localhost::" + std::to_string(m_instrument.Port()) + "::socket";
    }

private:
    const Demo::CDemoInstrument m_instrument{
        {"127.0.0.1", 0}
    };
};

TEST_F(DemoTable, IsTheSameFromInstrumentAndFile)
{
    ASSERT_EQ(Run("table save " + Resource() + " -o demo.tab").exitCode, 0);
    EXPECT_EQ(Run("table check demo.tab").exitCode, 0);
    const tagRun headers = Run("table headers " + Address());
    EXPECT_EQ(headers.out, Run("table headers demo.tab").out);
    for (const char* line : {"*IDN?/qonly/\n", ":SENSe]:FREQuency:CENTer\n", ":OUTPut[:STATe]\n"})
    {
        EXPECT_THAT(headers.out, HasSubstr(line));
    }
    EXPECT_THAT(headers.out, testing::Not(HasSubstr("TABLe")));
    EXPECT_THAT(Run("table syntax --diagnostic " + Address()).out, HasSubstr(":SYSTem:HELP:TABLe?\n"));
}

TEST_F(DemoTable, FileOfThatNameComesFirst)
{
    Write(Address(), "mine");
    EXPECT_THAT(Run("table check " + Address()).out, HasSubstr("begins with 'mine'"));
}

/// Takes one connection, sends what it was given, and closes it or waits for the other side.
class CFakeInstrument
{
public:
    CFakeInstrument(std::string answer, bool closes) : m_answer(std::move(answer)), m_closes(closes)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (bind(m_listener, generic, length) != 0 || listen(m_listener, 1) != 0 ||
            getsockname(m_listener, generic, &length) != 0)
        {
            throw std::runtime_error("no socket");
        }
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { Serve(); });
    }
    CFakeInstrument(const CFakeInstrument&) = delete;
    CFakeInstrument& operator=(const CFakeInstrument&) = delete;
    ~CFakeInstrument()
    {
        shutdown(m_listener, SHUT_RDWR);
        m_thread.join();
        close(m_listener);
    }

    std::string Address() const { return "127.0.0.1:" + std::to_string(m_port); }

private:
    void Serve()
    {
        const int connection = accept(m_listener, nullptr, nullptr);
        char buffer[1000];
        // The questions are read first: closing on unread bytes would reset the connection.
        bool isOpen = recv(connection, buffer, sizeof buffer, 0) > 0;
        send(connection, m_answer.data(), m_answer.size(), MSG_NOSIGNAL);
        while (isOpen && !m_closes)
        {
            isOpen = recv(connection, buffer, sizeof buffer, 0) > 0;
        }
        close(connection);
    }

    const std::string m_answer;
    const bool m_closes;
    const int m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::uint16_t m_port = 0;
    std::thread m_thread;
};

struct tagBadAnswer
{
    const char* answer;
    bool closes;
    int exitCode;
    const char* err;
};

// clang-format off
constexpr tagBadAnswer kBadAnswers[] = {
    {"-113,\"Undefined header;#SYST\"\r\n", false, 1, "gives no command table: -113,\"Undefined header;#SYST\"\n"},
    {"-300,\"Too many connections\"\n",     true,  1, "gives no command table: -300,\"Too many connections\"\n"},
    {"0,\"No error\"\n",                    false, 1, "gives no command table: 0,\"No error\"\n"},
    {"2.00,#6000040 \n",                    false, 1, "gives no command table: 2.00,#6000040 \n"},
    {"1.00,#6\x1B[2Jxx",                    false, 1, "gives no command table: 1.00,#6?[2Jxx\n"},
    {"1.00,#6000041xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", false, 1, "41 bytes are no whole number"},
    {"1.00,#6000040xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", false, 1, "record 0, length"},
    {"",                                    true,  3, "closed the connection in the middle of an answer (0 bytes"},
    {"1.00,#6000040xxx",                    true,  3, "closed the connection in the middle of an answer (3 bytes"},
    {"1.00,#6000040xxx",                    false, 3, "no complete answer within 0.05 s (3 bytes of it came)"},
};
// clang-format on

TEST_F(ToolTest, BadAnswersOfInstruments)
{
    for (const tagBadAnswer& row : kBadAnswers)
    {
        SCOPED_TRACE(row.err);
        const CFakeInstrument instrument(row.answer, row.closes);
        const bool isSilent = row.exitCode == 3 && !row.closes;
        const tagRun run =
            Run("table save " + instrument.Address() + " -o x --timeout " + (isSilent ? "0.05" : "60"));
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_THAT(run.err, HasSubstr(instrument.Address()));
        EXPECT_THAT(run.err, HasSubstr(row.err));
        EXPECT_FALSE(Exists("x"));
    }
}

TEST_F(ToolTest, NobodyListensOrTheHostIsUnknown)
{
    std::string address;
    {
        const CFakeInstrument instrument("", true);
        address = instrument.Address();
        Run("table headers " + address);
    }
    const tagRun refused = Run("table headers " + address);
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_EQ(refused.err, "zo: cannot connect to " + address + ": Connection refused\n");
    const tagRun unknown = Run("table headers no..host:5025");
    EXPECT_EQ(unknown.exitCode, 3);
    EXPECT_THAT(unknown.err, HasSubstr("cannot find host no..host: "));
}

} // namespace

} // namespace ZoVelkor::Tools::Testing
