#include "RoundTripTable.h"

#include "ScpiTableMacros.h"

namespace ZoVelkor
{
namespace
{

constexpr std::uint32_t kAll = 0xFFFFFFFF;

constexpr CMD_SET_RECORD kRecords[] = {
    /*  0 */ HDR("RST", 1, DEF, 0, 2, 0, CCMD),
    /*  1 */ HDR("IDN", 2, DEF, 0, 0, 0, CCMD | QMARK),
    /*  2 */ HDR("[SENSe]", DEF, DEF, 4, 2, 0, 0),
    /*  3 */ HDR("SYSTem", INT32_MIN, INT32_MAX, 0, 0, 10, kAll),
    /*  4 */ HDR("FREQuency", -2, 7, 0, 2, 6, QMARK | HDR_SET | NSUFF),
    /*  5 */ HDR("UNIT", DEF, 1, 0, 0, 0, 0x100),
    /*  6 */ PAR("value", ARG_SFLOAT | ARG_MINMAX, 13, 0, 0, 7, ARG_FLAG_SSR | ARG_FLAG_OPT),
    /*  7 */ PAR("mode", MNEM | ARG_OFF | ARG_SFLOAT, 0, 2, 11, 8, ARG_FLAG_EXP),
    /*  8 */ PAR("all", kAll, kAll, kAll, kAll, 9, kAll),
    /*  9 */ PAR("", 0, 0, 0, 0, 0, ARG_FLAG_OPT | ARG_FLAG_REP),
    /* 10 */ PAR("mixed", ARG_SINT | ARG_PFLOAT_S | ARG_IBLOCK, 15, 0, 0, 0, ARG_FLAG_EXP | ARG_FLAG_REP),
    /* 11 */ CHR("NORMal", 0, 2),
    /* 12 */ CHR("a\"\\\t\001\377?\?/", kAll, 0),
    /* 13 */ SFX("HZ", 0, 2),
    /* 14 */ SFX("KHZ", 0x80000000, 0),
    /* 15 */ SFX("S", 1, 1),
    /* 16 */ NSE("1..4", NSE_HEADER | 4),
    /* 17 */ NSE("expressions have place for 35 bytes", NSE_HEADER | 2),
};

} // namespace

std::span<const _CMD_SET_RECORD> RoundTripTable()
{
    return kRecords;
}

} // namespace ZoVelkor
