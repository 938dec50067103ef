#pragma once

#include "CComPtr.h"
#include "IZORegistryAccess.h"

#include <string>

namespace ZoVelkor::Demo
{

/// Where the registry keeps the instrument's values: below HKEY_LOCAL_MACHINE.
inline constexpr const wchar_t* kInstrumentKey = L"SOFTWARE\\ZoVelkor\\DemoInstrument";

// The keys below it.
inline constexpr const wchar_t* kIdentificationKey = L"Identification";
inline constexpr const wchar_t* kFormatKey = L"Format";
inline constexpr const wchar_t* kStatusKey = L"Status";
inline constexpr const wchar_t* kClockKey = L"Clock";
inline constexpr const wchar_t* kNetworkKey = L"Network";
inline constexpr const wchar_t* kStatesKey = L"States";
inline constexpr const wchar_t* kDiagnosisKey = L"Diagnosis";

/// The instrument's part of the registry: texts by key and name.
///
/// A registry that cannot be opened is told in one line on stderr; from then on nothing is there and nothing
/// is kept. Threads: any operation from any thread.
class CInstrumentRegistry
{
public:
    /// @param file  the database; empty: the one that the environment names
    explicit CInstrumentRegistry(const std::string& file);
    CInstrumentRegistry(const CInstrumentRegistry&) = delete;
    CInstrumentRegistry& operator=(const CInstrumentRegistry&) = delete;
    ~CInstrumentRegistry();

    /// @param[out] text  left alone on failure
    /// @return S_OK; S_FALSE when there is no such value; a failing result when it cannot be read
    HRESULT Read(const wchar_t* key, const wchar_t* name, std::string& text) const;

    /// The value; in place of one that is not there the text given, which is written, so that people find it.
    std::string ReadOr(const wchar_t* key, const wchar_t* name, const std::string& text) const;

    /// @param text  without NUL
    /// @return S_OK; a failing result
    HRESULT Write(const wchar_t* key, const wchar_t* name, const std::string& text) const;

private:
    class CSubKey;

    CComPtr<IZORegistryAccess> m_access; // null: no registry
    long m_key = 0;
    const bool m_ownFile;
};

} // namespace ZoVelkor::Demo
