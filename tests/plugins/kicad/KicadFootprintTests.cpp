// SPDX-License-Identifier: Apache-2.0

#include "KicadFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using KicadFootprint = KicadFixture;

const QString File = u"p/lib/own.pretty/R.kicad_mod"_s;

QByteArray LibraryFootprint(const QByteArray& models)
{
    return "(footprint \"R\" (version 20211014) (generator pcbnew)\n  (layer \"F.Cu\")\n  (tedit "
           "5A)\n" +
           models + ")\n";
}

} // namespace

TEST_F(KicadFootprint, NamesTheModelsThatAreInTheProject)
{
    tree.File(u"p/a.kicad_pro"_s, "{}").File(u"p/3d/a.step"_s).File(u"p/3d/b.wrl"_s);
    tree.File(u"p/3d/b.step"_s);
    tree.File(File,
              LibraryFootprint(Model("\"${KIPRJMOD}/3d/a.step\"") + Model("\"3d/b.wrl\"") +
                               Model("\"${KIPRJMOD}/3d/gone.step\"") +
                               Model("\"R.3dshapes/installed.wrl\"") +
                               Model("\"${KICAD6_3DMODEL_DIR}/c.step\"") + Model("\"/x/d.step\"")));
    EXPECT_EQ(Read(File), (Links{{u"model"_s, u"../../3d/a.step"_s},
                                 {u"set:model 2#model"_s, u"../../3d/b.wrl"_s},
                                 {u"set:model 2#step"_s, u"../../3d/b.step"_s},
                                 {u"model 6"_s, u"/x/d.step"_s}}));
}

TEST_F(KicadFootprint, OfKicad5IsReadToo)
{
    tree.File(u"p/a.pro"_s).File(u"p/3d/a.wrl"_s);
    tree.File(File,
              "(module R (layer F.Cu) (tedit 5A)\n  (model ${KIPRJMOD}/3d/a.wrl\n    (at (xyz "
              "0 0 0))\n  )\n)\n");
    EXPECT_EQ(Read(File), (Links{{u"set:model#model"_s, u"../../3d/a.wrl"_s}}));
}

TEST_F(KicadFootprint, IsRewrittenBesideACopyWhereNoModelIsYet)
{
    tree.File(u"p/a.kicad_pro"_s, "{}");
    const QByteArray text = LibraryFootprint(Model("\"${KIPRJMOD}/3d/a.step\"") +
                                             Model("3d/b.wrl") + Model("\"/x/d.step\""));
    QByteArray expected = text;
    expected.replace("${KIPRJMOD}/3d/a.step", "${KIPRJMOD}/m/a.step");
    expected.replace("(model 3d/b.wrl", "(model \"m/b.wrl\"");
    expected.replace("/x/d.step", "${KIPRJMOD}/x/d.step");
    EXPECT_EQ(Rewritten(File, text,
                        {{u"model"_s, u"../../m/a.step"_s},
                         {u"set:model 2#model"_s, u"../../m/b.wrl"_s},
                         {u"set:model 2#step"_s, u"../../m/b.step"_s},
                         {u"model 3"_s, u"../../x/d.step"_s}}),
              expected);
    EXPECT_EQ(RewriteFailure(File, text, {{u"set:model 2#step"_s, u"../../m/b.step"_s}}),
              u"KiCad finds ../../m/b.step by the name of ../../3d/b.wrl"_s);
    EXPECT_EQ(RewriteFailure(File, text, {{u"model 4"_s, u"a"_s}}),
              u"the file has no link model 4"_s);
}

TEST_F(KicadFootprint, ThatIsDamagedFailsWithItsReason)
{
    EXPECT_EQ(ReadFailure(File, "(footprint \"R\" (model \"a.step\")"),
              u"the file ends within 1 open lists (byte 31)"_s);
    EXPECT_EQ(ReadFailure(File, "(model x)"),
              u"a file of the kind \"model\" is not understood (byte 0)"_s);
}

} // namespace Halvern::Test
