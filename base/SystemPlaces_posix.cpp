// SPDX-License-Identifier: Apache-2.0

#include "base/SystemPlaces.h"

#include "base/Accounts.h"
#include "base/KnownFolders.h"

#include <algorithm>
#include <fstream>
#include <string>

#include <unistd.h>

namespace Halvern::Base {

namespace {

using enum PlaceKind;

void AddTable(std::vector<PlaceOfSystem>& places)
{
    places = {
        // Memory, environment and open files of running programs.
        {"/proc", System},
        // Devices, and what the kernel tells of them.
        {"/sys", System},
        {"/dev", System},
        // Passwords, keys, and how the machine is set up.
        {"/etc", System},
        {"/boot", System},
        // Sockets, sessions and secrets of services that run.
        {"/run", System},
        // Where disks and sticks appear that a user plugs in.
        {"/run/media", Open},
        // Databases, mail and logs.
        {"/var", System},
        // For everybody, as /tmp is.
        {"/var/tmp", Open},
        // Programs with their libraries, as in /usr/share.
        {"/var/lib/flatpak", Open},
        // Programs; no design is made of them.
        {"/usr", System},
        {"/bin", System},
        {"/sbin", System},
        {"/lib", System},
        {"/lib32", System},
        {"/lib64", System},
        {"/libx32", System},
        // Fonts, and the part libraries that come with programs.
        {"/usr/share", Open},
        {"/usr/local/share", Open},
        {"/opt", Open},
        {"/snap", Open},
        // The site's own data, and other disks; named because they may lie below /var.
        {"/srv", Open},
        {"/mnt", Open},
        {"/media", Open},
        {"/tmp", Open},
        {"/home", Homes},
        {"/root", OtherHome},
    };
}

/// Files on servers, and those that a user chose for a program in a sandbox: both appear among the
/// sockets of the session.
void AddSession(std::vector<PlaceOfSystem>& places)
{
    const std::string session = "/run/user/" + std::to_string(::getuid());
    places.push_back({session + "/gvfs", Open});
    places.push_back({session + "/doc", Open});
}

/// Without a slash at its end; empty for one that is not absolute, and for "/".
std::filesystem::path Home(const std::filesystem::path& home)
{
    std::filesystem::path cleaned = home.lexically_normal();
    if (!cleaned.has_filename())
        cleaned = cleaned.parent_path();
    return cleaned.is_absolute() && cleaned.has_relative_path() ? cleaned : std::filesystem::path();
}

/// What is known of a folder counts more than that it is a home; the user's own may be any folder
/// but one of the system's.
void AddHome(std::vector<PlaceOfSystem>& places, const std::filesystem::path& folder,
             PlaceKind kind)
{
    const bool isTaken = std::any_of(places.begin(), places.end(), [&](const PlaceOfSystem& place) {
        return place.folder == folder && (kind != OwnHome || place.kind == System);
    });
    if (!folder.empty() && !isTaken)
        places.push_back({folder, kind});
}

void AddOwnHome(std::vector<PlaceOfSystem>& places, const std::filesystem::path& home)
{
    AddHome(places, home, OwnHome);
    // A home per program, each with hidden folders.
    if (!home.empty())
        places.push_back({home / "snap", Secrets});
}

} // namespace

std::vector<PlaceOfSystem> PlacesOfSystem()
{
    std::vector<PlaceOfSystem> places;
    AddTable(places);
    AddSession(places);
    const std::filesystem::path account = Home(AccountHomeFolder());
    // Not what lies beside HOME: programs are often given one that lies beside their work.
    AddHome(places, Home(account.parent_path()), Homes);
    std::ifstream accounts("/etc/passwd");
    for (const std::string& home : HomesOfPeople(accounts, std::to_string(::getuid())))
        AddHome(places, Home(home), OtherHome);
    AddOwnHome(places, account);
    AddOwnHome(places, Home(HomeFolder()));
    return places;
}

} // namespace Halvern::Base
