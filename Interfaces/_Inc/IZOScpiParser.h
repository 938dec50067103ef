#pragma once

#include "ScpiParserTree.h"
#include "Unknown.h"

#include <cstdint>

namespace ZoVelkor
{

struct IZOScpiDeviceHandler;
struct IZOScpiExecutionSink;

/// What the commands of a parser are for; shown in listings.
enum tagZO_SCPI_PARSER_TYPE : std::uint32_t
{
    ZO_PARSER_TYPE_INSTRUMENT = 0,  ///< the instrument itself
    ZO_PARSER_TYPE_MEASUREMENT = 1, ///< a measurement application
    ZO_PARSER_TYPE_SERVICE = 2      ///< production and service
};

/// The parser of one application: its command tree and who runs it.
///
/// Getters give S_OK; E_POINTER for a null pointer. Ownership: texts and references that come out are the
/// caller's. Threads: set up by the application before the parser is registered; read by the kernel during
/// registration.
struct IZOScpiParser : IUnknown
{
    static constexpr IID kInterfaceId{
        0x429EDD2B, 0x481D, 0x437C, {0x9E, 0xFE, 0x65, 0x10, 0xBE, 0x22, 0xAE, 0xAC}};

    /// Takes the application's command tree.
    ///
    /// @param type  see tagZO_SCPI_PARSER_TYPE
    /// @param name  of the application, for messages and listings; lent for the call
    /// @param transfer  where the tree lies; it is copied
    /// @param sink  runs the commands; counted
    /// @return S_OK; E_POINTER; E_INVALIDARG for a tree that is empty or not made of whole records
    virtual HRESULT RegisterCommandTree(tagZO_SCPI_PARSER_TYPE type,
                                        wchar_t* name,
                                        tagZO_SCPI_PARSER_TREE transfer,
                                        IZOScpiExecutionSink* sink) = 0;

    /// Gives the application's name.
    ///
    /// @param[out] name  a new BSTR; must point to a null BSTR, else E_INVALIDARG
    virtual HRESULT get_ParserName(wchar_t** name) = 0;
    /// Sets the application's name; copied.
    virtual HRESULT put_ParserName(wchar_t* name) = 0;
    /// Gives what the commands are for.
    virtual HRESULT get_ParserType(tagZO_SCPI_PARSER_TYPE* type) = 0;
    /// Sets what the commands are for.
    virtual HRESULT put_ParserType(tagZO_SCPI_PARSER_TYPE type) = 0;
    /// Whether the application is the one that measures: of several parsers that define a header, it runs it.
    /// Read by the kernel at registration.
    virtual HRESULT get_ActivatedMeasurementParser(short* activated) = 0;
    /// Sets it; non-zero: the application measures.
    virtual HRESULT put_ActivatedMeasurementParser(short activated) = 0;
    /// Tells where the parser's copy of the command tree lies.
    ///
    /// @param[out] tree  size and address 0 before RegisterCommandTree; valid until the next one
    virtual HRESULT GetCommandTree(tagZO_SCPI_PARSER_TREE* tree) = 0;
    /// Gives who runs the commands.
    ///
    /// @param[out] sink  a new reference; null before RegisterCommandTree
    virtual HRESULT GetExecutionSink(IZOScpiExecutionSink** sink) = 0;
    /// Gives who receives the device events.
    ///
    /// @param[out] handler  a new reference; null when the application has none
    virtual HRESULT GetDeviceHandler(IZOScpiDeviceHandler** handler) = 0;

protected:
    ~IZOScpiParser() = default;
};

inline constexpr const IID& IID_IZOScpiParser = IZOScpiParser::kInterfaceId;

} // namespace ZoVelkor
