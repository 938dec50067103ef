#pragma once

#include "ScpiCommandTable.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace ZoVelkor::Tools::Testing
{

/// What came of one run of the tool.
struct ToolRun
{
    int exitCode = -1; ///< -1 when a signal ended it
    std::string out;
    std::string err;
};

/// Waits until a process has ended; one that takes longer than half a minute is killed and fails the test.
///
/// @return the exit code, or -1 when a signal ended it
int ExitCodeOf(pid_t process);

/// A table file of records, whatever they are.
std::string TableFile(std::span<const _CMD_SET_RECORD> records);

/// A folder of its own, in which the real tool runs.
class ToolTest : public testing::Test
{
protected:
    ToolTest();
    ~ToolTest() override;

    /// Runs the tool with arguments, which blanks separate; one that begins with ' goes to the next '.
    ///
    /// @param output  descriptor for its standard output; -1 collects it
    /// @param error   the same for its standard error
    ToolRun
    Run(const std::string& arguments, std::string_view input = "", int output = -1, int error = -1) const;

    void Write(const std::string& name, std::string_view bytes) const;
    std::string Read(const std::string& name) const;
    const std::filesystem::path& Folder() const { return m_folder; }
    bool Exists(const std::string& name) const { return std::filesystem::exists(m_folder / name); }

private:
    std::filesystem::path m_folder;
};

} // namespace ZoVelkor::Tools::Testing
