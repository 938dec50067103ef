#pragma once

#include "BySuffix.h"
#include "CCommandExecutionData.h"
#include "CScpiFunctionExecutionDataPool.h"
#include "HeaderSuffix.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace ZoVelkor::Demo
{

// Both forms of the commands that set one value other than a number; a refused setting leaves the value
// alone. Results are those of handlers.

/// ON, OFF or a number.
inline HRESULT HandleBoolean(CCommandExecutionData& record, bool& value)
{
    if (record.IsQuery())
    {
        return record.CheckArgumentNotAllowed() == S_OK ? record.BooleanResponse(value) : S_FALSE;
    }
    return record.CheckArgumentCount(0, true) == S_OK ? record.GetBooleanArgument(value, 0) : S_FALSE;
}

/// The same for a command whose first numeric suffix says which channel is meant, counted from 1.
template <class TChannel, std::size_t TCount>
HRESULT
HandleBoolean(CCommandExecutionData& record, std::array<TChannel, TCount>& channels, bool TChannel::*value)
{
    return HandleBoolean(record, BySuffix(channels, HeaderSuffix(record)).*value);
}

/// A string; -223 for one that is longer than maxLength.
inline HRESULT HandleString(CCommandExecutionData& record, std::string& value, std::size_t maxLength)
{
    if (record.IsQuery())
    {
        return record.CheckArgumentNotAllowed() == S_OK ? record.StringResponse(value) : S_FALSE;
    }
    std::string text;
    if (record.CheckArgumentCount(0, true) != S_OK || record.GetStringArgument(text, 0) != S_OK)
    {
        return S_FALSE;
    }
    if (text.size() > maxLength)
    {
        return record.SetScpiError(kScpiTooMuchData);
    }
    value = std::move(text);
    return S_OK;
}

/// A word of the command's list.
///
/// @param shortForm  gives a value's word as the query answers it
inline HRESULT HandleWord(CCommandExecutionData& record, long& value, std::string (*shortForm)(long value))
{
    if (!record.IsQuery())
    {
        return record.CheckArgumentCount(0, true) == S_OK ? record.GetCharacterArgument(value, 0) : S_FALSE;
    }
    if (record.CheckArgumentNotAllowed() != S_OK)
    {
        return S_FALSE;
    }
    const std::string word = shortForm(value);
    return record.ArbitraryResponse(word.data(), static_cast<long>(word.size()));
}

/// Reads all arguments of a command that takes a list of numbers.
inline HRESULT ReadNumbers(CScpiFunctionExecutionDataPool& pool, std::vector<double>& values)
{
    values.resize(static_cast<std::size_t>(pool.GetArgumentCount()));
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        if (pool.GetDoubleArgument(values[i], static_cast<long>(i)) != S_OK)
        {
            return S_FALSE;
        }
    }
    return S_OK;
}

/// Answers numbers in the data format of the remote path.
inline HRESULT AnswerNumbers(CScpiFunctionExecutionDataPool& pool, const std::vector<double>& values)
{
    IZOScpiSubsystemFormat* const subsystem = pool.GetFormatSubsystem();
    return subsystem != nullptr ? subsystem->OutputDoubles(values.data(), values.size())
                                : pool.SetScpiExecutionError("");
}

} // namespace ZoVelkor::Demo
