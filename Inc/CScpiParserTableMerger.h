#pragma once

#include "CScpiParserTable.h"
#include "CScpiParserTableGroups.h"
#include "ScpiTableCheck.h"

#include <array>
#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <valarray>
#include <vector>

namespace ZoVelkor
{

/// Joins the command tables of several plug-ins into one.
///
/// Header trees are united level by level: records of one keyword (compared byte by byte) become one record,
/// in the order in which the keywords first appear. The last record with a handler or with parameters defines
/// the joined one, its flags and its numeric-suffix expression included. Parameters, units and mnemonics of
/// the joined commands are copied, each plug-in's in a place of its own. A child group that several headers
/// of a plug-in share stays shared where no other plug-in adds to it; so do equal unions.
///
/// Joined table: common commands, root group, further header groups, parameters, units, mnemonics,
/// expressions. Behind common commands the root group begins with a node without name or handler where its
/// first keyword were "undef", which readers take for a placeholder, or where it had no records of its own.
///
/// Sinks: entry i belongs to header record i, and is null for every record that is no executable header.
///
/// Problems, each told to the error strategy as one text that begins with "Plug-in 'NAME', ":
///  - a damaged table, with record, field and fault; the plug-in is left out, the others are merged;
///  - a header with handlers that a later record replaces;
///  - one keyword with and without numeric suffix, or with a different kind of it;
///  - commands behind a placeholder group, which are left out.
/// None stops the merge. Whether they count as errors is the strategy's business. The joined table is
/// examined as well; a fault there, which only the size of the united tree can be, is told as "Joined table,
/// ...".
///
/// Effort: proportional to the records, and for a shared group to the ways that lead to it at worst, which
/// the bounds of CheckScpiTable limit. Ownership: tables are borrowed and never written to; a reference to
/// each sink is held. Threads: one at a time.
class ZO_EXPORT CScpiParserTableMerger
{
public:
    /// A joined table.
    using tagTable = std::valarray<_CMD_SET_RECORD>;
    /// A sink or null for each of its records.
    using tagSinks = std::valarray<CAdapt<CComPtr<IZOScpiExecutionSink>>>;

    /// @param errors  borrowed for the merger's life
    explicit CScpiParserTableMerger(CScpiPropErrorStrategy& errors) : m_errors(errors) {}
    CScpiParserTableMerger(const CScpiParserTableMerger&) = delete;
    CScpiParserTableMerger& operator=(const CScpiParserTableMerger&) = delete;
    ~CScpiParserTableMerger() = default;

    /// Appends one plug-in; the order decides which definition of a command is the later one.
    void AddPlugin(const CScpiParserTable::PlugInData& plugin);

    /// Merges all plug-ins; may be repeated.
    ///
    /// @param[out] table  the joined records, empty when there are none; must hold no plug-in's records
    /// @param[out] sinks  as many entries as the table
    void Run(tagTable& table, tagSinks& sinks);

private:
    /// One plug-in inside the merger.
    struct DynamicPlugInData
    {
        CScpiParserTable table;
        _CMD_SET_RECORD* pTable = nullptr;
        std::uint32_t iSize = 0;
        CComPtr<IZOScpiExecutionSink> spSink;
        std::string sName;

        bool isSound = false;          ///< takes part in the merge
        std::vector<bool> isParameter; ///< by record: parameter of a joined command
        std::array<std::vector<std::uint32_t>, kScpiTableKinds> places; ///< by kind and record: joined index
        std::unordered_map<std::size_t, std::string_view> expressions;  ///< by header record
    };

    /// One record of a plug-in, also as the beginning of a group; without plug-in: the node without name.
    struct tagRecordReference
    {
        DynamicPlugInData* pPlugIn = nullptr;
        std::size_t iRecord = 0;

        bool operator==(const tagRecordReference&) const = default;
        const _CMD_SET_RECORD& Record() const { return pPlugIn->pTable[iRecord]; }
        std::string_view Keyword() const;
    };

    /// One group of a plug-in as it enters the merge, or one level of the united header tree.
    struct DynamicParserTableGroup
    {
        DynamicPlugInData* pPlugIn = nullptr;
        std::size_t iFirst = 0;
        std::size_t iLength = 0;
        long iNewIndex = -1;
        std::vector<tagRecordReference> definitions;    ///< headers: defining record of each entry
        std::vector<DynamicParserTableGroup*> children; ///< headers: child level of each entry, or null
    };

    using tagGroupRefs = std::vector<tagRecordReference>;

    struct tagGroupRefsHash
    {
        std::size_t operator()(const tagGroupRefs& groups) const;
    };

    void Discard();
    bool Examine(const DynamicPlugInData& plugin);
    void AnalysePlugin(DynamicPlugInData& plugin);
    void MarkParameters();
    static void MarkChain(DynamicPlugInData& plugin, std::uint32_t first);
    void ReportHiddenRoot(DynamicPlugInData& plugin, long placeholder);
    void Report(const DynamicPlugInData& plugin, const _CMD_SET_RECORD* record, const std::string& text);
    void Report(const tagRecordReference& record, std::string_view field, const std::string& text);

    void MergeChr();
    void MergeSfx();
    void MergePar();
    void MergeHdr();
    void MergeLists(tagScpiTableKind kind, std::list<DynamicParserTableGroup>& out);
    DynamicParserTableGroup* MergeHdrGroups(tagGroupRefs groups);
    void FillLevel(DynamicParserTableGroup& level,
                   const tagGroupRefs& groups,
                   std::vector<tagGroupRefs>& children);
    void MergeEntry(tagRecordReference& definition, const tagRecordReference& record);
    void SeparateRoot();

    void MergeRenderOffsets(tagTable& table, tagSinks& sinks);
    static void Place(DynamicParserTableGroup* group, std::size_t& next);
    static void
    PlaceLists(std::list<DynamicParserTableGroup>& groups, tagScpiTableKind kind, std::size_t& next);
    void CollectExpressions();
    void MergeRenderBinary(tagTable& table, tagSinks& sinks) const;
    static void RenderLevel(const DynamicParserTableGroup& level, tagTable& table, tagSinks& sinks);
    static void RenderParameters(const DynamicParserTableGroup& group, tagTable& table);
    static void RenderList(const DynamicParserTableGroup& group, tagTable& table);

    CScpiPropErrorStrategy& m_errors;
    std::list<DynamicPlugInData> m_plugins;

    std::list<DynamicParserTableGroup> m_headerGroups;
    std::list<DynamicParserTableGroup> m_parameterGroups;
    std::list<DynamicParserTableGroup> m_unitGroups;
    std::list<DynamicParserTableGroup> m_characterGroups;
    std::unordered_map<tagGroupRefs, DynamicParserTableGroup*, tagGroupRefsHash> m_levels;
    DynamicParserTableGroup* m_common = nullptr;
    DynamicParserTableGroup* m_root = nullptr;
    std::vector<tagSuffixExpression> m_expressions; ///< with joined header indexes
};

} // namespace ZoVelkor
