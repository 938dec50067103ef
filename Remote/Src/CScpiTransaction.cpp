#include "CScpiTransaction.h"

#include "ScpiErrorCodes.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace ZoVelkor
{
namespace
{

constexpr std::int32_t kAccepted = 0;
constexpr std::int32_t kAcceptedAsIs = 1;
constexpr std::int32_t kAcceptedWithRemark = 2;

struct ReasonRow
{
    std::int32_t first;
    std::int32_t last;
    short code;
    const wchar_t* text;
};

// clang-format off
constexpr ReasonRow kReasons[] = {
    {0,  0,  kScpiParameterError,   L"wrong parameter state"},
    {1,  2,  kScpiDataQuestionable, L"numeric or unit conversion failed"},
    {5,  5,  kScpiDataOutOfRange,   L"value is not changeable"},
    // Deliberate: controllers must notice that the instrument does not use the value they sent.
    {6,  6,  kScpiDataOutOfRange,   L"value is corrected"},
    {7,  7,  kScpiDataQuestionable, L"numeric calculation error"},
    {8,  9,  kScpiParameterError,   L"invalid object index"},
    {10, 10, kScpiDataOutOfRange,   L"value out of range"},
    {13, 15, kScpiParameterError,   L"invalid object index"},
    {20, 20, kScpiParameterError,   L"access permission"},
    // Deliberate: the value itself is in range; another setting makes the result doubtful.
    {32, 32, kScpiDataQuestionable, L"parameter value corrected by dependency"},
    {33, 33, kScpiDataQuestionable, L"dependency failed"},
};
// clang-format on
constexpr ReasonRow kUnknownReason{0, 0, kScpiParameterError, L"unknown error"};

const ReasonRow* FindReason(std::int32_t reason) noexcept
{
    const auto* const row = std::find_if(std::begin(kReasons), std::end(kReasons), [=](const auto& range) {
        return range.first <= reason && reason <= range.last;
    });
    return row != std::end(kReasons) ? row : nullptr;
}

/// The row of the error; null for no error.
const ReasonRow* FindError(const Acceptance& acceptance) noexcept
{
    if (acceptance.iState == kAccepted || acceptance.iState == kAcceptedAsIs)
    {
        return nullptr;
    }
    const ReasonRow* const row = FindReason(acceptance.iReason);
    const bool harmlessRemark = acceptance.iState == kAcceptedWithRemark && acceptance.iReason >= 0;
    return row != nullptr || harmlessRemark ? row : &kUnknownReason;
}

} // namespace

void CScpiTransaction::GetScpiErrorFromAcceptance(const Acceptance* acceptance, long& code, CComBSTR& text)
{
    const ReasonRow* const error = acceptance != nullptr ? FindError(*acceptance) : nullptr;
    code = error != nullptr ? error->code : kScpiNoError;
    text = error != nullptr ? error->text : L"";
}

} // namespace ZoVelkor
