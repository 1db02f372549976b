// SPDX-License-Identifier: Apache-2.0

// A database file that permissions protect.

#include "LedgerFixture.h"
#include "OrdinaryRights.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class ProtectedLedgerFile : public LedgerFixture
{
protected:
    ~ProtectedLedgerFile() override { Protect(QFile::ReadOwner | QFile::WriteOwner); }

    void Protect(QFile::Permissions permissions) const
    {
        QFile::setPermissions(tree.Path(), permissions | QFile::ExeOwner);
        QFile::setPermissions(settings.databaseFile, permissions);
    }
};

} // namespace

TEST_F(ProtectedLedgerFile, InAReadOnlyFolderGivesNoRecordsAndTheReason)
{
    Write({RecordOf(u"/cloud/a"_s)});
    const FileTree::Snapshot before = FilesOfTheDatabase();
    const OrdinaryRights rights;
    Protect(QFile::ReadOwner);
    for (const bool readOnly : {true, false}) {
        const auto ledger = Open(readOnly);
        EXPECT_NE(ledger->Error(), QString());
        EXPECT_TRUE(ledger->ReadAll(u"/cloud"_s).isEmpty());
        QList<CopyRecord> records{RecordOf(u"/cloud/b"_s)};
        EXPECT_FALSE(ledger->Write(records));
    }
    EXPECT_EQ(FilesOfTheDatabase(), before);
}

TEST_F(ProtectedLedgerFile, ThatIsReadOnlyCanBeReadAndIsRefusedForWriting)
{
    Write({RecordOf(u"/cloud/a"_s)});
    const QByteArray before = tree.Read(u"sync.db"_s);
    const OrdinaryRights rights;
    QFile::setPermissions(settings.databaseFile, QFile::ReadOwner);
    EXPECT_EQ(Targets(u"/cloud"_s), QStringList{u"/cloud/a"_s});
    EXPECT_EQ(tree.Read(u"sync.db"_s), before);
    const auto ledger = Open();
    EXPECT_EQ(ledger->Error(), u"Opening the records of copies failed on sync database %1: "
                               "It cannot be written."_s.arg(settings.databaseFile));
    QList<CopyRecord> records{RecordOf(u"/cloud/b"_s)};
    EXPECT_FALSE(ledger->Write(records));
}

} // namespace Halvern::Test
