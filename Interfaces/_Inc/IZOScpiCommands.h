#pragma once

#include "ScpiParserTree.h"
#include "Unknown.h"

namespace ZoVelkor
{

struct IZOScpiOutputBuffer;

/// The command tree of one application, for service tools: as raw table, as listing or as generated source.
///
/// Every text is handed out as a new BSTR that the caller frees; the address of a text must not be null and
/// must hold a null BSTR. Operations that need a table answer S_FALSE without one, before anything else, and
/// leave their out-parameters alone.
/// Threads: as far as the application's table does not change, any operation from any thread.
struct IZOScpiCommands : IUnknown
{
    static constexpr IID kInterfaceId{
        0x40B83701, 0x7B11, 0x4896, {0xA6, 0x14, 0x9A, 0xFF, 0x02, 0xE3, 0x7D, 0x3C}};

    /// Writes the table to a response: version, comma, definite-length block (IEEE 488.2 section 8.7.9).
    virtual HRESULT SendCommandTree(IZOScpiOutputBuffer* output) = 0;
    /// All command headers, one a line; without diagnostic commands.
    virtual HRESULT GetCommandHeader(wchar_t** text) = 0;
    /// As GetCommandHeader, with the syntax of the parameters.
    virtual HRESULT GetCommandSyntax(wchar_t** text) = 0;
    /// Whether a header belongs to the tree.
    ///
    /// @param length  bytes at header
    virtual HRESULT IsImplemented(unsigned long length, unsigned char* header, short* implemented) = 0;
    /// What the tree knows of one header; parameters as for IsImplemented.
    virtual HRESULT GetHeaderSyntax(unsigned long length,
                                    unsigned char* header,
                                    short* implemented,
                                    short* hasSetting,
                                    short* hasQuery,
                                    short* isDiagnostic,
                                    wchar_t** path,
                                    wchar_t** syntax) = 0;
    /// The headers of the diagnostic commands, one a line.
    virtual HRESULT GetCommandHeaderDiag(wchar_t** text) = 0;
    /// As GetCommandHeaderDiag, with the syntax of the parameters.
    virtual HRESULT GetCommandSyntaxDiag(wchar_t** text) = 0;
    /// The table as C++ text, see CScpiParserTable::DumpSourceHeader.
    virtual HRESULT GetParserTableSource(wchar_t** source, wchar_t** header) = 0;
    /// Where the table lies.
    virtual HRESULT GetParserTableReference(tagZO_SCPI_PARSER_TREE* tree) = 0;

protected:
    ~IZOScpiCommands() = default;
};

inline constexpr const IID& IID_IZOScpiCommands = IZOScpiCommands::kInterfaceId;

} // namespace ZoVelkor
