// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileCopy.h"
#include "base/FileLock.h"
#include "base/NativePath.h"
#include "base/Units.h"

#include <QtCore/QString>

namespace Halvern::Test {

// The functions of base/ for the texts of a FileTree. An error text is only there after a failure.

inline std::filesystem::path Native(const QString& path)
{
    return Base::NativePath(Base::Units(path));
}

inline bool Succeeded(const Base::FileResult& result, QString* error)
{
    *error = QString::fromStdString(result.Text());
    return bool(result);
}

inline bool CopyFileBytes(const QString& source, const QString& target, QString* error)
{
    return Succeeded(Base::CopyFileBytes(Native(source), Native(target)), error);
}

inline bool FlushToDisk(const QString& path, QString* error)
{
    return Succeeded(Base::FlushFile(Native(path)), error);
}

inline bool IsFileLocked(const QString& path)
{
    return Base::IsFileLocked(Native(path));
}

} // namespace Halvern::Test
