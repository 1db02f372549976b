// SPDX-License-Identifier: Apache-2.0

// The attributes that Windows keeps for a file: read-only, hidden, system, archive.

#include "HeldFile.h"
#include "ReplacingFixture.h"
#include "support/FileOperations.h"

#include <windows.h>

namespace Halvern::Test {

namespace {

constexpr unsigned long ReadOnly = FILE_ATTRIBUTE_READONLY;
constexpr unsigned long Hidden = FILE_ATTRIBUTE_HIDDEN;

class Attributes : public ReplacingFixture
{
protected:
    ~Attributes() override { MakeWritable(m_readOnly); }

    void SetReadOnly(const QString& path)
    {
        ChangeAttributes(path, AttributesOf(path) | ReadOnly);
        WritableAgainAfterTheTest(path);
    }

    /// A folder with a read-only file in it cannot be removed.
    void WritableAgainAfterTheTest(const QString& path) { m_readOnly.append(path); }

    /// When the file was read and written last, in units of 100 ns.
    static std::pair<quint64, quint64> TimesOf(const QString& path)
    {
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        const QString native = ApiPath(path);
        EXPECT_TRUE(::GetFileAttributesExW(reinterpret_cast<const wchar_t*>(native.utf16()),
                                           GetFileExInfoStandard, &data));
        return {Number(data.ftLastAccessTime), Number(data.ftLastWriteTime)};
    }
    static void SetTimes(const QString& path, quint64 read, quint64 written)
    {
        const QString native = ApiPath(path);
        const HANDLE file =
            ::CreateFileW(reinterpret_cast<const wchar_t*>(native.utf16()), FILE_WRITE_ATTRIBUTES,
                          0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        const FILETIME readTime = Time100ns(read);
        const FILETIME writtenTime = Time100ns(written);
        EXPECT_TRUE(::SetFileTime(file, nullptr, &readTime, &writtenTime));
        ::CloseHandle(file);
    }

private:
    static quint64 Number(const FILETIME& time)
    {
        return quint64(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    }
    static FILETIME Time100ns(quint64 number)
    {
        return {DWORD(number & 0xFFFFFFFFU), DWORD(number >> 32)};
    }
    static void MakeWritable(const QStringList& paths)
    {
        for (const QString& path : paths)
            if (QFileInfo::exists(path))
                ChangeAttributes(path, FILE_ATTRIBUTE_NORMAL);
    }

    QStringList m_readOnly;
};

} // namespace

TEST_F(Attributes, AReadOnlyTargetIsNotReplacedAndStaysReadOnly)
{
    tree.File(QStringLiteral("src/a.dat"), "new").File(QStringLiteral("cloud/a.dat"), "old");
    SetReadOnly(Cloud(QStringLiteral("a.dat")));

    EXPECT_FALSE(Replace());

    EXPECT_EQ(tree.Read(QStringLiteral("cloud/a.dat")), "old");
    EXPECT_TRUE(AttributesOf(Cloud(QStringLiteral("a.dat"))) & ReadOnly);
    EXPECT_TRUE(Short(log.Lines())
                    .contains(QStringLiteral("INFO Copy skipped for file src/a.dat. Target file "
                                             "cloud/a.dat exists and is read-only.")));
}

TEST_F(Attributes, AReadOnlySourceIsMovedAndItsCopyIsReadOnly)
{
    tree.File(QStringLiteral("src/a.dat"), "new");
    SetReadOnly(Source(QStringLiteral("a.dat")));
    WritableAgainAfterTheTest(Cloud(QStringLiteral("a.dat")));

    Import({Source(QStringLiteral("a.dat"))}, {}, Global::MoveFiles);

    EXPECT_FALSE(tree.Exists(QStringLiteral("src/a.dat")));
    EXPECT_EQ(tree.Read(QStringLiteral("cloud/a.dat")), "new");
    EXPECT_TRUE(AttributesOf(Cloud(QStringLiteral("a.dat"))) & ReadOnly);
}

TEST_F(Attributes, AParkedFileThatBecameReadOnlyIsDeletedAllTheSame)
{
    const QByteArray content = PatternBytes(qint64(96) << 20);
    tree.File(QStringLiteral("src/a.dat"), content).File(QStringLiteral("cloud/a.dat"), "old");
    {
        const HeldFile held(Cloud(QStringLiteral("a.dat.tmp")), QStringLiteral("-"),
                            QStringLiteral("-"), QStringLiteral("readonly"));
        EXPECT_TRUE(Replace());
    }
    EXPECT_TRUE(tree.Read(QStringLiteral("cloud/a.dat")) == content);
    EXPECT_FALSE(tree.Exists(QStringLiteral("cloud/a.dat.tmp")));
}

TEST_F(Attributes, AReadOnlyFileIsRepathedAndReadOnlyAgainAfterwards)
{
    const QString target = Cloud(QStringLiteral("a.tasm"));
    Assembly(QStringLiteral("cloud/a.tasm"), {QStringLiteral("1 old.tlk")});
    SetReadOnly(target);
    FileLinkImporterImp importer(nullptr);
    SyncServices::FileLink link;
    link.RefId = QStringLiteral("1");
    link.Path = QStringLiteral("new.tlk");

    EXPECT_TRUE(importer.RepathFile(target, {link}));

    EXPECT_TRUE(tree.Read(QStringLiteral("cloud/a.tasm")).contains("link 1 new.tlk"));
    EXPECT_TRUE(AttributesOf(target) & ReadOnly);
}

TEST_F(Attributes, AHiddenFolderBecomesAHiddenFolderAndAnotherOneDoesNot)
{
    tree.File(QStringLiteral("src/p/a.dat")).Folder(QStringLiteral("src/p/seen"));
    tree.Folder(QStringLiteral("src/p/unseen"));
    ChangeAttributes(Source(QStringLiteral("p/unseen")), FILE_ATTRIBUTE_DIRECTORY | Hidden);
    FileLinkImporterImp importer(nullptr);

    EXPECT_TRUE(importer.CreateFolder(Cloud(QStringLiteral("unseen")), true));
    EXPECT_TRUE(importer.CreateFolder(Cloud(QStringLiteral("seen")), false));

    EXPECT_TRUE(AttributesOf(Cloud(QStringLiteral("unseen"))) & Hidden);
    EXPECT_FALSE(AttributesOf(Cloud(QStringLiteral("seen"))) & Hidden);
}

TEST_F(Attributes, ASelectedHiddenFolderIsHiddenInTheCloudFolder)
{
    tree.File(QStringLiteral("src/p/a.dat"), "a");
    ChangeAttributes(Source(QStringLiteral("p")), FILE_ATTRIBUTE_DIRECTORY | Hidden);

    Import({Source(QStringLiteral("p"))});

    EXPECT_EQ(tree.Read(QStringLiteral("cloud/p/a.dat")), "a");
    EXPECT_TRUE(AttributesOf(Cloud(QStringLiteral("p"))) & Hidden);
}

TEST_F(Attributes, TheLockProbeLeavesTimesAndAttributesAsTheyWere)
{
    const QString path = Cloud(QStringLiteral("a.dat"));
    tree.File(QStringLiteral("cloud/a.dat")).Touch(QStringLiteral("cloud/a.dat"), Time(7));
    for (const unsigned long attributes :
         {Hidden, static_cast<unsigned long>(FILE_ATTRIBUTE_SYSTEM), Hidden | ReadOnly}) {
        ChangeAttributes(path, attributes);
        const unsigned long before = AttributesOf(path);
        EXPECT_FALSE(FileLink::IsFileLocked(path));
        EXPECT_EQ(AttributesOf(path), before);
        EXPECT_EQ(tree.Modified(QStringLiteral("cloud/a.dat")), Time(7));
    }
    ChangeAttributes(path, FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Attributes, TheLockProbeLeavesTheTimesOfAFileOutsideTheAnsiCodePage)
{
    const QString name = QStringLiteral("cloud/設計 größe.dat");
    tree.File(name).Touch(name, Time(7));

    EXPECT_FALSE(FileLink::IsFileLocked(tree.Path(name)));

    EXPECT_EQ(tree.Modified(name), Time(7));
}

TEST_F(Attributes, TheLockProbeKeepsWhatIsLessThanASecondOfTheTimes)
{
    // 2024-03-01, once with 123 ms and something, once with 876 ms.
    constexpr quint64 Read = 133537824001234567;
    constexpr quint64 Written = 133537824008765432;
    for (const QString& name : {QStringLiteral("cloud/a.dat"), QStringLiteral("cloud/größe 設.dat"),
                                QStringLiteral("cloud/") + QString(240, u'n')}) {
        tree.File(name);
        SetTimes(tree.Path(name), Read, Written);
        ASSERT_EQ(TimesOf(tree.Path(name)), std::pair(Read, Written));

        EXPECT_FALSE(FileLink::IsFileLocked(tree.Path(name)));

        EXPECT_EQ(TimesOf(tree.Path(name)), std::pair(Read, Written)) << name.toStdString();
    }
}

TEST_F(Attributes, AReadOnlyFileIsFlushedAndStaysReadOnly)
{
    tree.File(QStringLiteral("cloud/a.dat"));
    SetReadOnly(Cloud(QStringLiteral("a.dat")));
    QString error;

    EXPECT_TRUE(FileLink::FlushToDisk(Cloud(QStringLiteral("a.dat")), &error))
        << error.toStdString();

    EXPECT_TRUE(AttributesOf(Cloud(QStringLiteral("a.dat"))) & ReadOnly);
}

TEST_F(Attributes, ACopyHasThoseOfItsSource)
{
    tree.File(QStringLiteral("src/a.dat"));
    SetReadOnly(Source(QStringLiteral("a.dat")));
    ChangeAttributes(Source(QStringLiteral("a.dat")), ReadOnly | Hidden);
    WritableAgainAfterTheTest(Cloud(QStringLiteral("a.dat")));
    QString error;

    EXPECT_TRUE(FileLink::CopyFileBytes(Source(QStringLiteral("a.dat")),
                                        Cloud(QStringLiteral("a.dat")), &error))
        << error.toStdString();

    EXPECT_EQ(AttributesOf(Cloud(QStringLiteral("a.dat"))) & (ReadOnly | Hidden),
              ReadOnly | Hidden);
}

} // namespace Halvern::Test
