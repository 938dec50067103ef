#pragma once

#include "CCommandExecutionData.h"

#include <bitset>
#include <cstddef>
#include <vector>

namespace ZoVelkor::Demo
{

inline constexpr std::size_t kSwitchCount = 8; ///< ROUTe: channels 1 to 8

/// The signal switches behind ROUTe:CLOSe; a new object has all of them open.
class CSwitchBoard
{
public:
    /// Closes just the listed switches, as a selector does: all others open. The query takes a list too and
    /// answers 1 for each closed switch, 0 for an open one; the list (@) opens all and is no query.
    ///
    /// @return as handlers do; -171 for a bad list, -223 for too many channels, -222 for a switch that is not
    /// there, -224 for a query of no switch
    HRESULT HandleClose(CCommandExecutionData& record);

    /// Opens all.
    void Reset() { m_closed.reset(); }

    /// All switches as a number: bit n - 1 is set when switch n is closed.
    unsigned long Closed() const { return m_closed.to_ulong(); }
    void SetClosed(unsigned long closed) { m_closed = closed; }

private:
    static HRESULT ReadSwitches(CCommandExecutionData& record, std::vector<std::size_t>& switches);

    std::bitset<kSwitchCount> m_closed; ///< switch n is closed when bit n - 1 is set
};

} // namespace ZoVelkor::Demo
