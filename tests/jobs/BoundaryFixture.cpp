// SPDX-License-Identifier: Apache-2.0

#include "BoundaryFixture.h"

#include <QtCore/QFileInfo>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

using Base::PlaceKind;

namespace {

QStringList Paths(const FileTree& tree, const QStringList& relative)
{
    QStringList paths;
    for (const QString& path : relative)
        paths.append(tree.Path(path));
    return paths;
}

} // namespace

BoundaryFixture::BoundaryFixture()
{
    tree.File(u"home/ann/shed/Shed.gltf"_s);
}

QList<BoundaryPlace> BoundaryFixture::Places() const
{
    return {{tree.Path(u"etc"_s), PlaceKind::System},
            {tree.Path(u"usr"_s), PlaceKind::System},
            {tree.Path(u"usr/share"_s), PlaceKind::Open},
            {tree.Path(u"var"_s), PlaceKind::System},
            {tree.Path(u"var/tmp"_s), PlaceKind::Open},
            {tree.Path(u"programs"_s), PlaceKind::Secrets},
            {tree.Path(u"home"_s), PlaceKind::Homes},
            {tree.Path(u"root"_s), PlaceKind::OtherHome},
            {tree.Path(u"home/ann"_s), PlaceKind::OwnHome}};
}

QString BoundaryFixture::Say(const QString& file)
{
    if (!tree.Exists(file))
        tree.File(file);
    const BoundaryFolders folders = {Paths(tree, within), Paths(tree, allowed),
                                     tree.Path(u"home/ann/Corsync"_s)};
    Boundary boundary(Paths(tree, sources), folders, Places());
    const QString path = tree.Path(file);
    const Boundary::Answer answer = boundary.Check(path);
    EXPECT_EQ(boundary.Check(path), answer) << "asked again";
    return Words(answer);
}

QString Words(const Boundary::Answer& answer)
{
    EXPECT_EQ(answer.allowed, answer.remark == Remark::None);
    EXPECT_FALSE(answer.outside && !answer.allowed);
    if (answer.allowed)
        return answer.outside ? u"outside"_s : u"allowed"_s;
    switch (answer.remark) { // NOLINT(clang-diagnostic-switch-enum)
    case Remark::SystemPlace:
        return u"system"_s;
    case Remark::SecretPlace:
        return u"secret"_s;
    case Remark::OtherHome:
        return u"other home"_s;
    case Remark::NotWithin:
        return u"not within"_s;
    default:
        return u"remark %1"_s.arg(int(answer.remark));
    }
}

} // namespace Halvern::Test
