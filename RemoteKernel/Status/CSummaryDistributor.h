#pragma once

#include "CStatusByteRegister.h"
#include "ThreadAnnotations.h"

#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// Parent of the instrument's registers: hands their summaries on to the status byte of every session.
///
/// What a session enables for service requests stays its own: enabling the summary path of a register ends
/// here. Threads: any operation from any thread.
class CSummaryDistributor : public CStatusRegister
{
public:
    CSummaryDistributor();

    HRESULT ModifyCondition(wchar_t mask, wchar_t value) override;

    /// Gives a status byte the present summaries, and all later ones until Detach.
    void Attach(CStatusByteObject* statusByte);
    void Detach(CStatusByteObject* statusByte) noexcept;

protected:
    ~CSummaryDistributor() override = default;

private:
    // The section is taken after the lock of a child and before those of the status bytes.
    std::vector<CComPtr<CStatusByteObject>> m_statusBytes ZO_GUARDED_BY(Section());
};

using CSummaryDistributorObject = CComObject<CSummaryDistributor, IZOScpiStatusRegister>;

} // namespace ZoVelkor::RemoteKernel
