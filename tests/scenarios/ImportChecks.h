// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExpectedImport.h"
#include "ScenarioFixture.h"

#include <tuple>

namespace Halvern::Test {

/// What was copied where by an earlier import, and what each side was then.
struct CopyRecord
{
    FileStamp source;
    FileStamp copy;
    /// A conflict was settled, or the file failed: what the next import does is not foretold.
    bool isOpen = false;
    /// The source was deleted by the move that made the copy.
    bool isMoved = false;
    /// The links of the source were read for it.
    bool hasLinks = false;
    /// Of several copies of a source the latest counts.
    int round = 0;
};

/// An import's target folder, a source, and where the copy lies.
struct CopyKey
{
    QString to;
    QString source;
    QString target;

    bool operator==(const CopyKey&) const = default;
    bool operator<(const CopyKey& other) const
    {
        return std::tie(to, source, target) < std::tie(other.to, other.source, other.target);
    }
};

using CopyRecords = QMap<CopyKey, CopyRecord>;

/// Database, base store, plug-ins and settings, relative to the tree.
bool IsOurOwn(const QString& path);
/// The sources that moves to a target folder have deleted, with the copies that are still there.
QMap<QString, QString> MovedSources(const FileTree& tree, const CopyRecords& records,
                                    const QString& to);

/// Looks at the tree before and after an import and says what is wrong, in sentences.
class ImportChecks
{
public:
    /// Before the import.
    ImportChecks(const FileTree& tree, const ImportStep& step, const CopyRecords& records);

    /// Nothing has happened.
    QStringList CheckDryRun() const;
    /// After it.
    QStringList Check(const ImportReport& report);
    /// After the same import once more.
    QStringList CheckSecond(const ImportReport& first, const ImportReport& second) const;
    /// The records with those of this import.
    CopyRecords Recorded(const ImportReport& report) const;

private:
    using Stamps = QMap<QString, FileStamp>;

    Stamps Everything() const;
    void Wrong(const QString& what) { m_wrong.append(what); }
    QString ToFolder() const { return u"cloud/"_s + m_step.to + u'/'; }
    FileStamp Before(const QString& path) const { return m_before.value(path); }
    FileStamp After(const QString& path) const { return m_after.value(path); }
    bool IsOursToChange(const QString& path) const;
    bool IsObstructed(const QString& target) const;
    /// The line about a file, or about another name of it.
    ReportedFile LineOf(const ImportReport& report, const QString& file) const;
    FileStamp SourceStamp(const QString& source) const;
    bool HasObstacles() const;
    bool IsTouched(const ReportedFile& line) const;
    bool HasMoved(const QString& source) const { return m_expected.Moved().contains(source); }
    bool BaseStoreHolds(const QByteArray& content) const;
    const CopyRecord* RecordOf(const QString& source, const QString& target) const;

    void CheckConflicts(const ImportReport& report);
    void CheckOutside(const ImportReport& report);
    void CheckOldContent();
    void CheckUntouched(const ImportReport& report);
    void CheckLines(const ImportReport& report);
    void CheckFoundLinks(const ImportReport& report);
    static bool IsOrphan(const ReportedFile& line);
    bool IsLeftover(const ReportedFile& line) const;
    void CheckOrphan(const ImportReport& report, const ReportedFile& line);
    void CheckNothingLinks(const ImportReport& report, const QString& orphan);
    void CheckDecision(const ReportedFile& line);
    void CheckRecordedDecision(const ReportedFile& line, const CopyRecord& record);
    void CheckNewDecision(const ReportedFile& line);
    void CheckCopy(const ImportReport& report, const ReportedFile& line);
    void CheckLink(const ImportReport& report, const ReportedFile& line, const ExpectedLink& link,
                   const QString& written);
    bool LeadsToAnEarlierCopy(const QString& source, const QString& resolved) const;
    bool AreLinksDue(const ImportReport& report, const ReportedFile& line) const;
    void CheckExitCode(const ImportReport& report);
    bool IsComplete(const ImportReport& report, const QString& source) const;
    QStringList LinkedBy(const QString& source) const;
    QStringList SourcesThatStay(const ImportReport& report, bool othersCount) const;
    void CheckMove(const ImportReport& report);
    void CheckLeftovers();

    const FileTree& m_tree;
    const ImportStep m_step;
    const CopyRecords m_records;
    const ExpectedImport m_expected;
    const Stamps m_before;
    Stamps m_after;
    QStringList m_wrong;
};

} // namespace Halvern::Test
