#pragma once

#include "CTcpController.h"
#include "Common/CProgressBar.h"

namespace ZoVelkor::Tools
{

/// A TCP controller that tells how far a file transfer is and how its last piece ended.
class CTransferController : public CTcpController
{
public:
    using CTcpController::CTcpController;

    HRESULT Write(unsigned char* data, long length, short end) override
    {
        m_last = CTcpController::Write(data, length, end);
        Note(length);
        return m_last;
    }

    HRESULT Read(long count, unsigned char* buffer, long* got, short* end) override
    {
        m_last = CTcpController::Read(count, buffer, got, end);
        Note(*got);
        return m_last;
    }

    /// @param bar  borrowed until the next call; null for none
    void ShowOn(CProgressBar* bar) noexcept { m_bar = bar; }
    /// Result of the last Read or Write, which a file transfer does not tell.
    HRESULT LastResult() const noexcept { return m_last; }
    /// So that a transfer of nothing does not tell of an earlier one.
    void ForgetLastResult() noexcept { m_last = S_OK; }

private:
    void Note(long bytes)
    {
        if (m_bar != nullptr && m_last == S_OK)
        {
            m_bar->Advance(static_cast<std::size_t>(bytes));
        }
    }

    CProgressBar* m_bar = nullptr;
    HRESULT m_last = S_OK;
};

} // namespace ZoVelkor::Tools
