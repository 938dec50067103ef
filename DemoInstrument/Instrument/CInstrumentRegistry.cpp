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
        : m_access(registry.m_access),
          m_result(m_access == nullptr ? E_FAIL : (*m_access.*open)(registry.m_key, CComBSTR(key), &m_key))
    {}
    CSubKey(const CSubKey&) = delete;
    CSubKey& operator=(const CSubKey&) = delete;
    ~CSubKey()
    {
        if (m_key != 0)
        {
            m_access->RegCloseKey(m_key);
        }
    }

    HRESULT Result() const { return m_result; }
    long Get() const { return m_key; }

private:
    const CComPtr<IZORegistryAccess> m_access;
    long m_key = 0;
    const HRESULT m_result;
};

CInstrumentRegistry::CInstrumentRegistry(const std::string& file) : m_ownFile(!file.empty())
{
    if (m_ownFile)
    {
        SetRegistryFile(file.c_str());
    }
    HRESULT result = GetModuleService(kRegistryServices, std::addressof(m_access));
    if (SUCCEEDED(result))
    {
        const auto root = static_cast<long>(HKEY_LOCAL_MACHINE);
        result = m_access->RegCreateKey(root, CComBSTR(kInstrumentKey), &m_key);
        // A registry that nobody may write is good enough to begin with.
        result = FAILED(result) ? m_access->RegOpenKey(root, CComBSTR(kInstrumentKey), &m_key) : result;
    }
    if (FAILED(result))
    {
        m_access.Release();
        fmt::print(stderr,
                   "zo-demo-instrument: no registry (0x{:08X}), starting with defaults and keeping nothing\n",
                   static_cast<ULONG>(result));
    }
}

CInstrumentRegistry::~CInstrumentRegistry()
{
    if (m_access != nullptr)
    {
        m_access->RegCloseKey(m_key);
    }
    if (m_ownFile)
    {
        SetRegistryFile(nullptr);
    }
}

HRESULT CInstrumentRegistry::Read(const wchar_t* key, const wchar_t* name, std::string& text) const
{
    const CSubKey subKey(*this, key, &IZORegistryAccess::RegOpenKey);
    CComBSTR value;
    const HRESULT result = FAILED(subKey.Result())
                               ? subKey.Result()
                               : m_access->ReadString(subKey.Get(), CComBSTR(name), &value);
    if (SUCCEEDED(result))
    {
        text = Narrow(value);
    }
    return result == kNotFound ? S_FALSE : result;
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
    const HRESULT result = FAILED(subKey.Result())
                               ? subKey.Result()
                               : m_access->WriteString(subKey.Get(), CComBSTR(name), Widen(text));
    if (FAILED(result))
    {
        return result;
    }
    // Who is answered may switch off at once. A busy registry has the value, if not yet on the disk.
    const LONG error = RegFlushKey(static_cast<HKEY>(subKey.Get()));
    return error == ERROR_SUCCESS || error == ERROR_BUSY ? result
                                                         : HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

} // namespace ZoVelkor::Demo
