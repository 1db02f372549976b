// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/FileStatus.h"
#include "base/KnownFolders.h"
#include "base/System.h"
#include "base/SystemPlaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

using namespace Halvern;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

using enum Base::PlaceKind;

namespace {

/// What the last row about a folder says of it.
std::optional<Base::PlaceKind> KindOf(const std::filesystem::path& folder)
{
    std::optional<Base::PlaceKind> kind;
    for (const Base::PlaceOfSystem& place : Base::PlacesOfSystem())
        if (place.folder == folder)
            kind = place.kind;
    return kind;
}

class HomeOfTheEnvironment : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_FALSE(before.isNull()); }
    void TearDown() override { qputenv(Name, before); }
    void Set(const QString& home) { qputenv(Name, home.toUtf8()); }

    static constexpr const char* Name =
        Base::ThisSystem == Base::System::Windows ? "USERPROFILE" : "HOME";
    const QByteArray before = qgetenv(Name);
    FileTree tree;
};

} // namespace

TEST(SystemPlaces, AreAbsoluteAndNeverAWholeDrive)
{
    const std::vector<Base::PlaceOfSystem> places = Base::PlacesOfSystem();
    EXPECT_GT(places.size(), 10U);
    for (const Base::PlaceOfSystem& place : places) {
        EXPECT_TRUE(place.folder.is_absolute()) << place.folder;
        EXPECT_TRUE(place.folder.has_relative_path()) << place.folder;
    }
}

TEST(SystemPlaces, HoldTheHomeOfTheAccountAndThoseBesideIt)
{
    const std::filesystem::path home = Base::AccountHomeFolder();
    EXPECT_TRUE(Base::IsFolder(home)) << home;
    EXPECT_EQ(KindOf(home), OwnHome);
    const std::filesystem::path homes = home.parent_path();
    EXPECT_TRUE(!homes.has_relative_path() || KindOf(homes) == Homes) << homes;
}

TEST_F(HomeOfTheEnvironment, IsAHomeBesideThatOfTheAccountAndNothingElse)
{
    Set(tree.Path(u"home"_s));
    EXPECT_EQ(KindOf(Native(tree.Path(u"home"_s))), OwnHome);
    EXPECT_EQ(KindOf(Native(tree.Path())), std::nullopt);
    EXPECT_EQ(KindOf(Base::AccountHomeFolder()), OwnHome);
}

TEST_F(HomeOfTheEnvironment, MayBeWrittenAnyWayAndIsNoneWhenItIsRelative)
{
    Set(tree.Path(u"x"_s) + u"/../home/"_s);
    EXPECT_EQ(KindOf(Native(tree.Path(u"home"_s))), OwnHome);
    for (const QString& home : {u"home"_s, u"/"_s}) {
        Set(home);
        const std::vector<Base::PlaceOfSystem> places = Base::PlacesOfSystem();
        EXPECT_TRUE(std::none_of(places.begin(), places.end(),
                                 [&](const auto& place) { return place.folder == Native(home); }));
    }
}
