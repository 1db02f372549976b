// SPDX-License-Identifier: Apache-2.0

// The stages that walk links, against the plainest recursion over trees that are built at once: the
// same targets, calls, records and lines, in the same order.

#include "../fileset/EagerTrees.h"
#include "CopyingFixture.h"
#include "WatchedDatabase.h"
#include "support/PathUtilities.h"

#include <iterator>
#include <random>

namespace Halvern::Test {

namespace {

constexpr const char* Names[] = {"p/a.tlk", "p/b.tlk", "p/sub/c.tlk", "p/D.tlk",
                                 "q/e.tlk", "q/f.tlk", "p/gone.tlk",  "P/A.tlk"};
constexpr const char* LinkPaths[] = {"a.tlk",      "b.tlk",    "sub/c.tlk",    "../c.tlk",
                                     "../q/e.tlk", "f.tlk",    "../p/a.tlk",   "gone.tlk",
                                     "D.tlk",      "none.tlk", "http://h/x.y", "../p/./b.tlk"};
constexpr FileMappingFlag Flags[] = {
    FileMapping::NoFlag,   FileMapping::NoFlag,       FileMapping::Selected,
    FileMapping::Selected, FileMapping::NotFilePath,  FileMapping::IncludeInDatabase,
    FileMapping::Copied,   FileMapping::NeedsRepath,  FileMapping::FileLinksNotSupported,
    FileMapping::Copied,   FileMapping::SkipFileLinks};

class RandomStages : public CopyingFixture
{
protected:
    static constexpr int Seeds = 400;

    int Roll(int sides) { return int(m_random() % unsigned(sides)); }
    template <typename Value, size_t Size>
    Value Pick(const Value (&values)[Size])
    {
        return values[Roll(int(Size))];
    }
    FileLinkList PickLinks()
    {
        FileLinkList links;
        for (int count = Roll(5); count > 0; --count)
            links.append(Link(QString::number(count), Pick(LinkPaths)));
        return links;
    }

    /// A new importer with members whose copies are in a folder of their own.
    void Fill(int seed, Global::CopyOption options = Global::NoCopyOption)
    {
        m_random.seed(unsigned(seed));
        Restart(options);
        const QString folder = QString::number(seed) + '/';
        for (int count = 1 + Roll(7); count > 0; --count) {
            const QString name(Pick(Names));
            const FileMappingFlag flags = Pick(Flags) | Pick(Flags) | Pick(Flags);
            const QString target = Roll(4) == 0 ? QString() : folder + Pick(Names);
            const auto file = Add("src/" + name, target, flags, PickLinks());
            file->SetTargetFileLinks(PickLinks());
            if (Roll(12) == 0)
                file->SetTargetFile(tree.Path("elsewhere/" + name), true);
            if (file->HasTargetFile() && !target.endsWith("gone.tlk"))
                tree.File(QDir(tree.Path()).relativeFilePath(file->GetTargetFile()));
        }
    }
    /// The same, with targets of selected files only, as before targets are assigned.
    void FillForLayout(int seed)
    {
        Fill(seed);
        for (const FileMappingPointer& file : Members())
            if (!file->HasFlag(FileMapping::Selected) && seed % 8 != 0)
                file->SetTargetFile(QString(), true);
        log.Clear();
    }
    QList<FileMappingPointer> Members() const { return importer->GetFileSet()->GetFiles(); }

private:
    std::mt19937 m_random;
};

/// Default targets by recursion.
class PlainLayout
{
public:
    void Assign(const EagerNode& parent)
    {
        if (!FileLink::IsLocalPath(parent.mapping->GetSourceFile()))
            return;
        for (const auto& child : parent.children) {
            AssignOne(*parent.mapping, *child->mapping);
            Assign(*child);
        }
    }

    QStringList lines;

private:
    void AssignOne(const FileMapping& parent, FileMapping& child)
    {
        const QFileInfo source(child.GetSourceFile());
        if (child.HasTargetFile() || child.HasFlag(FileMapping::NotFilePath) ||
            !FileLink::IsLocalPath(child.GetSourceFile()))
            return;
        const QFileInfo holder(parent.GetSourceFile());
        QString path = source.fileName();
        if (source.absolutePath().compare(holder.absolutePath(), Qt::CaseInsensitive) != 0)
            path.prepend(source.dir().dirName() + '/');
        const QString base =
            parent.HasTargetFile()
                ? QFileInfo(parent.GetTargetFile()).absolutePath()
                : SyncFolderManagerLib::FolderManager::GetInstance()->GetCloudCacheFolderPath(
                      false);
        child.SetTargetFile(QDir::cleanPath(base + '/' + path), false);
        lines.append("INFO Target path not set by plugin for file " + child.GetSourceFile() +
                     ". Setting default target path " + child.GetTargetFile() + ".");
    }
};

/// The lines of a tree by recursion.
class PlainTreeLog
{
public:
    PlainTreeLog(const EagerTrees& trees, bool source) : m_source(source)
    {
        for (const auto& root : trees.Roots())
            Log(*root, 0);
    }

    QStringList lines;

private:
    void Log(const EagerNode& node, int level)
    {
        const FileMapping& mapping = *node.mapping;
        const QString path = m_source ? mapping.GetSourceFile() : mapping.GetTargetFile();
        if (path.isEmpty())
            return;
        const bool again = m_processed.contains(path, Qt::CaseInsensitive);
        m_processed.append(path);
        QString line = "DEBUG ";
        if (level > 0)
            line += QString(4 * level - 4, u'-') + "--->";
        line += path;
        if (again)
            line += " (processed already)";
        else if (!mapping.GetFlagName().isEmpty())
            line += " (" + mapping.GetFlagName() + ')';
        lines.append(line);
        if (!again)
            for (const auto& child : node.children)
                Log(*child, level + 1);
    }

    bool m_source;
    QStringList m_processed;
};

/// The update of the database by recursion, with a list for a database.
class PlainUpdate
{
public:
    PlainUpdate(const EagerTrees& trees, bool selectedOnly, bool updateSelected)
        : m_selectedOnly(selectedOnly)
    {
        for (const auto& root : trees.Roots()) {
            const FileMapping& mapping = *root->mapping;
            if (mapping.HasFlag(FileMapping::FileLinksNotSupported))
                LogSkipped(mapping);
            else if (updateSelected || IsRecorded(mapping))
                result = Update(*root) && result;
        }
    }

    bool result = true;
    QStringList lines;
    QStringList queried;
    QStringList foldersAdded;
    QStringList written;

private:
    using LinkStates = QMap<QString, bool>;

    static bool IsRecorded(const FileMapping& mapping)
    {
        return mapping.HasFlagAny(FileMapping::IncludeInDatabase | FileMapping::Copied);
    }
    void LogSkipped(const FileMapping& mapping)
    {
        lines.append("DEBUG Sync database update skipped for file " + mapping.GetTargetFile() +
                     ". File links not supported for this file type.");
    }
    bool Update(const EagerNode& node)
    {
        const FileMapping& mapping = *node.mapping;
        const QString target = mapping.GetTargetFile();
        if (m_processed.contains(target, Qt::CaseInsensitive))
            return true;
        if (!mapping.IsTargetFileInCloudCacheFolder() || m_failed.contains(&mapping))
            return false;
        for (const auto& child : node.children)
            UpdateChild(*child);
        if (!QFileInfo::exists(target)) {
            m_failed.append(&mapping);
            return false;
        }
        Write(mapping);
        return true;
    }
    void UpdateChild(const EagerNode& child)
    {
        if (!IsRecorded(*child.mapping) ||
            (m_selectedOnly && !child.mapping->HasFlag(FileMapping::Selected)))
            return;
        if (child.mapping->HasFlag(FileMapping::FileLinksNotSupported))
            LogSkipped(*child.mapping);
        else
            Update(child);
    }
    void Write(const FileMapping& mapping)
    {
        const QString target = mapping.GetTargetFile();
        queried.append(target);
        const QString path = SpellingOf(target);
        LinkStates states;
        for (const SyncServices::FileLink& link : mapping.GetTargetFileLinks())
            states[link.Path] = m_items.value(path).value(link.Path);
        if (!m_items.contains(path) && !m_foldersKnown.contains(target.toLower())) {
            foldersAdded.append(QFileInfo(target).absolutePath());
            m_foldersKnown.append(target.toLower());
        }
        m_processed.append(path);
        QMap<QString, LinkStates> before = m_items;
        for (const SyncServices::FileLink& link : mapping.GetTargetFileLinks()) {
            if (before.value(path).value(link.Path))
                continue;
            const QString linked = FileLink::ResolveLinkPath(link.Path, path);
            if (!m_processed.contains(linked, Qt::CaseInsensitive))
                queried.append(linked);
            states[link.Path] = before.contains(SpellingOf(linked));
        }
        m_items[path] = states;
        written.append(path);
    }

    /// The path under which the item of a path stands: another spelling, unless both are there as
    /// two files.
    QString SpellingOf(const QString& path) const
    {
        if (m_items.contains(path))
            return path;
        for (const QString& known : m_items.keys()) {
            const bool isOther = QFileInfo::exists(path) && QFileInfo::exists(known) &&
                                 QFileInfo(path) != QFileInfo(known);
            if (known.compare(path, Qt::CaseInsensitive) == 0 && !isOther)
                return known;
        }
        return path;
    }

    bool m_selectedOnly;
    QStringList m_processed;
    QList<const FileMapping*> m_failed;
    /// Lower-cased paths of files.
    QStringList m_foldersKnown;
    /// By path: which links are resolved.
    QMap<QString, LinkStates> m_items;
};

} // namespace

TEST_F(RandomStages, GiveTheDefaultTargetsOfARecursion)
{
    qsizetype assigned = 0;
    for (int seed = 0; seed < Seeds; ++seed) {
        FillForLayout(seed);
        const bool isAsked = importer->GetFileSet()->HasFilesWhichSupportFileLinks();
        ASSERT_EQ(importer->AssignTargetPaths(), true) << "seed " << seed;
        QStringList targets;
        for (const FileMappingPointer& file : Members())
            targets.append(file->GetTargetFile());
        const QStringList lines = LinesWith("INFO Target path not set by plugin");
        FillForLayout(seed);
        const EagerTrees trees(Members(), true);
        PlainLayout plain;
        for (const auto& root : trees.Roots())
            if (isAsked)
                plain.Assign(*root);
        for (qsizetype i = 0; i < targets.size(); ++i)
            ASSERT_EQ(targets[i], Members()[i]->GetTargetFile()) << "seed " << seed;
        ASSERT_EQ(lines, plain.lines) << "seed " << seed;
        assigned += plain.lines.size();
    }
    EXPECT_GT(assigned, Seeds / 3) << "the random sets hardly hold files without targets";
}

TEST_F(RandomStages, LogTheTreesOfARecursion)
{
    qsizetype written = 0;
    for (int seed = 0; seed < Seeds; ++seed) {
        Fill(seed);
        for (const FileMappingPointer& file : Members())
            file->SetFlag(FileMapping::Unchanged, true);
        if (!importer->GetFileSet()->HasFilesWhichSupportFileLinks())
            continue;
        const EagerTrees sources(Members(), true);
        const QStringList before =
            sources.CycleLines() + QStringList{"DEBUG ***Source file tree***"} +
            PlainTreeLog(sources, true).lines + QStringList{"INFO Begin copying files"};
        importer->CopyFiles();
        const EagerTrees targets(Members(), false);
        const QStringList after =
            targets.CycleLines() + QStringList{"DEBUG ***Target file tree***"} +
            PlainTreeLog(targets, false).lines + QStringList{"INFO Finished copying files"};
        ASSERT_EQ(Lines().mid(0, before.size()), before) << "seed " << seed;
        ASSERT_EQ(Lines().mid(Lines().size() - after.size()), after) << "seed " << seed;
        written += before.size() + after.size();
    }
    EXPECT_GT(written, 10 * Seeds) << "the random sets hardly hold links";
}

TEST_F(RandomStages, WriteTheItemsOfARecursion)
{
    const auto database = WatchedDatabase::Install();
    qsizetype written = 0;
    for (int seed = 0; seed < Seeds; ++seed) {
        const bool selectedOnly = seed % 4 == 1;
        const bool updateSelected = seed % 4 == 2;
        Fill(seed, selectedOnly     ? Global::ServicesCopyOption
                   : updateSelected ? Global::UpdateSelectedInDatabase
                                    : Global::NoCopyOption);
        if (!importer->GetFileSet()->HasFilesWhichSupportFileLinks())
            continue;
        const EagerTrees trees(Members(), false);
        PlainUpdate plain(trees, selectedOnly, updateSelected);
        plain.result = plain.result && !trees.Roots().empty();
        database->Clear();
        ASSERT_EQ(importer->UpdateSyncDatabase(), plain.result) << "seed " << seed;
        ASSERT_EQ(database->written, plain.written) << "seed " << seed;
        ASSERT_EQ(database->foldersAdded, plain.foldersAdded) << "seed " << seed;
        ASSERT_EQ(database->queried, plain.queried) << "seed " << seed;
        ASSERT_EQ(Lines(), QStringList{"INFO Begin updating sync database"} + trees.CycleLines() +
                               plain.lines + QStringList{"INFO Finished updating sync database"})
            << "seed " << seed;
        written += plain.written.size();
    }
    EXPECT_GT(written, Seeds / 2) << "the random sets hardly hold files to write";
}

} // namespace Halvern::Test
