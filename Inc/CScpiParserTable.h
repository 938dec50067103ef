#pragma once

#include "CAdapt.h"
#include "CComPtr.h"
#include "IZOScpiExecutionSink.h"
#include "ScpiCommandTable.h"
#include "ZoExport.h"

#include <iosfwd>
#include <limits>
#include <list>
#include <set>
#include <string>
#include <valarray>

namespace ZoVelkor
{

class CScpiParserTableGroups;
class CScpiPropErrorStrategy;
enum class tagScpiTableKind;

/// One SCPI command table: finds its way through the records and lists its commands.
///
/// The table is borrowed and must outlive the object; a copy refers to the same table. Where an operation
/// takes a table itself, it is the first record of the array that the other arguments belong to.
///
/// Records carry no array size, so an index beyond the array is noticed only when the number of records was
/// given with the table. Other damage is survived: texts without terminator end with their field, negative
/// indexes and lengths count as none, and a child group that is its own ancestor, or lies deeper than 32
/// levels, is left out of the listings. Threads: operations that are const may run at the same time.
class ZO_EXPORT CScpiParserTable
{
public:
    CScpiParserTable() = default;
    /// For a table of unknown size; null is no table.
    explicit CScpiParserTable(_CMD_SET_RECORD* table) : m_table(table) {}

    /// Record count of a table whose size nobody told.
    static constexpr long kUnknownCount = std::numeric_limits<long>::max();

    /// One application's part of an instrument's command set.
    struct PlugInData
    {
        _CMD_SET_RECORD* pTable = nullptr;    ///< the records, borrowed
        std::uint32_t iSize = 0;              ///< size in bytes, a multiple of a record's 40
        CComPtr<IZOScpiExecutionSink> spSink; ///< runs the commands of this table
        std::string sName;                    ///< for error texts
    };

    /// Sets a table of unknown size.
    void SetParserTable(_CMD_SET_RECORD* table) { SetParserTable(table, kUnknownCount); }
    /// Sets a table of a known number of records, which the operations of this object then never leave.
    void SetParserTable(_CMD_SET_RECORD* table, long count)
    {
        m_table = table;
        m_count = count;
    }
    /// The first record; null when no table is set.
    _CMD_SET_RECORD* GetParserTable() const { return m_table; }

    /// Number of records; kUnknownCount unless it was given with the table.
    long GetRecordCount() const { return m_count; }

    /// Whether the table begins with common commands.
    bool HasCommonCommands() const;

    /// Number of parameter records of the chain that begins at a record index; 0 without a table.
    ///
    /// Counts from the start to the highest record reached while the chain runs upward.
    long GetParGroupSize(long start) const;

    /// Finds the groups of records that the roots lead to; does nothing without a table.
    ///
    /// A group is visited once, however many headers share it. With a known record count, groups that do not
    /// lie inside the table are left out, and the numeric-suffix expressions at its end form a group as well.
    void AnalyseGroups(CScpiParserTableGroups& groups) const;

    /// Joins the tables of several applications; this object then stands for the joined table.
    ///
    /// A single plug-in is neither copied nor examined: its table is used in place, and the arrays stay
    /// empty. Two or more are merged as CScpiParserTableMerger tells, which also lists what is reported.
    /// Without a plug-in, or when nothing is left to join, the table is null.
    /// @param errors       told about damaged tables and conflicts
    /// @param plugins      in order: the later definition of a command replaces the earlier one
    /// @param[out] table   the joined records; must outlive this object's use of them
    /// @param[out] sinks   for each joined record the sink of its command: entry i belongs to header record
    ///                     i, and is null for all records but executable headers
    /// @param[out] sizeInBytes  size of the table; 0 when it is null
    /// @return 0
    long MergePlugins(CScpiPropErrorStrategy& errors,
                      std::list<PlugInData>& plugins,
                      std::valarray<_CMD_SET_RECORD>& table,
                      std::valarray<CAdapt<CComPtr<IZOScpiExecutionSink>>>& sinks,
                      unsigned long& sizeInBytes);

    /// Lists all executable commands, children before their parent.
    ///
    /// A table of known size is examined first (CheckScpiTable); a damaged one lists nothing.
    /// @param diagnostic  list the diagnostic commands instead of the others
    /// @param syntax      lines of syntax help, with parameters, instead of header help
    /// @param[out] out    one line a command; emptied first
    /// @return 0
    long GetAllCommands(bool diagnostic, bool syntax, std::list<std::string>& out) const;

    /// Appends the lines of one group and of the groups below it.
    ///
    /// At the root (empty prefix, group equal to table) the common commands come first.
    /// @param prefix  path of the parent node
    static void CollectCommands(bool diagnostic,
                                bool syntax,
                                const std::string& prefix,
                                std::list<std::string>& out,
                                const _CMD_SET_RECORD* group,
                                const _CMD_SET_RECORD* table);

    /// Appends the line of one command: path and terminator.
    ///
    /// @param path   path of the node itself, its own keyword included
    /// @param table  first record of the table that the header belongs to
    static void CollectHeaderHelp(std::string path,
                                  std::list<std::string>& out,
                                  const _CS_HDR& header,
                                  const _CMD_SET_RECORD* table);
    /// Appends the line of one command: path, terminator and parameters.
    static void CollectSyntaxHelp(std::string path,
                                  std::list<std::string>& out,
                                  const _CS_HDR& header,
                                  const _CMD_SET_RECORD* table);

    /// Whether a header is listed on request alone (HDR_DIAG).
    static bool GetSystemHelpHeaderIsDiagnostic(const _CS_HDR& header);
    /// "/nquery/" for setting only, "?/qonly/" for query only, else empty.
    static std::string GetSystemHelpHeaderMessageTerminator(const _CS_HDR& header);
    /// Empty for setting only, "?" for query only, "[?]" for both.
    static std::string GetSystemHelpSyntaxMessageTerminator(const _CS_HDR& header);

    /// The parameters of a command, joined by commas; empty when it has none.
    static std::string GetSystemHelpSyntaxParameterList(const _CS_HDR& header, const _CMD_SET_RECORD* table);
    /// What one parameter accepts, such as `<numeric_value>|DEFault [HZ|KHZ]`; words in byte order.
    static std::string GetSystemHelpSyntaxParameter(const _CS_PAR& parameter, const _CMD_SET_RECORD* table);
    /// Adds the mnemonics of a parameter to a set of words.
    static void GetSystemHelpSyntaxCharList(std::set<std::string>& words,
                                            const _CS_PAR& parameter,
                                            const _CMD_SET_RECORD* table);
    /// The units of a parameter in table order, joined by "|"; empty when it has none.
    static std::string GetSystemHelpSyntaxUnitList(const _CS_PAR& parameter, const _CMD_SET_RECORD* table);
    /// A mnemonic in syntax form.
    static std::string GetSystemHelpSyntaxChar(const _CS_CHR& mnemonic);
    /// A unit in syntax form.
    static std::string GetSystemHelpSyntaxUnit(const _CS_SFX& unit);

    /// Writes the table as C++ text: the contents of the files PrsTab.cpp and PrsTab.hpp.
    ///
    /// Compiled with the headers of the target Zo::GeneratedTable the text gives the same table again, with
    /// three limits: a record outside every group is left out, so later indexes no longer fit; a text without
    /// terminator loses its last character; a table without records does not compile. The numeric-suffix
    /// expressions are written when the number of records was given with the table.
    void DumpSourceHeader(std::ostream& source, std::ostream& header) const;
    /// Writes the header up to the declarations of the table and its size.
    static void DumpHeader_Intro(std::ostream& header);
    /// Writes what follows DumpHeader_Intro.
    static void DumpHeader_Final(std::ostream& header);
    /// Writes the source up to its includes.
    static void DumpSource_Intro(std::ostream& source);
    /// Writes the definitions of the table and its size.
    ///
    /// @param groups  of this table, fresh from AnalyseGroups; collects labels and names of handlers
    void DumpSource_Table(std::ostream& source, CScpiParserTableGroups& groups) const;
    /// Writes one record, behind the block of the group that begins with it; in order of the records.
    void DumpSource_Element(std::ostream& source, CScpiParserTableGroups& groups, long index) const;
    /// Writes the block of the group that begins at a record, if one does, and notes the record's kind.
    void DumpSource_Group(std::ostream& source, CScpiParserTableGroups& groups, long index) const;

private:
    long GetGroupSize(tagScpiTableKind kind, long start) const;

    _CMD_SET_RECORD* m_table = nullptr;
    long m_count = kUnknownCount;
};

} // namespace ZoVelkor
