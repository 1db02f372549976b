// SPDX-License-Identifier: Apache-2.0

#include "services/StoreRuns.h"

#include "base/Directory.h"
#include "base/FileLock.h"
#include "base/FileRenaming.h"
#include "base/FileStatus.h"
#include "services/Paths.h"
#include "services/Platform.h"
#include "services/StoreFiles.h"
#include "services/StoreNames.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>

#include <algorithm>
#include <filesystem>
#include <limits>

namespace Halvern::SyncServices {

namespace {

using Base::FileResult;

template <typename Visit>
void VisitRuns(const QString& folder, Visit visit)
{
    Base::VisitNames(Platform::NativePath(folder), [&](const std::string& utf8) {
        const QString name = QString::fromStdString(utf8);
        if (name.endsWith(u".run"))
            visit(Platform::NativePath(JoinPath(folder, name)));
        return true;
    });
}

} // namespace

StoreRuns::StoreRuns(const QString& storeFolder) : m_folder(StoreNames::Runs(storeFolder)) {}

StoreRuns::~StoreRuns()
{
    Withdraw();
}

void StoreRuns::End()
{
    if (m_open == 0 || --m_open > 0)
        return;
    m_saved.clear();
    Withdraw();
}

void StoreRuns::Withdraw()
{
    if (!m_file.IsHeld())
        return;
    m_file.Release();
    Base::RemoveFile(Platform::NativePath(m_name));
}

FileResult StoreRuns::Announce()
{
    if (FileResult made = MakeOwnFolder(m_folder); !made)
        return made;
    m_name = JoinPath(m_folder, QStringLiteral("%1-%2.run")
                                    .arg(QDateTime::currentMSecsSinceEpoch())
                                    .arg(QCoreApplication::applicationPid()));
    return HoldPatiently(m_file, m_name);
}

void StoreRuns::Saved(const QString& copy)
{
    if (m_open > 0)
        m_saved.insert(copy);
}

qint64 StoreRuns::OldestStart() const
{
    qint64 oldest = std::numeric_limits<qint64>::max();
    VisitRuns(m_folder, [&](const std::filesystem::path& run) {
        if (Base::IsFileLocked(run))
            oldest = std::min<qint64>(oldest, Base::ReadLinkStatus(run).modified);
    });
    return oldest;
}

void StoreRuns::RemoveDead() const
{
    VisitRuns(m_folder, [](const std::filesystem::path& run) {
        if (!Base::IsFileLocked(run))
            Base::RemoveFile(run);
    });
}

} // namespace Halvern::SyncServices
