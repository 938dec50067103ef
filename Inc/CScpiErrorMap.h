#pragma once

#include "CAdapt.h"
#include "CComBSTR.h"
#include "ZoExport.h"

#include <list>
#include <map>
#include <string>
#include <string_view>

namespace ZoVelkor
{

/// Standard text of a SCPI error number, without allocation.
///
/// @param code  0 or a negative number of the standard
/// @return the text, a literal; "Device specific error" for every other number
ZO_EXPORT std::string_view GetScpiErrorText(short code) noexcept;

/// Dictionary from the standard SCPI error numbers to their texts.
///
/// Holds exactly the standard's numbers; instruments cannot add any. A copy owns its own texts.
/// Errors: none but std::bad_alloc. Threads: one instance may be read by several threads.
/// Standard: SCPI-99 vol. 2, 21.8.9 to 21.8.16.
class ZO_EXPORT CScpiErrorMap
{
public:
    /// With the numbers and texts of the standard.
    CScpiErrorMap();
    CScpiErrorMap(const CScpiErrorMap&) = default;
    CScpiErrorMap& operator=(const CScpiErrorMap&) = default;
    virtual ~CScpiErrorMap() = default;

    /// Replaces text by the text of the error number, "Device specific error" for an unknown one.
    ///
    /// @param[out] text  what it held is freed
    void GetErrorText(short code, CComBSTR& text) const;

    /// All entries as response lines such as `-100,"Command error"`.
    ///
    /// Sorted as text, not by number: -100 first, then by magnitude, `0,"No error"` last.
    std::list<std::string> GetAllErrorResponseMessages() const;

private:
    std::map<short, CAdapt<CComBSTR>> m_texts;
};

} // namespace ZoVelkor
