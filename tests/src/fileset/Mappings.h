// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"
#include "filelink/FileSet.h"
#include "fileset/FileSetImp.h"
#include "support/Platform.h"

#include <QtCore/QStringList>

#include <memory>

namespace Halvern::Test {

using FileLink::FileLinkList;
using FileLink::FileMapping;
using FileLink::FileMappingFlag;
using FileLink::FileMappingList;
using FileLink::FileMappingPointer;
using FileLink::FileSet;
using FileLink::FileSetImp;

/// A mapping over paths that need not exist.
FileMappingPointer MakeFile(const QString& source, FileMappingFlag flags = FileMapping::NoFlag,
                            const QString& target = {});
/// Links with the given paths; reference ids count up from "1".
FileLinkList Links(const QStringList& paths);
/// Adds a file with source links to a set.
FileMappingPointer AddTo(FileSet& set, const QString& source, const QStringList& links = {},
                         FileMappingFlag flags = FileMapping::NoFlag);
/// The private half of a set.
FileSetImp& Imp(FileSet& set);
QStringList SourcesOf(const FileMappingList& files);

} // namespace Halvern::Test
