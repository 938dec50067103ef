#include "CSavedStates.h"

#include "LastError.h"
#include "ScpiErrorCodes.h"

#include <fmt/format.h>

#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

constexpr HRESULT kInvalidData = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);

} // namespace

/// Locks the analyser, the generator and LXI in this order; whoever needs two of them keeps to it.
template <class TWork>
HRESULT CSavedStates::RunOnAll(TWork&& work)
{
    return m_analyzer.Run([&](CAnalyzer& analyzer) {
        return m_generator.Run([&](CGenerator& generator) {
            return m_lxi.Run([&](CLxiTrigger& lxi) -> HRESULT {
                work(analyzer, generator, lxi);
                return S_OK;
            });
        });
    });
}

StateError CSavedStates::Save(long number)
{
    InstrumentState state;
    HRESULT result =
        RunOnAll([&state](CAnalyzer& analyzer, const CGenerator& generator, const CLxiTrigger& lxi) {
            ReadState(analyzer, state);
            ReadState(lxi, state);
            state.generator = generator;
        });
    if (SUCCEEDED(result))
    {
        CStateText text;
        Describe(text, state);
        result = m_registry.Write(kStatesKey, std::to_wstring(number).c_str(), text.Collected());
    }
    return SUCCEEDED(result) ? StateError{}
                             : StateError{kScpiStorageFault, fmt::format("State {} is not saved", number)};
}

StateError CSavedStates::Recall(long number)
{
    std::string saved;
    const HRESULT result = m_registry.Read(kStatesKey, std::to_wstring(number).c_str(), saved);
    if (result == S_FALSE)
    {
        return {kScpiExecutionError, fmt::format("State {} was never saved", number)};
    }
    if (FAILED(result))
    {
        return {result == kInvalidData ? kScpiSaveRecallMemoryLost : kScpiStorageFault,
                fmt::format("State {} cannot be read", number)};
    }
    CStateText text{saved};
    InstrumentState state;
    Describe(text, state);
    if (!text.Fault().empty())
    {
        return {kScpiSaveRecallMemoryLost, fmt::format("State {}: {}", number, text.Fault())};
    }
    const HRESULT changed = RunOnAll([&state](CAnalyzer& analyzer, CGenerator& generator, CLxiTrigger& lxi) {
        PutState(lxi, state);
        generator = std::move(state.generator);
        // Last, as only the beginning of its sweep can run out of memory.
        PutState(analyzer, std::move(state));
    });
    return SUCCEEDED(changed) ? StateError{} : StateError{kScpiExecutionError, "No state to change"};
}

} // namespace ZoVelkor::Demo
