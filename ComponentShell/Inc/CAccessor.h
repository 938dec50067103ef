#pragma once

#include "ZoExport.h"

#include <optional>
#include <utility>

namespace ZoVelkor
{
/// Raises "Value is not set" (E_UNEXPECTED); the out-of-line half of CAccessor.
[[noreturn]] ZO_EXPORT void ThrowValueNotSetError();

/// One value that components hand to each other, or the fact that there is none; owns the value.
///
/// Threads: like a plain value; readers may share it, a writer needs it for itself.
template <class T>
class CAccessor
{
public:
    /// Without a value.
    CAccessor() = default;
    explicit CAccessor(T value) : m_value(std::move(value)) {}

    bool IsSet() const noexcept { return m_value.has_value(); }

    /// The value.
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

    void Put(T value) { m_value = std::move(value); }

    /// Drops the value.
    void Clear() noexcept { m_value.reset(); }

    bool operator==(const CAccessor&) const = default;

private:
    std::optional<T> m_value;
};
} // namespace ZoVelkor
