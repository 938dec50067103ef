#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// The command language of the program messages. Found at the root or for one path.
///
/// Threads: any operation from any thread. Texts are new BSTRs; their address must point to a null BSTR.
struct IZOScpiParserLanguage : IUnknown
{
    static constexpr IID kInterfaceId{
        0xDAC3E743, 0xBE1F, 0x4BC2, {0x9D, 0xDA, 0x49, 0x79, 0xB3, 0x6E, 0xA7, 0xBF}};

    /// Names the language.
    ///
    /// @param[out] name  "SCPI"
    /// @return S_OK; E_POINTER; E_INVALIDARG when name points to a text
    virtual HRESULT get_Language(wchar_t** name) = 0;
    /// Chooses the language; there is one, so this only checks.
    ///
    /// @param name  "SCPI", in any case
    /// @return S_OK; E_POINTER; E_INVALIDARG for a language that this kernel does not have
    virtual HRESULT put_Language(const wchar_t* name) = 0;
    /// Names the version of the standard.
    ///
    /// @param[out] version  year and version as SYSTem:VERSion? answers it
    /// @return as get_Language
    virtual HRESULT get_LanguageVersion(wchar_t** version) = 0;
    /// Looks a header up among the commands of the kernel and of all applications that are registered now.
    ///
    /// @param header      a command header as a program message has it, without arguments
    /// @param[out] known  VARIANT_TRUE when there is such a command
    /// @return S_OK; E_POINTER
    virtual HRESULT IsHeaderKnown(const wchar_t* header, short* known) = 0;

protected:
    ~IZOScpiParserLanguage() = default;
};

inline constexpr const IID& IID_IZOScpiParserLanguage = IZOScpiParserLanguage::kInterfaceId;

} // namespace ZoVelkor
