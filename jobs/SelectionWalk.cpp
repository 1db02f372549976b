// SPDX-License-Identifier: Apache-2.0

#include "SelectionWalk.h"

#include "base/Directory.h"
#include "base/FileHandle.h"
#include "base/NativePath.h"
#include "base/Units.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace Halvern::Jobs {

namespace {

using Base::EntryKind;
using Base::FolderEntry;

/// More than people write; a file that is larger is something else.
constexpr qsizetype LargestRulesFile = qsizetype(1024) * 1024;

QString Text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

std::filesystem::path Native(const QString& path)
{
    return Base::NativePath(Base::Units(path));
}

Base::FileResult ReadAll(Base::Handle handle, QByteArray& content)
{
    std::vector<char> buffer(std::size_t(64) * 1024);
    for (;;) {
        std::size_t got = 0;
        const Base::FileResult read = Base::ReadSome(handle, std::uint64_t(content.size()),
                                                     buffer.data(), buffer.size(), got);
        if (!read || got == 0)
            return read;
        content.append(buffer.data(), qsizetype(got));
        if (content.size() > LargestRulesFile)
            return Base::FileResult::Failed("larger than 1 MiB");
    }
}

Base::FileResult ReadFile(const QString& file, QByteArray& content)
{
    Base::Handle handle = Base::NoHandle;
    if (const Base::FileResult opened = Base::OpenForReading(Native(file), handle); !opened)
        return opened;
    const Base::FileResult read = ReadAll(handle, content);
    Base::Close(handle);
    return read;
}

/// What a folder holds, in the order of the import.
struct Content
{
    std::vector<FolderEntry> others;
    std::vector<FolderEntry> folders;
    std::optional<FolderEntry> rules;
};

/// The order in which the module lists folders.
void Sort(std::vector<FolderEntry>& entries)
{
    struct Keyed
    {
        QString lower;
        QString name;
        std::size_t at;
    };
    std::vector<Keyed> keys;
    keys.reserve(entries.size());
    for (std::size_t at = 0; at < entries.size(); ++at) {
        const QString name = Text(entries[at].name);
        keys.push_back({name.toLower(), name, at});
    }
    std::sort(keys.begin(), keys.end(), [](const Keyed& a, const Keyed& b) {
        return std::tie(a.lower, a.name) < std::tie(b.lower, b.name);
    });
    std::vector<FolderEntry> sorted;
    sorted.reserve(entries.size());
    for (const Keyed& key : keys)
        sorted.push_back(std::move(entries[key.at]));
    entries = std::move(sorted);
}

class Walk
{
public:
    Walk(const ExcludeRules& rules, const std::function<bool()>& isCancelled,
         const QStringList& inside)
        : m_rules(rules), m_isCancelled(isCancelled), m_inside(inside)
    {}
    SelectionListing List(const QStringList& sources)
    {
        for (const QString& source : sources)
            TakeSource(source);
        return std::move(m_listing);
    }

private:
    /// A folder whose content is still to be listed.
    struct Folder
    {
        QString path;
        bool isHidden = false;
        /// How many files with patterns stand above it.
        std::size_t rulesFiles = 0;
        /// Of an excluded one only what was given itself is taken.
        bool isExcluded = false;
    };

    bool IsCancelled();
    void TakeSource(const QString& source);
    void TakeGiven(const QString& path);
    bool HoldsGiven(const QString& folder) const;
    void TakeFolder(const Folder& folder);
    bool ListContent(const QString& folder, Content& content);
    bool AddRules(const QString& folder, const FolderEntry& file);
    void TakeOther(const Folder& folder, const FolderEntry& entry);
    void TakeKind(const QString& path, const FolderEntry& entry, bool isGiven);
    bool IsTextAndWanted(const QString& path, const FolderEntry& entry, bool isExcluded);
    void Append(const QString& path, bool isFolder, bool isHidden);
    void LeaveOut(const QString& path, Remark remark, const QString& detail = {})
    {
        m_listing.leftOut.append({path, remark, detail});
    }
    QString NameInSource(const QString& path) const { return path.mid(m_source.size() + 1); }

    ExcludeRules m_rules;
    const std::function<bool()>& m_isCancelled;
    /// Given though they lie in a folder that is given too, and not met yet.
    QStringList m_inside;
    SelectionListing m_listing;
    QString m_source;
    /// Where names below the target begin.
    qsizetype m_nameBegin = 0;
    /// The next one is the last.
    std::vector<Folder> m_pending;
};

bool Walk::IsCancelled()
{
    if (m_listing.isComplete && m_isCancelled())
        m_listing.isComplete = false;
    return !m_listing.isComplete;
}

void Walk::TakeSource(const QString& source)
{
    if (IsCancelled())
        return;
    m_source = source;
    m_nameBegin = source.lastIndexOf(u'/') + 1;
    TakeGiven(source);
    // Behind a symbolic link, or in a folder that could not be listed.
    for (const QString& path : QStringList(m_inside))
        if (path.startsWith(source + u'/') && m_inside.removeOne(path) && !IsCancelled())
            TakeGiven(path);
}

bool Walk::HoldsGiven(const QString& folder) const
{
    return std::any_of(m_inside.begin(), m_inside.end(),
                       [&](const QString& path) { return path.startsWith(folder + u'/'); });
}

void Walk::TakeGiven(const QString& source)
{
    FolderEntry entry = Base::ReadEntry(Native(source));
    if (entry.kind != EntryKind::Folder) {
        // It led to a file when the sources were checked.
        if (entry.kind == EntryKind::LinkToNothing)
            entry.kind = EntryKind::Missing;
        TakeKind(source, entry, true);
        return;
    }
    m_pending.push_back({source, entry.isHidden, 0, false});
    while (!m_pending.empty() && !IsCancelled()) {
        const Folder folder = std::move(m_pending.back());
        m_pending.pop_back();
        TakeFolder(folder);
    }
    m_pending.clear();
}

void Walk::TakeFolder(const Folder& folder)
{
    if (!folder.isExcluded)
        Append(folder.path, true, folder.isHidden);
    m_rules.KeepFiles(folder.rulesFiles);
    Content content;
    if (!ListContent(folder.path, content))
        return;
    if (content.rules && !AddRules(folder.path, *content.rules))
        return;
    for (const FolderEntry& entry : content.others) {
        if (IsCancelled())
            return;
        TakeOther(folder, entry);
    }
    const std::size_t first = m_pending.size();
    for (const FolderEntry& entry : content.folders) {
        if (IsCancelled())
            return;
        const QString path = folder.path + u'/' + Text(entry.name);
        const bool isWanted = IsTextAndWanted(path, entry, folder.isExcluded);
        if (isWanted || HoldsGiven(path))
            m_pending.push_back({path, entry.isHidden, m_rules.FileCount(), !isWanted});
    }
    std::reverse(m_pending.begin() + std::ptrdiff_t(first), m_pending.end());
}

/// False after a cancel, too. Of a folder that cannot be listed to its end nothing is taken: its
/// patterns may be in what is missing.
bool Walk::ListContent(const QString& folder, Content& content)
{
    const Base::FileResult listed = Base::VisitEntries(Native(folder), [&](FolderEntry&& entry) {
        if (entry.isText && m_rules.IsRulesFile(Text(entry.name)))
            content.rules = entry;
        (entry.kind == EntryKind::Folder ? content.folders : content.others)
            .push_back(std::move(entry));
        return !IsCancelled();
    });
    if (!listed) {
        const bool isGone = Base::ReadEntry(Native(folder)).kind == EntryKind::Missing;
        LeaveOut(folder, isGone ? Remark::Vanished : Remark::NotReadable,
                 isGone ? QString() : Text(listed.Text()));
    }
    Sort(content.others);
    Sort(content.folders);
    return listed && m_listing.isComplete;
}

bool Walk::AddRules(const QString& folder, const FolderEntry& file)
{
    const QString path = folder + u'/' + Text(file.name);
    QByteArray content;
    const Base::FileResult read = ReadFile(path, content);
    const QString fault = read ? ExcludeRules::FaultIn(content) : Text(read.Text());
    const bool isAdded =
        read && fault.isEmpty() && m_rules.AddFile(NameInSource(folder), path, content);
    if (!isAdded)
        LeaveOut(path, Remark::NotReadable,
                 fault + QStringLiteral("; nothing of its folder is imported"));
    return isAdded;
}

void Walk::TakeOther(const Folder& folder, const FolderEntry& entry)
{
    const QString path = folder.path + u'/' + Text(entry.name);
    const bool isGiven = m_inside.contains(path);
    if (IsTextAndWanted(path, entry, folder.isExcluded))
        TakeKind(path, entry, isGiven);
}

bool Walk::IsTextAndWanted(const QString& path, const FolderEntry& entry, bool isExcluded)
{
    const bool isFolder = entry.kind == EntryKind::Folder;
    if (m_inside.removeOne(path))
        return true;
    if (isExcluded)
        return false;
    if (const auto match = m_rules.Match(NameInSource(path), isFolder))
        LeaveOut(path, Remark::Excluded, match->Text());
    else if (!entry.isText)
        LeaveOut(path, Remark::NameNotText);
    else
        return true;
    return false;
}

void Walk::TakeKind(const QString& path, const FolderEntry& entry, bool isGiven)
{
    switch (entry.kind) {
    case EntryKind::File:
    case EntryKind::Folder:
        Append(path, entry.kind == EntryKind::Folder, entry.isHidden);
        break;
    case EntryKind::Other:
        LeaveOut(path, isGiven ? Remark::SourceNoFile : Remark::NoFile);
        break;
    case EntryKind::LinkToFolder:
        LeaveOut(path, Remark::LinkToFolder);
        break;
    case EntryKind::LinkToNothing:
        LeaveOut(path, Remark::LinkToNothing);
        break;
    case EntryKind::Missing:
        LeaveOut(path, Remark::Vanished);
        break;
    case EntryKind::Unknown:
        LeaveOut(path, Remark::NotReadable, Text(entry.reason.Text()));
        break;
    }
}

/// What holds a ":" would be taken for an absolute path.
void Walk::Append(const QString& path, bool isFolder, bool isHidden)
{
    const QString name = path.mid(m_nameBegin);
    if (name.contains(u':'))
        LeaveOut(path, Remark::ColonInName);
    else
        m_listing.entries.append({path, name, isFolder, path.size() > m_source.size(), isHidden});
}

} // namespace

SelectionListing WalkSelection(const QStringList& sources, const ExcludeRules& rules,
                               const std::function<bool()>& isCancelled, const QStringList& inside)
{
    return Walk(rules, isCancelled, inside).List(sources);
}

} // namespace Halvern::Jobs
