#include "ToolRunner.h"

#include "CUniqueHandle.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ZoVelkor::Tools::Testing
{

int ExitCodeOf(pid_t process)
{
    constexpr int kLimitMs = 30000;
    const CUniqueHandle<&close, int, -1> exit(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    pollfd ended{exit.Get(), POLLIN, 0};
    int count = 0;
    do
    {
        count = poll(&ended, 1, kLimitMs);
    } while (count < 0 && errno == EINTR);
    if (count != 1)
    {
        kill(process, SIGKILL);
        ADD_FAILURE() << "process " << process << " has not ended within " << kLimitMs
                      << " ms and was killed";
    }
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string TableFile(std::span<const _CMD_SET_RECORD> records)
{
    char prefix[32];
    std::snprintf(prefix, sizeof prefix, "1.00,#6%06zu", records.size_bytes());
    return std::string(prefix).append(reinterpret_cast<const char*>(records.data()), records.size_bytes());
}

ToolTest::ToolTest()
{
    std::string name = (std::filesystem::temp_directory_path() / "zo-tool-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
    {
        throw std::runtime_error("no folder " + name);
    }
    m_folder = name;
}

ToolTest::~ToolTest()
{
    std::filesystem::remove_all(m_folder);
}

ToolRun ToolTest::Run(const std::string& arguments, std::string_view input, int output, int error) const
{
    std::istringstream words("zo " + arguments);
    std::vector<std::string> texts;
    for (std::string text; words >> std::quoted(text, '\'');)
    {
        texts.push_back(text);
    }
    std::vector<char*> argv;
    for (std::string& text : texts)
    {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    Write(".in", input);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, m_folder.c_str());
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, ".in", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, ".out", O_CREAT | O_TRUNC | O_WRONLY, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, ".err", O_CREAT | O_TRUNC | O_WRONLY, 0600);
    if (output >= 0)
    {
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    }
    if (error >= 0)
    {
        posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
    }
    // Whoever started the tests may ignore or block signals; the tool meets them as in a shell of its own.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    pid_t process = 0;
    const int fault = posix_spawn(&process, ZO_TOOL, &actions, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    const int exitCode = fault == 0 ? ExitCodeOf(process) : -1;
    return {exitCode, Read(".out"), Read(".err")};
}

void ToolTest::Write(const std::string& name, std::string_view bytes) const
{
    std::ofstream(m_folder / name, std::ios::binary) << bytes;
}

std::string ToolTest::Read(const std::string& name) const
{
    std::ifstream file(m_folder / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace ZoVelkor::Tools::Testing
