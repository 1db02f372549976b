// SPDX-License-Identifier: Apache-2.0

#include "ResolverCalls.h"

#include "pluginkit/LinkArray.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <memory>
#include <span>

namespace Halvern::Fuzz {

namespace {

using namespace PluginKit;
using SyncPlugin::FileLinkInfo;
using SyncPlugin::WideChar;

/// Keeps the last error.
class Context : public SyncPlugin::IFileLinkResolverContext, public SyncPlugin::IPluginLogger
{
public:
    SyncPlugin::IPluginLogger* GetLogger() override { return this; }
    void LogFatal(const WideChar* text) override { m_error = text; }
    void LogError(const WideChar* text) override { m_error = text; }
    void LogWarn(const WideChar*) override {}
    void LogInfo(const WideChar*) override {}
    void LogDebug(const WideChar*) override {}
    void LogTrace(const WideChar*) override {}

    std::string Error() const { return ToUtf8Lossy(m_error); }

    /// The reasons that the standard library gives for what a resolver should not have done.
    void RequireReason(const std::filesystem::path& file) const
    {
        const std::string text = Error();
        const std::size_t end = text.find(PathToUtf8(file));
        Require(end != std::string::npos, "a failure without a word: " + text);
        const std::string_view reason = std::string_view(text).substr(end + file.native().size());
        for (const char* mistake :
             {": basic_string", ": vector", ": map::", ": _Map", ": std::", ": cannot create",
              ": unknown", ": out of memory", ": array", ": invalid", ": optional", ": bad ",
              ": span", ": deque", ": sto", ": filesystem"})
            Require(!reason.starts_with(mistake), "a mistake of its own: " + text);
    }

private:
    WideString m_error;
};

std::string Text(const WideChar (&field)[SyncPlugin::MaxLinkText])
{
    Require(std::find(field, field + SyncPlugin::MaxLinkText, WideChar(0)) !=
                field + SyncPlugin::MaxLinkText,
            "a text of a record without an end");
    std::optional<std::string> text = LinkText(field);
    Require(text.has_value(), "a text of a record is none");
    return std::move(*text);
}

FileLinkInfo RecordOf(const std::string& id, const std::string& path)
{
    FileLinkInfo record{};
    record.size = sizeof(FileLinkInfo);
    const WideString units = LinkUnits("path", id, path);
    const WideString idUnits = LinkUnits("id", id, id);
    std::copy(units.begin(), units.end(), record.path);
    std::copy(idUnits.begin(), idUnits.end(), record.referenceId);
    return record;
}

std::optional<Links> LinksOf(SyncPlugin::IFileLinkResolver& resolver,
                             const std::filesystem::path& file, Context& context)
{
    FileLinkInfo* records = nullptr;
    int count = -1;
    const WideString name = ToUtf16Lossy(PathToUtf8(file));
    if (!resolver.GetFileLinks(name.c_str(), &records, &count, &context))
        return std::nullopt;
    const std::unique_ptr<FileLinkInfo[]> owned(records);
    Require(count >= 0 && (count == 0 || records), "a count without records");
    Links links;
    for (const FileLinkInfo& record : std::span(records, static_cast<std::size_t>(count)))
        links.push_back({Text(record.referenceId), Text(record.path)});
    return links;
}

} // namespace

std::optional<Links> ReadLinks(SyncPlugin::IFileLinkResolver& resolver,
                               const std::filesystem::path& file)
{
    Context context;
    std::optional<Links> links = LinksOf(resolver, file, context);
    if (!links)
        context.RequireReason(file);
    return links;
}

Links RequireReadable(SyncPlugin::IFileLinkResolver& resolver, const std::filesystem::path& file)
{
    Context context;
    std::optional<Links> links = LinksOf(resolver, file, context);
    Require(links.has_value(), "the rewritten file cannot be read: " + context.Error());
    return std::move(*links);
}

bool RewriteLinks(SyncPlugin::IFileLinkResolver& resolver, const std::filesystem::path& file,
                  const Paths& paths)
{
    std::vector<FileLinkInfo> records;
    records.reserve(paths.size());
    for (const auto& [id, path] : paths)
        records.push_back(RecordOf(id, path));
    Context context;
    const WideString name = ToUtf16Lossy(PathToUtf8(file));
    const bool done = resolver.RepathFileLinks(name.c_str(), records.data(),
                                               static_cast<int>(records.size()), &context);
    if (!done)
        context.RequireReason(file);
    return done;
}

} // namespace Halvern::Fuzz
