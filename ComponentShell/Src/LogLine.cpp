#include "LogLine.h"

#include "CObjectDataReference.h"

#include <algorithm>
#include <cstdio>

namespace ZoVelkor
{
std::string OnOneLine(std::string_view text)
{
    constexpr char kDelete = 0x7F;
    std::string line(text);
    std::replace_if(
        line.begin(),
        line.end(),
        [](char c) { return static_cast<unsigned char>(c) < ' ' || c == kDelete; },
        '?');
    return line;
}

void WriteStandardErrorLine(std::string text)
{
    text += '\n';
    // In one call, which the stream's lock keeps together: lines of several threads are never torn.
    std::fwrite(text.data(), 1, text.size(), stderr);
}

std::string ObjectText(const CObjectDataReference* object)
{
    return object == nullptr ? std::string()
                             : object->ObjectName() + '#' + std::to_string(object->ObjectNumber());
}
} // namespace ZoVelkor
