#pragma once

#include "Bstr.h"

#include <string>
#include <utility>

namespace ZoVelkor::Transports
{

/// Puts a text into a string that a record owns; what it held is freed.
inline void Replace(BSTR& target, const std::string& text)
{
    SysFreeString(std::exchange(target, A2WBSTR(text.c_str())));
}

} // namespace ZoVelkor::Transports
