// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

using RepeatedSources = ImporterFixture;

TEST_F(RepeatedSources, OfOneSetGetLinksOnlyTheFirstTime)
{
    FileLinkImporterImp importer{nullptr};
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(importer.Initialize({Source(u"a.tasm"_s)}, Cloud(), false, {}, {}));
    const auto second = std::make_shared<FileMapping>(Source(u"a.tasm"_s), QString(), 1);
    importer.GetFileSet()->AddFile(second);
    const LogCapture log;
    ASSERT_TRUE(importer.ExtractFileLinks());
    EXPECT_EQ(importer.GetFileSet()->GetFiles().first()->GetSourceFileLinks().size(), 1);
    EXPECT_EQ(second->GetSourceFileLinks().size(), 0);
    EXPECT_FALSE(log.Lines().join(u'\n').contains(u"restored"_s));
}

} // namespace Halvern::Test
