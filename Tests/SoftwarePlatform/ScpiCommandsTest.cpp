#include "CBScpiCommands.h"
#include "CComObject.h"
#include "ExecutionFakes.h"
#include "RoundTripTable.h"
#include "ScpiTableMacros.h"
#include "VirtualSlots.h"

#include <fstream>

namespace
{

using namespace ZoVelkor;

CMD_SET_RECORD kTree[] = {HDR("FREQuency", 1, 2, 0, 2, 2, QMARK | HDR_SET),
                          HDR("TEST", DEF, 3, 0, 0, 0, HDR_DIAG),
                          PAR("value", ARG_SINT, 0, 0, 0, 0, 0)};

struct CTestCommands : CBScpiCommands
{
    explicit CTestCommands(std::uint32_t size = sizeof(kTree), const CMD_SET_RECORD* table = kTree)
        : m_tree{size, table}
    {}
    explicit CTestCommands(std::nullptr_t) : m_given(nullptr) {}

    static std::size_t TreeSlot() { return VirtualSlots(&CTestCommands::DoGetParserTree).front(); }

private:
    const tagZO_SCPI_PARSER_TREE* DoGetParserTree() override { return m_given; }

    tagZO_SCPI_PARSER_TREE m_tree{};
    const tagZO_SCPI_PARSER_TREE* m_given = &m_tree;
};

using CComponent = CComObject<CTestCommands, IZOScpiCommands>;

TEST(ScpiCommands, SlotsAreInOrder)
{
    // clang-format off
    using I = IZOScpiCommands;
    const auto slots = VirtualSlots(
        &I::SendCommandTree, &I::GetCommandHeader, &I::GetCommandSyntax, &I::IsImplemented, &I::GetHeaderSyntax,
        &I::GetCommandHeaderDiag, &I::GetCommandSyntaxDiag, &I::GetParserTableSource, &I::GetParserTableReference);
    EXPECT_EQ(slots, (std::vector<std::size_t>{3, 4, 5, 6, 7, 8, 9, 10, 11}));
    EXPECT_EQ(CTestCommands::TreeSlot(), 14U) << "behind a destructor";
    // clang-format on
}

TEST(ScpiCommands, TreeIsSentAsOneBlock)
{
    static constexpr const char* kBroken = "hr == S_OK|Broken scpi connection\n";
    static constexpr const char* kLarge = "iSize <= 999999|Command tree too large for its block header\n";
    const std::string prefix = "1.00,#6000012";
    const std::string whole = prefix + std::string("FREQuency\0\0\0", 12);
    // clang-format off
    const struct { std::uint32_t size; int failingCall; HRESULT result; std::string written; const char* reports; } cases[] = {
        {12, -1, S_OK, whole, ""}, {12, 0, S_OK, "", kBroken}, {12, 1, S_OK, prefix, kBroken},
        {0, -1, S_FALSE, "", ""}, {999999, -1, S_OK, "1.00,#6999999", ""}, {1000000, -1, E_FAIL, "", kLarge}};
    // clang-format on
    for (const auto& row : cases)
    {
        SCOPED_TRACE(testing::Message() << row.size << ' ' << row.failingCall);
        CErrorRecorder recorder;
        FakeOutputBuffer output;
        output.transcript.failingCall = row.failingCall;
        EXPECT_EQ(CComponent::Create(row.size)->SendCommandTree(&output), row.result);
        EXPECT_EQ(output.transcript.text, row.written);
        EXPECT_EQ(output.transcript.calls,
                  row.failingCall == 0 || row.result != S_OK ? row.failingCall + 1 : 2)
            << "nothing is written behind a failure";
        EXPECT_EQ(Lines(recorder.Take()), row.reports);
    }
}

TEST(ScpiCommands, ListingsEndEachLine)
{
    using I = IZOScpiCommands;
    // clang-format off
    const struct { HRESULT (I::*get)(wchar_t**); const char* all; const char* diagnosticOnly; } cases[] = {
        {&I::GetCommandHeader, ":FREQuency\n", ""}, {&I::GetCommandSyntax, ":FREQuency[?] <integer>\n", ""},
        {&I::GetCommandHeaderDiag, ":TEST/nquery/\n", ":TEST/nquery/\n"}, {&I::GetCommandSyntaxDiag, ":TEST\n", ":TEST\n"}};
    // clang-format on
    CMD_SET_RECORD diagnosticTable[] = {HDR("TEST", DEF, 3, 0, 1, 0, HDR_DIAG)};
    const auto all = CComponent::Create();
    const auto diagnostic = CComponent::Create(std::uint32_t{sizeof(diagnosticTable)}, diagnosticTable);
    for (const auto& row : cases)
    {
        CComBSTR text;
        EXPECT_EQ((all.Get()->*row.get)(&text), S_OK);
        EXPECT_TRUE(text == row.all) << row.all;
        EXPECT_EQ((diagnostic.Get()->*row.get)(&text), S_OK);
        EXPECT_FALSE(text.IsNull());
        EXPECT_TRUE(text == row.diagnosticOnly) << row.all;
    }
}

CComBSTR Golden(const std::string& name)
{
    std::ostringstream text;
    text << std::ifstream(ZO_TABLE_GOLDENS "/" + name).rdbuf();
    return CComBSTR(text.str().c_str());
}

TEST(ScpiCommands, SourceAndHeaderAsFiles)
{
    const auto records = RoundTripTable();
    const auto size = static_cast<std::uint32_t>(records.size_bytes());
    CComBSTR source, header;
    EXPECT_EQ(CComponent::Create(size, records.data())->GetParserTableSource(&source, &header), S_OK);
    EXPECT_EQ(source.View(), Golden("PrsTab.cpp.txt").View());
    EXPECT_EQ(header.View(), Golden("PrsTab.hpp.txt").View());
}

TEST(ScpiCommands, WithoutTableNothingIsWrittenOrReported)
{
    wchar_t held[] = L"old";
    CErrorRecorder recorder;
    for (const auto& commands : {CComponent::Create(0U), CComponent::Create(40U, nullptr)})
    {
        FakeOutputBuffer output;
        wchar_t* text = held;
        EXPECT_EQ(commands->SendCommandTree(&output), S_FALSE);
        EXPECT_EQ(commands->GetCommandHeader(&text), S_FALSE);
        EXPECT_EQ(commands->GetCommandSyntaxDiag(nullptr), S_FALSE);
        EXPECT_EQ(commands->GetParserTableSource(&text, &text), S_FALSE);
        EXPECT_EQ(output.transcript.calls, 0);
        EXPECT_EQ(text, held);
    }
    tagZO_SCPI_PARSER_TREE tree{7, kTree};
    EXPECT_EQ(CComponent::Create(0U)->GetParserTableReference(&tree), S_OK);
    EXPECT_TRUE(tree.iSize == 0 && tree.pTable == kTree);
    EXPECT_EQ(CComponent::Create(nullptr)->GetParserTableReference(&tree), S_FALSE);
    EXPECT_EQ(tree.pTable, nullptr);
    EXPECT_EQ(CComponent::Create(nullptr)->SendCommandTree(nullptr), S_FALSE);
    EXPECT_EQ(Lines(recorder.Take()), "");
}

TEST(ScpiCommands, BaseKnowsNoHeaderAndGivesItsTree)
{
    const auto commands = CComponent::Create();
    short known = 7, first = 7, other = 7;
    wchar_t* text = nullptr;
    EXPECT_EQ(commands->IsImplemented(0, nullptr, &known), S_FALSE);
    EXPECT_EQ(commands->GetHeaderSyntax(0, nullptr, &first, &other, &other, &other, &text, &text), S_FALSE);
    EXPECT_TRUE(known == 0 && first == 0 && other == 7);
    tagZO_SCPI_PARSER_TREE tree{};
    EXPECT_EQ(commands->GetParserTableReference(&tree), S_OK);
    EXPECT_TRUE(tree.iSize == sizeof(kTree) && tree.pTable == kTree);
}

TEST(ScpiCommands, UnusableAddressesAreReported)
{
    CErrorRecorder recorder;
    const auto commands = CComponent::Create();
    CComBSTR text;
    wchar_t held[] = L"old";
    wchar_t* holder = held;
    EXPECT_EQ(commands->SendCommandTree(nullptr), E_POINTER);
    EXPECT_EQ(commands->GetCommandHeader(nullptr), E_POINTER);
    EXPECT_EQ(commands->GetCommandHeader(&holder), E_INVALIDARG);
    EXPECT_EQ(commands->IsImplemented(0, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(commands->GetParserTableReference(nullptr), E_POINTER);
    EXPECT_THROW(commands->GetParserTableSource(nullptr, &text), CShellError);
    EXPECT_THROW(commands->GetParserTableSource(&text, nullptr), CShellError);
    EXPECT_THROW(commands->GetParserTableSource(&text, &holder), CShellError);
    EXPECT_TRUE(text.IsNull());
    EXPECT_EQ(holder, held);
    EXPECT_EQ(Lines(recorder.Take()),
              "pOutputBuffer != NULL|Null pointer detected (pOutputBuffer)\n"
              "pbsText != NULL|Null pointer detected (pbsText)\n"
              "*pbsText == NULL|The string would be lost (pbsText)\n"
              "pbImplemented != NULL|Null pointer detected (pbImplemented)\n"
              "pTree != NULL|Null pointer detected (pTree)\n"
              "pbsSource != NULL|Null pointer detected (pbsSource)|thrown\n"
              "pbsHeader != NULL|Null pointer detected (pbsHeader)|thrown\n"
              "*pbsHeader == NULL|The string would be lost (pbsHeader)|thrown\n");
}

} // namespace
