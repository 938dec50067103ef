#pragma once

#include "ZoExport.h"

#include <cstdint>
#include <string>

namespace ZoVelkor
{
/// What error reports need to know of an object, and where problems with its properties go.
///
/// The destructor is protected: an object is not destroyed through this face. Threads: implementations are
/// called by whichever thread meets a problem.
class CObjectDataReferenceBase
{
public:
    /// The object's name for a reader of the log; never empty.
    virtual std::string ObjectName() const = 0;

    /// Reports a property whose value is wrong.
    ///
    /// @param value    address of the value, for identification only; may be null
    /// @param message  what is wrong with it
    virtual void PropertyError(const void* value, const std::string& message) = 0;

    /// Reports a property whose value is doubtful but usable; parameters as for PropertyError.
    virtual void PropertyWarning(const void* value, const std::string& message) = 0;

protected:
    ~CObjectDataReferenceBase() = default;
};

/// Identity of a component in error reports, and its settings; components inherit it virtually, so each has
/// one.
///
/// Every object has a number that no other object of the process ever has. A copy is another object: it
/// takes name and settings along and gets its own number.
/// Threads: SetObjectName and SetArgumentChecking belong to the set-up of the object; all other operations
/// may run in any thread.
class ZO_EXPORT CObjectDataReference : public CObjectDataReferenceBase
{
public:
    /// An object without a name of its own, with the next number.
    CObjectDataReference() noexcept;
    /// Another object: name and settings of the source, and a number of its own.
    CObjectDataReference(const CObjectDataReference& other);
    /// Takes name and settings over; the number stays.
    CObjectDataReference& operator=(const CObjectDataReference& other);
    /// The number is not given out again.
    virtual ~CObjectDataReference();

    /// The name set with SetObjectName; without one, the name of the object's class as the compiler knows
    /// it.
    std::string ObjectName() const override;

    /// Gives the object a name; an empty one brings back the name of its class.
    void SetObjectName(std::string name);

    /// Says whether entry layers check the arguments and results of the object's operations; they do until
    /// told otherwise. Without the checks a base layer still refuses null pointers.
    void SetArgumentChecking(bool on) noexcept { m_argumentChecking = on; }
    /// Whether entry layers check.
    bool IsArgumentChecking() const noexcept { return m_argumentChecking; }

    /// The object's number, counted from 1 in order of construction.
    std::uint64_t ObjectNumber() const noexcept { return m_objectNumber; }

    /// Goes to the error reporter with severity Error and result ZO_E_SHELL.
    void PropertyError(const void* value, const std::string& message) override;

    /// Goes to the error reporter with severity Warning and result ZO_E_SHELL.
    void PropertyWarning(const void* value, const std::string& message) override;

private:
    const std::uint64_t m_objectNumber;
    std::string m_name;
    bool m_argumentChecking = true;
};
} // namespace ZoVelkor
