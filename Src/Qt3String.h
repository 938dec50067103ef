#pragma once

#include <QRegExp>
#include <QString>

#include <cstdint>
#include <optional>
#include <span>

/// Text operations with the behaviour of Qt 3.3 on the strings of Qt 6.
///
/// Each function stands for the QString member of the same name; what is said here is where Qt 6 differs or
/// where Qt 3 left the result open. Texts hold Latin-1 characters. Null and empty texts are different states.
/// Indexes, lengths and widths of searches are signed, all others unsigned 32-bit numbers.
namespace ZoVelkor::Qt3String
{

/// Flags of the Section functions.
enum SectionFlag : int
{
    kSkipEmpty = 1,
    kIncludeLeadingSeparator = 2,
    kIncludeTrailingSeparator = 4,
    kCaseInsensitiveSeparators = 8 ///< heeded for regular expressions only
};

/// A regular expression: leftmost-longest matching, `.` matches a newline, `^` only at position 0.
///
/// Repetitions {m,n} with m > n have their bounds swapped. In wildcard mode a backslash is an ordinary
/// character and `!` does not negate a set. An invalid pattern never matches.
QRegExp MakeRegExp(const QString& pattern, bool caseSensitive, bool wildcard);

/// Position, or -1; an index still negative after adding the length finds nothing.
int Find(const QString& text, const QString& needle, int index, bool caseSensitive);
int Find(const QString& text, QChar needle, int index, bool caseSensitive);
int Find(const QString& text, const QRegExp& needle, int index);
/// Position, or -1, also when the index is beyond the end (for a character: at the end).
int FindRev(const QString& text, const QString& needle, int index, bool caseSensitive);
int FindRev(const QString& text, QChar needle, int index, bool caseSensitive);
int FindRev(const QString& text, const QRegExp& needle, int index);
/// Number of hits, overlapping ones included; an empty needle hits length + 1 times, but never in a null
/// text.
int Contains(const QString& text, const QString& needle, bool caseSensitive);
int Contains(const QString& text, QChar needle, bool caseSensitive);
int Contains(const QString& text, const QRegExp& needle);
bool StartsWith(const QString& text, const QString& start, bool caseSensitive);
bool EndsWith(const QString& text, const QString& end, bool caseSensitive);

/// Null for an empty text.
QString Left(const QString& text, std::uint32_t length);
QString Right(const QString& text, std::uint32_t length);
/// Null for an empty text and for an index at or beyond the end.
QString Mid(const QString& text, std::uint32_t index, std::uint32_t length);
/// Widths of 2^31 and more do not pad.
QString LeftJustify(const QString& text, std::uint32_t width, QChar fill, bool truncate);
QString RightJustify(const QString& text, std::uint32_t width, QChar fill, bool truncate);
/// White space: 9 to 13, 32 and 0xA0, but not 0x85.
QString StripWhiteSpace(const QString& text);
QString SimplifyWhiteSpace(const QString& text);

/// Null when the section has no text; empty fields at its end leave no separators.
QString Section(const QString& text, const QString& separator, int start, int end, int flags);
QString Section(const QString& text, const QRegExp& separator, int start, int end, int flags);

/// An index beyond the end pads with blanks, from 2^31 on it appends; an empty insertion changes nothing.
QString Insert(const QString& text, std::uint32_t index, const QString& insertion);
/// An index beyond the end appends; the result is never null.
QString Replace(const QString& text, std::uint32_t index, std::uint32_t length, const QString& after);
QString Replace(const QString& text, const QString& before, const QString& after, bool caseSensitive);
QString Replace(const QString& text, const QRegExp& before, const QString& after);
/// A negative length keeps the length of the text.
QString Fill(const QString& text, QChar fill, int length);

/// Text of an integer; a negative one in another base than 10 appears as its 64-bit two's complement. A base
/// outside 2 to 36 counts as 10, with a warning.
QString Number(std::int64_t value, int base);
QString Number(std::uint64_t value, int base);
/// Text of a number, rounded half to even; no sign of zero or nan; format e, f, g or their capitals, any
/// other as f; a negative precision counts as 6.
QString Number(double value, char format, int precision);

/// Replaces the first occurrence of the lowest placeholder %0 to %9 by a value; a positive width pads it on
/// the left, a negative one on the right. %L1 groups the digits of numbers by commas.
QString Arg(const QString& text, const QString& value, int fieldWidth);
QString Arg(const QString& text, std::int64_t value, int fieldWidth, int base);
QString Arg(const QString& text, std::uint64_t value, int fieldWidth, int base);
QString Arg(const QString& text, double value, int fieldWidth, char format, int precision);
/// Replaces all placeholders in one pass: the lowest digit present takes the first value, and so on. Digits
/// beyond the values stay, as does %L1. Null for an empty text.
QString ArgMulti(const QString& text, std::span<const QString> values);

/// Integer of a text, white space around it ignored; base 0 goes by the prefix 0x or 0, base 16 allows 0x.
///
/// @return nothing when the text is no number, or one outside [minimum, maximum]
std::optional<std::int64_t>
ToSigned(const QString& text, int base, std::int64_t minimum, std::int64_t maximum);
/// As ToSigned, but a minus sign is refused, even before 0.
std::optional<std::uint64_t> ToUnsigned(const QString& text, int base, std::uint64_t maximum);
/// Number of a text; white space behind it leaves the value, but clears ok. 0 when out of range.
double ToDouble(const QString& text, bool* ok);
/// As ToDouble with the range of float; not ok always gives 0, too small a value gives 0 and ok.
float ToFloat(const QString& text, bool* ok);

} // namespace ZoVelkor::Qt3String
