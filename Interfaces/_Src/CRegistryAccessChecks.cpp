#include "CRegistryAccessChecks.h"

#include "ErrorRaising.h"

#include <algorithm>

namespace ZoVelkor
{

void CRegistryAccessChecks::Pointer(const void* pointer,
                                    const char* name,
                                    const char* condition,
                                    int line) const
{
    if (pointer == nullptr)
    {
        ThrowError(NullPointerError(m_unit, &m_object, name, condition, line));
    }
}

void CRegistryAccessChecks::Any(std::initializer_list<const void*> pointers,
                                const char* condition,
                                int line) const
{
    const auto isSet = [](const void* pointer) { return pointer != nullptr; };
    if (std::none_of(pointers.begin(), pointers.end(), isSet))
    {
        Pointer(nullptr, "pData", condition, line);
    }
}

void CRegistryAccessChecks::Text(wchar_t* const* value, int line) const
{
    Pointer(value, "pbsValue", "pbsValue != NULL", line);
    OptionalText(value, line);
}

void CRegistryAccessChecks::OptionalText(wchar_t* const* value, int line) const
{
    if (value != nullptr && *value != nullptr)
    {
        Raise("*pbsValue == NULL", "The string would be lost (pbsValue)", E_INVALIDARG, line);
    }
}

void CRegistryAccessChecks::Buffer(const long* size, const unsigned char* data, int line) const
{
    if (size != nullptr && *size > 0)
    {
        Pointer(data, "pData", "pData != NULL", line);
    }
}

void CRegistryAccessChecks::Result(HRESULT result, int line) const
{
    if (result != S_OK && result != S_FALSE && result != E_FAIL)
    {
        Raise("hResult == S_OK || hResult == S_FALSE || hResult == E_FAIL",
              "HResult was invalid",
              result,
              line);
    }
}

void CRegistryAccessChecks::Raise(const char* condition, const char* message, HRESULT result, int line) const
{
    ThrowError(ErrorAt(m_unit, line, &m_object, condition, message, result));
}

} // namespace ZoVelkor
