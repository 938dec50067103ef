#pragma once

#include "IZOScpiParserLanguage.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// The command language: SCPI. Threads: any operation from any thread.
class CParserLanguage : public IZOScpiParserLanguage
{
public:
    explicit CParserLanguage(const tagKernelParts& parts) : m_spRegistry(parts.spRegistry) {}
    virtual ~CParserLanguage() = default;

    HRESULT get_Language(wchar_t** name) override;
    HRESULT put_Language(wchar_t const* name) override;
    HRESULT get_LanguageVersion(wchar_t** version) override;
    HRESULT IsHeaderKnown(wchar_t const* header, short* known) override;

private:
    const CComPtr<CApplicationRegistryObject> m_spRegistry;
};

} // namespace ZoVelkor::RemoteKernel
