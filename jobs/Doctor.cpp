// SPDX-License-Identifier: Apache-2.0

#include "corsync/Doctor.h"

#include "DatabaseCheck.h"
#include "Ledger.h"
#include "Leftovers.h"
#include "Paths.h"

#include "corsync/JobError.h"
#include "corsync/Plugins.h"
#include "corsync/Session.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <functional>
#include <utility>

namespace Halvern::Jobs {

namespace {

using SyncServices::ServicesSettings;

class Doctor
{
public:
    Doctor(const Places& places, const QStringList& pluginFolders, const CancelToken* cancel)
        : m_places(places), m_pluginFolders(pluginFolders),
          m_goesOn([cancel] { return !cancel || !cancel->IsCancelled(); })
    {}

    Examination Examine()
    {
        if (TakeSettings()) {
            LookAtSettings();
            LookAtCloudFolder();
            LookAtDatabase();
            LookAtBaseStore();
        }
        if (m_goesOn())
            LookAtPlugins();
        m_result.cancelled = !m_goesOn();
        return std::move(m_result);
    }

private:
    void Fault(Examined where, const QString& subject, const QString& text, const QString& advice)
    {
        m_result.symptoms.append({where, true, subject, text, advice});
    }
    void Note(Examined where, const QString& subject, const QString& text, const QString& advice)
    {
        m_result.symptoms.append({where, false, subject, text, advice});
    }

    bool TakeSettings()
    {
        try {
            m_settings = ResolveSettings(m_places, SessionUse::PlanOnly);
            m_plugins = PluginOptionsOf(m_settings);
            return true;
        } catch (const JobError& error) {
            Fault(Examined::Settings, {}, error.Text(), QStringLiteral("correct the settings"));
            return false;
        }
    }

    void LookAtSettings()
    {
        const bool isGiven = !m_places.settingsFile.isEmpty();
        if (!isGiven && !m_places.cloudFolder.isEmpty() && !m_places.database.isEmpty())
            return;
        const QString file =
            isGiven ? AbsolutePath(m_places.settingsFile) : ServicesSettings::DefaultFile();
        for (const QString& key : ServicesSettings::UnknownKeys(file))
            Fault(Examined::Settings, file,
                  QStringLiteral("%1 is the name of no setting, and has no effect").arg(key),
                  QStringLiteral("correct the name, or delete the line"));
        if (!m_settings.loggedIn)
            Note(Examined::Settings, file, QStringLiteral("nobody is logged in: nothing is imported"),
                 QStringLiteral("set loggedIn to true"));
        if (!m_settings.cloudCacheFolderSyncEnabled)
            Note(Examined::Settings, file,
                 QStringLiteral("the cloud cache folder is not synced: nothing is imported"),
                 QStringLiteral("set cloudCacheFolderSyncEnabled to true"));
    }

    void LookAtCloudFolder()
    {
        const QString& folder = m_settings.cloudCacheFolder;
        if (!ExistsOnDisk(folder)) {
            // A disk that is not mounted looks like this.
            Note(Examined::CloudFolder, folder, QStringLiteral("is not there"),
                 QStringLiteral("the next import makes it; if it should be on another disk, see to "
                                "it that this one is there first"));
            return;
        }
        if (!IsFolder(folder))
            return Fault(Examined::CloudFolder, folder, QStringLiteral("is no folder"),
                         QStringLiteral("put it aside, or name another folder in the settings"));
        if (!QFileInfo(folder).isWritable())
            Fault(Examined::CloudFolder, folder, QStringLiteral("cannot be written to"),
                  QStringLiteral("change its permissions"));
        for (const QString& left : ListLeftovers(folder, m_goesOn))
            Note(Examined::CloudFolder, left, QStringLiteral("was left by a job that was killed"),
                 QFileInfo(left).isDir()
                     ? QStringLiteral("the next import removes it")
                     : QStringLiteral("delete it, if no import is running"));
    }

    void LookAtDatabase()
    {
        const QString& file = m_settings.databaseFile;
        if (!QFileInfo::exists(file)) {
            Note(Examined::Database, file, QStringLiteral("is not there: nothing was imported yet"),
                 QStringLiteral("the next import makes it, and knows copies by their content"));
            return;
        }
        const QStringList damage = ListDamage(file, m_goesOn);
        for (const QString& fault : damage)
            Fault(Examined::Database, file, QStringLiteral("is damaged: ") + fault,
                  QStringLiteral("put it aside; the next import makes a new one from what lies in "
                                 "the cloud folder"));
        if (damage.isEmpty())
            LookAtCopies();
    }

    void LookAtCopies()
    {
        const auto ledger =
            Ledger::Open(m_settings.databaseFile, m_settings.authenticationConfigurationId,
                         m_settings.databaseBusyTimeout, true);
        const QList<CopyRecord> records = ledger->ReadAll(m_settings.cloudCacheFolder);
        if (!ledger->Error().isEmpty())
            return Fault(Examined::Database, m_settings.databaseFile, ledger->Error(),
                         QStringLiteral("put it aside; the next import makes a new one from what "
                                        "lies in the cloud folder"));
        m_result.copies = records.size();
        for (const CopyRecord& record : records) {
            if (!m_goesOn())
                return;
            LookAtCopy(record);
        }
    }

    void LookAtCopy(const CopyRecord& record)
    {
        if (!ExistsOnDisk(record.target))
            Note(Examined::Copies, record.target, QStringLiteral("is not there any more"),
                 QStringLiteral("the next import of %1 brings it again")
                     .arg(QDir::toNativeSeparators(record.source)));
        else if (record.isRewritePending)
            Fault(Examined::Copies, record.target,
                  QStringLiteral("its links are still to be rewritten"),
                  QStringLiteral("corsync retry"));
        else if (record.linksState == LinksState::Failed)
            Fault(Examined::Copies, record.target, QStringLiteral("its links could not be read"),
                  QStringLiteral("import %1 again once its plug-in works")
                      .arg(QDir::toNativeSeparators(record.source)));
    }

    void LookAtBaseStore()
    {
        const QString folder = m_settings.BaseStoreFolder();
        if (m_settings.baseStoreLimit <= 0)
            Note(Examined::BaseStore, {}, QStringLiteral("no old versions are kept"),
                 QStringLiteral("set baseStoreLimit to keep what is replaced"));
        else if (!ExistsOnDisk(folder))
            return;
        else if (!IsFolder(folder) || QFileInfo(folder).isSymLink())
            Fault(Examined::BaseStore, folder, QStringLiteral("is no folder of its own"),
                  QStringLiteral("put it aside: until then nothing is replaced"));
        else if (!QFileInfo(folder).isWritable())
            Fault(Examined::BaseStore, folder, QStringLiteral("cannot be written to"),
                  QStringLiteral("change its permissions: until then nothing is replaced"));
    }

    void LookAtPlugins()
    {
        const auto session = Session::Temporary(m_pluginFolders, m_plugins);
        for (const RegistrationFault& fault : ListRegistrationFaults(*session))
            m_result.symptoms.append({Examined::Plugins, fault.isBroken, fault.file, fault.text,
                                      QStringLiteral("correct the registration file")});
        for (const PluginStatus& status : ListPlugins(*session, true))
            if (status.state == PluginState::Fails)
                Fault(Examined::Plugins, status.plugin.module, status.error,
                      QStringLiteral("install it again, or remove its registration file"));
    }

    const Places& m_places;
    const QStringList& m_pluginFolders;
    const std::function<bool()> m_goesOn;
    ServicesSettings m_settings;
    PluginOptions m_plugins;
    Examination m_result;
};

} // namespace

Examination Examine(const Places& places, const QStringList& pluginFolders,
                    const CancelToken* cancel)
{
    return Doctor(places, pluginFolders, cancel).Examine();
}

} // namespace Halvern::Jobs
