// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"

#include "base/FileStatus.h"

#include <QtCore/QString>

#include <filesystem>
#include <utility>

namespace Halvern::Jobs {

/// A copy that is being made ready, and then waits to be given its name.
struct StagedCopy
{
    explicit StagedCopy(JobFile& made)
        : file(&made), before(made), isRelink(made.deed == Deed::Relink)
    {}

    /// It is as if nothing had been tried.
    void Drop() { *file = std::move(before); }

    JobFile* file;
    /// The file before any of it.
    JobFile before;
    /// Made from the copy itself.
    bool isRelink;
    /// Below the cloud folder, and absolute.
    std::filesystem::path place;
    std::filesystem::path path;
    QString text;
    /// What it was made from.
    Base::FileStatus source;
    bool isRewritten = false;
    /// Made ready in the folder of its target, not in that for unfinished copies.
    bool isBeside = false;
    /// Made where it waits.
    bool isAside = false;
    /// Of the copy that is made anew from itself.
    FileStamp stamp;
    /// What it replaces, and where in the base store that is kept.
    Base::FileStatus there;
    QString version;
    bool isPlaced = false;
};

/// Nobody touched it since.
inline bool IsAsItWas(const Base::FileStatus& was, const Base::FileStatus& is)
{
    return was.kind == is.kind && was.size == is.size && was.modified == is.modified &&
           was.device == is.device && was.index == is.index;
}

} // namespace Halvern::Jobs
