#pragma once

#include "Bstr.h"
#include "CodePage.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <utility>

namespace ZoVelkor
{

/// Narrows a BSTR that is not null up to its first zero and hands the terminated text to an action.
///
/// Short texts need no allocation.
template <class TAction>
auto WithNarrowText(const wchar_t* text, TAction&& action)
{
    constexpr std::size_t kLocalSize = 128;
    const std::size_t wanted = (std::size_t{SysStringLen(text)} + 1) * 2;
    const std::size_t size = std::min<std::size_t>(wanted, std::numeric_limits<int>::max());
    char local[kLocalSize];
    std::unique_ptr<char[]> heap;
    if (size > kLocalSize)
    {
        heap = std::make_unique_for_overwrite<char[]>(size);
    }
    char* buffer = heap ? heap.get() : local;
    if (WideCharToMultiByte(CP_ACP, 0, text, -1, buffer, static_cast<int>(size), nullptr, nullptr) == 0)
    {
        buffer[0] = '\0';
    }
    return std::forward<TAction>(action)(static_cast<const char*>(buffer));
}

} // namespace ZoVelkor
