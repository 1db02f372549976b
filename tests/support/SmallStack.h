// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <functional>

namespace Halvern::Test {

/// The stack of a worker thread where stacks are small. Watching over memory takes room on it.
#ifdef CORSYNC_SANITIZED
inline constexpr std::size_t SmallStackBytes = 1024 * 1024;
#else
inline constexpr std::size_t SmallStackBytes = 256 * 1024;
#endif

/// Runs `work` on a thread of its own with a stack of that size and waits for its end; a deeper
/// stack ends the process. Requires: `work` throws nothing.
void OnASmallStack(const std::function<void()>& work);

} // namespace Halvern::Test
