#pragma once

#include <cstddef>

namespace ZoVelkor
{

/// Space for a register's name in tagScpiStatusData, terminating zero included.
inline constexpr std::size_t kScpiStatusNameSize = 64;

/// All of a status register at one moment, as IZOScpiStatusRegister::GetData gives it to service tools.
struct tagScpiStatusData
{
    wchar_t szName[kScpiStatusNameSize]; ///< as IZOScpiStatusManagement::GetRegister finds it
    wchar_t condition;                   ///< what is the case now
    wchar_t events;                      ///< reading them here does not clear them
    wchar_t enable;                      ///< events that take part in the summary
    wchar_t negTrans;                    ///< bits whose fall latches an event
    wchar_t posTrans;                    ///< bits whose rise latches an event
    wchar_t presetEnable;                ///< what Preset loads into enable
    wchar_t presetNegTrans;              ///< into negTrans
    wchar_t presetPosTrans;              ///< into posTrans
    wchar_t parentMask; ///< condition bits of the parent that carry the summary; 0: no parent
    short summary;      ///< VARIANT_TRUE while an enabled event is latched
    short parentUpdate; ///< VARIANT_TRUE while the parent is told
};

} // namespace ZoVelkor
