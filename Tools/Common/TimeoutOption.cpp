#include "TimeoutOption.h"

#include <charconv>
#include <cmath>
#include <string>

namespace ZoVelkor::Tools
{

namespace
{

/// Not a number is in no range.
std::string FindTimeoutFault(const std::string& text)
{
    double seconds = 0.0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = fault == std::errc() && end == text.data() + text.size();
    return isNumber && seconds >= 0.001 && seconds <= 86400.0 ? "" : text + " is not from 0.001 to 86400";
}

} // namespace

CLI::Option& AddTimeoutOption(CLI::App& command, double& seconds)
{
    return *command.add_option("--timeout", seconds, "Longest wait for an instrument, in seconds")
                ->type_name("SECONDS")
                ->check(CLI::Validator(FindTimeoutFault, "0.001 to 86400"))
                ->capture_default_str();
}

std::chrono::milliseconds Milliseconds(double seconds)
{
    return std::chrono::milliseconds(std::lround(seconds * 1000.0));
}

} // namespace ZoVelkor::Tools
