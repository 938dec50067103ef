#pragma once

#include "CAnalyzer.h"
#include "CBScalarPropertyAccess.h"
#include "Common/CApplicationAccess.h"

namespace ZoVelkor::Demo
{

/// The analyser's settings as properties, for tools and scripts in the process.
///
/// | dispatch identifier | name | type |
/// |---|---|---|
/// | 100 + channel | Center1 to Center4 | double, Hz |
/// | 200 + channel | Span1... | double, Hz |
/// | 300 + channel | Start1... | double, Hz |
/// | 400 + channel | Stop1... | double, Hz |
/// | 500 + channel | Bandwidth1... | double, Hz |
/// | 600 + channel | BandwidthAuto1... | boolean |
/// | 700 + channel | ReferenceLevel1... | double, dBm |
/// | 801 | SweepPoints | 32 bits |
/// | 901 | SweepTime | double, s |
/// | 1001 | SweepTimeAuto | boolean |
/// | 1101 | Detector | Detector |
/// | 1201 | TriggerSource | TriggerSource |
/// | 1300 + marker | Marker1 to Marker8 | double, Hz |
///
/// Values are checked and coupled as the commands do it. Results of GetScalarValue and SetScalarValue: S_OK;
/// S_FALSE for an unknown identifier; E_POINTER; E_INVALIDARG for a value outside the limits; the failures of
/// VariantChangeType for one that is no such value; E_ABORT when the analyser has left. A value that is
/// refused changes nothing.
/// Threads: any operation from any thread, but not from inside a command of any application.
class CAnalyzerProperties : public CBScalarPropertyAccess
{
public:
    explicit CAnalyzerProperties(const CApplicationAccess<CAnalyzer>& analyzer);

protected:
    HRESULT DoGetScalarValue(long dispId, VARIANT* value) override;
    HRESULT DoSetScalarValue(long dispId, VARIANT value) override;

    ~CAnalyzerProperties() override = default;

private:
    CApplicationAccess<CAnalyzer> m_analyzer;
};

} // namespace ZoVelkor::Demo
