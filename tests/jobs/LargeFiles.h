// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobsFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// A project with a file that takes long to be copied, compared or kept.
class LargeFiles : public JobsFixture
{
protected:
    static constexpr qint64 MiB = qint64(1) << 20;
    static constexpr qint64 Size = 24 * MiB;

    LargeFiles()
    {
        tree.File(u"work/proj/b.dat"_s, PatternBytes(Size));
        Begin();
    }

    Jobs::JobResult ImportWith(Jobs::IJobObserver& observer, const Jobs::CancelToken& token,
                               const Jobs::ImportRequest& request)
    {
        Jobs::ImportJob job(Begin(), request, &observer, &token);
        job.MakePlan();
        return job.Execute();
    }
    QStringList CloudNames() const
    {
        QStringList names;
        for (const QString& name : tree.Contents(u"cloud"_s).keys())
            if (!name.endsWith(u'/'))
                names.append(name);
        return names;
    }
    /// As if nobody had cancelled anything before.
    void ExpectTheNextImportToFinish(const QByteArray& content)
    {
        Jobs::ImportRequest request = Request({u"proj"_s});
        const Jobs::JobResult next = Import(request);
        EXPECT_EQ(next.summary.filesWithProblems, 0);
        EXPECT_TRUE(tree.Read(u"cloud/proj/b.dat"_s) == content);
        EXPECT_EQ(Import(request).summary.Count(Jobs::Outcome::Unchanged), next.files.size());
    }
};

} // namespace Halvern::Test
