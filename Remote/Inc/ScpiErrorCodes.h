#pragma once

namespace ZoVelkor
{

// SCPI error numbers that command handlers raise (SCPI-99 vol. 2, 21.8.9 to 21.8.11); the texts are in
// CScpiErrorMap.
inline constexpr short kScpiNoError = 0;
inline constexpr short kScpiCommandError = -100;
inline constexpr short kScpiParameterNotAllowed = -108;
inline constexpr short kScpiMissingParameter = -109;
inline constexpr short kScpiHeaderSuffixOutOfRange = -114;
inline constexpr short kScpiUnexpectedNumberOfParameters = -115;
inline constexpr short kScpiNumericDataNotAllowed = -128;
inline constexpr short kScpiInvalidCharacterData = -141;
inline constexpr short kScpiCharacterDataNotAllowed = -148;
inline constexpr short kScpiStringDataNotAllowed = -158;
inline constexpr short kScpiBlockDataError = -160;
inline constexpr short kScpiBlockDataNotAllowed = -168;
inline constexpr short kScpiExpressionDataNotAllowed = -178;
inline constexpr short kScpiExecutionError = -200;
inline constexpr short kScpiParameterError = -220;
inline constexpr short kScpiSettingsConflict = -221;
inline constexpr short kScpiDataOutOfRange = -222;
inline constexpr short kScpiTooMuchData = -223;
inline constexpr short kScpiIllegalParameterValue = -224;
inline constexpr short kScpiDataQuestionable = -231;

} // namespace ZoVelkor
