#pragma once

#include <type_traits>
#include <utility>

/// Wraps a type whose operator& is overloaded (CComPtr, CComBSTR), so that it can live in containers and
/// algorithms which take addresses.
///
/// It has the value's own copying, moving and threads; nothing is added but the address.
/// @tparam T  copyable, with a default value
template <class T>
class CAdapt
{
public:
    CAdapt() = default;
    /// Takes a copy of the value, implicitly, so that containers can be filled with plain values.
    CAdapt(const T& value) : m_T(value) {}
    /// Takes the value over.
    CAdapt(T&& value) noexcept(std::is_nothrow_move_constructible_v<T>) : m_T(std::move(value)) {}

    /// The value itself, implicitly; valid as long as this object.
    operator T&() noexcept { return m_T; }
    /// The value itself for reading.
    operator const T&() const noexcept { return m_T; }

    friend bool operator==(const CAdapt& left, const CAdapt& right) { return left.m_T == right.m_T; }
    friend bool operator<(const CAdapt& left, const CAdapt& right) { return left.m_T < right.m_T; }

    T m_T{}; ///< the value; public, because it is all that there is
};
