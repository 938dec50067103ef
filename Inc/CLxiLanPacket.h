#pragma once

#include "Bstr.h"
#include "CComBSTR.h"
#include "PlatformTypes.h"
#include "ZoExport.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZoVelkor
{

/// Events that a packet's constructor knows by name; any other value gives an empty event identifier.
enum tagEnumLxiLanChannelId : std::int32_t
{
    ZO_LXI_LAN0 = 0,
    ZO_LXI_LAN1 = 1,
    ZO_LXI_LAN2 = 2,
    ZO_LXI_LAN3 = 3,
    ZO_LXI_LAN4 = 4,
    ZO_LXI_LAN5 = 5,
    ZO_LXI_LAN6 = 6,
    ZO_LXI_LAN7 = 7,
    ZO_LXI_ERROR = 8
};

/// One user data field as callers hand it in and get it. Ownership: the caller's.
struct tagLxiLanUserDataType
{
    std::uint8_t iIdentifier = 0;  ///< what the data is, as sender and receiver agree
    std::uint32_t iSize = 0;       ///< number of data bytes
    std::uint8_t* pData = nullptr; ///< null counts as no bytes, whatever the size
};

#pragma pack(push, 1)
/// One user data field as a packet keeps it, without padding.
struct LxiLanDataField
{
    std::uint32_t iSize;      ///< number of data bytes
    std::uint8_t iIdentifier; ///< as in tagLxiLanUserDataType
    std::uint8_t* pData;      ///< an array of the packet's own
};
#pragma pack(pop)
static_assert(sizeof(LxiLanDataField) == 5 + sizeof(void*));

/// One LAN event message: header, event identifier, sequence number, time stamp, flags and user data fields
/// (LXI Event Messaging Extended Function, event message format).
///
/// Arguments of type unsigned long carry 32 bits, those of type unsigned int 16; higher bits are dropped.
/// Strings and arrays that come out belong to the caller. Where a pointer argument is null, the operation
/// does nothing. Operations that copy user data throw std::bad_alloc and then leave the packet as it was.
/// Threads: one packet belongs to one thread at a time; the sequence numbers of all packets of the process
/// come from one atomic counter.
class ZO_EXPORT CLxiLanPacket
{
public:
    /// Length of an event identifier in bytes; shorter ones are filled up with zeros.
    static constexpr std::size_t kEventIdSize = 16;

    /// An empty message with "LXI" in front.
    CLxiLanPacket();
    /// Makes a message with sequence number, fractional nanoseconds and epoch 0.
    ///
    /// @param source         not used; may be null
    /// @param domain         its lower 8 bits
    /// @param destination    not used; may be null
    /// @param time           seconds in the upper, nanoseconds in the lower 32 bits
    /// @param isError        this and the other three: VARIANT_TRUE sets the flag, all else clears it
    /// @param userDataCount  number of records behind userData, copied in their order
    CLxiLanPacket(tagEnumLxiLanChannelId channel,
                  const wchar_t* source,
                  unsigned short domain,
                  const wchar_t* destination,
                  unsigned long long time,
                  short isError,
                  short isRetransmission,
                  short isAcknowledgement,
                  short isHwFlag,
                  unsigned short userDataCount,
                  const tagLxiLanUserDataType* userData);
    CLxiLanPacket(const CLxiLanPacket&) = delete;
    CLxiLanPacket& operator=(const CLxiLanPacket&) = delete;
    virtual ~CLxiLanPacket();

    /// The third byte of the header, 'I' unless the hardware says otherwise.
    void setHWDetect(unsigned char hwDetect) noexcept { m_abHWDetect[2] = hwDetect; }
    /// The third byte of the header.
    unsigned char getHWDetect() const noexcept { return m_abHWDetect[2]; }
    /// Sets the domain, 0 to 255; receivers drop messages of another one.
    void setDomain(unsigned char domain) noexcept { m_domain = domain; }
    /// The domain, as set or received.
    unsigned char getDomain() const noexcept { return m_domain; }
    /// The number stays until the message is written or another one is received.
    void setSequenceNumber(unsigned long number) noexcept
    {
        m_sequenceNumber = static_cast<std::uint32_t>(number);
    }
    /// The number of the message, as set, sent or received.
    unsigned long getSequenceNumber() const noexcept { return m_sequenceNumber; }
    /// Sets the epoch of the time stamp, in units of 2^32 s.
    void setEpoch(unsigned int epoch) noexcept { m_epoch = static_cast<std::uint16_t>(epoch); }
    /// The epoch of the time stamp.
    unsigned int getEpoch() const noexcept { return m_epoch; }

    /// Sets the moment of the event; nothing checks that it is a normal time.
    ///
    /// @param seconds      since 1970, within the epoch
    /// @param nanoSeconds  usually below 10^9
    /// @param fractional   in units of 2^-16 ns
    void setTimestamp(unsigned long seconds, unsigned long nanoSeconds, unsigned int fractional) noexcept;
    /// The three parts as they were set or received.
    void
    getTimestamp(unsigned long& seconds, unsigned long& nanoSeconds, unsigned int& fractional) const noexcept;
    /// Seconds in the upper, nanoseconds in the lower 32 bits.
    unsigned long long getTimestamp() const noexcept;

    /// @name Flags
    /// Exactly 1 sets, any other value clears; the answer is 1 or 0.
    /// @{

    /// The message tells of an error.
    void setIsErrorMessage(int value) noexcept { SetFlag(kErrorMessage, value); }
    /// Whether the message tells of an error.
    int getIsErrorMessage() const noexcept { return Flag(kErrorMessage); }
    /// The message was sent before, with the same sequence number.
    void setIsRetransmission(int value) noexcept { SetFlag(kRetransmission, value); }
    /// Whether the message was sent before.
    int getIsRetransmission() const noexcept { return Flag(kRetransmission); }
    /// The hardware value of the event: the state of its line.
    void setIsHwFlagSet(int value) noexcept { SetFlag(kHwFlag, value); }
    /// The hardware value of the event.
    int getIsHwFlagSet() const noexcept { return Flag(kHwFlag); }
    /// The message acknowledges one that was received.
    void setIsAcknowledgement(int value) noexcept { SetFlag(kAcknowledgement, value); }
    /// Whether the message acknowledges another one.
    int getIsAcknowledgement() const noexcept { return Flag(kAcknowledgement); }
    /// @}

    /// Copies kEventIdSize bytes in, whatever they are.
    void setEventId(const unsigned char* id) noexcept;
    /// Copies kEventIdSize bytes out; no terminator follows an identifier of full length.
    void getEventId(unsigned char* id) const noexcept;
    /// What the identifier begins with: "LAN0" to "LAN7" give 0 to 7, "ERROR" gives 8, anything else 9.
    int getEventId() const noexcept;
    /// The identifier up to its first zero; null when memory is short.
    BSTR getEventName() const noexcept;

    /// How many fields the message carries; received messages carry those that were appended here.
    unsigned int getNumberOfUserDataFields() const noexcept;
    /// Appends a field with a copy of the data.
    void appendUserData(const tagLxiLanUserDataType& field);
    /// Gives a field with a copy of its data, for the caller to delete[].
    ///
    /// @return 1; 0 when there is no such field (out is then left alone)
    int getUserData(unsigned short index, tagLxiLanUserDataType& out) const;
    /// Takes over header and user data of another packet, but not what it is about to receive.
    void duplicatePacket(const CLxiLanPacket& source);

    /// Writes the message with the next sequence number of the process; the first one is 1.
    ///
    /// @param[out] length  bytes to send: 40 and for each field its size and 3. Behind each field's length
    ///                     stand two bytes that this does not count, so with user data the end of the message
    ///                     lies beyond the length
    /// @param[out] data    the whole message for the caller to delete[], longer than length says
    void getSerializedDataStream(unsigned long& length, unsigned char*& data);

    /// Takes received bytes. The header is complete after 40 bytes; it then replaces the packet's own.
    ///
    /// A chunk must contain "LX"; what stands before is skipped. What follows a complete part in the same
    /// chunk is dropped. User data fields of the packet stay as they are and received ones are not assembled,
    /// see setReceivePhase.
    /// @return 1 when a part is complete, 0 when bytes are missing; the address of the chunk when it contains
    ///         no "LX" (nothing is stored then; 0 for a null chunk)
    unsigned long addSerializedData(unsigned long length, const unsigned char* data);

    /// Appends the message as a line for a log; the time is local, the sequence number signed 32 bits.
    ///
    /// A third header byte of 0 ends the header's text at once, without the separator.
    void getReadableLANData(CComBSTR& text) const;

protected:
    /// What the next received part is: 0 for a header, else the user data field that the part before has
    /// announced. Without such an announcement the phase stays 0. A part under way is dropped.
    ///
    /// For derived receivers: this class never leaves phase 0 by itself, and returns to it behind the last
    /// field. A field that needs more than 8192 bytes with its frame of 3 is refused and ends the message.
    void setReceivePhase(unsigned int phase) noexcept;

private:
    static constexpr std::size_t kReceiveBufferSize = 8192;
    static constexpr std::uint32_t kBasePartSize = 40;

    static constexpr std::uint16_t kErrorMessage = 1;
    static constexpr std::uint16_t kRetransmission = 2;
    static constexpr std::uint16_t kHwFlag = 4;
    static constexpr std::uint16_t kAcknowledgement = 8;

    /// The fields, and owner of their data.
    class CFields
    {
    public:
        CFields() = default;
        CFields(const CFields&) = delete;
        CFields& operator=(const CFields&) = delete;
        ~CFields();
        void Append(std::uint8_t identifier, const std::uint8_t* data, std::uint32_t size);
        void Swap(CFields& other) noexcept { m_fields.swap(other.m_fields); }
        const std::vector<LxiLanDataField>& All() const noexcept { return m_fields; }

    private:
        std::vector<LxiLanDataField> m_fields;
    };

    void SetFlag(std::uint16_t flag, int value) noexcept;
    int Flag(std::uint16_t flag) const noexcept { return (m_flags & flag) != 0 ? 1 : 0; }
    void AppendHeaderText(CComBSTR& text) const;
    void AppendTimeText(CComBSTR& text) const;
    void AppendUserDataText(CComBSTR& text) const;
    unsigned char* WriteHeader(unsigned char* to) const noexcept;
    void ProcessBasePart() noexcept;
    void ProcessUserData();
    void AnnounceField(std::uint16_t length) noexcept;

    static volatile LONG s_lSequenceNumber;

    std::array<std::uint8_t, 3> m_abHWDetect{'L', 'X', 'I'};
    std::uint8_t m_domain = 0;
    std::array<std::uint8_t, kEventIdSize> m_abEventId{};
    std::uint32_t m_sequenceNumber = 0;
    std::uint32_t m_seconds = 0;
    std::uint32_t m_nanoSeconds = 0;
    std::uint16_t m_fractionalNanoSeconds = 0;
    std::uint16_t m_epoch = 0;
    std::uint16_t m_flags = 0;
    std::uint16_t m_pendingFieldLength = 0;
    CFields m_fields;
    /// Of the announced part; nothing depends on it, it helps who looks at a packet in a debugger.
    std::uint32_t m_bytesExpected = kBasePartSize;
    std::array<std::uint8_t, kReceiveBufferSize> m_abReceived{};
    std::uint32_t m_received = 0;
    std::uint32_t m_receivePhase = 0;
};

} // namespace ZoVelkor
