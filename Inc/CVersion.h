#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

#include <string>

namespace ZoVelkor
{

/// The fixed part of a module's version information, as version resources lay it out.
struct tagFixedFileInfo
{
    DWORD dwSignature;          ///< not read
    DWORD dwStructVersion;      ///< not read
    DWORD dwFileVersionHigh;    ///< major version in the upper, minor version in the lower 16 bits
    DWORD dwFileVersionLow;     ///< build in the upper, sub-build in the lower 16 bits
    DWORD dwProductVersionHigh; ///< like the file version, of the product
    DWORD dwProductVersionLow;  ///< like the file version, of the product
    DWORD dwFileFlagsMask;      ///< not read
    DWORD dwFileFlags;          ///< not read
    DWORD dwFileOs;             ///< not read
    DWORD dwFileType;           ///< not read
    DWORD dwFileSubtype;        ///< not read
    DWORD dwFileDateHigh;       ///< not read
    DWORD dwFileDateLow;        ///< not read
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

    /// @name Entries of the usual names
    /// @{

    std::string getSpecialBuild() const { return getQueryValue("SpecialBuild"); }         ///< by that name
    std::string getProductVersion() const { return getQueryValue("ProductVersion"); }     ///< by that name
    std::string getProductName() const { return getQueryValue("ProductName"); }           ///< by that name
    std::string getPrivateBuild() const { return getQueryValue("PrivateBuild"); }         ///< by that name
    std::string getOriginalFilename() const { return getQueryValue("OriginalFilename"); } ///< by that name
    std::string getCompanyName() const { return getQueryValue("CompanyName"); }           ///< by that name
    std::string getFileDescription() const { return getQueryValue("FileDescription"); }   ///< by that name
    std::string getComments() const { return getQueryValue("Comments"); }                 ///< by that name
    std::string getLegalTrademarks() const { return getQueryValue("LegalTrademarks"); }   ///< by that name
    std::string getLegalCopyright() const { return getQueryValue("LegalCopyright"); }     ///< by that name
    std::string getInternalName() const { return getQueryValue("InternalName"); }         ///< by that name
    std::string getFileVersion() const { return getQueryValue("FileVersion"); }           ///< by that name
    /// @}

    /// @name Parts of the file version and of the product version; 0 without fixed information
    /// @{
    WORD getMajorVersion() const noexcept;        ///< upper 16 bits of the first half of the file version
    WORD getMinorVersion() const noexcept;        ///< lower 16 bits of it
    WORD getBuild() const noexcept;               ///< upper 16 bits of the second half of the file version
    WORD getSubBuild() const noexcept;            ///< lower 16 bits of it
    WORD getProductMajorVersion() const noexcept; ///< the same parts of the product version
    WORD getProductMinorVersion() const noexcept; ///< its second part
    WORD getProductBuild() const noexcept;        ///< its third part
    WORD getProductSubBuild() const noexcept;     ///< its fourth part
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
