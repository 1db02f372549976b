// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"

#include <QtCore/QString>

#include <string>

namespace Halvern::FileLink {

using WideString = std::basic_string<SyncPlugin::WideChar>;

/// Text as it crosses to a plug-in: a zero-terminated copy.
WideString ToWideString(const QString& text);

/// A record with its size set. Texts longer than 259 characters are cut to their first 259.
SyncPlugin::FileLinkInfo MakeFileLinkInfo(const QString& referenceId, const QString& path);

/// The text fields of a record. A field that a plug-in left without its terminating zero is read
/// up to 259 characters.
QString GetReferenceId(const SyncPlugin::FileLinkInfo& link);
QString GetLinkPath(const SyncPlugin::FileLinkInfo& link);

/// Puts the terminating zero into text fields that lack it.
void TerminateTexts(SyncPlugin::FileLinkInfo& link);

} // namespace Halvern::FileLink
