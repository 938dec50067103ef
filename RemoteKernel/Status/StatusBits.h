#pragma once

namespace ZoVelkor::RemoteKernel
{

// Status byte (IEEE 488.2 section 11.2, SCPI-99 vol. 1, 9.2).
inline constexpr wchar_t kStatusErrorQueue = 0x04;       ///< the error queue is not empty
inline constexpr wchar_t kStatusQuestionable = 0x08;     ///< summary of STATus:QUEStionable
inline constexpr wchar_t kStatusMessageAvailable = 0x10; ///< the output queue is not empty
inline constexpr wchar_t kStatusStandardEvent = 0x20;    ///< summary of the standard event register
inline constexpr wchar_t kStatusService = 0x40;          ///< RQS in a serial poll, MSS in *STB?
inline constexpr wchar_t kStatusOperation = 0x80;        ///< summary of STATus:OPERation

// Standard event register (IEEE 488.2 section 11.5.1).
inline constexpr wchar_t kEventOperationComplete = 0x01;
inline constexpr wchar_t kEventRequestControl = 0x02;
inline constexpr wchar_t kEventQueryError = 0x04;
inline constexpr wchar_t kEventDeviceError = 0x08;
inline constexpr wchar_t kEventExecutionError = 0x10;
inline constexpr wchar_t kEventCommandError = 0x20;
inline constexpr wchar_t kEventUserRequest = 0x40;
inline constexpr wchar_t kEventPowerOn = 0x80;

/// Bits of a status byte or standard event register.
inline constexpr wchar_t kStandardRegisterMask = 0xFF;
/// Bits of a SCPI register: the highest of 16 is never used (SCPI-99 vol. 1, 9).
inline constexpr wchar_t kScpiRegisterMask = 0x7FFF;

/// Event bit of an error's class (SCPI-99 vol. 2, 21.8.9 to 21.8.16).
///
/// @return 0 for code 0 and for numbers of no class
constexpr wchar_t StandardEventOf(short code) noexcept
{
    struct Class
    {
        short lowest;
        short highest;
        wchar_t bit;
    };
    constexpr Class kClasses[] = {
        {-199, -100, kEventCommandError},
        {-299, -200, kEventExecutionError},
        {-399, -300, kEventDeviceError},
        {1, 32767, kEventDeviceError},
        {-499, -400, kEventQueryError},
        {-599, -500, kEventPowerOn},
        {-699, -600, kEventUserRequest},
        {-799, -700, kEventRequestControl},
        {-899, -800, kEventOperationComplete},
    };
    for (const Class& range : kClasses)
    {
        if (code >= range.lowest && code <= range.highest)
        {
            return range.bit;
        }
    }
    return 0;
}

} // namespace ZoVelkor::RemoteKernel
