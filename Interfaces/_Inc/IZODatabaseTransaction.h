#pragma once

#include "Unknown.h"

#include <cstdint>

namespace ZoVelkor
{

/// Which verdicts on written values let a transaction finish.
enum TransactionAcceptMode : std::int32_t
{
    ZO_TRANSACTION_ACCEPT_EXACT = 0,     ///< every value must have been taken as written
    ZO_TRANSACTION_ACCEPT_CORRECTED = 1, ///< values may have been corrected
    ZO_TRANSACTION_ACCEPT_ALL = 2        ///< rejected values are left out, the others are kept
};

/// The data base's verdict on a written value.
struct Acceptance
{
    std::int32_t iState = 0;  ///< 0 and 1: accepted; 2: accepted with a remark; any other: rejected
    std::int32_t iReason = 0; ///< why, see CScpiTransaction; without meaning when the value was accepted
};

/// Changes of the instrument's data base that take effect together or not at all.
///
/// A transaction is open until one of its operations has succeeded. Threads: belongs to the thread that
/// opened it.
struct IZODatabaseTransaction : IUnknown
{
    static constexpr IID kInterfaceId{
        0xD5CF315E, 0xD748, 0x4978, {0xBA, 0x3E, 0x42, 0x2F, 0x49, 0x95, 0xD7, 0xF7}};

    /// Puts the changes into effect.
    ///
    /// @param[out] acceptance  the verdict; on failure the first one that stood against finishing. Left alone
    ///                         when there is none
    /// @return S_OK; S_FALSE when the changes are in effect but there are remarks; E_POINTER; E_FAIL when
    ///         the accept mode does not allow the verdict, nothing is changed then
    virtual HRESULT FinishTransaction(TransactionAcceptMode acceptMode, Acceptance* acceptance) = 0;

    /// Takes back what was written so far.
    ///
    /// @return S_OK; S_FALSE when there was nothing to take back; E_FAIL
    virtual HRESULT UndoTransaction() = 0;

    /// Ends the transaction without any effect.
    ///
    /// @return S_OK; E_FAIL
    virtual HRESULT AbortTransaction() = 0;

protected:
    ~IZODatabaseTransaction() = default;
};

inline constexpr const IID& IID_IZODatabaseTransaction = IZODatabaseTransaction::kInterfaceId;

} // namespace ZoVelkor
