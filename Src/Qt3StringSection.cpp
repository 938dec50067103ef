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

bool HasFlag(int flags, SectionFlag flag)
{
    return (flags & flag) != 0;
}

/// A section that grows field by field; null until it has text.
class CSectionText
{
public:
    CSectionText(const QString& separator, int flags) : m_separator(separator), m_flags(flags) {}

    void Add(const QString& field, bool isFirstOfText, bool isStart)
    {
        if (field.isEmpty())
        {
            // Separators of empty fields appear only when a field with text follows.
            ++m_pending;
            return;
        }
        m_text += m_separator.repeated(SeparatorsBefore(isFirstOfText, isStart)) + field;
        m_text += HasFlag(m_flags, kIncludeTrailingSeparator) ? m_separator : QString();
        m_pending = 0;
    }

    const QString& Text() const { return m_text; }

private:
    qsizetype SeparatorsBefore(bool isFirstOfText, bool isStart) const
    {
        const bool isLed = HasFlag(m_flags, kIncludeLeadingSeparator) && !isFirstOfText;
        if (m_text.isEmpty())
        {
            const qsizetype leading = isLed && (isStart || HasFlag(m_flags, kSkipEmpty)) ? 1 : 0;
            return leading + (HasFlag(m_flags, kSkipEmpty) ? 0 : m_pending);
        }
        return m_pending + (HasFlag(m_flags, kIncludeTrailingSeparator) ? 0 : 1) + (isLed && isStart ? 1 : 0);
    }

    const QString& m_separator;
    int m_flags;
    QString m_text;
    qsizetype m_pending = 0;
};

/// A field of a text together with the separator in front of it.
struct Piece
{
    qsizetype separatorLength;
    QString text;
};

/// A separator that ends the text opens no further piece.
std::vector<Piece> SplitPieces(const QString& text, const QRegExp& separator)
{
    std::vector<Piece> pieces;
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

/// The separator that the piece behind an index begins with.
QString SeparatorAfter(const std::vector<Piece>& pieces, int index)
{
    const std::size_t next = static_cast<std::size_t>(index) + 1;
    return next < pieces.size() ? pieces[next].text.left(pieces[next].separatorLength) : QString();
}

} // namespace

QString Section(const QString& text, const QString& separator, int start, int end, int flags)
{
    const bool skipEmpty = HasFlag(flags, kSkipEmpty);
    const QStringList fields = SplitFields(text, separator);
    const auto isCounted = [skipEmpty](const QString& field) { return !skipEmpty || !field.isEmpty(); };
    const auto count = static_cast<int>(std::count_if(fields.cbegin(), fields.cend(), isCounted));
    start += start < 0 ? count : 0;
    end += end < 0 ? count : 0;

    CSectionText section(separator, flags);
    int position = 0;
    for (qsizetype i = 0; i < fields.size() && position <= end; ++i)
    {
        if (position >= start)
        {
            section.Add(fields[i], i == 0, position == start);
        }
        position += isCounted(fields[i]) ? 1 : 0;
    }
    return section.Text();
}

QString Section(const QString& text, const QRegExp& separator, int start, int end, int flags)
{
    QRegExp matcher(separator);
    matcher.setCaseSensitivity(HasFlag(flags, kCaseInsensitiveSeparators) ? Qt::CaseInsensitive
                                                                          : Qt::CaseSensitive);
    const std::vector<Piece> pieces = SplitPieces(text, matcher);
    const auto count = static_cast<int>(pieces.size());
    start += start < 0 ? count : 0;
    end = end == -1 ? count : end + (end < -1 ? count : 0);

    QString result;
    for (int i = 0; i < count; ++i)
    {
        const Piece& piece = pieces[static_cast<std::size_t>(i)];
        if (HasFlag(flags, kSkipEmpty) && piece.separatorLength == piece.text.size())
        {
            ++end;
            start += i <= start ? 1 : 0;
        }
        if (i >= start)
        {
            const bool dropsSeparator = i == start && !HasFlag(flags, kIncludeLeadingSeparator);
            result += piece.text.mid(dropsSeparator ? piece.separatorLength : 0);
        }
        if (i == end)
        {
            return result +
                   (HasFlag(flags, kIncludeTrailingSeparator) ? SeparatorAfter(pieces, i) : QString());
        }
    }
    return result;
}

} // namespace ZoVelkor::Qt3String
