#pragma once

#include <cmath>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ZoVelkor::Demo
{

/// Named values as text, one a line, as the registry keeps them.
///
/// One description of a state serves both directions: an object made without text collects the values, one
/// made from a text gives them back. What is missing or wrong leaves its variable alone and is the fault.
class CStateText
{
public:
    /// Collects values.
    CStateText() = default;
    /// Gives back the values of a text.
    explicit CStateText(std::string_view text);

    /// A number, a boolean or an enumeration, within limits; all but a floating-point number are whole.
    template <class TValue>
    void Value(const std::string& name, TValue& value, double minimum, double maximum)
    {
        double number = static_cast<double>(value);
        Number(name, number, minimum, maximum);
        if (!std::is_floating_point_v<TValue> && number != std::trunc(number))
        {
            return SetFault(name);
        }
        value = static_cast<TValue>(number);
    }
    template <class TEnumeration>
    requires std::is_enum_v<TEnumeration>
    void Word(const std::string& name, TEnumeration& value, TEnumeration last)
    {
        long word = static_cast<long>(value);
        Value(name, word, 1, static_cast<double>(last));
        value = static_cast<TEnumeration>(word);
    }
    void Flag(const std::string& name, bool& value) { Value(name, value, 0, 1); }
    /// One number or more.
    void Numbers(const std::string& name,
                 std::vector<double>& values,
                 double minimum,
                 double maximum,
                 std::size_t maxCount);
    /// Any bytes.
    void Text(const std::string& name, std::string& text, std::size_t maxLength);

    /// The values collected.
    const std::string& Collected() const { return m_collected; }
    /// Name of the first value that was missing or wrong; empty when all is well.
    const std::string& Fault() const { return m_fault; }

private:
    void Number(const std::string& name, double& value, double minimum, double maximum);
    void Collect(const std::string& name, std::string_view value);
    const std::string* Find(const std::string& name);
    void SetFault(const std::string& name);

    bool m_givesBack = false;
    std::map<std::string, std::string> m_values;
    std::string m_collected;
    std::string m_fault;
};

} // namespace ZoVelkor::Demo
