#include "CBScpiMultichannelParser.h"

#include "ErrorRaising.h"
#include "GuardedEntry.h"

namespace ZoVelkor
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBScpiMultichannelParser");

HRESULT CBScpiMultichannelParser::CreateClone(IUnknown** ppParserEngine)
{
    return GuardedRaisingEntry([&] {
        if (ppParserEngine == nullptr)
        {
            ThrowError(ZO_NULL_POINTER(this, "ppParserEngine"));
        }
        return DoCreateClone(ppParserEngine);
    });
}

HRESULT CBScpiMultichannelParser::ReleaseClone(IUnknown* pParserEngine)
{
    return GuardedRaisingEntry([&] {
        if (pParserEngine == nullptr)
        {
            ThrowError(ZO_NULL_POINTER(this, "pParserEngine"));
        }
        return DoReleaseClone(pParserEngine);
    });
}

} // namespace ZoVelkor
