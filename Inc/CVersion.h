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
    explicit CVersion(std::string const& module);
    CVersion(CVersion const&) = default;
    CVersion& operator=(CVersion const&) = default;
    virtual ~CVersion();

    /// The information of the calling module.
    static CVersion getCurrent();

    /// The text of one entry, whether there is one of that name or not.
    std::string getQueryValue(std::string const& key) const;

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
    explicit CVersion(tagFixedFileInfo const* fixedVersionInfo) noexcept;

private:
    static void const* getVersionInfo(std::string const& module) noexcept;
    static tagFixedFileInfo const* getFixedVersionInfo(void const* versionInfo) noexcept;
    WORD Part(DWORD tagFixedFileInfo::*pair, unsigned int shift) const noexcept;

    void const* m_pVersionInfo;
    tagFixedFileInfo const* m_pFixedVersionInfo;
};

} // namespace ZoVelkor
