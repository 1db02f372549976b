// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Boundary.h"
#include "FileTree.h"

#include <gtest/gtest.h>

#include <ostream>

namespace Halvern::Test {

/// A machine in a tree, with the homes of Ann, who runs the job, and of Bob. Paths are relative to
/// the tree.
class BoundaryFixture : public ::testing::Test
{
protected:
    BoundaryFixture();

    QList<Jobs::BoundaryPlace> Places() const;
    /// What the boundary of a job says of a file, which is made when it does not exist:
    /// "allowed", "outside", "system", "secret", "other home", "not within".
    QString Say(const QString& file);

    FileTree tree;
    QStringList sources = {QStringLiteral("home/ann/shed/Shed.gltf")};
    QStringList within;
    QStringList allowed;
};

QString Words(const Jobs::Boundary::Answer& answer);

} // namespace Halvern::Test
