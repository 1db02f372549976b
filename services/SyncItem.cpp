// SPDX-License-Identifier: Apache-2.0

#include "syncservices/SyncItem.h"

namespace Halvern::SyncServices {

FileItem::~FileItem() = default;

SyncItem::SyncItem(const QString& localPath, const QString& cloudPath, const QString& cloudRoot)
    : m_localPath(localPath), m_cloudPath(cloudPath), m_cloudRoot(cloudRoot)
{}

SyncItem::~SyncItem() = default;

int SyncItem::GetId() const
{
    return m_id;
}

void SyncItem::SetId(int id)
{
    m_id = id;
}

SyncItem::Kind SyncItem::GetKind() const
{
    return m_kind;
}

void SyncItem::SetKind(Kind kind)
{
    m_kind = kind;
}

QString SyncItem::GetLocalPath() const
{
    return m_localPath;
}

QString SyncItem::GetCloudPath() const
{
    return m_cloudPath;
}

QString SyncItem::GetCloudRoot() const
{
    return m_cloudRoot;
}

QString SyncItem::GetCloudItemId() const
{
    return m_cloudItemId;
}

void SyncItem::SetCloudItemId(const QString& id)
{
    m_cloudItemId = id;
}

int SyncItem::GetAuthenticationId() const
{
    return m_authenticationId;
}

void SyncItem::SetAuthenticationId(int id)
{
    m_authenticationId = id;
}

int SyncItem::GetProductConfigurationId() const
{
    return m_productConfigurationId;
}

void SyncItem::SetProductConfigurationId(int id)
{
    m_productConfigurationId = id;
}

int SyncItem::GetRootFolderId() const
{
    return m_rootFolderId;
}

void SyncItem::SetRootFolderId(int id)
{
    m_rootFolderId = id;
}

int SyncItem::GetParentFolderId() const
{
    return m_parentFolderId;
}

void SyncItem::SetParentFolderId(int id)
{
    m_parentFolderId = id;
}

QString SyncItem::GetSourceConsumerId() const
{
    return m_sourceConsumerId;
}

void SyncItem::SetSourceConsumerId(const QString& id)
{
    m_sourceConsumerId = id;
}

QList<FileLink> SyncItem::GetFileLinks() const
{
    return m_fileLinks;
}

void SyncItem::SetFileLinks(const QList<FileLink>& links)
{
    m_fileLinks = links;
}

QDateTime SyncItem::GetFileLinksExtractedAtFileDate() const
{
    return m_fileLinksExtractedAt;
}

void SyncItem::SetFileLinksExtractedAtFileDate(const QDateTime& date)
{
    m_fileLinksExtractedAt = date;
}

SyncItem::SyncOption SyncItem::GetSyncOption() const
{
    return m_syncOption;
}

void SyncItem::SetSyncOption(SyncOption options)
{
    m_syncOption = options;
}

void SyncItem::SetSyncOption(SyncOption options, bool on)
{
    m_syncOption = on ? m_syncOption | options : m_syncOption & ~options;
}

} // namespace Halvern::SyncServices
