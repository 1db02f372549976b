// SPDX-License-Identifier: Apache-2.0

#include "LogCapture.h"
#include "Mappings.h"
#include "support/PathUtilities.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

/// Trees over links in every form that files hold, in both modes.
class LinkForms : public ::testing::Test
{
protected:
    FileMappingPointer Add(const QString& source, const QStringList& links = {},
                           FileMappingFlag flags = FileMapping::NoFlag)
    {
        return AddTo(set, source, links, flags);
    }
    /// A member of which only the target and its links count.
    FileMappingPointer AddCopy(const QString& name, const QStringList& targetLinks,
                               FileMappingFlag flags = FileMapping::NoFlag)
    {
        const FileMappingPointer copy = Add(u"D:/w/"_s + name, {}, flags);
        copy->SetTargetFile(u"D:/cloud/"_s + name, true);
        copy->SetTargetFileLinks(Links(targetLinks));
        return copy;
    }

    /// "a(b c(d))": the sources' last names.
    static QString Shape(FileMappingRef& node)
    {
        QStringList children;
        for (const FileMappingRef::Pointer& child : node.Children())
            children.append(Shape(*child));
        const QString name = node.SourceFile().section(u'/', -1);
        return children.isEmpty() ? name : u"%1(%2)"_s.arg(name, children.join(u' '));
    }
    QStringList Trees(bool useSourceLinks = true)
    {
        QStringList shapes;
        for (const FileSetImp::NodePointer& root : Imp(set).GetFileLinkHierarchy(useSourceLinks))
            shapes.append(Shape(*root));
        return shapes;
    }
    static QString CycleLine(const QString& link, const QString& holder)
    {
        return u"INFO Circular reference detected. File link %1 in %2 leads to circular reference."_s
            .arg(link, holder);
    }

    FileSet set;
    LogCapture log;
};

TEST_F(LinkForms, AWebAddressLeadsToTheMemberThatStandsForIt)
{
    const QString web = u"http://host/x.prt"_s;
    Add(u"D:/w/a"_s, {web, u"https://host/x.prt"_s}, FileMapping::Selected);
    Add(QDir::cleanPath(web));
    EXPECT_EQ(Trees(), QStringList{u"a(x.prt)"_s});
}

TEST_F(LinkForms, AWebAddressIsNeverTakenForAPathBesideItsHolder)
{
    Add(u"D:/w/a"_s, {u"http://host/x.prt"_s, u"urn:x.prt"_s}, FileMapping::Selected);
    Add(u"D:/w/host/x.prt"_s);
    Add(u"D:/w/x.prt"_s);
    Add(u"D:/w/urn:x.prt"_s);
    EXPECT_EQ(Trees(), QStringList{u"a"_s});
}

TEST_F(LinkForms, ANetworkPathLeadsToTheMemberWithThatPath)
{
    Add(u"D:/w/a"_s, {u"//server/share/lib/../P.prt"_s}, FileMapping::Selected);
    Add(QDir::cleanPath(u"//server/share/p.prt"_s));
    EXPECT_EQ(Trees(), QStringList{u"a(p.prt)"_s});
}

TEST_F(LinkForms, ANetworkPathWithBackslashesIsNeverTakenForAPathBesideItsHolder)
{
    const QString link = u"\\\\server\\share\\p.prt"_s;
    Add(u"D:/w/a"_s, {link}, FileMapping::Selected);
    Add(QDir::cleanPath(u"D:/w/"_s + link));
    EXPECT_EQ(Trees(), QStringList{u"a"_s});
    Add(QDir::cleanPath(link));
    EXPECT_EQ(Imp(set).GetFileLinkHierarchy(true).first()->Children().size(), 1);
}

TEST_F(LinkForms, ALinkOfAFileOnTheNetworkIsResolvedThere)
{
    Add(QDir::cleanPath(u"//server/share/lib/a"_s), {u"../p.prt"_s}, FileMapping::Selected);
    Add(QDir::cleanPath(u"//server/share/p.prt"_s));
    Add(u"D:/p.prt"_s);
    EXPECT_EQ(Trees(), QStringList{u"a(p.prt)"_s});
    EXPECT_EQ(set.GetSourceFileLinks(set.GetFiles().first()),
              FileMappingList{set.GetFiles().at(1)});
}

TEST_F(LinkForms, AnAbsoluteLinkIsCleanedBeforeItIsLookedUp)
{
    Add(u"D:/w/a"_s, {u"E:/lib/./x/../p.prt"_s}, FileMapping::Selected);
    Add(u"e:/LIB/p.prt"_s);
    EXPECT_EQ(Trees(), QStringList{u"a(p.prt)"_s});
}

TEST_F(LinkForms, AnEmptyLinkLeadsToNoFile)
{
    Add(u"D:/w/a"_s, {QString()}, FileMapping::Selected);
    Add(u"D:/w/b"_s);
    EXPECT_EQ(Trees(), QStringList{u"a"_s});
}

TEST_F(LinkForms, ARepeatedSubAssemblyIsShownWithItsPartsEachTime)
{
    Add(u"D:/w/a"_s, {u"s"_s, u"p"_s, u"./s"_s}, FileMapping::Selected);
    const FileMappingPointer s = Add(u"D:/w/s"_s, {u"p"_s, u"p"_s});
    const FileMappingPointer p = Add(u"D:/w/p"_s);
    EXPECT_EQ(Trees(), QStringList{u"a(s(p p) p s(p p))"_s});
    const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
    EXPECT_EQ(FileSetImp::GetParents(p, roots), (FileMappingList{set.GetFiles().first(), s, s}));
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(LinkForms, ACycleInASharedSubAssemblyIsReportedOnEachPathToIt)
{
    Add(u"D:/w/a"_s, {u"s"_s, u"t"_s}, FileMapping::Selected);
    Add(u"D:/w/s"_s, {u"u"_s});
    Add(u"D:/w/t"_s, {u"u"_s});
    Add(u"D:/w/u"_s, {u"v"_s});
    Add(u"D:/w/v"_s, {u"u"_s});
    EXPECT_EQ(Trees(), QStringList{u"a(s(u(v(u))) t(u(v(u))))"_s});
    EXPECT_EQ(log.Lines(), QStringList(2, CycleLine(u"D:/w/u"_s, u"D:/w/v"_s)));
}

TEST_F(LinkForms, ACycleIsReportedWithTheSpellingOfTheMembersNotOfTheLinks)
{
    Add(u"D:/w/A"_s, {u"./B"_s}, FileMapping::Selected);
    Add(u"D:/w/b"_s, {u"../W/a"_s});
    EXPECT_EQ(Trees(), QStringList{u"A(b(A))"_s});
    EXPECT_EQ(log.Lines(), QStringList{CycleLine(u"D:/w/A"_s, u"D:/w/b"_s)});
}

TEST_F(LinkForms, TheRecordOfACycleNamesItsMakerAndSource)
{
    Add(u"D:/w/a"_s, {u"a"_s}, FileMapping::Selected);
    Trees();
    const QList<LogRecord> records = log.Records();
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records[0].logger, u"CorsyncFileLink"_s);
    EXPECT_EQ(records[0].level, log4cplus::INFO_LOG_LEVEL);
    EXPECT_EQ(records[0].file, u"FileSetImp.cpp"_s);
    EXPECT_TRUE(records[0].function.contains(u"FileSetImp::CreateFileLinkHierarchy("_s))
        << records[0].function.toStdString();
}

TEST_F(LinkForms, CyclesOfTwoAndThreeTargetsAreCutWhereTheyClose)
{
    AddCopy(u"a"_s, {u"b"_s, u"c"_s}, FileMapping::Selected);
    AddCopy(u"b"_s, {u"a"_s});
    AddCopy(u"c"_s, {u"d"_s});
    AddCopy(u"d"_s, {u"A"_s});
    EXPECT_EQ(Trees(false), QStringList{u"a(b(a) c(d(a)))"_s});
    EXPECT_EQ(log.Lines(), (QStringList{CycleLine(u"D:/cloud/a"_s, u"D:/cloud/b"_s),
                                        CycleLine(u"D:/cloud/a"_s, u"D:/cloud/d"_s)}));
}

TEST_F(LinkForms, ACycleOfCopiesClosesThroughALinkThatStillNamesASource)
{
    AddCopy(u"a"_s, {u"D:/w/b"_s}, FileMapping::Selected);
    AddCopy(u"b"_s, {u"D:/w/./a"_s});
    EXPECT_EQ(Trees(false), QStringList{u"a(b(a))"_s});
    EXPECT_EQ(log.Lines(), QStringList{CycleLine(u"D:/cloud/a"_s, u"D:/cloud/b"_s)});
}

TEST_F(LinkForms, InCopiesWebAddressesAndNetworkPathsLeadToTheMembersThatStandForThem)
{
    const QString web = u"http://host/x.prt"_s;
    const QString share = u"//server/share/y.prt"_s;
    AddCopy(u"a"_s, {web, share, u"x.prt"_s}, FileMapping::Selected);
    Add(QDir::cleanPath(web));
    Add(QDir::cleanPath(share));
    EXPECT_EQ(Trees(false), QStringList{u"a(x.prt y.prt)"_s});
}

TEST_F(LinkForms, OfTwoMembersWithOnePathTheFirstIsLinked)
{
    Add(u"D:/w/a"_s, {u"b"_s}, FileMapping::Selected);
    const FileMappingPointer first = Add(u"D:/w/b"_s);
    Add(u"D:/w/B"_s);
    EXPECT_EQ(Imp(set).GetFileLinkHierarchy(true).first()->Children().first()->Mapping(), first);
}

TEST_F(LinkForms, TwoFilesWithoutATargetHaveOnePathAmongCopies)
{
    AddCopy(u"a"_s, {u"D:/w/b"_s}, FileMapping::Selected);
    Add(u"D:/w/b"_s)->SetTargetFileLinks(Links({u"D:/w/c"_s}));
    Add(u"D:/w/c"_s);
    EXPECT_EQ(Trees(false), QStringList{u"a(b(c))"_s});
    EXPECT_EQ(log.Lines(), QStringList{CycleLine(QString(), QString())});
}

TEST(FileSetEnd, LeavesTheBackPointersOfMembersAsTheyAre)
{
    const FileMappingPointer file = MakeFile(u"D:/w/a.prt"_s);
    std::uintptr_t address = 0;
    {
        FileSet set;
        set.AddFile(file);
        address = reinterpret_cast<std::uintptr_t>(&set);
    }
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(file->GetFileSet()), address);
}

} // namespace
