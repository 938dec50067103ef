#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

struct IZOScpiInterrupt;

/// The controller's side of a remote-control link: a program drives one instrument through it as a bus
/// controller does (IEEE 488.1 section 2.12).
///
/// Every operation but GetLastError, get_OperationFailed and what runs beside it waits until the instrument
/// has answered or the time-out has passed. Results of such a request: S_OK; E_ABORT after Abort; E_FAIL when
/// the transport reports an error; E_PENDING after the time-out; E_UNEXPECTED when waiting is impossible.
/// A request that the transport refuses does not return: it raises CShellError.
///
/// Texts that are read are new and belong to the caller. Lengths and counts are 32-bit values. VARIANT_BOOL
/// parameters are `short`: VARIANT_TRUE is -1.
/// Threads: one caller at a time; Abort from any thread. The operations' order is part of the interface.
struct IZOScpiController : IUnknown
{
    static constexpr IID kInterfaceId{
        0x9D205153, 0x38CA, 0x42DA, {0xB6, 0x18, 0xAC, 0xA8, 0x9D, 0xD6, 0xE6, 0xC2}};

    /// Sends a terminated text as one message, with END on its last byte.
    ///
    /// @param text  bytes as they are sent, at most 2147483647; may be empty
    virtual HRESULT WriteMessage(unsigned char* text) = 0;
    /// Reads one message.
    /// @param[out] text  terminated, freed with CoTaskMemFree; null on failure
    virtual HRESULT ReadResponse(unsigned char** text) = 0;
    /// Sends a BSTR, narrowed to code page 0 with its whole length, as one message with END.
    ///
    /// @param text  a BSTR, since its length is read; what the code page does not have is sent as '?'
    virtual HRESULT WriteString(wchar_t* text) = 0;
    /// Reads one message.
    /// @param[out] text  a new BSTR; null on failure
    virtual HRESULT ReadString(wchar_t** text) = 0;
    /// Sends bytes.
    /// @param length  0 to 2147483647
    /// @param end  VARIANT_TRUE: END goes with the last byte
    virtual HRESULT Write(unsigned char* data, long length, short end) = 0;
    /// Reads bytes until count of them, or END, have come.
    /// @param count  0 to 2147483647, room in the buffer
    /// @param[out] got  number of bytes read; 0 on failure
    /// @param[out] end  VARIANT_TRUE when the last byte came with END
    virtual HRESULT Read(long count, unsigned char* buffer, long* got, short* end) = 0;
    /// Device clear (IEEE 488.1 section 2.10).
    virtual HRESULT Clear() = 0;
    /// Group execute trigger (IEEE 488.1 section 2.11).
    virtual HRESULT Trigger() = 0;
    /// Brings the instrument into the local state (IEEE 488.1 section 2.8).
    virtual HRESULT Local() = 0;
    /// Brings the instrument into the remote state.
    virtual HRESULT Remote() = 0;
    /// Serial poll (IEEE 488.1 section 2.7, IEEE 488.2 section 11.2).
    /// @param[out] stb  the status byte; 0 on failure
    virtual HRESULT ReadStatusByte(unsigned char* stb) = 0;
    /// Sets (non-zero) or releases local lockout, which takes the instrument's own local key away (IEEE
    /// 488.1 section 2.8).
    virtual HRESULT LocalLockout(short on) = 0;
    /// Forgets the service requests that WaitInterrupt would report.
    virtual HRESULT ResetInterrupt() = 0;
    /// Waits for a service request; one that came since the last ResetInterrupt counts.
    /// @return S_OK; E_ABORT, also when Abort came before and no request since; E_PENDING after the time-out
    virtual HRESULT WaitInterrupt() = 0;
    /// Sets who is told of service requests while the callback is enabled.
    /// @param cb  counted; the former receiver is released
    virtual HRESULT SetInterruptCallback(IZOScpiInterrupt* cb) = 0;
    /// Releases the receiver; service requests are still noted for WaitInterrupt.
    virtual HRESULT ClearInterruptCallback() = 0;
    /// Lets the receiver hear of service requests, and the instrument deliver them.
    virtual HRESULT EnableInterruptCallback() = 0;
    /// Takes EnableInterruptCallback back; the receiver stays set.
    virtual HRESULT DisableInterruptCallback() = 0;
    /// Ends the request that another thread waits for; it returns E_ABORT. Without one the next
    /// WaitInterrupt ends.
    virtual HRESULT Abort() = 0;
    /// Keeps other controllers away from the instrument, where the link can.
    virtual HRESULT LockDevice() = 0;
    /// Takes LockDevice back.
    virtual HRESULT UnlockDevice() = 0;
    /// Reads one message, or a part of it, into a file, which is made anew.
    ///
    /// The text of a failure is got with GetLastError; the file then holds what had arrived.
    /// @param fileName  BSTR in characters of code page 0
    /// @param count  above 0: number of bytes after which to stop although END has not come; below 0: up to
    ///               END; 0: makes an empty file and reads nothing
    /// @param[out] got  bytes written to the file, also on failure
    /// @param[out] end  VARIANT_TRUE when the last byte came with END
    /// @return S_OK; S_FALSE with a text when something failed; E_INVALIDARG without a name; E_OUTOFMEMORY
    virtual HRESULT ReadToFile(wchar_t* fileName, long count, long* got, short* end) = 0;
    /// Sends the content of a file. An empty file sends nothing, no END either: there is no byte to carry it.
    ///
    /// @param fileName  as for ReadToFile
    /// @param count  above 0: sends this many bytes at most; else the whole file
    /// @param end  VARIANT_TRUE: END goes with the last byte sent
    /// @param[out] sent  bytes that the instrument has acknowledged, also on failure
    /// @return as ReadToFile
    virtual HRESULT WriteFromFile(wchar_t* fileName, long count, short end, long* sent) = 0;
    /// @param[out] text  what the last operation complained of, a new BSTR; "No error" otherwise
    /// @return S_OK; E_OUTOFMEMORY
    virtual HRESULT GetLastError(wchar_t** text) = 0;
    /// @param[out] failed  VARIANT_FALSE when GetLastError says "No error", else VARIANT_TRUE
    virtual HRESULT get_OperationFailed(short* failed) = 0;
    /// Limit of every wait in milliseconds; 60000 at first, -1 for no limit.
    virtual HRESULT get_Timeout(long* piTimeout) = 0;
    /// Sets the limit for the waits that begin from now on.
    ///
    /// @param timeoutMs  milliseconds; -1 for no limit
    /// @return S_OK; E_INVALIDARG for what 32 bits cannot hold
    virtual HRESULT put_Timeout(long timeoutMs) = 0;
    /// Reads whether the instrument is remote, as the transport knows it.
    virtual HRESULT get_RemoteState(short* pvtbRemoteState) = 0;
    /// As Remote (non-zero) and Local (0).
    virtual HRESULT put_RemoteState(short on) = 0;
    /// Reads whether local lockout is set, as the transport knows it.
    virtual HRESULT get_LocalLockoutState(short* pvtbLockoutState) = 0;
    /// As LocalLockout.
    virtual HRESULT put_LocalLockoutState(short on) = 0;
    /// Whether the callback is told of service requests: VARIANT_TRUE, and no other value.
    virtual HRESULT get_InterruptActive(short* pvtbInterruptActive) = 0;
    /// Sets that mark alone; the instrument is not asked to deliver service requests.
    virtual HRESULT put_InterruptActive(short active) = 0;

protected:
    ~IZOScpiController() = default;
};

inline constexpr const IID& IID_IZOScpiController = IZOScpiController::kInterfaceId;

} // namespace ZoVelkor
