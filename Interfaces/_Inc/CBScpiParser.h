#pragma once

#include "CComBSTR.h"
#include "CComPtr.h"
#include "IZOScpiDeviceHandler.h"
#include "IZOScpiExecutionSink.h"
#include "IZOScpiParser.h"
#include "ZoExport.h"

#include <vector>

namespace ZoVelkor
{

/// Base of application parsers: keeps the command tree, its execution sink and the device handler.
///
/// `CComObject<CBScpiParser, IZOScpiParser>` is complete; an application that also lists its sink and device
/// handler among the interfaces of one object has all of them in one place.
/// A null pointer is reported and gives E_POINTER.
/// Threads: set up before the parser is registered; then any thread reads.
class ZO_EXPORT CBScpiParser : public IZOScpiParser
{
public:
    /// A parser without tree and name, for the instrument.
    ///
    /// @param deviceHandler  counted; null: the parser's own IZOScpiDeviceHandler, if it has one
    explicit CBScpiParser(IZOScpiDeviceHandler* deviceHandler = nullptr);

    /// Copies the tree and keeps the sink; a second call replaces both.
    ///
    /// @param sink  counted, unless it belongs to the same object as the parser
    /// @return S_OK; E_POINTER; E_INVALIDARG, reported, for a tree that is empty or not made of whole
    ///         records; E_OUTOFMEMORY. On failure the former tree stays.
    HRESULT RegisterCommandTree(tagZO_SCPI_PARSER_TYPE type,
                                wchar_t* name,
                                tagZO_SCPI_PARSER_TREE transfer,
                                IZOScpiExecutionSink* sink) override;
    HRESULT get_ParserName(wchar_t** name) override;
    HRESULT put_ParserName(wchar_t* name) override;
    HRESULT get_ParserType(tagZO_SCPI_PARSER_TYPE* type) override;
    HRESULT put_ParserType(tagZO_SCPI_PARSER_TYPE type) override;
    HRESULT get_ActivatedMeasurementParser(short* activated) override;
    HRESULT put_ActivatedMeasurementParser(short activated) override;
    HRESULT GetCommandTree(tagZO_SCPI_PARSER_TREE* tree) override;
    HRESULT GetExecutionSink(IZOScpiExecutionSink** sink) override;
    HRESULT GetDeviceHandler(IZOScpiDeviceHandler** handler) override;

protected:
    virtual ~CBScpiParser() = default;

    /// The command tree; size and address 0 before RegisterCommandTree.
    const tagZO_SCPI_PARSER_TREE& CommandTree() const noexcept { return m_tree; }

private:
    HRESULT CheckTree(const wchar_t* name, const tagZO_SCPI_PARSER_TREE& transfer) const;

    CComBSTR m_name;
    tagZO_SCPI_PARSER_TYPE m_type = ZO_PARSER_TYPE_INSTRUMENT;
    VARIANT_BOOL m_vtbActivated = VARIANT_FALSE;
    std::vector<_CMD_SET_RECORD> m_records;
    tagZO_SCPI_PARSER_TREE m_tree{};
    IZOScpiExecutionSink* m_sink = nullptr;
    CComPtr<IZOScpiExecutionSink> m_foreignSink; // m_sink, when another object is to be kept alive
    CComPtr<IZOScpiDeviceHandler> m_deviceHandler;
};

} // namespace ZoVelkor
