#include "CScpiParserTable.h"
#include "RoundTripTable.h"

#include <fstream>
#include <string>
#include <vector>

/// Writes PrsTab.cpp and PrsTab.hpp of the round-trip table into the folder that the argument names.
int main(int /*argc*/, char** argv)
{
    const std::string base = std::string(argv[1]) + "/PrsTab.";
    const auto original = ZoVelkor::RoundTripTable();
    std::vector<ZoVelkor::_CMD_SET_RECORD> records(original.begin(), original.end());
    ZoVelkor::CScpiParserTable table;
    table.SetParserTable(records.data(), static_cast<long>(records.size()));
    std::ofstream source(base + "cpp");
    std::ofstream header(base + "hpp");
    table.DumpSourceHeader(source, header);
    return source && header ? 0 : 1;
}
