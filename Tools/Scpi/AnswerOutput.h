#pragma once

#include "ScpiExchange.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZoVelkor::Tools
{

/// Puts answers on the standard output as they are; a terminal is spared what is not text.
class CAnswerPrinter final : public CAnswerTaker
{
public:
    CAnswerPrinter();
    void Take(std::string_view part) override;
    void TakeBlock(CInstrumentLink&, std::size_t) override {}

private:
    const bool m_isTerminal;
};

/// Puts an answer into a file; of a block just the contents.
class CAnswerFile final : public CAnswerTaker
{
public:
    /// @param name  made or overwritten when the answer comes; - is the standard output
    explicit CAnswerFile(std::string name) : m_name(std::move(name)) {}
    void Take(std::string_view part) override;
    void TakeBlock(CInstrumentLink& link, std::size_t size) override;
    bool WantsBlocks() const override { return true; }

private:
    const std::string m_name;
    bool m_isBegun = false;
};

/// Keeps an answer, of a block just the contents.
class CAnswerText final : public CAnswerTaker
{
public:
    void Take(std::string_view part) override;
    void TakeBlock(CInstrumentLink& link, std::size_t size) override;
    bool WantsBlocks() const override { return true; }

    const std::string& Text() const noexcept { return m_text; }

private:
    std::string m_text;
};

/// Drops answers that nobody asked for.
class CAnswerDrain final : public CAnswerTaker
{
public:
    void Take(std::string_view) override {}
    void TakeBlock(CInstrumentLink&, std::size_t) override {}
};

/// Tells the errors of a command on the standard error.
///
/// @return there are any
bool TellErrors(std::string_view command, const std::vector<std::string>& errors);

} // namespace ZoVelkor::Tools
