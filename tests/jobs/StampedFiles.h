// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileStamps.h"
#include "FileTimes.h"
#include "FileTree.h"

#include "base/NativePath.h"
#include "base/Units.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

constexpr qint64 Second = 1'000'000'000;
constexpr qint64 MilliSecond = 1'000'000;

/// Files whose times are set, in nanoseconds since 1970.
class StampedFiles : public ::testing::Test
{
protected:
    QString File(const QString& name, const QByteArray& content, qint64 modified)
    {
        tree.File(name, content);
        SetTime(name, modified);
        return tree.Path(name);
    }
    void SetTime(const QString& name, qint64 modified) const
    {
        SetModifiedNanoseconds(tree.Path(name), modified);
    }

    FileTree tree;
};

} // namespace Halvern::Test
