#include "SafeArray.h"

#include "VariantTypes.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace
{
/// The index behind the last element, in a range that cannot overflow.
LONGLONG EndIndex(const SAFEARRAYBOUND& bound) noexcept
{
    return LONGLONG{bound.lLbound} + bound.cElements;
}

HRESULT CheckBoundQuery(const SAFEARRAY* array, UINT dimension, const LONG* bound) noexcept
{
    if (array == nullptr)
    {
        return E_INVALIDARG;
    }
    if (dimension != 1)
    {
        return DISP_E_BADINDEX;
    }
    return bound == nullptr ? E_POINTER : S_OK;
}
} // namespace

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG elementCount) noexcept
{
    const SAFEARRAYBOUND bound{elementCount, lowerBound};
    const LONGLONG lastIndex = EndIndex(bound) - 1;
    if (!IsPlainScalar(type) || lastIndex < std::numeric_limits<LONG>::min() ||
        lastIndex > std::numeric_limits<LONG>::max())
    {
        return nullptr;
    }
    const std::size_t elementSize = VariantType(type).size;
    auto* array = static_cast<SAFEARRAY*>(std::calloc(1, sizeof(SAFEARRAY)));
    void* data = std::calloc(std::size_t{elementCount} + 1, elementSize);
    if (array == nullptr || data == nullptr)
    {
        std::free(array);
        std::free(data);
        return nullptr;
    }
    *array = SAFEARRAY{1, type, static_cast<ULONG>(elementSize), 0, data, {bound}};
    return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) noexcept
{
    if (array == nullptr)
    {
        return S_OK;
    }
    if (array->cLocks != 0)
    {
        return DISP_E_ARRAYISLOCKED;
    }
    std::free(array->pvData);
    std::free(array);
    return S_OK;
}

HRESULT SafeArrayCopy(const SAFEARRAY* array, SAFEARRAY** copy) noexcept
{
    if (copy == nullptr)
    {
        return E_POINTER;
    }
    *copy = nullptr;
    if (array == nullptr)
    {
        return S_OK;
    }
    const SAFEARRAYBOUND& bound = array->rgsabound[0];
    *copy = SafeArrayCreateVector(array->elementType, bound.lLbound, bound.cElements);
    if (*copy == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    std::memcpy((*copy)->pvData, array->pvData, std::size_t{bound.cElements} * array->cbElements);
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) noexcept
{
    if (data == nullptr)
    {
        return E_POINTER;
    }
    *data = nullptr;
    if (array == nullptr)
    {
        return E_INVALIDARG;
    }
    ++array->cLocks;
    *data = array->pvData;
    return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) noexcept
{
    if (array == nullptr)
    {
        return E_INVALIDARG;
    }
    if (array->cLocks == 0)
    {
        return E_UNEXPECTED;
    }
    --array->cLocks;
    return S_OK;
}

UINT SafeArrayGetElemsize(const SAFEARRAY* array) noexcept
{
    return array == nullptr ? 0 : array->cbElements;
}

HRESULT SafeArrayGetUBound(const SAFEARRAY* array, UINT dimension, LONG* bound) noexcept
{
    const HRESULT result = CheckBoundQuery(array, dimension, bound);
    if (SUCCEEDED(result))
    {
        *bound = static_cast<LONG>(EndIndex(array->rgsabound[0]) - 1);
    }
    return result;
}

HRESULT SafeArrayGetLBound(const SAFEARRAY* array, UINT dimension, LONG* bound) noexcept
{
    const HRESULT result = CheckBoundQuery(array, dimension, bound);
    if (SUCCEEDED(result))
    {
        *bound = array->rgsabound[0].lLbound;
    }
    return result;
}
