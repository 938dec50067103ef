#pragma once

#include "ZoExport.h"

#include <optional>
#include <utility>

namespace ZoVelkor
{
/// Raises "Value is not set" (E_UNEXPECTED); the out-of-line half of CAccessor, so that its users do not
/// carry the report along.
[[noreturn]] ZO_EXPORT void ThrowValueNotSetError();

/// One value that components hand to each other, or the fact that there is none; owns the value.
///
/// Asking for a value that is not there is a mistake of the asker and raised as an internal error; who does
/// not know asks IsSet first or names a fallback.
///
/// Threads: like a plain value; readers may share it, a writer needs it for itself.
/// @tparam T  copyable; the operations throw what its copying throws
template <class T>
class CAccessor
{
public:
    /// Without a value.
    CAccessor() = default;
    /// With a value.
    explicit CAccessor(T value) : m_value(std::move(value)) {}

    /// Whether there is a value.
    bool IsSet() const noexcept { return m_value.has_value(); }

    /// The value, valid until the next change.
    ///
    /// @throws CShellError "Value is not set" when there is none
    const T& Get() const
    {
        if (!m_value.has_value())
        {
            ThrowValueNotSetError();
        }
        return *m_value;
    }

    /// The value, or the fallback when there is none.
    T GetOr(T fallback) const { return m_value.value_or(std::move(fallback)); }

    /// Sets the value in place of a former one.
    void Put(T value) { m_value = std::move(value); }

    /// Drops the value.
    void Clear() noexcept { m_value.reset(); }

    /// Equal when both have equal values, or neither has one.
    bool operator==(const CAccessor&) const = default;

private:
    std::optional<T> m_value;
};
} // namespace ZoVelkor
