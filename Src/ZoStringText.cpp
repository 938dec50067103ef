#include "Qt3String.h"
#include "ZoString.h"
#include "ZoStringQt.h"

#include <QString>

namespace ZoVelkor
{

namespace
{

QChar ToQChar(char character)
{
    return QLatin1Char(character);
}

} // namespace

int CZoString::Find(const CZoString& text, int index, bool cs) const
{
    return Qt3String::Find(ToQString(*this), ToQString(text), index, cs);
}

int CZoString::Find(char character, int index, bool cs) const
{
    return Qt3String::Find(ToQString(*this), ToQChar(character), index, cs);
}

int CZoString::Find(const char* text, int index) const
{
    // Deliberate: there is no case-insensitive search for a literal, callers pass a CZoString for that.
    return Qt3String::Find(ToQString(*this), QString::fromLatin1(text), index, true);
}

int CZoString::FindRev(const CZoString& text, int index, bool cs) const
{
    return Qt3String::FindRev(ToQString(*this), ToQString(text), index, cs);
}

int CZoString::FindRev(char character, int index, bool cs) const
{
    return Qt3String::FindRev(ToQString(*this), ToQChar(character), index, cs);
}

int CZoString::FindRev(const char* text, int index) const
{
    // Deliberate: always case sensitive, as Find of a literal.
    return Qt3String::FindRev(ToQString(*this), QString::fromLatin1(text), index, true);
}

int CZoString::FindByRegExp(const CZoString& pattern, bool cs, bool wildcard, int index) const
{
    return Qt3String::Find(ToQString(*this), Qt3String::MakeRegExp(ToQString(pattern), cs, wildcard), index);
}

int CZoString::FindRevByRegExp(const CZoString& pattern, bool cs, bool wildcard, int index) const
{
    return Qt3String::FindRev(
        ToQString(*this), Qt3String::MakeRegExp(ToQString(pattern), cs, wildcard), index);
}

int CZoString::Contains(const CZoString& text, bool cs) const
{
    return Qt3String::Contains(ToQString(*this), ToQString(text), cs);
}

int CZoString::Contains(const char* text, bool cs) const
{
    return Qt3String::Contains(ToQString(*this), QString::fromLatin1(text), cs);
}

int CZoString::Contains(char character, bool cs) const
{
    return Qt3String::Contains(ToQString(*this), ToQChar(character), cs);
}

int CZoString::ContainsByRegExp(const CZoString& pattern, bool cs, bool wildcard) const
{
    return Qt3String::Contains(ToQString(*this), Qt3String::MakeRegExp(ToQString(pattern), cs, wildcard));
}

bool CZoString::StartsWith(const CZoString& text, bool cs) const
{
    return Qt3String::StartsWith(ToQString(*this), ToQString(text), cs);
}

bool CZoString::EndsWith(const CZoString& text, bool cs) const
{
    return Qt3String::EndsWith(ToQString(*this), ToQString(text), cs);
}

CZoString CZoString::Left(unsigned length) const
{
    return ToZoString(Qt3String::Left(ToQString(*this), length));
}

CZoString CZoString::Right(unsigned length) const
{
    return ToZoString(Qt3String::Right(ToQString(*this), length));
}

CZoString CZoString::Mid(unsigned index, unsigned length) const
{
    return ToZoString(Qt3String::Mid(ToQString(*this), index, length));
}

CZoString CZoString::LeftJustify(unsigned width, char fill, bool truncate) const
{
    return ToZoString(Qt3String::LeftJustify(ToQString(*this), width, ToQChar(fill), truncate));
}

CZoString CZoString::RightJustify(unsigned width, char fill, bool truncate) const
{
    return ToZoString(Qt3String::RightJustify(ToQString(*this), width, ToQChar(fill), truncate));
}

CZoString CZoString::StripWhiteSpace() const
{
    return ToZoString(Qt3String::StripWhiteSpace(ToQString(*this)));
}

CZoString CZoString::SimplifyWhiteSpace() const
{
    return ToZoString(Qt3String::SimplifyWhiteSpace(ToQString(*this)));
}

CZoString CZoString::Section(const CZoString& separator, int start, int end, int flags) const
{
    return ToZoString(Qt3String::Section(ToQString(*this), ToQString(separator), start, end, flags));
}

CZoString CZoString::Section(char separator, int start, int end, int flags) const
{
    return ToZoString(Qt3String::Section(ToQString(*this), QString(ToQChar(separator)), start, end, flags));
}

CZoString& CZoString::Replace(const CZoString& before, const CZoString& after, bool cs)
{
    return *this = ToZoString(Qt3String::Replace(ToQString(*this), ToQString(before), ToQString(after), cs));
}

CZoString& CZoString::Replace(unsigned index, unsigned length, const CZoString& after)
{
    return *this = ToZoString(Qt3String::Replace(ToQString(*this), index, length, ToQString(after)));
}

CZoString& CZoString::Insert(unsigned index, const CZoString& text)
{
    return *this = ToZoString(Qt3String::Insert(ToQString(*this), index, ToQString(text)));
}

CZoString& CZoString::Fill(char character, int length)
{
    return *this = ToZoString(Qt3String::Fill(ToQString(*this), ToQChar(character), length));
}

CZoString& CZoString::Prepend(const CZoString& text)
{
    return Insert(0, text);
}

CZoString& CZoString::Prepend(const CComBSTR& text)
{
    return Insert(0, text);
}

CZoString& CZoString::Prepend(const wchar_t* text)
{
    return Insert(0, text);
}

CZoString& CZoString::Prepend(const char* text)
{
    return Insert(0, text);
}

CZoString& CZoString::Prepend(char character)
{
    return Insert(0, character);
}

CZoString& CZoString::PrependBSTR(const wchar_t* text)
{
    return Insert(0, text);
}

} // namespace ZoVelkor
