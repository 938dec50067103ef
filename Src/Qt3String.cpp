#include "Qt3String.h"

#include <QStringList>

#include <algorithm>

namespace ZoVelkor::Qt3String
{

namespace
{

constexpr std::uint32_t kWidthLimit = 0x80000000U;

Qt::CaseSensitivity Sensitivity(bool caseSensitive)
{
    return caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
}

QString EmptyText()
{
    return QLatin1String("");
}

bool IsWhiteSpace(QChar c)
{
    const char16_t code = c.unicode();
    return (code >= 9 && code <= 13) || code == 32 || code == 0xA0;
}

/// Index from the start of the text; what is still negative is outside.
qsizetype FromStart(const QString& text, int index)
{
    return index < 0 ? index + text.size() : index;
}

/// Copies a set `[...]` of a wildcard pattern and moves index to its closing bracket or the pattern's end.
void CopySet(const QString& wildcard, qsizetype& index, QString& pattern)
{
    for (; index < wildcard.size(); ++index)
    {
        const QChar c = wildcard[index];
        pattern += c;
        if (c == QLatin1Char('\\'))
        {
            pattern += c;
        }
        if (c == QLatin1Char(']'))
        {
            return;
        }
    }
}

QString FromWildcard(const QString& wildcard)
{
    QString pattern;
    for (qsizetype i = 0; i < wildcard.size(); ++i)
    {
        const QChar c = wildcard[i];
        if (c == QLatin1Char('*'))
        {
            pattern += QLatin1String(".*");
        }
        else if (c == QLatin1Char('?'))
        {
            pattern += QLatin1Char('.');
        }
        else if (c == QLatin1Char('['))
        {
            CopySet(wildcard, i, pattern);
        }
        else
        {
            if (QLatin1String("$()+.\\^{|}").contains(c))
            {
                pattern += QLatin1Char('\\');
            }
            pattern += c;
        }
    }
    return pattern;
}

/// The repetition `{m,n}` at an index with its bounds in order; an empty text when there is no such thing.
QString OrderedRepetition(const QString& pattern, qsizetype index, qsizetype& length)
{
    const qsizetype comma = pattern.indexOf(QLatin1Char(','), index);
    const qsizetype brace = pattern.indexOf(QLatin1Char('}'), index);
    if (comma < 0 || brace < comma)
    {
        return {};
    }
    bool lowerOk = false;
    bool upperOk = false;
    const uint lower = pattern.mid(index + 1, comma - index - 1).toUInt(&lowerOk);
    const uint upper = pattern.mid(comma + 1, brace - comma - 1).toUInt(&upperOk);
    if (!lowerOk || !upperOk)
    {
        return {};
    }
    length = brace - index + 1;
    const auto [low, high] = std::minmax(lower, upper);
    return QLatin1Char('{') + QString::number(low) + QLatin1Char(',') + QString::number(high) +
           QLatin1Char('}');
}

/// Index of the bracket that ends the set at an index, or of the pattern's end.
qsizetype EndOfSet(const QString& pattern, qsizetype index)
{
    ++index;
    if (index < pattern.size() && pattern[index] == QLatin1Char('^'))
    {
        ++index;
    }
    // A bracket at the first place belongs to the set.
    for (const qsizetype first = index; index < pattern.size(); ++index)
    {
        if (pattern[index] == QLatin1Char('\\'))
        {
            ++index;
        }
        else if (pattern[index] == QLatin1Char(']') && index > first)
        {
            break;
        }
    }
    return std::min(index, pattern.size() - 1);
}

QString WithOrderedRepetitions(const QString& pattern)
{
    QString result;
    for (qsizetype i = 0; i < pattern.size(); ++i)
    {
        qsizetype length = 1;
        QString piece;
        if (pattern[i] == QLatin1Char('\\'))
        {
            length = 2;
        }
        else if (pattern[i] == QLatin1Char('['))
        {
            length = EndOfSet(pattern, i) - i + 1;
        }
        else if (pattern[i] == QLatin1Char('{'))
        {
            piece = OrderedRepetition(pattern, i, length);
        }
        result += piece.isEmpty() ? pattern.mid(i, length) : piece;
        i += length - 1;
    }
    return result;
}

} // namespace

QRegExp MakeRegExp(const QString& pattern, bool caseSensitive, bool wildcard)
{
    return QRegExp(wildcard ? FromWildcard(pattern) : WithOrderedRepetitions(pattern),
                   Sensitivity(caseSensitive),
                   QRegExp::RegExp);
}

int Find(const QString& text, const QString& needle, int index, bool caseSensitive)
{
    const qsizetype from = FromStart(text, index);
    if (from < 0 || from + needle.size() > text.size())
    {
        return -1;
    }
    return static_cast<int>(text.indexOf(needle, from, Sensitivity(caseSensitive)));
}

int Find(const QString& text, QChar needle, int index, bool caseSensitive)
{
    const qsizetype from = FromStart(text, index);
    return from < 0 ? -1 : static_cast<int>(text.indexOf(needle, from, Sensitivity(caseSensitive)));
}

int Find(const QString& text, const QRegExp& needle, int index)
{
    return needle.indexIn(text, index);
}

int FindRev(const QString& text, const QString& needle, int index, bool caseSensitive)
{
    const qsizetype from = FromStart(text, index);
    const qsizetype last = text.size() - needle.size();
    if (from < 0 || from > text.size() || last < 0)
    {
        return -1;
    }
    if (needle.isEmpty())
    {
        return static_cast<int>(from);
    }
    return static_cast<int>(text.lastIndexOf(needle, std::min(from, last), Sensitivity(caseSensitive)));
}

int FindRev(const QString& text, QChar needle, int index, bool caseSensitive)
{
    const qsizetype from = FromStart(text, index);
    if (from < 0 || from >= text.size())
    {
        return -1;
    }
    return static_cast<int>(text.lastIndexOf(needle, from, Sensitivity(caseSensitive)));
}

int FindRev(const QString& text, const QRegExp& needle, int index)
{
    return needle.lastIndexIn(text, index);
}

int Contains(const QString& text, const QString& needle, bool caseSensitive)
{
    return text.isNull() ? 0 : static_cast<int>(text.count(needle, Sensitivity(caseSensitive)));
}

int Contains(const QString& text, QChar needle, bool caseSensitive)
{
    return static_cast<int>(text.count(needle, Sensitivity(caseSensitive)));
}

int Contains(const QString& text, const QRegExp& needle)
{
    return needle.countIn(text);
}

bool StartsWith(const QString& text, const QString& start, bool caseSensitive)
{
    return text.startsWith(start, Sensitivity(caseSensitive));
}

bool EndsWith(const QString& text, const QString& end, bool caseSensitive)
{
    return text.endsWith(end, Sensitivity(caseSensitive));
}

QString Left(const QString& text, std::uint32_t length)
{
    return Mid(text, 0, length);
}

QString Right(const QString& text, std::uint32_t length)
{
    if (text.isEmpty())
    {
        return {};
    }
    return text.right(std::min<qsizetype>(length, text.size()));
}

QString Mid(const QString& text, std::uint32_t index, std::uint32_t length)
{
    // Null and not empty behind the end, as Qt 3 had it.
    if (static_cast<qsizetype>(index) >= text.size())
    {
        return {};
    }
    return text.mid(index, std::min<qsizetype>(length, text.size() - index));
}

QString LeftJustify(const QString& text, std::uint32_t width, QChar fill, bool truncate)
{
    if (width < kWidthLimit && text.size() < static_cast<qsizetype>(width))
    {
        return text.leftJustified(width, fill);
    }
    return truncate ? Left(text, width) : text;
}

QString RightJustify(const QString& text, std::uint32_t width, QChar fill, bool truncate)
{
    if (width < kWidthLimit && text.size() < static_cast<qsizetype>(width))
    {
        return text.rightJustified(width, fill);
    }
    return truncate ? Left(text, width) : text;
}

QString StripWhiteSpace(const QString& text)
{
    const QChar* first = std::find_if_not(text.cbegin(), text.cend(), IsWhiteSpace);
    const QChar* last = text.cend();
    while (last != first && IsWhiteSpace(*(last - 1)))
    {
        --last;
    }
    return text.mid(first - text.cbegin(), last - first);
}

QString SimplifyWhiteSpace(const QString& text)
{
    QString result = text.isNull() ? QString() : EmptyText();
    bool pending = false;
    for (const QChar c : text)
    {
        if (IsWhiteSpace(c))
        {
            pending = !result.isEmpty();
            continue;
        }
        if (pending)
        {
            result += QLatin1Char(' ');
            pending = false;
        }
        result += c;
    }
    return result;
}

QString Insert(const QString& text, std::uint32_t index, const QString& insertion)
{
    if (insertion.isEmpty())
    {
        return text;
    }
    QString result = text;
    result.insert(index < kWidthLimit ? static_cast<qsizetype>(index) : text.size(), insertion);
    return result;
}

QString Replace(const QString& text, std::uint32_t index, std::uint32_t length, const QString& after)
{
    const qsizetype from = std::min<qsizetype>(index, text.size());
    QString result = text.isNull() ? EmptyText() : text;
    result.replace(from, std::min<qsizetype>(length, text.size() - from), after);
    return result;
}

QString Replace(const QString& text, const QString& before, const QString& after, bool caseSensitive)
{
    // Qt 6 leaves a null string null here; Qt 3 made it empty.
    if (text.isNull() && before.isEmpty() && after.isEmpty())
    {
        return EmptyText();
    }
    QString result = text;
    result.replace(before, after, Sensitivity(caseSensitive));
    return result;
}

QString Replace(const QString& text, const QRegExp& before, const QString& after)
{
    return before.replaceIn(text, after);
}

QString Fill(const QString& text, QChar fill, int length)
{
    QString result = text;
    result.fill(fill, length);
    return result;
}

} // namespace ZoVelkor::Qt3String
