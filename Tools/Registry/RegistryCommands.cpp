#include "Common/Actions.h"
#include "Common/Subcommands.h"
#include "Common/ToolFiles.h"
#include "RegistryFile.h"
#include "RegistryJson.h"
#include "RegistryWatch.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <system_error>

namespace ZoVelkor::Tools
{

namespace
{

/// What the actions of `zo registry` are given.
struct RegistryOptions
{
    std::string key;
    std::string value;
    bool isValueGiven = false;
    std::string data;
    std::string type;
    std::string file = std::string(kStandardStream);
    std::string registry;
    unsigned depth = kAnyDepth;
    std::size_t count = 0;
    bool isRecursive = false;
    bool isJson = false;

    RegistryPath Path() const { return ParseRegistryPath(WideText(key)); }
    std::vector<RegistryPath> Paths() const
    {
        return key.empty() ? AllRoots() : std::vector<RegistryPath>{Path()};
    }
    std::wstring ValueName() const
    {
        std::wstring name = WideText(value);
        CheckValueName(name);
        return name;
    }
};

std::string Place(const RegistryPath& path, const std::wstring& name)
{
    return fmt::format("{} {}", PathText(path), QuotedText(name));
}

[[noreturn]] void FailMissingValue(const RegistryPath& path, const std::wstring& name)
{
    throw CToolError(ExitCode::Failed, fmt::format("{}: no such value", Place(path, name)));
}

/// Without this, a power failure could undo the last changes.
void Flush(HKEY key)
{
    if (RegFlushKey(key) != ERROR_SUCCESS)
    {
        Tell("written, but a power failure may undo it: the registry is busy");
    }
}

/// The data of a value for scripts: as it is, whatever is in it.
struct PlainData
{
    std::string operator()(const std::wstring& content) const { return Utf8Text(content) + '\n'; }
    std::string operator()(std::uint64_t content) const { return fmt::format("{}\n", content); }
    std::string operator()(std::span<const BYTE> content) const { return HexText(content) + '\n'; }
    std::string operator()(const std::vector<std::wstring>& content) const
    {
        std::string lines;
        for (const std::wstring& text : content)
        {
            lines += Utf8Text(text) + '\n';
        }
        return lines;
    }
};

ExitCode Get(const RegistryOptions& options)
{
    const RegistryPath path = options.Path();
    const std::wstring name = options.ValueName();
    const auto value = ReadRegistryValue(OpenRegistryKey(path).Get(), name, path);
    if (!value)
    {
        FailMissingValue(path, name);
    }
    WriteOutput("-", options.isJson ? JsonValue(*value) + '\n' : std::visit(PlainData{}, ContentOf(*value)));
    return ExitCode::Success;
}

/// The type that is asked for, else the one that the value has already, else the one that the data look like.
const ValueType& ChooseType(const RegistryOptions& options, HKEY key, const RegistryPath& path)
{
    if (!options.type.empty())
    {
        return *FindValueType(options.type);
    }
    const std::wstring name = options.ValueName();
    const auto former = ReadRegistryValue(key, name, path);
    if (!former)
    {
        return GuessType(WideText(options.data));
    }
    const ValueType* const type = FindValueType(former->type);
    if (type == nullptr)
    {
        throw CToolError(
            ExitCode::Usage,
            fmt::format(
                "{} has type {}; --type {} changes that", Place(path, name), former->type, ValueTypeNames()));
    }
    return *type;
}

std::vector<BYTE> DataForType(const RegistryOptions& options, const ValueType& type, const RegistryPath& path)
{
    try
    {
        return DataOf(WideText(options.data), type);
    }
    catch (const CTextFault& fault)
    {
        const std::string reason =
            options.type.empty() ? fmt::format("; it is a {}, --type changes that", type.name) : "";
        throw CToolError(ExitCode::Usage,
                         fmt::format("{}: {}{}", Place(path, options.ValueName()), fault.what(), reason));
    }
}

ExitCode Set(const RegistryOptions& options)
{
    const RegistryPath path = options.Path();
    const std::wstring name = options.ValueName();
    HKEY opened = 0;
    const LONG error = RegOpenKey(path.root, path.keys.c_str(), &opened);
    CUniqueKey key(opened);
    if (error != ERROR_FILE_NOT_FOUND)
    {
        CheckRegistry(error, PathText(path));
    }
    // Nothing is made before the data are known to be good.
    const ValueType& type =
        key || !options.type.empty() ? ChooseType(options, opened, path) : GuessType(WideText(options.data));
    const std::vector<BYTE> data = DataForType(options, type, path);
    if (!key)
    {
        CheckRegistry(RegCreateKey(path.root, path.keys.c_str(), &opened), PathText(path));
        key.Reset(opened);
    }
    CheckRegistry(
        RegSetValueEx(opened, name.c_str(), 0, type.type, data.data(), static_cast<DWORD>(data.size())),
        Place(path, name));
    Flush(opened);
    return ExitCode::Success;
}

void AppendListing(const RegistryKey& key, std::size_t indent, std::string& text)
{
    for (const RegistryValue& value : key.values)
    {
        text += fmt::format("{:{}}{}\n", "", indent, SummarizeValue(value));
    }
    for (const RegistryKey& below : key.keys)
    {
        const std::string unread = below.unreadKeys == 0 ? "" : fmt::format("  ({} below)", below.unreadKeys);
        text += fmt::format("{:{}}{}{}\n", "", indent, KeyNameText(below.name), unread);
        AppendListing(below, indent + 2, text);
    }
}

ExitCode List(const RegistryOptions& options)
{
    std::string text;
    for (const RegistryPath& path : options.Paths())
    {
        const RegistryTree tree = ReadRegistryTree(path, options.depth);
        if (options.isJson)
        {
            text += JsonTree(path, tree.top) + '\n';
            continue;
        }
        text += PathText(path) + '\n';
        AppendListing(tree.top, 2, text);
    }
    WriteOutput("-", text);
    return ExitCode::Success;
}

DWORD CountKeys(const RegistryPath& path)
{
    const RegistryTree tree = ReadRegistryTree(path, 0);
    return tree.top.unreadKeys;
}

void DeleteKey(const RegistryOptions& options, const RegistryPath& path)
{
    const std::string text = PathText(path);
    if (options.isRecursive)
    {
        CheckRegistry(RegDeleteTree(path.root, path.keys.c_str()), text);
        return;
    }
    if (path.keys.empty())
    {
        throw CToolError(ExitCode::Failed, text + ": a root stays; --recursive deletes what it holds");
    }
    const LONG error = RegDeleteKey(path.root, path.keys.c_str());
    if (error == ERROR_ACCESS_DENIED)
    {
        if (const DWORD count = CountKeys(path); count != 0)
        {
            throw CToolError(
                ExitCode::Failed,
                fmt::format("{} has keys below it ({}); --recursive deletes them too", text, count));
        }
    }
    CheckRegistry(error, text);
}

ExitCode Delete(const RegistryOptions& options)
{
    const RegistryPath path = options.Path();
    if (!options.isValueGiven)
    {
        DeleteKey(options, path);
        Flush(path.root);
        return ExitCode::Success;
    }
    if (options.isRecursive)
    {
        throw CToolError(ExitCode::Usage, "--recursive goes with a key, not with a value");
    }
    const std::wstring name = options.ValueName();
    const CUniqueKey key = OpenRegistryKey(path);
    const LONG error = RegDeleteValue(key.Get(), name.c_str());
    if (error == ERROR_FILE_NOT_FOUND)
    {
        FailMissingValue(path, name);
    }
    CheckRegistry(error, Place(path, name));
    Flush(path.root);
    return ExitCode::Success;
}

/// Files are read as a whole.
constexpr std::size_t kLargestFile = std::size_t{256} << 20U;

void CheckFileSize(std::size_t size, const std::string& name)
{
    if (size > kLargestFile)
    {
        throw CToolError(ExitCode::Failed,
                         fmt::format("{}: an export has at most {} bytes", name, kLargestFile));
    }
}

ExitCode Export(const RegistryOptions& options)
{
    CWatchedTrees watched(options.Paths());
    const auto trees = watched.ReadAtOneMoment();
    if (!trees)
    {
        throw CToolError(ExitCode::NoAccess,
                         "the registry does not stop changing; nothing is exported, try again");
    }
    const std::string text = FormatRegistryFile(*trees);
    CheckFileSize(text.size(), options.file);
    WriteOutput(options.file, text);
    return ExitCode::Success;
}

/// @return it was not there like this
bool ImportValue(HKEY key, const RegistryValue& value, const RegistryPath& path)
{
    if (const auto former = ReadRegistryValue(key, value.name, path); former && *former == value)
    {
        return false;
    }
    const auto size = static_cast<DWORD>(value.data.size());
    CheckRegistry(RegSetValueEx(key, value.name.c_str(), 0, value.type, value.data.data(), size),
                  Place(path, value.name));
    return true;
}

/// Counts what an import does, and where it is.
struct ImportProgress
{
    std::size_t line = 0;
    std::size_t values = 0;
    std::size_t changed = 0;
};

void ImportKey(const FileKey& fileKey, ImportProgress& progress)
{
    progress.line = fileKey.line;
    HKEY opened = 0;
    CheckRegistry(RegCreateKey(fileKey.path.root, fileKey.path.keys.c_str(), &opened),
                  PathText(fileKey.path));
    const CUniqueKey key(opened);
    for (const FileValue& fileValue : fileKey.values)
    {
        progress.line = fileValue.line;
        progress.changed += ImportValue(opened, fileValue.value, fileKey.path) ? 1U : 0U;
        ++progress.values;
    }
}

ExitCode Import(const RegistryOptions& options)
{
    const std::string name = options.file == kStandardStream ? "standard input" : options.file;
    const std::string bytes = ReadInput(options.file, kLargestFile + 1);
    CheckFileSize(bytes.size(), name);
    const std::vector<FileKey> keys = ParseRegistryFile(bytes, name);
    ImportProgress progress;
    try
    {
        for (const FileKey& key : keys)
        {
            ImportKey(key, progress);
        }
    }
    catch (const CToolError& error)
    {
        throw CToolError(error.Code(),
                         fmt::format("{}:{}: {}; the lines above it are imported, those from it on are not",
                                     name,
                                     progress.line,
                                     error.what()));
    }
    Flush(HKEY_LOCAL_MACHINE);
    WriteOutput("-",
                fmt::format("{}: {} keys, {} values, {} of them changed\n",
                            name,
                            keys.size(),
                            progress.values,
                            progress.changed));
    return ExitCode::Success;
}

/// A read that changes overtook could miss keys and values that nobody has deleted.
std::vector<RegistryTree> ReadWhenQuiet(CWatchedTrees& watched)
{
    auto trees = watched.ReadAtOneMoment();
    while (!trees)
    {
        trees = watched.ReadAtOneMoment();
    }
    return std::move(*trees);
}

ExitCode Watch(const RegistryOptions& options)
{
    CWatchedTrees watched(options.Paths());
    std::vector<RegistryTree> former = ReadWhenQuiet(watched);
    Tell(fmt::format("watching {}", options.key.empty() ? "all keys" : PathText(options.Path())));
    std::size_t shown = 0;
    for (;;)
    {
        watched.Wait();
        std::vector<RegistryTree> now = ReadWhenQuiet(watched);
        for (const RegistryDifference& difference : FindDifferences(former, now))
        {
            WriteOutput("-",
                        (options.isJson ? JsonDifference(difference) : DifferenceText(difference)) + '\n');
            if (++shown == options.count)
            {
                return ExitCode::Success;
            }
        }
        former = std::move(now);
    }
}

// What an action takes on the command line.
constexpr unsigned kKey = 0x1;
constexpr unsigned kKeyMaybe = 0x2;
constexpr unsigned kValue = 0x4;
constexpr unsigned kValueMaybe = 0x8;
constexpr unsigned kData = 0x10;
constexpr unsigned kDepth = 0x20;
constexpr unsigned kRecursive = 0x40;
constexpr unsigned kOutput = 0x80;
constexpr unsigned kInput = 0x100;
constexpr unsigned kCount = 0x200;
constexpr unsigned kJson = 0x400;
constexpr unsigned kMakesRegistry = 0x800; ///< a new registry is made where there is none

using RegistryAction = ToolAction<RegistryOptions>;

// clang-format off
constexpr RegistryAction kActions[] = {
    {"get", "Show the data of a value; without VALUE, of the unnamed one", kKey | kValueMaybe | kJson,
     "Example: zo registry get HKLM/Software/Zo Serial", Get},
    {"set", "Write a value, and make its key where it is missing", kKey | kValue | kData | kMakesRegistry,
     "Without --type a value keeps the type that it has. A new one becomes a dword or a qword when DATA is a "
     "number without leading zeros, expand when there is a %NAME% in it, else a string. DATA of a binary are "
     "hexadecimal digits, those of a multi lines. VALUE '' is the unnamed value; arguments behind -- are no options.\n"
     "Example: zo registry set HKLM/Software/Zo Serial 100234 --type string\n"
     "Example: zo registry set 'HKLM\\Software\\Zo' Mask 0xff", Set},
    {"list", "Show keys and values as a tree; without KEY, all", kKeyMaybe | kDepth | kJson,
     "Example: zo registry list HKLM --depth 2", List},
    {"delete", "Delete a value, or without VALUE a key", kKey | kValueMaybe | kRecursive,
     "Example: zo registry delete HKLM/Software/Zo Serial\n"
     "Example: zo registry delete HKLM/Software/Zo --recursive", Delete},
    {"export", "Write keys and values as text for version control; without KEY, all", kKeyMaybe | kOutput,
     "Example: zo registry export HKLM/Software/Zo -o zo.registry", Export},
    {"import", "Write the keys and values of an exported file; others stay", kInput | kMakesRegistry,
     "Example: zo registry import zo.registry", Import},
    {"watch", "Show changes by any program until Ctrl-C; without KEY, all", kKeyMaybe | kCount | kJson,
     "Example: zo registry watch HKLM/Software/Zo\n"
     "Example: zo registry watch HKCU --count 1", Watch},
};
// clang-format on

constexpr const char* kRegistryFooter =
    "KEY is a root key, HKEY_LOCAL_MACHINE or HKLM for example, and keys behind it, with \\ or / in between. "
    "The registry is $ZO_REGISTRY, else the one in $XDG_STATE_HOME or ~/.local/state.\n"
    "Example: zo registry list HKLM\n"
    "Example: zo registry get HKLM/Software/Zo Serial";

void AddKeyAndValue(CLI::App& command, unsigned takes, RegistryOptions& options)
{
    if ((takes & (kKey | kKeyMaybe)) != 0)
    {
        command.add_option("key", options.key, "Key")->type_name("KEY")->required((takes & kKey) != 0);
    }
    if ((takes & (kValue | kValueMaybe)) != 0)
    {
        command.add_option("value", options.value, "Name of the value")
            ->type_name("VALUE")
            ->required((takes & kValue) != 0);
    }
    if ((takes & kData) != 0)
    {
        command.add_option("data", options.data, "Data")->type_name("DATA")->required();
        command.add_option("-t,--type", options.type, "Type of the value")
            ->type_name(ValueTypeNames())
            ->check([](const std::string& name) {
                return FindValueType(name) != nullptr ? "" : name + " is none of " + ValueTypeNames();
            });
    }
}

void AddOptions(CLI::App& command, unsigned takes, RegistryOptions& options)
{
    AddKeyAndValue(command, takes, options);
    if ((takes & kDepth) != 0)
    {
        command.add_option("--depth", options.depth, "So many levels of keys below KEY")->type_name("N");
    }
    if ((takes & kRecursive) != 0)
    {
        command.add_flag("-r,--recursive", options.isRecursive, "With all keys below it");
    }
    if ((takes & kOutput) != 0)
    {
        command.add_option("-o,--output", options.file, "File to write; standard output unless given")
            ->type_name("FILE");
    }
    if ((takes & kInput) != 0)
    {
        command.add_option("input", options.file, "File to read; - is standard input")
            ->type_name("FILE")
            ->required();
    }
    if ((takes & kCount) != 0)
    {
        command.add_option("--count", options.count, "End after so many changes")
            ->type_name("N")
            ->check(CLI::Range(1, std::numeric_limits<int>::max(), "POSITIVE"));
    }
    if ((takes & kJson) != 0)
    {
        command.add_flag("--json", options.isJson, "As JSON, one object a line");
    }
    command.add_option("--file", options.registry, "Database file in place of $ZO_REGISTRY")
        ->type_name("PATH");
}

/// A misspelt name of a registry that is to be read makes no new one.
void ChooseRegistry(const std::string& file, bool isMade)
{
    if (file.empty())
    {
        return;
    }
    std::error_code error;
    if (!isMade && !std::filesystem::exists(file, error))
    {
        throw CToolError(
            ExitCode::NoAccess,
            fmt::format("cannot read {}: {}", file, std::strerror(error ? error.value() : ENOENT)));
    }
    SetRegistryFile(file.c_str());
}

ExitCode Run(const RegistryAction& action, const RegistryOptions& options)
{
    ChooseRegistry(options.registry, (action.takes & kMakesRegistry) != 0);
    try
    {
        return action.run(options);
    }
    catch (const CTextFault& fault)
    {
        throw CToolError(ExitCode::Usage, fault.what());
    }
}

} // namespace

void AddRegistryCommands(CLI::App& tool, ExitCode& result)
{
    CLI::App& registry = *tool.add_subcommand("registry", "The instrument's registry: read, write, watch");
    registry.require_subcommand(1);
    registry.footer(kRegistryFooter);
    const auto options = std::make_shared<RegistryOptions>();
    const auto run = [](const CLI::App& command, const RegistryAction& action, RegistryOptions& given) {
        const CLI::Option* const value = command.get_option_no_throw("value");
        given.isValueGiven = value != nullptr && value->count() != 0;
        return Run(action, given);
    };
    AddActions(registry, std::span<const RegistryAction>(kActions), options, &AddOptions, run, result);
}

} // namespace ZoVelkor::Tools
