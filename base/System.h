// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Halvern::Base {

/// The two families of systems whose rules on paths differ. Rules on the mere text of a path take
/// one as an argument, so that each can be looked at from the other.
enum class System
{
    Posix,
    Windows
};

#ifdef _WIN32
inline constexpr System ThisSystem = System::Windows;
#else
inline constexpr System ThisSystem = System::Posix;
#endif

} // namespace Halvern::Base
