// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "AliasLog.h"
#include "JobControl.h"
#include "JobFile.h"
#include "LinkReader.h"

namespace Halvern::Jobs {

/// Writes the links of single copies that are being made ready, and makes sure of them by reading
/// the copies again.
class CopyLinks
{
public:
    using Links = LinkReader::Links;

    CopyLinks(const JobState& job, JobControl& control, LinkReader& reader)
        : m_job(job), m_control(control), m_reader(reader)
    {}

    /// Of some formats links mean another file where the same bytes lie elsewhere: they go by what
    /// stands around them. Then `copy`, which was not changed yet, tells other links than `links`,
    /// which were read in the file that it was made from. What is found by its name beside a file
    /// does not count: nothing lies beside a copy that is being made ready.
    bool DependOnPlace(const Links& links, const QString& copy);
    /// What must be written into a copy that stands in the folder of the file's target, or at it,
    /// and where `read` was read: each link that the file should hold and that leads elsewhere as
    /// it stands there.
    Links ChangesOf(const JobFile& file, const Links& read) const;
    /// Writes links into `copy`. True when a plug-in then finds them in it, and else nothing but
    /// what the file should hold, or what was there `before`.
    bool Write(const JobFile& file, const QString& copy, const Links& asked, const Links& before);

    /// What the log says of `copy` is said of the target: of the file itself, and of what its links
    /// lead to from where it is made ready.
    static AliasLog::Names NamesFor(const JobFile& file, const QString& copy);

private:
    static bool HasToChangeUnseen(const JobFile& file, const SyncServices::FileLink& link);
    static bool IsOnlyFound(const JobFile& file, qsizetype place,
                            const SyncServices::FileLink& there);
    bool StaysAsItIs(const JobFile& file, qsizetype link) const;
    bool Holds(const JobFile& file, const QString& copy, const Links& asked, const Links& before,
               QString& difference);
    bool IsWrittenUnseen(const QString& copy, const Links& links);

    const JobState& m_job;
    JobControl& m_control;
    LinkReader& m_reader;
};

} // namespace Halvern::Jobs
