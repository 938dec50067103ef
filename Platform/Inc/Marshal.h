#pragma once

#include "Stream.h"
#include "Unknown.h"
#include "ZoExport.h"

/// Packs an interface into a stream that another thread opens with CoGetInterfaceAndReleaseStream.
///
/// The stream holds one reference to the object and lets go of it when it is released unused. It carries no
/// bytes: its own operations give E_NOTIMPL.
/// @param iid          interface that is packed
/// @param object       any interface of the object
/// @param[out] stream  counted for the caller; null on failure
/// @return S_OK; E_POINTER; the failure of QueryInterface; E_OUTOFMEMORY
ZO_EXPORT HRESULT CoMarshalInterThreadInterfaceInStream(const IID& iid,
                                                        IUnknown* object,
                                                        IStream** stream) noexcept;

/// Takes the interface out of a marshalling stream and releases the stream, on failure too.
///
/// An interface can be taken once; of several threads that try, one succeeds.
/// @param[out] object  the interface, counted for the caller; null on failure
/// @return S_OK; E_POINTER; E_INVALIDARG for a stream of another kind; E_UNEXPECTED when the interface was
///         taken before; E_NOINTERFACE
ZO_EXPORT HRESULT CoGetInterfaceAndReleaseStream(IStream* stream, const IID& iid, void** object) noexcept;
