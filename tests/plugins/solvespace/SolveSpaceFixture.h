// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "solvespace/SolveSpaceResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

class SolveSpaceFixture : public ResolverFixture
{
protected:
    SolveSpaceFixture() : ResolverFixture(m_resolver) {}

    /// A model with these records, and others around them.
    static QByteArray File(const QByteArray& records)
    {
        return "\xB1\xB2\xB3SolveSpaceREVa\n\n\nGroup.h.v=00000001\nGroup.type=5000\n"
               "Group.name=#references\nGroup.remap={\n    1 00010000 0\n}\nAddGroup\n\n" +
               records +
               "Param.h.v.=00010010\nAddParam\n\nConstraint.h.v=00000001\nConstraint.comment=Group."
               "impFileRel=no.slvs\nAddConstraint\n\nTriangle 00000000 00646464 0.0 0.0 0.0\n";
    }
    static QByteArray Group(const QByteArray& handle, const QByteArray& relative,
                            const QByteArray& absolute = {})
    {
        return "Group.h.v=" + handle + "\nGroup.type=5300\nGroup.name=impFileRel=x\n" +
               (absolute.isEmpty() ? "" : "Group.impFile=" + absolute + '\n') +
               (relative.isEmpty() ? "" : "Group.impFileRel=" + relative + '\n') + "AddGroup\n\n";
    }
    static QByteArray Picture(const QByteArray& kind, const QByteArray& handle,
                              const QByteArray& file)
    {
        return kind + ".h.v=" + handle + '\n' + kind + ".type=700\n" + kind + ".file=" + file +
               "\nAdd" + kind + "\n\n";
    }
    Links Records(const QByteArray& records)
    {
        tree.File(m_name, File(records));
        return Read(m_name);
    }

    const QString m_name = u"p/a.slvs"_s;

private:
    Formats::SolveSpace::SolveSpaceResolver m_resolver;
};

} // namespace Halvern::Test
