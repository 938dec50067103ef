#pragma once

#include "CComPtr.h"
#include "IZOScpiParser.h"
#include "IZOScpiParserManagement.h"
#include "ZoExport.h"

#include <vector>

namespace ZoVelkor
{

/// Helper of components that serve several remote paths: attaches to every path, and registers parsers,
/// plug-ins and observers of events for all of them.
///
/// Errors: operations that return a result give E_POINTER, reported, for a null object. Everything else that
/// fails raises an internal error of result ZO_E_SHELL: a missing service or interface ("Missing interface")
/// and a service that refuses. Ownership: one reference to the parser management of each path; registered
/// objects are the kernel's until they are unregistered. Threads: one at a time; not from inside a handler or
/// an observer.
class ZO_EXPORT CScpiAdministrationTemplate
{
public:
    /// Fetches the parser management of every remote path; what was attached before is released.
    ///
    /// @return S_OK
    /// @throws CShellError when the kernel is missing, does not tell how many paths there are or has no
    ///         parser management for one of them; nothing is attached then
    HRESULT AttachRemoteSystem();

    /// Releases what AttachRemoteSystem fetched.
    void DetachRemoteSystem() noexcept;

    /// How many remote paths the kernel can serve now, attached or not.
    long GetRemotePathCount() const;

    /// The parser management of one attached path; borrowed until the next attachment or detachment.
    ///
    /// @param remotePath  any number
    /// @return null for a path that is not attached
    IZOScpiParserManagement* GetScpiParserManagement(long remotePath) const noexcept;

    /// Registers the IZOScpiParser of an object for all paths.
    ///
    /// @return S_OK; E_POINTER
    /// @throws CShellError "RegisterExternalParser failed"
    HRESULT RegisterMultichannelParser(IUnknown* pParser);
    /// Takes a parser out of all paths.
    ///
    /// @return S_OK, and nothing of the parser is running; S_FALSE when it is not registered; E_POINTER
    /// @throws CShellError "invalid result of UnregisterExternalParser()"
    HRESULT UnregisterMultichannelParser(IUnknown* pParser);

    /// Registers the IZOScpiMultichannelEventObserver of an object under its event client identity.
    ///
    /// @return S_OK; E_POINTER
    /// @throws CShellError "could not register multichannel event registration"
    HRESULT RegisterMultichannelEventObserver(IUnknown* pObserver);
    /// Takes an observer out, by its identity.
    ///
    /// @return S_OK, and the observer is not called any more; S_FALSE when it is not registered; E_POINTER
    /// @throws CShellError "could not unregister multichannel event registration"
    HRESULT UnregisterMultichannelEventObserver(IUnknown* pObserver);

    /// Plugs a command tree into the instrument's, see IZOScpiTree.
    ///
    /// @return S_OK; E_POINTER
    HRESULT RegisterScpiPlugIn(IUnknown* pPlugIn);
    /// Takes a plug-in out again.
    ///
    /// @return S_OK, and nothing of the plug-in is running; S_FALSE when it is not plugged in; E_POINTER
    HRESULT UnregisterScpiPlugIn(IUnknown* pPlugIn);

    /// Sets the parser up that an application has aggregated: its name, type, command tree and whether it
    /// measures. It is not registered yet.
    ///
    /// @param pOuter  the object that aggregates; nothing is asked of it, so it may be null
    /// @param pInner  the aggregated object, with IZOScpiParser, IZOScpiCommands and IZOScpiExecutionSink
    /// @param length  of the table, in bytes
    /// @param data  first record of the table; the parser copies it
    /// @param name  of the application; lent for the call
    /// @param activatedMeasurementParser  see IZOScpiParser::get_ActivatedMeasurementParser
    /// @return S_OK; E_POINTER
    /// @throws CShellError naming the step that failed; the later ones are not taken
    HRESULT SetupAggregatedParser(IUnknown* pOuter,
                                  IUnknown* pInner,
                                  long length,
                                  const char* data,
                                  tagZO_SCPI_PARSER_TYPE type,
                                  const wchar_t* name,
                                  bool activatedMeasurementParser);

private:
    std::vector<CComPtr<IZOScpiParserManagement>> m_parserManagements; // by remote path
};

} // namespace ZoVelkor
