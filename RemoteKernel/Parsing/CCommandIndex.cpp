#include "CCommandIndex.h"

#include "CCommandIndexBuilder.h"
#include "CharacterClasses.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

CCommandIndex::CCommandIndex(std::span<const CommandSource> sources)
{
    CCommandIndexBuilder builder(*this);
    for (const CommandSource& source : sources)
    {
        if (ValidateCommandTable(source.records, source.count).empty())
        {
            builder.AddSource(source);
        }
    }
    builder.Finish();
}

CCommandIndex::~CCommandIndex() = default;

bool CCommandIndex::IsInFurtherRange(const SuffixSlot& slot, long suffix) const noexcept
{
    const auto further = std::span(m_suffixRanges).subspan(slot.further, slot.furtherCount);
    return std::any_of(further.begin(), further.end(), [suffix](const SuffixRange& range) {
        return suffix >= range.low && suffix <= range.high;
    });
}

const std::int32_t* CCommandIndex::FindMnemonic(std::uint32_t list, const MnemonicKey& word) const noexcept
{
    const std::uint32_t found = Lookup(list, word);
    return found == kNone ? nullptr : &m_mnemonics[found];
}

const Unit* CCommandIndex::FindUnit(std::uint32_t list, const MnemonicKey& unit) const noexcept
{
    const std::uint32_t found = Lookup(list, unit);
    return found == kNone ? nullptr : &m_units[found];
}

std::uint32_t CCommandIndex::Match(std::uint32_t node,
                                   const char* text,
                                   const Mnemonic& mnemonic,
                                   std::size_t& keywordLength) const noexcept
{
    std::size_t stem = mnemonic.length;
    while (stem > 0 && IsDigit(text[stem - 1]))
    {
        --stem;
    }
    // Only where a keyword ends in a digit by itself can the digits belong to it, all or some of them.
    for (std::size_t length = m_nodes[node].digitKeywords ? mnemonic.length : stem;; --length)
    {
        const std::uint32_t child = Lookup(node, CutMnemonic(mnemonic.key, length));
        if (child != kNone && (length == mnemonic.length || m_nodes[child].takesSuffix))
        {
            keywordLength = length;
            return child;
        }
        if (length == stem)
        {
            return kNone;
        }
    }
}

const CommandEntry* CCommandIndex::Find(std::string_view header) const noexcept
{
    const bool isQuery = header.ends_with('?');
    header.remove_suffix(isQuery ? 1 : 0);
    std::uint32_t node = header.starts_with('*') ? kCommonNode : kRootNode;
    header.remove_prefix(header.starts_with('*') || header.starts_with(':') ? 1 : 0);
    while (node != kNone)
    {
        const Mnemonic mnemonic = ReadMnemonic(header.data(), header.data() + header.size());
        std::size_t keywordLength = 0;
        node = Match(node, header.data(), mnemonic, keywordLength);
        header.remove_prefix(mnemonic.length);
        if (header.empty())
        {
            break;
        }
        if (node == kCommonNode || header.front() != ':')
        {
            return nullptr;
        }
        header.remove_prefix(1);
    }
    if (node == kNone)
    {
        return nullptr;
    }
    std::uint32_t entry = isQuery ? m_nodes[node].queryEntry : m_nodes[node].settingEntry;
    if (!isQuery && entry == kNone)
    {
        entry = m_nodes[node].queryEntry;
    }
    return entry == kNone ? nullptr : &m_entries[entry];
}

} // namespace ZoVelkor::RemoteKernel
