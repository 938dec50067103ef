#pragma once

#include "CCommandError.h"

#include <optional>
#include <utility>
#include <variant>

namespace ZoVelkor::Commands
{

/// What a handler that does not throw returns: a value or an error.
template <class T>
class CCommandResult
{
public:
    /// Success with a value.
    CCommandResult(T value) : m_content(std::in_place_index<0>, std::move(value)) {}
    /// An error.
    CCommandResult(CCommandError error) : m_content(std::in_place_index<1>, std::move(error)) {}

    /// @return null when there is a value
    const CCommandError* Error() const noexcept { return std::get_if<1>(&m_content); }
    /// Only when there is no error.
    const T& Value() const { return std::get<0>(m_content); }

private:
    std::variant<T, CCommandError> m_content;
};

/// Success or an error, for a handler without response.
template <>
class CCommandResult<void>
{
public:
    /// Success.
    CCommandResult() = default;
    /// An error.
    CCommandResult(CCommandError error) : m_error(std::move(error)) {}

    /// @return null for success
    const CCommandError* Error() const noexcept { return m_error ? &*m_error : nullptr; }

private:
    std::optional<CCommandError> m_error;
};

} // namespace ZoVelkor::Commands
