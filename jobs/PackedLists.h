// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/FileLink.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

// Texts and lists as bytes in the database. DO NOT CHANGE what the bytes mean: the files of users
// hold them.
//
// Numbers stand in groups of seven bits, the lowest first, with the eighth bit set in all but the
// last. A text is the number of its bytes + 1 and its bytes, or 0 when it is null; a list the
// number of its elements and the elements; a link its item's id + 1, reference id, path and cloud
// id.

/// UTF-8. What is no text in names of Windows, a half of a surrogate pair, is coded like a
/// character, so that it comes back as it was.
QByteArray TextToBytes(const QString& text);
QString TextFromBytes(QByteArrayView bytes);

QByteArray PackLinks(const QList<SyncServices::FileLink>& links);
QByteArray PackTexts(const QStringList& texts);
/// These throw std::runtime_error when the bytes are no such list.
QList<SyncServices::FileLink> UnpackLinks(QByteArrayView bytes);
QStringList UnpackTexts(QByteArrayView bytes);

} // namespace Halvern::Jobs
