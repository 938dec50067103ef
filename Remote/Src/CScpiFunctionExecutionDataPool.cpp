#include "CScpiFunctionExecutionDataPool.h"

namespace ZoVelkor
{

CScpiFunctionExecutionDataPool::~CScpiFunctionExecutionDataPool() = default;

} // namespace ZoVelkor
