// SPDX-License-Identifier: Apache-2.0

#include "JobsFixture.h"

#include "corsync/FileLinks.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class LinksOfFiles : public JobsFixture
{
protected:
    LinksOfFiles()
        : temporary(Session::Temporary(PluginFolders(), {Jobs::PluginIsolationMode::Never}))
    {}

    /// "missing lost/c.tlk -> /tree/work/lost/c.tlk"
    static QStringList Lines(const LinksOfFile& result)
    {
        static const QStringList states{u"found"_s, u"missing"_s, u"url"_s};
        QStringList lines;
        for (const StoredLink& link : result.links)
            lines.append(states.at(int(link.state)) + u' ' + link.text + u" -> "_s + link.file);
        return lines;
    }

    std::unique_ptr<Session> temporary;
};

} // namespace

TEST_F(LinksOfFiles, AreShownAsTheyStandAlsoWhereAnotherFileOfTheNameLiesBeside)
{
    tree.File(u"work/a.tlk"_s, "link 1 lost/c.tlk\nlink 2 c.tlk\n").File(u"work/c.tlk"_s);
    EXPECT_EQ(Lines(ReadLinks(*temporary, {tree.Path(u"work/a.tlk"_s)}).first()),
              (QStringList{u"missing lost/c.tlk -> "_s + tree.Path(u"work/lost/c.tlk"_s),
                           u"found c.tlk -> "_s + tree.Path(u"work/c.tlk"_s)}));
}

TEST_F(LinksOfFiles, ThatAreUrlsKeepBothTheirSlashes)
{
    tree.File(u"work/a.tlk"_s, "link 1 https://x.org/y/../z\n");
    EXPECT_EQ(Lines(ReadLinks(*temporary, {tree.Path(u"work/a.tlk"_s)}).first()),
              QStringList{u"url https://x.org/y/../z -> https://x.org/y/../z"_s});
}

TEST_F(LinksOfFiles, ThatAreUrlsAreNamedAlikeByAnImport)
{
    temporary.reset();
    tree.File(u"work/a.tlk"_s, "link 1 https://x.org/y\n");
    Begin();
    const JobResult result = Import(Request({u"a.tlk"_s}));
    ASSERT_EQ(result.files.size(), 2);
    EXPECT_EQ(result.files[1].outcome, Outcome::Url);
    EXPECT_EQ(result.files[1].source, u"https://x.org/y"_s);
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_s), "link 1 https://x.org/y\n");
}

TEST_F(LinksOfFiles, ComeOneByOneAsTheyAreRead)
{
    const QString a = tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n").Path(u"work/a.tlk"_s);
    const QString b = tree.File(u"work/b.tlk"_s).Path(u"work/b.tlk"_s);
    QStringList lines;
    const auto take = [&](const LinksOfFile& result) {
        lines += QStringList{result.file} + Lines(result);
        tree.File(u"work/b.tlk"_s, "link 1 a.tlk\n");
    };
    EXPECT_TRUE(ReadLinks(*temporary, {a, b}, take));
    EXPECT_EQ(lines, (QStringList{a, u"found b.tlk -> "_s + b, b, u"found a.tlk -> "_s + a}));
}

TEST_F(LinksOfFiles, EndWhereACancelComesAndSaySo)
{
    const QString a = tree.File(u"work/a.tlk"_s).Path(u"work/a.tlk"_s);
    CancelToken token;
    int count = 0;
    const auto take = [&](const LinksOfFile&) {
        ++count;
        token.Cancel();
    };
    EXPECT_FALSE(ReadLinks(*temporary, {a, a}, take, &token));
    EXPECT_EQ(count, 1);
}

TEST_F(LinksOfFiles, AreNotReadWhenAnyOfTheFilesIsNone)
{
    const QString a = tree.File(u"work/a.tlk"_s).Path(u"work/a.tlk"_s);
    int count = 0;
    EXPECT_THROW(
        ReadLinks(*temporary, {a, tree.Path(u"nope"_s)}, [&](const LinksOfFile&) { ++count; }),
        JobError);
    EXPECT_EQ(count, 0);
}

TEST_F(LinksOfFiles, ThatWentAwayMeanwhileAreAProblem)
{
    const QString a = tree.File(u"work/a.tlk"_s).Path(u"work/a.tlk"_s);
    const QString b = tree.File(u"work/b.tlk"_s).Path(u"work/b.tlk"_s);
    QList<LinksOfFile> results;
    ReadLinks(*temporary, {a, b}, [&](const LinksOfFile& result) {
        results.append(result);
        QFile::remove(b);
    });
    ASSERT_EQ(results.size(), 2);
    EXPECT_TRUE(results[0].problems.isEmpty());
    ASSERT_EQ(results[1].problems.size(), 1);
    EXPECT_EQ(results[1].problems[0].kind, FileLink::ProblemKind::FileMissing);
    EXPECT_EQ(results[1].problems[0].file, b);
}

} // namespace Halvern::Test
