// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExcludePattern.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <cstddef>
#include <optional>
#include <vector>

namespace Halvern::Jobs {

/// The pattern that excludes something, and where it stands.
struct ExcludeMatch
{
    QString pattern;
    /// "/w/project/.corsyncignore:3", or "built in"; empty for one of the import's own.
    QString place;

    /// "*.bak (/w/project/.corsyncignore:3)"
    QString Text() const;
};

/// What is not to be imported of a source folder: the import's own patterns, those of files
/// .corsyncignore, and those built in for version control, locks and backups. Paths are relative to
/// the source folder.
///
/// Of one list the last pattern that matches decides. The import's own list goes before those of
/// files, of them the one in the deepest folder first (which the caller adds last), and the
/// built-in list comes last:
///
///     own "!*.FCStd1", built in "*.FCStd1"          a/part.FCStd1 is imported
///     .corsyncignore "*.bak", a/.corsyncignore "!keep.bak"      a/keep.bak is imported
///
/// "!*" and "!*/" bring back what own patterns and files exclude, and leave the built-in list
/// alone: who lists what is wanted ("*", "!*/", "!*.stp") does not want the folder .git.
///
/// What lies in a folder that is excluded is not asked for, hence cannot be brought back.
class ExcludeRules
{
public:
    /// The name of files with patterns for their folder and those below. They are not imported
    /// themselves, unless a pattern brings them back.
    static const QString FileName;

    explicit ExcludeRules(const QStringList& patterns = {}, Base::System system = Base::ThisSystem);

    /// Why these are not the patterns of a file .corsyncignore: it is no UTF-8, or a line can match
    /// nothing. Empty when they are.
    static QString FaultIn(const QByteArray& content);

    /// Whether an entry of this name is a file with patterns.
    bool IsRulesFile(const QString& name) const;
    /// Adds the patterns of the file .corsyncignore in `folder`, which is empty for the source
    /// folder; `file` is its path as people see it. What is added later goes first. False, with
    /// nothing added, when it is no UTF-8.
    [[nodiscard]] bool AddFile(const QString& folder, const QString& file,
                               const QByteArray& content);
    std::size_t FileCount() const { return m_files.size(); }
    /// Forgets the patterns of files, but for the first ones added.
    void KeepFiles(std::size_t count);

    /// Nothing for what is to be imported.
    std::optional<ExcludeMatch> Match(const QString& path, bool isFolder) const;

private:
    struct Rule
    {
        ExcludePattern pattern;
        int line = 0;
    };
    struct List
    {
        std::vector<Rule> rules;
        QString place;
        /// The folder of the file with a slash at its end, empty for the source folder; how many
        /// names lead there.
        QString folder;
        std::size_t depth = 0;
    };

    const Rule* LastMatch(const List& list, const QString& path, PathNames names,
                          bool isFolder) const;

    Base::System m_system;
    List m_builtIn;
    std::vector<List> m_files;
    List m_own;
};

} // namespace Halvern::Jobs
