#pragma once

#include <type_traits>
#include <utility>

/// Wraps a type whose operator& is overloaded (CComPtr, CComBSTR), so that it can live in containers and
/// algorithms which take addresses.
template <class T>
class CAdapt
{
public:
    CAdapt() = default;
    CAdapt(const T& value) : m_T(value) {}
    CAdapt(T&& value) noexcept(std::is_nothrow_move_constructible_v<T>) : m_T(std::move(value)) {}

    operator T&() noexcept { return m_T; }
    operator const T&() const noexcept { return m_T; }

    friend bool operator==(const CAdapt& left, const CAdapt& right) { return left.m_T == right.m_T; }
    friend bool operator<(const CAdapt& left, const CAdapt& right) { return left.m_T < right.m_T; }

    T m_T{};
};
