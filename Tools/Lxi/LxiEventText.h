#pragma once

#include "CLxiLanPacket.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ZoVelkor::Tools
{

/// A flag of event messages by its name.
struct LxiFlag
{
    const char* name;
    void (CLxiLanPacket::*set)(int);
    int (CLxiLanPacket::*get)() const;
};

inline constexpr LxiFlag kLxiFlags[] = {
    {"error", &CLxiLanPacket::setIsErrorMessage, &CLxiLanPacket::getIsErrorMessage},
    {"retransmission", &CLxiLanPacket::setIsRetransmission, &CLxiLanPacket::getIsRetransmission},
    {"hardware", &CLxiLanPacket::setIsHwFlagSet, &CLxiLanPacket::getIsHwFlagSet},
    {"acknowledgement", &CLxiLanPacket::setIsAcknowledgement, &CLxiLanPacket::getIsAcknowledgement},
};

/// Names of all flags, with commas in between.
std::string LxiFlagNames();

/// Where an event message was found.
struct LxiOrigin
{
    std::string text;        ///< for people
    std::string json;        ///< members of a JSON object
    std::size_t missing = 0; ///< bytes behind it that were there but are not known
};

/// Shows event messages on the standard output, one a line, and counts them.
class CLxiEventPrinter
{
public:
    explicit CLxiEventPrinter(bool isJson) : m_isJson(isJson) {}

    /// Shows a message, or what is wrong with bytes that are none.
    ///
    /// @return it is a sound message
    bool Print(const LxiOrigin& origin, std::span<const std::uint8_t> bytes);

    /// Shows a fault that no bytes are known of.
    void PrintFault(const LxiOrigin& origin, const std::string& fault);

    std::size_t SoundCount() const noexcept { return m_soundCount; }
    std::size_t DamagedCount() const noexcept { return m_damagedCount; }

    /// What there was, as in "3 events, 1 damaged".
    std::string Summary() const;

private:
    void Write(const LxiOrigin& origin, const std::string& text, const std::string& json) const;

    const bool m_isJson;
    std::size_t m_soundCount = 0;
    std::size_t m_damagedCount = 0;
};

} // namespace ZoVelkor::Tools
