#include "ScpiTableMacros.h"
#include "ZoSoftwarePlatform.h"

#include <fstream>

using namespace ZoVelkor;

int main()
{
    CMD_SET_RECORD records[] = {HDR("ABORt", 1, DEF, 0, 1, 0, 0)};
    std::ofstream source("PrsTab.cpp");
    std::ofstream header("PrsTab.hpp");
    CScpiParserTable(records).DumpSourceHeader(source, header);
    return source && header ? 0 : 1;
}
