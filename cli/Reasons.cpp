// SPDX-License-Identifier: Apache-2.0

#include "Reasons.h"

#include <algorithm>

namespace Halvern::Cli {

namespace {

constexpr int ErrorLevel = 40000;
constexpr int WarnLevel = 30000;

/// A path may begin here: "/x" or "C:/x" at the start or after a character that ends a word.
bool MayBegin(const QString& text, qsizetype at)
{
    if (at > 0 && text[at - 1] != u' ' && text[at - 1] != u'"' && text[at - 1] != u'\'' &&
        text[at - 1] != u'(')
        return false;
    if (text[at] == u'/')
        return true;
    return at + 2 < text.size() && text[at + 1] == u':' && text[at + 2] == u'/';
}

/// A path may end before this position: it is the end, or what stands there may follow a path.
bool MayEnd(const QString& text, qsizetype at)
{
    static const QString followers = QStringLiteral(" .,:;)\"'");
    return at == text.size() || followers.contains(text[at]);
}

} // namespace

Reasons::Reasons(const QList<LogRecord>& records, const QSet<QString>& paths) : m_paths(paths)
{
    for (const LogRecord& record : records)
        if (record.level < WarnLevel || record.level >= ErrorLevel)
            Assign(record);
    for (const LogRecord& record : std::as_const(m_unassigned))
        AddGeneral(record);
    m_unassigned.clear();
}

QString Reasons::Join(const QList<LogRecord>& records)
{
    const bool explained = std::any_of(records.begin(), records.end(), [](const LogRecord& record) {
        return record.origin == LogOrigin::Plugin;
    });
    QStringList texts;
    for (const LogRecord& record : records)
        if (!(explained && record.origin == LogOrigin::PluginManager))
            texts.append(record.text);
    texts.removeDuplicates();
    return texts.join(QStringLiteral("; "));
}

/// Paths may hold blanks and dots, so that only looking up tells where one ends: the longest known
/// path counts.
QStringList Reasons::NamedPaths(const QString& text) const
{
    QStringList named;
    for (qsizetype begin = 0; begin < text.size(); ++begin) {
        if (!MayBegin(text, begin))
            continue;
        QString longest;
        for (qsizetype end = begin + 1; end <= text.size(); ++end) {
            if (!MayEnd(text, end))
                continue;
            const QString candidate = text.mid(begin, end - begin);
            if (m_paths.contains(candidate))
                longest = candidate;
        }
        if (!longest.isEmpty() && !named.contains(longest))
            named.append(longest);
    }
    return named;
}

void Reasons::Assign(const LogRecord& record)
{
    const QStringList paths = NamedPaths(record.text);
    if (paths.isEmpty()) {
        if (record.IsAboutPlugin())
            m_unassigned.append(record);
        else
            AddGeneral(record);
        return;
    }
    if (record.IsAboutPlugin()) {
        for (const QString& path : paths)
            m_byPath[path].append(m_unassigned);
        m_unassigned.clear();
    }
    for (const QString& path : paths)
        m_byPath[path].append(record);
}

void Reasons::AddGeneral(const LogRecord& record)
{
    if (m_generalTexts.contains(record.text))
        return;
    m_generalTexts.insert(record.text);
    m_general.append(record);
}

} // namespace Halvern::Cli
