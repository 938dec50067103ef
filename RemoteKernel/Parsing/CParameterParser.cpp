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

TextBuffer TextOf(tagZO_SCPI_PARAMETER& record) noexcept
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
    TextBuffer buffer = TextOf(record);
    const bool fits = buffer.Append(text, length);
    SetLength(record, buffer.length);
    return fits ? short{0} : kScpiTooMuchData;
}

/// Error for a character with which no data element can begin.
short StartError(char c) noexcept
{
    constexpr std::string_view kMisplaced = ":*)?";
    return kMisplaced.find(c) != std::string_view::npos ? kScpiSyntaxError : kScpiInvalidCharacter;
}

/// @return null for a word without special meaning
const SpecialWord* FindSpecialWord(const Mnemonic& word) noexcept
{
    const auto* const found =
        std::find_if(std::begin(kSpecialWords), std::end(kSpecialWords), [&word](const SpecialWord& special) {
            return special.shortForm == word.key || special.longForm == word.key;
        });
    return found == std::end(kSpecialWords) || word.length > MnemonicKey::kCapacity ? nullptr : found;
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

void Cursor::SkipWhite() noexcept
{
    while (place != end && IsWhiteSpace(*place))
    {
        ++place;
    }
}

ParameterFault CParameterParser::Parse(const CCommandIndex& index,
                                       const CommandEntry& entry,
                                       bool optional,
                                       Cursor& cursor,
                                       CBlockStream* stream)
{
    m_index = &index;
    m_specs = index.Parameters(entry);
    m_cursor = cursor;
    m_optional = optional;
    m_stream = stream;
    ParameterFault fault;
    std::size_t count = 0;
    for (bool more = !m_cursor.AtUnitEnd(); more; ++count)
    {
        m_cursor.SkipWhite();
        const char* const place = m_cursor.place;
        const ParameterSpec* const spec = SpecFor(count);
        const std::uint32_t type = spec == nullptr ? 0 : (optional ? spec->queryType : spec->type);
        short error = type == 0 ? kScpiParameterNotAllowed : ReadParameter(*spec, type);
        m_cursor.SkipWhite();
        if ((error == 0 || IsScpiExecutionError(error)) && !m_cursor.AtElementEnd())
        {
            return {SeparatorError(*m_cursor.place), count, m_cursor.place};
        }
        // Kept until the unit is read: a command error further on counts more than this one.
        if (error != 0 && fault.error == 0)
        {
            fault = {error, count, place};
        }
        if (error != 0 && !IsScpiExecutionError(error))
        {
            return {error, count, place};
        }
        more = !m_cursor.AtUnitEnd();
        m_cursor.place += more ? 1 : 0;
    }
    if (!optional && count < entry.requiredCount)
    {
        return {kScpiMissingParameter, count, m_cursor.place};
    }
    if (m_stream != nullptr && m_cursor.AtEnd())
    {
        return {kNeedsWholeBlock, count, m_cursor.place};
    }
    cursor = m_cursor;
    return fault;
}

const ParameterSpec* CParameterParser::SpecFor(std::size_t parameter) const noexcept
{
    if (parameter < m_specs.size())
    {
        return &m_specs[parameter];
    }
    return !m_specs.empty() && (m_specs.back().flags & ARG_FLAG_REP) != 0 ? &m_specs.back() : nullptr;
}

short CParameterParser::ReadParameter(const ParameterSpec& spec, std::uint32_t type)
{
    m_spec = &spec;
    m_type = type;
    const bool tooMany = m_records.Size() == kMaxParameters;
    if (tooMany)
    {
        // Read all the same, in the place of the last one: a command error further on counts more than
        // -223.
        m_records.DropLast();
    }
    tagZO_SCPI_PARAMETER& record = m_records.Next();
    if (!m_cursor.AtElementEnd())
    {
        const short error = ReadElement(record);
        return error == 0 && tooMany ? kScpiTooMuchData : error;
    }
    record.iType = ZO_SCPI_PARAMTYPE_NOVALUE;
    return m_optional || (spec.flags & ARG_FLAG_OPT) != 0 ? short{0} : kScpiMissingParameter;
}

short CParameterParser::ReadElement(tagZO_SCPI_PARAMETER& record)
{
    const char first = *m_cursor.place;
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
    const char* place = m_cursor.place;
    Decimal number;
    const Unit* unit = nullptr;
    short error = ScanDecimal(place, m_cursor.end, number);
    m_cursor.place += place - m_cursor.place;
    if (error == 0)
    {
        error = ReadUnit(unit);
    }
    if (error != 0)
    {
        return error;
    }
    const int exponent = unit == nullptr ? 0 : unit->exponent;
    // A number for a boolean is rounded first (SCPI-99 vol. 1, 7.3): 0.5 is ON.
    const bool integer = (m_type & kFraction) == 0 || m_type == kBooleanType;
    const bool round = integer && (number.hasPoint || number.hasExponent || exponent != 0);
    TextBuffer text = TextOf(record);
    error = round ? WriteRounded(number, exponent, text) : WriteDecimal(number, exponent, text);
    record.iType = ZO_SCPI_PARAMTYPE_NUMERIC;
    const bool isZero = number.zero || IsZeroText(text.text, text.length);
    if (unit != nullptr && error == 0)
    {
        const bool fits = text.Append(" ", 1) && text.Append(unit->szText, unit->textLength);
        error = fits ? short{0} : kScpiTooMuchData;
        record.iUnit = unit->enumeration;
        record.iUnitSuffix = unit->enumeration;
        record.iNoSuffix = 0;
    }
    SetLength(record, text.length);
    return error != 0 ? error : CheckSign(isZero, number.negative);
}

short CParameterParser::CheckSign(bool isZero, bool isNegative) const noexcept
{
    const bool accepted = isZero || (m_type & (isNegative ? kNegative : kPositive)) != 0;
    return accepted ? short{0} : kScpiDataOutOfRange;
}

short CParameterParser::ReadUnit(const Unit*& unit) noexcept
{
    const char* const numberEnd = m_cursor.place;
    m_cursor.SkipWhite();
    if (m_cursor.AtElementEnd())
    {
        return 0;
    }
    const char* const begin = m_cursor.place;
    if (!IsLetter(*begin) && *begin != '/')
    {
        const bool runsOn = begin == numberEnd && std::strchr("+-.#", *begin) != nullptr;
        return runsOn ? kScpiInvalidCharacterInNumber : SeparatorError(*begin);
    }
    const Mnemonic text = ReadMnemonic(begin, m_cursor.end, kUnitCharacters);
    m_cursor.place += text.length;
    if (m_spec->unitList == 0)
    {
        return IsOnlyLetters(begin, m_cursor.place) ? kScpiSuffixNotAllowed : kScpiInvalidCharacterInNumber;
    }
    if (text.length > kMaxMnemonicLength)
    {
        return kScpiSuffixTooLong;
    }
    unit = m_index->FindUnit(m_spec->unitList, text.key);
    return unit == nullptr ? kScpiInvalidSuffix : short{0};
}

short CParameterParser::ReadHash(tagZO_SCPI_PARAMETER& record)
{
    struct Base
    {
        char letter;
        unsigned int bits;
        std::uint32_t type;
    };
    constexpr Base kBases[] = {{'H', 4, ARG_HEX}, {'Q', 3, ARG_OCT}, {'B', 1, ARG_BIN}};
    const char second = m_cursor.place + 1 == m_cursor.end ? '\0' : ToCapital(m_cursor.place[1]);
    for (const Base& base : kBases)
    {
        if (second == base.letter)
        {
            return (m_type & base.type) != 0 ? ReadNonDecimal(record, base.bits) : kScpiNumericDataNotAllowed;
        }
    }
    return IsDigit(second) ? ReadBlock(record) : kScpiInvalidBlockData;
}

short CParameterParser::ReadNonDecimal(tagZO_SCPI_PARAMETER& record, unsigned int bits) noexcept
{
    std::uint64_t value = 0;
    const char* place = m_cursor.place + 2;
    const short error = ScanNonDecimal(place, m_cursor.end, bits, value);
    m_cursor.place += place - m_cursor.place;
    if (error != 0)
    {
        return error;
    }
    m_cursor.SkipWhite();
    if (!m_cursor.AtEnd() && IsLetter(*m_cursor.place))
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
    const auto available = static_cast<std::size_t>(m_cursor.end - m_cursor.place);
    const BlockHeader header = ReadBlockHeader({m_cursor.place, available});
    const std::uint32_t wanted = m_cursor.place[1] == '0' ? ARG_IBLOCK : ARG_DBLOCK;
    if ((m_type & wanted) == 0)
    {
        return kScpiBlockDataNotAllowed;
    }
    if (header.result != CBScpiBlockData::HeaderComplete)
    {
        return kScpiInvalidBlockData;
    }
    const std::size_t rest = available - header.iSize;
    // A piece of a message ends where the data of its block begins.
    if (m_stream != nullptr && rest == 0)
    {
        return StoreStream(record);
    }
    const std::size_t length = header.length < 0 ? rest : static_cast<std::size_t>(header.length);
    if (length > rest)
    {
        return kScpiInvalidBlockData;
    }
    char* const data = m_cursor.place + header.iSize;
    record.iType = ZO_SCPI_PARAMTYPE_BLOCK;
    m_records.SetBlock(record, {reinterpret_cast<unsigned char*>(data), length});
    m_cursor.place = data + length;
    return 0;
}

short CParameterParser::StoreStream(tagZO_SCPI_PARAMETER& record)
{
    // Another parameter could follow. All are checked before the handler runs, so the block cannot be left
    // to come.
    if (SpecFor(m_records.Size()) != nullptr)
    {
        return kNeedsWholeBlock;
    }
    record.iType = ZO_SCPI_PARAMTYPE_BLOCK;
    m_records.SetBlock(record, *m_stream);
    m_stream = nullptr;
    m_cursor.place = m_cursor.end;
    return 0;
}

short CParameterParser::ReadWord(tagZO_SCPI_PARAMETER& record) noexcept
{
    const Mnemonic word = ReadMnemonic(m_cursor.place, m_cursor.end);
    const char* const begin = m_cursor.place;
    m_cursor.place += word.length;
    // Where a boolean is accepted ON and OFF are truth values; elsewhere the command's own words win.
    const bool specialFirst = (m_type & kBooleanType) == kBooleanType;
    const bool known = specialFirst ? TakeSpecialWord(record, word) || TakeOwnWord(record, word)
                                    : TakeOwnWord(record, word) || TakeSpecialWord(record, word);
    if (known)
    {
        return record.iTextLength != 0 ? short{0} : StoreText(record, begin, word.length);
    }
    return UnknownWordError(word);
}

short CParameterParser::UnknownWordError(const Mnemonic& word) const noexcept
{
    const bool hasSpecialWords = (m_type & kWordTypes) != 0;
    const bool hasOwnWords = m_spec->mnemonicList != 0;
    // A word in a query asks for a limit. Where there are none, the query takes no such parameter at all.
    if (m_optional && !hasSpecialWords && (hasOwnWords || FindSpecialWord(word) != nullptr))
    {
        return kScpiParameterNotAllowed;
    }
    if (!hasSpecialWords && !hasOwnWords)
    {
        return kScpiCharacterDataNotAllowed;
    }
    return word.length > kMaxMnemonicLength ? kScpiCharacterDataTooLong : kScpiInvalidCharacterData;
}

bool CParameterParser::TakeOwnWord(tagZO_SCPI_PARAMETER& record, const Mnemonic& word) const noexcept
{
    if ((m_type & MNEM) == 0 || m_spec->mnemonicList == 0 || word.length > MnemonicKey::kCapacity)
    {
        return false;
    }
    const std::int32_t* const value = m_index->FindMnemonic(m_spec->mnemonicList, word.key);
    if (value == nullptr)
    {
        return false;
    }
    record.iType = ZO_SCPI_PARAMTYPE_CHARACTER;
    record.iSpecialCode = static_cast<std::uint32_t>(*value);
    return true;
}

bool CParameterParser::TakeSpecialWord(tagZO_SCPI_PARAMETER& record, const Mnemonic& word) const noexcept
{
    const SpecialWord* const found = FindSpecialWord(word);
    if (found == nullptr || (m_type & found->types) == 0)
    {
        return false;
    }
    record.iSpecialCode = found->code;
    record.iType = ZO_SCPI_PARAMTYPE_SPECIAL;
    if (!found->number.empty())
    {
        record.iType = ZO_SCPI_PARAMTYPE_NUMERIC;
        StoreText(record, found->number.data(), found->number.size());
    }
    return true;
}

short CParameterParser::ReadString(tagZO_SCPI_PARAMETER& record) noexcept
{
    if ((m_type & (ARG_STRG | ARG_STRGUD)) == 0)
    {
        return kScpiStringDataNotAllowed;
    }
    const char quote = *m_cursor.place++;
    TextBuffer text = TextOf(record);
    bool fits = true;
    for (;;)
    {
        const auto rest = static_cast<std::size_t>(m_cursor.end - m_cursor.place);
        char* const close =
            rest == 0 ? nullptr : static_cast<char*>(std::memchr(m_cursor.place, quote, rest));
        if (close == nullptr)
        {
            return kScpiInvalidStringData;
        }
        // A doubled quote stands for itself: its first half is copied along, its second half skipped.
        const bool doubled = close + 1 != m_cursor.end && close[1] == quote;
        const char* const pieceEnd = doubled ? close + 1 : close;
        fits = fits && text.Append(m_cursor.place, static_cast<std::size_t>(pieceEnd - m_cursor.place));
        m_cursor.place = close + (doubled ? 2 : 1);
        if (!doubled)
        {
            break;
        }
    }
    record.iType = ZO_SCPI_PARAMTYPE_STRING;
    SetLength(record, text.length);
    return fits ? short{0} : kScpiTooMuchData;
}

short CParameterParser::ReadUnquoted(tagZO_SCPI_PARAMETER& record) noexcept
{
    const char* const begin = m_cursor.place;
    const char* last = begin;
    for (; !m_cursor.AtElementEnd(); ++m_cursor.place)
    {
        last = IsWhiteSpace(*m_cursor.place) ? last : m_cursor.place + 1;
    }
    const auto length = static_cast<std::size_t>(last - begin);
    const Mnemonic word = ReadMnemonic(begin, last);
    if (word.length == length && (TakeOwnWord(record, word) || TakeSpecialWord(record, word)))
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
    const char* const begin = m_cursor.place;
    std::size_t depth = 0;
    char quote = 0;
    do
    {
        if (m_cursor.AtEnd() || (quote == 0 && *m_cursor.place == ';'))
        {
            return kScpiInvalidExpression;
        }
        const char c = *m_cursor.place++;
        if (quote != 0 || c == '"' || c == '\'')
        {
            quote = quote == 0 ? c : (c == quote ? '\0' : quote);
            continue;
        }
        depth += c == '(' ? 1 : 0;
        depth -= c == ')' ? 1 : 0;
    } while (depth != 0 || quote != 0);
    record.iType = ZO_SCPI_PARAMTYPE_EXPRESSION;
    return StoreText(record, begin, static_cast<std::size_t>(m_cursor.place - begin));
}

} // namespace ZoVelkor::RemoteKernel
