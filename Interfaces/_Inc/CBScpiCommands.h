#pragma once

#include "CObjectDataReference.h"
#include "IZOScpiCommands.h"
#include "ZoExport.h"

#include <cstdint>
#include <string_view>

namespace ZoVelkor
{

/// Base of command trees: the derived class names its table, the base lists it, sends it and writes it out.
///
/// A null pointer, or a text address that already holds a string, is reported and gives E_POINTER or
/// E_INVALIDARG. A failed operation has written none of its out-parameters.
class ZO_EXPORT CBScpiCommands : public IZOScpiCommands, public virtual CObjectDataReference
{
public:
    /// Version of the form that SendCommandTree writes.
    static constexpr std::string_view kTreeVersion = "1.00";

    /// The largest table that it can write, in bytes: six length digits tell no more.
    static constexpr std::uint32_t kLargestTree = 999'999;

    /// Writes "1.00,#6" with six length digits, then the records as they lie in memory.
    ///
    /// @return S_OK also when the output fails: that is reported as "Broken scpi connection", and nothing
    ///         more is written; S_FALSE without a table; E_POINTER; E_FAIL, reported and nothing written, for
    ///         a table of more than 999999 bytes, whose length the six digits cannot tell
    HRESULT SendCommandTree(IZOScpiOutputBuffer* output) override;
    /// @param[out] text  header help; a line feed ends each line; empty when all commands are diagnostic
    /// @return S_OK; S_FALSE without a table; E_POINTER; E_INVALIDARG; E_OUTOFMEMORY
    HRESULT GetCommandHeader(wchar_t** text) override;
    /// Syntax help; otherwise as GetCommandHeader.
    HRESULT GetCommandSyntax(wchar_t** text) override;
    /// Knows no command.
    ///
    /// @param[out] implemented  0
    /// @return S_FALSE; E_POINTER
    HRESULT IsImplemented(unsigned long length, unsigned char* header, short* implemented) override;
    /// Knows no command.
    ///
    /// @param[out] implemented  0; the other out-parameters are left alone and may be null
    /// @return S_FALSE; E_POINTER
    HRESULT GetHeaderSyntax(unsigned long length,
                            unsigned char* header,
                            short* implemented,
                            short* hasSetting,
                            short* hasQuery,
                            short* isDiagnostic,
                            wchar_t** path,
                            wchar_t** syntax) override;
    /// Diagnostic commands alone; otherwise as GetCommandHeader.
    HRESULT GetCommandHeaderDiag(wchar_t** text) override;
    /// Diagnostic commands alone; otherwise as GetCommandSyntax.
    HRESULT GetCommandSyntaxDiag(wchar_t** text) override;
    /// @param[out] source  text of the file PrsTab.cpp
    /// @param[out] header  text of the file PrsTab.hpp
    /// @return S_OK; S_FALSE without a table; E_OUTOFMEMORY
    /// @throws CShellError with E_POINTER or E_INVALIDARG for an unusable address
    HRESULT GetParserTableSource(wchar_t** source, wchar_t** header) override;
    /// @param[out] tree  the application's own words, also when they stand for no table; zeros without a tree
    /// @return S_OK; S_FALSE without a tree; E_POINTER
    HRESULT GetParserTableReference(tagZO_SCPI_PARSER_TREE* tree) override;

protected:
    // The destructor stands before the operation that follows it in the table of virtual functions.
    ~CBScpiCommands() override = default;

    /// Names the application's table; asked for by every operation.
    ///
    /// @return the application's tree, valid as long as the component; null when there is none
    virtual const tagZO_SCPI_PARSER_TREE* DoGetParserTree() = 0;

private:
    HRESULT GetCommandData(wchar_t** text, bool diagnostic, bool syntax);
    const tagZO_SCPI_PARSER_TREE* GetTable();
};

} // namespace ZoVelkor
