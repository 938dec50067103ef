#include "BuiltInTable.h"

#include "ScpiTableMacros.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

namespace
{

constexpr std::uint32_t kEvent = 0;
constexpr std::uint32_t kQuery = QMARK;
constexpr std::uint32_t kBoth = QMARK | HDR_SET;

/// A positive integer in any base: the kernel refuses negative ones as out of range.
constexpr std::uint32_t kMaskNumber = ARG_PINT | ARG_HEX | ARG_BIN | ARG_OCT;

// Common commands whose parameters come behind the fixed part of the table.
constexpr std::size_t kEventEnable = 1;
constexpr std::size_t kPollEnable = 7;
constexpr std::size_t kPowerOnClear = 8;
constexpr std::size_t kServiceEnable = 10;

// The groups below follow one another; their first records stand at these places.
constexpr std::uint32_t kCommonCount = 15;
constexpr std::size_t kStatus = kCommonCount + 1;
constexpr std::uint32_t kError = kCommonCount + 5;
constexpr std::uint32_t kHelp = kError + 3;
constexpr std::uint32_t kHeaderText = kHelp + 3;

// clang-format off
constexpr _CMD_SET_RECORD kFixedPart[] = {
    //  keyword     without data                with data     children group         parameters   flags
    HDR("CLS",      BUILTIN_CLS,                DEF,          0,       kCommonCount, 0,           CCMD | kEvent),
    HDR("ESE",      BUILTIN_ESE_QUERY,          BUILTIN_ESE,  0,       0,            0,           CCMD | kBoth),
    HDR("ESR",      BUILTIN_ESR_QUERY,          DEF,          0,       0,            0,           CCMD | kQuery),
    HDR("IDN",      BUILTIN_IDN_QUERY,          DEF,          0,       0,            0,           CCMD | kQuery),
    HDR("IST",      BUILTIN_IST_QUERY,          DEF,          0,       0,            0,           CCMD | kQuery),
    HDR("OPC",      BUILTIN_OPC_QUERY,          BUILTIN_OPC,  0,       0,            0,           CCMD | kBoth),
    HDR("OPT",      BUILTIN_OPT_QUERY,          DEF,          0,       0,            0,           CCMD | kQuery),
    HDR("PRE",      BUILTIN_PRE_QUERY,          BUILTIN_PRE,  0,       0,            0,           CCMD | kBoth),
    HDR("PSC",      BUILTIN_PSC_QUERY,          BUILTIN_PSC,  0,       0,            0,           CCMD | kBoth),
    HDR("RST",      BUILTIN_RST,                DEF,          0,       0,            0,           CCMD | kEvent),
    HDR("SRE",      BUILTIN_SRE_QUERY,          BUILTIN_SRE,  0,       0,            0,           CCMD | kBoth),
    HDR("STB",      BUILTIN_STB_QUERY,          DEF,          0,       0,            0,           CCMD | kQuery),
    HDR("TRG",      BUILTIN_TRG,                DEF,          0,       0,            0,           CCMD | kEvent),
    HDR("TST",      BUILTIN_TST_QUERY,          DEF,          0,       0,            0,           CCMD | kQuery),
    HDR("WAI",      BUILTIN_WAI,                DEF,          0,       0,            0,           CCMD | kEvent),

    HDR("SYSTem",   DEF,                        DEF,          kCommonCount + 2, 2,   0,           0),
    HDR("STATus",   DEF,                        DEF,          0,       0,            0,           0),

    HDR("ERRor",    DEF,                        DEF,          kError,  3,            0,           0),
    HDR("HELP",     DEF,                        DEF,          kHelp,   0,            0,           0),
    HDR("VERSion",  BUILTIN_VERSION_QUERY,      DEF,          0,       0,            0,           kQuery),

    HDR("[NEXT]",   BUILTIN_ERROR_NEXT_QUERY,   DEF,          0,       3,            0,           kQuery),
    HDR("ALL",      BUILTIN_ERROR_ALL_QUERY,    DEF,          0,       0,            0,           kQuery),
    HDR("COUNt",    BUILTIN_ERROR_COUNT_QUERY,  DEF,          0,       0,            0,           kQuery),

    HDR("HEADers",  BUILTIN_HELP_HEADERS_QUERY, DEF,          0,       3,            0,           kQuery),
    HDR("SYNTax",   BUILTIN_HELP_SYNTAX_QUERY,  DEF,          0,       0,            kHeaderText, kQuery),
    HDR("TABLe",    BUILTIN_HELP_TABLE_QUERY,   DEF,          0,       0,            0,           kQuery | HDR_DIAG),

    //  name            kinds    units words keywords next flags
    PAR("command_header", ARG_STRG, 0, 0,    0,       0,   0),
};
// clang-format on

static_assert(kHeaderText + 1 == std::size(kFixedPart));

/// Writes what follows from the status registers behind the fixed part: children before their parents.
class CStatusPart
{
public:
    explicit CStatusPart(std::vector<_CMD_SET_RECORD>& table) : m_table(table) {}

    void Append()
    {
        m_table[kEventEnable].hdr.iDatatype = MaskParameter(CScpiExpression::s_StandardEventTrafo);
        m_table[kServiceEnable].hdr.iDatatype = MaskParameter(CScpiExpression::s_StatusByteTrafo);
        m_table[kPollEnable].hdr.iDatatype = MaskParameter(CScpiExpression::s_ParallelPollTrafo);
        m_table[kPowerOnClear].hdr.iDatatype = Add(PAR("power_on_flag", ARG_SINT, 0, 0, 0, 0, 0));

        const std::uint32_t power = Register(kQuestionablePowerRegister);
        const std::uint32_t frequency = Register(kQuestionableFrequencyRegister);
        const std::uint32_t questionable = Register(
            kQuestionableRegister,
            {HDR("POWer", DEF, DEF, power, 0, 0, 0), HDR("FREQuency", DEF, DEF, frequency, 0, 0, 0)});
        const std::uint32_t operation = Register(kOperationRegister);
        const std::uint32_t queue = Group({HDR("[NEXT]", BUILTIN_ERROR_NEXT_QUERY, DEF, 0, 0, 0, kQuery)});
        m_table[kStatus].hdr.iSubStart = Group({HDR("OPERation", DEF, DEF, operation, 0, 0, 0),
                                                HDR("QUEStionable", DEF, DEF, questionable, 0, 0, 0),
                                                HDR("PRESet", BUILTIN_STATUS_PRESET, DEF, 0, 0, 0, kEvent),
                                                HDR("QUEue", DEF, DEF, queue, 0, 0, 0)});
    }

private:
    std::uint32_t Add(const _CMD_SET_RECORD& record)
    {
        m_table.push_back(record);
        return static_cast<std::uint32_t>(m_table.size() - 1);
    }

    std::uint32_t Group(std::vector<_CMD_SET_RECORD> headers)
    {
        headers.front().hdr.iLength = static_cast<std::uint32_t>(headers.size());
        m_table.insert(m_table.end(), headers.begin(), headers.end());
        return static_cast<std::uint32_t>(m_table.size() - headers.size());
    }

    std::uint32_t Register(InstrumentRegister index, std::initializer_list<_CMD_SET_RECORD> children = {})
    {
        const std::int32_t form =
            BUILTIN_REGISTER_FIRST + static_cast<std::int32_t>(index) * REGISTER_FORM_COUNT;
        const std::uint32_t mask = MaskParameter(RegisterBitNames(index));
        std::vector<_CMD_SET_RECORD> headers{
            HDR("[EVENt]", form + REGISTER_EVENT_QUERY, DEF, 0, 0, 0, kQuery),
            HDR("CONDition", form + REGISTER_CONDITION_QUERY, DEF, 0, 0, 0, kQuery),
            HDR("ENABle", form + REGISTER_ENABLE_QUERY, form + REGISTER_ENABLE, 0, 0, mask, kBoth),
            HDR("PTRansition", form + REGISTER_POSITIVE_QUERY, form + REGISTER_POSITIVE, 0, 0, mask, kBoth),
            HDR("NTRansition", form + REGISTER_NEGATIVE_QUERY, form + REGISTER_NEGATIVE, 0, 0, mask, kBoth),
        };
        headers.insert(headers.end(), children);
        return Group(std::move(headers));
    }

    /// A list of numbers and bit names.
    std::uint32_t MaskParameter(const CScpiExpression::Trafo& names)
    {
        const auto count = static_cast<std::uint32_t>(names.size());
        const std::uint32_t words = count == 0 ? 0 : static_cast<std::uint32_t>(m_table.size());
        for (const auto& [name, bit] : names)
        {
            _CMD_SET_RECORD word = CHR("", static_cast<std::uint32_t>(bit), 0);
            name.copy(word.chr.szKeyword, kTableTextSize - 1);
            m_table.push_back(word);
        }
        if (count == 0)
        {
            return Add(PAR("mask", kMaskNumber | ARG_EXPR, 0, 0, 0, 0, ARG_FLAG_REP));
        }
        m_table[words].chr.iLength = count;
        return Add(PAR("mask", kMaskNumber | ARG_EXPR | MNEM, 0, count, words, 0, ARG_FLAG_REP));
    }

    std::vector<_CMD_SET_RECORD>& m_table;
};

std::vector<_CMD_SET_RECORD> MakeTable()
{
    std::vector<_CMD_SET_RECORD> table(std::begin(kFixedPart), std::end(kFixedPart));
    CStatusPart(table).Append();
    return table;
}

} // namespace

const CScpiExpression::Trafo& RegisterBitNames(InstrumentRegister index)
{
    // SCPI-99 vol. 1, 9.3 and 9.4; the bits without a meaning of their own go by their number.
    static const CScpiExpression::Trafo kOperation = CScpiExpression::GetRegisterValueTrafo(
        "(PROG,INST,B12,B11,B10,B9,B8,CORR,ARM,TRIG,MEAS,SWE,RANG,SETT,CAL)");
    static const CScpiExpression::Trafo kQuestionable = CScpiExpression::GetRegisterValueTrafo(
        "(WARN,INST,B12,B11,B10,B9,CAL,MOD,PHAS,FREQ,TEMP,POW,TIME,CURR,VOLT)");
    static const CScpiExpression::Trafo kNone;
    switch (index)
    {
    case kOperationRegister:
        return kOperation;
    case kQuestionableRegister:
        return kQuestionable;
    default:
        return kNone;
    }
}

std::span<const _CMD_SET_RECORD> BuiltInTable()
{
    static const std::vector<_CMD_SET_RECORD> table = MakeTable();
    return table;
}

} // namespace ZoVelkor::RemoteKernel
