// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "step/StepResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

class StepFixture : public ResolverFixture
{
protected:
    StepFixture() : ResolverFixture(m_resolver) {}

    /// An exchange file with these statements.
    static QByteArray File(const QByteArray& data)
    {
        return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('it''s; "
               "#1=DOCUMENT_FILE(''no'')'),'2;1');\n"
               "ENDSEC;\nDATA;\n" +
               data + "ENDSEC;\nEND-ISO-10303-21;\n";
    }
    /// The statements of a whole reference, with the same string three times.
    static QByteArray Reference(const QByteArray& name)
    {
        return "#1=DOCUMENT_FILE('" + name + "','',$,#9,'',$);\n" +
               "#2=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('" + name + "',#8,#3,(#1));\n" +
               "#3=EXTERNAL_SOURCE(IDENTIFIER('" + name + "'));\n";
    }
    Links Data(const QByteArray& data)
    {
        tree.File(m_name, File(data));
        return Read(m_name);
    }

    const QString m_name = u"p/a.stp"_s;

private:
    Formats::Step::StepResolver m_resolver;
};

} // namespace Halvern::Test
