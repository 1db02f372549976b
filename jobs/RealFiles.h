// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/RootedFolder.h"

#include <QtCore/QString>

namespace Halvern::Jobs {

/// What lies at a path when no symbolic link is followed on the way: whoever sets one at that very
/// moment leads nobody elsewhere.
class RealFiles
{
public:
    /// Whether the file with this status is the one at an absolute path without links. Windows: not
    /// asked, always true; links need rights there that whoever sends a design does not have.
    bool IsAt(const QString& real, const Base::FileStatus& status);

private:
    Base::RootedFolder m_root;
};

} // namespace Halvern::Jobs
