// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Test {

/// Small design files of several formats, written and read without the plug-ins: what a test
/// expects of a copy is not what the plug-in under test says about it.
///
///     tree.File("work/a.svg", DesignFile("a.svg", {"wood.png"}, "first"));
///     LinksIn("a.svg", tree.Read("cloud/a.svg"))
///
/// The format is the one of the name's extension: gltf, svg, obj, mtl, scad, stp and tlk. A file of
/// another type has no links. `content` stands in the file beside the links.
QByteArray DesignFile(const QString& name, const QStringList& links,
                      const QByteArray& content = "content");
/// Every extension that DesignFile knows.
QStringList DesignTypes();

/// The links as paths, in their order.
QStringList LinksIn(const QString& name, const QByteArray& bytes);
/// The bytes with each link cut out: what a rewriting must not touch.
QByteArray WithoutLinks(const QString& name, const QByteArray& bytes);

} // namespace Halvern::Test
