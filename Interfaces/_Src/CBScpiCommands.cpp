#include "CBScpiCommands.h"

#include "Bstr.h"
#include "CComBSTR.h"
#include "CScpiParserTable.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"
#include "IZOScpiOutputBuffer.h"

#include <fmt/format.h>

#include <limits>
#include <list>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace ZoVelkor
{
namespace
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBScpiCommands");

/// A text parameter as error reports name it.
struct TextParameter
{
    const char* name;
    const char* conditionAddress;
    const char* conditionText;
};

constexpr TextParameter kText = {"pbsText", "pbsText != NULL", "*pbsText == NULL"};
constexpr TextParameter kSource = {"pbsSource", "pbsSource != NULL", "*pbsSource == NULL"};
constexpr TextParameter kHeader = {"pbsHeader", "pbsHeader != NULL", "*pbsHeader == NULL"};

/// What is wrong with the address that shall receive a text; nothing when it is usable.
std::optional<tagErrorReport>
AddressError(const CObjectDataReference* object, const TextParameter& parameter, wchar_t** address)
{
    if (address == nullptr)
    {
        return NullPointerError(kSourceUnit, object, parameter.name, parameter.conditionAddress);
    }
    if (*address != nullptr)
    {
        return ZO_ERROR(object,
                        parameter.conditionText,
                        fmt::format("The string would be lost ({})", parameter.name),
                        E_INVALIDARG);
    }
    return std::nullopt;
}

/// @throws std::bad_alloc also for a text beyond the range of lengths
CComBSTR Widen(std::string_view text)
{
    const bool fits = text.size() <= static_cast<std::size_t>(std::numeric_limits<int>::max());
    CComBSTR wide;
    wide.Attach(fits ? A2WBSTR(text.data(), static_cast<int>(text.size())) : nullptr);
    if (!wide)
    {
        throw std::bad_alloc();
    }
    return wide;
}

/// The table with its number of records, so that nothing behind it is read.
CScpiParserTable TableOf(const tagZO_SCPI_PARSER_TREE& tree)
{
    CScpiParserTable table;
    // The parser table hands its records out for change; here they are read only.
    auto* const records = const_cast<_CMD_SET_RECORD*>(tree.pTable);
    table.SetParserTable(records, static_cast<long>(tree.iSize / sizeof(_CMD_SET_RECORD)));
    return table;
}

/// Writes prefix and records up to the first write that fails.
HRESULT WriteTree(IZOScpiOutputBuffer& output, const tagZO_SCPI_PARSER_TREE& tree)
{
    const std::string prefix = fmt::format("{},#6{:06}", CBScpiCommands::kTreeVersion, tree.iSize);
    const HRESULT result = output.Write(prefix.size(), prefix.data(), nullptr);
    return result != S_OK
               ? result
               : output.WriteBinary(tree.iSize, reinterpret_cast<const unsigned char*>(tree.pTable), nullptr);
}

} // namespace

HRESULT CBScpiCommands::SendCommandTree(IZOScpiOutputBuffer* output)
{
    return GuardedEntry([&] {
        const tagZO_SCPI_PARSER_TREE* const tree = GetTable();
        if (tree == nullptr)
        {
            return S_FALSE;
        }
        if (output == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(this, "pOutputBuffer"));
        }
        if (tree->iSize > kLargestTree)
        {
            return RepairError(
                ZO_ERROR(this, "iSize <= 999999", "Command tree too large for its block header", E_FAIL));
        }
        const HRESULT result = WriteTree(*output, *tree);
        if (result != S_OK)
        {
            // Deliberate: who asked for the tree has gone, so nobody is left to be told by the result.
            RepairError(ZO_ERROR(this, "hr == S_OK", "Broken scpi connection", result));
        }
        return S_OK;
    });
}

HRESULT CBScpiCommands::GetCommandHeader(wchar_t** text)
{
    return GetCommandData(text, false, false);
}

HRESULT CBScpiCommands::GetCommandSyntax(wchar_t** text)
{
    return GetCommandData(text, false, true);
}

HRESULT
CBScpiCommands::IsImplemented(unsigned long /*length*/, unsigned char* /*header*/, short* implemented)
{
    return GuardedEntry([&] {
        if (implemented == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(this, "pbImplemented"));
        }
        *implemented = VARIANT_FALSE;
        return S_FALSE;
    });
}

HRESULT CBScpiCommands::GetHeaderSyntax(unsigned long length,
                                        unsigned char* header,
                                        short* implemented,
                                        short* /*hasSetting*/,
                                        short* /*hasQuery*/,
                                        short* /*isDiagnostic*/,
                                        wchar_t** /*path*/,
                                        wchar_t** /*syntax*/)
{
    return CBScpiCommands::IsImplemented(length, header, implemented);
}

HRESULT CBScpiCommands::GetCommandHeaderDiag(wchar_t** text)
{
    return GetCommandData(text, true, false);
}

HRESULT CBScpiCommands::GetCommandSyntaxDiag(wchar_t** text)
{
    return GetCommandData(text, true, true);
}

HRESULT CBScpiCommands::GetParserTableSource(wchar_t** source, wchar_t** header)
{
    return GuardedRaisingEntry([&] {
        const tagZO_SCPI_PARSER_TREE* const tree = GetTable();
        if (tree == nullptr)
        {
            return S_FALSE;
        }
        for (const auto& [parameter, address] : {std::pair(kSource, source), std::pair(kHeader, header)})
        {
            if (const auto error = AddressError(this, parameter, address))
            {
                ThrowError(*error);
            }
        }
        std::ostringstream sourceText;
        std::ostringstream headerText;
        TableOf(*tree).DumpSourceHeader(sourceText, headerText);
        // Both are made before either is handed out: a lack of memory gives none.
        CComBSTR wideSource = Widen(sourceText.view());
        *header = Widen(headerText.view()).Detach();
        *source = wideSource.Detach();
        return S_OK;
    });
}

HRESULT CBScpiCommands::GetParserTableReference(tagZO_SCPI_PARSER_TREE* tree)
{
    return GuardedEntry([&] {
        if (tree == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(this, "pTree"));
        }
        const tagZO_SCPI_PARSER_TREE* const own = DoGetParserTree();
        *tree = own != nullptr ? *own : tagZO_SCPI_PARSER_TREE{};
        return own != nullptr ? S_OK : S_FALSE;
    });
}

HRESULT CBScpiCommands::GetCommandData(wchar_t** text, bool diagnostic, bool syntax)
{
    return GuardedEntry([&] {
        const tagZO_SCPI_PARSER_TREE* const tree = GetTable();
        if (tree == nullptr)
        {
            return S_FALSE;
        }
        if (const auto error = AddressError(this, kText, text))
        {
            return RepairError(*error);
        }
        std::list<std::string> lines;
        TableOf(*tree).GetAllCommands(diagnostic, syntax, lines);
        std::string joined;
        for (const std::string& line : lines)
        {
            joined.append(line).append(1, '\n');
        }
        *text = Widen(joined).Detach();
        return S_OK;
    });
}

const tagZO_SCPI_PARSER_TREE* CBScpiCommands::GetTable()
{
    const tagZO_SCPI_PARSER_TREE* const tree = DoGetParserTree();
    return tree != nullptr && tree->iSize != 0 && tree->pTable != nullptr ? tree : nullptr;
}

} // namespace ZoVelkor
