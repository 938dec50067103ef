#include "CParserLanguage.h"

#include "BuiltIn/ScpiVersion.h"
#include "CComBSTR.h"
#include "GuardedEntry.h"
#include "Responses/ResponseText.h"

#include <cwchar>
#include <string>

namespace ZoVelkor::RemoteKernel
{
namespace
{

HRESULT GiveText(const char* text, wchar_t** target)
{
    if (target == nullptr)
    {
        return E_POINTER;
    }
    return *target != nullptr ? E_INVALIDARG
                              : GuardedEntry([&]() -> HRESULT { return CComBSTR(text).CopyTo(target); });
}

} // namespace

HRESULT CParserLanguage::get_Language(wchar_t** name)
{
    return GiveText("SCPI", name);
}

HRESULT CParserLanguage::put_Language(const wchar_t* name)
{
    if (name == nullptr)
    {
        return E_POINTER;
    }
    return wcscasecmp(name, L"SCPI") == 0 ? S_OK : E_INVALIDARG;
}

HRESULT CParserLanguage::get_LanguageVersion(wchar_t** version)
{
    return GiveText(kScpiVersion, version);
}

HRESULT CParserLanguage::IsHeaderKnown(const wchar_t* header, short* known)
{
    if (header == nullptr || known == nullptr)
    {
        return E_POINTER;
    }
    return GuardedEntry([&]() -> HRESULT {
        std::uint64_t generation = 0;
        const auto set = m_registry->Current(generation);
        const CComBSTR text(header);
        *known = ToVariantBool(set->index->Find(NarrowResponseText(text)) != nullptr);
        return S_OK;
    });
}

} // namespace ZoVelkor::RemoteKernel
