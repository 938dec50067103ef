#include "CComVariant.h"
#include "DemoFixture.h"
#include "IZOScalarPropertyAccess.h"
#include "Root.h"

#include <thread>

namespace ZoVelkor::Demo
{
namespace
{

class Properties : public DemoFixture
{
protected:
    Properties()
    {
        EXPECT_EQ(ZoGetRegisteredInterface(&IID_IZOScalarPropertyAccess, std::addressof(m_access)), S_OK);
    }
    CComPtr<IZOScalarPropertyAccess> m_access;
};

TEST_F(Properties, AreTheSettingsOfTheCommands)
{
    // clang-format off
    struct Row { const wchar_t* name; long id; CComVariant value; HRESULT result; const char* ask; const char* answer; };
    const Row rows[] = {
        {L"Center1", 101, 1e9, S_OK, "SENS1:FREQ:CENT?;SPAN?", "1000000000;2000000000"},
        {L"center4", 104, L"2.5e9", S_OK, "SENS4:FREQ:CENT?", "2500000000"},
        {L"Span2", 202, 0.0, S_OK, "SENS2:FREQ:SPAN?", "0"},
        {L"Span2", 202, 6.1e9, E_INVALIDARG, "SENS2:FREQ:SPAN?", "0"},
        {L"Span2", 202, L"wide", DISP_E_TYPEMISMATCH, "SENS2:FREQ:SPAN?", "0"},
        {L"Start3", 303, 5e9, S_OK, "SENS3:FREQ:STAR?", "5000000000"},
        {L"Stop3", 403, 1e9, S_OK, "SENS3:FREQ:STAR?;STOP?", "1000000000;1000000000"},
        {L"Bandwidth1", 501, 9.0, E_INVALIDARG, "BAND:AUTO?", "1"},
        {L"Bandwidth1", 501, 1000, S_OK, "BAND?;BAND:AUTO?", "1000;0"},
        {L"BandwidthAuto1", 601, true, S_OK, "BAND:AUTO?", "1"},
        {L"ReferenceLevel2", 702, -131.0, E_INVALIDARG, "SENS2:POW:RLEV?", "0"},
        {L"SweepPoints", 801, 100, E_INVALIDARG, "SWE:POIN?", "1001"},
        {L"SweepPoints", 801, 101.4, S_OK, "SWE:POIN?", "101"},
        {L"SweepTime", 901, 0.01, S_OK, "SWE:TIME?;TIME:AUTO?", "0.01;0"},
        {L"SweepTimeAuto", 1001, 1, S_OK, "SWE:TIME:AUTO?", "1"},
        {L"Detector", 1101, 6, E_INVALIDARG, "DET?", "POS"}, {L"Detector", 1101, 5, S_OK, "DET?", "AVER"},
        {L"TriggerSource", 1201, 0, E_INVALIDARG, "TRIG:SOUR?", "IMM"}, {L"TriggerSource", 1201, 2, S_OK, "TRIG:SOUR?", "BUS"},
        {L"Marker8", 1308, 1.5e9, S_OK, "CALC:MARK8:X?", "1500000000"},
        {L"Marker8", 1308, 3e9, E_INVALIDARG, "CALC:MARK8:X?", "1500000000"},
    };
    // clang-format on
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.id << row.ask);
        long id = 0;
        EXPECT_EQ(m_access->GetPropertyDispId(std::wstring(row.name).data(), &id), S_OK);
        EXPECT_EQ(id, row.id);
        EXPECT_EQ(m_access->SetScalarValue(row.id, row.value), row.result);
        const std::string answer = Client().Query(row.ask);
        ExpectSameAnswer(answer, row.answer);
        if (CComVariant value, wanted; row.result == S_OK)
        {
            EXPECT_EQ(m_access->GetScalarValue(row.id, &value), S_OK);
            EXPECT_EQ(wanted.ChangeType(value.vt, &row.value), S_OK);
            EXPECT_EQ(value, wanted);
        }
    }
}

TEST_F(Properties, UnknownOnesAndThoseOfAnEndedInstrument)
{
    CComVariant value;
    for (const long id : {0L, 1L, 100L, 105L, 802L, 1309L, 1400L, -101L})
    {
        EXPECT_EQ(m_access->GetScalarValue(id, &value), S_FALSE) << id;
        EXPECT_EQ(m_access->SetScalarValue(id, CComVariant(1)), S_FALSE) << id;
    }
    EXPECT_EQ(m_access->GetScalarValue(101, nullptr), E_POINTER);
    Stop();
    EXPECT_EQ(m_access->GetScalarValue(101, &value), E_ABORT);
    EXPECT_EQ(m_access->SetScalarValue(101, CComVariant(1)), E_ABORT);
    CComPtr<IZOScalarPropertyAccess> gone;
    EXPECT_NE(ZoGetRegisteredInterface(&IID_IZOScalarPropertyAccess, std::addressof(gone)), S_OK);
}

TEST_F(Properties, TakeTurnsWithCommandsAndStates)
{
    constexpr int kRounds = 60;
    EXPECT_EQ(Client().Query("SENS1:FREQ:SPAN 0;*SAV 1;:SYST:ERR?"), "0,\"No error\"");
    std::jthread commands([client = Connect()]() mutable {
        for (int i = 1; i <= kRounds; ++i)
        {
            EXPECT_EQ(client.Query("SENS2:FREQ:CENT " + std::to_string(i) + "E6;:SYST:ERR?"),
                      "0,\"No error\"");
        }
    });
    std::jthread states([client = Connect()]() mutable {
        for (int i = 1; i <= kRounds; ++i)
        {
            EXPECT_EQ(client.Query("*RCL 1;*SAV 2;:SOUR1:POW?;:SYST:ERR?"), "-30;0,\"No error\"");
        }
    });
    for (long i = 1; i <= kRounds; ++i)
    {
        EXPECT_EQ(m_access->SetScalarValue(303, CComVariant(static_cast<double>(i) * 1e6)), S_OK);
        CComVariant span;
        EXPECT_EQ(m_access->GetScalarValue(201, &span), S_OK);
        EXPECT_EQ(span, CComVariant(0.0));
    }
}

} // namespace
} // namespace ZoVelkor::Demo
