#pragma once

#include "CCommandIndex.h"
#include "CParameterArray.h"

#include <cstddef>
#include <cstdint>

namespace ZoVelkor::RemoteKernel
{

/// The part of a message that has not been parsed.
struct Cursor
{
    char* place = nullptr;
    char* end = nullptr;

    bool AtEnd() const noexcept { return place == end; }
    bool AtUnitEnd() const noexcept { return AtEnd() || *place == ';'; }
    bool AtElementEnd() const noexcept { return AtUnitEnd() || *place == ','; }
    void SkipWhite() noexcept;
};

/// Error for a character where only a separator or the end may stand.
short SeparatorError(char c) noexcept;

/// Fault of a command that cannot run before its block has been collected; no SCPI error.
inline constexpr short kNeedsWholeBlock = 1;

/// What is wrong with the parameters of one command.
struct ParameterFault
{
    short error = 0; ///< 0: nothing
    std::size_t index = 0;
    const char* place = nullptr; ///< start of the offending element
};

/// Reads the parameters of one command into records and checks them against the command's table.
class CParameterParser
{
public:
    /// Reads everything up to the end of the unit.
    ///
    /// An execution error is kept while the rest is read; a command error comes at once.
    /// @param optional  the query of a command with both forms: parameters only ask for limits and the like
    /// @param stream  the block whose header is the last thing before the cursor's end; null when there is
    ///                none. It has to be the command's last parameter, else the fault is kNeedsWholeBlock
    ParameterFault Parse(const CCommandIndex& index,
                         const CommandEntry& entry,
                         bool optional,
                         Cursor& cursor,
                         CBlockStream* stream);

    CParameterArray& Records() noexcept { return m_records; }

private:
    const ParameterSpec* SpecFor(std::size_t parameter) const noexcept;
    short ReadParameter(const ParameterSpec& spec, std::uint32_t type);

    short ReadElement(tagZO_SCPI_PARAMETER& record);
    short ReadNumber(tagZO_SCPI_PARAMETER& record);
    short CheckSign(bool isZero, bool isNegative) const noexcept;
    short ReadUnit(const Unit*& unit) noexcept;
    short ReadHash(tagZO_SCPI_PARAMETER& record);
    short ReadNonDecimal(tagZO_SCPI_PARAMETER& record, unsigned int bits) noexcept;
    short ReadBlock(tagZO_SCPI_PARAMETER& record);
    short StoreStream(tagZO_SCPI_PARAMETER& record);
    short ReadWord(tagZO_SCPI_PARAMETER& record) noexcept;
    short UnknownWordError(const Mnemonic& word) const noexcept;
    bool TakeOwnWord(tagZO_SCPI_PARAMETER& record, const Mnemonic& word) const noexcept;
    bool TakeSpecialWord(tagZO_SCPI_PARAMETER& record, const Mnemonic& word) const noexcept;
    short ReadString(tagZO_SCPI_PARAMETER& record) noexcept;
    short ReadUnquoted(tagZO_SCPI_PARAMETER& record) noexcept;
    short ReadExpression(tagZO_SCPI_PARAMETER& record) noexcept;

    CParameterArray m_records;

    // Of the command at work.
    const CCommandIndex* m_index = nullptr;
    std::span<const ParameterSpec> m_specs;
    Cursor m_cursor;
    bool m_optional = false;
    CBlockStream* m_stream = nullptr; ///< null also when a record has it

    // Of the parameter at work.
    const ParameterSpec* m_spec = nullptr;
    std::uint32_t m_type = 0;
};

} // namespace ZoVelkor::RemoteKernel
