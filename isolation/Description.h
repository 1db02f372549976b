// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "isolation/Messages.h"

#include <QtCore/QString>

#include <optional>

namespace Halvern::Isolation {

/// What a stub stands for. It lies beside the stub, under the stub's name with this added.
constexpr char DescriptionSuffix[] = ".isolated";

struct Description
{
    /// The program that runs the plug-in.
    QString program;
    /// The plug-in's library.
    QString library;
    /// What the plug-in is registered for.
    ServiceKind service = ServiceKind::Resolver;
    /// How long a call may take, in seconds, and how much memory the process may have, in bytes.
    /// 0: no limit.
    int timeLimit = 0;
    qint64 memoryLimit = 0;

    [[nodiscard]] bool Save(const QString& file) const;
    /// Empty texts when there is no such file.
    static Description Load(const QString& file);
};

/// "resolver" or "layout".
QString NameOf(ServiceKind kind);
std::optional<ServiceKind> ServiceKindOf(const QString& name);

} // namespace Halvern::Isolation
