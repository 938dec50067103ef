#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace ZoVelkor
{

/// Formats numbers with snprintf; the formats of LXI texts are given, and some are unusual.
template <class... TValues>
std::string FormatLxiText(const char* format, TValues... values)
{
    constexpr std::size_t kSize = 128;
    char buffer[kSize] = "";
    static_cast<void>(std::snprintf(buffer, kSize, format, values...));
    return buffer;
}

} // namespace ZoVelkor
