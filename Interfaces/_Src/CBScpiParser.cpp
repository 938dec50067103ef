#include "CBScpiParser.h"

#include "ErrorRaising.h"
#include "GuardedEntry.h"

#include <cstring>
#include <string>

namespace ZoVelkor
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBScpiParser");

CBScpiParser::CBScpiParser(IZOScpiDeviceHandler* deviceHandler) : m_deviceHandler(deviceHandler)
{}

HRESULT CBScpiParser::CheckTree(const wchar_t* name, const tagZO_SCPI_PARSER_TREE& transfer) const
{
    if (name == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "name"));
    }
    if (transfer.pTable == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "transfer.pTable"));
    }
    if (transfer.iSize == 0 || transfer.iSize % sizeof(_CMD_SET_RECORD) != 0)
    {
        return RepairError(ZO_ERROR(nullptr,
                                    "transfer.iSize % sizeof(record) == 0",
                                    std::to_string(transfer.iSize) +
                                        " bytes of a command tree are no whole number of records",
                                    E_INVALIDARG));
    }
    return S_OK;
}

HRESULT CBScpiParser::RegisterCommandTree(tagZO_SCPI_PARSER_TYPE type,
                                          wchar_t* name,
                                          tagZO_SCPI_PARSER_TREE transfer,
                                          IZOScpiExecutionSink* sink)
{
    if (const HRESULT result = CheckTree(name, transfer); FAILED(result))
    {
        return result;
    }
    if (sink == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "sink"));
    }
    return GuardedEntry([&]() -> HRESULT {
        // Copied as bytes: a tree that came as a transfer need not lie where records may.
        std::vector<_CMD_SET_RECORD> records(transfer.iSize / sizeof(_CMD_SET_RECORD));
        std::memcpy(records.data(), transfer.pTable, transfer.iSize);
        CComBSTR bsName(name);
        m_records.swap(records);
        m_tree = {transfer.iSize, m_records.data()};
        m_name.Attach(bsName.Detach());
        m_type = type;
        m_sink = sink;
        // A reference to itself would keep the object alive for ever.
        m_foreignSink = CComPtr<IZOScpiParser>(this).IsEqualObject(sink) ? nullptr : sink;
        return S_OK;
    });
}

HRESULT CBScpiParser::get_ParserName(wchar_t** name)
{
    if (name == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "name"));
    }
    return *name != nullptr ? E_INVALIDARG : m_name.CopyTo(name);
}

HRESULT CBScpiParser::put_ParserName(wchar_t* name)
{
    if (name == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "name"));
    }
    return GuardedEntry([&]() -> HRESULT {
        m_name = name;
        return S_OK;
    });
}

HRESULT CBScpiParser::get_ParserType(tagZO_SCPI_PARSER_TYPE* type)
{
    if (type == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "type"));
    }
    *type = m_type;
    return S_OK;
}

HRESULT CBScpiParser::put_ParserType(tagZO_SCPI_PARSER_TYPE type)
{
    m_type = type;
    return S_OK;
}

HRESULT CBScpiParser::get_ActivatedMeasurementParser(short* activated)
{
    if (activated == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "activated"));
    }
    *activated = m_vtbActivated;
    return S_OK;
}

HRESULT CBScpiParser::put_ActivatedMeasurementParser(short activated)
{
    m_vtbActivated = ToVariantBool(activated != 0);
    return S_OK;
}

HRESULT CBScpiParser::GetCommandTree(tagZO_SCPI_PARSER_TREE* tree)
{
    if (tree == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "tree"));
    }
    *tree = m_tree;
    return S_OK;
}

HRESULT CBScpiParser::GetExecutionSink(IZOScpiExecutionSink** sink)
{
    if (sink == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "sink"));
    }
    return CComPtr<IZOScpiExecutionSink>(m_sink).CopyTo(sink);
}

HRESULT CBScpiParser::GetDeviceHandler(IZOScpiDeviceHandler** handler)
{
    if (handler == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "handler"));
    }
    *handler = nullptr;
    CComPtr<IZOScpiDeviceHandler> found = m_deviceHandler;
    if (found == nullptr)
    {
        static_cast<void>(CComPtr<IZOScpiParser>(this).QueryInterface(&found));
    }
    *handler = found.Detach();
    return S_OK;
}

} // namespace ZoVelkor
