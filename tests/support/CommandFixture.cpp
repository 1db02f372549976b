// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcessEnvironment>

namespace Halvern::Test {

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
    tree.Folder(QStringLiteral("work")).Folder(QStringLiteral("home"));
    RegisterTestResolver(tree, QStringLiteral("plugins"));
}

CommandResult CommandFixture::Import(const QStringList& arguments) const
{
    return Run(ImportArguments(arguments));
}

CommandResult CommandFixture::Run(const QStringList& arguments) const
{
    QProcess process;
    Prepare(process, arguments);
    process.start();
    return Finish(process);
}

QStringList CommandFixture::ImportArguments(const QStringList& arguments) const
{
    return QStringList{QStringLiteral("import"),
                       QStringLiteral("--cloud-folder"),
                       tree.Path(QStringLiteral("cloud")),
                       QStringLiteral("--database"),
                       tree.Path(QStringLiteral("sync.db")),
                       QStringLiteral("--plugin-path"),
                       tree.Path(QStringLiteral("plugins")),
                       QStringLiteral("--plugin-path"),
                       TestPluginFolder()} +
           arguments;
}

void CommandFixture::Prepare(QProcess& process, const QStringList& arguments) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString home = tree.Path(QStringLiteral("home"));
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("USERPROFILE"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    environment.insert(QStringLiteral("APPDATA"), home + QStringLiteral("/config"));
    environment.insert(QStringLiteral("LOCALAPPDATA"), home + QStringLiteral("/data"));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(tree.Path(QStringLiteral("work")));
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
    // Expected lines are written with forward slashes, and end as they do on POSIX.
    const auto text = [](const QByteArray& bytes) {
        return QDir::fromNativeSeparators(QString::fromUtf8(bytes))
            .replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    };
    return {process.exitCode(), text(process.readAllStandardOutput()),
            text(process.readAllStandardError())};
}

} // namespace Halvern::Test
