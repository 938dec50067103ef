#pragma once

#include "CCommandExecutionData.h"
#include "CScpiFunctionExecutionDataPool.h"

namespace ZoVelkor
{

/// Limits of a numeric setting, all in the setting's base unit.
struct tagNumericLimits
{
    double minimum;      ///< lowest value, which MINimum stands for
    double maximum;      ///< highest value, which MAXimum stands for
    double defaultValue; ///< also the first value
    double step = 0;     ///< for UP and DOWN; 0: these are refused
    double stepDown = 0; ///< for DOWN where it differs; 0: as step
};

/// One numeric setting of an instrument with the arguments that SCPI gives it (SCPI-99 vol. 1, 7.2.1): a
/// number, MINimum, MAXimum, DEFault, UP or DOWN; its query takes MINimum, MAXimum or DEFault.
///
/// A convenience for handlers of both styles: TData is CCommandExecutionData or
/// CScpiFunctionExecutionDataPool. Both answer with as many digits as the value needs, so that what is read
/// back is what was set. Threads: as the handlers; no lock.
class CNumericSetting
{
public:
    /// A setting that keeps its value itself, the default at first.
    ///
    /// @param limits  copied; the default lies between minimum and maximum, which is not checked
    explicit constexpr CNumericSetting(const tagNumericLimits& limits) noexcept
        : m_Limits(limits),
          m_Value(limits.defaultValue)
    {}

    /// A setting whose value is kept elsewhere, as it is at the moment of a command.
    constexpr CNumericSetting(const tagNumericLimits& limits, double value) noexcept
        : m_Limits(limits),
          m_Value(value)
    {}

    /// The present value, in the base unit.
    constexpr double Value() const noexcept { return m_Value; }
    /// The limits as they were given.
    constexpr const tagNumericLimits& Limits() const noexcept { return m_Limits; }
    /// Sets the value back to the default, as *RST does.
    constexpr void Reset() noexcept { m_Value = m_Limits.defaultValue; }

    /// Handles both forms of the command: sets the value from argument 0, or answers the query.
    ///
    /// @return 0, or 1 with a SCPI error: -109 or -115 for the number of arguments, -222 outside the
    ///         limits, -224 for a special word without meaning here, or the error of a wrong type; the
    ///         value is then as it was
    template <class TData>
    HRESULT Handle(TData& data)
    {
        return data.IsQuery() ? Answer(data) : Apply(data);
    }

    /// Sets the value from the only argument; results as Handle.
    ///
    /// A number is taken in the base unit, which the parser has converted it to. UP and DOWN change the
    /// present value by the step and are refused where that leaves the limits.
    template <class TData>
    HRESULT Apply(TData& data)
    {
        double value = 0;
        HRESULT result = data.CheckArgumentCount(0, true);
        if (result == S_OK)
        {
            result = ReadArgument(data, value);
        }
        if (result == S_OK && !(value >= m_Limits.minimum && value <= m_Limits.maximum))
        {
            result = data.SetScpiError(kScpiDataOutOfRange);
        }
        if (result == S_OK)
        {
            m_Value = value;
        }
        return result;
    }

    /// Answers the value, or the limit that the argument names; results as Handle.
    template <class TData>
    HRESULT Answer(TData& data) const
    {
        double value = m_Value;
        HRESULT result = S_OK;
        if (data.GetArgumentCount() != 0)
        {
            result = data.CheckArgumentCount(0, true);
            tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE word = ZO_SCPI_SPECIAL_NONE;
            result = result == S_OK ? data.GetMnemonicArgument(word, 0) : result;
            if (result == S_OK && !Limit(word, value))
            {
                result = data.SetScpiError(kScpiIllegalParameterValue);
            }
        }
        return result == S_OK ? data.NumericResponse(value) : result;
    }

private:
    template <class TData>
    HRESULT ReadArgument(TData& data, double& value) const
    {
        tagZO_SCPI_PARAMTYPE type = ZO_SCPI_PARAMTYPE_UNDEFINED;
        HRESULT result = data.GetArgumentType(type, 0);
        if (result != S_OK || type != ZO_SCPI_PARAMTYPE_SPECIAL)
        {
            return result == S_OK ? data.GetDoubleArgument(value, 0) : result;
        }
        tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE word = ZO_SCPI_SPECIAL_NONE;
        result = data.GetMnemonicArgument(word, 0);
        if (result == S_OK && !Limit(word, value) && !Step(word, value))
        {
            result = data.SetScpiError(kScpiIllegalParameterValue);
        }
        return result;
    }

    constexpr bool Limit(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE word, double& value) const noexcept
    {
        switch (word)
        {
        case ZO_SCPI_SPECIAL_MINIMUM:
            value = m_Limits.minimum;
            return true;
        case ZO_SCPI_SPECIAL_MAXIMUM:
            value = m_Limits.maximum;
            return true;
        case ZO_SCPI_SPECIAL_DEFAULT:
            value = m_Limits.defaultValue;
            return true;
        default:
            return false;
        }
    }

    constexpr bool Step(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE word, double& value) const noexcept
    {
        const bool isStep = word == ZO_SCPI_SPECIAL_UP || word == ZO_SCPI_SPECIAL_DOWN;
        const double stepDown = m_Limits.stepDown != 0 ? m_Limits.stepDown : m_Limits.step;
        value = word == ZO_SCPI_SPECIAL_UP ? m_Value + m_Limits.step : m_Value - stepDown;
        return isStep && m_Limits.step != 0;
    }

    tagNumericLimits m_Limits;
    double m_Value;
};

} // namespace ZoVelkor
