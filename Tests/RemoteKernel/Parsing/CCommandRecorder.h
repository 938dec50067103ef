#pragma once

#include "IZOScpiBlockData.h"
#include "Parsing/ICommandExecutor.h"

#include <fmt/format.h>

#include <cstdlib>
#include <string>

namespace ZoVelkor::RemoteKernel::Testing
{

/// Writes down what the parser does: "5 [2,1] num'10 HZ'u1; !-113 SENS:FOO".
///
/// A command is its handler index, '?' for the query form, the suffixes, and for each parameter its kind, its
/// text, the special code and the unit.
class CCommandRecorder final : public ICommandExecutor
{
public:
    bool ExecuteCommand(const ParsedCommand& command) override
    {
        std::string line = fmt::format("{}{}", command.command, command.query ? "?" : "");
        for (unsigned long i = 0; i < command.numericSuffixCount; ++i)
        {
            line += fmt::format("{}{}", i == 0 ? " [" : ",", command.numericSuffixes[i]);
            command.numericSuffixes[i] = 99; // a handler may do so without harm
        }
        line += command.numericSuffixCount == 0 ? "" : "]";
        for (unsigned long i = 0; i < command.argumentCount; ++i)
        {
            line += Describe(command.arguments[i]);
        }
        Append(line);
        return !m_stop;
    }

    void ReportError(short code, std::string_view detail) override
    {
        Append(fmt::format("!{}", code));
        m_detail = detail;
    }

    std::string m_log;
    std::string m_detail;
    bool m_stop = false;

private:
    static std::string Describe(const tagZO_SCPI_PARAMETER& parameter)
    {
        constexpr const char* kKinds[] = {"?", "none", "num", "char", "str", "block", "expr", "word"};
        std::string text = fmt::format(" {}", kKinds[parameter.iType]);
        if (parameter.iType == ZO_SCPI_PARAMTYPE_BLOCK)
        {
            unsigned char* data = nullptr;
            unsigned long length = 0;
            parameter.pBlockData->Access(&data, &length);
            return text + fmt::format("({}){}",
                                      parameter.iBlockLength,
                                      std::string(reinterpret_cast<const char*>(data), length));
        }
        if (parameter.iType != ZO_SCPI_PARAMTYPE_NOVALUE)
        {
            text += fmt::format("'{}'", std::string(parameter.szText, parameter.iTextLength));
        }
        text += parameter.szText[parameter.iTextLength] == '\0' ? "" : " UNTERMINATED";
        text += parameter.iSpecialCode == 0 ? "" : fmt::format("s{}", parameter.iSpecialCode);
        text += parameter.iNoSuffix != 0 ? "" : fmt::format("u{}", parameter.iUnit);
        text += parameter.iUnit == parameter.iUnitSuffix ? "" : " UNITS DIFFER";
        return text;
    }

    void Append(const std::string& line) { m_log += (m_log.empty() ? "" : "; ") + line; }
};

} // namespace ZoVelkor::RemoteKernel::Testing
