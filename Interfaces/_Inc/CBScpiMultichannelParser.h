#pragma once

#include "CObjectDataReference.h"
#include "IZOScpiMultichannelParser.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Base of multichannel parsers: checks the pointers; the derived class makes and takes back the engines.
///
/// Results are those of the derived class; an exception in it becomes a result, unless it is a CShellError.
class ZO_EXPORT CBScpiMultichannelParser : public IZOScpiMultichannelParser,
                                           public virtual CObjectDataReference
{
public:
    /// @throws CShellError with E_POINTER when ppParserEngine is null
    HRESULT CreateClone(IUnknown** ppParserEngine) override;
    /// @throws CShellError with E_POINTER when pParserEngine is null
    HRESULT ReleaseClone(IUnknown* pParserEngine) override;

protected:
    // These two stand before the destructor, so that they take the slots that follow the interface.
    /// @param[out] ppParserEngine  a new reference; never a null address
    virtual HRESULT DoCreateClone(IUnknown** ppParserEngine) = 0;
    /// @param pParserEngine  an engine of DoCreateClone, lent for the call; not null
    virtual HRESULT DoReleaseClone(IUnknown* pParserEngine) = 0;

    ~CBScpiMultichannelParser() override = default;
};

} // namespace ZoVelkor
