// SPDX-License-Identifier: Apache-2.0

#include "ConflictHint.h"

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Halvern::Jobs;
using namespace Qt::StringLiterals;

namespace {

const QList<ConflictAnswer> Any{ConflictAnswer::Keep, ConflictAnswer::Replace,
                                ConflictAnswer::Rename};

Conflict Of(ConflictKind kind, bool selected, const QList<ConflictAnswer>& answers = {})
{
    Conflict conflict;
    conflict.kind = kind;
    conflict.selected = selected;
    conflict.answers = answers;
    return conflict;
}

} // namespace

TEST(ConflictHints, NameTheOptionOfTheFilesThatAreInConflict)
{
    const Conflict selected = Of(ConflictKind::TargetTaken, true, Any);
    const Conflict linked = Of(ConflictKind::TargetTaken, false, Any);
    const Conflict changed = Of(ConflictKind::BothChanged, true, Any);
    EXPECT_EQ(HintFor({selected}),
              u"nothing was copied; choose with --selected-collisions keep, replace or rename"_s);
    EXPECT_EQ(HintFor({linked}),
              u"nothing was copied; choose with --linked-collisions keep, replace or rename"_s);
    EXPECT_EQ(HintFor({linked, selected, changed}),
              u"nothing was copied; choose with --collisions keep, replace or rename, and with "
              "--on-conflict keep, replace, rename or ask"_s);
}

TEST(ConflictHints, NameOnlyWhatSettlesEveryConflictOfAKind)
{
    const Conflict readOnly =
        Of(ConflictKind::TargetTaken, true, {ConflictAnswer::Keep, ConflictAnswer::Rename});
    EXPECT_EQ(HintFor({Of(ConflictKind::TargetTaken, true, Any), readOnly}),
              u"nothing was copied; choose with --selected-collisions keep or rename"_s);
    EXPECT_EQ(HintFor({Of(ConflictKind::SameTarget, false, {ConflictAnswer::Rename})}),
              u"nothing was copied; choose with --linked-collisions rename"_s);
    EXPECT_EQ(HintFor({Of(ConflictKind::SameTarget, true, {ConflictAnswer::Rename}),
                       Of(ConflictKind::CannotRename, true, {ConflictAnswer::Keep})}),
              u"nothing was copied; no single policy settles all of these; import them one by "
              "one"_s);
}

TEST(ConflictHints, SayWhatToDoWhereNoOptionHelps)
{
    for (const ConflictKind kind : {ConflictKind::FolderInTheWay, ConflictKind::FileInTheWay})
        EXPECT_EQ(HintFor({Of(kind, true)}), u"nothing was copied; move what stands in the way, or "
                                             "choose another folder with --to"_s);
    EXPECT_EQ(HintFor({Of(ConflictKind::SameTarget, false)}),
              u"nothing was copied; import files that want the same place one by one, each with "
              "another --to"_s);
    const QString both = HintFor(
        {Of(ConflictKind::FolderInTheWay, true), Of(ConflictKind::TargetTaken, false, Any)});
    EXPECT_EQ(both, u"nothing was copied; choose with --linked-collisions keep, replace or rename; "
                    "move what stands in the way, or choose another folder with --to"_s);
}
