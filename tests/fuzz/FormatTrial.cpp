// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"

#include "Difference.h"
#include "ResolverCalls.h"
#include "Scratch.h"

#include "pluginkit/FilePaths.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <set>

namespace Halvern::Fuzz {

namespace {

namespace fs = std::filesystem;

/// What a character of a path takes at most where it is written: "&#1114111;",
/// "\\X4\\0001F333\\X0\\".
constexpr std::size_t BytesPerByte = 12;
constexpr std::size_t BytesAroundPath = 64;

/// One file being tried.
class FormatTrial
{
public:
    FormatTrial(const Format& format, std::string_view bytes)
        : m_format(format), m_file(ScratchFolder() / format.fileName), m_bytes(bytes),
          m_choices(bytes)
    {}
    /// The next input finds the folder as this one did.
    ~FormatTrial()
    {
        std::error_code ignored;
        fs::remove(m_file, ignored);
    }
    FormatTrial(const FormatTrial&) = delete;
    FormatTrial& operator=(const FormatTrial&) = delete;

    void Run();

private:
    void RequireDistinctIds() const;
    bool MayAsk(const std::string& id, const std::string& path) const;
    void RequireWritten(const Paths& wanted);
    void RequireLinks(const Paths& wanted);
    void RequirePlaces(const Paths& wanted);
    void RequireRest(const Paths& wanted);
    void RequireLeftAlone(const Paths& wanted);
    void RequireSameInTwoSteps(const Paths& wanted);
    fs::path Place(const std::string& path) const;
    bool IsSameFile(const std::string& a, const std::string& b) const;
    std::string PathOf(const std::string& id) const;
    void RequirePath(const std::string& id, const std::string& path, const Links& after);

    const Format& m_format;
    const fs::path m_file;
    const std::string_view m_bytes;
    Choices m_choices;
    Links m_links;
    std::string m_written;
};

void FormatTrial::Run()
{
    WriteFile(m_file, m_bytes);
    std::optional<Links> links = ReadLinks(m_format.resolver, m_file);
    if (!links || links->empty())
        return;
    m_links = std::move(*links);
    RequireDistinctIds();
    Paths wanted = ChoosePaths(m_links, m_choices);
    std::erase_if(wanted, [&](const auto& asked) { return !MayAsk(asked.first, asked.second); });
    if (wanted.empty() || std::any_of(wanted.begin(), wanted.end(), [](const auto& path) {
            return PluginKit::ToUtf16(path.second)->size() > PluginKit::MaxLinkUnits;
        }))
        return;
    if (!RewriteLinks(m_format.resolver, m_file, wanted))
        return Require(ReadFile(m_file) == m_bytes, "a rewrite that failed changed the file");
    RequireWritten(wanted);
}

void FormatTrial::RequireDistinctIds() const
{
    std::set<std::string_view> ids;
    for (const Link& link : m_links)
        Require(ids.insert(link.id).second, "two links have the id " + link.id);
}

bool FormatTrial::MayAsk(const std::string& id, const std::string& path) const
{
    const auto link = std::find_if(m_links.begin(), m_links.end(),
                                   [&](const Link& known) { return known.id == id; });
    return (!m_format.isPath || m_format.isPath(*link)) &&
           (!m_format.mayAsk || m_format.mayAsk(*link, path));
}

void FormatTrial::RequireWritten(const Paths& wanted)
{
    m_written = ReadFile(m_file);
    if (m_format.areIdsVague) {
        RequirePlaces(wanted);
        return RequireRest(wanted);
    }
    RequireLinks(wanted);
    RequireLeftAlone(wanted);
    RequireRest(wanted);
    if (wanted.size() > 1)
        RequireSameInTwoSteps(wanted);
}

fs::path FormatTrial::Place(const std::string& path) const
{
    return PluginKit::NormalPath(PluginKit::PathIn(m_file.parent_path(), path));
}

bool FormatTrial::IsSameFile(const std::string& a, const std::string& b) const
{
    return a == b || Place(a) == Place(b);
}

/// What the file says to an id that it does not list.
std::string FormatTrial::PathOf(const std::string& id) const
{
    return m_format.open(m_file)->UnlistedPathOf(id).value_or("(none)");
}

void FormatTrial::RequirePath(const std::string& id, const std::string& path, const Links& after)
{
    const auto found =
        std::find_if(after.begin(), after.end(), [&](const Link& link) { return link.id == id; });
    const std::string now = found == after.end() ? PathOf(id) : found->path;
    Require(IsSameFile(now, path), "link " + id + " is " + now + " and should be " + path);
}

void FormatTrial::RequireLinks(const Paths& wanted)
{
    const Links after = RequireReadable(m_format.resolver, m_file);
    std::set<std::string> before;
    for (const Link& link : m_links) {
        before.insert(link.id);
        const auto asked = wanted.find(link.id);
        // What goes by a name depends on what is beside the file.
        if (asked != wanted.end())
            RequirePath(link.id, asked->second, after);
        else if (!IsCompanion(link.id) && !IsInSet(link.id) &&
                 (!m_format.isPath || m_format.isPath(link)))
            RequirePath(link.id, link.path, after);
    }
    for (const Link& link : after)
        Require(before.contains(link.id) || IsCompanion(link.id) || IsInSet(link.id) ||
                    m_format.open(m_file)->UnlistedPathOf(link.id),
                "a link that was not there: " + link.id);
}

void FormatTrial::RequirePlaces(const Paths& wanted)
{
    const Links after = RequireReadable(m_format.resolver, m_file);
    std::set<fs::path> found;
    std::set<fs::path> due;
    for (const Link& link : after)
        found.insert(Place(link.path));
    for (const Link& link : m_links) {
        const auto asked = wanted.find(link.id);
        const std::string& path = asked == wanted.end() ? link.path : asked->second;
        due.insert(Place(path));
        Require(asked == wanted.end() || found.contains(Place(path)), "no link to " + path);
    }
    for (const fs::path& place : found)
        Require(due.contains(place), "a link that was not there: " + place.string());
}

void FormatTrial::RequireLeftAlone(const Paths& wanted)
{
    Require(RewriteLinks(m_format.resolver, m_file, wanted), "the same rewrite again fails");
    Require(ReadFile(m_file) == m_written, "the same rewrite again changes the file");
}

void FormatTrial::RequireRest(const Paths& wanted)
{
    std::size_t limit = m_format.furtherBytes;
    for (const Link& link : m_links)
        if (const auto asked = wanted.find(link.id); asked != wanted.end())
            limit += m_format.placesOfLink *
                     (BytesPerByte * (link.path.size() + asked->second.size()) + BytesAroundPath);
    const std::string after = m_format.content(m_file);
    WriteFile(m_file, m_bytes);
    const std::string before = m_format.content(m_file);
    Require(before.find_first_of(m_format.unseen) != std::string::npos ||
                DifferByAtMost(before, after, limit),
            "more than the links changed in the file");
}

/// The file is as it was at first.
void FormatTrial::RequireSameInTwoSteps(const Paths& wanted)
{
    Paths first;
    Paths second;
    const bool bySets = m_choices.OneIn(2);
    for (const auto& [id, path] : wanted)
        (IsInSet(id) == bySets || m_choices.OneIn(2) ? first : second).emplace(id, path);
    if (!RewriteLinks(m_format.resolver, m_file, first) ||
        !RewriteLinks(m_format.resolver, m_file, second))
        return;
    Require(ReadFile(m_file) == m_written, "two steps give another file than one");
}

} // namespace

void TryFormat(const Format& format, std::string_view bytes)
{
    FormatTrial(format, bytes).Run();
}

} // namespace Halvern::Fuzz
