#pragma once

#include "CComPtr.h"
#include "Root.h"

namespace ZoVelkor::Demo
{

/// Keeps an object registered at the root for as long as the registration lives.
class CRootRegistration
{
public:
    /// @throws CShellError when the root refuses the object
    CRootRegistration(const IID& iid, IUnknown* pObject);
    CRootRegistration(const CRootRegistration&) = delete;
    CRootRegistration& operator=(const CRootRegistration&) = delete;
    ~CRootRegistration();

private:
    const IID m_iid;
    CComPtr<IZORoot> m_root;
};

} // namespace ZoVelkor::Demo
