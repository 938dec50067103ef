#pragma once

#include "Guid.h"
#include "IZOScpiParser.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// One application's parser as the kernel's registration takes it.
///
/// Pointers are lent for the call; the kernel takes its own references and copies.
struct tagZO_SCPI_PARSER_OBJECT
{
    const wchar_t* bsName;        ///< for messages and listings
    tagZO_SCPI_PARSER_TYPE eType; ///< shown in listings
    IZOScpiParser* pParser;       ///< has the command tree, its execution sink and the device handler
    GUID m_guidObjectId;          ///< names the object; new for each registration
};

/// Where applications enter and leave remote control; found at the root.
///
/// Sessions see the commands of all registered objects, or none of a change: never a mixture.
/// Threads: any operation from any thread, but not from inside a handler.
struct IZOScpiObjectRegistration : IUnknown
{
    static constexpr IID kInterfaceId{
        0x7C6BF0EC, 0xBB06, 0x42B1, {0xA0, 0x57, 0xCE, 0x96, 0x9D, 0xC5, 0x56, 0x69}};

    /// Takes an application's commands in; the next program message of every session knows them.
    ///
    /// @param object  lent for the call
    /// @return S_OK; E_POINTER; E_INVALIDARG, with an error report that says why, for a table that is
    ///         damaged, an empty one, or an identity that is registered already
    virtual HRESULT RegisterObject(const tagZO_SCPI_PARSER_OBJECT* object) = 0;

    /// Takes the object out; when the call returns no handler of the object is running or will run.
    ///
    /// @return S_OK; S_FALSE when it is not registered
    virtual HRESULT UnregisterObject(GUID id) = 0;

protected:
    ~IZOScpiObjectRegistration() = default;
};

inline constexpr const IID& IID_IZOScpiObjectRegistration = IZOScpiObjectRegistration::kInterfaceId;

} // namespace ZoVelkor
