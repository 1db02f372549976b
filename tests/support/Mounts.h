// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::Test {

/// File systems of a test's own, for faults that a process with all rights does not meet otherwise.
/// Mounting needs root; where it is refused the test fails.
class Mount
{
public:
    /// An empty file system in memory with room for `bytes`.
    static Mount Small(const QString& folder, int bytes);
    /// What is below `other`, at `folder` as well.
    static Mount Bind(const QString& folder, const QString& other);
    /// What is below `folder`, not to be written.
    static Mount ReadOnly(const QString& folder);

    Mount(Mount&& other) noexcept;
    ~Mount();
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;

    bool IsMounted() const { return !m_folder.isEmpty(); }

private:
    Mount() = default;

    QString m_folder;
};

} // namespace Halvern::Test
