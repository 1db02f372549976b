// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/CancelToken.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace Halvern::Cli {

/// Lines that a person types on standard input.
class TerminalInput
{
public:
    explicit TerminalInput(const Jobs::CancelToken& cancel) : m_cancel(cancel) {}

    /// Without its end; nothing at the end of the input and when the job is cancelled meanwhile.
    std::optional<QString> ReadLine();

private:
    const Jobs::CancelToken& m_cancel;
    QByteArray m_read;
};

} // namespace Halvern::Cli
