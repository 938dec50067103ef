#include "CScpiExpression.h"

#include <gtest/gtest.h>

namespace ZoVelkor
{
namespace
{

const auto& kByte = CScpiExpression::s_StatusByteTrafo;
const auto& kEvent = CScpiExpression::s_StandardEventTrafo;
const auto& kPoll = CScpiExpression::s_ParallelPollTrafo;

std::string ManyNames(int count)
{
    std::string list = "(";
    for (int i = 0; i < count; ++i)
    {
        list += (i == 0 ? "N" : ",N") + std::to_string(i);
    }
    return list + ")";
}

TEST(RegisterExpression, Reads)
{
    const auto wide = CScpiExpression::GetRegisterValueTrafo(ManyNames(32));
    const auto tooWide = CScpiExpression::GetRegisterValueTrafo(ManyNames(33));
    const struct
    {
        const CScpiExpression::Trafo& trafo;
        const char* text;
        long value;
        const char* error; ///< null: success
    } kRows[] = {
        // clang-format off
        {kByte, "oper, mav", 144, nullptr},               {kByte, "OPER,16", 144, nullptr},
        {kByte, " 1 ,\tDD2", 3, nullptr},                 {kByte, " ", 0, nullptr},
        {kByte, "0,10", 10, nullptr},
        {kPoll, "PP7,DD1", 0x8001, nullptr},              {kPoll, "ESBit", 0, "ESBIT"},
        {kByte, "4294967295", 0xFFFFFFFF, nullptr},       {kByte, "1,4294967296", 1, "4294967296"},
        {kByte, "OPER, xyz ,MAV", 128, "XYZ"},            {kByte, "12abc", 0, "12ABC"},
        {kByte, "-1", 0, "-1"},                           {kByte, "OPER,", 128, ""},
        {wide, "n0,N31", 0x80000001, nullptr},            {tooWide, "N0,N1", 0x80000000, nullptr},
        {kByte, "99999999999999999999", 0, "99999999999999999999"},
        // clang-format on
    };
    for (const auto& row : kRows)
    {
        long value = 7;
        std::string error = "stale";
        const bool ok = CScpiExpression::GetRegisterValueFromExpression(row.text, value, error, row.trafo);
        EXPECT_EQ(ok, row.error == nullptr) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
        EXPECT_EQ(error, ok ? "" : row.error) << row.text;
    }
}

TEST(RegisterExpression, Writes)
{
    const struct
    {
        const CScpiExpression::Trafo& trafo;
        long value;
        const char* text;
    } kRows[] = {
        {kByte, 0, ""},
        {kByte, 256, "256"},
        {kByte, 0x181, "OPER,DD1,256"},
        {kByte, -256, "4294967040"},
        {kEvent, 255, "PON,URQ,CME,EXE,DDE,QYE,RQC,OPC"},
        {kPoll, 0xFFFF, "PP7,PP6,PP5,PP4,PP3,PP2,PP1,PP0,OPER,RQS,ESBit,MAV,QUES,ERR,DD2,DD1"},
    };
    for (const auto& row : kRows)
    {
        std::string text = "stale";
        EXPECT_TRUE(CScpiExpression::GetRegisterValueAsExpression(row.value, text, row.trafo));
        EXPECT_EQ(text, row.text);
    }
    EXPECT_TRUE(CScpiExpression::GetRegisterValueTrafo("()").empty());
}

} // namespace
} // namespace ZoVelkor
