#pragma once

#include "ZoExport.h"

#include <string>

namespace ZoVelkor
{

/// One SCPI header keyword and its forms: FREQUENCY (long), FREQ (short), FREQuency (syntax).
///
/// The text is kept as given; the forms are made on request. Conversions accept any text, an empty one
/// becomes an empty one; only Check judges. Case changes go byte by byte through the C library. Threads: like
/// a plain value. Standard: SCPI-99 vol. 1, 6.2.1.
class ZO_EXPORT CScpiToken
{
public:
    /// With the empty text.
    CScpiToken() = default;
    /// Takes a keyword in any form and case.
    CScpiToken(const std::string& keyword);
    CScpiToken(const CScpiToken&) = default;
    CScpiToken& operator=(const CScpiToken&) = default;
    virtual ~CScpiToken() = default;

    /// The whole keyword in capitals.
    static std::string ScpiToken2LongForm(const std::string& keyword);
    /// The first four characters in capitals; three when the fourth is a vowel and no digit follows it. A
    /// keyword of up to four characters is its own short form.
    static std::string ScpiToken2ShortForm(const std::string& keyword);
    /// The short form in capitals, the rest in small letters: the form in which command tables keep keywords.
    static std::string ScpiToken2SyntaxForm(const std::string& keyword);
    /// The short form, extended by the digits that begin at the fifth character: TRAC12X gives TRAC12.
    static std::string ScpiToken2NumericShortForm(const std::string& keyword);

    /// ScpiToken2LongForm of the text.
    std::string ToLongForm() const { return ScpiToken2LongForm(m_keyword); }
    /// ScpiToken2ShortForm of the text.
    std::string ToShortForm() const { return ScpiToken2ShortForm(m_keyword); }
    /// ScpiToken2SyntaxForm of the text.
    std::string ToSyntaxForm() const { return ScpiToken2SyntaxForm(m_keyword); }
    /// ScpiToken2NumericShortForm of the text.
    std::string ToNumericShortForm() const { return ScpiToken2NumericShortForm(m_keyword); }

    /// Replaces the text by its syntax form.
    void Normalise() { m_keyword = ToSyntaxForm(); }

    /// Tells what is wrong with the keyword: empty, longer than 12 characters, or not beginning with a
    /// letter.
    ///
    /// Characters after the first are not examined.
    /// @return the message about the first fault; an empty text for an acceptable keyword
    std::string Check() const;

private:
    std::string m_keyword;
};

} // namespace ZoVelkor
