#pragma once

#include "CComBSTR.h"
#include "CComPtr.h"
#include "Guid.h"
#include "IZOScpiCommands.h"
#include "IZOScpiExecutionSink.h"
#include "IZOScpiParser.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// One parser of an application: what CSwplScpiManager registers with the kernel.
///
/// Ownership: a reference to each interface, and a copy of the name. A copy shares the interfaces and the
/// identity. Threads: one at a time.
class ZO_EXPORT CSwplScpiParser
{
public:
    /// Takes IZOScpiParser, IZOScpiExecutionSink and IZOScpiCommands of the object, as far as it has them.
    ///
    /// Nothing may be attached yet: that is checked like an assertion.
    /// @return S_OK, also when interfaces are missing; E_POINTER (reported)
    HRESULT Attach(IUnknown* object);

    /// Hands the command tree and the attached execution sink to the attached parser, then keeps type and
    /// name.
    ///
    /// @param length  of the table, in bytes
    /// @param data  first record of the table, see ScpiCommandTable.h; the parser copies it
    /// @param name  of the application; copied; whether null will do is up to the parser
    /// @return S_OK
    /// @throws CShellError when the parser refuses, without attached parser, and for a length beyond 32
    ///         bits; type and name are then as before
    HRESULT
    RegisterCommandTree(long length, const char* data, tagZO_SCPI_PARSER_TYPE type, const wchar_t* name);

    /// Releases the three interfaces; type, name and identity stay.
    void Detach() noexcept;

    /// Borrowed; null when nothing is attached or the attached object lacks the interface.
    IZOScpiParser* GetScpiParserInterface() const noexcept { return m_pIScpiParser; }
    /// Borrowed, see GetScpiParserInterface.
    IZOScpiExecutionSink* GetScpiExecutionSinkInterface() const noexcept { return m_pIScpiExecutionSink; }
    /// Borrowed, see GetScpiParserInterface.
    IZOScpiCommands* GetScpiCommandsInterface() const noexcept { return m_pIScpiCommands; }

    /// What the commands are for; ZO_PARSER_TYPE_INSTRUMENT at first.
    tagZO_SCPI_PARSER_TYPE GetParserType() const noexcept { return m_parserType; }
    /// Changes the type here; a parser that is registered keeps its own.
    void SetParserType(tagZO_SCPI_PARSER_TYPE type) noexcept { m_parserType = type; }

    /// A BSTR, borrowed until the next change; null when none was set.
    const wchar_t* GetParserName() const noexcept { return m_parserName; }
    /// @param name  copied up to its terminator; null for none
    void SetParserName(const wchar_t* name) { m_parserName = name; }

    /// The identity under which the parser was registered last; all zero before.
    GUID GetGuid() const noexcept { return m_guidObjectId; }
    /// Sets the identity; CSwplScpiManager::RegisterParser does.
    void SetGuid(GUID id) noexcept { m_guidObjectId = id; }

private:
    CComPtr<IZOScpiParser> m_pIScpiParser;
    CComPtr<IZOScpiExecutionSink> m_pIScpiExecutionSink;
    CComPtr<IZOScpiCommands> m_pIScpiCommands;
    tagZO_SCPI_PARSER_TYPE m_parserType = ZO_PARSER_TYPE_INSTRUMENT;
    CComBSTR m_parserName;
    GUID m_guidObjectId = GUID_NULL;
};

} // namespace ZoVelkor
