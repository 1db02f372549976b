// SPDX-License-Identifier: Apache-2.0

#include "SqlRows.h"

namespace Halvern::Jobs {

CopyRecord ReadRecord(Row& row)
{
    CopyRecord record;
    record.id = row.Number();
    record.project = row.Text();
    record.source = row.Text();
    record.target = row.Text();
    record.sourceStamp = row.Stamp();
    record.targetStamp = row.Stamp();
    record.recordedAt = row.Number();
    record.linksState = row.State();
    record.readers = row.Text();
    record.isRewritePending = row.Flag();
    record.isMoved = row.Flag();
    record.sourceLinks = UnpackLinks(row.Bytes());
    record.targetLinks = UnpackLinks(row.Bytes());
    record.linkedTargets = UnpackTexts(row.Bytes());
    record.origin = row.Origin();
    return record;
}

void BindRecord(Binder& binder, int user, const CopyRecord& record)
{
    binder.Number(user)
        .Key(record.target)
        .Key(record.source)
        .Text(record.project)
        .Text(record.source)
        .Text(record.target)
        .Stamp(record.sourceStamp)
        .Stamp(record.targetStamp)
        .Number(record.recordedAt)
        .Number(static_cast<int>(record.linksState))
        .Text(record.readers)
        .Number(record.isRewritePending)
        .Number(record.isMoved)
        .Bytes(PackLinks(record.sourceLinks))
        .Bytes(PackLinks(record.targetLinks))
        .Bytes(PackTexts(record.linkedTargets))
        .Number(static_cast<int>(record.origin));
}

} // namespace Halvern::Jobs
