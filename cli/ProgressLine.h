// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

namespace Halvern::Cli {

/// "Copying 12/340 files, 1.2 GB", cut to `width` columns. A total of 0 is unknown, and a count of
/// 0 with an unknown total is left out, as are 0 bytes.
QString RenderProgress(const QString& phase, qint64 count, qint64 total, qint64 bytes, int width);

/// One line on standard error that is written over and over, at most ten times a second. Nothing
/// is written when it is not active.
class ProgressLine
{
public:
    explicit ProgressLine(bool active);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Shows a new phase at once.
    void Begin(const QString& phase, qint64 total);
    /// Shows what has been counted, when it is time to.
    void Show(qint64 count, qint64 bytes);
    /// Removes the line.
    void Clear();
    bool IsActive() const { return m_active; }

private:
    void Draw();

    bool m_active;
    int m_width;
    QString m_phase;
    qint64 m_count = 0;
    qint64 m_total = 0;
    qint64 m_bytes = 0;
    QElapsedTimer m_sinceDrawn;
    bool m_visible = false;
};

} // namespace Halvern::Cli
