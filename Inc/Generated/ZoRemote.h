#pragma once

#include "ScpiCommandTable.h"
#include "ScpiTableMacros.h"

#include <cstdint>

// Brings the record type, the flags and the record macros into the scope of a generated table, which writes
// them without namespace. For generated sources only: the names are short and global.

using ZoVelkor::CMD_SET_RECORD;
using ZoVelkor::DEF;

using ZoVelkor::CCMD;
using ZoVelkor::COMP;
using ZoVelkor::DELEGATE;
using ZoVelkor::HDR;
using ZoVelkor::HDR_DIAG;
using ZoVelkor::HDR_SET;
using ZoVelkor::MESS;
using ZoVelkor::MNEM;
using ZoVelkor::NSUFF;
using ZoVelkor::NSUFF_EXT;
using ZoVelkor::QMARK;
using ZoVelkor::UNIT;

using ZoVelkor::ARG_BIN;
using ZoVelkor::ARG_BLOCK;
using ZoVelkor::ARG_DBLOCK;
using ZoVelkor::ARG_DEFAULT;
using ZoVelkor::ARG_EXPR;
using ZoVelkor::ARG_HEX;
using ZoVelkor::ARG_IBLOCK;
using ZoVelkor::ARG_KEEP;
using ZoVelkor::ARG_MINMAX;
using ZoVelkor::ARG_NFLOAT;
using ZoVelkor::ARG_NFLOAT_S;
using ZoVelkor::ARG_NINT;
using ZoVelkor::ARG_OCT;
using ZoVelkor::ARG_OFF;
using ZoVelkor::ARG_PFLOAT;
using ZoVelkor::ARG_PFLOAT_S;
using ZoVelkor::ARG_PINT;
using ZoVelkor::ARG_SFLOAT;
using ZoVelkor::ARG_SINT;
using ZoVelkor::ARG_STRG;
using ZoVelkor::ARG_STRGUD;
using ZoVelkor::ARG_UPDOWN;
using ZoVelkor::DATA;
using ZoVelkor::EXP;
using ZoVelkor::SUFF;
using ZoVelkor::SYNERR;

using ZoVelkor::ARG_FLAG_DIAG;
using ZoVelkor::ARG_FLAG_EXP;
using ZoVelkor::ARG_FLAG_OPEN_BEGIN;
using ZoVelkor::ARG_FLAG_OPEN_END;
using ZoVelkor::ARG_FLAG_OPT;
using ZoVelkor::ARG_FLAG_OPT_GROUP;
using ZoVelkor::ARG_FLAG_REP;
using ZoVelkor::ARG_FLAG_SSR;

/// ARG_FLAG_EXP as generated tables write it where ARG_FLAG_SSR is not set.
inline constexpr std::uint32_t JA = ZoVelkor::ARG_FLAG_EXP;
