#pragma once

#include "CDemoInstrument.h"
#include "CScpiClient.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Demo
{

/// The numbers of an answer, whatever stands between them.
std::vector<double> Numbers(const std::string& answer);

/// Compares the items of two answers, as numbers where both are.
void ExpectSameAnswer(const std::string& answer, const std::string& expected);

/// A whole instrument on a free port of the loopback address, and a client of it.
class DemoFixture : public testing::Test
{
protected:
    using CScpiClient = Testing::CScpiClient;

    DemoFixture() { Start(); }

    CScpiClient& Client() { return *m_client; }
    CScpiClient Connect() const { return CScpiClient(m_instrument->Port()); }

    /// Ends the instrument with its client and starts another.
    void Restart()
    {
        m_client.reset();
        m_instrument.reset();
        Start();
    }

    /// Takes the oldest error of the client's session; 0 when there is none.
    int NextError();

private:
    void Start();

    std::unique_ptr<CDemoInstrument> m_instrument;
    std::optional<CScpiClient> m_client;
};

} // namespace ZoVelkor::Demo
