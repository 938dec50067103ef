#pragma once

#include "CArrayAccessor.h"
#include "ZoExport.h"
#include "ZoString.h"

#include <QString>
#include <QStringList>

// Conversions between CZoString and the strings of the user interface. They are the only part of the public
// headers that needs Qt; include this one where Qt Core is at hand.
//
// Text crosses as 8-bit text: a character that code page 0 cannot hold becomes '?', and a text ends at its
// first zero. Each byte is one QChar of the same value, so U+20AC arrives as U+0080 and returns as U+20AC.
// Null stays null and empty stays empty in both directions.

namespace ZoVelkor
{

/// The text for the user interface.
ZO_EXPORT QString ToQString(const CZoString& text);
/// The text for the components; a character above U+00FF becomes '?'.
ZO_EXPORT CZoString ToZoString(const QString& text);
/// ToQString with the target in front.
ZO_EXPORT void ZOZoString2QString(QString& dest, const CZoString& source);
/// ToZoString with the target in front.
ZO_EXPORT void ZOQString2ZoString(CZoString& dest, const QString& source);

/// Element by element, in order.
ZO_EXPORT QStringList ToQStringList(const CArrayAccessor<CZoString>& list);
/// Element by element, in order.
ZO_EXPORT CArrayAccessor<CZoString> ToZoStringList(const QStringList& list);
/// ToQStringList with the target in front; what it held is replaced.
ZO_EXPORT void ZOStringListConv(QStringList& dest, const CArrayAccessor<CZoString>& source);
/// ToZoStringList with the target in front; what it held is replaced.
ZO_EXPORT void ZOStringListConv(CArrayAccessor<CZoString>& dest, const QStringList& source);

} // namespace ZoVelkor
