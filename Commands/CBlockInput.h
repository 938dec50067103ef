#pragma once

#include "CComPtr.h"
#include "CCommandError.h"
#include "IZOScpiBlockData.h"

#include <cstddef>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace ZoVelkor::Commands
{

/// Thrown when the rest of a block will not come; its handler leaves everything as it was and lets it pass.
class CBlockAborted
{};

/// A block parameter, read piece by piece while it arrives (IEEE 488.2 section 7.7.6).
///
/// Valid until the handler returns. Threads: the one that runs the handler.
class CBlockInput
{
public:
    CBlockInput() = default;
    CBlockInput(CComPtr<IZOScpiBlockData> data, long length) : m_data(std::move(data)), m_length(length) {}

    /// Bytes that the client announces; nothing for a block of indefinite length that has not ended.
    std::optional<std::size_t> Length() const noexcept
    {
        return m_length < 0 ? std::nullopt : std::optional<std::size_t>(static_cast<std::size_t>(m_length));
    }

    /// Reads the next bytes; waits for them.
    ///
    /// @return how many; fewer than there is room for only at the end of the block
    /// @throws CBlockAborted when the rest will not come
    std::size_t Read(std::span<std::byte> bytes)
    {
        unsigned long got = 0;
        if (m_data != nullptr && !bytes.empty())
        {
            Check(m_data->Read(bytes.size(), reinterpret_cast<unsigned char*>(bytes.data()), &got));
        }
        return got;
    }

    /// Reads the whole block, in steps: memory is filled by what arrives, not by what is announced.
    ///
    /// @throws CCommandError -223 for more than maxBytes, before anything is read when the client announces
    ///         them; CBlockAborted
    std::vector<std::byte> ReadAll(std::size_t maxBytes)
    {
        constexpr std::size_t kStep = std::size_t{64} << 10;
        if (Length().value_or(0) > maxBytes)
        {
            throw CCommandError(kScpiTooMuchData);
        }
        std::vector<std::byte> bytes;
        for (std::size_t got = kStep; got == kStep;)
        {
            const std::size_t former = bytes.size();
            bytes.resize(former + kStep);
            got = Read(std::span(bytes).subspan(former));
            bytes.resize(former + got);
            if (bytes.size() > maxBytes)
            {
                throw CCommandError(kScpiTooMuchData);
            }
        }
        return bytes;
    }

    /// Reads up to so many numbers, which the block holds as type, width and order say.
    ///
    /// @throws CBlockAborted; CCommandError -161 when the block ends inside a number
    std::size_t ReadNumbers(std::span<double> values,
                            tagEnumFormatDataType type,
                            long width,
                            tagEnumFormatByteOrder order)
    {
        unsigned long got = 0;
        if (m_data == nullptr)
        {
            return got;
        }
        if (!m_hasFormat && FAILED(m_data->InitReaderFormat(type, width, order)))
        {
            throw CCommandError(kScpiIllegalParameterValue);
        }
        m_hasFormat = true;
        const HRESULT result = m_data->GetNextArray(values.size(), values.data(), &got);
        if (result == E_FAIL)
        {
            throw CCommandError(kScpiInvalidBlockData);
        }
        Check(result);
        return got;
    }

    /// The interface behind it; borrowed, null for a block without one.
    IZOScpiBlockData* Data() const noexcept { return m_data; }

private:
    static void Check(HRESULT result)
    {
        if (FAILED(result))
        {
            throw CBlockAborted();
        }
    }

    CComPtr<IZOScpiBlockData> m_data;
    long m_length = 0;
    bool m_hasFormat = false;
};

} // namespace ZoVelkor::Commands
