#pragma once

#include "CInstrumentRegistry.h"
#include "InstrumentIdentity.h"

namespace ZoVelkor::Demo
{

/// Who the instrument says it is: manufacturer, model and serial number as the registry has them, and the
/// firmware level of this program.
RemoteKernel::InstrumentIdentity ReadIdentity(const CInstrumentRegistry& registry);

/// Turns the diagnosis switches on that the registry names, unless the environment names some.
void ApplyDiagnosis(const CInstrumentRegistry& registry);

/// Gives new sessions the data format that the registry has; one that is none is reported and left out.
///
/// The remote kernel has been started: its format subsystem is found at the root.
void ApplyDataFormat(const CInstrumentRegistry& registry);

} // namespace ZoVelkor::Demo
