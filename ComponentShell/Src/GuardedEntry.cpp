#include "GuardedEntry.h"

#include "ErrorRaising.h"

#include <exception>
#include <new>

namespace ZoVelkor
{
namespace
{
ZO_SOURCE_UNIT("ComponentShell/Src/GuardedEntry");

HRESULT ReportForeign(const char* message, HRESULT result) noexcept
{
    try
    {
        return RepairError(ZO_ERROR(nullptr, "no exception leaves the operation", message, result));
    }
    catch (...) // no memory for the message
    {
        return result;
    }
}
} // namespace

HRESULT ResultOfCurrentException() noexcept
{
    try
    {
        throw;
    }
    catch (const CShellError& error)
    {
        return FAILED(error.Report().result) ? error.Report().result : E_FAIL;
    }
    catch (const std::bad_alloc&)
    {
        return ReportForeign("Out of memory", E_OUTOFMEMORY);
    }
    catch (const std::exception& error)
    {
        return ReportForeign(error.what(), E_FAIL);
    }
    catch (...)
    {
        return ReportForeign("Unknown exception", E_FAIL);
    }
}
} // namespace ZoVelkor
