#include "CProgressBar.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::chrono::milliseconds kDrawInterval{200};
constexpr std::size_t kBarWidth = 30;

} // namespace

CProgressBar::CProgressBar(std::string what, std::size_t total)
    : m_what(std::move(what)),
      m_total(std::max<std::size_t>(total, 1)),
      m_isTerminal(isatty(STDERR_FILENO) != 0),
      m_nextDraw(CClock::now() + kDrawInterval)
{}

CProgressBar::~CProgressBar()
{
    if (m_isDrawn)
    {
        std::fputs("\r\x1B[K", stderr);
    }
}

void CProgressBar::Advance(std::size_t bytes)
{
    m_done += bytes;
    const CClock::time_point now = CClock::now();
    if (m_isTerminal && now >= m_nextDraw)
    {
        m_nextDraw = now + kDrawInterval;
        Draw();
    }
}

void CProgressBar::Draw() noexcept
{
    constexpr double kMebi = 1024.0 * 1024.0;
    const double share = std::min(static_cast<double>(m_done) / static_cast<double>(m_total), 1.0);
    const auto filled = static_cast<std::size_t>(share * kBarWidth);
    fmt::print(stderr,
               "\r{} [{:#<{}}{:.<{}}] {:3.0f} %, {:.1f} of {:.1f} MiB",
               m_what,
               "",
               filled,
               "",
               kBarWidth - filled,
               share * 100.0,
               static_cast<double>(m_done) / kMebi,
               static_cast<double>(m_total) / kMebi);
    std::fflush(stderr);
    m_isDrawn = true;
}

} // namespace ZoVelkor::Tools
