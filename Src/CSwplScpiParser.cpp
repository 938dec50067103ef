#include "CSwplScpiParser.h"

#include "Assertion.h"
#include "KernelServices.h"

#include <utility>

namespace ZoVelkor
{
namespace
{

// The helpers of the manager report under its name.
ZO_SOURCE_UNIT("Src/CSwplScpiManager");

/// Takes an interface of the object, if it has it; the slot must be empty.
template <class T>
void Take(const CComPtr<IUnknown>& object, CComPtr<T>& slot)
{
    ZO_ASSERT(slot == nullptr);
    static_cast<void>(object.QueryInterface(&slot));
}

} // namespace

HRESULT CSwplScpiParser::Attach(IUnknown* object)
{
    if (object == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "object"));
    }
    const CComPtr<IUnknown> pObject(object);
    Take(pObject, m_pIScpiParser);
    Take(pObject, m_pIScpiExecutionSink);
    Take(pObject, m_pIScpiCommands);
    return S_OK;
}

HRESULT CSwplScpiParser::RegisterCommandTree(long length,
                                             const char* data,
                                             tagZO_SCPI_PARSER_TYPE type,
                                             const wchar_t* name)
{
    RequireInterface(kSourceUnit, m_pIScpiParser, "m_pIScpiParser != NULL");
    const tagZO_SCPI_PARSER_TREE locTransfer = MakeParserTree(kSourceUnit, length, data);
    CComBSTR bsApplicName(name);
    RequireOk(
        kSourceUnit,
        m_pIScpiParser->RegisterCommandTree(type, bsApplicName, locTransfer, m_pIScpiExecutionSink),
        "m_pIScpiParser->RegisterCommandTree(ParserType, bsApplicName, locTransfer, m_pIScpiExecutionSink)");
    m_parserType = type;
    m_parserName = std::move(bsApplicName);
    return S_OK;
}

void CSwplScpiParser::Detach() noexcept
{
    m_pIScpiParser.Release();
    m_pIScpiExecutionSink.Release();
    m_pIScpiCommands.Release();
}

} // namespace ZoVelkor
