// SPDX-License-Identifier: Apache-2.0

#include "ProgressLine.h"

#include "Streams.h"

#include <QtCore/QLocale>

namespace Halvern::Cli {

namespace {

constexpr qint64 MillisecondsBetweenDraws = 100;

QString SizeText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

} // namespace

QString RenderProgress(const QString& phase, const ProgressCounts& counts, int width)
{
    QString line = phase;
    if (counts.totalFiles > 0)
        line += QStringLiteral(" %1/%2 files").arg(counts.files).arg(counts.totalFiles);
    else if (counts.files > 0)
        line += QStringLiteral(" %1 files").arg(counts.files);
    if (counts.bytes > 0)
        line += QStringLiteral(", ") + SizeText(counts.bytes);
    if (counts.bytes > 0 && counts.totalBytes > 0)
        line += QStringLiteral(" of ") + SizeText(counts.totalBytes);
    return line.left(width);
}

ProgressLine::ProgressLine(bool active) : m_active(active), m_width(active ? TerminalWidth() : 0) {}

ProgressLine::~ProgressLine()
{
    Clear();
}

void ProgressLine::Begin(const QString& phase, qint64 total)
{
    m_phase = phase;
    m_counts = {0, total, 0, 0};
    Draw();
}

void ProgressLine::Show(const ProgressCounts& counts)
{
    m_counts = counts;
    if (m_visible && m_sinceDrawn.hasExpired(MillisecondsBetweenDraws))
        Draw();
}

void ProgressLine::Clear()
{
    if (m_visible)
        WriteMessages("\r\033[K");
    m_visible = false;
}

void ProgressLine::Draw()
{
    if (!m_active)
        return;
    // One column stays free: a full line would make some terminals wrap.
    const QString line = RenderProgress(m_phase, m_counts, m_width - 1);
    WriteMessages("\r\033[K" + line.toUtf8());
    m_sinceDrawn.start();
    m_visible = true;
}

} // namespace Halvern::Cli
