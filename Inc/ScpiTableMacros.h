#pragma once

#include "ScpiCommandTable.h"

// Record macros for table source. Include this header only where a table is written: the names are short.
// Each macro makes one element of an array of CMD_SET_RECORD; a text that does not fit does not compile.

/// Header: keyword, handler without data, handler with data, child group, group length, parameters, flags.
#define HDR(keyword, nodataMode, dataMode, subStart, length, datatype, follow)                               \
    ::ZoVelkor::_CMD_SET_RECORD                                                                              \
    {                                                                                                        \
        .hdr = { keyword, nodataMode, dataMode, subStart, length, datatype, follow }                         \
    }

/// Parameter: name, accepted kinds, unit group, keyword count, keyword group, next parameter, argument flags.
#define PAR(name, type, suffixList, count, keywords, nextpar, exponent)                                      \
    ::ZoVelkor::_CMD_SET_RECORD                                                                              \
    {                                                                                                        \
        .par = { name, type, suffixList, count, keywords, nextpar, exponent }                                \
    }

/// Unit suffix: text, delivered value, group length.
#define SFX(suffix, value, length)                                                                           \
    ::ZoVelkor::_CMD_SET_RECORD                                                                              \
    {                                                                                                        \
        .sfx = { suffix, value, length, {} }                                                                 \
    }

/// Character data: mnemonic, delivered value, group length.
#define CHR(keyword, value, length)                                                                          \
    ::ZoVelkor::_CMD_SET_RECORD                                                                              \
    {                                                                                                        \
        .chr = { keyword, value, length, {} }                                                                \
    }

/// Numeric-suffix expression: text, value.
#define NSE(expression, value)                                                                               \
    ::ZoVelkor::_CMD_SET_RECORD                                                                              \
    {                                                                                                        \
        .nse = { expression, value }                                                                         \
    }
