#include "CObjectDataReference.h"

#include "ErrorRaising.h"

#include <atomic>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>
#include <utility>

namespace ZoVelkor
{
namespace
{
ZO_SOURCE_UNIT("ComponentShell/Src/CObjectDataReference");

std::uint64_t NextObjectNumber() noexcept
{
    static std::atomic<std::uint64_t> lastNumber{0};
    return lastNumber.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::string ClassName(const std::type_info& type)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return name == nullptr ? type.name() : name.get();
}
} // namespace

CObjectDataReference::CObjectDataReference() noexcept : m_objectNumber(NextObjectNumber())
{}

CObjectDataReference::CObjectDataReference(const CObjectDataReference& other)
    : m_objectNumber(NextObjectNumber()),
      m_name(other.m_name),
      m_argumentChecking(other.m_argumentChecking)
{}

CObjectDataReference& CObjectDataReference::operator=(const CObjectDataReference& other)
{
    if (this != &other)
    {
        m_name = other.m_name;
        m_argumentChecking = other.m_argumentChecking;
    }
    return *this;
}

CObjectDataReference::~CObjectDataReference() = default;

std::string CObjectDataReference::ObjectName() const
{
    return m_name.empty() ? ClassName(typeid(*this)) : m_name;
}

void CObjectDataReference::SetObjectName(std::string name)
{
    m_name = std::move(name);
}

void CObjectDataReference::PropertyError(const void* /*value*/, const std::string& message)
{
    RepairError(ZO_ERROR(this, "property is valid", message, ZO_E_SHELL));
}

void CObjectDataReference::PropertyWarning(const void* /*value*/, const std::string& message)
{
    RepairError(ZO_REPORT(tagErrorSeverity::Warning, this, "property is sound", message, ZO_E_SHELL));
}
} // namespace ZoVelkor
