#pragma once

#include "CObjectDataReference.h"
#include "ErrorReport.h"
#include "Event.h"
#include "IZOScpiController.h"
#include "IZOScpiInterrupt.h"
#include "ZoExport.h"

#include <atomic>
#include <initializer_list>
#include <memory>

namespace ZoVelkor
{

/// Base of controllers: turns every operation into a request to the transport, which a derived class supplies
/// as the `Do...` operations, and waits for its acknowledgement.
///
/// A request returns at once; the transport answers through one of the acknowledgements, in the request or
/// later and from any thread. A result other than S_OK refuses the request: the operation raises CShellError
/// with that result and no acknowledgement is waited for. An acknowledgement that comes after the time-out
/// counts until the next operation but Trigger begins.
///
/// Null pointers give E_POINTER and an error report, lengths outside their range E_INVALIDARG; the getters of
/// the four properties raise CShellError instead. A CShellError of the transport reaches the caller; other
/// exceptions become results. CheckProtocolError is called at the end of every operation that returns, except
/// GetLastError, get_OperationFailed and ResetInterrupt.
///
/// Threads: one caller at a time. Abort, DoInterrupt and the acknowledgements may come from any thread; none
/// of them may run while the controller is destroyed or assigned to.
class ZO_EXPORT CBScpiController : public IZOScpiController, public virtual CObjectDataReference
{
public:
    /// An event that the system does not give leaves a controller whose waits return E_UNEXPECTED.
    CBScpiController();
    /// Copies the settings, the callback with a reference of its own and the last acknowledgement. The copy
    /// owns new events, which are not set, and starts with "No error". Throws std::bad_alloc.
    CBScpiController(const CBScpiController& other);
    /// As the copy constructor; the last error text stays as it is.
    CBScpiController& operator=(const CBScpiController& other);

    HRESULT WriteMessage(unsigned char* text) override;
    HRESULT ReadResponse(unsigned char** text) override;
    HRESULT WriteString(wchar_t* text) override;
    HRESULT ReadString(wchar_t** text) override;
    HRESULT Write(unsigned char* data, long length, short end) override;
    HRESULT Read(long count, unsigned char* buffer, long* got, short* end) override;
    HRESULT Clear() override;
    /// Waits on what the previous operation left: after an acknowledged one it returns S_OK at once.
    HRESULT Trigger() override;
    HRESULT Local() override;
    HRESULT Remote() override;
    HRESULT ReadStatusByte(unsigned char* stb) override;
    HRESULT LocalLockout(short on) override;
    HRESULT ResetInterrupt() override;
    HRESULT WaitInterrupt() override;
    HRESULT SetInterruptCallback(IZOScpiInterrupt* cb) override;
    HRESULT ClearInterruptCallback() override;
    HRESULT EnableInterruptCallback() override;
    HRESULT DisableInterruptCallback() override;
    /// @throws CShellError "abort pending call failed." when the event cannot be set
    HRESULT Abort() override;
    /// @return E_NOTIMPL
    HRESULT LockDevice() override;
    /// @return E_NOTIMPL
    HRESULT UnlockDevice() override;
    /// Reads in chunks of up to 314159 bytes through Read. Only the owner may write a file that is made, and
    /// nobody may read it until its mode is changed.
    HRESULT ReadToFile(wchar_t* fileName, long count, long* got, short* end) override;
    /// Sends chunks of 314159 bytes, the last one shorter, through Write.
    HRESULT WriteFromFile(wchar_t* fileName, long count, short end, long* sent) override;
    HRESULT GetLastError(wchar_t** text) override;
    HRESULT get_OperationFailed(short* failed) override;
    HRESULT get_Timeout(long* piTimeout) override;
    /// @param timeoutMs  taken as an unsigned 32-bit number; -1 and INFINITE: no limit
    /// @return S_OK; E_INVALIDARG for what 32 bits cannot hold
    HRESULT put_Timeout(long timeoutMs) override;
    HRESULT get_RemoteState(short* pvtbRemoteState) override;
    /// @throws CShellError "Fatal put_RemoteState execution error" when Remote or Local does not give S_OK
    HRESULT put_RemoteState(short on) override;
    HRESULT get_LocalLockoutState(short* pvtbLockoutState) override;
    /// @throws CShellError "Fatal put_LocalLockoutState execution error" when LocalLockout does not give S_OK
    HRESULT put_LocalLockoutState(short on) override;
    HRESULT get_InterruptActive(short* pvtbInterruptActive) override;
    HRESULT put_InterruptActive(short active) override;

    ~CBScpiController() override;

    /// @name Requests, supplied by the transport
    /// Called on the caller's thread. S_OK: begun, an acknowledgement follows; else refused.
    /// @{

    /// Answered through DoAcknowledgeTrigger.
    virtual HRESULT DoTrigger() = 0;
    /// Answered through DoAcknowledgeClear.
    virtual HRESULT DoClear() = 0;
    /// Answered through DoAcknowledgeLocal.
    virtual HRESULT DoLocal() = 0;
    /// Answered through DoAcknowledgeRemote.
    virtual HRESULT DoRemote() = 0;
    /// Serial poll, answered through DoAcknowledgeStatus.
    virtual HRESULT DoReadStatusByte() = 0;
    /// Answered through DoAcknowledgeLocalLockout.
    virtual HRESULT DoLocalLockout(short on) = 0;
    /// Answered through DoAcknowledgeRead.
    /// @param first  what the transport still holds of an earlier, unfinished read is not part of this
    ///               one's acknowledgement: the read begins anew at the next byte of the instrument. Always
    ///               true from here
    /// @param counted  ends after count bytes or END; false: ends with END alone
    virtual HRESULT DoRead(bool first, bool counted, long count) = 0;
    /// Answered through DoAcknowledgeWrite. The data stays valid until CheckProtocolError has ended the
    /// operation, which may be before the answer.
    /// @param end  END goes with the last byte
    virtual HRESULT DoWrite(unsigned char* data, long length, bool end) = 0;
    /// The remote state as VARIANT_BOOL; no answer follows.
    virtual short DoGetRemoteState() = 0;
    /// The local-lockout state as VARIANT_BOOL; no answer follows.
    virtual short DoGetLocalLockoutState() = 0;
    /// Copies the acknowledged data; no answer follows.
    /// @param[in,out] length  the acknowledged length, which the buffer can hold; may be lowered to what
    ///                        was copied
    virtual HRESULT DoFetchData(unsigned char* buffer, long* length) = 0;
    /// Gives the acknowledged data as text; no answer follows.
    /// @param[out] text  a new BSTR; null on entry
    virtual HRESULT DoFetchString(wchar_t** text) = 0;
    /// Called at the end of the operations; the result is not looked at. The base gives S_OK.
    virtual HRESULT CheckProtocolError();
    /// Makes the instrument's service requests arrive; the result is the operation's, no answer follows.
    virtual HRESULT DoEnableInterrupt() = 0;
    /// As DoEnableInterrupt, for no longer arriving.
    virtual HRESULT DoDisableInterrupt() = 0;
    /// @}

    /// @name Answers of the transport, from any thread
    /// Each returns S_OK.
    /// @{

    /// The data is sent; it is not needed any more.
    HRESULT DoAcknowledgeWrite();
    /// The lockout is set or released.
    HRESULT DoAcknowledgeLocalLockout();
    /// The instrument is remote.
    HRESULT DoAcknowledgeRemote();
    /// The instrument is local.
    HRESULT DoAcknowledgeLocal();
    /// The device clear is done.
    HRESULT DoAcknowledgeClear();
    /// The trigger is given.
    HRESULT DoAcknowledgeTrigger();
    /// @param end  the message has ended
    /// @param second  kept for the transport's own use, not interpreted here
    /// @param length  number of bytes to fetch; at most the requested count of a counted read
    HRESULT DoAcknowledgeRead(bool end, bool second, long length);
    /// The serial poll is done.
    ///
    /// @param stb  the status byte
    HRESULT DoAcknowledgeStatus(char stb);
    /// The request under way has failed.
    HRESULT DoAcknowledgeError();
    /// @}

    /// The instrument requests service: ends WaitInterrupt and tells the callback, when that is enabled.
    ///
    /// @return the callback's result; S_OK without one
    /// @throws CShellError "scpi interrupt signal callback execution error", ZO_E_SHELL, when the callback
    ///         fails or throws
    HRESULT DoInterrupt();

private:
    using Text = std::shared_ptr<const wchar_t>;
    using Callback = std::shared_ptr<IZOScpiInterrupt>;

    /// A pointer argument and the condition that it meets, "<name> != NULL".
    struct tagPointer
    {
        const void* value;
        const char* condition;
    };
    using Pointers = std::initializer_list<tagPointer>;
    static constexpr tagPointer NotNull(const void* value, const char* condition) noexcept
    {
        return {value, condition};
    }

    template <class TBody>
    HRESULT Operate(Pointers pointers, TBody body, int line = __builtin_LINE());
    template <class TRequest>
    HRESULT Request(const char* message, TRequest request, int line = __builtin_LINE());
    template <class TValue, class TGetter>
    HRESULT GetProperty(TValue* out, const char* condition, TGetter getter, int line = __builtin_LINE());
    template <class TTransfer>
    bool TransmitChunk(TTransfer transfer);

    tagErrorReport NullReport(const char* condition, int line) const;
    HRESULT CheckPointers(Pointers pointers, int line) const;
    void RaiseUnlessOk(HRESULT result, const char* message, int line = __builtin_LINE()) const;
    void CopySettings(const CBScpiController& other);
    void ClearLastError() noexcept;
    void PrepareEvents() noexcept;
    HRESULT WaitEvents() const noexcept;
    HRESULT Acknowledge() noexcept;
    HRESULT FetchData(unsigned char* buffer, long room, long* length);

    HRESULT FailFile(const wchar_t* text, HRESULT result = S_FALSE) noexcept;
    void AddErrnoToErrorInfo() noexcept;
    HRESULT OpenFile(const wchar_t* fileName, int flags, int* descriptor);
    HRESULT ReceiveFile(const wchar_t* fileName, long count, long* got, short* end);
    HRESULT ReceiveChunks(int descriptor, unsigned char* buffer, long count, long* got, short* end);
    HRESULT SendFile(const wchar_t* fileName, long count, short end, long* sent);
    HRESULT SendChunks(int descriptor, unsigned char* buffer, long count, short end, long* sent);

    long m_timeoutMs = 60000;
    Callback m_interrupt; ///< through std::atomic_load and std::atomic_store only
    std::atomic<short> m_vtbInterruptActive = VARIANT_FALSE;
    CUniqueEvent m_abortEvent{CreateEvent(TRUE, FALSE)};
    CUniqueEvent m_doneEvent{CreateEvent(TRUE, FALSE)};
    CUniqueEvent m_errorEvent{CreateEvent(TRUE, FALSE)};
    CUniqueEvent m_interruptEvent{CreateEvent(TRUE, FALSE)};
    std::atomic<char> m_statusByte = 0;
    std::atomic<bool> m_end = false;
    std::atomic<bool> m_secondReadFlag = false;
    std::atomic<long> m_readLength = 0;
    Text m_lastError; ///< as m_interrupt, because Abort clears it from any thread
};

} // namespace ZoVelkor
