#pragma once

#include "ScpiErrorCodes.h"

#include <exception>
#include <string>
#include <utility>

namespace ZoVelkor::Commands
{

/// A SCPI error of a command: thrown by a handler, or returned in a CCommandResult.
///
/// The standard text of the code is added where the error is delivered; the detail goes behind it.
class CCommandError : public std::exception
{
public:
    /// @param code  not 0; positive ones are device-dependent (SCPI-99 vol. 2, 21.8)
    explicit CCommandError(short code, std::string detail = {}) : m_code(code), m_detail(std::move(detail)) {}

    /// The code, not 0.
    short Code() const noexcept { return m_code; }
    /// What goes behind the standard text; may be empty.
    const std::string& Detail() const noexcept { return m_detail; }
    /// The detail.
    const char* what() const noexcept override { return m_detail.c_str(); }

private:
    short m_code;
    std::string m_detail;
};

} // namespace ZoVelkor::Commands
