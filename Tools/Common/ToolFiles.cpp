#include "ToolFiles.h"

#include "CToolError.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace ZoVelkor::Tools
{

namespace
{

struct FileCloser
{
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

using CFile = std::unique_ptr<std::FILE, FileCloser>;

[[noreturn]] void Fail(const char* verb, const std::string& name)
{
    throw CToolError(ExitCode::NoAccess, fmt::format("cannot {} {}: {}", verb, name, std::strerror(errno)));
}

CFile Open(const std::string& name, const char* mode, const char* verb)
{
    CFile file(std::fopen(name.c_str(), mode));
    if (file == nullptr)
    {
        Fail(verb, name);
    }
    return file;
}

std::string ReadStream(std::FILE* file, const std::string& name, std::size_t limit)
{
    constexpr std::size_t kPortion = std::size_t{1} << 16U;
    std::string bytes;
    std::size_t read = kPortion;
    while (read == kPortion && bytes.size() < limit)
    {
        const std::size_t former = bytes.size();
        const std::size_t portion = std::min(kPortion, limit - former);
        bytes.resize(former + portion);
        read = std::fread(bytes.data() + former, 1, portion, file);
        bytes.resize(former + read);
    }
    if (std::ferror(file) != 0)
    {
        Fail("read", name);
    }
    return bytes;
}

bool WriteStream(std::FILE* file, std::string_view bytes)
{
    return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && std::fflush(file) == 0;
}

} // namespace

std::string ReadInput(const std::string& name, std::size_t limit)
{
    if (name == kStandardStream)
    {
        return ReadStream(stdin, "standard input", limit);
    }
    return ReadStream(Open(name, "rb", "read").get(), name, limit);
}

void WriteOutput(const std::string& name, std::string_view bytes, bool isMore)
{
    if (name != kStandardStream)
    {
        CFile file = Open(name, isMore ? "ab" : "wb", "write");
        if (!WriteStream(file.get(), bytes) || std::fclose(file.release()) != 0)
        {
            Fail("write", name);
        }
    }
    else if (!WriteStream(stdout, bytes))
    {
        if (errno == EPIPE)
        {
            throw ReaderGone{};
        }
        Fail("write", "standard output");
    }
}

void Tell(std::string_view message) noexcept
{
    std::fprintf(stderr, "zo: %.*s\n", static_cast<int>(message.size()), message.data());
}

std::string Printable(std::string_view text)
{
    std::string printable(text);
    std::replace_if(
        printable.begin(), printable.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return printable;
}

} // namespace ZoVelkor::Tools
