#include "CScpiErrorMap.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace ZoVelkor
{

namespace
{

struct ErrorRow
{
    short code;
    const char* text;
};

// Deliberate: the text of -115 lacks its plural; instruments have always answered it so.
constexpr ErrorRow kErrorRows[] = {
    {0, "No error"},
    {-100, "Command error"},
    {-101, "Invalid character"},
    {-102, "Syntax error"},
    {-103, "Invalid separator"},
    {-104, "Data type error"},
    {-105, "Get not allowed"},
    {-108, "Parameter not allowed"},
    {-109, "Missing parameter"},
    {-110, "Command header error"},
    {-111, "Header separator error"},
    {-112, "Program mnemonic too long"},
    {-113, "Undefined header"},
    {-114, "Header suffix out of range"},
    {-115, "Unexpected number of parameter"},
    {-120, "Numeric data error"},
    {-121, "Invalid character in number"},
    {-123, "Exponent too large"},
    {-124, "Too many digits"},
    {-128, "Numeric data not allowed"},
    {-130, "Suffix error"},
    {-131, "Invalid suffix"},
    {-134, "Suffix too long"},
    {-138, "Suffix not allowed"},
    {-140, "Character data error"},
    {-141, "Invalid character data"},
    {-144, "Character data too long"},
    {-148, "Character data not allowed"},
    {-150, "String data error"},
    {-151, "Invalid string data"},
    {-158, "String data not allowed"},
    {-160, "Block data error"},
    {-161, "Invalid block data"},
    {-168, "Block data not allowed"},
    {-170, "Expression error"},
    {-171, "Invalid expression"},
    {-178, "Expression data not allowed"},
    {-180, "Macro error"},
    {-181, "Invalid outside macro definition"},
    {-184, "Macro parameter error"},
    {-200, "Execution error"},
    {-201, "Invalid while in local"},
    {-202, "Settings lost due to rtl"},
    {-203, "Command protected"},
    {-210, "Trigger error"},
    {-211, "Trigger ignored"},
    {-212, "Arm ignored"},
    {-213, "Init ignored"},
    {-214, "Trigger deadlock"},
    {-215, "Arm deadlock"},
    {-220, "Parameter error"},
    {-221, "Settings conflict"},
    {-222, "Data out of range"},
    {-223, "Too much data"},
    {-224, "Illegal parameter value"},
    {-225, "Out of memory"},
    {-226, "List not same length"},
    {-230, "Data corrupt or stale"},
    {-231, "Data questionable"},
    {-232, "Invalid format"},
    {-233, "Invalid version"},
    {-240, "Hardware error"},
    {-241, "Hardware missing"},
    {-250, "Mass storage error"},
    {-251, "Missing mass storage"},
    {-252, "Missing media"},
    {-253, "Corrupt media"},
    {-254, "Media full"},
    {-255, "Directory full"},
    {-256, "File name not found"},
    {-257, "File name error"},
    {-258, "Media protected"},
    {-260, "Expression error"},
    {-261, "Math error in expression"},
    {-270, "Exec macro error"},
    {-271, "Macro syntax error"},
    {-272, "Macro execution error"},
    {-273, "Illegal macro label"},
    {-274, "Macro parameter error"},
    {-275, "Macro definition too long"},
    {-276, "Macro recursion error"},
    {-277, "Macro redefinition not allowed"},
    {-278, "Macro header not found"},
    {-280, "Program error"},
    {-281, "Cannot create program"},
    {-282, "Illegal program name"},
    {-283, "Illegal variable name"},
    {-284, "Program currently running"},
    {-285, "Program syntax error"},
    {-286, "Program runtime error"},
    {-290, "Memory use error"},
    {-291, "Out of memory"},
    {-292, "Referenced name does not exist"},
    {-293, "Referenced name already exists"},
    {-294, "Incompatible type"},
    {-300, "Device specific error"},
    {-310, "System error"},
    {-311, "Memory error"},
    {-312, "Pud memory lost"},
    {-313, "Calibration memory lost"},
    {-314, "Save recall memory lost"},
    {-315, "Configuration memory lost"},
    {-320, "Storage fault"},
    {-321, "Out of memory"},
    {-330, "Self test failed"},
    {-340, "Calibration failed"},
    {-350, "Queue overflow"},
    {-360, "Communication error"},
    {-361, "Parity error in program message"},
    {-362, "Framing error in program message"},
    {-363, "Input buffer overrun"},
    {-365, "Time out error"},
    {-400, "Query error"},
    {-410, "Query interrupted"},
    {-420, "Query unterminated"},
    {-430, "Query deadlocked"},
    {-440, "Query unterminated indef response"},
    {-500, "Power on"},
    {-600, "User request"},
    {-700, "Request control"},
    {-800, "Operation complete"},
};

static_assert(std::size(kErrorRows) == 121);
static_assert(std::ranges::adjacent_find(kErrorRows, std::ranges::less_equal(), &ErrorRow::code) ==
                  std::end(kErrorRows),
              "descending and unique: the rows are searched by bisection");

constexpr std::string_view kUnknownErrorText = "Device specific error";

} // namespace

std::string_view GetScpiErrorText(short code) noexcept
{
    const ErrorRow* row = std::ranges::lower_bound(kErrorRows, code, std::ranges::greater(), &ErrorRow::code);
    return row != std::end(kErrorRows) && row->code == code ? row->text : kUnknownErrorText;
}

CScpiErrorMap::CScpiErrorMap()
{
    for (const ErrorRow& row : kErrorRows)
    {
        // The rows descend, so each one is the new first.
        m_texts.emplace_hint(m_texts.begin(), row.code, CComBSTR(row.text));
    }
}

void CScpiErrorMap::GetErrorText(short code, CComBSTR& text) const
{
    const auto found = m_texts.find(code);
    if (found != m_texts.end())
    {
        text = found->second.m_T;
    }
    else
    {
        text = kUnknownErrorText.data();
    }
}

std::list<std::string> CScpiErrorMap::GetAllErrorResponseMessages() const
{
    std::list<std::string> lines;
    for (const auto& entry : m_texts)
    {
        lines.push_back(std::to_string(entry.first) + ",\"" + std::string(GetScpiErrorText(entry.first)) +
                        '"');
    }
    // Deliberate: sorted as text, so that the list begins with -100 and ends with "No error".
    lines.sort();
    return lines;
}

} // namespace ZoVelkor
