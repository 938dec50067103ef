#pragma once

#include "ZoExport.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ZoVelkor
{

/// Register values as lists of bit names: OPER,MAV for 144 in the status byte.
///
/// Values are bit patterns of 32 bits, 0 to 0xFFFFFFFF. Threads: any; the tables are never changed. They are
/// ready when the library is loaded, so initialisers of other modules may use them.
class ZO_EXPORT CScpiExpression
{
public:
    /// Bit names in capitals with their bits, highest bit first.
    using Trafo = std::vector<std::pair<std::string, std::int32_t>>;

    static const Trafo s_StatusByteTrafo;    ///< status byte (IEEE 488.2, 11.2; SCPI-99 vol. 1, 9)
    static const Trafo s_StandardEventTrafo; ///< standard event status register (IEEE 488.2, 11.5.1)
    static const Trafo s_ParallelPollTrafo;  ///< parallel poll enable register (IEEE 488.2, 11.6)

    CScpiExpression() = default;
    CScpiExpression(const CScpiExpression&) = default;
    CScpiExpression& operator=(const CScpiExpression&) = default;
    virtual ~CScpiExpression() = default;

    /// Makes the table of a list like "(PON,URQ,CME)".
    ///
    /// @param list  names in capitals, the last one for bit 0; taken as they are, blanks included. Of more
    ///              than 32 names the first ones have no bit: their value is 0. An empty list has no names.
    static Trafo GetRegisterValueTrafo(std::string list);

    /// Reads a list of names and decimal numbers, in any case, with blanks around the elements.
    ///
    /// @param expression  an empty one is the empty list, 0
    /// @param[out] value  all elements ORed; on failure those before the wrong one
    /// @param[out] error  the wrong element, trimmed and in capitals; empty on success
    /// @return true; false when an element is no name of the table and no number up to 4294967295. An element
    ///         that is empty, has a sign or has something behind its number is wrong.
    static bool GetRegisterValueFromExpression(std::string expression,
                                               long& value,
                                               std::string& error,
                                               const Trafo& trafo);

    /// Writes a value as the names of its bits in the order of the table, followed by one number for the
    /// rest.
    ///
    /// @param value            the low 32 bits count
    /// @param[out] expression  empty for 0; GetRegisterValueFromExpression reads it back, except ESBit
    /// @return true
    static bool GetRegisterValueAsExpression(long value, std::string& expression, const Trafo& trafo);
};

} // namespace ZoVelkor
