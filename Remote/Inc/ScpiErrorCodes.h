#pragma once

namespace ZoVelkor
{

/// SCPI error numbers that command handlers raise (SCPI-99 vol. 2, 21.8.9 to 21.8.11); the texts are in
/// CScpiErrorMap.
enum tagScpiErrorCode : short
{
    kScpiNoError = 0,
    kScpiCommandError = -100,
    kScpiParameterNotAllowed = -108,
    kScpiMissingParameter = -109,
    kScpiHeaderSuffixOutOfRange = -114,
    kScpiUnexpectedNumberOfParameters = -115,
    kScpiNumericDataNotAllowed = -128,
    kScpiInvalidCharacterData = -141,
    kScpiCharacterDataNotAllowed = -148,
    kScpiStringDataNotAllowed = -158,
    kScpiBlockDataError = -160,
    kScpiBlockDataNotAllowed = -168,
    kScpiExpressionDataNotAllowed = -178,
    kScpiExecutionError = -200,
    kScpiParameterError = -220,
    kScpiSettingsConflict = -221,
    kScpiDataOutOfRange = -222,
    kScpiTooMuchData = -223,
    kScpiIllegalParameterValue = -224,
    kScpiDataQuestionable = -231
};

} // namespace ZoVelkor
