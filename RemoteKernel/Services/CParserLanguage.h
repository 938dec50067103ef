#pragma once

#include "IZOScpiParserLanguage.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// The command language: SCPI. Threads: any operation from any thread.
class CParserLanguage : public IZOScpiParserLanguage
{
public:
    explicit CParserLanguage(const KernelParts& parts) : m_registry(parts.registry) {}
    virtual ~CParserLanguage() = default;

    HRESULT get_Language(wchar_t** name) override;
    HRESULT put_Language(const wchar_t* name) override;
    HRESULT get_LanguageVersion(wchar_t** version) override;
    HRESULT IsHeaderKnown(const wchar_t* header, short* known) override;

private:
    const CComPtr<CApplicationRegistryObject> m_registry;
};

} // namespace ZoVelkor::RemoteKernel
