#include "Common/ToolFiles.h"
#include "ScpiTableCheck.h"
#include "TableFile.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::size_t kMaxFaults = 100;

/// How the faulty field of a record is made harmless.
struct RepairRule
{
    std::string_view field;
    void (*repair)(_CMD_SET_RECORD& record);
};

constexpr RepairRule kRepairs[] = {
    {"length", [](_CMD_SET_RECORD& record) { record.hdr.iLength = 0; }},
    {"keyword", [](_CMD_SET_RECORD& record) { record.hdr.szKeyword[0] = '\0'; }},
    {"SubStart", [](_CMD_SET_RECORD& record) { record.hdr.iSubStart = 0; }},
    {"datatype", [](_CMD_SET_RECORD& record) { record.hdr.iDatatype = 0; }},
    {"name", [](_CMD_SET_RECORD& record) { record.par.szName[0] = '\0'; }},
    {"suffix list", [](_CMD_SET_RECORD& record) { record.par.iSuffixList = 0; }},
    {"count", [](_CMD_SET_RECORD& record) { record.par.iKeywords = 0; }},
    {"keywords", [](_CMD_SET_RECORD& record) { record.par.iKeywords = 0; }},
    {"nextpar", [](_CMD_SET_RECORD& record) { record.par.iNextPar = 0; }},
    {"text", [](_CMD_SET_RECORD& record) { record.chr.szKeyword[0] = '\0'; }},
    {"expression",
     [](_CMD_SET_RECORD& record) {
         record.nse = {"1", record.nse.iValue};
     }},
    {"value", [](_CMD_SET_RECORD& record) { record.nse.iValue = NSE_HEADER; }},
};

/// @return false when nothing can be done about the fault
bool Repair(std::vector<_CMD_SET_RECORD>& records, const tagScpiTableFault& fault)
{
    const auto* const row =
        std::find_if(std::begin(kRepairs), std::end(kRepairs), [&](const RepairRule& repair) {
            return repair.field == fault.field;
        });
    if (fault.iRecord >= records.size() || row == std::end(kRepairs))
    {
        return false;
    }
    row->repair(records[fault.iRecord]);
    return true;
}

} // namespace

std::vector<std::string> FindTableFaults(std::vector<_CMD_SET_RECORD> records)
{
    std::vector<std::string> faults;
    while (const auto fault = CheckScpiTable(records.data(), records.size(), tagScpiTableRules::Keywords))
    {
        std::string message = Printable(fault->Message());
        const bool isNews = std::find(faults.begin(), faults.end(), message) == faults.end();
        if (!isNews || faults.size() == kMaxFaults)
        {
            faults.push_back("there may be more");
            break;
        }
        faults.push_back(std::move(message));
        if (!Repair(records, *fault))
        {
            break;
        }
    }
    return faults;
}

} // namespace ZoVelkor::Tools
