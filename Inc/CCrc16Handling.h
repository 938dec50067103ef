#pragma once

#include "ZoExport.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace ZoVelkor
{

/// Checksum CRC-16/X-25: reflected polynomial 0x1021, initial value 0xFFFF, result inverted (ITU-T X.25,
/// 2.2.7). The nine characters 123456789 give 0x906E.
///
/// Threads: any operation from any thread. The table is built at the first use without a lock; threads that
/// meet there write the same values.
class ZO_EXPORT CCrc16Handling
{
public:
    /// Builds the table; Calculate does so by itself where nobody has.
    static void CreateCrc16Table() noexcept;

    /// Checksum of a buffer.
    ///
    /// @param data    length bytes, borrowed; may be null when length is 0
    /// @return the checksum; that of an empty buffer is 0
    static std::uint16_t Calculate(const unsigned char* data, unsigned int length) noexcept;

private:
    static std::array<std::atomic<std::uint32_t>, 16> m_CrcTbl;
    static std::atomic<bool> m_bCrcTblInit;
};

} // namespace ZoVelkor
