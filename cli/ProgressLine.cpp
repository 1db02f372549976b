// SPDX-License-Identifier: Apache-2.0

#include "ProgressLine.h"

#include "Streams.h"

#include <QtCore/QLocale>

namespace Halvern::Cli {

namespace {

constexpr qint64 MillisecondsBetweenDraws = 100;

} // namespace

QString RenderProgress(const QString& phase, qint64 count, qint64 total, qint64 bytes, int width)
{
    QString line = phase;
    if (total > 0)
        line += QStringLiteral(" %1/%2 files").arg(count).arg(total);
    else if (count > 0)
        line += QStringLiteral(" %1 files").arg(count);
    if (bytes > 0)
        line += QStringLiteral(", ") +
                QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
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
    m_count = 0;
    m_total = total;
    m_bytes = 0;
    Draw();
}

void ProgressLine::Show(qint64 count, qint64 bytes)
{
    m_count = count;
    m_bytes = bytes;
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
    const QString line = RenderProgress(m_phase, m_count, m_total, m_bytes, m_width - 1);
    WriteMessages("\r\033[K" + line.toUtf8());
    m_sinceDrawn.start();
    m_visible = true;
}

} // namespace Halvern::Cli
