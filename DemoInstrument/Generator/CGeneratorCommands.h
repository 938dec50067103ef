#pragma once

#include "CGenerator.h"
#include "Common/CSimpleApplication.h"

#include <span>

namespace ZoVelkor::Demo
{

/// The generator's command table and the handlers of its commands.
///
/// Threads: the thread that executes the command.
class CGeneratorCommands
{
public:
    static constexpr const wchar_t* kApplicationName = L"generator";

    /// @param generator  borrowed
    explicit CGeneratorCommands(CGenerator& generator) : m_generator(generator) {}

    /// Static data.
    static std::span<const _CMD_SET_RECORD> Table();
    /// The handlers in the order of the table's handler indexes.
    static std::span<const HandlerRow<CGeneratorCommands>> Handlers();

private:
    using Record = CCommandExecutionData;
    using Pool = CScpiFunctionExecutionDataPool;

    HRESULT Frequency(Pool& pool);
    HRESULT Power(Pool& pool);
    HRESULT ListFrequency(Pool& pool);
    HRESULT OutputState(Record& record);
    HRESULT LimitFail(Record& record);
    HRESULT Brightness(Pool& pool);

    CGenerator& m_generator;
};

/// The application "generator".
using CGeneratorApplication = CSimpleApplication<CGenerator, CGeneratorCommands>;

} // namespace ZoVelkor::Demo
