#include "PrsTab.h"
#include "RoundTripTable.h"

#include <gtest/gtest.h>

#include <cstring>

namespace ZoVelkor
{

TEST(TableRoundTrip, CompiledSourceIsTheTable)
{
    const auto records = RoundTripTable();
    ASSERT_EQ(CommandSetTableSize, records.size_bytes());
    for (std::size_t i = 0; i < records.size(); ++i)
    {
        EXPECT_EQ(std::memcmp(&CommandSetTables[i], &records[i], sizeof(_CMD_SET_RECORD)), 0)
            << "record " << i;
    }
}

} // namespace ZoVelkor
