#pragma once

#include "IZOScpiChannelServiceProvider.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Base of service providers: refuses every signal with E_NOTIMPL, takes errors.
///
/// A provider overrides what its kernel wants to hear of.
class ZO_EXPORT CBScpiChannelServiceProvider : public IZOScpiChannelServiceProvider
{
public:
    HRESULT SignalDataAvailable() override;
    HRESULT SignalGotoLocal() override;
    HRESULT SignalGotoRemote() override;
    HRESULT SignalLocalLockout(short on) override;
    HRESULT SignalDeviceClear() override;
    HRESULT SignalTrigger() override;
    HRESULT SignalStbChange(unsigned char stb) override;
    /// @return what DoReportError gives; an exception of it becomes the result
    HRESULT ReportError(short code, wchar_t* text) override;
    HRESULT SignalConnected() override;
    HRESULT SignalDisconnected() override;
    /// @param[out] manager  null; may be null
    HRESULT GetScpiManager(IUnknown** manager) override;

    /// Takes an error that the channel has found; parameters as ReportError. The base drops it: S_OK.
    virtual HRESULT DoReportError(short code, wchar_t* text);

protected:
    virtual ~CBScpiChannelServiceProvider() = default;
};

} // namespace ZoVelkor
