#pragma once

#include "CTableBuilder.h"

namespace ZoVelkor::RemoteKernel::Testing
{

inline constexpr std::uint32_t kBoth = QMARK | HDR_SET;
inline constexpr std::uint32_t kNumeric = ARG_SFLOAT | ARG_MINMAX | ARG_DEFAULT | ARG_UPDOWN;
inline constexpr std::uint32_t kBoolean = ARG_SFLOAT | ARG_OFF | MNEM;

/// A tree with every kind of parameter; queries have even handler numbers, settings the odd one above.
inline std::vector<_CMD_SET_RECORD> MakeParserTestTable()
{
    const TestParameter number{ARG_SFLOAT};
    const TestParameter optional{ARG_SFLOAT, ARG_FLAG_OPT};
    const TestParameter integer{ARG_SINT | ARG_MINMAX};
    const TestParameter hertz{kNumeric, 0, {{"HZ", 1}}};
    const TestParameter string{ARG_STRG};
    const TestParameter block{ARG_BLOCK};
    const TestParameter words{MNEM, 0, {}, {{"IMMediate", 1}, {"EXTernal", 2}, {"TIMer1", 3}, {"TIMer2", 4}}};
    const TestParameter maximumMode{kNumeric | MNEM, 0, {}, {{"MAXimum", 7}, {"PEAK", 8}}};
    const TestParameter kilohertz{ARG_SFLOAT, 0, {{"HZ", 1}, {"KHZ", 2}, {"DBM", 3}, {"V/S", 4}}};
    return CTableBuilder()
        .Add("*IDN", 2, DEF, QMARK)
        .Add("*ESE", 4, 5, kBoth, {{ARG_PINT | ARG_PFLOAT_S}})
        .Add("*CLS", 6, DEF, 0)
        .Add("[:SENSe#]:FREQuency:CENTer", 10, 11, kBoth, {hertz})
        .Add("[:SENSe#]:FREQuency:SPAN", 12, 13, kBoth, {hertz})
        .Add("[:SENSe#]:RESistance:RANGe", 14, 15, kBoth, {{kNumeric, 0, {{"OHM", 1}}}})
        .Add("SOURce#:VOLTage[:LEVel][:IMMediate#][:AMPLitude]", 16, 17, kBoth, {{ARG_SFLOAT, 0, {{"V", 1}}}})
        .Add("SOURce#:VOLTage[:LEVel]:OFFSet", 18, 19, kBoth, {number})
        .Add("OUTPut#[:STATe]", 20, 21, kBoth, {{kBoolean}})
        .Add("OUTPut#:FILTer", 22, DEF, 0)
        .Add("TRIGger:SOURce", 24, 25, kBoth, {words})
        .Add("TRIGger:COUNt", 26, 27, kBoth, {integer})
        .Add("TRIGger:DELay", 28, 29, kBoth, {{kNumeric, 0, {{"S", 1}}}})
        .Add("DISPlay:TEXT", 30, 31, kBoth, {string})
        .Add("TRACe:DATA", 32, 33, kBoth, {block})
        .Add("TRACe:LIST", DEF, 35, HDR_SET, {{ARG_SFLOAT, ARG_FLAG_REP}})
        .Add("CALCulate:SUM", 36, DEF, QMARK, {number, number, optional})
        .Add("ROUTe:CLOSe", 38, 39, kBoth, {{ARG_EXPR}})
        .Add("MMEMory:DATA", 40, 41, kBoth, {string, block})
        .Add("TEST:EVENt", 42, DEF, 0)
        .Add("TEST:QONLy", 44, DEF, QMARK)
        .Add("TEST:NUMBer", 46, 47, kBoth, {number})
        .Add("TEST:POSitive", 48, 49, kBoth, {{ARG_PFLOAT}})
        .Add("TEST:UNITs", DEF, 51, HDR_SET, {kilohertz})
        .Add("TEST:SEVeral", DEF, 53, HDR_SET, {number, optional, optional})
        .Add("TEST:DEFault", 54, 55, HDR_SET, {optional})
        .Add("TEST:PATH", DEF, 57, HDR_SET, {{ARG_STRGUD | ARG_DEFAULT}})
        .Add("TEST:MAXMode", 58, 59, kBoth, {maximumMode})
        .Add("TEST:KEEP", DEF, 61, HDR_SET, {{ARG_KEEP | ARG_OFF}})
        .Add("TEST:DBLock", DEF, 63, HDR_SET, {{ARG_DBLOCK}})
        .Add("TEST:ANYThing", DEF, 65, HDR_SET, {{DATA}})
        .Add("TEST:CHANnel#1-4,7,10..12:X#2..n[:Y#]", 70, DEF, QMARK)
        .Add("COMMunicate:RS232", DEF, 67, HDR_SET, {number})
        .Add("COMMunicate:TX1#", DEF, 69, HDR_SET, {number})
        .Build();
}

} // namespace ZoVelkor::RemoteKernel::Testing
