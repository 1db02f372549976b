// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"
#include "TestPlugins.h"

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QProcess>
#include <QtCore/QStringList>

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// What the command answered.
struct CommandResult
{
    int exitCode = -1;
    QString out;
    QString err;

    /// The lines of standard output.
    QStringList Lines() const { return out.split(u'\n', Qt::SkipEmptyParts); }
    /// Each line of standard output as JSON; fails the test when one is none.
    QList<QJsonObject> Json() const;
    bool Has(const QString& line) const { return Lines().contains(line); }
};

void PrintTo(const CommandResult& result, std::ostream* out);

/// Runs the real command as a process: in the folder "work" of a tree, over the cloud cache folder
/// "cloud" and the database "sync.db", with the test resolver for "tlk" files. Nothing of the user
/// who runs the tests is touched.
class CommandFixture : public ::testing::Test
{
protected:
    CommandFixture();

    /// `corsync import` with folder, database and plug-ins of the tree.
    CommandResult Import(const QStringList& arguments) const;
    /// `corsync` with these arguments and nothing else.
    CommandResult Run(const QStringList& arguments) const;
    QStringList ImportArguments(const QStringList& arguments) const;
    void Prepare(QProcess& process, const QStringList& arguments) const;
    static CommandResult Finish(QProcess& process);

    FileTree::Snapshot Cloud() const { return tree.Contents(u"cloud"_s); }

    FileTree tree;
};

} // namespace Halvern::Test
