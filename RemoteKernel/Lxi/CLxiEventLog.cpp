#include "CLxiEventLog.h"

#include "CCritSectionLocker.h"
#include "CLxiLanPacket.h"
#include "LxiClock.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace ZoVelkor::RemoteKernel
{
namespace
{

/// In the order of LxiLogKind.
constexpr const char* kKindNames[] = {"received", "duplicate", "acknowledgement", "sent"};

std::string TimeText(const CLxiTime& time)
{
    unsigned short year = 0;
    unsigned short month = 0;
    unsigned short day = 0;
    unsigned short hour = 0;
    unsigned short minute = 0;
    unsigned short second = 0;
    unsigned short milliSeconds = 0;
    time.GetLocal(year, month, day, hour, minute, second, milliSeconds);
    return fmt::format(
        "{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:03}", year, month, day, hour, minute, second, milliSeconds);
}

/// Names come from the network and must not end a line of an answer.
std::string Printable(std::wstring_view text)
{
    std::string printable;
    std::ranges::transform(text, std::back_inserter(printable), [](wchar_t c) {
        return c >= L' ' && c <= L'~' ? static_cast<char>(c) : '.';
    });
    return printable;
}

} // namespace

void CLxiEventLog::Add(LxiLogKind kind, const LxiPeer& peer, std::span<const std::uint8_t> message)
{
    Entry entry{LxiNow(), kind, peer, {}, message.size()};
    std::copy_n(message.begin(), std::min(message.size(), entry.header.size()), entry.header.begin());
    const CCritSectionLocker locker(m_section);
    m_entries.push_back(entry);
    if (m_entries.size() > kCapacity)
    {
        m_entries.pop_front();
    }
}

std::size_t CLxiEventLog::Count() const
{
    const CCritSectionLocker locker(m_section);
    return m_entries.size();
}

void CLxiEventLog::Clear()
{
    const CCritSectionLocker locker(m_section);
    m_entries.clear();
}

std::vector<std::string> CLxiEventLog::Lines() const
{
    std::deque<Entry> entries;
    {
        const CCritSectionLocker locker(m_section);
        entries = m_entries;
    }
    std::vector<std::string> lines;
    std::ranges::transform(entries, std::back_inserter(lines), &CLxiEventLog::Line);
    return lines;
}

std::string CLxiEventLog::Line(const Entry& entry)
{
    CLxiLanPacket packet;
    packet.addSerializedData(entry.header.size(), entry.header.data());
    CComBSTR text;
    packet.getReadableLANData(text);
    return fmt::format("{} {} {}: {}, {} bytes",
                       TimeText(entry.time),
                       kKindNames[static_cast<std::size_t>(entry.kind)],
                       entry.peer.Text(),
                       Printable(text.View()),
                       entry.messageSize);
}

} // namespace ZoVelkor::RemoteKernel
