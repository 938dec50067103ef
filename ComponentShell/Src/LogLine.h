#pragma once

#include <string>
#include <string_view>

namespace ZoVelkor
{
class CObjectDataReference;

/// The text with every control character replaced by '?', so that it stays one line.
std::string OnOneLine(std::string_view text);

/// Writes the text and a line end to stderr in one piece.
void WriteStandardErrorLine(std::string text);

/// "name#number" of an object; empty for null.
std::string ObjectText(const CObjectDataReference* object);
} // namespace ZoVelkor
