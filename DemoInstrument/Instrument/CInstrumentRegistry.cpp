#include "CInstrumentRegistry.h"

#include "CComBSTR.h"
#include "CodePage.h"
#include "ModuleServices.h"
#include "Registry.h"

#include <fmt/format.h>

#include <cstdio>
#include <memory>

namespace ZoVelkor::Demo
{
namespace
{

constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

std::string Narrow(const CComBSTR& text)
{
    const int length = static_cast<int>(text.Length());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

CComBSTR Widen(const std::string& text)
{
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
    CComBSTR wide(size);
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide, size);
    return wide;
}

} // namespace

/// A key below that of the instrument, open for one access.
class CInstrumentRegistry::CSubKey
{
public:
    using TOpen = HRESULT (IZORegistryAccess::*)(long, wchar_t*, long*);

    CSubKey(const CInstrumentRegistry& registry, const wchar_t* key, TOpen open)
        : m_spAccess(registry.m_spAccess),
          m_result(m_spAccess == nullptr ? E_FAIL
                                         : (*m_spAccess.*open)(registry.m_key, CComBSTR(key), &m_key))
    {}
    CSubKey(const CSubKey&) = delete;
    CSubKey& operator=(const CSubKey&) = delete;
    ~CSubKey()
    {
        if (m_key != 0)
        {
            m_spAccess->RegCloseKey(m_key);
        }
    }

    HRESULT Result() const { return m_result; }
    long Get() const { return m_key; }

private:
    const CComPtr<IZORegistryAccess> m_spAccess;
    long m_key = 0;
    const HRESULT m_result;
};

CInstrumentRegistry::CInstrumentRegistry(const std::string& file) : m_bOwnFile(!file.empty())
{
    if (m_bOwnFile)
    {
        SetRegistryFile(file.c_str());
    }
    HRESULT hr = GetModuleService(kRegistryServices, std::addressof(m_spAccess));
    if (SUCCEEDED(hr))
    {
        const auto root = static_cast<long>(HKEY_LOCAL_MACHINE);
        hr = m_spAccess->RegCreateKey(root, CComBSTR(kInstrumentKey), &m_key);
        // A registry that nobody may write is good enough to begin with.
        hr = FAILED(hr) ? m_spAccess->RegOpenKey(root, CComBSTR(kInstrumentKey), &m_key) : hr;
    }
    if (FAILED(hr))
    {
        m_spAccess.Release();
        fmt::print(stderr,
                   "zo-demo-instrument: no registry (0x{:08X}), starting with defaults and keeping nothing\n",
                   static_cast<ULONG>(hr));
    }
}

CInstrumentRegistry::~CInstrumentRegistry()
{
    if (m_spAccess != nullptr)
    {
        m_spAccess->RegCloseKey(m_key);
    }
    if (m_bOwnFile)
    {
        SetRegistryFile(nullptr);
    }
}

HRESULT CInstrumentRegistry::Read(const wchar_t* key, const wchar_t* name, std::string& text) const
{
    const CSubKey subKey(*this, key, &IZORegistryAccess::RegOpenKey);
    CComBSTR value;
    const HRESULT hr = FAILED(subKey.Result()) ? subKey.Result()
                                               : m_spAccess->ReadString(subKey.Get(), CComBSTR(name), &value);
    if (SUCCEEDED(hr))
    {
        text = Narrow(value);
    }
    return hr == kNotFound ? S_FALSE : hr;
}

std::string
CInstrumentRegistry::ReadOr(const wchar_t* key, const wchar_t* name, const std::string& text) const
{
    std::string value = text;
    if (Read(key, name, value) == S_FALSE)
    {
        Write(key, name, text);
    }
    return value;
}

HRESULT CInstrumentRegistry::Write(const wchar_t* key, const wchar_t* name, const std::string& text) const
{
    const CSubKey subKey(*this, key, &IZORegistryAccess::RegCreateKey);
    const HRESULT hr = FAILED(subKey.Result())
                           ? subKey.Result()
                           : m_spAccess->WriteString(subKey.Get(), CComBSTR(name), Widen(text));
    if (FAILED(hr))
    {
        return hr;
    }
    // Who is answered may switch off at once. A busy registry has the value, if not yet on the disk.
    const LONG error = RegFlushKey(static_cast<HKEY>(subKey.Get()));
    return error == ERROR_SUCCESS || error == ERROR_BUSY ? hr : HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

} // namespace ZoVelkor::Demo
