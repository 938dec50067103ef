#include "ZoStringQt.h"

#include "NarrowText.h"

namespace ZoVelkor
{

QString ToQString(const CZoString& text)
{
    if (text.IsNull())
    {
        return {};
    }
    // Deliberate: narrowed although QString could hold it all; a text has the same characters in dialogs and
    // in 8-bit files.
    return WithNarrowText(text, [](const char* narrow) { return QString::fromLatin1(narrow); });
}

CZoString ToZoString(const QString& text)
{
    // The 8-bit text of a null string is a null pointer, that of an empty one is not.
    return text.isNull() ? CZoString() : CZoString(text.toLatin1().constData());
}

void ZOZoString2QString(QString& dest, const CZoString& source)
{
    dest = ToQString(source);
}

void ZOQString2ZoString(CZoString& dest, const QString& source)
{
    dest = ToZoString(source);
}

QStringList ToQStringList(const CArrayAccessor<CZoString>& list)
{
    QStringList result;
    result.reserve(static_cast<qsizetype>(list.GetSize()));
    for (const CZoString& text : list)
    {
        result.append(ToQString(text));
    }
    return result;
}

CArrayAccessor<CZoString> ToZoStringList(const QStringList& list)
{
    CArrayAccessor<CZoString> result;
    for (const QString& text : list)
    {
        result.Append(ToZoString(text));
    }
    return result;
}

void ZOStringListConv(QStringList& dest, const CArrayAccessor<CZoString>& source)
{
    dest = ToQStringList(source);
}

void ZOStringListConv(CArrayAccessor<CZoString>& dest, const QStringList& source)
{
    dest = ToZoStringList(source);
}

} // namespace ZoVelkor
