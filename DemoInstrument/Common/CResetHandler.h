#pragma once

#include "CBScpiDeviceHandler.h"

namespace ZoVelkor::Demo
{

/// Device handler of an application: *RST calls TInstrument::Reset, a trigger is ignored, all other
/// events do nothing.
template <class TInstrument>
class CResetHandler : public CBScpiDeviceHandler
{
public:
    /// @param instrument  borrowed; outlives the registration of the handler
    explicit CResetHandler(TInstrument& instrument) : m_instrument(instrument) {}

    HRESULT Reset() override
    {
        m_instrument.Reset();
        return S_OK;
    }

    HRESULT Trigger() override { return S_FALSE; }

protected:
    ~CResetHandler() override = default;

    TInstrument& Instrument() const { return m_instrument; }

private:
    TInstrument& m_instrument;
};

} // namespace ZoVelkor::Demo
