#include "CommandTableCheck.h"

namespace ZoVelkor::RemoteKernel
{

std::string ValidateCommandTable(const _CMD_SET_RECORD* table, std::size_t count)
{
    const auto fault = CheckScpiTable(table, count, tagScpiTableRules::Keywords);
    return fault ? fault->Message() : std::string();
}

} // namespace ZoVelkor::RemoteKernel
