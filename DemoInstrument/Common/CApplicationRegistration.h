#pragma once

#include "CSwplScpiManager.h"
#include "CSwplScpiParser.h"

#include <span>

namespace ZoVelkor::Demo
{

/// Keeps an application registered with remote control for as long as the object lives.
///
/// When the destructor returns no handler of the application is running or will run.
class CApplicationRegistration
{
public:
    /// @param name  for messages and listings
    /// @param table  the command tree
    /// @param pParser  the application's parser object, see CApplicationParser; counted while registered
    /// @throws CShellError without remote control in this process, or when it refuses the table
    CApplicationRegistration(const wchar_t* name, std::span<const _CMD_SET_RECORD> table, IUnknown* pParser);
    CApplicationRegistration(const CApplicationRegistration&) = delete;
    CApplicationRegistration& operator=(const CApplicationRegistration&) = delete;
    ~CApplicationRegistration();

    /// Under which remote control knows the application.
    GUID Id() const { return m_parser.GetGuid(); }

private:
    CSwplScpiManager m_manager;
    CSwplScpiParser m_parser;
};

} // namespace ZoVelkor::Demo
