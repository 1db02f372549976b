// SPDX-License-Identifier: Apache-2.0

#include "TestPlugins.h"

#include "plugins/CallLog.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

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

QString TestTalkerModule()
{
    return QStringLiteral(TEST_TALKER_MODULE);
}

QByteArray Registration(const QString& module, const QString& service, const QString& fileTypes)
{
    return u"<SyncPlugins><Plugin Module=\"%1\" Name=\"For tests\">"
           "<%2 FileTypes=\"%3\"/></Plugin></SyncPlugins>\n"_s.arg(module, service, fileTypes)
               .toUtf8();
}

void RegisterTestResolver(FileTree& tree, const QString& folder)
{
    tree.File(folder + u"/test_resolver.syncplugin"_s,
              Registration(TestResolverModule(), u"FileLinkResolver"_s, u"tlk,tasm"_s));
}

void RegisterTestLayout(FileTree& tree, const QString& folder)
{
    tree.File(folder + u"/test_layout.syncplugin"_s,
              Registration(TestLayoutModule(), u"FileLayout"_s, u"tlk,tasm"_s));
}

PluginOrders::PluginOrders(const QByteArray& words)
{
    qputenv(OrdersVariable, words);
}

PluginOrders::~PluginOrders()
{
    qunsetenv(OrdersVariable);
}

void RegisterTestTalker(FileTree& tree, const QString& folder)
{
    tree.File(folder + u"/test_talker.syncplugin"_s,
              Registration(TestTalkerModule(), u"FileLinkResolver"_s, u"talk"_s));
}

PluginCallLog::PluginCallLog()
{
    Clear();
    qputenv(CallLogVariable, QDir::toNativeSeparators(m_tree.Path(u"calls"_s)).toLocal8Bit());
}

PluginCallLog::~PluginCallLog()
{
    qunsetenv(CallLogVariable);
}

QStringList PluginCallLog::Calls() const
{
    return QString::fromUtf8(m_tree.Read(u"calls"_s)).split(u'\n', Qt::SkipEmptyParts);
}

void PluginCallLog::Clear()
{
    m_tree.File(u"calls"_s, {});
}

} // namespace Halvern::Test
