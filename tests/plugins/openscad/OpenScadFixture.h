// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "openscad/OpenScadResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

class OpenScadFixture : public ResolverFixture
{
protected:
    OpenScadFixture() : ResolverFixture(m_resolver) {}

    /// The links of a model of this text.
    Links Model(const QByteArray& text)
    {
        tree.File(m_name, text);
        return Read(m_name);
    }
    QByteArray Changed(const QByteArray& text, const Links& links)
    {
        return Rewritten(m_name, text, links);
    }

    const QString m_name = u"p/a.scad"_s;

private:
    Formats::OpenScad::OpenScadResolver m_resolver;
};

} // namespace Halvern::Test
