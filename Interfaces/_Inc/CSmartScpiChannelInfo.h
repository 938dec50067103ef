#pragma once

#include "ScpiChannelInfo.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Owner of one channel property record and its three strings.
///
/// The target of a copy is always an initialised record: what it held is freed. Copies have strings of their
/// own, with zeros inside them, and keep null and empty apart. Operations that copy throw std::bad_alloc when
/// memory is short and leave the target as it was. Threads: one instance belongs to one thread at a time.
class ZO_EXPORT CSmartScpiChannelInfo
{
public:
    /// Makes all strings null and all values 0.
    CSmartScpiChannelInfo() noexcept = default;
    /// Takes a copy of the record, strings included.
    explicit CSmartScpiChannelInfo(const tag_ScpiChannelInfo& info);
    CSmartScpiChannelInfo(const CSmartScpiChannelInfo& other);
    CSmartScpiChannelInfo(CSmartScpiChannelInfo&& other) noexcept;
    ~CSmartScpiChannelInfo();

    /// Replaces the owned record by a copy.
    CSmartScpiChannelInfo& operator=(const tag_ScpiChannelInfo& info);
    CSmartScpiChannelInfo& operator=(const CSmartScpiChannelInfo& other);
    CSmartScpiChannelInfo& operator=(CSmartScpiChannelInfo&& other) noexcept;

    /// The owned record, borrowed.
    [[nodiscard]] const tag_ScpiChannelInfo& Get() const noexcept { return m_info; }
    /// The owned record for changes; strings put into it come into its possession.
    [[nodiscard]] tag_ScpiChannelInfo* operator->() noexcept { return &m_info; }
    /// The owned record for reading.
    [[nodiscard]] const tag_ScpiChannelInfo* operator->() const noexcept { return &m_info; }

    /// Replaces the owned record by a copy of another; that one stays its owner's.
    void Attach(const tag_ScpiChannelInfo& info);
    /// Hands the owned record to the caller, who frees it with ClearData, and becomes empty.
    void Detach(tag_ScpiChannelInfo& target) noexcept;
    /// Copies the owned record out.
    ///
    /// @return S_OK; E_POINTER when target is null; E_OUTOFMEMORY
    HRESULT CopyTo(tag_ScpiChannelInfo* target) const noexcept;
    /// Frees the strings and makes all values 0.
    void Clear() noexcept;

    /// Makes a record of any content empty; frees nothing.
    static void InitData(tag_ScpiChannelInfo& info) noexcept;
    /// Frees the strings of a record and makes it empty.
    static void ClearData(tag_ScpiChannelInfo& info) noexcept;
    /// Copies all values and gives the target strings of its own; a record onto itself stays as it is.
    static void CopyData(tag_ScpiChannelInfo& target, const tag_ScpiChannelInfo& source);

private:
    tag_ScpiChannelInfo m_info{};
};

} // namespace ZoVelkor
