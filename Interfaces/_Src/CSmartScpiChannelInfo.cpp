#include "CSmartScpiChannelInfo.h"

#include "CComBSTR.h"
#include "GuardedEntry.h"

#include <array>
#include <cstddef>
#include <new>
#include <utility>

namespace ZoVelkor
{
namespace
{

constexpr BSTR tag_ScpiChannelInfo::*kStrings[] = {
    &tag_ScpiChannelInfo::bsName,
    &tag_ScpiChannelInfo::bsLocalAddress,
    &tag_ScpiChannelInfo::bsRemoteAddress,
};
constexpr std::size_t kValueCount = 16;
// A string that the table does not know would be shared instead of copied.
static_assert(offsetof(tag_ScpiChannelInfo, iKind) == std::size(kStrings) * sizeof(BSTR));
static_assert(sizeof(tag_ScpiChannelInfo) ==
              std::size(kStrings) * sizeof(BSTR) + kValueCount * sizeof(std::int32_t));

} // namespace

CSmartScpiChannelInfo::CSmartScpiChannelInfo(const tag_ScpiChannelInfo& info)
{
    CopyData(m_info, info);
}

CSmartScpiChannelInfo::CSmartScpiChannelInfo(const CSmartScpiChannelInfo& other)
    : CSmartScpiChannelInfo(other.m_info)
{}

CSmartScpiChannelInfo::CSmartScpiChannelInfo(CSmartScpiChannelInfo&& other) noexcept
    : m_info(std::exchange(other.m_info, {}))
{}

CSmartScpiChannelInfo::~CSmartScpiChannelInfo()
{
    Clear();
}

CSmartScpiChannelInfo& CSmartScpiChannelInfo::operator=(const tag_ScpiChannelInfo& info)
{
    Attach(info);
    return *this;
}

CSmartScpiChannelInfo& CSmartScpiChannelInfo::operator=(const CSmartScpiChannelInfo& other)
{
    CopyData(m_info, other.m_info);
    return *this;
}

CSmartScpiChannelInfo& CSmartScpiChannelInfo::operator=(CSmartScpiChannelInfo&& other) noexcept
{
    // By way of a third record, which frees the former content; moving onto itself keeps it.
    CSmartScpiChannelInfo taken(std::move(other));
    std::swap(m_info, taken.m_info);
    return *this;
}

void CSmartScpiChannelInfo::Attach(const tag_ScpiChannelInfo& info)
{
    CopyData(m_info, info);
}

void CSmartScpiChannelInfo::Detach(tag_ScpiChannelInfo& target) noexcept
{
    const tag_ScpiChannelInfo owned = std::exchange(m_info, {});
    ClearData(target);
    target = owned;
}

HRESULT CSmartScpiChannelInfo::CopyTo(tag_ScpiChannelInfo* target) const noexcept
{
    if (target == nullptr)
    {
        return E_POINTER;
    }
    return GuardedEntry([&] {
        CopyData(*target, m_info);
        return S_OK;
    });
}

void CSmartScpiChannelInfo::Clear() noexcept
{
    ClearData(m_info);
}

void CSmartScpiChannelInfo::InitData(tag_ScpiChannelInfo& info) noexcept
{
    info = {};
}

void CSmartScpiChannelInfo::ClearData(tag_ScpiChannelInfo& info) noexcept
{
    for (const auto string : kStrings)
    {
        SysFreeString(info.*string);
    }
    InitData(info);
}

void CSmartScpiChannelInfo::CopyData(tag_ScpiChannelInfo& target, const tag_ScpiChannelInfo& source)
{
    if (&target == &source)
    {
        return;
    }
    std::array<CComBSTR, std::size(kStrings)> strings;
    for (std::size_t i = 0; i < strings.size(); ++i)
    {
        if (FAILED(strings[i].AssignBSTR(source.*kStrings[i])))
        {
            throw std::bad_alloc();
        }
    }
    tag_ScpiChannelInfo copy = source;
    for (std::size_t i = 0; i < strings.size(); ++i)
    {
        copy.*kStrings[i] = strings[i].Detach();
    }
    ClearData(target);
    target = copy;
}

} // namespace ZoVelkor
