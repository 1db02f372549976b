// SPDX-License-Identifier: Apache-2.0

#include "CopyLinks.h"

#include "FileStamps.h"
#include "LinkPlanning.h"
#include "Paths.h"

#include "syncplugin/ReferenceIds.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QSet>

#include <algorithm>
#include <utility>

namespace Halvern::Jobs {

namespace {

using FileLink::ProblemKind;
using FileLink::Stage;
using Link = SyncServices::FileLink;

QString TextOf(std::string_view mark)
{
    return QString::fromUtf8(mark.data(), qsizetype(mark.size()));
}

bool IsCompanion(const Link& link)
{
    static const QString mark = TextOf(SyncPlugin::CompanionMark);
    return link.RefId.startsWith(mark);
}

/// The set that a link is a member of; empty when it is of none.
QString SetOf(const Link& link)
{
    static const QString mark = TextOf(SyncPlugin::SetMark);
    return link.RefId.startsWith(mark) ? link.RefId.left(link.RefId.lastIndexOf(u'#')) : QString();
}

/// The links that a plug-in read in one file, by their ids and by where they lead.
class LinksRead
{
public:
    LinksRead(const CopyLinks::Links& links, const QString& holder) : m_holder(holder)
    {
        for (const Link& link : links) {
            m_byId.insert(link.RefId, link.Path);
            m_sets.insert(SetOf(link));
            m_places.insert(PlaceOf(link));
        }
        m_sets.remove({});
    }

    /// A name with a colon reads as an address; a plug-in may know better, and say the whole path.
    QString PlaceOf(const Link& link) const
    {
        return PathKey(IsLocalPath(link.Path)
                           ? ResolveLink(link.Path, m_holder)
                           : QDir::cleanPath(QFileInfo(m_holder).path() + u'/' + link.Path));
    }
    bool LeadsTo(const Link& link) const { return m_places.contains(PlaceOf(link)); }
    bool HasId(const Link& link) const { return m_byId.contains(link.RefId); }
    /// Of a set the file stores one pattern: any member tells where it leads.
    bool HasSetOf(const Link& link) const { return m_sets.contains(SetOf(link)); }
    QString PathOf(const Link& link) const { return m_byId.value(link.RefId); }

private:
    QString m_holder;
    QHash<QString, QString> m_byId;
    QSet<QString> m_sets;
    QSet<QString> m_places;
};

/// While it lives nothing that goes wrong is told.
class Silence
{
public:
    explicit Silence(JobControl& control) : m_control(control), m_wasMuted(control.IsMuted())
    {
        control.Mute(true);
    }
    ~Silence() { m_control.Mute(m_wasMuted); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    JobControl& m_control;
    bool m_wasMuted;
};

/// The first of `links` that leads where none should: not asked for, not wanted, not there before.
const Link* Unasked(const JobFile& file, const CopyLinks::Links& links,
                    const CopyLinks::Links& asked, const CopyLinks::Links& before)
{
    const LinksRead changed(asked, file.target);
    CopyLinks::Links allowed = file.wantedLinks;
    for (const Link& link : before)
        if (!changed.HasId(link))
            allowed.append(link);
    const LinksRead known(allowed, file.target);
    const auto other = std::find_if(links.begin(), links.end(),
                                    [&](const Link& link) { return !known.LeadsTo(link); });
    return other == links.end() ? nullptr : &*other;
}

/// What a copy says in place of what it should.
QString DifferenceAt(const Link& found, const CopyLinks::Links& asked, const QString& holder)
{
    const auto shown = [&](const QString& path) {
        return path.isEmpty() ? QStringLiteral("nothing")
                              : QDir::toNativeSeparators(ResolveLink(path, holder));
    };
    const auto wanted = std::find_if(asked.begin(), asked.end(),
                                     [&](const Link& link) { return link.RefId == found.RefId; });
    const QString leads =
        QStringLiteral("link %1 leads to %2, and ").arg(found.RefId, shown(found.Path));
    return wanted == asked.end()
               ? leads + QStringLiteral("was not to change")
               : leads + QStringLiteral("%1 was asked for").arg(shown(wanted->Path));
}

/// The first link that nobody asked to change and that is gone. What is found by its name beside a
/// file may be.
const Link* Lost(const LinksRead& found, const CopyLinks::Links& kept,
                 const CopyLinks::Links& asked, const QString& holder)
{
    const LinksRead changed(asked, holder);
    const auto lost = std::find_if(kept.begin(), kept.end(), [&](const Link& link) {
        return !changed.HasId(link) && !found.HasId(link) && !found.LeadsTo(link) &&
               !IsCompanion(link) && SetOf(link).isEmpty();
    });
    return lost == kept.end() ? nullptr : &*lost;
}

/// Both lead to one place, but programs may not get there by the first.
bool IsDetour(const QString& there, const QString& wanted)
{
    return there != wanted && GoesBackUp(there);
}

} // namespace

bool CopyLinks::DependOnPlace(const Links& links, const QString& copy)
{
    Links read;
    {
        const Silence silence(m_control);
        const LogSilence quiet;
        if (!m_reader.Read(copy, read))
            return true;
    }
    const LinksRead found(read, copy);
    return std::any_of(links.begin(), links.end(), [&](const Link& link) {
        return found.HasId(link) ? found.PathOf(link) != link.Path
                                 : !IsCompanion(link) && !found.HasSetOf(link);
    });
}

AliasLog::Names CopyLinks::NamesFor(const JobFile& file, const QString& copy)
{
    return {{copy, file.target},
            {QFileInfo(copy).path() + u'/', QFileInfo(file.target).path() + u'/'}};
}

/// A link that leads to no file of the job is not touched, whatever it says from where the copy is.
bool CopyLinks::StaysAsItIs(const JobFile& file, qsizetype link) const
{
    if (link >= file.links.size() || !PlaceOf(file.links.at(link), file, m_job.files).isEmpty())
        return false;
    const CopyRecord* record = file.RecordOfCopy();
    // A fresh copy holds what the source holds; one that is relinked, what was written into it.
    if (file.deed == Deed::Copy)
        return true;
    return record && !record->isRewritePending &&
           record->targetLinks.size() == file.wantedLinks.size() &&
           record->targetLinks.at(link).Path == file.wantedLinks.at(link).Path;
}

/// What a plug-in does not show where the copy is may have to be written all the same.
bool CopyLinks::HasToChangeUnseen(const JobFile& file, const Link& link)
{
    const auto isMeant = [&](const Link& other) { return other.RefId == link.RefId; };
    const auto isListed = [&](const Links& links) {
        return std::any_of(links.begin(), links.end(), isMeant);
    };
    // Where a link of no group led to its file it would be shown.
    if (file.deed == Deed::Copy)
        return isListed(file.rewrites) || (!IsCompanion(link) && SetOf(link).isEmpty());
    const CopyRecord* record = file.RecordOfCopy();
    const auto isOther = [&](const Link& there) {
        return isMeant(there) && there.Path != link.Path;
    };
    if (!record)
        return false;
    // A copy whose links could not be written holds those of its source, whatever is recorded.
    if (record->isRewritePending &&
        std::any_of(file.links.begin(), file.links.end(),
                    [&](const JobLink& source) { return isOther(source.stored); }))
        return true;
    return std::any_of(record->targetLinks.begin(), record->targetLinks.end(), isOther);
}

/// A plug-in may find what stands beside the copy in place of what the copy says. The bytes of the
/// source say what they said there, and that had to change.
bool CopyLinks::IsOnlyFound(const JobFile& file, qsizetype place, const Link& there)
{
    if (file.deed != Deed::Copy || place >= file.links.size())
        return false;
    return there.Path != file.links.at(place).stored.Path &&
           std::any_of(file.rewrites.begin(), file.rewrites.end(),
                       [&](const Link& link) { return link.RefId == there.RefId; });
}

/// The links of a copy stand in the order of its source, unless a plug-in finds others beside it:
/// then their ids tell which is which.
CopyLinks::Links CopyLinks::ChangesOf(const JobFile& file, const Links& read) const
{
    const LinksRead found(read, file.target);
    // Bytes of the source have its ids.
    const bool isInOrder = file.deed != Deed::Copy && read.size() == file.wantedLinks.size();
    Links changes;
    for (qsizetype i = 0; i < file.wantedLinks.size(); ++i) {
        Link link = file.wantedLinks.at(i);
        if (isInOrder && !IsCompanion(read.at(i)))
            link.RefId = read.at(i).RefId;
        const bool isSeen = isInOrder || found.HasId(link);
        Link there = link;
        there.Path = isInOrder ? read.at(i).Path : found.PathOf(link);
        const bool isOther = isSeen ? found.PlaceOf(there) != found.PlaceOf(link) ||
                                          IsOnlyFound(file, i, there) ||
                                          IsDetour(there.Path, link.Path)
                                    : HasToChangeUnseen(file, link);
        if (isOther && !StaysAsItIs(file, i))
            changes.append(link);
    }
    return changes;
}

/// Reads the copy again: the links that were asked for are there, and none that was not. What a
/// plug-in only finds beside the file it may leave out where nothing else stands.
bool CopyLinks::Holds(const JobFile& file, const QString& copy, const Links& asked,
                      const Links& before, QString& difference)
{
    Links links;
    const LogSilence silence;
    if (!m_reader.Read(copy, links)) {
        difference = QStringLiteral("they cannot be read");
        return false;
    }
    const LinksRead found(links, file.target);
    Links unseen;
    for (const Link& link : asked)
        if (!found.LeadsTo(link) && !found.HasSetOf(link))
            unseen.append(link);
    if (const Link* other = Unasked(file, links, asked, before)) {
        difference = DifferenceAt(*other, asked, file.target);
        return false;
    }
    if (const Link* lost =
            Lost(found, before.isEmpty() ? file.wantedLinks : before, asked, file.target)) {
        difference = DifferenceAt({-1, lost->RefId, {}, {}}, asked, file.target);
        return false;
    }
    if (IsWrittenUnseen(copy, unseen))
        return true;
    difference = DifferenceAt({-1, unseen.first().RefId, found.PathOf(unseen.first()), {}}, asked,
                              file.target);
    return false;
}

/// Where a copy is made ready nothing stands as it will around its place, and a plug-in may take a
/// link for another file's, or for one of an installed library. It is there when it can be written
/// to lead elsewhere and back, and the file is then what it was.
bool CopyLinks::IsWrittenUnseen(const QString& copy, const Links& links)
{
    if (links.isEmpty())
        return true;
    Links others = links;
    for (Link& link : others)
        link.Path = QStringLiteral("elsewhere/") + QFileInfo(link.Path).fileName();
    const Silence silence(m_control);
    const QByteArray written = StampOf(copy, true).hash;
    const bool isMoved = m_reader.Write(copy, others);
    const QByteArray moved = StampOf(copy, true).hash;
    const bool isBack = isMoved && m_reader.Write(copy, links);
    return isBack && !written.isEmpty() && !moved.isEmpty() && moved != written &&
           StampOf(copy, true).hash == written;
}

bool CopyLinks::Write(const JobFile& file, const QString& copy, const Links& asked,
                      const Links& before)
{
    const JobControl::Alias alias(m_control, copy, file.target);
    const AliasLog log(NamesFor(file, copy));
    QString difference;
    if (!m_reader.Write(copy, asked))
        return false;
    if (Holds(file, copy, asked, before, difference))
        return true;
    m_control.Report({Stage::RepathFiles,
                      ProblemKind::LinksNotRewritten,
                      file.target,
                      QStringLiteral("After they were rewritten the links of the copy are not what "
                                     "was asked for: ") +
                          difference,
                      {}});
    return false;
}

} // namespace Halvern::Jobs
