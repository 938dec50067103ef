#pragma once

#include "CFormatSubsystem.h"
#include "CMutex.h"

namespace ZoVelkor::RemoteKernel
{

/// The data format that new sessions begin with. It has no output: what would write gives E_ABORT.
///
/// Threads: the settings, any; the rest, one at a time.
class CDefaultFormat : public CFormatSubsystem
{
public:
    CDefaultFormat();

    HRESULT get_DataFormat(tagEnumFormatDataType* type, long* width) override;
    HRESULT put_DataFormat(tagEnumFormatDataType type, long width) override;
    HRESULT get_ByteOrder(tagEnumFormatByteOrder* order) override;
    HRESULT put_ByteOrder(tagEnumFormatByteOrder order) override;
    HRESULT GetDataFormatText(wchar_t** text) override;
    HRESULT Reset() override;

    /// Gives a session's format these settings.
    void CopySettingsTo(IZOScpiSubsystemFormat& format);

private:
    CMutex m_mutex; // held while the base works on its settings
};

using CDefaultFormatObject = CComObject<CDefaultFormat, IZOScpiSubsystemFormat>;

} // namespace ZoVelkor::RemoteKernel
