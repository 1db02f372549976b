// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// Copies "src/a.dat" over a file in the cloud folder, as an import does when it was told to
/// replace.
class ReplacingFixture : public ImporterFixture
{
protected:
    bool Replace(const QString& target = u"a.dat"_s)
    {
        FileLinkImporterImp importer(nullptr);
        // A source that does not exist is passed over: the set is there, and empty.
        EXPECT_TRUE(
            importer.Initialize({Source(u"none"_s)}, Cloud(), false, Global::NoCopyOption, {}));
        const auto mapping = std::make_shared<FileMapping>(Source(u"a.dat"_s), Cloud(target),
                                                           settings.authenticationConfigurationId);
        mapping->SetFlag(FileMapping::Selected, true);
        EXPECT_TRUE(importer.GetFileSet()->AddFile(mapping));
        log.Clear();
        return importer.CopyFile(mapping, false);
    }

    /// The module's lines that begin so, without the tree's path.
    QStringList LinesWith(const QString& begin) const
    {
        QStringList lines = log.Lines(u"CorsyncFileLink"_s);
        lines.removeIf([&](const QString& line) { return !line.startsWith(begin); });
        return Short(lines);
    }
    QStringList Errors() const { return LinesWith(u"ERROR"_s); }

    LogCapture log;
};

} // namespace Halvern::Test
