#include "CTerminal.h"

#include "ToolRunner.h"

#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace ZoVelkor::Tools::Testing
{

CTerminal::CTerminal(const std::filesystem::path& folder, std::vector<std::string> arguments)
{
    std::string settings[] = {"TERM=xterm", "XDG_STATE_HOME=" + folder.string(), "HOME=" + folder.string()};
    char* const environment[] = {settings[0].data(), settings[1].data(), settings[2].data(), nullptr};
    std::string tool = "zo";
    std::vector<char*> argv{tool.data()};
    for (std::string& argument : arguments)
    {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    m_process = forkpty(&m_terminal, nullptr, nullptr, nullptr);
    if (m_process == 0)
    {
        // Between fork and exec of a program with threads only what is safe in a signal handler is done.
        // Whoever started the tests may ignore or block signals, the interrupt key among them.
        for (int number = 1; number < NSIG; ++number)
        {
            signal(number, SIG_DFL);
        }
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        static_cast<void>(chdir(folder.c_str()));
        execve(ZO_TOOL, argv.data(), environment);
        _exit(127);
    }
    if (m_process < 0)
    {
        throw std::runtime_error("no terminal");
    }
}

CTerminal::~CTerminal()
{
    close(m_terminal);
    if (m_process > 0)
    {
        kill(m_process, SIGKILL);
        ExitCodeOf(m_process);
    }
}

void CTerminal::Type(std::string_view keys)
{
    if (write(m_terminal, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
    {
        throw std::runtime_error("cannot type");
    }
}

std::string CTerminal::WaitFor(std::string_view text)
{
    pollfd descriptor{m_terminal, POLLIN, 0};
    std::size_t place = 0;
    while ((place = m_shown.find(text)) == std::string::npos && poll(&descriptor, 1, 30000) > 0)
    {
        char buffer[4096];
        const ssize_t count = read(m_terminal, buffer, sizeof buffer);
        if (count <= 0)
        {
            break;
        }
        m_shown.append(buffer, static_cast<std::size_t>(count));
    }
    const std::size_t end = place == std::string::npos ? m_shown.size() : place + text.size();
    std::string shown = m_shown.substr(0, end);
    m_shown.erase(0, end);
    return shown;
}

int CTerminal::WaitForExit()
{
    return ExitCodeOf(std::exchange(m_process, -1));
}

} // namespace ZoVelkor::Tools::Testing
