// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"

#include "syncplugin/SyncPlugin.h"

#include <gtest/gtest.h>

#include <QtCore/QLibrary>
#include <QtCore/QList>
#include <QtCore/QPair>
#include <QtCore/QStringList>

#include <memory>
#include <string>

namespace Halvern::Test {

/// What a resolver gets from its host: here a logger that collects lines such as "ERROR text".
class RecordingContext : public SyncPlugin::IFileLinkResolverContext,
                         public SyncPlugin::IPluginLogger
{
public:
    SyncPlugin::IPluginLogger* GetLogger() override { return this; }
    void LogFatal(const SyncPlugin::WideChar* text) override { Add(u"FATAL ", text); }
    void LogError(const SyncPlugin::WideChar* text) override { Add(u"ERROR ", text); }
    void LogWarn(const SyncPlugin::WideChar* text) override { Add(u"WARN ", text); }
    void LogInfo(const SyncPlugin::WideChar* text) override { Add(u"INFO ", text); }
    void LogDebug(const SyncPlugin::WideChar* text) override { Add(u"DEBUG ", text); }
    void LogTrace(const SyncPlugin::WideChar* text) override { Add(u"TRACE ", text); }

    QStringList lines;

private:
    void Add(QStringView level, const SyncPlugin::WideChar* text);
};

/// Loads a plug-in library and makes a resolver the way a host does; throws when it cannot. The
/// resolver goes before the library.
class LoadedResolver
{
public:
    explicit LoadedResolver(const QString& libraryFile);
    ~LoadedResolver();
    LoadedResolver(const LoadedResolver&) = delete;
    LoadedResolver& operator=(const LoadedResolver&) = delete;

    SyncPlugin::IFileLinkResolver& Get() { return *m_resolver; }

private:
    QLibrary m_library;
    std::unique_ptr<SyncPlugin::IFileLinkResolver> m_resolver;
};

/// That the library offers resolvers and no layout.
void ExpectResolverLibrary(const QString& libraryFile);
/// That the registration file of this name, in the build's folder for them, names the library and
/// just these types.
void ExpectRegistration(const QString& libraryFile, const QString& name, const QString& fileTypes);

/// A link as reference id and path.
using Link = QPair<QString, QString>;
using Links = QList<Link>;

QStringList PathsOf(const Links& links);

/// A resolver, the files it works on, and what it logs.
class ResolverFixture : public ::testing::Test
{
protected:
    explicit ResolverFixture(SyncPlugin::IFileLinkResolver& resolver) : m_resolver(resolver) {}

    /// The links of a file of the tree; checks that reading it succeeds, and frees the array as a
    /// host does.
    Links Read(const QString& file);
    bool TryRead(const QString& file);
    bool Repath(const QString& file, const Links& links);
    /// What reading a file of this content, which must fail, logs after "<file>: ".
    QString ReadFailure(const QString& file, const QByteArray& content);
    /// The content of a file of this content after its links got new paths, which must succeed.
    QByteArray Rewritten(const QString& file, const QByteArray& content, const Links& links);
    /// What rewriting a file of this content, which must fail and change nothing, logs after
    /// "<file>: ".
    QString RewriteFailure(const QString& file, const QByteArray& content, const Links& links);

    /// Copies a folder of the source tree into the temporary one.
    void Import(const QString& folder, const QString& name);

    FileTree tree;
    RecordingContext context;

private:
    SyncPlugin::IFileLinkResolver& m_resolver;
};

const SyncPlugin::WideChar* Wide(const QString& text);
QString FromWide(const SyncPlugin::WideChar* text);
SyncPlugin::FileLinkInfo Record(const Link& link);
Link LinkTo(const char16_t* id, const char16_t* path);

/// A binary glTF file out of whole chunks: a JSON text padded with blanks, then `rest`.
QByteArray Glb(QByteArray json, const QByteArray& rest = {});
QByteArray GlbChunk(const QByteArray& type, const QByteArray& data);
/// The chunk that holds geometry.
QByteArray BinChunk(const QByteArray& data);
QByteArray LittleEndian(quint32 number);

} // namespace Halvern::Test
