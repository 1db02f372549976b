// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CommandFixture.h"
#include "DesignFiles.h"
#include "FileStamp.h"

namespace Halvern::Test {

/// A line about a file, as `--json` has it. Paths below the tree are relative to it.
struct ReportedFile
{
    QString status;
    QString source;
    QString target;
    QString reason;
    bool outside = false;
    bool sourceDeleted = false;
    QString remark;
    /// Why a move left the source, and because of which file.
    QString sourceStays;
    QString staysFor;
};

/// What an import told in JSON.
struct ImportReport
{
    int exitCode = -1;
    QList<ReportedFile> files;
    QList<QJsonObject> conflicts;
    /// Everything else but the summary.
    QList<QJsonObject> others;
    QJsonObject summary;
    CommandResult result;

    /// The line about a source; one with the status "none" when there is none.
    ReportedFile Of(const QString& source) const;
    QString StatusOf(const QString& source) const { return Of(source).status; }
    QStringList Statuses() const;
    /// "copied work/a.svg -> cloud/a.svg", one line each.
    QStringList Lines() const;
};

void PrintTo(const ImportReport& report, std::ostream* out);

/// Whole jobs of the real command over real files, looked at from outside: what it prints, what
/// lies in the folders, and what is in the base store.
class ScenarioFixture : public CommandFixture
{
protected:
    /// The import's report; arguments as for Import.
    ImportReport Report(const QStringList& arguments) const;
    /// Any other command over the same cloud folder, database and plug-ins.
    CommandResult Corsync(const QString& command, const QStringList& arguments = {}) const;
    ImportReport ReportOf(const CommandResult& result) const;

    /// Writes a design file of its extension's format.
    void Design(const QString& file, const QStringList& links,
                const QByteArray& content = "content");
    QStringList LinksOf(const QString& file) const;

    FileStamp Stamp(const QString& file) const { return StampOf(tree.Path(file)); }
    QMap<QString, FileStamp> Stamps(const QString& folder) const;
    /// As an editor saves a file that exists: new content and a later time.
    void Save(const QString& file, const QByteArray& content);
    /// Other content with the time that the file had.
    void SaveUnnoticed(const QString& file, const QByteArray& content);

    /// Some file of the base store holds these bytes.
    bool BaseStoreHolds(const QByteArray& content) const;
    /// Temporary and parked files anywhere in the tree.
    QStringList Leftovers() const;
};

} // namespace Halvern::Test
