// SPDX-License-Identifier: Apache-2.0

#include "PluginIsolation.h"

#include "Paths.h"
#include "base/KnownFolders.h"
#include "base/NativePath.h"
#include "base/WorkWatch.h"

#include "corsync/JobError.h"
#include "isolation/CallWatch.h"
#include "isolation/Description.h"
#include "isolation/OwnLibrary.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

using FileLink::PluginDescription;

namespace {

const QString Program = QStringLiteral(CORSYNC_PLUGIN_HOST);
const QString Stub = QStringLiteral(CORSYNC_PLUGIN_STUB);
const QString OwnPlugins = QStringLiteral(CORSYNC_OWN_PLUGINS);

/// The program's folder, that of this library, and that of programs beside it.
QString FindParts()
{
    const QString program = QDir::fromNativeSeparators(
        QStringView(Base::PathText(Base::ProgramFile().parent_path())).toString());
    const QString library = QFileInfo(Isolation::OwnLibraryFile()).absolutePath();
    for (const QString& folder : {program, library, library + QStringLiteral("/../bin")})
        if (QFileInfo::exists(folder + u'/' + Program) && QFileInfo::exists(folder + u'/' + Stub))
            return QDir::cleanPath(folder);
    return {};
}

QString FindLibrary(const QString& module, const QStringList& folders)
{
    for (const QString& folder : folders) {
        const QString path = folder + u'/' + module;
        if (QFileInfo::exists(path))
            return AbsolutePath(path);
    }
    return {};
}

/// Asked on the thread of the session while a plug-in's process works.
bool CallGoesOn()
{
    Base::WorkWatch* const watch = Base::WorkWatch::OfThisThread();
    return !watch || watch->GoesOn();
}

JobError CannotIsolate(const QString& why)
{
    return JobError(JobErrorKind::SettingsRefused,
                    QStringLiteral("plug-ins cannot run in a process of their own: ") + why);
}

} // namespace

PluginIsolation::PluginIsolation(const PluginOptions& options)
    : m_options(options), m_folder(QDir::tempPath() + QStringLiteral("/corsync-plugins-XXXXXX")),
      m_parts(FindParts())
{
    if (!m_folder.isValid())
        throw CannotIsolate(m_folder.errorString());
}

PluginIsolation::~PluginIsolation()
{
    for (const auto& stub : m_stubs)
        stub->unload();
}

void PluginIsolation::Prepare(const QList<PluginDescription>& plugins,
                              const QStringList& libraryFolders)
{
    const QStringList own = OwnPlugins.split(u';');
    const QString ownFolder = AbsolutePath(m_parts + QStringLiteral("/SyncPlugins"));
    for (const PluginDescription& plugin : plugins) {
        const QString library = FindLibrary(plugin.module, libraryFolders);
        // What is nowhere the module reports better.
        if (library.isEmpty())
            continue;
        const bool isOwn = own.contains(plugin.module) && QFileInfo(library).path() == ownFolder;
        if (m_options.isolation == PluginIsolationMode::Always || !isOwn)
            Isolate(plugin, library);
    }
}

void PluginIsolation::Isolate(const PluginDescription& plugin, const QString& library)
{
    if (m_parts.isEmpty())
        throw CannotIsolate(QStringLiteral("%1 is not installed beside the program").arg(Program));
    const QString stub = m_folder.filePath(plugin.module);
    const bool isLayout = plugin.service == u"File Layout";
    const Isolation::Description description{m_parts + u'/' + Program, library,
                                             isLayout ? Isolation::ServiceKind::Layout
                                                      : Isolation::ServiceKind::Resolver,
                                             m_options.timeLimit, m_options.memoryLimit};
    if (!QDir().mkpath(QFileInfo(stub).path()) || !QFile::copy(m_parts + u'/' + Stub, stub) ||
        !description.Save(stub + QString::fromLatin1(Isolation::DescriptionSuffix)))
        throw CannotIsolate(QStringLiteral("%1 could not be written").arg(stub));
    LetCallsBeEnded(stub);
}

/// What does not load here does not for the module either, which has words for that.
void PluginIsolation::LetCallsBeEnded(const QString& stub)
{
    auto library = std::make_unique<QLibrary>(stub);
    const auto setWatch =
        reinterpret_cast<Isolation::SetCallWatch*>(library->resolve(Isolation::SetCallWatchName));
    if (!setWatch)
        return;
    setWatch(&CallGoesOn);
    m_stubs.push_back(std::move(library));
}

} // namespace Halvern::Jobs
