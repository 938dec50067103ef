#include "PrsTab.h"
#include "ZoSoftwarePlatform.h"

#include <cstdio>

int main()
{
    const ZoVelkor::CZoString text("frequency");
    const std::string syntax = ZoVelkor::CScpiToken::ScpiToken2SyntaxForm(text.ToStdString());
    std::list<std::string> commands;
    ZoVelkor::CScpiParserTable(CommandSetTables).GetAllCommands(false, true, commands);
    CComPtr<ZoVelkor::IZOTimeDateControl> clock;
    const bool found = ZoVelkor::GetModuleService(ZoVelkor::kTimeServices, &clock) == S_OK;
    CoTaskMemFree(CoTaskMemAlloc(1)); // as with what ReadResponse of a controller gives
    std::printf("%s %s\n", syntax.c_str(), commands.front().c_str());
    return found && syntax == "FREQuency" && commands.front() == ":ABORt" ? 0 : 1;
}
