// SPDX-License-Identifier: Apache-2.0

#include "HeldFile.h"

#include "ProcessStart.h"

#include "base/Units.h"
#include "base/WindowsApiPath.h"

#include <stdexcept>

#include <windows.h>

namespace Halvern::Test {

HeldFile::HeldFile(const QString& path, const QString& access, const QString& share,
                   const QString& mode)
{
    StartProcess(m_process, QStringLiteral(FILE_HOLDER), {mode, access, share, ApiPath(path)});
    if (!m_process.waitForReadyRead(60'000))
        throw std::runtime_error("the file could not be held: " + path.toStdString());
}

HeldFile::~HeldFile()
{
    Release();
}

void HeldFile::Release()
{
    m_process.closeWriteChannel();
    if (m_process.state() != QProcess::NotRunning)
        m_process.waitForFinished(60'000);
}

QString ApiPath(const QString& path)
{
    return QStringView(Base::WindowsApiPath(Base::Units(path))).toString();
}

unsigned long AttributesOf(const QString& path)
{
    return ::GetFileAttributesW(reinterpret_cast<const wchar_t*>(ApiPath(path).utf16()));
}

void ChangeAttributes(const QString& path, unsigned long attributes)
{
    if (!::SetFileAttributesW(reinterpret_cast<const wchar_t*>(ApiPath(path).utf16()), attributes))
        throw std::runtime_error("the attributes could not be set: " + path.toStdString());
}

} // namespace Halvern::Test
