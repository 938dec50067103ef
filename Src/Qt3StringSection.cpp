#include "Qt3String.h"

#include <QStringList>

#include <algorithm>
#include <vector>

namespace ZoVelkor::Qt3String
{

namespace
{

/// The fields between separators, empty ones included; without separator each character is one.
QStringList SplitFields(const QString& text, const QString& separator)
{
    return text.isEmpty() ? QStringList(QString()) : text.split(separator);
}

/// A field of a text together with the separator in front of it.
struct tagPiece
{
    qsizetype separatorLength;
    QString text;
};

/// A separator that ends the text opens no further piece.
std::vector<tagPiece> SplitPieces(const QString& text, const QRegExp& separator)
{
    std::vector<tagPiece> pieces;
    qsizetype begin = 0;
    qsizetype separatorLength = 0;
    int match = 0;
    while ((match = separator.indexIn(text, match)) >= 0)
    {
        pieces.push_back({separatorLength, text.mid(begin, match - begin)});
        begin = match;
        separatorLength = separator.matchedLength();
        match += std::max(separator.matchedLength(), 1);
        if (match >= text.size())
        {
            return pieces;
        }
    }
    pieces.push_back({separatorLength, text.mid(begin)});
    return pieces;
}

} // namespace

QString Section(const QString& text, const QString& separator, int start, int end, int flags)
{
    const bool skipEmpty = (flags & kSkipEmpty) != 0;
    const bool withLeading = (flags & kIncludeLeadingSeparator) != 0;
    const bool withTrailing = (flags & kIncludeTrailingSeparator) != 0;
    const QStringList fields = SplitFields(text, separator);
    const auto count =
        static_cast<int>(std::count_if(fields.cbegin(), fields.cend(), [skipEmpty](const QString& field) {
            return !skipEmpty || !field.isEmpty();
        }));
    start += start < 0 ? count : 0;
    end += end < 0 ? count : 0;

    QString result;
    int position = 0;
    qsizetype pending = 0;
    for (qsizetype i = 0; i < fields.size() && position <= end; ++i)
    {
        const QString& field = fields[i];
        if (position >= start && field.isEmpty())
        {
            ++pending;
        }
        else if (position >= start)
        {
            qsizetype separators = withLeading && i > 0 ? 1 : 0;
            if (!result.isEmpty() || !skipEmpty)
            {
                separators = pending + (!result.isEmpty() && !withTrailing ? 1 : 0) +
                             (separators != 0 && position == start ? 1 : 0);
            }
            result += separator.repeated(separators) + field;
            result += withTrailing ? separator : QString();
            pending = 0;
        }
        position += skipEmpty && field.isEmpty() ? 0 : 1;
    }
    return result;
}

QString Section(const QString& text, const QRegExp& separator, int start, int end, int flags)
{
    QRegExp matcher(separator);
    matcher.setCaseSensitivity((flags & kCaseInsensitiveSeparators) != 0 ? Qt::CaseInsensitive
                                                                         : Qt::CaseSensitive);
    const std::vector<tagPiece> pieces = SplitPieces(text, matcher);
    const auto count = static_cast<int>(pieces.size());
    start += start < 0 ? count : 0;
    end = end == -1 ? count : end + (end < -1 ? count : 0);

    QString result;
    for (int i = 0; i < count; ++i)
    {
        const tagPiece& piece = pieces[static_cast<std::size_t>(i)];
        if ((flags & kSkipEmpty) != 0 && piece.separatorLength == piece.text.size())
        {
            ++end;
            start += i <= start ? 1 : 0;
        }
        if (i == start)
        {
            result =
                (flags & kIncludeLeadingSeparator) != 0 ? piece.text : piece.text.mid(piece.separatorLength);
        }
        else if (i > start)
        {
            result += piece.text;
        }
        if (i == end)
        {
            if ((flags & kIncludeTrailingSeparator) != 0 && i + 1 < count)
            {
                const tagPiece& next = pieces[static_cast<std::size_t>(i) + 1];
                result += next.text.left(next.separatorLength);
            }
            break;
        }
    }
    return result;
}

} // namespace ZoVelkor::Qt3String
