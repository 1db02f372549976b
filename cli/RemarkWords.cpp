// SPDX-License-Identifier: Apache-2.0

#include "Words.h"

namespace Halvern::Cli {

using Jobs::Remark;
using Jobs::SourceStays;

namespace {

QString Sentence(Remark remark)
{
    switch (remark) {
    case Remark::None:
        return {};
    case Remark::OnlyLinksWanted:
        return QStringLiteral("only its links are wanted");
    case Remark::LinkedFolder:
        return QStringLiteral("a folder that is linked");
    case Remark::LinkToFolder:
        return QStringLiteral("a symbolic link to a folder");
    case Remark::LinkToNothing:
        return QStringLiteral("a symbolic link that leads nowhere");
    case Remark::NoFile:
        return QStringLiteral("neither a file nor a folder");
    case Remark::SourceNoFile:
        return QStringLiteral("it is neither a file nor a folder");
    case Remark::Excluded:
        return QStringLiteral("excluded by a pattern");
    case Remark::OwnRecord:
        return QStringLiteral("it belongs to the sync database or the base store");
    case Remark::NotReadable:
        return QStringLiteral("it could not be read");
    case Remark::NameNotText:
        return QStringLiteral("its name is no UTF-8");
    case Remark::Vanished:
        return QStringLiteral("it is gone since the selection was read");
    case Remark::ChangedWhileCopied:
        return QStringLiteral("it changed while it was copied; import it again");
    case Remark::OutsideCloudFolder:
        return QStringLiteral("its place lies outside the cloud cache folder");
    case Remark::NameRefused:
        return QStringLiteral("the target's system refuses the name");
    case Remark::PathTooLong:
        return QStringLiteral("the path of its copy is too long");
    case Remark::FileInTheWay:
        return QStringLiteral("a file stands where a folder must be");
    case Remark::LinkEmpty:
        return QStringLiteral("a link inside the copy would be empty");
    case Remark::LinkTooLong:
        return QStringLiteral("a link inside the copy would be longer than 259 characters");
    case Remark::NotKept:
        return QStringLiteral("what stands there could not be kept in the base store");
    case Remark::ChangedOrphan:
        return QStringLiteral("it was changed since it was copied, and stays");
    case Remark::TargetChanged:
        return QStringLiteral(
            "what stands at the target changed after the plan was made; import it again");
    case Remark::SystemPlace:
        return QStringLiteral("a place of the system; --within DIR allows it");
    case Remark::SecretPlace:
        return QStringLiteral("a place where secrets are kept; --within DIR allows it");
    case Remark::OtherHome:
        return QStringLiteral("another user's home; --within DIR allows it");
    case Remark::NotWithin:
        return QStringLiteral("not in a folder that --within names");
    case Remark::RewritePending:
        return QStringLiteral(
            "its links are still to be rewritten; every import tries, and so does corsync retry");
    case Remark::LinksNotRead:
        return QStringLiteral("its links could not be read; every import tries again");
    case Remark::SharedCopyStays:
        return QStringLiteral("files of another import link the earlier copy");
    case Remark::LinksNoFile:
        return QStringLiteral("a link stays as it is, for it leads to no file");
    case Remark::MovedEarlier:
        return QStringLiteral("it is gone; what an earlier import has moved of it lies there");
    case Remark::ColonInName:
        return QStringLiteral("its path holds a \":\"");
    case Remark::NoTarget:
        return QStringLiteral("it got no place in the cloud cache folder");
    case Remark::FolderNotMade:
        return QStringLiteral("the folder could not be made");
    case Remark::FolderInTheWay:
        return QStringLiteral("a folder stands at the target");
    case Remark::Unexplained:
        return QStringLiteral("it was not copied; a log file (--log-file) may tell why");
    case Remark::LinksNotRewritten:
        return QStringLiteral("its links are not rewritten yet; import it again");
    case Remark::LinksRewritten:
        return QStringLiteral("only its links were rewritten");
    case Remark::LinkSetAside:
        return QStringLiteral("the symbolic link that stood there has another name now");
    case Remark::StillLinked:
        return QStringLiteral("another copy links it");
    case Remark::TargetReadOnly:
        return QStringLiteral("what stands at the target is read-only and stays as it is");
    }
    return {};
}

} // namespace

QString NameOf(Remark remark)
{
    switch (remark) {
    case Remark::None:
        return {};
    case Remark::OnlyLinksWanted:
        return QStringLiteral("only-links-wanted");
    case Remark::LinkedFolder:
        return QStringLiteral("linked-folder");
    case Remark::LinkToFolder:
        return QStringLiteral("link-to-folder");
    case Remark::LinkToNothing:
        return QStringLiteral("link-to-nothing");
    case Remark::NoFile:
        return QStringLiteral("no-file");
    case Remark::SourceNoFile:
        return QStringLiteral("source-no-file");
    case Remark::Excluded:
        return QStringLiteral("excluded");
    case Remark::OwnRecord:
        return QStringLiteral("own-record");
    case Remark::NotReadable:
        return QStringLiteral("not-readable");
    case Remark::NameNotText:
        return QStringLiteral("name-not-text");
    case Remark::Vanished:
        return QStringLiteral("vanished");
    case Remark::ChangedWhileCopied:
        return QStringLiteral("changed-while-copied");
    case Remark::OutsideCloudFolder:
        return QStringLiteral("outside-cloud-folder");
    case Remark::NameRefused:
        return QStringLiteral("name-refused");
    case Remark::PathTooLong:
        return QStringLiteral("path-too-long");
    case Remark::FileInTheWay:
        return QStringLiteral("file-in-the-way");
    case Remark::LinkEmpty:
        return QStringLiteral("link-empty");
    case Remark::LinkTooLong:
        return QStringLiteral("link-too-long");
    case Remark::NotKept:
        return QStringLiteral("not-kept");
    case Remark::ChangedOrphan:
        return QStringLiteral("changed-orphan");
    case Remark::TargetChanged:
        return QStringLiteral("target-changed");
    case Remark::SystemPlace:
        return QStringLiteral("system-place");
    case Remark::SecretPlace:
        return QStringLiteral("secret-place");
    case Remark::OtherHome:
        return QStringLiteral("other-home");
    case Remark::NotWithin:
        return QStringLiteral("not-within");
    case Remark::RewritePending:
        return QStringLiteral("rewrite-pending");
    case Remark::LinksNotRead:
        return QStringLiteral("links-not-read");
    case Remark::SharedCopyStays:
        return QStringLiteral("shared-copy-stays");
    case Remark::LinksNoFile:
        return QStringLiteral("links-no-file");
    case Remark::MovedEarlier:
        return QStringLiteral("moved-earlier");
    case Remark::ColonInName:
        return QStringLiteral("colon-in-name");
    case Remark::NoTarget:
        return QStringLiteral("no-target");
    case Remark::FolderNotMade:
        return QStringLiteral("folder-not-made");
    case Remark::FolderInTheWay:
        return QStringLiteral("folder-in-the-way");
    case Remark::Unexplained:
        return QStringLiteral("unexplained");
    case Remark::LinksNotRewritten:
        return QStringLiteral("links-not-rewritten");
    case Remark::LinksRewritten:
        return QStringLiteral("links-rewritten");
    case Remark::LinkSetAside:
        return QStringLiteral("link-set-aside");
    case Remark::StillLinked:
        return QStringLiteral("still-linked");
    case Remark::TargetReadOnly:
        return QStringLiteral("target-read-only");
    }
    return {};
}

QString NameOf(SourceStays reason)
{
    switch (reason) {
    case SourceStays::No:
        return {};
    case SourceStays::LinkNotInOrder:
        return QStringLiteral("link-not-in-order");
    case SourceStays::CopyNotInOrder:
        return QStringLiteral("copy-not-in-order");
    case SourceStays::CopyDiffers:
        return QStringLiteral("copy-differs");
    case SourceStays::Linked:
        return QStringLiteral("linked");
    case SourceStays::PluginBroken:
        return QStringLiteral("plugin-broken");
    case SourceStays::NotCompleted:
        return QStringLiteral("not-completed");
    case SourceStays::NotDeleted:
        return QStringLiteral("not-deleted");
    }
    return {};
}

QString TextOf(SourceStays reason, const QString& because)
{
    switch (reason) {
    case SourceStays::No:
    case SourceStays::NotDeleted:
        return {};
    case SourceStays::LinkNotInOrder:
        return QStringLiteral("the source stays: it leads to what is not in order, ") + because;
    case SourceStays::CopyNotInOrder:
        return QStringLiteral("the source stays");
    case SourceStays::CopyDiffers:
        return QStringLiteral("the source stays: what stands there differs from it");
    case SourceStays::Linked:
        return QStringLiteral("the source stays: one that stays links it, ") + because;
    case SourceStays::PluginBroken:
        return QStringLiteral("the source stays: a broken plug-in may be the one that reads it");
    case SourceStays::NotCompleted:
        return QStringLiteral("the source stays: the move was not completed; import it again");
    }
    return {};
}

QString TextOf(Remark remark, const QString& detail)
{
    if (remark == Remark::Excluded && !detail.isEmpty())
        return QStringLiteral("excluded by the pattern ") + detail;
    const QString sentence = Sentence(remark);
    return sentence.isEmpty() || detail.isEmpty() ? sentence + detail
                                                  : sentence + QStringLiteral(": ") + detail;
}

} // namespace Halvern::Cli
