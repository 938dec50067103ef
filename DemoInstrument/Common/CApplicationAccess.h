#pragma once

#include "CApplicationRegistration.h"
#include "CRemoteKernel.h"

#include <memory>
#include <utility>

namespace ZoVelkor::Demo
{

/// Reaches an application's instrument from outside its commands, under the same rule: one at a time.
///
/// A copy reaches the same instrument, and none once its application has left. Threads: any.
template <class TInstrument>
class CApplicationAccess
{
public:
    /// @param instrument  of the application; lives as long as the registration
    CApplicationAccess(TInstrument& instrument,
                       const RemoteKernel::CRemoteKernel& kernel,
                       const CApplicationRegistration& registration)
        : m_instrument(instrument),
          m_application(kernel.FindApplication(registration.Id()))
    {}

    /// Runs work while none of the application's commands runs. Not from inside a command of any application,
    /// as two that wait for each other would wait for ever; but "instrument" may, for which none of the
    /// others waits.
    ///
    /// @param work  of the form HRESULT(TInstrument&)
    /// @return its result; E_ABORT when the application has left
    template <class TWork>
    HRESULT Run(TWork&& work)
    {
        return m_application == nullptr
                   ? E_ABORT
                   : m_application->RunBetweenCommands([&]() -> HRESULT { return work(m_instrument); });
    }

private:
    TInstrument& m_instrument;
    std::shared_ptr<RemoteKernel::IRegisteredApplication> m_application;
};

} // namespace ZoVelkor::Demo
