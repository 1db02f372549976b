// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"

#include "syncservices/FileMapping.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Halvern::SyncServices;

/// Whether source and target of a mapping are one file.
struct MappingOnDisk : testing::Test
{
    bool Same(const QString& source, const QString& target) const
    {
        return FileMapping(source, target, 7).AreSourceAndTargetSame();
    }
    bool SameInTree(const char* source, const char* target) const
    {
        return Same(tree.Path(QString::fromUtf8(source)), tree.Path(QString::fromUtf8(target)));
    }

    FileTree tree;
};

} // namespace Halvern::Test
