// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobsFixture.h"

#include "corsync/Versions.h"

#include "syncservices/SyncManager.h"

#include <chrono>
#include <thread>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// A session over a cloud folder with files that were replaced.
class VersionsFixture : public JobsFixture
{
protected:
    VersionsFixture() { Begin(); }

    QString Cloud(const QString& name) const { return tree.Path(u"cloud/"_s + name); }

    /// Writes the file as often as there are contents; all but the last are kept.
    void Write(const QString& name, const QList<QByteArray>& contents)
    {
        for (qsizetype i = 0; i < contents.size(); ++i) {
            tree.File(u"cloud/"_s + name, contents[i]);
            if (i + 1 < contents.size())
                Keep(name);
        }
    }

    void Keep(const QString& name)
    {
        QString error;
        ASSERT_TRUE(SyncServices::SyncManager::GetInstance()->SaveVersion(Cloud(name), &error))
            << error.toStdString();
        // Two copies in the same moment have no order.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }

    /// The contents of the versions, newest first.
    QList<QByteArray> Versions(const QString& file) const
    {
        QList<QByteArray> contents;
        for (const Jobs::Version& version : Jobs::ListVersions(*session, file)) {
            EXPECT_EQ(version.number, contents.size() + 1);
            QFile copy(version.storeFile);
            EXPECT_TRUE(copy.open(QFile::ReadOnly));
            contents.append(copy.readAll());
        }
        return contents;
    }

    Jobs::RestoredVersion Restore(const QString& file, int number = 1, const QString& output = {})
    {
        return Jobs::RestoreVersion(*session, file, number, output);
    }

    struct Refusal
    {
        Jobs::JobErrorKind kind;
        QString text;
    };

    /// What the call throws; paths of the tree without it.
    template <typename Call>
    Refusal RefusalOf(Call call) const
    {
        try {
            call();
        } catch (const Jobs::JobError& error) {
            QString text = error.Text();
            return {error.Kind(), text.replace(u'\\', u'/').replace(tree.Path() + u'/', QString())};
        }
        ADD_FAILURE() << "nothing was thrown";
        return {Jobs::JobErrorKind::WrongOrder, {}};
    }

    Refusal RefusalToRestore(const QString& file, int number = 1, const QString& output = {})
    {
        const FileTree::Snapshot before = tree.Contents(u"cloud"_s);
        const Refusal refusal = RefusalOf([&] { Restore(file, number, output); });
        EXPECT_EQ(tree.Contents(u"cloud"_s), before);
        return refusal;
    }
};

} // namespace Halvern::Test
