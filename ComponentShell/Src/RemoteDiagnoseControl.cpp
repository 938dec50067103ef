#include "RemoteDiagnoseControl.h"

#include "LogLine.h"
#include "PerformanceCounter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <string>
#include <vector>

namespace ZoVelkor
{
namespace
{
constexpr const char* kVariable = "ZO_DIAGNOSE";
constexpr std::string_view kSeparators = ",; \t";

struct Switch
{
    std::string_view word;
    std::atomic<bool> tagRemoteDiagnoseControl::*flag;
};

constexpr Switch kSwitches[] = {{"rpc", &tagRemoteDiagnoseControl::bRpcModeActive},
                                {"timing", &tagRemoteDiagnoseControl::bTimingActive},
                                {"nochecks", &tagRemoteDiagnoseControl::bScpiChecksDisabled},
                                {"trace", &tagRemoteDiagnoseControl::bTraceModeActive},
                                {"statistic", &tagRemoteDiagnoseControl::bStatisticModeActive},
                                {"calls", &tagRemoteDiagnoseControl::bCallStackTraceActive},
                                {"messages", &tagRemoteDiagnoseControl::bMessageTraceActive}};

std::vector<std::string_view> Split(std::string_view text)
{
    std::vector<std::string_view> words;
    for (std::size_t at = text.find_first_not_of(kSeparators); at != std::string_view::npos;
         at = text.find_first_not_of(kSeparators, at))
    {
        const std::size_t end = std::min(text.find_first_of(kSeparators, at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end;
    }
    return words;
}

/// Removes the words of switches and gives what is left over.
std::vector<std::string_view> UnknownWords(std::vector<std::string_view> words)
{
    const auto isKnown = [](std::string_view word) {
        return std::any_of(std::begin(kSwitches), std::end(kSwitches), [word](const Switch& known) {
            return known.word == word;
        });
    };
    words.erase(std::remove_if(words.begin(), words.end(), isKnown), words.end());
    return words;
}

std::string KnownWords()
{
    std::string text;
    for (const Switch& known : kSwitches)
    {
        text.append(text.empty() ? "" : ", ").append(known.word);
    }
    return text;
}

void BeginTiming(tagRemoteDiagnoseControl& control) noexcept
{
    LARGE_INTEGER now{};
    // Timing that is on already keeps its base, so that lines before and after stay comparable.
    if (!control.bTimingActive && QueryPerformanceCounter(&now) != 0)
    {
        control.iTimingBase = now.QuadPart;
        control.iLastTiming = now.QuadPart;
    }
}

struct ProcessControl : public tagRemoteDiagnoseControl
{
    ProcessControl() noexcept
    {
        LARGE_INTEGER frequency{};
        if (QueryPerformanceFrequency(&frequency) != 0)
        {
            iCounterFrequency = frequency.QuadPart;
        }
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no part of the platform changes the environment
        if (const char* const words = std::getenv(kVariable); words != nullptr)
        {
            ApplyDiagnoseFlags(*this, words, kVariable);
        }
    }
};
} // namespace

void ApplyDiagnoseFlags(tagRemoteDiagnoseControl& control,
                        std::string_view words,
                        std::string_view source) noexcept
{
    try
    {
        const std::vector<std::string_view> named = Split(words);
        for (const Switch& each : kSwitches)
        {
            const bool on = std::find(named.begin(), named.end(), each.word) != named.end();
            if (on && each.flag == &tagRemoteDiagnoseControl::bTimingActive)
            {
                BeginTiming(control);
            }
            (control.*each.flag).store(on, std::memory_order_relaxed);
        }
        if (const auto unknown = UnknownWords(named); !unknown.empty())
        {
            // Straight to stderr: a trace sink may itself be waiting for the control block.
            WriteStandardErrorLine(OnOneLine(fmt::format("[ComponentShell] {}: unknown diagnosis switch {}; "
                                                         "known are {}",
                                                         source,
                                                         fmt::join(unknown, ", "),
                                                         KnownWords())));
        }
    }
    catch (const std::exception&) // no memory: the switches stay as they are
    {
        return;
    }
}

tagRemoteDiagnoseControl* get_RemoteDiagnoseControl() noexcept
{
    static ProcessControl control;
    return &control;
}
} // namespace ZoVelkor
