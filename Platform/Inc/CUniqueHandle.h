#pragma once

#include <utility>

/// Owner of a resource that is described by its handle type, its closing function and its invalid value.
///
/// @tparam TClose    called once with the handle on destruction; its result is ignored
/// @tparam TInvalid  value that means "nothing held"
template <auto TClose, class THandle, THandle TInvalid>
class CUniqueHandle
{
public:
    constexpr CUniqueHandle() noexcept = default;
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

    [[nodiscard]] THandle Get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != TInvalid; }

    /// Hands the resource to the caller.
    [[nodiscard]] THandle Detach() noexcept { return std::exchange(m_handle, TInvalid); }

    /// Closes what is held and takes over another resource.
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
