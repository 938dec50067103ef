#include "DemoFixture.h"

#include <charconv>
#include <chrono>

namespace ZoVelkor::Demo
{
namespace
{

std::vector<std::string> Items(const std::string& answer)
{
    std::vector<std::string> items(1);
    for (const char c : answer)
    {
        if (c == ';' || c == ',')
        {
            items.emplace_back();
        }
        else
        {
            items.back().push_back(c);
        }
    }
    return items;
}

std::optional<double> NumberOf(const std::string& item)
{
    double number = 0.0;
    const char* const end = item.data() + item.size();
    const auto [next, fault] = std::from_chars(item.data(), end, number);
    return fault == std::errc() && next == end ? std::optional(number) : std::nullopt;
}

} // namespace

std::vector<double> Numbers(const std::string& answer)
{
    std::vector<double> numbers;
    for (const std::string& item : Items(answer))
    {
        numbers.push_back(NumberOf(item).value());
    }
    return numbers;
}

void ExpectSameAnswer(const std::string& answer, const std::string& expected)
{
    const auto given = Items(answer);
    const auto wanted = Items(expected);
    ASSERT_EQ(given.size(), wanted.size()) << answer;
    for (std::size_t i = 0; i < wanted.size(); ++i)
    {
        const auto number = NumberOf(given[i]);
        const auto wantedNumber = NumberOf(wanted[i]);
        if (number && wantedNumber)
        {
            EXPECT_DOUBLE_EQ(*number, *wantedNumber) << answer;
        }
        else
        {
            EXPECT_EQ(given[i], wanted[i]) << answer;
        }
    }
}

void DemoFixture::WaitForAnswer(const std::string& query, const std::function<bool(int)>& isAccepted)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    std::string answer;
    do
    {
        answer = Client().Query(query);
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << query << " still gives " << answer;
    } while (!isAccepted(std::stoi(answer)));
}

int DemoFixture::NextError()
{
    return std::stoi(Client().Query("SYST:ERR?"));
}

void DemoFixture::ExpectConversations(std::span<const ConversationCase> rows)
{
    for (const ConversationCase& row : rows)
    {
        SCOPED_TRACE(row.name);
        Client().Write("*RST;*CLS");
        if (*row.send != '\0')
        {
            Client().Write(row.send);
        }
        if (row.answer != nullptr)
        {
            ExpectSameAnswer(Client().Query(row.ask), row.answer);
        }
        else
        {
            Client().Write(row.ask);
        }
        EXPECT_EQ(NextError(), row.error);
        EXPECT_EQ(row.error == 0 ? 0 : NextError(), 0);
    }
}

void DemoFixture::Start()
{
    m_instrument =
        std::make_unique<CDemoInstrument>(DemoOptions{"127.0.0.1", 0, m_profile, m_registry.File()});
    m_client.emplace(m_instrument->Port());
}

} // namespace ZoVelkor::Demo
