#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace ZoVelkor::Tools
{

/// How far a transfer is, drawn on the standard error when that is a terminal; short transfers show nothing.
class CProgressBar
{
public:
    /// @param what   said in front, for example "sending"
    /// @param total  in bytes
    CProgressBar(std::string what, std::size_t total);
    CProgressBar(const CProgressBar&) = delete;
    CProgressBar& operator=(const CProgressBar&) = delete;
    /// Removes what was drawn.
    ~CProgressBar();

    void Advance(std::size_t bytes);

private:
    using CClock = std::chrono::steady_clock;

    void Draw() noexcept;

    const std::string m_what;
    const std::size_t m_total;
    const bool m_isTerminal;
    std::size_t m_done = 0;
    CClock::time_point m_nextDraw;
    bool m_isDrawn = false;
};

} // namespace ZoVelkor::Tools
