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
               CBlockStream* stream,
               ICommandExecutor& executor)
    {
        m_index = &index;
        m_executor = &executor;
        m_cursor = {message.data(), message.data() + message.size()};
        m_stream = stream;
        m_held = false;
        for (;;)
        {
            m_cursor.SkipWhite();
            if (m_cursor.AtEnd())
            {
                return true;
            }
            if (*m_cursor.place != ';' && !ParseUnit())
            {
                return false;
            }
            m_cursor.place += m_cursor.AtEnd() ? 0 : 1;
        }
    }

    bool IsHeld() const noexcept { return m_held; }
    const char* UnitBegin() const noexcept { return m_header; }

private:
    /// Form of a command that a unit asks for.
    struct Form
    {
        const CommandEntry* entry = nullptr;
        std::int32_t mode = DEF;
        bool optional = false; ///< see CParameterParser::Parse
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
        m_header = m_cursor.place;
        const std::uint32_t path = m_path;
        short error = ReadHeader();
        if (error != 0)
        {
            return FailHeader(error);
        }
        m_cursor.SkipWhite();
        Form form;
        error = SelectForm(!m_cursor.AtUnitEnd(), form);
        if (error == 0)
        {
            error = CollectSuffixes(*form.entry);
        }
        if (error != 0)
        {
            return FailHeader(error);
        }
        const bool goOn = RunCommand(form);
        // A unit that is held is parsed once more with its block, and from the same place.
        m_path = m_held ? path : m_path;
        return goOn;
    }

    bool RunCommand(const Form& form)
    {
        CParameterArray& records = m_parameters.Records();
        const CRecordsGuard guard(records);
        if (!m_cursor.AtUnitEnd())
        {
            const ParameterFault fault =
                m_parameters.Parse(*m_index, *form.entry, form.optional, m_cursor, m_stream);
            m_held = fault.error == kNeedsWholeBlock;
            if (m_held)
            {
                return false;
            }
            if (fault.error != 0)
            {
                return FailParameter(fault);
            }
        }
        ParsedCommand command;
        command.application = form.entry->application;
        command.command = static_cast<unsigned long>(form.mode);
        command.query = m_query;
        command.numericSuffixes = m_suffixes;
        command.numericSuffixCount = m_suffixCount;
        command.argumentCount = records.Size();
        command.arguments = records.Data();
        command.headerText = form.entry->headerText;
        return m_executor->ExecuteCommand(command);
    }

    short ReadHeader()
    {
        if (*m_cursor.place == '*')
        {
            // m_path stays: a common command does not change where the next header begins (SCPI-99 vol. 1,
            // 6.2.4).
            ++m_cursor.place;
            m_node = CCommandIndex::kCommonNode;
            const short error = ReadKeyword();
            return error != 0 ? error : ReadHeaderEnd();
        }
        m_node = m_path;
        if (*m_cursor.place == ':')
        {
            ++m_cursor.place;
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
            if (m_cursor.AtEnd() || *m_cursor.place != ':')
            {
                m_path = parent;
                return ReadHeaderEnd();
            }
            ++m_cursor.place;
        }
    }

    /// Follows one keyword from m_node and takes its suffix.
    short ReadKeyword()
    {
        const char* const text = m_cursor.place;
        const Mnemonic mnemonic = ReadMnemonic(text, m_cursor.end);
        if (mnemonic.length == 0 || !IsLetter(*text))
        {
            return mnemonic.length != 0 ? kScpiInvalidCharacter : MissingKeyword();
        }
        std::size_t keywordLength = 0;
        const std::uint32_t child = m_index->Match(m_node, text, mnemonic, keywordLength);
        if (child == CCommandIndex::kNone)
        {
            return UnknownKeyword();
        }
        const CommandNode& node = m_index->Node(child);
        // 1 for the suffixes of optional nodes that the header leaves out, and for one that is not written.
        std::fill(m_slots + m_index->Node(m_node).slotCount, m_slots + node.slotCount, 1L);
        m_node = child;
        m_cursor.place += mnemonic.length;
        return keywordLength == mnemonic.length
                   ? short{0}
                   : ReadSuffix(text + keywordLength, text + mnemonic.length, m_slots[node.slotCount - 1]);
    }

    short MissingKeyword() const noexcept
    {
        return m_cursor.AtEnd() ? kScpiSyntaxError : HeaderCharacterError(*m_cursor.place, false);
    }

    /// A fault in the form of the header counts before a keyword that nobody knows.
    short UnknownKeyword() const noexcept
    {
        const char* place = m_cursor.place;
        for (;;)
        {
            const Mnemonic mnemonic = ReadMnemonic(place, m_cursor.end);
            place += mnemonic.length;
            if (mnemonic.length > kMaxMnemonicLength)
            {
                return kScpiMnemonicTooLong;
            }
            if (place == m_cursor.end || *place == ';' || *place == '?' || IsWhiteSpace(*place))
            {
                return mnemonic.length == 0 ? kScpiSyntaxError : kScpiUndefinedHeader;
            }
            if (*place != ':' || mnemonic.length == 0)
            {
                return HeaderCharacterError(*place, mnemonic.length != 0);
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
        m_query = !m_cursor.AtEnd() && *m_cursor.place == '?';
        m_cursor.place += m_query ? 1 : 0;
        if (m_cursor.AtUnitEnd() || IsWhiteSpace(*m_cursor.place))
        {
            return 0;
        }
        return HeaderCharacterError(*m_cursor.place, true);
    }

    short SelectForm(bool hasData, Form& form) const noexcept
    {
        const CommandNode& node = m_index->Node(m_node);
        const std::uint32_t number = m_query ? node.queryEntry : node.settingEntry;
        if (number == CCommandIndex::kNone)
        {
            return kScpiUndefinedHeader;
        }
        const CommandEntry& entry = m_index->Entry(number);
        form.entry = &entry;
        form.mode = entry.nodataMode;
        if (m_query)
        {
            form.optional = entry.HasBothForms();
            const bool complete = hasData || form.optional || entry.requiredCount == 0;
            return complete ? short{0} : kScpiMissingParameter;
        }
        if (entry.dataMode != DEF && (hasData || entry.requiredCount == 0))
        {
            form.mode = entry.dataMode;
            return 0;
        }
        if ((entry.flags & QMARK) != 0 || entry.nodataMode == DEF)
        {
            return kScpiMissingParameter;
        }
        return hasData ? kScpiParameterNotAllowed : short{0};
    }

    /// Leaves the suffixes that the application's own table knows.
    short CollectSuffixes(const CommandEntry& entry) noexcept
    {
        m_suffixCount = 0;
        const CCommandIndex& index = *m_index;
        const std::uint32_t written = index.Node(m_node).slotCount;
        std::uint32_t place = 0;
        for (const SuffixSlot& slot : index.SuffixSlots(entry))
        {
            const long suffix = place < written ? m_slots[place] : 1L;
            if (!index.AcceptsSuffix(slot, suffix))
            {
                return kScpiHeaderSuffixOutOfRange;
            }
            if (slot.own)
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
                                             static_cast<const char*>(m_cursor.end),
                                             [](char c) { return c == ';' || IsWhiteSpace(c); });
        char buffer[kQuotedLength];
        m_executor->ReportError(error, Quote(m_header, end, buffer));
        return false;
    }

    bool FailParameter(const ParameterFault& fault)
    {
        const char* const end = std::find_if(
            fault.place, static_cast<const char*>(m_cursor.end), [](char c) { return c == ',' || c == ';'; });
        char quoted[kQuotedLength];
        const std::string_view text = Quote(fault.place, end, quoted);
        char buffer[2 * kQuotedLength];
        const auto result = fmt::format_to_n(
            buffer, sizeof buffer, "parameter {}{}{}", fault.index + 1, text.empty() ? "" : ": ", text);
        m_executor->ReportError(fault.error, {buffer, std::min(sizeof buffer, result.size)});
        return IsScpiExecutionError(fault.error);
    }

    const CCommandIndex* m_index = nullptr;
    ICommandExecutor* m_executor = nullptr;
    Cursor m_cursor;
    CBlockStream* m_stream = nullptr; ///< the block at the cursor's end
    bool m_held = false;              ///< the command needs that block in memory
    const char* m_header = nullptr;   ///< start of the unit at work
    std::uint32_t m_path = CCommandIndex::kRootNode;
    std::uint32_t m_node = CCommandIndex::kRootNode;
    bool m_query = false;
    long m_slots[kMaxHeaderLevels] = {};    ///< suffixes of the path, see CommandNode::slotCount
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

PieceResult CProgramMessageParser::ParsePiece(const CCommandIndex& index,
                                              std::span<char> piece,
                                              CBlockStream& block,
                                              ICommandExecutor& executor,
                                              std::size_t& heldFrom)
{
    if (m_implementation->Parse(index, piece, &block, executor))
    {
        return PieceResult::Continue;
    }
    if (!m_implementation->IsHeld())
    {
        return PieceResult::Drop;
    }
    heldFrom = static_cast<std::size_t>(m_implementation->UnitBegin() - piece.data());
    return PieceResult::Hold;
}

bool CProgramMessageParser::ParseRest(const CCommandIndex& index,
                                      std::span<char> rest,
                                      ICommandExecutor& executor)
{
    return m_implementation->Parse(index, rest, nullptr, executor);
}

} // namespace ZoVelkor::RemoteKernel
