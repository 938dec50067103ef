#include "CScpiAdministrationTemplate.h"

#include "CComBSTR.h"
#include "CComQIPtr.h"
#include "IZOScpiCommands.h"
#include "IZOScpiExecutionSink.h"
#include "IZOScpiMultichannelAdministration.h"
#include "IZOScpiMultichannelEventObserver.h"
#include "IZOScpiMultichannelFunctionality.h"
#include "IZOScpiTree.h"
#include "KernelServices.h"
#include "Root.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace ZoVelkor
{
namespace
{

ZO_SOURCE_UNIT("Src/CScpiAdministrationTemplate");

template <class T>
CComPtr<T> Service(const char* condition)
{
    CComPtr<T> service;
    static_cast<void>(ZoGetRegisteredInterface(&T::kInterfaceId, &service));
    RequireInterface(kSourceUnit, service, condition);
    return service;
}

CComPtr<IZOScpiMultichannelAdministration> Administration()
{
    return Service<IZOScpiMultichannelAdministration>("pMultichannelAdmin != NULL");
}

long RemotePathCount(IZOScpiMultichannelAdministration& administration)
{
    long count = 0;
    RequireOk(kSourceUnit,
              administration.get_RemotePathCount(&count),
              "pMultichannelAdmin->get_RemotePathCount ( & iRemotePathCount ) == S_OK");
    return std::max(0L, count);
}

/// Passes an interface of the object to an operation of the administration.
template <class T>
HRESULT Administer(IUnknown* object,
                   const char* interfaceCondition,
                   HRESULT (IZOScpiMultichannelAdministration::*operation)(T*))
{
    const CComQIPtr<T> interface(object);
    RequireInterface(kSourceUnit, interface, interfaceCondition);
    return (Administration()->*operation)(interface);
}

constexpr char kParserCondition[] = "pMyScpiParser != NULL";
constexpr char kObserverCondition[] = "pMyEventObserver != NULL";

/// Ends a registration, which must give S_OK.
HRESULT RegistrationResult(HRESULT result, const char* message)
{
    Require(kSourceUnit, result == S_OK, "hr == S_OK", message);
    return result;
}

/// Ends the removal of a registration; S_FALSE, nothing was registered, is the caller's to judge.
HRESULT RemovalResult(HRESULT result, const char* message)
{
    Require(kSourceUnit, result == S_OK || result == S_FALSE, "hr == S_OK || hr == S_FALSE", message);
    return result;
}

} // namespace

HRESULT CScpiAdministrationTemplate::AttachRemoteSystem()
{
    DetachRemoteSystem();
    const auto pMultichannelAdmin = Administration();
    const auto multichannelFunc = Service<IZOScpiMultichannelFunctionality>("p_MultichannelFunc != NULL");
    const long count = RemotePathCount(*pMultichannelAdmin);
    std::vector<CComPtr<IZOScpiParserManagement>> parserManagements(static_cast<std::size_t>(count));
    for (long i = 0; i < count; ++i)
    {
        RequireOk(
            kSourceUnit,
            multichannelFunc->GetScpiParserManagement(i, &parserManagements[static_cast<std::size_t>(i)]),
            "p_MultichannelFunc->GetScpiParserManagement ( i, ... ) == S_OK");
    }
    m_parserManagements = std::move(parserManagements);
    return S_OK;
}

void CScpiAdministrationTemplate::DetachRemoteSystem() noexcept
{
    m_parserManagements.clear();
}

long CScpiAdministrationTemplate::GetRemotePathCount() const
{
    return RemotePathCount(*Administration());
}

IZOScpiParserManagement* CScpiAdministrationTemplate::GetScpiParserManagement(long remotePath) const noexcept
{
    return remotePath >= 0 && std::cmp_less(remotePath, m_parserManagements.size())
               ? m_parserManagements[static_cast<std::size_t>(remotePath)].Get()
               : nullptr;
}

HRESULT CScpiAdministrationTemplate::RegisterMultichannelParser(IUnknown* pParser)
{
    if (pParser == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "pParser"));
    }
    return RegistrationResult(
        Administer(pParser, kParserCondition, &IZOScpiMultichannelAdministration::RegisterParser),
        "RegisterExternalParser failed");
}

HRESULT CScpiAdministrationTemplate::UnregisterMultichannelParser(IUnknown* pParser)
{
    if (pParser == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "pParser"));
    }
    return RemovalResult(
        Administer(pParser, kParserCondition, &IZOScpiMultichannelAdministration::UnregisterParser),
        "invalid result of UnregisterExternalParser()");
}

HRESULT CScpiAdministrationTemplate::RegisterMultichannelEventObserver(IUnknown* pObserver)
{
    if (pObserver == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "pObserver"));
    }
    return RegistrationResult(
        Administer(pObserver, kObserverCondition, &IZOScpiMultichannelAdministration::RegisterEventObserver),
        "could not register multichannel event registration");
}

HRESULT CScpiAdministrationTemplate::UnregisterMultichannelEventObserver(IUnknown* pObserver)
{
    if (pObserver == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "pObserver"));
    }
    return RemovalResult(Administer(pObserver,
                                    kObserverCondition,
                                    &IZOScpiMultichannelAdministration::UnregisterEventObserver),
                         "could not unregister multichannel event registration");
}

HRESULT CScpiAdministrationTemplate::RegisterScpiPlugIn(IUnknown* pPlugIn)
{
    if (pPlugIn == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "pPlugIn"));
    }
    return RegistrationResult(Service<IZOScpiTree>("pScpiTree != NULL")->RegisterPlugIn(pPlugIn),
                              "could not register plug-in");
}

HRESULT CScpiAdministrationTemplate::UnregisterScpiPlugIn(IUnknown* pPlugIn)
{
    if (pPlugIn == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "pPlugIn"));
    }
    return RemovalResult(Service<IZOScpiTree>("pScpiTree != NULL")->UnregisterPlugIn(pPlugIn),
                         "could not unregister plug-in");
}

HRESULT CScpiAdministrationTemplate::SetupAggregatedParser(IUnknown* /*pOuter*/,
                                                           IUnknown* pInner,
                                                           long length,
                                                           const char* data,
                                                           tagZO_SCPI_PARSER_TYPE type,
                                                           const wchar_t* name,
                                                           bool activatedMeasurementParser)
{
    if (pInner == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "pInner"));
    }
    const CComQIPtr<IZOScpiParser> pMyScpiParser(pInner);
    RequireInterface(kSourceUnit, pMyScpiParser, kParserCondition);
    const CComQIPtr<IZOScpiCommands> pMyScpiCommands(pInner);
    RequireInterface(kSourceUnit, pMyScpiCommands, "pMyScpiCommands != NULL");
    const CComQIPtr<IZOScpiExecutionSink> pMyScpiExecutionSink(pInner);
    RequireInterface(kSourceUnit, pMyScpiExecutionSink, "pMyScpiExecutionSink != NULL");

    const tagZO_SCPI_PARSER_TREE transfer = MakeParserTree(kSourceUnit, length, data);
    const CComBSTR parserName(name);
    const VARIANT_BOOL activated = ToVariantBool(activatedMeasurementParser);
    RequireOk(kSourceUnit,
              pMyScpiParser->put_ParserName(parserName),
              "pMyScpiParser->put_ParserName ( ParserName ) == S_OK");
    RequireOk(kSourceUnit,
              pMyScpiParser->put_ParserType(type),
              "pMyScpiParser->put_ParserType ( ParserType ) == S_OK");
    RequireOk(kSourceUnit,
              pMyScpiParser->RegisterCommandTree(type, parserName, transfer, pMyScpiExecutionSink),
              "pMyScpiParser->RegisterCommandTree ( ParserType, ParserName, Transfer, "
              "pMyScpiExecutionSink ) == S_OK");
    RequireOk(kSourceUnit,
              pMyScpiParser->put_ActivatedMeasurementParser(activated),
              "pMyScpiParser->put_ActivatedMeasurementParser ( ActivatedMeasurementParser ) == S_OK");
    return S_OK;
}

} // namespace ZoVelkor
