// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

LoadedResolver::LoadedResolver(const QString& libraryFile) : m_library(libraryFile)
{
    using Factory = SyncPlugin::IFileLinkResolverFactory;
    if (!m_library.load())
        throw std::runtime_error(m_library.errorString().toStdString());
    const auto create =
        reinterpret_cast<Factory* (*)()>(m_library.resolve("CreateFileLinkResolverFactory"));
    if (!create)
        throw std::runtime_error("the factory function is missing");
    const std::unique_ptr<Factory> factory(create());
    m_resolver.reset(factory->CreateFileLinkResolver());
}

LoadedResolver::~LoadedResolver()
{
    m_resolver.reset();
    m_library.unload();
}

using SyncPlugin::FileLinkInfo;
using SyncPlugin::WideChar;

namespace {

void Fill(WideChar (&field)[SyncPlugin::MaxLinkText], const QString& text)
{
    const QString cut = text.left(SyncPlugin::MaxLinkText - 1);
    *std::copy_n(Wide(cut), cut.size(), field) = 0;
}

} // namespace

const WideChar* Wide(const QString& text)
{
    return reinterpret_cast<const WideChar*>(text.utf16());
}

QString FromWide(const WideChar* text)
{
    return QString::fromUtf16(reinterpret_cast<const char16_t*>(text));
}

FileLinkInfo Record(const Link& link)
{
    FileLinkInfo record = {};
    record.size = sizeof(FileLinkInfo);
    Fill(record.referenceId, link.first);
    Fill(record.path, link.second);
    return record;
}

Link LinkTo(const char16_t* id, const char16_t* path)
{
    return {QString::fromUtf16(id), QString::fromUtf16(path)};
}

void RecordingContext::Add(QStringView level, const WideChar* text)
{
    lines.append(level.toString() + FromWide(text));
}

void ExpectResolverLibrary(const QString& libraryFile)
{
    QLibrary library(libraryFile);
    ASSERT_TRUE(library.load()) << library.errorString().toStdString();
    EXPECT_TRUE(library.resolve("CreateFileLinkResolverFactory"));
    EXPECT_FALSE(library.resolve("CreateSyncPluginFactory"));
    EXPECT_TRUE(library.unload());
}

void ExpectRegistration(const QString& libraryFile, const QString& name, const QString& fileTypes)
{
    const QFileInfo library(libraryFile);
    QFile file(library.absolutePath() + u"/../SyncPluginRegFiles/%1.syncplugin"_s.arg(name));
    ASSERT_TRUE(file.open(QFile::ReadOnly)) << file.fileName().toStdString();
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains(u"Module=\"%1\""_s.arg(library.fileName()))) << text.toStdString();
    EXPECT_TRUE(text.contains(u"FileTypes=\"%1\""_s.arg(fileTypes))) << text.toStdString();
}

QStringList PathsOf(const Links& links)
{
    QStringList paths;
    for (const Link& link : links)
        paths.append(link.second);
    return paths;
}

Links ResolverFixture::Read(const QString& file)
{
    FileLinkInfo* records = nullptr;
    int count = -1;
    EXPECT_TRUE(m_resolver.GetFileLinks(Wide(tree.Path(file)), &records, &count, &context))
        << context.lines.join(u'\n').toStdString();
    Links links;
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(records[i].size, sizeof(FileLinkInfo));
        links.append({FromWide(records[i].referenceId), FromWide(records[i].path)});
    }
    delete[] records;
    return links;
}

bool ResolverFixture::TryRead(const QString& file)
{
    FileLinkInfo* records = nullptr;
    int count = 0;
    const bool ok = m_resolver.GetFileLinks(Wide(tree.Path(file)), &records, &count, &context);
    EXPECT_TRUE(ok || (!records && count == 0)) << "a failure hands nothing over";
    delete[] records;
    return ok;
}

bool ResolverFixture::Repath(const QString& file, const Links& links)
{
    std::vector<FileLinkInfo> records;
    std::transform(links.begin(), links.end(), std::back_inserter(records), Record);
    return m_resolver.RepathFileLinks(Wide(tree.Path(file)), records.data(),
                                      static_cast<int>(records.size()), &context);
}

QString ResolverFixture::ReadFailure(const QString& file, const QByteArray& content)
{
    tree.File(file, content);
    context.lines.clear();
    EXPECT_FALSE(TryRead(file));
    EXPECT_EQ(tree.Read(file), content);
    const QString start = u"ERROR Failed to read the file links of %1: "_s;
    const QString prefix = start.arg(tree.Path(file));
    if (context.lines.size() != 1 || !context.lines.first().startsWith(prefix))
        return u"unexpected log: "_s + context.lines.join(u'\n');
    return context.lines.first().mid(prefix.size());
}

QByteArray ResolverFixture::Rewritten(const QString& file, const QByteArray& content,
                                      const Links& links)
{
    tree.File(file, content);
    EXPECT_TRUE(Repath(file, links)) << context.lines.join(u'\n').toStdString();
    return tree.Read(file);
}

QString ResolverFixture::RewriteFailure(const QString& file, const QByteArray& content,
                                        const Links& links)
{
    tree.File(file, content);
    const FileTree::Snapshot before = tree.Contents();
    context.lines.clear();
    EXPECT_FALSE(Repath(file, links));
    EXPECT_EQ(tree.Contents(), before);
    const QString start = u"ERROR Failed to rewrite the file links of %1: "_s;
    return context.lines.join(u'\n').replace(start.arg(tree.Path(file)), QString());
}

void ResolverFixture::Import(const QString& folder, const QString& name)
{
    const QDir source(folder);
    ASSERT_TRUE(source.exists()) << folder.toStdString();
    QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        ASSERT_TRUE(file.open(QFile::ReadOnly));
        tree.File(name + u'/' + source.relativeFilePath(file.fileName()), file.readAll());
    }
}

QByteArray LittleEndian(quint32 number)
{
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.append(static_cast<char>((number >> shift) & 0xFFU));
    return bytes;
}

QByteArray GlbChunk(const QByteArray& type, const QByteArray& data)
{
    return LittleEndian(static_cast<quint32>(data.size())) + type + data;
}

QByteArray BinChunk(const QByteArray& data)
{
    return GlbChunk(QByteArray("BIN\0", 4), data);
}

QByteArray Glb(QByteArray json, const QByteArray& rest)
{
    while (json.size() % 4 != 0)
        json.append(' ');
    const QByteArray body = GlbChunk("JSON", json) + rest;
    return "glTF" + LittleEndian(2) + LittleEndian(static_cast<quint32>(12 + body.size())) + body;
}

} // namespace Halvern::Test
