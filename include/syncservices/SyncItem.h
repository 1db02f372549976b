// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"
#include "syncservices/FileLink.h"

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::SyncServices {

/// What items of the sync database have in common.
class SYNCSERVICES_EXPORT FileItem
{
public:
    /// How much of an item a query loads.
    enum Depth
    {
        /// The item itself with its links, without the items below it.
        ItemOnly = 0,
    };

    virtual ~FileItem();
};

/// A folder or file in the cloud cache folder as the sync database records it. A plain record:
/// nothing is stored until SyncDatabase is told to. Used from one thread at a time.
class SYNCSERVICES_EXPORT SyncItem : public FileItem
{
public:
    /// DO NOT CHANGE THESE VALUES: they are stored in the database. A bit set.
    enum SyncOption : quint32
    {
        NoSyncOption = 0,
        /// The file's links are not followed.
        SkipFileLinks = 0x040,
        /// Bring the files that this file links into the cloud cache folder.
        ImportLinkedFiles = 0x080,
        /// A linked file whose target is taken: use the existing target.
        KeepExistingLinkedFiles = 0x100,
        /// A linked file whose target is taken: copy under a new name.
        RenameLinkedFiles = 0x200,
        /// The links inside the file are still to be rewritten.
        RepathPending = 0x400,
    };

    /// DO NOT CHANGE THESE VALUES: they are stored in the database.
    enum Kind
    {
        File = 0,
        /// A folder below the cloud cache folder.
        FolderItem = 1,
        /// The cloud cache folder itself.
        RootFolder = 2,
    };

    /// A new, unsaved file item: ids are -1, no links, no options.
    SyncItem(const QString& localPath, const QString& cloudPath, const QString& cloudRoot);
    ~SyncItem() override;

    /// The item's number in the database; -1 while it is not saved.
    int GetId() const;
    void SetId(int id);
    Kind GetKind() const;
    void SetKind(Kind kind);
    /// Absolute path on this machine.
    QString GetLocalPath() const;
    /// The path below the cloud root, such as "/Demo/scene.gltf", and that root.
    QString GetCloudPath() const;
    QString GetCloudRoot() const;
    /// The item's id in the cloud. The embedded services assign a random one on the first write.
    QString GetCloudItemId() const;
    void SetCloudItemId(const QString& id);
    /// User, product and program that the item was written for; see ServicesSettings.
    int GetAuthenticationId() const;
    void SetAuthenticationId(int id);
    int GetProductConfigurationId() const;
    void SetProductConfigurationId(int id);
    /// Ids of the items of the cloud cache folder and of the folder that the item lies in; -1 for
    /// none.
    int GetRootFolderId() const;
    void SetRootFolderId(int id);
    int GetParentFolderId() const;
    void SetParentFolderId(int id);
    QString GetSourceConsumerId() const;
    void SetSourceConsumerId(const QString& id);

    /// The links of the file in its order.
    QList<FileLink> GetFileLinks() const;
    void SetFileLinks(const QList<FileLink>& links);
    /// Last-modified time that the file had when its links were taken; invalid when never.
    QDateTime GetFileLinksExtractedAtFileDate() const;
    void SetFileLinksExtractedAtFileDate(const QDateTime& date);

    SyncOption GetSyncOption() const;
    /// Replaces the whole option word.
    void SetSyncOption(SyncOption options);
    /// Sets (`on`) or clears every bit of `options`.
    void SetSyncOption(SyncOption options, bool on);

private:
    int m_id = -1;
    Kind m_kind = File;
    QString m_localPath;
    QString m_cloudPath;
    QString m_cloudRoot;
    QString m_cloudItemId;
    int m_authenticationId = -1;
    int m_productConfigurationId = -1;
    int m_rootFolderId = -1;
    int m_parentFolderId = -1;
    QString m_sourceConsumerId;
    QList<FileLink> m_fileLinks;
    QDateTime m_fileLinksExtractedAt;
    SyncOption m_syncOption = NoSyncOption;
};

SYNCSERVICES_BIT_OPERATORS(SyncItem::SyncOption)

} // namespace Halvern::SyncServices
