#include "ToolRunner.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace ZoVelkor::Tools::Testing
{

namespace
{

int Wait(pid_t process)
{
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

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
    pid_t process = 0;
    const int fault = posix_spawn(&process, ZO_TOOL, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    const int exitCode = fault == 0 ? Wait(process) : -1;
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
