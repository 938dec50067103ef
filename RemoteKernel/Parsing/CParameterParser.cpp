#include "CParameterParser.h"

#include "BlockHeader.h"
#include "CProgramMessageParser.h"
#include "CharacterClasses.h"
#include "ProgramNumber.h"
#include "ScpiErrorCodes.h"
#include "SpecialWords.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

namespace
{
constexpr std::uint32_t kPositive = ARG_PINT | ARG_PFLOAT_S;
constexpr std::uint32_t kNegative = ARG_NINT | ARG_NFLOAT_S;
constexpr std::uint32_t kFraction = ARG_PFLOAT_S | ARG_NFLOAT_S;

tagTextBuffer TextOf(tagZO_SCPI_PARAMETER& record) noexcept
{
    return {record.szText, kParameterTextSize - 1};
}

void SetLength(tagZO_SCPI_PARAMETER& record, std::size_t length) noexcept
{
    record.szText[length] = '\0';
    record.iTextLength = static_cast<std::uint32_t>(length);
}

/// @return 0, or -223 for a text that does not fit; the record's text is then empty
short StoreText(tagZO_SCPI_PARAMETER& record, const char* text, std::size_t length) noexcept
{
    tagTextBuffer buffer = TextOf(record);
    const bool fits = buffer.Append(text, length);
    SetLength(record, buffer.iLength);
    return fits ? short{0} : kScpiTooMuchData;
}

/// Error for a character with which no data element can begin.
short StartError(char c) noexcept
{
    constexpr std::string_view kMisplaced = ":*)?";
    return kMisplaced.find(c) != std::string_view::npos ? kScpiSyntaxError : kScpiInvalidCharacter;
}

/// @return null for a word without special meaning
const tagSpecialWord* FindSpecialWord(const tagMnemonic& word) noexcept
{
    const auto* const found = std::find_if(
        std::begin(kSpecialWords), std::end(kSpecialWords), [&word](const tagSpecialWord& special) {
            return special.shortForm == word.key || special.longForm == word.key;
        });
    return found == std::end(kSpecialWords) || word.iLength > tagMnemonicKey::kCapacity ? nullptr : found;
}

bool IsOnlyLetters(const char* begin, const char* end) noexcept
{
    return std::all_of(begin, end, [](char c) { return IsLetter(c) || c == '/' || c == '.'; });
}
} // namespace

short SeparatorError(char c) noexcept
{
    return c > ' ' && c < '\x7F' ? kScpiInvalidSeparator : kScpiInvalidCharacter;
}

void tagCursor::SkipWhite() noexcept
{
    while (pPlace != pEnd && IsWhiteSpace(*pPlace))
    {
        ++pPlace;
    }
}

tagParameterFault CParameterParser::Parse(const CCommandIndex& index,
                                          const tagCommandEntry& entry,
                                          bool optional,
                                          tagCursor& cursor,
                                          CBlockStream* pStream)
{
    m_index = &index;
    m_specs = index.Parameters(entry);
    m_cursor = cursor;
    m_bOptional = optional;
    m_pStream = pStream;
    tagParameterFault fault;
    std::size_t count = 0;
    for (bool more = !m_cursor.AtUnitEnd(); more; ++count)
    {
        m_cursor.SkipWhite();
        const char* const place = m_cursor.pPlace;
        const tagParameterSpec* const spec = SpecFor(count);
        const std::uint32_t type = spec == nullptr ? 0 : (optional ? spec->iQueryType : spec->iType);
        short error = type == 0 ? kScpiParameterNotAllowed : ReadParameter(*spec, type);
        m_cursor.SkipWhite();
        if ((error == 0 || IsScpiExecutionError(error)) && !m_cursor.AtElementEnd())
        {
            return {SeparatorError(*m_cursor.pPlace), count, m_cursor.pPlace};
        }
        if (error != 0 && fault.iError == 0)
        {
            fault = {error, count, place};
        }
        if (error != 0 && !IsScpiExecutionError(error))
        {
            return {error, count, place};
        }
        more = !m_cursor.AtUnitEnd();
        m_cursor.pPlace += more ? 1 : 0;
    }
    if (!optional && count < entry.iRequiredCount)
    {
        return {kScpiMissingParameter, count, m_cursor.pPlace};
    }
    if (m_pStream != nullptr && m_cursor.AtEnd())
    {
        return {kNeedsWholeBlock, count, m_cursor.pPlace};
    }
    cursor = m_cursor;
    return fault;
}

const tagParameterSpec* CParameterParser::SpecFor(std::size_t parameter) const noexcept
{
    if (parameter < m_specs.size())
    {
        return &m_specs[parameter];
    }
    return !m_specs.empty() && (m_specs.back().iFlags & ARG_FLAG_REP) != 0 ? &m_specs.back() : nullptr;
}

short CParameterParser::ReadParameter(const tagParameterSpec& spec, std::uint32_t type)
{
    m_spec = &spec;
    m_type = type;
    const bool tooMany = m_records.Size() == kMaxParameters;
    if (tooMany)
    {
        m_records.DropLast();
    }
    tagZO_SCPI_PARAMETER& record = m_records.Next();
    if (!m_cursor.AtElementEnd())
    {
        const short error = ReadElement(record);
        return error == 0 && tooMany ? kScpiTooMuchData : error;
    }
    record.iType = ZO_SCPI_PARAMTYPE_NOVALUE;
    return m_bOptional || (spec.iFlags & ARG_FLAG_OPT) != 0 ? short{0} : kScpiMissingParameter;
}

short CParameterParser::ReadElement(tagZO_SCPI_PARAMETER& record)
{
    const char first = *m_cursor.pPlace;
    if (first == '"' || first == '\'')
    {
        return ReadString(record);
    }
    if ((m_type & ARG_STRGUD) != 0)
    {
        return ReadUnquoted(record);
    }
    if (IsLetter(first))
    {
        return ReadWord(record);
    }
    if (IsDigit(first) || first == '+' || first == '-' || first == '.')
    {
        return ReadNumber(record);
    }
    if (first == '#')
    {
        return ReadHash(record);
    }
    return first == '(' ? ReadExpression(record) : StartError(first);
}

short CParameterParser::ReadNumber(tagZO_SCPI_PARAMETER& record)
{
    if ((m_type & (kPositive | kNegative)) == 0)
    {
        return kScpiNumericDataNotAllowed;
    }
    const char* place = m_cursor.pPlace;
    tagDecimal number;
    const tagUnit* unit = nullptr;
    short error = ScanDecimal(place, m_cursor.pEnd, number);
    m_cursor.pPlace += place - m_cursor.pPlace;
    if (error == 0)
    {
        error = ReadUnit(unit);
    }
    if (error != 0)
    {
        return error;
    }
    const int exponent = unit == nullptr ? 0 : unit->iExponent;
    // A number for a boolean is rounded first (SCPI-99 vol. 1, 7.3): 0.5 is ON.
    const bool integer = (m_type & kFraction) == 0 || m_type == kBooleanType;
    const bool round = integer && (number.bHasPoint || number.bHasExponent || exponent != 0);
    tagTextBuffer text = TextOf(record);
    error = round ? WriteRounded(number, exponent, text) : WriteDecimal(number, exponent, text);
    record.iType = ZO_SCPI_PARAMTYPE_NUMERIC;
    const bool isZero = number.bZero || (round && IsZeroText(text.pText, text.iLength));
    if (unit != nullptr && error == 0)
    {
        const bool fits = text.Append(" ", 1) && text.Append(unit->szText, unit->iTextLength);
        error = fits ? short{0} : kScpiTooMuchData;
        record.iUnit = unit->iEnum;
        record.iUnitSuffix = unit->iEnum;
        record.iNoSuffix = 0;
    }
    SetLength(record, text.iLength);
    return error != 0 ? error : CheckSign(isZero, number.bNegative);
}

short CParameterParser::CheckSign(bool isZero, bool isNegative) const noexcept
{
    const bool accepted = isZero || (m_type & (isNegative ? kNegative : kPositive)) != 0;
    return accepted ? short{0} : kScpiDataOutOfRange;
}

short CParameterParser::ReadUnit(const tagUnit*& unit) noexcept
{
    const char* const numberEnd = m_cursor.pPlace;
    m_cursor.SkipWhite();
    if (m_cursor.AtElementEnd())
    {
        return 0;
    }
    const char* const begin = m_cursor.pPlace;
    if (!IsLetter(*begin) && *begin != '/')
    {
        const bool runsOn = begin == numberEnd && std::strchr("+-.#", *begin) != nullptr;
        return runsOn ? kScpiInvalidCharacterInNumber : SeparatorError(*begin);
    }
    const tagMnemonic text = ReadMnemonic(begin, m_cursor.pEnd, kUnitCharacters);
    m_cursor.pPlace += text.iLength;
    if (m_spec->iUnitList == 0)
    {
        return IsOnlyLetters(begin, m_cursor.pPlace) ? kScpiSuffixNotAllowed : kScpiInvalidCharacterInNumber;
    }
    if (text.iLength > kMaxMnemonicLength)
    {
        return kScpiSuffixTooLong;
    }
    unit = m_index->FindUnit(m_spec->iUnitList, text.key);
    return unit == nullptr ? kScpiInvalidSuffix : short{0};
}

short CParameterParser::ReadHash(tagZO_SCPI_PARAMETER& record)
{
    struct tagBase
    {
        char cLetter;
        unsigned int iBits;
        std::uint32_t iType;
    };
    constexpr tagBase kBases[] = {{'H', 4, ARG_HEX}, {'Q', 3, ARG_OCT}, {'B', 1, ARG_BIN}};
    const char second = m_cursor.pPlace + 1 == m_cursor.pEnd ? '\0' : ToCapital(m_cursor.pPlace[1]);
    for (const tagBase& base : kBases)
    {
        if (second == base.cLetter)
        {
            return (m_type & base.iType) != 0 ? ReadNonDecimal(record, base.iBits)
                                              : kScpiNumericDataNotAllowed;
        }
    }
    return IsDigit(second) ? ReadBlock(record) : kScpiInvalidBlockData;
}

short CParameterParser::ReadNonDecimal(tagZO_SCPI_PARAMETER& record, unsigned int bits) noexcept
{
    std::uint64_t value = 0;
    const char* place = m_cursor.pPlace + 2;
    const short error = ScanNonDecimal(place, m_cursor.pEnd, bits, value);
    m_cursor.pPlace += place - m_cursor.pPlace;
    if (error != 0)
    {
        return error;
    }
    m_cursor.SkipWhite();
    if (!m_cursor.AtEnd() && IsLetter(*m_cursor.pPlace))
    {
        return kScpiSuffixNotAllowed;
    }
    record.iType = ZO_SCPI_PARAMTYPE_NUMERIC;
    const char* const last = std::to_chars(record.szText, record.szText + kParameterTextSize - 1, value).ptr;
    SetLength(record, static_cast<std::size_t>(last - record.szText));
    return 0;
}

short CParameterParser::ReadBlock(tagZO_SCPI_PARAMETER& record)
{
    const auto available = static_cast<std::size_t>(m_cursor.pEnd - m_cursor.pPlace);
    const tagBlockHeader header = ReadBlockHeader({m_cursor.pPlace, available});
    const std::uint32_t wanted = m_cursor.pPlace[1] == '0' ? ARG_IBLOCK : ARG_DBLOCK;
    if ((m_type & wanted) == 0)
    {
        return kScpiBlockDataNotAllowed;
    }
    if (header.iResult != CBScpiBlockData::HeaderComplete)
    {
        return kScpiInvalidBlockData;
    }
    const std::size_t rest = available - header.iSize;
    if (m_pStream != nullptr && rest == 0)
    {
        return StoreStream(record);
    }
    const std::size_t length = header.iLength < 0 ? rest : static_cast<std::size_t>(header.iLength);
    if (length > rest)
    {
        return kScpiInvalidBlockData;
    }
    char* const data = m_cursor.pPlace + header.iSize;
    record.iType = ZO_SCPI_PARAMTYPE_BLOCK;
    m_records.SetBlock(record, {reinterpret_cast<unsigned char*>(data), length});
    m_cursor.pPlace = data + length;
    return 0;
}

short CParameterParser::StoreStream(tagZO_SCPI_PARAMETER& record)
{
    if (SpecFor(m_records.Size()) != nullptr)
    {
        return kNeedsWholeBlock;
    }
    record.iType = ZO_SCPI_PARAMTYPE_BLOCK;
    m_records.SetBlock(record, *m_pStream);
    m_pStream = nullptr;
    m_cursor.pPlace = m_cursor.pEnd;
    return 0;
}

short CParameterParser::ReadWord(tagZO_SCPI_PARAMETER& record) noexcept
{
    const tagMnemonic word = ReadMnemonic(m_cursor.pPlace, m_cursor.pEnd);
    const char* const begin = m_cursor.pPlace;
    m_cursor.pPlace += word.iLength;
    const bool specialFirst = (m_type & kBooleanType) == kBooleanType;
    const bool known = specialFirst ? TakeSpecialWord(record, word) || TakeOwnWord(record, word)
                                    : TakeOwnWord(record, word) || TakeSpecialWord(record, word);
    if (known)
    {
        return record.iTextLength != 0 ? short{0} : StoreText(record, begin, word.iLength);
    }
    return UnknownWordError(word);
}

short CParameterParser::UnknownWordError(const tagMnemonic& word) const noexcept
{
    const bool hasSpecialWords = (m_type & kWordTypes) != 0;
    const bool hasOwnWords = m_spec->iMnemonicList != 0;
    // A word in a query asks for a limit. Where there are none, the query takes no such parameter at all.
    if (m_bOptional && !hasSpecialWords && (hasOwnWords || FindSpecialWord(word) != nullptr))
    {
        return kScpiParameterNotAllowed;
    }
    if (!hasSpecialWords && !hasOwnWords)
    {
        return kScpiCharacterDataNotAllowed;
    }
    return word.iLength > kMaxMnemonicLength ? kScpiCharacterDataTooLong : kScpiInvalidCharacterData;
}

bool CParameterParser::TakeOwnWord(tagZO_SCPI_PARAMETER& record, const tagMnemonic& word) const noexcept
{
    if ((m_type & MNEM) == 0 || m_spec->iMnemonicList == 0 || word.iLength > tagMnemonicKey::kCapacity)
    {
        return false;
    }
    const std::int32_t* const value = m_index->FindMnemonic(m_spec->iMnemonicList, word.key);
    if (value == nullptr)
    {
        return false;
    }
    record.iType = ZO_SCPI_PARAMTYPE_CHARACTER;
    record.iSpecialCode = static_cast<std::uint32_t>(*value);
    return true;
}

bool CParameterParser::TakeSpecialWord(tagZO_SCPI_PARAMETER& record, const tagMnemonic& word) const noexcept
{
    const tagSpecialWord* const found = FindSpecialWord(word);
    if (found == nullptr || (m_type & found->iTypes) == 0)
    {
        return false;
    }
    record.iSpecialCode = found->eCode;
    record.iType = ZO_SCPI_PARAMTYPE_SPECIAL;
    if (!found->svNumber.empty())
    {
        record.iType = ZO_SCPI_PARAMTYPE_NUMERIC;
        StoreText(record, found->svNumber.data(), found->svNumber.size());
    }
    return true;
}

short CParameterParser::ReadString(tagZO_SCPI_PARAMETER& record) noexcept
{
    if ((m_type & (ARG_STRG | ARG_STRGUD)) == 0)
    {
        return kScpiStringDataNotAllowed;
    }
    const char quote = *m_cursor.pPlace++;
    tagTextBuffer text = TextOf(record);
    bool fits = true;
    for (;;)
    {
        const auto rest = static_cast<std::size_t>(m_cursor.pEnd - m_cursor.pPlace);
        char* const close =
            rest == 0 ? nullptr : static_cast<char*>(std::memchr(m_cursor.pPlace, quote, rest));
        if (close == nullptr)
        {
            return kScpiInvalidStringData;
        }
        // A doubled quote stands for itself: its first half is copied along, its second half skipped.
        const bool doubled = close + 1 != m_cursor.pEnd && close[1] == quote;
        const char* const pieceEnd = doubled ? close + 1 : close;
        fits = fits && text.Append(m_cursor.pPlace, static_cast<std::size_t>(pieceEnd - m_cursor.pPlace));
        m_cursor.pPlace = close + (doubled ? 2 : 1);
        if (!doubled)
        {
            break;
        }
    }
    record.iType = ZO_SCPI_PARAMTYPE_STRING;
    SetLength(record, text.iLength);
    return fits ? short{0} : kScpiTooMuchData;
}

short CParameterParser::ReadUnquoted(tagZO_SCPI_PARAMETER& record) noexcept
{
    const char* const begin = m_cursor.pPlace;
    const char* last = begin;
    for (; !m_cursor.AtElementEnd(); ++m_cursor.pPlace)
    {
        last = IsWhiteSpace(*m_cursor.pPlace) ? last : m_cursor.pPlace + 1;
    }
    const auto length = static_cast<std::size_t>(last - begin);
    const tagMnemonic word = ReadMnemonic(begin, last);
    if (word.iLength == length && (TakeOwnWord(record, word) || TakeSpecialWord(record, word)))
    {
        return record.iTextLength != 0 ? short{0} : StoreText(record, begin, length);
    }
    record.iType = ZO_SCPI_PARAMTYPE_STRING;
    return StoreText(record, begin, length);
}

short CParameterParser::ReadExpression(tagZO_SCPI_PARAMETER& record) noexcept
{
    if ((m_type & ARG_EXPR) == 0)
    {
        return kScpiExpressionDataNotAllowed;
    }
    const char* const begin = m_cursor.pPlace;
    std::size_t depth = 0;
    char quote = 0;
    do
    {
        if (m_cursor.AtEnd() || (quote == 0 && *m_cursor.pPlace == ';'))
        {
            return kScpiInvalidExpression;
        }
        const char c = *m_cursor.pPlace++;
        if (quote != 0 || c == '"' || c == '\'')
        {
            quote = quote == 0 ? c : (c == quote ? '\0' : quote);
            continue;
        }
        depth += c == '(' ? 1 : 0;
        depth -= c == ')' ? 1 : 0;
    } while (depth != 0 || quote != 0);
    record.iType = ZO_SCPI_PARAMTYPE_EXPRESSION;
    return StoreText(record, begin, static_cast<std::size_t>(m_cursor.pPlace - begin));
}

} // namespace ZoVelkor::RemoteKernel
