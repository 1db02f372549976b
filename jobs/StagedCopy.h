// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

#include "base/FileStatus.h"

#include <QtCore/QString>

#include <filesystem>

namespace Halvern::Jobs {

/// A copy that is being made ready.
struct StagedCopy
{
    /// Below the cloud folder, and absolute.
    std::filesystem::path place;
    std::filesystem::path path;
    QString text;
    Base::FileStatus source;
    bool isRewritten = false;
    /// Made ready in the folder of its target, not in that for unfinished copies.
    bool isBeside = false;
    /// Of the copy that is made anew from itself.
    FileStamp stamp;
};

/// Nobody touched it since.
inline bool IsAsItWas(const Base::FileStatus& was, const Base::FileStatus& is)
{
    return was.kind == is.kind && was.size == is.size && was.modified == is.modified &&
           was.device == is.device && was.index == is.index;
}

} // namespace Halvern::Jobs
