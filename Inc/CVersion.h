#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

#include <string>

namespace ZoVelkor
{

/// The fixed part of a module's version information, as version resources lay it out.
struct tagFixedFileInfo
{
    DWORD dwSignature;
    DWORD dwStructVersion;
    DWORD dwFileVersionHigh; ///< major version in the upper, minor version in the lower 16 bits
    DWORD dwFileVersionLow;  ///< build in the upper, sub-build in the lower 16 bits
    DWORD dwProductVersionHigh;
    DWORD dwProductVersionLow;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOs;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateHigh;
    DWORD dwFileDateLow;
};
static_assert(sizeof(tagFixedFileInfo) == 52);

/// Version information of a module.
///
/// Modules of this platform carry none: every text reads "linux" and every number is 0.
/// Threads: safe to read from several.
class ZO_EXPORT CVersion
{
public:
    /// @param module  name of the module
    explicit CVersion(const std::string& module);
    CVersion(const CVersion&) = default;
    CVersion& operator=(const CVersion&) = default;
    virtual ~CVersion();

    /// The information of the calling module.
    static CVersion getCurrent();

    /// The text of one entry, whether there is one of that name or not.
    std::string getQueryValue(const std::string& key) const;

    std::string getSpecialBuild() const { return getQueryValue("SpecialBuild"); }
    std::string getProductVersion() const { return getQueryValue("ProductVersion"); }
    std::string getProductName() const { return getQueryValue("ProductName"); }
    std::string getPrivateBuild() const { return getQueryValue("PrivateBuild"); }
    std::string getOriginalFilename() const { return getQueryValue("OriginalFilename"); }
    std::string getCompanyName() const { return getQueryValue("CompanyName"); }
    std::string getFileDescription() const { return getQueryValue("FileDescription"); }
    std::string getComments() const { return getQueryValue("Comments"); }
    std::string getLegalTrademarks() const { return getQueryValue("LegalTrademarks"); }
    std::string getLegalCopyright() const { return getQueryValue("LegalCopyright"); }
    std::string getInternalName() const { return getQueryValue("InternalName"); }
    std::string getFileVersion() const { return getQueryValue("FileVersion"); }

    /// @name Parts of the file version and of the product version; 0 without fixed information
    /// @{
    WORD getMajorVersion() const noexcept;
    WORD getMinorVersion() const noexcept;
    WORD getBuild() const noexcept;
    WORD getSubBuild() const noexcept;
    WORD getProductMajorVersion() const noexcept;
    WORD getProductMinorVersion() const noexcept;
    WORD getProductBuild() const noexcept;
    WORD getProductSubBuild() const noexcept;
    /// @}

protected:
    /// For modules that bring their version information along.
    ///
    /// @param fixedVersionInfo  outlives the object and its copies; null: none
    explicit CVersion(const tagFixedFileInfo* fixedVersionInfo) noexcept;

private:
    static const void* getVersionInfo(const std::string& module) noexcept;
    static const tagFixedFileInfo* getFixedVersionInfo(const void* versionInfo) noexcept;
    WORD Part(DWORD tagFixedFileInfo::*pair, unsigned int shift) const noexcept;

    const void* m_versionInfo;
    const tagFixedFileInfo* m_fixedVersionInfo;
};

} // namespace ZoVelkor
