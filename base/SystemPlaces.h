// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <vector>

namespace Halvern::Base {

/// Whom a folder of the machine belongs to, as far as it matters to somebody who must not give away
/// what lies there.
enum class PlaceKind
{
    /// Nobody's secrets: what programs share, and disks for everybody's data.
    Open,
    /// The system's own.
    System,
    /// What programs keep for a user: settings, sessions, passwords.
    Secrets,
    /// The home folder of the user who runs this program. What is hidden in it is secret.
    OwnHome,
    /// The home folder of another account.
    OtherHome,
    /// Holds home folders: each folder in it is one.
    Homes
};

struct PlaceOfSystem
{
    std::filesystem::path folder;
    PlaceKind kind = PlaceKind::Open;
};

/// What is known of the machine's folders. A row counts for everything below its folder, unless a
/// row says otherwise of a folder in between; of two rows about one folder the later counts.
/// Whether a folder exists is not asked. Not to be called while another thread changes the
/// environment.
std::vector<PlaceOfSystem> PlacesOfSystem();

} // namespace Halvern::Base
