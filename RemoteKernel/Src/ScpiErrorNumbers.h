#pragma once

namespace ZoVelkor::RemoteKernel
{

// Numbers of the errors that parsing raises (SCPI-99 vol. 2, 21.8); their texts stand in the error map.
inline constexpr short kInvalidCharacter = -101;
inline constexpr short kSyntaxError = -102;
inline constexpr short kInvalidSeparator = -103;
inline constexpr short kParameterNotAllowed = -108;
inline constexpr short kMissingParameter = -109;
inline constexpr short kHeaderSeparatorError = -111;
inline constexpr short kMnemonicTooLong = -112;
inline constexpr short kUndefinedHeader = -113;
inline constexpr short kHeaderSuffixOutOfRange = -114;
inline constexpr short kNumericDataError = -120;
inline constexpr short kInvalidCharacterInNumber = -121;
inline constexpr short kExponentTooLarge = -123;
inline constexpr short kTooManyDigits = -124;
inline constexpr short kNumericDataNotAllowed = -128;
inline constexpr short kInvalidSuffix = -131;
inline constexpr short kSuffixTooLong = -134;
inline constexpr short kSuffixNotAllowed = -138;
inline constexpr short kInvalidCharacterData = -141;
inline constexpr short kCharacterDataTooLong = -144;
inline constexpr short kCharacterDataNotAllowed = -148;
inline constexpr short kInvalidStringData = -151;
inline constexpr short kStringDataNotAllowed = -158;
inline constexpr short kInvalidBlockData = -161;
inline constexpr short kBlockDataNotAllowed = -168;
inline constexpr short kInvalidExpression = -171;
inline constexpr short kExpressionDataNotAllowed = -178;
inline constexpr short kDataOutOfRange = -222;
inline constexpr short kTooMuchData = -223;
inline constexpr short kInputBufferOverrun = -363;

/// Tells whether an error leaves the structure of the message intact (execution errors, class -2xx).
constexpr bool IsExecutionError(short code) noexcept
{
    return code <= -200 && code > -300;
}

} // namespace ZoVelkor::RemoteKernel
