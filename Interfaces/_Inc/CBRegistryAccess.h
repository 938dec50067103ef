#pragma once

#include "CObjectDataReference.h"
#include "IZORegistryAccess.h"
#include "ZoExport.h"

namespace ZoVelkor
{

class CCritSection;

/// Base of registry services: calls the registry of the platform and converts its results.
///
/// Checks no more than memory safety needs: CERegistryAccess stands in front.
/// Threads: any operation from any thread, but SetLock before the first registration.
class ZO_EXPORT CBRegistryAccess : public IZORegistryAccess, public virtual CObjectDataReference
{
public:
    HRESULT GetBasicKeys(long* classesRoot,
                         long* localMachine,
                         long* currentUser,
                         long* currentConfig,
                         long* users,
                         long* performanceData,
                         long* dynData) override;
    HRESULT ReadString(long key, wchar_t* name, wchar_t** value) override;
    HRESULT ReadExpandedString(long key, wchar_t* name, wchar_t** value) override;
    HRESULT WriteString(long key, wchar_t* name, wchar_t* value) override;
    HRESULT WriteExpandedString(long key, wchar_t* name, wchar_t* value) override;
    HRESULT ReadLong(long key, wchar_t* name, long* value) override;
    HRESULT WriteLong(long key, wchar_t* name, long value) override;
    /// Reads the text through the interface.
    HRESULT ReadGuid(long key, wchar_t* name, GUID* value) override;
    /// Writes the text through the interface.
    HRESULT WriteGuid(long key, wchar_t* name, const GUID* value) override;
    HRESULT RegQueryValue(long key, wchar_t* name, long* type, long* size, unsigned char* data) override;
    HRESULT RegSetValue(long key, wchar_t* name, long type, long size, unsigned char* data) override;
    HRESULT RegQueryInfoKey(long key,
                            long* subKeys,
                            long* maxSubKeyLength,
                            long* values,
                            long* maxValueNameLength,
                            long* maxValueLength) override;
    HRESULT
    RegEnumValue(long key, long index, long* type, long* size, unsigned char* data, wchar_t** name) override;
    HRESULT RegEnumKey(long key, long index, wchar_t** name) override;
    HRESULT RegCreateKey(long key, wchar_t* subKey, long* result) override;
    HRESULT RegOpenKey(long key, wchar_t* subKey, long* result) override;
    HRESULT RegCloseKey(long key) override;
    HRESULT RegDeleteKey(long key, wchar_t* subKey) override;
    HRESULT RegRecursiveDeleteKey(long key, wchar_t* subKey) override;
    HRESULT SaveRegKeyToFile(long key, wchar_t* file) override;
    /// Calls DoRegisterNotificationRegKey under the lock.
    HRESULT RegisterNotificationRegKey(IZONotificationSink* sink,
                                       long key,
                                       wchar_t* subKey,
                                       long secondKey,
                                       wchar_t* valueName,
                                       short flag,
                                       unsigned long filter) override;
    /// Calls DoUnregisterNotificationRegKey under the lock.
    HRESULT UnregisterNotificationRegKey(IZONotificationSink* sink) override;

    /// Gives the lock under which notifications are registered.
    ///
    /// @param lock  borrowed; outlives the object. Null, as at the beginning: no lock
    void SetLock(CCritSection* lock) noexcept { m_lock = lock; }

protected:
    // These stand before the destructor, so that they take the slots that follow the interface.
    /// Does nothing here. @return S_OK
    virtual HRESULT DoRegisterNotificationRegKey(IZONotificationSink* sink,
                                                 long key,
                                                 wchar_t* subKey,
                                                 long secondKey,
                                                 wchar_t* valueName,
                                                 short flag,
                                                 unsigned long filter);
    /// Does nothing here. @return S_OK
    virtual HRESULT DoUnregisterNotificationRegKey(IZONotificationSink* sink);

    ~CBRegistryAccess() override = default;

private:
    CCritSection* m_lock = nullptr;
};

} // namespace ZoVelkor
