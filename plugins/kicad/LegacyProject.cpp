// SPDX-License-Identifier: Apache-2.0

#include "LegacyFiles.h"
#include "Lines.h"
#include "LinkFinder.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Kicad {

namespace {

constexpr std::string_view LibraryExtension = ".lib";
constexpr std::size_t MaxLibraryFolders = 100;

/// Without the escapes of a configuration file.
std::string Unescaped(std::string_view value)
{
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        at += value[at] == '\\' && at + 1 < value.size() ? 1 : 0;
        text += value[at];
    }
    return Utf8OrLatin1(text);
}

class Finder
{
public:
    void AddLine(const Line& line)
    {
        const std::string_view text = line.text;
        const std::size_t equals = text.find('=');
        if (text.starts_with('['))
            m_section = text.substr(0, text.find(']'));
        else if (!line.isCut && equals != std::string_view::npos && equals + 1 < text.size())
            AddSetting(text.substr(0, equals), text.substr(equals + 1), line.begin + equals + 1);
    }

    std::vector<StoredPath> Take(const std::filesystem::path& folder)
    {
        for (StoredPath& library : m_libraries)
            m_links.push_back(Located(std::move(library), folder));
        NumberIds(m_links);
        return std::move(m_links);
    }

private:
    void AddSetting(std::string_view key, std::string_view value, std::uint64_t begin)
    {
        if (m_section == "[eeschema" && key == "LibDir")
            AddFolders(Unescaped(value));
        else if (m_section == "[eeschema/libraries" && key.starts_with("LibName"))
            AddLibrary(std::string(key), value, begin);
        else if ((m_section == "[pcbnew" || m_section == "[schematic_editor") &&
                 key == "PageLayoutDescrFile")
            Push(m_links, {std::string(m_section.substr(1)) + " sheet", Unescaped(value),
                           PathBase::Project, begin, begin + value.size(), Notation::Setting});
    }

    void AddFolders(const std::string& folders)
    {
        for (std::size_t begin = 0; begin < folders.size();) {
            const std::size_t end = std::min(folders.find(';', begin), folders.size());
            if (end > begin && m_folders.size() < MaxLibraryFolders)
                m_folders.push_back(folders.substr(begin, end - begin));
            begin = end + 1;
        }
    }

    void AddLibrary(std::string key, std::string_view value, std::uint64_t begin)
    {
        StoredPath library{std::move(key),
                           Unescaped(value),
                           PathBase::Project,
                           begin,
                           begin + value.size(),
                           Notation::Setting,
                           true};
        if (!library.text.ends_with(LibraryExtension)) {
            library.text += LibraryExtension;
            library.notation = Notation::Library;
        }
        Push(m_libraries, std::move(library));
    }

    static void Push(std::vector<StoredPath>& links, StoredPath stored)
    {
        if (links.size() == MaxLegacyLinks)
            throw FormatError("more than " + std::to_string(MaxLegacyLinks) + " links",
                              stored.begin);
        if (stored.text.size() <= MaxNameSize)
            links.push_back(std::move(stored));
    }

    /// The library as it is found: in the project's folder, or in one of the others.
    StoredPath Located(StoredPath library, const std::filesystem::path& folder) const
    {
        if (NamesExistingFile(library.text, folder))
            return library;
        for (const std::string& other : m_folders) {
            std::string path = other + '/' + library.text;
            if (!NamesExistingFile(path, folder))
                continue;
            library.text = std::move(path);
            break;
        }
        return library;
    }

    std::string m_section;
    std::vector<std::string> m_folders;
    std::vector<StoredPath> m_libraries;
    std::vector<StoredPath> m_links;
};

} // namespace

std::vector<StoredPath> FindInLegacyProject(const InputFile& file)
{
    Finder finder;
    LineReader reader(file);
    while (const std::optional<Line> line = reader.Next())
        finder.AddLine(*line);
    return finder.Take(file.Path().parent_path());
}

} // namespace Halvern::Formats::Kicad
