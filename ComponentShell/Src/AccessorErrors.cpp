#include "CAccessor.h"
#include "CArrayAccessor.h"
#include "ErrorRaising.h"

#include <fmt/format.h>

namespace ZoVelkor
{
namespace
{
ZO_SOURCE_UNIT("ComponentShell/Src/AccessorErrors");
} // namespace

void ThrowArrayIndexError(unsigned long index, unsigned long size)
{
    ThrowError(ZO_ERROR(nullptr,
                        "index < GetSize()",
                        fmt::format("Array index out of range ({} of {})", index, size),
                        E_INVALIDARG));
}

void ThrowValueNotSetError()
{
    ThrowError(ZO_ERROR(nullptr, "IsSet()", "Value is not set", E_UNEXPECTED));
}
} // namespace ZoVelkor
