// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/ICancelController.h"

namespace Halvern::Test {

/// Counts the polls, and asks to stop from the n-th on.
class CancelAtPoll : public FileLink::ICancelController
{
public:
    bool IsCancelRequested() override
    {
        ++polls;
        return from > 0 && polls >= from;
    }

    int polls = 0;
    /// 0: never.
    int from = 0;
};

} // namespace Halvern::Test
