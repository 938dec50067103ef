#include "CLxiErrorStorage.h"

#include "CCritSectionLocker.h"

#include <algorithm>
#include <iterator>

namespace ZoVelkor
{

namespace
{

struct ErrorText
{
    EnumLxiErrors code;
    const wchar_t* text;
};

using enum EnumLxiErrors;

// Deliberate: 5000 lacks a word in every log and in every client that compares texts.
constexpr ErrorText kErrorTexts[] = {
    {NoError, L"No error"},
    {CapabilityConnection, L"Error during connection a capability"},
    {AlarmExists, L"Alarm could not be added, because it already exists"},
    {AlarmNotFound, L"Alarm not found"},
    {ArmingSourceExists, L"Arming source could not be added, because it already exists"},
    {ArmingSourceNotFound, L"Arming source not found"},
    {SoftwareCapabilityExists, L"Software capability already exists"},
    {HardwareCapabilityExists, L"Hardware capability already exists"},
    {LanCapabilityExists, L"LAN capability already exists"},
    {TimerCapabilityExists, L"Timer capability already exists"},
    {CapabilityNotFound, L"Capability not found"},
    {EventExists, L"Event could not be added, because it already exists"},
    {EventNotFound, L"Event not found"},
    {EventNotEnabled, L"Event could not be enabled"},
    {EventNotDisabled, L"Event could not be disabled"},
    {TriggerSourceExists, L"Trigger source could not be added, because it already exists"},
    {TriggerSourceNotFound, L"Trigger source not found"},
    {InstanceNotEnabled, L"Instance could not be enabled"},
    {InstanceNotDisabled, L"Instance could not be disabled"},
    {TriggerSourceNotActivated, L"Trigger source could not be activated"},
    {TriggerSourceNotDeactivated, L"Trigger source could not be deactivated"}};

CComBSTR TextOf(EnumLxiErrors code)
{
    const auto* const found = std::find_if(std::begin(kErrorTexts),
                                           std::end(kErrorTexts),
                                           [code](const ErrorText& row) { return row.code == code; });
    return found == std::end(kErrorTexts) ? L"Unknown error" : found->text;
}

} // namespace

CLxiErrorStorage::CLxiErrorStorage(const CLxiErrorStorage& other)
    : m_code(this == &other ? EnumLxiErrors::NoError : other.m_code.load())
{}

CLxiErrorStorage::~CLxiErrorStorage() = default;

void CLxiErrorStorage::SetError(EnumLxiErrors code)
{
    const CCritSectionLocker locker(m_section);
    m_code = code;
}

void CLxiErrorStorage::ClearError()
{
    SetError(EnumLxiErrors::NoError);
}

CComBSTR CLxiErrorStorage::GetErrorString() const
{
    return TextOf(m_code);
}

void CLxiErrorStorage::GetLastError(EnumLxiErrors& code, CComBSTR& text)
{
    // Deliberate: read before the lock; whoever fetches wants an answer now, and only the last error counts.
    code = m_code;
    text = TextOf(code);
    ClearError();
}

} // namespace ZoVelkor
