// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScenarioFixture.h"

namespace Halvern::Test {

/// work/proj/top.tlk links sub.tlk, which links leaf.txt; work/proj/free.txt stands alone.
class MoveFixture : public ScenarioFixture
{
protected:
    MoveFixture()
    {
        tree.File(u"work/proj/top.tlk"_s, "link 1 sub.tlk\n")
            .File(u"work/proj/sub.tlk"_s, "link 1 leaf.txt\n")
            .File(u"work/proj/leaf.txt"_s, "leaf")
            .File(u"work/proj/free.txt"_s, "free");
    }
    ImportReport MoveProject(const QStringList& options = {}) const
    {
        return Report(QStringList{u"proj"_s, u"--move"_s} + options);
    }
    /// What is left of the sources.
    QStringList Left() const { return tree.Contents(u"work/proj"_s).keys(); }
};

} // namespace Halvern::Test
