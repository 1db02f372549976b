// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"

#include "syncservices/FolderManager.h"
#include "syncservices/ServicesSettings.h"
#include "syncservices/SyncDatabase.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

/// Settings over a tree: the cloud cache folder is "cloud", the database "sync.db" in it.
SyncServices::ServicesSettings SettingsFor(const FileTree& tree);

/// The platform services running over a temporary tree with a real database file.
class ServicesFixture : public ::testing::Test
{
protected:
    ServicesFixture();
    ~ServicesFixture() override;

    QString Cloud(const QString& relative = {}) const;
    SyncServices::SyncDatabase& Database() const;

    FileTree tree;
    SyncServices::ServicesSettings settings;
};

} // namespace Halvern::Test
