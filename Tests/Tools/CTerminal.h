#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace ZoVelkor::Tools::Testing
{

/// The real tool on a terminal of its own.
class CTerminal
{
public:
    /// @param folder  where it runs and keeps its state
    CTerminal(const std::filesystem::path& folder, std::vector<std::string> arguments);
    CTerminal(const CTerminal&) = delete;
    CTerminal& operator=(const CTerminal&) = delete;
    ~CTerminal();

    void Type(std::string_view keys);
    /// Waits until the text is on the terminal, behind what was waited for before.
    ///
    /// @return what came up to its end; without the text when the tool has ended or half a minute has passed
    std::string WaitFor(std::string_view text);
    /// Waits as ExitCodeOf.
    int WaitForExit();

private:
    int m_terminal = -1;
    pid_t m_process = -1;
    std::string m_shown;
};

} // namespace ZoVelkor::Tools::Testing
