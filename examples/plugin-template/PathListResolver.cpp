// SPDX-License-Identifier: Apache-2.0

// A plug-in to begin from: files "*.pathlist" are text in UTF-8 with a path in each line. An empty
// line and one that begins with "#" holds none.

#include "syncplugin/SyncPlugin.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Halvern::SyncPlugin;
namespace fs = std::filesystem;
using WideText = std::basic_string<WideChar>;

// A longer file is no list of paths, and memory has bounds.
constexpr std::uintmax_t LargestFile = 64u << 20;

WideText Widened(const std::string& text)
{
    return fs::u8path(text).string<WideChar>();
}

std::string Narrowed(const WideChar* text)
{
    return fs::path(text).u8string();
}

/// The lines of a file without their "\n". The last one is what stands behind the last "\n".
std::vector<std::string> ReadLines(const fs::path& file)
{
    if (fs::file_size(file) > LargestFile)
        throw std::runtime_error("is too large for a list of paths");
    std::ifstream stream(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream || text.size() != fs::file_size(file))
        throw std::runtime_error("cannot be read");
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1)
        lines.push_back(text.substr(begin, end - begin));
    lines.push_back(text.substr(begin));
    return lines;
}

/// Where the path of a line ends; 0 when it holds none.
std::size_t PathEnd(const std::string& line)
{
    if (line.empty() || line.front() == '#')
        return 0;
    return line.back() == '\r' ? line.size() - 1 : line.size();
}

void Store(const WideText& text, WideChar (&field)[MaxLinkText])
{
    // A path that is cut would be another path.
    if (text.size() >= MaxLinkText)
        throw std::runtime_error("holds a path of more than 259 characters");
    std::copy_n(text.c_str(), text.size() + 1, field);
}

/// The number of the line is what finds a link again when two have equal paths.
FileLinkInfo Link(std::size_t line, const std::string& path)
{
    FileLinkInfo link = {};
    link.size = sizeof(FileLinkInfo);
    Store(Widened(std::to_string(line + 1)), link.referenceId);
    Store(Widened(path), link.path);
    return link;
}

std::vector<FileLinkInfo> LinksOf(const std::vector<std::string>& lines)
{
    std::vector<FileLinkInfo> links;
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (const std::size_t end = PathEnd(lines[i]))
            links.push_back(Link(i, lines[i].substr(0, end)));
    return links;
}

/// The line that a link names by its referenceId.
std::string& LineOf(const FileLinkInfo& link, std::vector<std::string>& lines)
{
    const std::size_t number = std::strtoul(Narrowed(link.referenceId).c_str(), nullptr, 10);
    if (number < 1 || number > lines.size() || PathEnd(lines[number - 1]) == 0)
        throw std::runtime_error("holds no path in line " + std::to_string(number));
    return lines[number - 1];
}

/// Whoever opens the file meets the old lines or the new ones. What may follow a power cut is
/// beyond the standard library: a product flushes the new file to the disk before it renames it.
void Replace(const fs::path& file, const std::vector<std::string>& lines)
{
    fs::path other = file;
    other += ".new";
    std::ofstream stream(other, std::ios::binary);
    for (std::size_t i = 0; i < lines.size(); ++i)
        stream << (i == 0 ? "" : "\n") << lines[i];
    stream.close();
    std::error_code error;
    if (!stream)
        error = std::make_error_code(std::errc::io_error);
    else
        fs::permissions(other, fs::status(file).permissions(), error);
    if (!error)
        fs::rename(other, file, error);
    if (error) {
        std::error_code ignored;
        fs::remove(other, ignored);
        throw std::runtime_error("cannot be replaced: " + error.message());
    }
}

/// Exceptions must not leave the library: they become a failure with its reason in the log.
template <typename Work>
bool Try(const WideChar* file, IFileLinkResolverContext* context, Work work)
{
    std::string reason;
    try {
        work();
        return true;
    } catch (const std::exception& exception) {
        reason = exception.what();
    }
    const WideText message = file + (WideChar(' ') + WideText(reason.begin(), reason.end()));
    context->GetLogger()->LogError(message.c_str());
    return false;
}

class Resolver : public IFileLinkResolver
{
public:
    bool GetFileLinks(const WideChar* file, FileLinkInfo** links, int* count,
                      IFileLinkResolverContext* context) override
    {
        return Try(file, context, [&] {
            const std::vector<FileLinkInfo> found = LinksOf(ReadLines(file));
            *links = new FileLinkInfo[found.size()];
            std::copy(found.begin(), found.end(), *links);
            *count = static_cast<int>(found.size());
        });
    }

    bool RepathFileLinks(const WideChar* file, const FileLinkInfo* links, int count,
                         IFileLinkResolverContext* context) override
    {
        return Try(file, context, [&] {
            std::vector<std::string> lines = ReadLines(file);
            const std::vector<std::string> before = lines;
            for (const FileLinkInfo* link = links; link != links + count; ++link) {
                std::string& line = LineOf(*link, lines);
                line.replace(0, PathEnd(line), Narrowed(link->path));
            }
            if (lines != before)
                Replace(file, lines);
        });
    }
};

class Factory : public IFileLinkResolverFactory
{
public:
    IFileLinkResolver* CreateFileLinkResolver() override { return new Resolver; }
};

} // namespace

SYNCPLUGIN_EXPORT IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    return new Factory;
}
