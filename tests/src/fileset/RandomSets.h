// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Mappings.h"

#include <random>

namespace Halvern::Test {

/// The members of a small random set: links and targets of all sorts, letter case mixed, some
/// paths twice, some targets empty. The same seed makes equal members, so that one set can be asked
/// and another changed.
FileMappingList RandomMembers(quint32 seed);
/// Puts them into a set.
void AddAll(FileSet& set, const FileMappingList& members);
/// The position of a mapping in a list, for lists of equal members.
QList<qsizetype> PositionsIn(const FileMappingList& members, const FileMappingList& files);

} // namespace Halvern::Test
