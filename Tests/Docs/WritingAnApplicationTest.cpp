// The listings of Docs/WritingAnApplication.md, as one application, answer a client.
#include "WritingAnApplication.cpp"

#include "CRemoteKernel.h"
#include "CScpiClient.h"
#include "CTcpServer.h"

#include <gtest/gtest.h>

namespace ZoVelkor::Testing
{
namespace
{

TEST(WritingAnApplication, TheListingsAreAnApplicationThatAnswers)
{
    RemoteKernel::CRemoteKernel kernel{{"Maker", "Supply", "1", "1.0"}};
    ASSERT_EQ(kernel.Start(), S_OK);
    const CSupplyApplication application;
    Transports::CTcpServer server{{.port = 0}};
    server.Start();
    CScpiClient client(server.Port());
    Converse(client, R"(
        -> OUTP2 ON;LEV 2.5 V;:OUTP2?;LEV?;:OUTP?;LEV?
        <- 1;2.5;0;0
        -> OUTP2:LEV UP;LEV?;LEV? MAX
        <- 3;30
        -> OUTP2:LEV 31;:OUTP3 ON;:OUTP? 1
        -> SYST:ERR:COUN?
        <- 2
        -> OUTP? 1
        -> *RST;OUTP2?;LEV?
        <- 0;0
    )");
}

} // namespace
} // namespace ZoVelkor::Testing
