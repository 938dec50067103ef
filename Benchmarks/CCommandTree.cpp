#include "CCommandTree.h"

#include "CTableBuilder.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace ZoVelkor::Benchmarks
{
namespace
{

struct tagKind
{
    std::string_view name;
    tagTarget target;
};

constexpr tagKind kKinds[] = {
    {"filler-set", tagTarget::Filler},
    {"filler-query", tagTarget::Filler},
    {"set", tagTarget::Setting},
    {"span", tagTarget::Setting},
    {"start", tagTarget::Setting},
    {"stop", tagTarget::Setting},
    {"step", tagTarget::Setting},
    {"query", tagTarget::Query},
    {"idn", tagTarget::Identity},
    {"block", tagTarget::Block},
    {"list", tagTarget::List},
};

/// A header with its forms; DEF: it does not have that form.
struct tagHeader
{
    std::string pattern;
    std::int32_t iQuery = DEF;
    std::int32_t iSetting = DEF;
};

void AddLine(std::vector<tagHeader>& headers, std::string_view line)
{
    const std::size_t tab = line.find('\t');
    const auto kind = std::ranges::find(kKinds, line.substr(0, tab), &tagKind::name);
    if (tab == std::string_view::npos || kind == std::end(kKinds))
    {
        throw std::runtime_error("malformed line: " + std::string(line));
    }
    std::string_view pattern = line.substr(tab + 1);
    const bool query = pattern.ends_with('?');
    pattern.remove_suffix(query ? 1 : 0);
    auto header = std::ranges::find(headers, pattern, &tagHeader::pattern);
    if (header == headers.end())
    {
        header = headers.insert(headers.end(), {std::string(pattern)});
    }
    (query ? header->iQuery : header->iSetting) = static_cast<std::int32_t>(kind->target);
}

std::vector<RemoteKernel::Testing::tagTestParameter> ParametersOf(const tagHeader& header)
{
    if (header.iSetting == DEF)
    {
        return {};
    }
    if (header.iSetting == static_cast<std::int32_t>(tagTarget::Block))
    {
        return {{.iType = ARG_BLOCK}};
    }
    return {{.iType = ARG_SFLOAT | ARG_MINMAX | ARG_DEFAULT, .units = {{"HZ", 1}}}};
}

} // namespace

CCommandTree::CCommandTree(const std::string& path)
{
    std::ifstream file(path);
    if (!file)
    {
        throw std::runtime_error("cannot read " + path);
    }
    std::vector<tagHeader> headers;
    for (std::string line; std::getline(file, line);)
    {
        AddLine(headers, line);
    }
    RemoteKernel::Testing::CTableBuilder builder;
    for (const tagHeader& header : headers)
    {
        const std::uint32_t forms =
            (header.iQuery != DEF ? QMARK : 0U) | (header.iSetting != DEF ? HDR_SET : 0U);
        builder.Add(header.pattern, header.iQuery, header.iSetting, forms, ParametersOf(header));
    }
    m_records = builder.Build();
}

} // namespace ZoVelkor::Benchmarks
