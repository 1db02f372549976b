// SPDX-License-Identifier: Apache-2.0

#include "base/SystemPlaces.h"

#include "base/KnownFolders.h"
#include "base/WindowsApi.h"

#include <array>
#include <string>

#include <shlobj.h>

namespace Halvern::Base {

namespace {

using enum PlaceKind;

std::filesystem::path SpecialFolder(int folder)
{
    std::array<wchar_t, MAX_PATH> path{};
    ::SHGetSpecialFolderPathW(nullptr, path.data(), folder, false);
    return path.data();
}

std::vector<std::filesystem::path> Drives()
{
    std::vector<std::filesystem::path> drives;
    const DWORD present = ::GetLogicalDrives();
    for (wchar_t letter = L'A'; letter <= L'Z'; ++letter)
        if (present & (DWORD(1) << (letter - L'A')))
            drives.emplace_back(std::wstring{letter, L':', L'\\'});
    return drives;
}

void Add(std::vector<PlaceOfSystem>& places, const std::filesystem::path& folder, PlaceKind kind,
         const char* below = "")
{
    if (!folder.is_absolute())
        return;
    std::filesystem::path place = (folder / below).lexically_normal();
    if (!place.has_filename())
        place = place.parent_path();
    if (place.has_relative_path())
        places.push_back({place, kind});
}

void AddMachine(std::vector<PlaceOfSystem>& places)
{
    const std::filesystem::path windows = SpecialFolder(CSIDL_WINDOWS);
    // Password hives, keys of the machine, logs.
    Add(places, windows, System);
    Add(places, windows, Open, "Fonts");
    const std::filesystem::path drive = windows.root_path();
    // The same of an earlier installation, with its users' homes.
    Add(places, drive, System, "Windows.old");
    Add(places, drive, System, "Boot");
    Add(places, drive, System, "Recovery");
    // Part libraries that come with programs lie there; of the rest, where credentials are.
    const std::filesystem::path common = CommonDataFolder();
    Add(places, common, Open);
    Add(places, common, Secrets, "Microsoft");
    Add(places, common, Secrets, "ssh");
}

void AddDrives(std::vector<PlaceOfSystem>& places)
{
    for (const std::filesystem::path& drive : Drives()) {
        // Deleted files, and earlier states of the disk.
        Add(places, drive, System, "$Recycle.Bin");
        Add(places, drive, System, "System Volume Information");
    }
}

void AddHomes(std::vector<PlaceOfSystem>& places)
{
    const std::filesystem::path account = AccountHomeFolder();
    Add(places, account.parent_path(), Homes);
    // Made for sharing.
    Add(places, EnvironmentPath("PUBLIC"), Open);
    for (const std::filesystem::path& home : {account, HomeFolder()}) {
        Add(places, home, OwnHome);
        Add(places, home, Secrets, "AppData");
    }
}

/// Settings, sessions, passwords and keys of programs, wherever an administrator put them.
void AddDataOfPrograms(std::vector<PlaceOfSystem>& places)
{
    const std::filesystem::path local = SpecialFolder(CSIDL_LOCAL_APPDATA);
    Add(places, RoamingDataFolder(), Secrets);
    Add(places, local, Secrets);
    // Fonts and programs installed for one user, and what POSIX has in /tmp.
    Add(places, local, Open, "Microsoft/Windows/Fonts");
    Add(places, local, Open, "Programs");
    Add(places, local, Open, "Temp");
}

} // namespace

std::vector<PlaceOfSystem> PlacesOfSystem()
{
    std::vector<PlaceOfSystem> places;
    AddMachine(places);
    AddDrives(places);
    AddHomes(places);
    AddDataOfPrograms(places);
    return places;
}

} // namespace Halvern::Base
