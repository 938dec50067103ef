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

struct Kind
{
    std::string_view name;
    Target target;
};

constexpr Kind kKinds[] = {
    {"filler-set", Target::Filler},
    {"filler-query", Target::Filler},
    {"set", Target::Setting},
    {"span", Target::Setting},
    {"start", Target::Setting},
    {"stop", Target::Setting},
    {"step", Target::Setting},
    {"query", Target::Query},
    {"idn", Target::Identity},
    {"block", Target::Block},
    {"list", Target::List},
};

/// A header with its forms; DEF: it does not have that form.
struct Header
{
    std::string pattern;
    std::int32_t query = DEF;
    std::int32_t setting = DEF;
};

void AddLine(std::vector<Header>& headers, std::string_view line)
{
    const std::size_t tab = line.find('\t');
    const auto kind = std::ranges::find(kKinds, line.substr(0, tab), &Kind::name);
    if (tab == std::string_view::npos || kind == std::end(kKinds))
    {
        throw std::runtime_error("malformed line: " + std::string(line));
    }
    std::string_view pattern = line.substr(tab + 1);
    const bool query = pattern.ends_with('?');
    pattern.remove_suffix(query ? 1 : 0);
    auto header = std::ranges::find(headers, pattern, &Header::pattern);
    if (header == headers.end())
    {
        header = headers.insert(headers.end(), {std::string(pattern)});
    }
    (query ? header->query : header->setting) = static_cast<std::int32_t>(kind->target);
}

std::vector<RemoteKernel::Testing::TestParameter> ParametersOf(const Header& header)
{
    if (header.setting == DEF)
    {
        return {};
    }
    if (header.setting == static_cast<std::int32_t>(Target::Block))
    {
        return {{.type = ARG_BLOCK}};
    }
    return {{.type = ARG_SFLOAT | ARG_MINMAX | ARG_DEFAULT, .units = {{"HZ", 1}}}};
}

} // namespace

CCommandTree::CCommandTree(const std::string& path)
{
    std::ifstream file(path);
    if (!file)
    {
        throw std::runtime_error("cannot read " + path);
    }
    std::vector<Header> headers;
    for (std::string line; std::getline(file, line);)
    {
        AddLine(headers, line);
    }
    RemoteKernel::Testing::CTableBuilder builder;
    for (const Header& header : headers)
    {
        const std::uint32_t forms =
            (header.query != DEF ? QMARK : 0U) | (header.setting != DEF ? HDR_SET : 0U);
        builder.Add(header.pattern, header.query, header.setting, forms, ParametersOf(header));
    }
    m_records = builder.Build();
}

} // namespace ZoVelkor::Benchmarks
