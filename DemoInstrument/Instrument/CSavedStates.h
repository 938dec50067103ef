#pragma once

#include "CInstrumentRegistry.h"
#include "Common/CApplicationAccess.h"
#include "InstrumentState.h"

#include <string>
#include <utility>

namespace ZoVelkor::Demo
{

inline constexpr long kSavedStateCount = 10; ///< *SAV and *RCL: 0 to 9

/// What an operation queues; the code 0 when all is well.
struct StateError
{
    short code = 0;
    std::string detail;
};

/// The saved states of the measuring applications, in the registry.
///
/// None of their commands runs while a state is read or put in force. Threads: one at a time, and not from
/// inside one of their commands.
class CSavedStates
{
public:
    /// @param registry  borrowed
    CSavedStates(const CInstrumentRegistry& registry,
                 CApplicationAccess<CAnalyzer> analyzer,
                 CApplicationAccess<CGenerator> generator,
                 CApplicationAccess<CLxiTrigger> lxi)
        : m_registry(registry),
          m_analyzer(std::move(analyzer)),
          m_generator(std::move(generator)),
          m_lxi(std::move(lxi))
    {}

    /// @param number  0 to kSavedStateCount - 1
    /// @return -320 when the registry does not take it
    StateError Save(long number);
    /// Puts a saved state in force, as a whole or not at all.
    ///
    /// @return -200 when it was never saved; -314 when it is damaged; -320 when it cannot be read
    StateError Recall(long number);

private:
    template <class TWork>
    HRESULT RunOnAll(TWork&& work);

    const CInstrumentRegistry& m_registry;
    CApplicationAccess<CAnalyzer> m_analyzer;
    CApplicationAccess<CGenerator> m_generator;
    CApplicationAccess<CLxiTrigger> m_lxi;
};

} // namespace ZoVelkor::Demo
