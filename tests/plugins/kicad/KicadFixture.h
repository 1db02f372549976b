// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "kicad/KicadResolver.h"

namespace Halvern::Test {

/// The resolver of KiCad's files, over a temporary tree.
class KicadFixture : public ResolverFixture
{
protected:
    KicadFixture() : ResolverFixture(m_kicad) {}

    static QByteArray Schematic(const QByteArray& content)
    {
        return "(kicad_sch (version 20211123) (generator eeschema)\n" + content + "\n)\n";
    }

    static QByteArray Board(const QByteArray& content)
    {
        return "(kicad_pcb (version 20211014) (generator pcbnew)\n" + content + "\n)\n";
    }

    static QByteArray Sheet(const QByteArray& id, const QByteArray& file)
    {
        return "  (sheet (at 50 50) (size 20 20)\n    (uuid " + id +
               ")\n    (property \"Sheet name\" \"a name\" (id 0))\n    (property \"Sheet file\" " +
               file + " (id 1))\n    (pin \"x\" input (uuid 9-9))\n  )\n";
    }

    static QByteArray Footprint(const QByteArray& id, const QByteArray& models)
    {
        return "  (footprint \"lib:R\" (layer \"F.Cu\")\n    (tedit 0) (tstamp " + id +
               ")\n    (fp_text reference \"U1\" (at 0 0) (tstamp 8-8))\n" + models + "  )\n";
    }

    static QByteArray Model(const QByteArray& file)
    {
        return "    (model " + file + "\n      (offset (xyz 0 0 0))\n    )\n";
    }

    /// The paths of a file's links, in order.
    QStringList Paths(const QString& file)
    {
        QStringList paths;
        for (const Link& link : Read(file))
            paths.append(link.second);
        return paths;
    }

private:
    Formats::Kicad::KicadResolver m_kicad;
};

} // namespace Halvern::Test
