#pragma once

#include "CScpiClient.h"
#include "CTemporaryRegistry.h"
#include "Instrument/CDemoInstrument.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Demo
{

/// The numbers of an answer, whatever stands between them.
std::vector<double> Numbers(const std::string& answer);

/// Compares the items of two answers, as numbers where both are.
void ExpectSameAnswer(const std::string& answer, const std::string& expected);

/// One conversation with an instrument in its reset state.
struct ConversationCase
{
    const char* name;
    const char* send;   ///< sent first; empty: nothing
    const char* ask;    ///< asked then
    const char* answer; ///< compared number by number, text by text; null: none comes
    int error = 0;      ///< the only error queued by send and ask; 0: none
};

/// A whole instrument on a free port of the loopback address, and a client of it.
class DemoFixture : public testing::Test
{
protected:
    using CScpiClient = Testing::CScpiClient;

    explicit DemoFixture(DemoProfile profile = DemoProfile::Analyzer) : m_profile(profile) { Start(); }

    CScpiClient& Client() { return *m_client; }
    CScpiClient Connect() const { return CScpiClient(m_instrument->Port()); }

    /// Ends the instrument with its client; its registry is that of this process still.
    void Stop()
    {
        m_client.reset();
        m_instrument.reset();
        m_registry.Use();
    }
    void Start();
    /// Ends the instrument with its client and starts another on the same registry.
    void Restart()
    {
        Stop();
        Start();
    }
    std::string RegistryFile() const { return m_registry.File(); }

    /// Asks again and again, which needs the instrument's answer each time, until an answer is accepted.
    ///
    /// Fails the test after half a minute.
    void WaitForAnswer(const std::string& query, const std::function<bool(int)>& isAccepted);

    /// Takes the oldest error of the client's session; 0 when there is none.
    int NextError();

    /// Holds each conversation after a reset.
    void ExpectConversations(std::span<const ConversationCase> rows);

private:
    const CTemporaryRegistry m_registry;
    const DemoProfile m_profile;
    std::unique_ptr<CDemoInstrument> m_instrument;
    std::optional<CScpiClient> m_client;
};

} // namespace ZoVelkor::Demo
