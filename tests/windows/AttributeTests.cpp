// SPDX-License-Identifier: Apache-2.0

// The attributes that Windows keeps for a file: read-only, hidden, system, archive.

#include "HeldFile.h"
#include "ReplacingFixture.h"
#include "support/FileOperations.h"

#include <windows.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

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
    tree.File(u"src/a.dat"_s, "new").File(u"cloud/a.dat"_s, "old");
    SetReadOnly(Cloud(u"a.dat"_s));

    EXPECT_FALSE(Replace());

    EXPECT_EQ(tree.Read(u"cloud/a.dat"_s), "old");
    EXPECT_TRUE(AttributesOf(Cloud(u"a.dat"_s)) & ReadOnly);
    EXPECT_TRUE(Short(log.Lines())
                    .contains(u"INFO Copy skipped for file src/a.dat. Target file "
                              "cloud/a.dat exists and is read-only."_s));
}

TEST_F(Attributes, AReadOnlySourceIsMovedAndItsCopyIsReadOnly)
{
    tree.File(u"src/a.dat"_s, "new");
    SetReadOnly(Source(u"a.dat"_s));
    WritableAgainAfterTheTest(Cloud(u"a.dat"_s));

    Import({Source(u"a.dat"_s)}, {}, Global::MoveFiles);

    EXPECT_FALSE(tree.Exists(u"src/a.dat"_s));
    EXPECT_EQ(tree.Read(u"cloud/a.dat"_s), "new");
    EXPECT_TRUE(AttributesOf(Cloud(u"a.dat"_s)) & ReadOnly);
}

TEST_F(Attributes, AParkedFileThatBecameReadOnlyIsDeletedAllTheSame)
{
    const QByteArray content = PatternBytes(qint64(96) << 20);
    tree.File(u"src/a.dat"_s, content).File(u"cloud/a.dat"_s, "old");
    {
        const HeldFile held(Cloud(u"a.dat.tmp"_s), u"-"_s, u"-"_s, u"readonly"_s);
        EXPECT_TRUE(Replace());
    }
    EXPECT_TRUE(tree.Read(u"cloud/a.dat"_s) == content);
    EXPECT_FALSE(tree.Exists(u"cloud/a.dat.tmp"_s));
}

TEST_F(Attributes, AReadOnlyFileIsRepathedAndReadOnlyAgainAfterwards)
{
    const QString target = Cloud(u"a.tasm"_s);
    Assembly(u"cloud/a.tasm"_s, {u"1 old.tlk"_s});
    SetReadOnly(target);
    FileLinkImporterImp importer(nullptr);
    SyncServices::FileLink link;
    link.RefId = u"1"_s;
    link.Path = u"new.tlk"_s;

    EXPECT_TRUE(importer.RepathFile(target, {link}));

    EXPECT_TRUE(tree.Read(u"cloud/a.tasm"_s).contains("link 1 new.tlk"));
    EXPECT_TRUE(AttributesOf(target) & ReadOnly);
}

TEST_F(Attributes, AHiddenFolderBecomesAHiddenFolderAndAnotherOneDoesNot)
{
    tree.File(u"src/p/a.dat"_s).Folder(u"src/p/seen"_s);
    tree.Folder(u"src/p/unseen"_s);
    ChangeAttributes(Source(u"p/unseen"_s), FILE_ATTRIBUTE_DIRECTORY | Hidden);
    FileLinkImporterImp importer(nullptr);

    EXPECT_TRUE(importer.CreateFolder(Cloud(u"unseen"_s), true));
    EXPECT_TRUE(importer.CreateFolder(Cloud(u"seen"_s), false));

    EXPECT_TRUE(AttributesOf(Cloud(u"unseen"_s)) & Hidden);
    EXPECT_FALSE(AttributesOf(Cloud(u"seen"_s)) & Hidden);
}

TEST_F(Attributes, ASelectedHiddenFolderIsHiddenInTheCloudFolder)
{
    tree.File(u"src/p/a.dat"_s, "a");
    ChangeAttributes(Source(u"p"_s), FILE_ATTRIBUTE_DIRECTORY | Hidden);

    Import({Source(u"p"_s)});

    EXPECT_EQ(tree.Read(u"cloud/p/a.dat"_s), "a");
    EXPECT_TRUE(AttributesOf(Cloud(u"p"_s)) & Hidden);
}

TEST_F(Attributes, TheLockProbeLeavesTimesAndAttributesAsTheyWere)
{
    const QString path = Cloud(u"a.dat"_s);
    tree.File(u"cloud/a.dat"_s).Touch(u"cloud/a.dat"_s, Time(7));
    for (const unsigned long attributes :
         {Hidden, static_cast<unsigned long>(FILE_ATTRIBUTE_SYSTEM), Hidden | ReadOnly}) {
        ChangeAttributes(path, attributes);
        const unsigned long before = AttributesOf(path);
        EXPECT_FALSE(FileLink::IsFileLocked(path));
        EXPECT_EQ(AttributesOf(path), before);
        EXPECT_EQ(tree.Modified(u"cloud/a.dat"_s), Time(7));
    }
    ChangeAttributes(path, FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Attributes, TheLockProbeLeavesTheTimesOfAFileOutsideTheAnsiCodePage)
{
    const QString name = u"cloud/設計 größe.dat"_s;
    tree.File(name).Touch(name, Time(7));

    EXPECT_FALSE(FileLink::IsFileLocked(tree.Path(name)));

    EXPECT_EQ(tree.Modified(name), Time(7));
}

TEST_F(Attributes, TheLockProbeKeepsWhatIsLessThanASecondOfTheTimes)
{
    // 2024-03-01, once with 123 ms and something, once with 876 ms.
    constexpr quint64 Read = 133537824001234567;
    constexpr quint64 Written = 133537824008765432;
    for (const QString& name :
         {u"cloud/a.dat"_s, u"cloud/größe 設.dat"_s, u"cloud/"_s + QString(240, u'n')}) {
        tree.File(name);
        SetTimes(tree.Path(name), Read, Written);
        ASSERT_EQ(TimesOf(tree.Path(name)), std::pair(Read, Written));

        EXPECT_FALSE(FileLink::IsFileLocked(tree.Path(name)));

        EXPECT_EQ(TimesOf(tree.Path(name)), std::pair(Read, Written)) << name.toStdString();
    }
}

TEST_F(Attributes, AReadOnlyFileIsFlushedAndStaysReadOnly)
{
    tree.File(u"cloud/a.dat"_s);
    SetReadOnly(Cloud(u"a.dat"_s));
    QString error;

    EXPECT_TRUE(FileLink::FlushToDisk(Cloud(u"a.dat"_s), &error)) << error.toStdString();

    EXPECT_TRUE(AttributesOf(Cloud(u"a.dat"_s)) & ReadOnly);
}

TEST_F(Attributes, ACopyHasThoseOfItsSource)
{
    tree.File(u"src/a.dat"_s);
    SetReadOnly(Source(u"a.dat"_s));
    ChangeAttributes(Source(u"a.dat"_s), ReadOnly | Hidden);
    WritableAgainAfterTheTest(Cloud(u"a.dat"_s));
    QString error;

    EXPECT_TRUE(FileLink::CopyFileBytes(Source(u"a.dat"_s), Cloud(u"a.dat"_s), &error))
        << error.toStdString();

    EXPECT_EQ(AttributesOf(Cloud(u"a.dat"_s)) & (ReadOnly | Hidden), ReadOnly | Hidden);
}

} // namespace Halvern::Test
