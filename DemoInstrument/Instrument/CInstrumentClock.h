#pragma once

#include "CInstrumentRegistry.h"
#include "IZOTimeDateControl.h"

#include <string>

namespace ZoVelkor::Demo
{

/// The instrument's clock: that of the machine and an offset, which the registry keeps.
///
/// Once an object has been made nothing in this process sets the machine's clock any more, whoever asks the
/// time service and with whatever rights. Threads: any operation from any thread.
class CInstrumentClock
{
public:
    /// @throws CShellError without time service
    CInstrumentClock();

    /// Takes the offset that the registry keeps, if it is one.
    void Load(const CInstrumentRegistry& registry);
    /// @return S_OK; a failing result when the registry does not keep the offset
    static HRESULT Keep(const CInstrumentRegistry& registry);

    void Get(tagTimeStruct& time, tagDateStruct& date) const;

    /// Sets the clock.
    ///
    /// @return what is wrong with the time, in the service's words; empty when it was set
    std::string Set(const tagTimeStruct& time, const tagDateStruct& date) const;

private:
    CComPtr<IZOTimeDateControl> m_service;
};

} // namespace ZoVelkor::Demo
