#include "CProgramMessageParser.h"

#include "CParameterParser.h"
#include "CharacterClasses.h"
#include "ScpiErrorCodes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

namespace
{
constexpr long kMaxNumericSuffix = std::numeric_limits<std::int32_t>::max();

/// Bytes of an offending text that an error quotes.
constexpr std::size_t kQuotedLength = 40;

/// Error for a character behind a mnemonic of a header, or in place of one.
short HeaderCharacterError(char c, bool behindMnemonic) noexcept
{
    constexpr std::string_view kStructure = ":*?;";
    constexpr std::string_view kDataCharacters = "\"'#(),+-.";
    if (kStructure.find(c) != std::string_view::npos || IsWhiteSpace(c))
    {
        return kScpiSyntaxError;
    }
    if (kDataCharacters.find(c) != std::string_view::npos)
    {
        return behindMnemonic ? kScpiHeaderSeparatorError : kScpiSyntaxError;
    }
    // Behind a mnemonic, these come only after the question mark: data without white space before it.
    const bool isData = behindMnemonic && (IsLetter(c) || IsDigit(c));
    return isData ? kScpiHeaderSeparatorError : kScpiInvalidCharacter;
}

/// Copies text for people to read; white space at its end is left out, what cannot be printed becomes '?'.
std::string_view Quote(const char* begin, const char* end, char (&buffer)[kQuotedLength]) noexcept
{
    while (end != begin && IsWhiteSpace(end[-1]))
    {
        --end;
    }
    const auto length = std::min(kQuotedLength, static_cast<std::size_t>(end - begin));
    std::transform(begin, begin + length, buffer, [](char c) { return c >= ' ' && c < '\x7F' ? c : '?'; });
    return {buffer, length};
}
} // namespace

class CProgramMessageParser::CImplementation
{
public:
    void BeginMessage() noexcept { m_path = CCommandIndex::kRootNode; }

    /// @return false when the rest of the message is to be dropped, or its latest command needs the block
    bool Parse(const CCommandIndex& index,
               std::span<char> message,
               CBlockStream* pStream,
               ICommandExecutor& executor)
    {
        m_index = &index;
        m_executor = &executor;
        m_cursor = {message.data(), message.data() + message.size()};
        m_pStream = pStream;
        m_bHeld = false;
        for (;;)
        {
            m_cursor.SkipWhite();
            if (m_cursor.AtEnd())
            {
                return true;
            }
            if (*m_cursor.pPlace != ';' && !ParseUnit())
            {
                return false;
            }
            m_cursor.pPlace += m_cursor.AtEnd() ? 0 : 1;
        }
    }

    bool IsHeld() const noexcept { return m_bHeld; }
    const char* UnitBegin() const noexcept { return m_header; }

private:
    /// Form of a command that a unit asks for.
    struct tagForm
    {
        const tagCommandEntry* pEntry = nullptr;
        std::int32_t iMode = DEF;
        bool bOptional = false; ///< see CParameterParser::Parse
    };

    /// Ends a command, however it ended.
    class CRecordsGuard
    {
    public:
        explicit CRecordsGuard(CParameterArray& records) noexcept : m_records(records) {}
        CRecordsGuard(const CRecordsGuard&) = delete;
        CRecordsGuard& operator=(const CRecordsGuard&) = delete;
        ~CRecordsGuard() { m_records.Clear(); }

    private:
        CParameterArray& m_records;
    };

    /// @return false when the rest of the message is to be dropped
    bool ParseUnit()
    {
        m_header = m_cursor.pPlace;
        const std::uint32_t path = m_path;
        short error = ReadHeader();
        if (error != 0)
        {
            return FailHeader(error);
        }
        m_cursor.SkipWhite();
        tagForm form;
        error = SelectForm(!m_cursor.AtUnitEnd(), form);
        if (error == 0)
        {
            error = CollectSuffixes(*form.pEntry);
        }
        if (error != 0)
        {
            return FailHeader(error);
        }
        const bool bContinue = RunCommand(form);
        m_path = m_bHeld ? path : m_path;
        return bContinue;
    }

    bool RunCommand(const tagForm& form)
    {
        CParameterArray& records = m_parameters.Records();
        const CRecordsGuard guard(records);
        if (!m_cursor.AtUnitEnd())
        {
            const tagParameterFault fault =
                m_parameters.Parse(*m_index, *form.pEntry, form.bOptional, m_cursor, m_pStream);
            m_bHeld = fault.iError == kNeedsWholeBlock;
            if (m_bHeld)
            {
                return false;
            }
            if (fault.iError != 0)
            {
                return FailParameter(fault);
            }
        }
        tagParsedCommand command;
        command.pApplication = form.pEntry->pApplication;
        command.iCommand = static_cast<unsigned long>(form.iMode);
        command.bQuery = m_query;
        command.pNumericSuffixes = m_suffixes;
        command.iNumericSuffixCount = m_suffixCount;
        command.iArgumentCount = records.Size();
        command.pArguments = records.Data();
        command.bsHeader = form.pEntry->bsHeader;
        return m_executor->ExecuteCommand(command);
    }

    short ReadHeader()
    {
        if (*m_cursor.pPlace == '*')
        {
            ++m_cursor.pPlace;
            m_node = CCommandIndex::kCommonNode;
            const short error = ReadKeyword();
            return error != 0 ? error : ReadHeaderEnd();
        }
        m_node = m_path;
        if (*m_cursor.pPlace == ':')
        {
            ++m_cursor.pPlace;
            m_node = CCommandIndex::kRootNode;
        }
        for (;;)
        {
            const std::uint32_t parent = m_node;
            const short error = ReadKeyword();
            if (error != 0)
            {
                return error;
            }
            if (m_cursor.AtEnd() || *m_cursor.pPlace != ':')
            {
                m_path = parent;
                return ReadHeaderEnd();
            }
            ++m_cursor.pPlace;
        }
    }

    /// Follows one keyword from m_node and takes its suffix.
    short ReadKeyword()
    {
        const char* const text = m_cursor.pPlace;
        const tagMnemonic mnemonic = ReadMnemonic(text, m_cursor.pEnd);
        if (mnemonic.iLength == 0 || !IsLetter(*text))
        {
            return mnemonic.iLength != 0 ? kScpiInvalidCharacter : MissingKeyword();
        }
        std::size_t keywordLength = 0;
        const std::uint32_t child = m_index->Match(m_node, text, mnemonic, keywordLength);
        if (child == CCommandIndex::kNone)
        {
            return UnknownKeyword();
        }
        const tagCommandNode& node = m_index->Node(child);
        std::fill(m_slots + m_index->Node(m_node).iSlotCount, m_slots + node.iSlotCount, 1L);
        m_node = child;
        m_cursor.pPlace += mnemonic.iLength;
        return keywordLength == mnemonic.iLength
                   ? short{0}
                   : ReadSuffix(text + keywordLength, text + mnemonic.iLength, m_slots[node.iSlotCount - 1]);
    }

    short MissingKeyword() const noexcept
    {
        return m_cursor.AtEnd() ? kScpiSyntaxError : HeaderCharacterError(*m_cursor.pPlace, false);
    }

    /// A fault in the form of the header counts before a keyword that nobody knows.
    short UnknownKeyword() const noexcept
    {
        const char* place = m_cursor.pPlace;
        for (;;)
        {
            const tagMnemonic mnemonic = ReadMnemonic(place, m_cursor.pEnd);
            place += mnemonic.iLength;
            if (mnemonic.iLength > kMaxMnemonicLength)
            {
                return kScpiMnemonicTooLong;
            }
            if (place == m_cursor.pEnd || *place == ';' || *place == '?' || IsWhiteSpace(*place))
            {
                return mnemonic.iLength == 0 ? kScpiSyntaxError : kScpiUndefinedHeader;
            }
            if (*place != ':' || mnemonic.iLength == 0)
            {
                return HeaderCharacterError(*place, mnemonic.iLength != 0);
            }
            ++place;
        }
    }

    static short ReadSuffix(const char* place, const char* end, long& suffix) noexcept
    {
        long value = 0;
        for (; place != end; ++place)
        {
            value = value * 10 + (*place - '0');
            if (value > kMaxNumericSuffix)
            {
                return kScpiHeaderSuffixOutOfRange;
            }
        }
        suffix = value;
        return 0;
    }

    short ReadHeaderEnd() noexcept
    {
        m_query = !m_cursor.AtEnd() && *m_cursor.pPlace == '?';
        m_cursor.pPlace += m_query ? 1 : 0;
        if (m_cursor.AtUnitEnd() || IsWhiteSpace(*m_cursor.pPlace))
        {
            return 0;
        }
        return HeaderCharacterError(*m_cursor.pPlace, true);
    }

    short SelectForm(bool hasData, tagForm& form) const noexcept
    {
        const tagCommandNode& node = m_index->Node(m_node);
        const std::uint32_t number = m_query ? node.iQueryEntry : node.iSettingEntry;
        if (number == CCommandIndex::kNone)
        {
            return kScpiUndefinedHeader;
        }
        const tagCommandEntry& entry = m_index->Entry(number);
        form.pEntry = &entry;
        form.iMode = entry.iNodataMode;
        if (m_query)
        {
            form.bOptional = entry.HasBothForms();
            const bool complete = hasData || form.bOptional || entry.iRequiredCount == 0;
            return complete ? short{0} : kScpiMissingParameter;
        }
        if (entry.iDataMode != DEF && (hasData || entry.iRequiredCount == 0))
        {
            form.iMode = entry.iDataMode;
            return 0;
        }
        if ((entry.iFlags & QMARK) != 0 || entry.iNodataMode == DEF)
        {
            return kScpiMissingParameter;
        }
        return hasData ? kScpiParameterNotAllowed : short{0};
    }

    /// Leaves the suffixes that the application's own table knows.
    short CollectSuffixes(const tagCommandEntry& entry) noexcept
    {
        m_suffixCount = 0;
        const CCommandIndex& index = *m_index;
        const std::uint32_t written = index.Node(m_node).iSlotCount;
        std::uint32_t place = 0;
        for (const tagSuffixSlot& slot : index.SuffixSlots(entry))
        {
            const long suffix = place < written ? m_slots[place] : 1L;
            if (!index.AcceptsSuffix(slot, suffix))
            {
                return kScpiHeaderSuffixOutOfRange;
            }
            if (slot.bOwn)
            {
                m_suffixes[m_suffixCount++] = suffix;
            }
            ++place;
        }
        return 0;
    }

    bool FailHeader(short error)
    {
        const char* const end = std::find_if(static_cast<const char*>(m_header),
                                             static_cast<const char*>(m_cursor.pEnd),
                                             [](char c) { return c == ';' || IsWhiteSpace(c); });
        char buffer[kQuotedLength];
        m_executor->ReportError(error, Quote(m_header, end, buffer));
        return false;
    }

    bool FailParameter(const tagParameterFault& fault)
    {
        const char* const end = std::find_if(fault.pPlace,
                                             static_cast<const char*>(m_cursor.pEnd),
                                             [](char c) { return c == ',' || c == ';'; });
        char quoted[kQuotedLength];
        const std::string_view text = Quote(fault.pPlace, end, quoted);
        char buffer[2 * kQuotedLength];
        const auto result = fmt::format_to_n(
            buffer, sizeof buffer, "parameter {}{}{}", fault.iIndex + 1, text.empty() ? "" : ": ", text);
        m_executor->ReportError(fault.iError, {buffer, std::min(sizeof buffer, result.size)});
        return IsScpiExecutionError(fault.iError);
    }

    const CCommandIndex* m_index = nullptr;
    ICommandExecutor* m_executor = nullptr;
    tagCursor m_cursor;
    CBlockStream* m_pStream = nullptr; ///< the block at the cursor's end
    bool m_bHeld = false;              ///< the command needs that block in memory
    const char* m_header = nullptr;    ///< start of the unit at work
    std::uint32_t m_path = CCommandIndex::kRootNode;
    std::uint32_t m_node = CCommandIndex::kRootNode;
    bool m_query = false;
    long m_slots[kMaxHeaderLevels] = {};    ///< suffixes of the path, see tagCommandNode::iSlotCount
    long m_suffixes[kMaxHeaderLevels] = {}; ///< what the handler gets; a handler may overwrite it
    unsigned long m_suffixCount = 0;
    CParameterParser m_parameters;
};

CProgramMessageParser::CProgramMessageParser() : m_implementation(std::make_unique<CImplementation>())
{}

CProgramMessageParser::~CProgramMessageParser() = default;

bool CProgramMessageParser::Parse(const CCommandIndex& index,
                                  std::span<char> message,
                                  ICommandExecutor& executor)
{
    m_implementation->BeginMessage();
    return m_implementation->Parse(index, message, nullptr, executor);
}

void CProgramMessageParser::BeginMessage() noexcept
{
    m_implementation->BeginMessage();
}

tagPieceResult CProgramMessageParser::ParsePiece(const CCommandIndex& index,
                                                 std::span<char> piece,
                                                 CBlockStream& block,
                                                 ICommandExecutor& executor,
                                                 std::size_t& heldFrom)
{
    if (m_implementation->Parse(index, piece, &block, executor))
    {
        return tagPieceResult::Continue;
    }
    if (!m_implementation->IsHeld())
    {
        return tagPieceResult::Drop;
    }
    heldFrom = static_cast<std::size_t>(m_implementation->UnitBegin() - piece.data());
    return tagPieceResult::Hold;
}

bool CProgramMessageParser::ParseRest(const CCommandIndex& index,
                                      std::span<char> rest,
                                      ICommandExecutor& executor)
{
    return m_implementation->Parse(index, rest, nullptr, executor);
}

} // namespace ZoVelkor::RemoteKernel
