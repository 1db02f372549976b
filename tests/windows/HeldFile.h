// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QProcess>
#include <QtCore/QString>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// While it lives, another process does to a file what FileHolder.cpp describes.
class HeldFile
{
public:
    /// Throws when the file could not be opened with this access and sharing.
    HeldFile(const QString& path, const QString& access, const QString& share,
             const QString& mode = u"hold"_s);
    ~HeldFile();
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    void Release();

private:
    QProcess m_process;
};

/// A path as functions of the system take it.
QString ApiPath(const QString& path);
/// The file's attributes (FILE_ATTRIBUTE_...).
unsigned long AttributesOf(const QString& path);
void ChangeAttributes(const QString& path, unsigned long attributes);

} // namespace Halvern::Test
