// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ServicesFixture.h"
#include "TestPlugins.h"

#include "filelink/FileLinkManager.h"
#include "filelink/ICancelController.h"
#include "importer/FileLinkImporterImp.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTimeZone>

#include <limits>
#include <memory>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// Answers the polls of a job and counts them; from the n-th on it asks to stop. Without a number
/// it never does.
class PollCounter : public FileLink::ICancelController
{
public:
    explicit PollCounter(int cancelAt = std::numeric_limits<int>::max()) : m_cancelAt(cancelAt) {}

    bool IsCancelRequested() override
    {
        const bool cancel = ++m_polls >= m_cancelAt;
        m_cancels += cancel;
        return cancel;
    }
    int Polls() const { return m_polls; }
    /// How many polls were answered with a cancel.
    int Cancels() const { return m_cancels; }
    /// Starts counting anew.
    void CancelAt(int poll)
    {
        m_polls = m_cancels = 0;
        m_cancelAt = poll;
    }

private:
    int m_cancelAt;
    int m_polls = 0;
    int m_cancels = 0;
};

/// The module running over services on a temporary tree, with the test resolver for "tasm" and
/// "tlk" files. Sources stand in "src", the cloud cache folder is "cloud":
///
///     Assembly(u"src/a.tasm"_s, {u"1 parts/b.tlk"_s});
///     tree.File(u"src/parts/b.tlk"_s);
///     FileLinkImporterImp importer(nullptr);
///     importer.Initialize({Source(u"a.tasm"_s)}, Cloud(), false, {}, {});
///
/// Importers must not outlive a test. The header is here, without a source file, because it needs
/// the module's private classes, which the library of test support does not link.
class ImporterFixture : public ServicesFixture
{
protected:
    using FileLinkImporterImp = FileLink::FileLinkImporterImp;
    using FileMapping = SyncServices::FileMapping;
    using FileMappingPointer = std::shared_ptr<FileMapping>;
    using FileMappingList = QList<FileMappingPointer>;
    using Global = SyncServices::Global;
    using SyncItem = SyncServices::SyncItem;

    ImporterFixture()
    {
        RegisterTestResolver(tree, u"plugins"_s);
        tree.Folder(u"src"_s);
        FileLink::FileLinkManager::Initialize();
        FileLink::FileLinkManager* const manager = FileLink::FileLinkManager::GetInstance();
        manager->AddPluginRegistrationFolders({tree.Path(u"plugins"_s)});
        manager->AddPluginSearchPaths({TestPluginFolder()});
    }

    ~ImporterFixture() override { FileLink::FileLinkManager::Uninitialize(); }

    /// Registers the layout of TestLayoutPlugin.cpp, too. Requires: no plug-in was used yet.
    void UseTestLayout() { RegisterTestLayout(tree, u"plugins"_s); }

    /// Starts module and services anew over the same tree with what stands in `settings`.
    void Restart()
    {
        FileLink::FileLinkManager::Uninitialize();
        SyncFolderManagerLib::FolderManager::Configure(settings);
        FileLink::FileLinkManager::Initialize();
        FileLink::FileLinkManager* const manager = FileLink::FileLinkManager::GetInstance();
        manager->AddPluginRegistrationFolders({tree.Path(u"plugins"_s)});
        manager->AddPluginSearchPaths({TestPluginFolder()});
    }

    QString Source(const QString& relative = {}) const { return tree.Path(u"src/"_s + relative); }

    /// The text of a file with these links, each written "<reference id> <path>".
    static QByteArray Links(const QStringList& links)
    {
        QByteArray text;
        for (const QString& link : links)
            text += "link " + link.toUtf8() + '\n';
        return text;
    }

    FileTree& Assembly(const QString& relative, const QStringList& links)
    {
        return tree.File(relative, relative.toUtf8() + '\n' + Links(links));
    }

    /// The member with this source path, as it is or in the tree; null when there is none.
    FileMappingPointer Member(FileLinkImporterImp& importer, const QString& source) const
    {
        const auto set = importer.GetFileSet();
        int index = set ? set->IndexOfSourceFile(source) : -1;
        if (set && index < 0)
            index = set->IndexOfSourceFile(tree.Path(source));
        return index < 0 ? nullptr : set->GetFiles().at(index);
    }

    /// The members' source paths relative to the tree, in order.
    QStringList Members(FileLinkImporterImp& importer) const
    {
        QStringList names;
        for (const FileMappingPointer& file : importer.GetFileSet()->GetFiles())
            names.append(Short(file->GetSourceFile()));
        return names;
    }

    /// The members as "source -> target", both relative to the tree.
    QStringList Targets(FileLinkImporterImp& importer) const
    {
        QStringList lines;
        for (const FileMappingPointer& file : importer.GetFileSet()->GetFiles())
            lines.append(Short(file->GetSourceFile()) + u" -> "_s + Short(file->GetTargetFile()));
        return lines;
    }

    /// A path relative to the tree; other paths come back as they are.
    QString Short(const QString& path) const
    {
        const QString root = tree.Path() + u'/';
        return path.startsWith(root) ? path.mid(root.size()) : path;
    }

    /// The same in any text that holds paths.
    QStringList Short(QStringList lines) const
    {
        for (QString& line : lines)
            line.replace(tree.Path() + u'/', QString());
        return lines;
    }

    /// A whole second in the past, the given number of seconds after a fixed start.
    static QDateTime Time(int seconds = 0)
    {
        return QDateTime(QDate(2024, 3, 1), QTime(12, 0), QTimeZone::utc()).addSecs(seconds);
    }

    /// Imports in one call with an importer of its own, so that the copy history is written.
    bool Import(const QStringList& sources, const QString& target = {},
                Global::CopyOption options = Global::NoCopyOption,
                const QStringList& fileTypes = {})
    {
        FileLinkImporterImp importer(nullptr);
        return importer.CopyToCloudCacheFolder(sources, target.isEmpty() ? Cloud() : target,
                                               options, fileTypes);
    }
};

} // namespace Halvern::Test
