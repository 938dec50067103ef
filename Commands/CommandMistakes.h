#pragma once

#include <stdexcept>

namespace ZoVelkor::Commands
{

// Mistakes in declarations. None of these functions is constexpr: a declaration that is evaluated by the
// compiler stops at the call, and the compiler's first lines name the function and, above it, the pattern.

/// Makes one mistake's function.
#define ZO_COMMAND_MISTAKE(name)                                                                             \
    [[noreturn]] inline void name()                                                                          \
    {                                                                                                        \
        throw std::logic_error(#name);                                                                       \
    }

ZO_COMMAND_MISTAKE(KeywordMustBeginWithACapital)
ZO_COMMAND_MISTAKE(KeywordIsLongerThanTwelveCharacters)
ZO_COMMAND_MISTAKE(KeywordHasACharacterThatIsNoLetterOrDigit)
ZO_COMMAND_MISTAKE(CapitalsAreNotTheShortFormOfTheKeyword)
ZO_COMMAND_MISTAKE(CommonCommandHasOnlyCapitals)
ZO_COMMAND_MISTAKE(KeywordsMustBeSeparatedByColons)
ZO_COMMAND_MISTAKE(PatternEndsWithoutAKeyword)
ZO_COMMAND_MISTAKE(PatternHasTooManyKeywords)
ZO_COMMAND_MISTAKE(BracketWithoutItsPartner)
ZO_COMMAND_MISTAKE(AlternativesMustStandAtTheEnd)
ZO_COMMAND_MISTAKE(NumericSuffixesMustStandInAngleBrackets)
ZO_COMMAND_MISTAKE(NumericSuffixesAreTooLong)
ZO_COMMAND_MISTAKE(NumericSuffixExpressionIsNone)
ZO_COMMAND_MISTAKE(CommandHasNoHandler)
ZO_COMMAND_MISTAKE(QuestionMarkButNoQuery)
ZO_COMMAND_MISTAKE(QuestionMarkButAlsoASetting)
ZO_COMMAND_MISTAKE(SettingAndQueryHaveDifferentParameters)
ZO_COMMAND_MISTAKE(HandlerDoesNotTakeTheNumericSuffixesOfThePattern)
ZO_COMMAND_MISTAKE(RequiredParameterBehindAnOptionalOne)
ZO_COMMAND_MISTAKE(ParameterBehindARepeatedOne)
ZO_COMMAND_MISTAKE(ParameterNameIsLongerThanFifteenCharacters)
ZO_COMMAND_MISTAKE(UnitIsLongerThanFifteenCharacters)
ZO_COMMAND_MISTAKE(RangeIsEmpty)
ZO_COMMAND_MISTAKE(DefaultIsOutsideTheRange)
ZO_COMMAND_MISTAKE(StepMustBePositive)
ZO_COMMAND_MISTAKE(TwoWordsWithOneShortForm)
ZO_COMMAND_MISTAKE(TwoKeywordsWithOneShortFormOnOneLevel)
ZO_COMMAND_MISTAKE(OneKeywordWithTwoSpellingsOnOneLevel)
ZO_COMMAND_MISTAKE(OneKeywordOptionalAndNot)
ZO_COMMAND_MISTAKE(OneKeywordWithDifferentNumericSuffixes)
ZO_COMMAND_MISTAKE(TwoCommandsWithOneHeader)

#undef ZO_COMMAND_MISTAKE

} // namespace ZoVelkor::Commands
