#pragma once

#include "CBScpiCommands.h"
#include "CBScpiParser.h"
#include "CComObject.h"
#include "HandlerTable.h"

namespace ZoVelkor::Demo
{

/// All that an application shows to remote control, in one object: its parser, the sink that runs its
/// commands, its command tree for service tools, and its device handler.
///
/// TDeviceHandler implements IZOScpiDeviceHandler and is made with the instrument.
template <class TCommands, class TDeviceHandler>
class CApplicationParser : public CBScpiParser,
                           public CHandlerSink<TCommands>,
                           public CBScpiCommands,
                           public TDeviceHandler
{
public:
    /// @param commands, instrument  borrowed; outlive the registration of the parser
    template <class TInstrument>
    CApplicationParser(TCommands& commands, TInstrument& instrument)
        : CHandlerSink<TCommands>(commands),
          TDeviceHandler(instrument)
    {}

    /// Makes the object; ownership is the caller's.
    template <class TInstrument>
    static CComPtr<IUnknown> Create(TCommands& commands, TInstrument& instrument)
    {
        using CObject = CComObject<CApplicationParser,
                                   IZOScpiParser,
                                   IZOScpiExecutionSink,
                                   IZOScpiCommands,
                                   IZOScpiDeviceHandler>;
        return CComPtr<IUnknown>(static_cast<IZOScpiParser*>(CObject::Create(commands, instrument)));
    }

protected:
    ~CApplicationParser() override = default;

    const tagZO_SCPI_PARSER_TREE* DoGetParserTree() override { return &CommandTree(); }
};

} // namespace ZoVelkor::Demo
