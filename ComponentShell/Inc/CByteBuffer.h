#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

namespace ZoVelkor
{

/// Queue of bytes in one piece of memory: grows at its end, is consumed at its start.
///
/// New memory is not zeroed, and growing a large buffer does not copy it. Threads: one at a time.
/// Errors: std::bad_alloc, with the contents unchanged.
class CByteBuffer
{
public:
    char* Data() noexcept { return m_memory.get() + m_begin; }
    const char* Data() const noexcept { return m_memory.get() + m_begin; }
    std::size_t Size() const noexcept { return m_end - m_begin; }
    bool IsEmpty() const noexcept { return m_begin == m_end; }
    std::size_t Capacity() const noexcept { return m_capacity; }
    std::string_view View() const noexcept { return {Data(), Size()}; }

    /// Bytes that fit behind the end without growing.
    std::size_t Space() const noexcept { return m_capacity - m_end; }

    /// Makes room behind the end, at least doubling the memory when it has to grow.
    char* Reserve(std::size_t extra)
    {
        if (Space() < extra)
        {
            MakeRoom(extra, 2 * m_capacity);
        }
        return m_memory.get() + m_end;
    }

    /// As Reserve, but grows no further than asked.
    char* ReserveExactly(std::size_t extra)
    {
        if (Space() < extra)
        {
            MakeRoom(extra, 0);
        }
        return m_memory.get() + m_end;
    }

    /// Takes over bytes that were written into reserved room.
    void Commit(std::size_t count) noexcept { m_end += count; }

    void Append(const char* bytes, std::size_t count)
    {
        if (count != 0)
        {
            std::memcpy(Reserve(count), bytes, count);
            m_end += count;
        }
    }

    /// Drops bytes at the start.
    void Consume(std::size_t count) noexcept
    {
        m_begin += count;
        if (m_begin == m_end)
        {
            m_begin = m_end = 0;
        }
    }

    /// Drops bytes at the end.
    void Truncate(std::size_t size) noexcept { m_end = m_begin + size; }

    void Clear() noexcept { m_begin = m_end = 0; }

    /// Gives memory beyond `keep` bytes back, unless there is something in it.
    void ReleaseMemory(std::size_t keep) noexcept
    {
        if (IsEmpty() && m_capacity > keep)
        {
            m_memory.reset();
            m_capacity = 0;
        }
    }

private:
    struct Free
    {
        void operator()(char* memory) const noexcept { std::free(memory); }
    };

    void MakeRoom(std::size_t extra, std::size_t suggestedCapacity)
    {
        if (m_begin != 0)
        {
            std::memmove(m_memory.get(), Data(), Size());
            m_end -= m_begin;
            m_begin = 0;
        }
        if (Space() >= extra)
        {
            return;
        }
        const std::size_t needed = m_end + extra;
        const std::size_t capacity = needed < suggestedCapacity ? suggestedCapacity : needed;
        // realloc moves large memory by remapping its pages.
        auto* memory = static_cast<char*>(std::realloc(m_memory.get(), capacity));
        if (memory == nullptr)
        {
            throw std::bad_alloc();
        }
        static_cast<void>(m_memory.release());
        m_memory.reset(memory);
        m_capacity = capacity;
    }

    std::unique_ptr<char, Free> m_memory;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::size_t m_capacity = 0;
};

} // namespace ZoVelkor
