// SPDX-License-Identifier: Apache-2.0

#include "CallLog.h"

#include "syncplugin/SyncPlugin.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <vector>

// A resolver of a text format:
//
//     link <reference id> <path>      a link; everything after the second blank is the path
//     fail                            reading the file fails
//     throw                           reading the file throws
//     norepath                        rewriting the file fails
//     throwrepath                     rewriting the file throws
//
// The same words in an environment variable (see CallLog.h) hold for every file, and five more:
//
//     lies                            rewriting changes nothing and says that it did
//     misses                          rewriting writes another path than the one wanted
//     drops                           rewriting leaves out the links that it was not asked for
//     overlooks                       reading leaves out the links to files that are not there
//     prints                          every call prints to standard output
//
// Other lines are content. Rewriting changes the paths of the given links and no other byte; the
// new file takes the old one's place when it is complete. A read-only file is not rewritten.

namespace {

using namespace Halvern::SyncPlugin;
namespace Test = Halvern::Test;

struct Line
{
    std::string text;
    std::string referenceId;
    size_t pathAt = std::string::npos;
    size_t pathLength = 0;

    bool IsLink() const { return pathAt != std::string::npos; }
    std::string Path() const { return text.substr(pathAt, pathLength); }
};

Line ParseLine(std::string text)
{
    Line line;
    line.text = std::move(text);
    if (line.text.rfind("link ", 0) != 0)
        return line;
    const size_t blank = line.text.find(' ', 5);
    if (blank == std::string::npos)
        return line;
    line.referenceId = line.text.substr(5, blank - 5);
    line.pathAt = blank + 1;
    const size_t end = line.text.find_first_of("\r\n", line.pathAt);
    line.pathLength = (end == std::string::npos ? line.text.size() : end) - line.pathAt;
    return line;
}

/// The lines with their line ends.
std::vector<Line> ReadLines(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("test resolver: cannot read " + Test::ToUtf8(file));
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    std::vector<Line> lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        lines.push_back(ParseLine(text.substr(at, end - at)));
        at = end;
    }
    return lines;
}

bool HasLine(const std::vector<Line>& lines, const std::string& text)
{
    return Test::IsTold(text) || std::any_of(lines.begin(), lines.end(), [&](const Line& line) {
               return line.text.substr(0, line.text.find_last_not_of("\r\n") + 1) == text;
           });
}

bool Fits(const std::basic_string<WideChar>& text)
{
    return text.size() < size_t(MaxLinkText);
}

class TestResolver : public IFileLinkResolver
{
public:
    bool GetFileLinks(const WideChar* file, FileLinkInfo** links, int* count,
                      IFileLinkResolverContext* context) override
    {
        Test::LogCall("GetFileLinks " + Test::ToUtf8(file));
        Print();
        const std::vector<Line> lines = ReadLines(file);
        if (HasLine(lines, "throw"))
            throw std::runtime_error("test resolver: told to throw");
        if (HasLine(lines, "fail"))
            return Fail(context, "test resolver: told to fail");

        std::vector<FileLinkInfo> found;
        for (const Line& line : lines) {
            if (!line.IsLink() || (Test::IsTold("overlooks") && !LeadsToAFile(file, line.Path())))
                continue;
            const auto referenceId = Test::ToWide(line.referenceId);
            const auto path = Test::ToWide(line.Path());
            if (!Fits(referenceId) || !Fits(path))
                return Fail(context, "test resolver: too long: " + line.text);
            FileLinkInfo& link = found.emplace_back();
            link.size = sizeof(FileLinkInfo);
            std::copy(referenceId.begin(), referenceId.end(), link.referenceId);
            std::copy(path.begin(), path.end(), link.path);
        }
        *count = int(found.size());
        *links = found.empty() ? nullptr : new FileLinkInfo[found.size()];
        std::copy(found.begin(), found.end(), *links);
        return true;
    }

    bool RepathFileLinks(const WideChar* file, const FileLinkInfo* links, int count,
                         IFileLinkResolverContext* context) override
    {
        std::map<std::string, std::string> wanted;
        std::string call = "RepathFileLinks " + Test::ToUtf8(file);
        for (int i = 0; i < count; ++i) {
            const std::string referenceId = Test::ToUtf8(links[i].referenceId);
            const std::string path = Test::ToUtf8(links[i].path);
            wanted[referenceId] = path;
            call += " [" + referenceId + "=" + path + "]";
        }
        const std::map<std::string, std::string> asked = wanted;
        Test::LogCall(call);
        Print();

        std::vector<Line> lines = ReadLines(file);
        if (HasLine(lines, "norepath"))
            return Fail(context, "test resolver: told not to repath");
        if (HasLine(lines, "throwrepath"))
            throw std::runtime_error("test resolver: told to throw");
        if (IsReadOnly(file))
            return Fail(context, "test resolver: the file is read-only");
        if (Test::IsTold("lies"))
            return true;
        for (Line& line : lines) {
            const auto link = wanted.find(line.referenceId);
            if (!line.IsLink() || link == wanted.end())
                continue;
            line.text.replace(line.pathAt, line.pathLength,
                              Test::IsTold("misses") ? "elsewhere.tlk" : link->second);
            wanted.erase(link);
        }
        if (!wanted.empty())
            return Fail(context, "test resolver: no link " + wanted.begin()->first);
        if (Test::IsTold("drops"))
            std::erase_if(lines, [&](const Line& line) {
                return line.IsLink() && !asked.contains(line.referenceId);
            });
        return Write(file, lines);
    }

private:
    static bool Fail(IFileLinkResolverContext* context, const std::string& reason)
    {
        context->GetLogger()->LogError(Test::ToWide(reason).c_str());
        return false;
    }

    static bool LeadsToAFile(const std::filesystem::path& holder, const std::string& path)
    {
        return std::filesystem::exists(holder.parent_path() /
                                       std::filesystem::path(Test::ToWide(path)));
    }

    static void Print()
    {
        if (!Test::IsTold("prints"))
            return;
        std::puts("test resolver: hello");
        std::fflush(stdout);
    }

    /// Asks for the owner's right: a superuser could write whatever the file says.
    static bool IsReadOnly(const std::filesystem::path& file)
    {
        using std::filesystem::perms;
        return (std::filesystem::status(file).permissions() & perms::owner_write) == perms::none;
    }

    static bool Write(const std::filesystem::path& file, const std::vector<Line>& lines)
    {
        std::filesystem::path temporary = file;
        temporary += ".rewritten";
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        for (const Line& line : lines)
            out << line.text;
        out.close();
        if (!out) {
            std::filesystem::remove(temporary);
            return false;
        }
        std::filesystem::permissions(temporary, std::filesystem::status(file).permissions());
        std::filesystem::rename(temporary, file);
        return true;
    }
};

class Factory : public IFileLinkResolverFactory
{
public:
    IFileLinkResolver* CreateFileLinkResolver() override { return new TestResolver; }
};

} // namespace

SYNCPLUGIN_EXPORT IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    return new Factory;
}
