#pragma once

#include "ErrorRaising.h"
#include "ScpiParserTree.h"

#include <fmt/format.h>

#include <cstdint>
#include <utility>

namespace ZoVelkor
{

/// Raises an internal error of the shell's own code unless the condition holds.
inline void Require(const tagSourceUnit& unit,
                    bool holds,
                    const char* condition,
                    const char* message,
                    int line = __builtin_LINE())
{
    if (!holds)
    {
        ThrowError(ErrorAt(unit, line, nullptr, condition, message, ZO_E_SHELL));
    }
}

/// The same for a call that must give S_OK; the message tells what it gave.
///
/// @param condition  the call as source text
inline void
RequireOk(const tagSourceUnit& unit, HRESULT result, const char* condition, int line = __builtin_LINE())
{
    if (result != S_OK)
    {
        const auto code = static_cast<std::uint32_t>(result);
        Require(unit, false, condition, fmt::format("Unexpected result 0x{:08X}", code).c_str(), line);
    }
}

inline void RequireInterface(const tagSourceUnit& unit,
                             const void* interface,
                             const char* condition,
                             int line = __builtin_LINE())
{
    Require(unit, interface != nullptr, condition, "Missing interface", line);
}

/// A command table as parsers take it.
///
/// @throws CShellError for a length that is negative or beyond 32 bits
inline tagZO_SCPI_PARSER_TREE MakeParserTree(const tagSourceUnit& unit, long length, const char* data)
{
    Require(unit,
            std::in_range<std::uint32_t>(length),
            "in_range<uint32_t>(length)",
            "Length of the command tree is out of range");
    return {static_cast<std::uint32_t>(length), reinterpret_cast<const _CMD_SET_RECORD*>(data)};
}

} // namespace ZoVelkor
