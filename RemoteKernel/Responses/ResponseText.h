#pragma once

#include "Bstr.h"
#include "CodePage.h"

#include <string>

namespace ZoVelkor::RemoteKernel
{

/// Text of a BSTR for a response, in code page 0, which has one byte for each character; empty for null.
inline std::string NarrowResponseText(const wchar_t* text)
{
    const auto length = static_cast<int>(SysStringLen(text));
    std::string narrow(static_cast<std::size_t>(length), '\0');
    if (length != 0)
    {
        WideCharToMultiByte(0, 0, text, length, narrow.data(), length, nullptr, nullptr);
    }
    return narrow;
}

} // namespace ZoVelkor::RemoteKernel
