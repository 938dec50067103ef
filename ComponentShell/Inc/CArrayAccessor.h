#pragma once

#include "ZoExport.h"

#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

namespace ZoVelkor
{
/// Raises "Array index out of range" (E_INVALIDARG) with index and size; the out-of-line half of
/// CArrayAccessor.
[[noreturn]] ZO_EXPORT void ThrowArrayIndexError(unsigned long index, unsigned long size);

/// An array of values that components hand to each other; owns its elements, a copy copies them.
///
/// Indexes and sizes are counted in elements, from 0. An index outside the array is a mistake of the caller
/// and raised as an internal error. Any operation that changes the size makes references and iterators
/// invalid; one that runs out of memory throws std::bad_alloc and changes nothing.
///
/// Threads: like a plain value; readers may share it, a writer needs it for itself.
/// @tparam T  copyable, and with a default value for SetSize; not bool
template <class T>
class CArrayAccessor
{
    static_assert(!std::is_same_v<T, bool>, "elements must have an address; use VARIANT_BOOL");

public:
    /// Position in the array, for loops and algorithms.
    using iterator = typename std::vector<T>::iterator;
    /// The same for reading.
    using const_iterator = typename std::vector<T>::const_iterator;

    /// Without elements.
    CArrayAccessor() = default;
    /// With copies of the values in their order.
    CArrayAccessor(std::initializer_list<T> values) : m_values(values) {}

    /// Number of elements.
    unsigned long GetSize() const noexcept { return m_values.size(); }
    /// Whether there are no elements.
    bool IsEmpty() const noexcept { return m_values.empty(); }

    /// Grows with default values or drops elements at the end; the others keep their values.
    ///
    /// @throws std::bad_alloc or std::length_error; the array is then as before
    void SetSize(unsigned long size) { m_values.resize(size); }

    /// Element at an index counted from 0.
    ///
    /// @throws CShellError "Array index out of range" when index >= GetSize()
    T& operator[](unsigned long index)
    {
        CheckIndex(index);
        return m_values[index];
    }
    /// The same for reading.
    const T& operator[](unsigned long index) const
    {
        CheckIndex(index);
        return m_values[index];
    }

    /// Adds one element at the end.
    void Append(T value) { m_values.push_back(std::move(value)); }

    /// Removes all elements.
    void Clear() noexcept { m_values.clear(); }

    /// The elements one after the other in memory; null or not, it must not be followed when empty.
    T* GetData() noexcept { return m_values.data(); }
    /// The same for reading.
    const T* GetData() const noexcept { return m_values.data(); }

    /// The first element; equal to end() when there are none.
    iterator begin() noexcept { return m_values.begin(); }
    /// One behind the last element.
    iterator end() noexcept { return m_values.end(); }
    /// The first element, for reading.
    const_iterator begin() const noexcept { return m_values.begin(); }
    /// One behind the last element, for reading.
    const_iterator end() const noexcept { return m_values.end(); }

    /// Equal with as many elements, each equal to its counterpart.
    bool operator==(const CArrayAccessor&) const = default;

private:
    void CheckIndex(unsigned long index) const
    {
        if (index >= m_values.size())
        {
            ThrowArrayIndexError(index, m_values.size());
        }
    }

    std::vector<T> m_values;
};
} // namespace ZoVelkor
