// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"
#include "SelectionWalk.h"

#include <QtCore/QStringList>

#include <gtest/gtest.h>

namespace Halvern::Test {

/// Lists what is below the folder "w" of a tree.
class SelectionOnDisk : public ::testing::Test
{
protected:
    Jobs::SelectionListing List(const QStringList& sources, const QStringList& exclude = {}) const;
    /// The names of all entries, folders with a slash at the end, in their order.
    QStringList Names(const QStringList& sources, const QStringList& exclude = {}) const;
    /// One line for each item that was left out: "Excluded a.bak: *.bak", in their order.
    QStringList LeftOut(const QStringList& sources, const QStringList& exclude = {}) const;
    QStringList Lines(const QList<Jobs::LeftOutItem>& items) const;

    FileTree tree;
};

} // namespace Halvern::Test
