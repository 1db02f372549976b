// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Halvern::Isolation {

// How the library that stands for a plug-in learns that a call is to be ended before its time is
// over. It knows nothing of the job library, which therefore looks this function up in it.

/// Asked several times in each tenth of a second of a call, on the thread that called; false ends
/// the plug-in's process.
using CallWatch = bool();
using SetCallWatch = void(CallWatch* goesOn);
inline constexpr const char* SetCallWatchName = "SetIsolatedCallWatch";

} // namespace Halvern::Isolation
