#include "KeptSettings.h"

#include "ErrorRaising.h"
#include "IZOScpiSubsystemFormat.h"
#include "RemoteDiagnoseControl.h"
#include "Root.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <system_error>

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Instrument/KeptSettings");

struct FormatName
{
    std::string_view word;
    tagEnumFormatDataType type;
};
constexpr FormatName kFormats[] = {
    {"ASC", ZO_FORMAT_ASCII},
    {"REAL", ZO_FORMAT_REAL},
};

struct OrderName
{
    std::string_view word;
    tagEnumFormatByteOrder order;
};
constexpr OrderName kOrders[] = {
    {"NORM", ZO_BYTE_ORDER_NORMAL},
    {"SWAP", ZO_BYTE_ORDER_SWAPPED},
};

/// @param text  as FORMat[:DATA]? answers, for example REAL,32
HRESULT PutDataFormat(IZOScpiSubsystemFormat& format, std::string_view text)
{
    const std::string_view word = text.substr(0, text.find(','));
    text.remove_prefix(std::min(text.size(), word.size() + 1));
    long width = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), width);
    const bool isNumber = fault == std::errc() && end == text.data() + text.size();
    const auto* const row = std::ranges::find(kFormats, word, &FormatName::word);
    return isNumber && row != std::end(kFormats) ? format.put_DataFormat(row->type, width) : E_INVALIDARG;
}

HRESULT PutByteOrder(IZOScpiSubsystemFormat& format, std::string_view text)
{
    const auto* const row = std::ranges::find(kOrders, text, &OrderName::word);
    return row != std::end(kOrders) ? format.put_ByteOrder(row->order) : E_INVALIDARG;
}

} // namespace

RemoteKernel::InstrumentIdentity ReadIdentity(const CInstrumentRegistry& registry)
{
    return {registry.ReadOr(kIdentificationKey, L"Manufacturer", "Zo"),
            registry.ReadOr(kIdentificationKey, L"Model", "Demo Analyser"),
            registry.ReadOr(kIdentificationKey, L"SerialNumber", "0"),
            ZO_DEMO_VERSION};
}

void ApplyDiagnosis(const CInstrumentRegistry& registry)
{
    const std::string words = registry.ReadOr(kDiagnosisKey, L"Switches", "");
    if (!words.empty() && std::getenv("ZO_DIAGNOSE") == nullptr)
    {
        ApplyDiagnoseFlags(*get_RemoteDiagnoseControl(), words, "registry");
    }
}

void ApplyDataFormat(const CInstrumentRegistry& registry)
{
    CComPtr<IZOScpiSubsystemFormat> format;
    if (FAILED(ZoGetRegisteredInterface(&IID_IZOScpiSubsystemFormat, &format)))
    {
        return;
    }
    const HRESULT dataResult = PutDataFormat(*format, registry.ReadOr(kFormatKey, L"Data", "ASC,0"));
    const HRESULT orderResult = PutByteOrder(*format, registry.ReadOr(kFormatKey, L"ByteOrder", "NORM"));
    if (FAILED(dataResult) || FAILED(orderResult))
    {
        RepairError(
            ZO_ERROR(nullptr, "put_DataFormat == S_OK", "The registry's data format is none", E_INVALIDARG));
    }
}

} // namespace ZoVelkor::Demo
