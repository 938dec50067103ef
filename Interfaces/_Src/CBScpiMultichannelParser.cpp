#include "CBScpiMultichannelParser.h"

#include "ErrorRaising.h"

namespace ZoVelkor
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBScpiMultichannelParser")

HRESULT CBScpiMultichannelParser::CreateClone(IUnknown** ppParserEngine)
{
    if (ppParserEngine == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(this, "ppParserEngine"));
    }
    return DoCreateClone(ppParserEngine);
}

HRESULT CBScpiMultichannelParser::ReleaseClone(IUnknown* pParserEngine)
{
    if (pParserEngine == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(this, "pParserEngine"));
    }
    return DoReleaseClone(pParserEngine);
}

} // namespace ZoVelkor
