// SPDX-License-Identifier: Apache-2.0

#include "base/SystemPlaces.h"

#include "base/KnownFolders.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string>
#include <string_view>

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

/// A line of /etc/passwd.
struct Account
{
    explicit Account(std::string_view line)
    {
        for (std::string_view& field : fields) {
            const std::size_t end = std::min(line.find(':'), line.size());
            field = line.substr(0, end);
            line.remove_prefix(std::min(end + 1, line.size()));
        }
    }

    std::string_view User() const { return fields[2]; }
    std::string_view Home() const { return fields[5]; }
    /// Those of services have small numbers, or cannot log in.
    bool IsPerson() const
    {
        const std::string_view shell = fields[6];
        return User() == "0" || (User().size() >= 4 && User() != "65534" &&
                                 !shell.ends_with("/nologin") && !shell.ends_with("/false"));
    }

    std::array<std::string_view, 7> fields;
};

/// Of root and of the people among the accounts of this machine, but for the user's own.
std::vector<std::filesystem::path> HomesOfOtherAccounts()
{
    // Not through getpwent: that may ask a directory for every account of a company.
    std::vector<std::filesystem::path> homes;
    const std::string own = std::to_string(::getuid());
    std::ifstream accounts("/etc/passwd");
    for (std::string line; std::getline(accounts, line);) {
        const Account account(line);
        if (account.IsPerson() && account.User() != own)
            homes.emplace_back(account.Home());
    }
    return homes;
}

/// Without a slash at its end; empty for one that is not absolute, and for "/".
std::filesystem::path Home(const std::filesystem::path& home)
{
    std::filesystem::path cleaned = home.lexically_normal();
    if (!cleaned.has_filename())
        cleaned = cleaned.parent_path();
    return cleaned.is_absolute() && cleaned.has_relative_path() ? cleaned : std::filesystem::path();
}

/// A row that is there counts more, but for that of the user's own home.
void AddHome(std::vector<PlaceOfSystem>& places, const std::filesystem::path& folder,
             PlaceKind kind)
{
    const bool isNew = std::none_of(places.begin(), places.end(), [&](const PlaceOfSystem& place) {
        return place.folder == folder;
    });
    if (!folder.empty() && (isNew || kind == OwnHome))
        places.push_back({folder, kind});
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
    for (const std::filesystem::path& home : HomesOfOtherAccounts())
        AddHome(places, Home(home), OtherHome);
    AddHome(places, account, OwnHome);
    AddHome(places, Home(HomeFolder()), OwnHome);
    return places;
}

} // namespace Halvern::Base
