#pragma once

#include "Guid.h"
#include "Unknown.h"

namespace ZoVelkor
{

struct IZONotificationSink;

/// Reads and writes the instrument's registry.
///
/// Keys are handles as of Registry.h, predefined roots among them; who gets a handle from RegCreateKey or
/// RegOpenKey closes it with RegCloseKey. A name of null is the unnamed value. A `long` carries 32 bits: a
/// DWORD comes sign-extended.
///
/// A text comes as a new BSTR, which the caller frees. Its address must not be null and must hold null; it
/// holds null when the operation has failed, except after E_INVALIDARG for an address that held a text.
///
/// Results: S_OK; an error number of the registry as HRESULT_FROM_WIN32 gives it; those named below, where
/// "invalid data" is 0x8007000D. Threads: any operation from any thread.
struct IZORegistryAccess : IUnknown
{
    static constexpr IID kInterfaceId{
        0xB0A1C6E2, 0x4D53, 0x4E0F, {0x8A, 0x37, 0x1C, 0x92, 0xD6, 0x0B, 0x5E, 0x48}};

    /// Gives the predefined roots, zero-extended. A null pointer is skipped.
    virtual HRESULT GetBasicKeys(long* classesRoot,
                                 long* localMachine,
                                 long* currentUser,
                                 long* currentConfig,
                                 long* users,
                                 long* performanceData,
                                 long* dynData) = 0;

    /// Reads a text as it is stored; the last character counts as its terminator.
    ///
    /// @return invalid data when the value is no text or not of whole characters; E_POINTER; E_INVALIDARG;
    ///         E_OUTOFMEMORY
    virtual HRESULT ReadString(long key, wchar_t* name, wchar_t** value) = 0;

    /// Reads a text of at most 2047 characters, and expands environment variables if it is of that type.
    ///
    /// @return as ReadString; invalid data also without terminator; 0x800700EA for a stored text of more than
    ///         2047 characters; 0x8007007A for an expanded one
    virtual HRESULT ReadExpandedString(long key, wchar_t* name, wchar_t** value) = 0;

    /// Writes a text up to its terminator, and that.
    ///
    /// @return E_POINTER when value is null
    virtual HRESULT WriteString(long key, wchar_t* name, wchar_t* value) = 0;

    /// The same as a text whose environment variables ReadExpandedString expands.
    virtual HRESULT WriteExpandedString(long key, wchar_t* name, wchar_t* value) = 0;

    /// Reads a DWORD.
    ///
    /// @return invalid data for every failure, a missing value too; E_POINTER
    virtual HRESULT ReadLong(long key, wchar_t* name, long* value) = 0;

    /// Writes a DWORD.
    ///
    /// @param value  -2^31 to 2^32 - 1, else 0x80070057; the lower 32 bits are stored
    virtual HRESULT WriteLong(long key, wchar_t* name, long value) = 0;

    /// Reads the text of a GUID.
    ///
    /// @return as ReadString; CO_E_CLASSSTRING when the text is no GUID
    virtual HRESULT ReadGuid(long key, wchar_t* name, GUID* value) = 0;

    /// Writes a GUID as text in braces.
    ///
    /// @return E_POINTER; E_OUTOFMEMORY
    virtual HRESULT WriteGuid(long key, wchar_t* name, const GUID* value) = 0;

    /// Reads any value, as RegQueryValueEx.
    ///
    /// @param[out] type     may be null
    /// @param[in,out] size  size of data in bytes, then that of the value, also with 0x800700EA
    /// @return E_POINTER when all three are null, or a size above 0 comes without data
    virtual HRESULT RegQueryValue(long key, wchar_t* name, long* type, long* size, unsigned char* data) = 0;

    /// Writes any value, as RegSetValueEx: of whatever type it was before.
    ///
    /// @param size  of data in bytes, 0 or more
    virtual HRESULT RegSetValue(long key, wchar_t* name, long type, long size, unsigned char* data) = 0;

    /// Counts keys and values below a key; lengths in characters without terminator, maxValueLength in bytes.
    /// A null pointer is skipped.
    virtual HRESULT RegQueryInfoKey(long key,
                                    long* subKeys,
                                    long* maxSubKeyLength,
                                    long* values,
                                    long* maxValueNameLength,
                                    long* maxValueLength) = 0;

    /// Gives the value with a number.
    ///
    /// @param[out] type     may be null, like size and name
    /// @param[in,out] size  as in RegQueryValue
    /// @param[out] name     a text as above
    /// @return as RegQueryValue; E_INVALIDARG; 0x80070103 behind the last value
    virtual HRESULT
    RegEnumValue(long key, long index, long* type, long* size, unsigned char* data, wchar_t** name) = 0;

    /// Gives the name of the key with a number below a key.
    ///
    /// @return E_POINTER; E_INVALIDARG; 0x80070103 behind the last key; 0x800700EA for a name of 255
    ///         characters
    virtual HRESULT RegEnumKey(long key, long index, wchar_t** name) = 0;

    /// Opens a key, and makes it and those above it where they are missing.
    ///
    /// @param[out] result  the handle; 0 on failure
    virtual HRESULT RegCreateKey(long key, wchar_t* subKey, long* result) = 0;

    /// Opens a key.
    ///
    /// @param[out] result  the handle; 0 on failure
    /// @return 0x80070002 when there is no such key; E_POINTER
    virtual HRESULT RegOpenKey(long key, wchar_t* subKey, long* result) = 0;

    /// Closes a key.
    ///
    /// @return S_FALSE for the key 0
    virtual HRESULT RegCloseKey(long key) = 0;

    /// Deletes a key that has none below it.
    virtual HRESULT RegDeleteKey(long key, wchar_t* subKey) = 0;

    /// Deletes a key with everything below it; it must be named.
    virtual HRESULT RegRecursiveDeleteKey(long key, wchar_t* subKey) = 0;

    /// Would save a key to a file.
    ///
    /// @return E_NOTIMPL
    virtual HRESULT SaveRegKeyToFile(long key, wchar_t* file) = 0;

    /// Asks for notifications of changes. The service of this module accepts and sends none; what the last
    /// four arguments mean is up to an implementation that does.
    ///
    /// @return S_OK; S_FALSE; E_FAIL; E_POINTER for a null sink
    virtual HRESULT RegisterNotificationRegKey(IZONotificationSink* sink,
                                               long key,
                                               wchar_t* subKey,
                                               long secondKey,
                                               wchar_t* valueName,
                                               short flag,
                                               unsigned long filter) = 0;

    /// Takes the request back. Results as above.
    virtual HRESULT UnregisterNotificationRegKey(IZONotificationSink* sink) = 0;

protected:
    ~IZORegistryAccess() = default;
};

inline constexpr const IID& IID_IZORegistryAccess = IZORegistryAccess::kInterfaceId;

} // namespace ZoVelkor
