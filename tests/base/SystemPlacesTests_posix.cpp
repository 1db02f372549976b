// SPDX-License-Identifier: Apache-2.0

#include "base/SystemPlaces.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include <unistd.h>

using namespace Halvern;

using enum Base::PlaceKind;

namespace {

std::map<std::filesystem::path, Base::PlaceKind> Kinds()
{
    std::map<std::filesystem::path, Base::PlaceKind> kinds;
    for (const Base::PlaceOfSystem& place : Base::PlacesOfSystem())
        kinds[place.folder] = place.kind;
    return kinds;
}

} // namespace

TEST(SystemPlacesOnPosix, KeepThePartsOfTheSystemApart)
{
    auto kinds = Kinds();
    for (const char* folder : {"/proc", "/sys", "/dev", "/etc", "/boot", "/run", "/var", "/usr",
                               "/bin", "/sbin", "/lib", "/lib32", "/lib64", "/libx32"})
        EXPECT_EQ(kinds.at(folder), System) << folder;
    for (const char* folder : {"/usr/share", "/usr/local/share", "/opt", "/snap", "/srv", "/mnt",
                               "/media", "/run/media", "/tmp", "/var/tmp", "/var/lib/flatpak"})
        EXPECT_EQ(kinds.at(folder), Open) << folder;
    const std::string session = "/run/user/" + std::to_string(::getuid());
    EXPECT_EQ(kinds.at(session + "/gvfs"), Open);
    EXPECT_EQ(kinds.at(session + "/doc"), Open);
    EXPECT_EQ(kinds.at("/home"), Homes);
    EXPECT_EQ(kinds.at("/root"), ::getuid() == 0 ? OwnHome : OtherHome);
}

TEST(SystemPlacesOnPosix, StayTheSystemsWhenHomeNamesThem)
{
    const std::string before = std::getenv("HOME");
    ::setenv("HOME", "/etc", 1);
    EXPECT_EQ(Kinds().at("/etc"), System);
    ::setenv("HOME", "/tmp", 1);
    EXPECT_EQ(Kinds().at("/tmp"), OwnHome);
    EXPECT_EQ(Kinds().at("/tmp/snap"), Secrets);
    ::setenv("HOME", before.c_str(), 1);
}
