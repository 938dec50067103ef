#pragma once

#include <utility>

/// Owner of a resource that is described by its handle type, its closing function and its invalid value.
///
/// Movable, not copyable: a moved-from owner holds nothing. Closing on the way out leaves the result of the
/// closing function aside; who needs it detaches the handle and closes it. Threads: like a plain value.
/// @tparam TClose    called once with each handle, on destruction and on Reset; its result is ignored
/// @tparam THandle   a plain value such as a descriptor, a HANDLE or a pointer
/// @tparam TInvalid  value that means "nothing held"
template <auto TClose, class THandle, THandle TInvalid>
class CUniqueHandle
{
public:
    constexpr CUniqueHandle() noexcept = default;
    /// Takes over a resource; TInvalid is nothing.
    explicit constexpr CUniqueHandle(THandle handle) noexcept : m_handle(handle) {}
    CUniqueHandle(const CUniqueHandle&) = delete;
    CUniqueHandle& operator=(const CUniqueHandle&) = delete;
    CUniqueHandle(CUniqueHandle&& other) noexcept : m_handle(other.Detach()) {}
    CUniqueHandle& operator=(CUniqueHandle&& other) noexcept
    {
        if (this != &other)
        {
            Reset(other.Detach());
        }
        return *this;
    }
    ~CUniqueHandle() { Reset(); }

    /// The handle, borrowed; TInvalid when nothing is held.
    [[nodiscard]] THandle Get() const noexcept { return m_handle; }
    /// Whether a resource is held.
    explicit operator bool() const noexcept { return m_handle != TInvalid; }

    /// Hands the resource to the caller, who closes it, and holds nothing.
    [[nodiscard]] THandle Detach() noexcept { return std::exchange(m_handle, TInvalid); }

    /// Closes what is held and takes over another resource, or none.
    ///
    /// The same handle once more would be closed under its owner: it must be another one.
    void Reset(THandle handle = TInvalid) noexcept
    {
        const THandle former = std::exchange(m_handle, handle);
        if (former != TInvalid)
        {
            static_cast<void>(TClose(former));
        }
    }

private:
    THandle m_handle = TInvalid;
};
