// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

namespace Halvern::Cli {

/// What is done, of how much; a total of 0 is unknown.
struct ProgressCounts
{
    qint64 files = 0;
    qint64 totalFiles = 0;
    qint64 bytes = 0;
    qint64 totalBytes = 0;
};

/// "Copying 12/340 files, 1.2 GB of 3.4 GB", cut to `width` columns. A count of 0 with an unknown
/// total is left out, as are 0 bytes.
QString RenderProgress(const QString& phase, const ProgressCounts& counts, int width);

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
    void Show(const ProgressCounts& counts);
    /// Removes the line.
    void Clear();
    bool IsActive() const { return m_active; }

private:
    void Draw();

    bool m_active;
    int m_width;
    QString m_phase;
    ProgressCounts m_counts;
    QElapsedTimer m_sinceDrawn;
    bool m_visible = false;
};

} // namespace Halvern::Cli
