// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include "ProcessStart.h"

#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QRegularExpression>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

constexpr int Patience = 120000;

} // namespace

QList<QJsonObject> CommandResult::Json() const
{
    QList<QJsonObject> objects;
    for (const QString& line : Lines()) {
        const QJsonDocument document = QJsonDocument::fromJson(line.toUtf8());
        EXPECT_TRUE(document.isObject()) << line.toStdString();
        objects.append(document.object());
    }
    return objects;
}

void PrintTo(const CommandResult& result, std::ostream* out)
{
    *out << "exit code " << result.exitCode << "\n--- out\n"
         << result.out.toStdString() << "--- err\n"
         << result.err.toStdString();
}

CommandFixture::CommandFixture()
{
    tree.Folder(u"work"_s).Folder(u"home"_s);
    RegisterTestResolver(tree, u"plugins"_s);
}

CommandResult CommandFixture::Import(const QStringList& arguments) const
{
    return Run(ImportArguments(arguments));
}

CommandResult CommandFixture::Run(const QStringList& arguments) const
{
    QProcess process;
    Prepare(process, arguments);
    StartProcess(process);
    return Finish(process);
}

QStringList CommandFixture::ImportArguments(const QStringList& arguments) const
{
    return QStringList{u"import"_s,
                       u"--cloud-folder"_s,
                       tree.Path(u"cloud"_s),
                       u"--database"_s,
                       tree.Path(u"sync.db"_s),
                       u"--plugin-path"_s,
                       tree.Path(u"plugins"_s),
                       u"--plugin-path"_s,
                       TestPluginFolder()} +
           arguments;
}

void CommandFixture::Prepare(QProcess& process, const QStringList& arguments) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString home = tree.Path(u"home"_s);
    environment.insert(u"HOME"_s, home);
    environment.insert(u"USERPROFILE"_s, home);
    environment.insert(u"XDG_CONFIG_HOME"_s, home + u"/config"_s);
    environment.insert(u"XDG_DATA_HOME"_s, home + u"/data"_s);
    environment.insert(u"APPDATA"_s, home + u"/config"_s);
    environment.insert(u"LOCALAPPDATA"_s, home + u"/data"_s);
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(tree.Path(u"work"_s));
    process.setProgram(QStringLiteral(CORSYNC_PROGRAM));
    process.setArguments(arguments);
}

CommandResult CommandFixture::Finish(QProcess& process)
{
    if (!process.waitForFinished(Patience)) {
        process.kill();
        process.waitForFinished();
        ADD_FAILURE() << "the command did not end: " << process.errorString().toStdString();
        return {};
    }
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    // Expected lines are written with forward slashes, and end as they do on POSIX. In JSON a
    // quotation mark keeps its backslash.
    const auto text = [](const QByteArray& bytes) {
        static const QRegularExpression separator(u"\\\\(?!\")"_s);
        QString lines = QString::fromUtf8(bytes).replace(u"\r\n"_s, u"\n"_s);
        return QDir::separator() == u'/' ? lines : lines.replace(separator, u"/"_s);
    };
    return {process.exitCode(), text(process.readAllStandardOutput()),
            text(process.readAllStandardError())};
}

} // namespace Halvern::Test
