#pragma once

namespace ZoVelkor
{

// SCPI error numbers that the platform and its applications raise (SCPI-99 vol. 2, 21.8); the texts are in
// CScpiErrorMap.
inline constexpr short kScpiNoError = 0;
inline constexpr short kScpiCommandError = -100;
inline constexpr short kScpiInvalidCharacter = -101;
inline constexpr short kScpiSyntaxError = -102;
inline constexpr short kScpiInvalidSeparator = -103;
inline constexpr short kScpiGetNotAllowed = -105;
inline constexpr short kScpiParameterNotAllowed = -108;
inline constexpr short kScpiMissingParameter = -109;
inline constexpr short kScpiHeaderSeparatorError = -111;
inline constexpr short kScpiMnemonicTooLong = -112;
inline constexpr short kScpiUndefinedHeader = -113;
inline constexpr short kScpiHeaderSuffixOutOfRange = -114;
inline constexpr short kScpiUnexpectedNumberOfParameters = -115;
inline constexpr short kScpiNumericDataError = -120;
inline constexpr short kScpiInvalidCharacterInNumber = -121;
inline constexpr short kScpiExponentTooLarge = -123;
inline constexpr short kScpiTooManyDigits = -124;
inline constexpr short kScpiNumericDataNotAllowed = -128;
inline constexpr short kScpiInvalidSuffix = -131;
inline constexpr short kScpiSuffixTooLong = -134;
inline constexpr short kScpiSuffixNotAllowed = -138;
inline constexpr short kScpiInvalidCharacterData = -141;
inline constexpr short kScpiCharacterDataTooLong = -144;
inline constexpr short kScpiCharacterDataNotAllowed = -148;
inline constexpr short kScpiInvalidStringData = -151;
inline constexpr short kScpiStringDataNotAllowed = -158;
inline constexpr short kScpiBlockDataError = -160;
inline constexpr short kScpiInvalidBlockData = -161;
inline constexpr short kScpiBlockDataNotAllowed = -168;
inline constexpr short kScpiInvalidExpression = -171;
inline constexpr short kScpiExpressionDataNotAllowed = -178;
inline constexpr short kScpiExecutionError = -200;
inline constexpr short kScpiInvalidWhileLocal = -201;
inline constexpr short kScpiTriggerIgnored = -211;
inline constexpr short kScpiInitIgnored = -213;
inline constexpr short kScpiParameterError = -220;
inline constexpr short kScpiSettingsConflict = -221;
inline constexpr short kScpiDataOutOfRange = -222;
inline constexpr short kScpiTooMuchData = -223;
inline constexpr short kScpiIllegalParameterValue = -224;
inline constexpr short kScpiDataCorruptOrStale = -230;
inline constexpr short kScpiDataQuestionable = -231;
inline constexpr short kScpiHardwareMissing = -241;
inline constexpr short kScpiMediaFull = -254;
inline constexpr short kScpiDirectoryFull = -255;
inline constexpr short kScpiFileNameNotFound = -256;
inline constexpr short kScpiFileNameError = -257;
inline constexpr short kScpiSaveRecallMemoryLost = -314;
inline constexpr short kScpiStorageFault = -320;
inline constexpr short kScpiQueueOverflow = -350;
inline constexpr short kScpiInputBufferOverrun = -363;
inline constexpr short kScpiTimeOutError = -365;
inline constexpr short kScpiQueryInterrupted = -410;
inline constexpr short kScpiQueryUnterminated = -420;
inline constexpr short kScpiQueryDeadlocked = -430;
inline constexpr short kScpiQueryAfterIndefinite = -440;

/// Tells whether an error is of class -1xx: what follows in its message cannot be trusted any more.
constexpr bool IsScpiCommandError(short code) noexcept
{
    return code <= kScpiCommandError && code > kScpiExecutionError;
}

/// Tells whether an error concerns its own command only (class -2xx).
constexpr bool IsScpiExecutionError(short code) noexcept
{
    return code <= kScpiExecutionError && code > -300;
}

} // namespace ZoVelkor
