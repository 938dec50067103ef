#pragma once

namespace ZoVelkor::Commands
{

/// A numeric suffix of a header as a handler's argument; the remote kernel has checked it.
///
/// An instrument names its kinds: `using Channel = CNumericSuffix<struct ChannelTag>;`
template <class TTag>
class CNumericSuffix
{
public:
    /// @param number  as the client wrote it
    constexpr explicit CNumericSuffix(long number) noexcept : m_number(number) {}

    /// The suffix as the client wrote it; 1 when it was left out.
    constexpr long Number() const noexcept { return m_number; }
    /// The same counted from 0, for arrays.
    constexpr unsigned long Index() const noexcept { return static_cast<unsigned long>(m_number - 1); }

    constexpr bool operator==(const CNumericSuffix&) const noexcept = default;

private:
    long m_number;
};

/// @cond machinery
template <class T>
inline constexpr bool kIsNumericSuffix = false;
template <class TTag>
inline constexpr bool kIsNumericSuffix<CNumericSuffix<TTag>> = true;
/// @endcond

} // namespace ZoVelkor::Commands
