// SPDX-License-Identifier: Apache-2.0

#include "syncservices/ServicesSettings.h"

#include "services/Paths.h"
#include "services/Platform.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>

namespace Halvern::SyncServices {

namespace {

/// Reads values of a settings file into the members of a ServicesSettings.
class Reader
{
public:
    explicit Reader(const QSettings& file) : m_file(file) {}

    /// The first key whose value has the wrong form; empty when all are well.
    QString BadKey() const { return m_badKey; }

    void operator()(const char* key, QString& value)
    {
        // Qt takes an unquoted value with commas for a list.
        if (const QVariant read = Read(key); read.isValid())
            value = read.toStringList().join(QStringLiteral(", "));
    }

    void operator()(const char* key, QStringList& value)
    {
        const QVariant read = Read(key);
        if (!read.isValid())
            return;
        value = read.toStringList();
        value.removeAll(QString());
    }

    void operator()(const char* key, int& value) { ReadNumber(key, value, &QVariant::toInt); }
    void operator()(const char* key, qint64& value)
    {
        ReadNumber(key, value, &QVariant::toLongLong);
    }

    void operator()(const char* key, bool& value)
    {
        const QVariant read = Read(key);
        if (!read.isValid())
            return;
        const QString text = read.toString().toLower();
        if (text == u"true" || text == u"1")
            value = true;
        else if (text == u"false" || text == u"0")
            value = false;
        else
            Bad(key);
    }

private:
    QVariant Read(const char* key) const { return m_file.value(QString::fromLatin1(key)); }

    template <typename Number, typename Convert>
    void ReadNumber(const char* key, Number& value, Convert convert)
    {
        const QVariant read = Read(key);
        if (!read.isValid())
            return;
        bool ok = false;
        const Number number = (read.*convert)(&ok);
        if (ok)
            value = number;
        else
            Bad(key);
    }

    void Bad(const char* key)
    {
        if (m_badKey.isEmpty())
            m_badKey = QString::fromLatin1(key);
    }

    const QSettings& m_file;
    QString m_badKey;
};

/// Takes the names of all settings out of a list.
class NameTaker
{
public:
    explicit NameTaker(QStringList& names) : m_names(names) {}

    template <typename Value>
    void operator()(const char* key, const Value&)
    {
        m_names.removeAll(QString::fromLatin1(key));
    }

private:
    QStringList& m_names;
};

class Writer
{
public:
    explicit Writer(QSettings& file) : m_file(file) {}

    template <typename Value>
    void operator()(const char* key, const Value& value)
    {
        m_file.setValue(QString::fromLatin1(key), QVariant::fromValue(value));
    }

private:
    QSettings& m_file;
};

/// DO NOT CHANGE THESE NAMES: users' settings files hold them.
template <typename Settings, typename Visitor>
void Visit(Settings& settings, Visitor& visitor)
{
    visitor("cloudCacheFolder", settings.cloudCacheFolder);
    visitor("databaseFile", settings.databaseFile);
    visitor("databaseBusyTimeout", settings.databaseBusyTimeout);
    visitor("baseStoreFolder", settings.baseStoreFolder);
    visitor("baseStoreLimit", settings.baseStoreLimit);
    visitor("userName", settings.userName);
    visitor("authenticationConfigurationId", settings.authenticationConfigurationId);
    visitor("productConfigurationId", settings.productConfigurationId);
    visitor("sourceConsumerId", settings.sourceConsumerId);
    visitor("loggedIn", settings.loggedIn);
    visitor("cloudCacheFolderSyncEnabled", settings.cloudCacheFolderSyncEnabled);
    visitor("supportedFileTypes", settings.supportedFileTypes);
    visitor("allowedFolders", settings.allowedFolders);
    visitor("isolatePlugins", settings.isolatePlugins);
    visitor("pluginTimeLimit", settings.pluginTimeLimit);
    visitor("pluginMemoryLimit", settings.pluginMemoryLimit);
    visitor("serviceFolder", settings.serviceFolder);
    visitor("cloudRoot", settings.cloudRoot);
}

void SetError(QString* error, const QString& text)
{
    if (error != nullptr)
        *error = text;
}

/// Why a file cannot be opened; `fallback` when it can.
QString OpenError(const QString& path, QIODevice::OpenMode mode, const QString& fallback)
{
    QFile file(path);
    return file.open(mode) ? fallback : file.errorString();
}

} // namespace

QString ServicesSettings::BaseStoreFolder() const
{
    if (!baseStoreFolder.isEmpty())
        return baseStoreFolder;
    if (databaseFile.isEmpty() || databaseFile == u":memory:")
        return {};
    return databaseFile + QStringLiteral(".base");
}

QString ServicesSettings::DefaultFile()
{
    return JoinPath(Platform::ConfigFolder(), QStringLiteral("corsync/settings.ini"));
}

ServicesSettings ServicesSettings::Defaults()
{
    ServicesSettings settings;
    settings.cloudCacheFolder = JoinPath(QDir::homePath(), QStringLiteral("Corsync"));
    settings.databaseFile = JoinPath(Platform::DataFolder(), QStringLiteral("corsync/sync.db"));
    return settings;
}

ServicesSettings ServicesSettings::LoadOrCreate(const QString& file, QString* error)
{
    SetError(error, QString());
    ServicesSettings settings = Defaults();
    if (!QFileInfo::exists(file)) {
        // The defaults serve without a file, too; `error` says that there is none.
        static_cast<void>(settings.Save(file, error));
        return settings;
    }
    const QSettings source(file, QSettings::IniFormat);
    Reader reader(source);
    Visit(settings, reader);
    // Asked for afterwards: sections are parsed when a value of theirs is.
    QString reason;
    if (source.status() != QSettings::NoError)
        reason = OpenError(file, QFile::ReadOnly, QStringLiteral("It is not a settings file."));
    else if (!reader.BadKey().isEmpty())
        reason = QStringLiteral("The value of %1 has the wrong form.").arg(reader.BadKey());
    else
        reason = PathFault(settings);
    if (reason.isEmpty())
        return settings;
    SetError(error, QStringLiteral("Failed to read settings file %1: %2").arg(file, reason));
    return Defaults();
}

QStringList ServicesSettings::UnknownKeys(const QString& file)
{
    QStringList names = QSettings(file, QSettings::IniFormat).allKeys();
    NameTaker taker(names);
    ServicesSettings settings;
    Visit(settings, taker);
    return names;
}

bool ServicesSettings::Save(const QString& file, QString* error) const
{
    SetError(error, QString());
    QString reason;
    bool saved = Platform::MakeFolder(QFileInfo(file).absolutePath(), &reason);
    if (saved) {
        QSettings target(file, QSettings::IniFormat);
        Writer writer(target);
        Visit(*this, writer);
        target.sync();
        saved = target.status() == QSettings::NoError;
        if (!saved)
            reason = OpenError(file, QFile::ReadWrite, QStringLiteral("It could not be written."));
    }
    if (!saved)
        SetError(error, QStringLiteral("Failed to write settings file %1: %2").arg(file, reason));
    return saved;
}

} // namespace Halvern::SyncServices
