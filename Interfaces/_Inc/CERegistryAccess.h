#pragma once

#include "CRegistryAccessChecks.h"
#include "CTraceCallStackObject.h"
#include "GuardedEntry.h"
#include "IZORegistryAccess.h"

namespace ZoVelkor
{

/// Entry layer in front of a registry service: traces each call, checks its arguments and lets no exception
/// out.
///
/// A refused argument is reported and gives the result that IZORegistryAccess names. An exception of the base
/// layer is reported too, unless that was done where it was raised; it becomes E_FAIL in the operations on
/// texts, GUIDs and ReadLong and E_UNEXPECTED in the others. Registrations of notifications give the result
/// of the raised error instead, and report a result of the base layer other than S_OK, S_FALSE and E_FAIL;
/// the sink is checked while argument checking is on for the object.
/// @tparam TBase  CBRegistryAccess or a class derived from it
template <class TBase>
class CERegistryAccess : public TBase
{
public:
    HRESULT GetBasicKeys(long* classesRoot,
                         long* localMachine,
                         long* currentUser,
                         long* currentConfig,
                         long* users,
                         long* performanceData,
                         long* dynData) override
    {
        return Enter("GetBasicKeys", E_UNEXPECTED, &CheckNothing, [=, this] {
            return TBase::GetBasicKeys(
                classesRoot, localMachine, currentUser, currentConfig, users, performanceData, dynData);
        });
    }

    HRESULT ReadString(long key, wchar_t* name, wchar_t** value) override
    {
        return Enter(
            "ReadString",
            E_FAIL,
            [=](const Checks& checks) { checks.Text(value); },
            [=, this] { return TBase::ReadString(key, name, value); });
    }

    HRESULT ReadExpandedString(long key, wchar_t* name, wchar_t** value) override
    {
        return Enter(
            "ReadExpandedString",
            E_FAIL,
            [=](const Checks& checks) { checks.Text(value); },
            [=, this] { return TBase::ReadExpandedString(key, name, value); });
    }

    HRESULT WriteString(long key, wchar_t* name, wchar_t* value) override
    {
        return Enter(
            "WriteString", E_FAIL, &CheckNothing, [=, this] { return TBase::WriteString(key, name, value); });
    }

    HRESULT WriteExpandedString(long key, wchar_t* name, wchar_t* value) override
    {
        return Enter("WriteExpandedString", E_FAIL, &CheckNothing, [=, this] {
            return TBase::WriteExpandedString(key, name, value);
        });
    }

    HRESULT ReadLong(long key, wchar_t* name, long* value) override
    {
        return Enter(
            "ReadLong",
            E_FAIL,
            [=](const Checks& checks) { checks.Pointer(value, "piValue", "piValue != NULL"); },
            [=, this] { return TBase::ReadLong(key, name, value); });
    }

    HRESULT WriteLong(long key, wchar_t* name, long value) override
    {
        return Enter("WriteLong", E_UNEXPECTED, &CheckNothing, [=, this] {
            return TBase::WriteLong(key, name, value);
        });
    }

    HRESULT ReadGuid(long key, wchar_t* name, GUID* value) override
    {
        return Enter(
            "ReadGuid",
            E_FAIL,
            [=](const Checks& checks) { checks.Pointer(value, "pGuid", "pGuid != NULL"); },
            [=, this] { return TBase::ReadGuid(key, name, value); });
    }

    HRESULT WriteGuid(long key, wchar_t* name, const GUID* value) override
    {
        return Enter(
            "WriteGuid",
            E_FAIL,
            [=](const Checks& checks) { checks.Pointer(value, "pGuid", "pGuid != NULL"); },
            [=, this] { return TBase::WriteGuid(key, name, value); });
    }

    HRESULT RegQueryValue(long key, wchar_t* name, long* type, long* size, unsigned char* data) override
    {
        return Enter(
            "RegQueryValue",
            E_UNEXPECTED,
            [=](const Checks& checks) {
                checks.Any({type, size, data}, "pType != NULL || pSize != NULL || pData != NULL");
                checks.Buffer(size, data);
            },
            [=, this] { return TBase::RegQueryValue(key, name, type, size, data); });
    }

    HRESULT RegSetValue(long key, wchar_t* name, long type, long size, unsigned char* data) override
    {
        return Enter("RegSetValue", E_UNEXPECTED, &CheckNothing, [=, this] {
            return TBase::RegSetValue(key, name, type, size, data);
        });
    }

    HRESULT RegQueryInfoKey(long key,
                            long* subKeys,
                            long* maxSubKeyLength,
                            long* values,
                            long* maxValueNameLength,
                            long* maxValueLength) override
    {
        return Enter("RegQueryInfoKey", E_UNEXPECTED, &CheckNothing, [=, this] {
            return TBase::RegQueryInfoKey(
                key, subKeys, maxSubKeyLength, values, maxValueNameLength, maxValueLength);
        });
    }

    HRESULT
    RegEnumValue(long key, long index, long* type, long* size, unsigned char* data, wchar_t** name) override
    {
        return Enter(
            "RegEnumValue",
            E_UNEXPECTED,
            [=](const Checks& checks) {
                checks.Any({type, size, data, name},
                           "pType != NULL || pSize != NULL || pData != NULL || pbsValue != NULL");
                checks.Buffer(size, data);
                checks.OptionalText(name);
            },
            [=, this] { return TBase::RegEnumValue(key, index, type, size, data, name); });
    }

    HRESULT RegEnumKey(long key, long index, wchar_t** name) override
    {
        return Enter(
            "RegEnumKey",
            E_UNEXPECTED,
            [=](const Checks& checks) { checks.Text(name); },
            [=, this] { return TBase::RegEnumKey(key, index, name); });
    }

    HRESULT RegCreateKey(long key, wchar_t* subKey, long* result) override
    {
        return Enter("RegCreateKey", E_UNEXPECTED, &CheckNothing, [=, this] {
            return TBase::RegCreateKey(key, subKey, result);
        });
    }

    HRESULT RegOpenKey(long key, wchar_t* subKey, long* result) override
    {
        return Enter(
            "RegOpenKey",
            E_UNEXPECTED,
            [=](const Checks& checks) { checks.Pointer(result, "piResult", "piResult != NULL"); },
            [=, this] { return TBase::RegOpenKey(key, subKey, result); });
    }

    HRESULT RegCloseKey(long key) override
    {
        return Enter(
            "RegCloseKey", E_UNEXPECTED, &CheckNothing, [=, this] { return TBase::RegCloseKey(key); });
    }

    HRESULT RegDeleteKey(long key, wchar_t* subKey) override
    {
        return Enter("RegDeleteKey", E_UNEXPECTED, &CheckNothing, [=, this] {
            return TBase::RegDeleteKey(key, subKey);
        });
    }

    HRESULT RegRecursiveDeleteKey(long key, wchar_t* subKey) override
    {
        return Enter("RegRecursiveDeleteKey", E_UNEXPECTED, &CheckNothing, [=, this] {
            return TBase::RegRecursiveDeleteKey(key, subKey);
        });
    }

    HRESULT SaveRegKeyToFile(long key, wchar_t* file) override
    {
        return Enter("SaveRegKeyToFile", E_FAIL, &CheckNothing, [=, this] {
            return TBase::SaveRegKeyToFile(key, file);
        });
    }

    HRESULT RegisterNotificationRegKey(IZONotificationSink* sink,
                                       long key,
                                       wchar_t* subKey,
                                       long secondKey,
                                       wchar_t* valueName,
                                       short flag,
                                       unsigned long filter) override
    {
        return EnterRegistration("RegisterNotificationRegKey", sink, [=, this] {
            return TBase::RegisterNotificationRegKey(sink, key, subKey, secondKey, valueName, flag, filter);
        });
    }

    HRESULT UnregisterNotificationRegKey(IZONotificationSink* sink) override
    {
        return EnterRegistration("UnregisterNotificationRegKey", sink, [=, this] {
            return TBase::UnregisterNotificationRegKey(sink);
        });
    }

protected:
    ~CERegistryAccess() override = default;

private:
    using Checks = CRegistryAccessChecks;

    static constexpr tagSourceUnit kSourceUnit{"Interfaces/_Inc/CERegistryAccess", __DATE__ " " __TIME__};
    static constexpr const char* kComponent = "RegistryAccess";

    static void CheckNothing(const Checks& /*checks*/) {}

    /// @param function         name for the trace, a literal
    /// @param exceptionResult  what an exception of the base layer becomes
    template <class TCheck, class TCall>
    HRESULT Enter(const char* function, HRESULT exceptionResult, const TCheck& check, const TCall& call) const
    {
        const CTraceCallStackObject trace(kComponent, function);
        return GuardedEntry([&]() -> HRESULT {
            check(Checks(*this, kSourceUnit));
            try
            {
                return call();
            }
            catch (...)
            {
                static_cast<void>(ResultOfCurrentException());
                return exceptionResult;
            }
        });
    }

    template <class TCall>
    HRESULT EnterRegistration(const char* function, const IZONotificationSink* sink, const TCall& call) const
    {
        const CTraceCallStackObject trace(kComponent, function);
        return GuardedEntry([&]() -> HRESULT {
            const Checks checks(*this, kSourceUnit);
            if (this->IsArgumentChecking())
            {
                checks.Pointer(sink, "pIZONotificationSink", "pIZONotificationSink != NULL");
            }
            const HRESULT result = call();
            checks.Result(result);
            return result;
        });
    }
};

} // namespace ZoVelkor
