#pragma once

#include "Registry.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ZoVelkor::Tools
{

/// A value as it stands in the registry.
struct RegistryValue
{
    std::wstring name;
    DWORD type = REG_NONE;
    std::vector<BYTE> data;

    bool operator==(const RegistryValue&) const = default;
};

/// How the data of a type are understood.
enum class ValueForm : std::uint8_t
{
    Text,
    List,
    Number,
    Bytes
};

struct ValueType
{
    const char* name;
    DWORD type;
    ValueForm form;
    std::size_t size; ///< of a number, in bytes
};

/// The types that have a name here; null for another one.
const ValueType* FindValueType(std::string_view name) noexcept;
const ValueType* FindValueType(DWORD type) noexcept;

/// Their names for a message.
std::string ValueTypeNames();

/// What the data mean: a text, a list of texts, or a number; bytes when the type has no meaning here or the
/// data have not its form, so that making data of the meaning always gives the same data.
using ValueContent =
    std::variant<std::wstring, std::vector<std::wstring>, std::uint64_t, std::span<const BYTE>>;
ValueContent ContentOf(const RegistryValue& value);

/// The data of a text, with its terminator.
std::vector<BYTE> TextData(std::wstring_view text);

/// The data of a list with no text in it.
std::vector<BYTE> EmptyListData();

/// @throws CTextFault when the text holds a NUL
void AppendToList(std::vector<BYTE>& data, std::wstring_view text);

/// @param text  decimal, with a minus sign maybe, or hexadecimal behind 0x
/// @throws CTextFault
std::vector<BYTE> NumberData(std::wstring_view text, const ValueType& type);

/// @param text  pairs of hexadecimal digits, with blanks in between or not
/// @throws CTextFault
void AppendBytes(std::vector<BYTE>& data, std::wstring_view text);

/// Pairs of digits with blanks in between.
std::string HexText(std::span<const BYTE> bytes);

/// The data of a type from what was typed; several texts of a list are lines.
///
/// @throws CTextFault
std::vector<BYTE> DataOf(std::wstring_view text, const ValueType& type);

/// The type that a text looks like, for a value that there was not before.
const ValueType& GuessType(std::wstring_view text);

/// A value in the words of the export file.
struct ValueText
{
    std::string head;               ///< name, type, and the data when they are short
    std::vector<std::string> items; ///< texts of a list, or bytes in portions
};
ValueText DescribeValue(const RegistryValue& value);

/// The same on one line, and not all of many bytes.
std::string SummarizeValue(const RegistryValue& value);

} // namespace ZoVelkor::Tools
