#pragma once

namespace ZoVelkor
{

// SCPI error numbers that the platform and its applications raise (SCPI-99 vol. 2, 21.8); the texts are in
// CScpiErrorMap.
inline constexpr short kScpiNoError = 0;                   ///< the queue is empty
inline constexpr short kScpiCommandError = -100;           ///< a message that cannot be understood
inline constexpr short kScpiInvalidCharacter = -101;       ///< a character that no element begins with
inline constexpr short kScpiSyntaxError = -102;            ///< an element that SCPI does not know here
inline constexpr short kScpiInvalidSeparator = -103;       ///< something else than the expected separator
inline constexpr short kScpiGetNotAllowed = -105;          ///< a group execute trigger inside a message
inline constexpr short kScpiParameterNotAllowed = -108;    ///< a parameter where the command takes none
inline constexpr short kScpiMissingParameter = -109;       ///< fewer parameters than the command needs
inline constexpr short kScpiHeaderSeparatorError = -111;   ///< no separator behind the header
inline constexpr short kScpiMnemonicTooLong = -112;        ///< more than 12 characters in a mnemonic
inline constexpr short kScpiUndefinedHeader = -113;        ///< no command with this header
inline constexpr short kScpiHeaderSuffixOutOfRange = -114; ///< a numeric suffix that the node does not take
inline constexpr short kScpiUnexpectedNumberOfParameters = -115; ///< more parameters than the command takes
inline constexpr short kScpiNumericDataError = -120;             ///< a number that is none
inline constexpr short kScpiInvalidCharacterInNumber = -121;     ///< a digit that the base does not have
inline constexpr short kScpiExponentTooLarge = -123;             ///< an exponent beyond 32000 in magnitude
inline constexpr short kScpiTooManyDigits = -124;            ///< more than 255 digits, leading zeros aside
inline constexpr short kScpiNumericDataNotAllowed = -128;    ///< a number where another type is wanted
inline constexpr short kScpiInvalidSuffix = -131;            ///< a unit that the parameter does not take
inline constexpr short kScpiSuffixTooLong = -134;            ///< more than 12 characters in a unit
inline constexpr short kScpiSuffixNotAllowed = -138;         ///< a unit behind a number that takes none
inline constexpr short kScpiInvalidCharacterData = -141;     ///< a word that the parameter does not take
inline constexpr short kScpiCharacterDataTooLong = -144;     ///< more than 12 characters in a word
inline constexpr short kScpiCharacterDataNotAllowed = -148;  ///< a word where another type is wanted
inline constexpr short kScpiInvalidStringData = -151;        ///< a string without its end
inline constexpr short kScpiStringDataNotAllowed = -158;     ///< a string where another type is wanted
inline constexpr short kScpiBlockDataError = -160;           ///< a block whose contents do not fit
inline constexpr short kScpiInvalidBlockData = -161;         ///< a block whose header or length is wrong
inline constexpr short kScpiBlockDataNotAllowed = -168;      ///< a block where another type is wanted
inline constexpr short kScpiInvalidExpression = -171;        ///< parentheses that do not match
inline constexpr short kScpiExpressionDataNotAllowed = -178; ///< an expression where another type is wanted
inline constexpr short kScpiExecutionError = -200;    ///< the command failed for a reason of the instrument
inline constexpr short kScpiInvalidWhileLocal = -201; ///< the command needs the remote state
inline constexpr short kScpiTriggerIgnored = -211;    ///< a trigger that nobody took
inline constexpr short kScpiInitIgnored = -213;       ///< a measurement was running already
inline constexpr short kScpiParameterError = -220;    ///< a parameter that was rejected for no reason below
inline constexpr short kScpiSettingsConflict = -221;  ///< it does not go with the other settings
inline constexpr short kScpiDataOutOfRange = -222;    ///< a value outside the limits
inline constexpr short kScpiTooMuchData = -223;       ///< more data than there is room for
inline constexpr short kScpiIllegalParameterValue = -224; ///< a value that is none of the possible ones
inline constexpr short kScpiDataCorruptOrStale = -230;    ///< no valid result to answer
inline constexpr short kScpiDataQuestionable = -231;      ///< accepted, but perhaps not exactly
inline constexpr short kScpiHardwareMissing = -241;       ///< an option is not there
inline constexpr short kScpiMediaFull = -254;             ///< no room on the medium
inline constexpr short kScpiDirectoryFull = -255;         ///< no room for another name
inline constexpr short kScpiFileNameNotFound = -256;      ///< no such file or saved state
inline constexpr short kScpiFileNameError = -257;         ///< a name that cannot be one
inline constexpr short kScpiSaveRecallMemoryLost = -314;  ///< a saved state is lost
inline constexpr short kScpiStorageFault = -320;          ///< a medium failed
inline constexpr short kScpiQueueOverflow = -350;         ///< errors were dropped behind this entry
inline constexpr short kScpiInputBufferOverrun = -363;    ///< a message longer than the input buffer
inline constexpr short kScpiTimeOutError = -365;          ///< the rest of a message did not come in time
inline constexpr short kScpiQueryInterrupted = -410;      ///< a message came before the response was read
inline constexpr short kScpiQueryUnterminated = -420;     ///< a response was read that nobody had asked for
inline constexpr short kScpiQueryDeadlocked = -430;       ///< more response than there is room for
inline constexpr short kScpiQueryAfterIndefinite = -440;  ///< a query behind one with an unlimited response

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
