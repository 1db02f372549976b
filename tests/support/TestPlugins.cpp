// SPDX-License-Identifier: Apache-2.0

#include "TestPlugins.h"

#include "plugins/CallLog.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::Test {

namespace {

// With a drive where the system has them, as long as the current folder is the one of the start:
// programs that a test starts have another one.
const QString Folder = QFileInfo(QStringLiteral(TEST_PLUGIN_FOLDER)).absoluteFilePath();

} // namespace

QString TestPluginFolder()
{
    return Folder;
}

QString TestResolverModule()
{
    return QStringLiteral(TEST_RESOLVER_MODULE);
}

QString TestLayoutModule()
{
    return QStringLiteral(TEST_LAYOUT_MODULE);
}

QByteArray Registration(const QString& module, const QString& service, const QString& fileTypes)
{
    return QStringLiteral("<SyncPlugins><Plugin Module=\"%1\" Name=\"For tests\">"
                          "<%2 FileTypes=\"%3\"/></Plugin></SyncPlugins>\n")
        .arg(module, service, fileTypes)
        .toUtf8();
}

void RegisterTestResolver(FileTree& tree, const QString& folder)
{
    tree.File(folder + QStringLiteral("/test_resolver.syncplugin"),
              Registration(TestResolverModule(), QStringLiteral("FileLinkResolver"),
                           QStringLiteral("tlk,tasm")));
}

void RegisterTestLayout(FileTree& tree, const QString& folder)
{
    tree.File(
        folder + QStringLiteral("/test_layout.syncplugin"),
        Registration(TestLayoutModule(), QStringLiteral("FileLayout"), QStringLiteral("tlk,tasm")));
}

PluginCallLog::PluginCallLog()
{
    Clear();
    qputenv(CallLogVariable,
            QDir::toNativeSeparators(m_tree.Path(QStringLiteral("calls"))).toLocal8Bit());
}

PluginCallLog::~PluginCallLog()
{
    qunsetenv(CallLogVariable);
}

QStringList PluginCallLog::Calls() const
{
    return QString::fromUtf8(m_tree.Read(QStringLiteral("calls"))).split(u'\n', Qt::SkipEmptyParts);
}

void PluginCallLog::Clear()
{
    m_tree.File(QStringLiteral("calls"), {});
}

} // namespace Halvern::Test
