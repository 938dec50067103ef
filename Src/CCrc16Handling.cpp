#include "CCrc16Handling.h"

#include <cstddef>

namespace ZoVelkor
{

namespace
{
constexpr std::uint32_t kEntryOfBit0 = 0x1081;
constexpr std::uint32_t kInitialValue = 0xFFFF;
} // namespace

// Entries are atomic for the threads that build the table at once; a relaxed load costs no more than a plain
// one.
constinit std::array<std::atomic<std::uint32_t>, 16> CCrc16Handling::m_CrcTbl{};
constinit std::atomic<bool> CCrc16Handling::m_bCrcTblInit{false};

void CCrc16Handling::CreateCrc16Table() noexcept
{
    for (std::size_t index = 0; index < m_CrcTbl.size(); ++index)
    {
        std::uint32_t entry = 0;
        for (unsigned int bit = 0; bit < 4; ++bit)
        {
            entry ^= ((index >> bit) & 1U) != 0 ? kEntryOfBit0 << bit : 0;
        }
        m_CrcTbl[index].store(entry, std::memory_order_relaxed);
    }
    // Releases the entries: whoever sees the mark sees them.
    m_bCrcTblInit.store(true, std::memory_order_release);
}

std::uint16_t CCrc16Handling::Calculate(const unsigned char* data, unsigned int length) noexcept
{
    if (!m_bCrcTblInit.load(std::memory_order_acquire))
    {
        CreateCrc16Table();
    }
    const auto step = [](std::uint32_t crc, std::uint32_t nibble) {
        return ((crc >> 4) & 0x0FFF) ^ m_CrcTbl[(crc ^ nibble) & 0xF].load(std::memory_order_relaxed);
    };
    std::uint32_t crc = kInitialValue;
    for (unsigned int index = 0; index < length; ++index)
    {
        const std::uint32_t byte = data[index];
        crc = step(step(crc, byte), byte >> 4);
    }
    return static_cast<std::uint16_t>(~crc);
}

} // namespace ZoVelkor
