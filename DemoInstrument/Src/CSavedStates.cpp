#include "CSavedStates.h"

#include "LastError.h"
#include "ScpiErrorCodes.h"

#include <fmt/format.h>

namespace ZoVelkor::Demo
{
namespace
{

constexpr HRESULT kInvalidData = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);

} // namespace

template <class TWork>
HRESULT CSavedStates::RunOnBoth(TWork&& work)
{
    return m_analyzer.Run([&](CAnalyzer& analyzer) {
        return m_generator.Run([&](CGenerator& generator) -> HRESULT {
            work(analyzer, generator);
            return S_OK;
        });
    });
}

tagStateError CSavedStates::Save(long number)
{
    tagInstrumentState state;
    HRESULT hr = RunOnBoth([&state](CAnalyzer& analyzer, const CGenerator& generator) {
        ReadState(analyzer, state);
        state.generator = generator;
    });
    if (SUCCEEDED(hr))
    {
        CStateText text;
        Describe(text, state);
        hr = m_registry.Write(kStatesKey, std::to_wstring(number).c_str(), text.Collected());
    }
    return SUCCEEDED(hr) ? tagStateError{}
                         : tagStateError{kScpiStorageFault, fmt::format("State {} is not saved", number)};
}

tagStateError CSavedStates::Recall(long number)
{
    std::string saved;
    const HRESULT hr = m_registry.Read(kStatesKey, std::to_wstring(number).c_str(), saved);
    if (hr == S_FALSE)
    {
        return {kScpiExecutionError, fmt::format("State {} was never saved", number)};
    }
    if (FAILED(hr))
    {
        return {hr == kInvalidData ? kScpiSaveRecallMemoryLost : kScpiStorageFault,
                fmt::format("State {} cannot be read", number)};
    }
    CStateText text{saved};
    tagInstrumentState state;
    Describe(text, state);
    if (!text.Fault().empty())
    {
        return {kScpiSaveRecallMemoryLost, fmt::format("State {}: {}", number, text.Fault())};
    }
    const HRESULT result = RunOnBoth([&state](CAnalyzer& analyzer, CGenerator& generator) {
        PutState(analyzer, state);
        generator = std::move(state.generator);
    });
    return SUCCEEDED(result) ? tagStateError{} : tagStateError{kScpiExecutionError, "No state to change"};
}

} // namespace ZoVelkor::Demo
