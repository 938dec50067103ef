#include "CVersion.h"

namespace ZoVelkor
{

namespace
{
// Deliberate: the platform's modules have no version resource, and callers show this text instead.
constexpr const char* kText = "linux";
constexpr unsigned int kHigh = 16;
constexpr unsigned int kLow = 0;
} // namespace

CVersion::CVersion(const std::string& module)
    : m_versionInfo(getVersionInfo(module)),
      m_fixedVersionInfo(getFixedVersionInfo(m_versionInfo))
{}

CVersion::CVersion(const tagFixedFileInfo* fixedVersionInfo) noexcept
    : m_versionInfo(nullptr),
      m_fixedVersionInfo(fixedVersionInfo)
{}

CVersion::~CVersion() = default;

CVersion CVersion::getCurrent()
{
    return CVersion(kText);
}

std::string CVersion::getQueryValue(const std::string& /*key*/) const
{
    return kText;
}

WORD CVersion::getMajorVersion() const noexcept
{
    return Part(&tagFixedFileInfo::dwFileVersionHigh, kHigh);
}

WORD CVersion::getMinorVersion() const noexcept
{
    return Part(&tagFixedFileInfo::dwFileVersionHigh, kLow);
}

WORD CVersion::getBuild() const noexcept
{
    return Part(&tagFixedFileInfo::dwFileVersionLow, kHigh);
}

WORD CVersion::getSubBuild() const noexcept
{
    return Part(&tagFixedFileInfo::dwFileVersionLow, kLow);
}

WORD CVersion::getProductMajorVersion() const noexcept
{
    return Part(&tagFixedFileInfo::dwProductVersionHigh, kHigh);
}

WORD CVersion::getProductMinorVersion() const noexcept
{
    return Part(&tagFixedFileInfo::dwProductVersionHigh, kLow);
}

WORD CVersion::getProductBuild() const noexcept
{
    return Part(&tagFixedFileInfo::dwProductVersionLow, kHigh);
}

WORD CVersion::getProductSubBuild() const noexcept
{
    return Part(&tagFixedFileInfo::dwProductVersionLow, kLow);
}

const void* CVersion::getVersionInfo(const std::string& /*module*/) noexcept
{
    return nullptr;
}

const tagFixedFileInfo* CVersion::getFixedVersionInfo(const void* /*versionInfo*/) noexcept
{
    return nullptr;
}

WORD CVersion::Part(DWORD tagFixedFileInfo::*pair, unsigned int shift) const noexcept
{
    return m_fixedVersionInfo == nullptr ? WORD{0} : static_cast<WORD>((m_fixedVersionInfo->*pair) >> shift);
}

} // namespace ZoVelkor
