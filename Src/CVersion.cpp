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

CVersion::CVersion(std::string const& module)
    : m_pVersionInfo(getVersionInfo(module)),
      m_pFixedVersionInfo(getFixedVersionInfo(m_pVersionInfo))
{}

CVersion::CVersion(tagFixedFileInfo const* fixedVersionInfo) noexcept
    : m_pVersionInfo(nullptr),
      m_pFixedVersionInfo(fixedVersionInfo)
{}

CVersion::~CVersion() = default;

CVersion CVersion::getCurrent()
{
    return CVersion(kText);
}

std::string CVersion::getQueryValue(std::string const& /*key*/) const
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

void const* CVersion::getVersionInfo(std::string const& /*module*/) noexcept
{
    return nullptr;
}

tagFixedFileInfo const* CVersion::getFixedVersionInfo(void const* /*versionInfo*/) noexcept
{
    return nullptr;
}

WORD CVersion::Part(DWORD tagFixedFileInfo::*pair, unsigned int shift) const noexcept
{
    return m_pFixedVersionInfo == nullptr ? WORD{0}
                                          : static_cast<WORD>((m_pFixedVersionInfo->*pair) >> shift);
}

} // namespace ZoVelkor
