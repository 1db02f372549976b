// SPDX-License-Identifier: Apache-2.0

// A plug-in to begin from: files "*.pathlist" are text in UTF-8 with a path in each line. An empty
// line and one that begins with "#" holds none.

#include "pluginkit/PluginKit.h"

#include <algorithm>

namespace {

using namespace Halvern::PluginKit;

/// A path with its place in the file.
struct Entry
{
    /// The number of the line finds a link again when two have equal paths.
    std::string id;
    std::string path;
    std::uint64_t begin;
    std::uint64_t end;
};

/// What a line can hold.
std::string LineOf(const std::string& path)
{
    if (path.find_first_of("\r\n") != std::string::npos)
        throw FormatError("a line cannot hold the path " + path);
    return path.starts_with('#') ? "./" + path : path;
}

class PathListDocument : public Document
{
public:
    explicit PathListDocument(const std::filesystem::path& file) : m_file(file)
    {
        // A longer file is no list of paths, and memory has bounds.
        constexpr std::uint64_t largest = 64u << 20;
        if (m_file.Size() > largest)
            throw FormatError("too large for a list of paths");
        const std::string text = m_file.Read(0, m_file.Size());
        std::size_t begin = 0;
        for (std::size_t number = 1; begin < text.size(); ++number) {
            const std::size_t end = std::min(text.find('\n', begin), text.size());
            AddLine(number, begin, text.substr(begin, end - begin));
            begin = end + 1;
        }
    }

    std::vector<DocumentLink> Links() const override
    {
        std::vector<DocumentLink> links;
        for (const Entry& entry : m_entries)
            links.push_back({entry.id, entry.path});
        return links;
    }

    /// The file is replaced in one step, and every byte beside the paths stays.
    void Rewrite(const NewPaths& paths) override
    {
        std::vector<FileEdit> edits;
        for (const Entry& entry : m_entries)
            if (const auto found = paths.find(entry.id); found != paths.end())
                edits.push_back({entry.begin, entry.end, LineOf(found->second)});
        ReplaceSpans(m_file, std::move(edits));
    }

private:
    void AddLine(std::size_t number, std::uint64_t begin, std::string line)
    {
        if (line.ends_with('\r'))
            line.pop_back();
        if (line.empty() || line.front() == '#')
            return;
        if (!IsUtf8(line))
            throw FormatError("line " + std::to_string(number) + " is no UTF-8", begin);
        m_entries.push_back({std::to_string(number), line, begin, begin + line.size()});
    }

    InputFile m_file;
    std::vector<Entry> m_entries;
};

} // namespace

PLUGINKIT_EXPORT_RESOLVER(DocumentResolverFor<PathListDocument>);
