#include "PrsTab.h"
#include "ZoSoftwarePlatform.h"

#include <cstdio>

int main()
{
    const ZoVelkor::CZoString text("frequency");
    const std::string syntax = ZoVelkor::CScpiToken::ScpiToken2SyntaxForm(text.ToStdString());
    std::list<std::string> commands;
    ZoVelkor::CScpiParserTable(CommandSetTables).GetAllCommands(false, true, commands);
    std::printf("%s %s\n", syntax.c_str(), commands.front().c_str());
    return syntax == "FREQuency" && commands.front() == ":ABORt" ? 0 : 1;
}
