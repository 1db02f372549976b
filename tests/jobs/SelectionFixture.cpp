// SPDX-License-Identifier: Apache-2.0

#include "SelectionFixture.h"

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

QString NameOf(Remark remark)
{
    static const QMap<Remark, QString> names{{Remark::LinkToFolder, u"LinkToFolder"_s},
                                             {Remark::LinkToNothing, u"LinkToNothing"_s},
                                             {Remark::NoFile, u"NoFile"_s},
                                             {Remark::SourceNoFile, u"SourceNoFile"_s},
                                             {Remark::Excluded, u"Excluded"_s},
                                             {Remark::NotReadable, u"NotReadable"_s},
                                             {Remark::NameNotText, u"NameNotText"_s},
                                             {Remark::Vanished, u"Vanished"_s},
                                             {Remark::ColonInName, u"ColonInName"_s}};
    return names.value(remark, u"another remark"_s);
}

} // namespace

SelectionListing SelectionOnDisk::List(const QStringList& sources, const QStringList& exclude) const
{
    QStringList paths;
    for (const QString& source : sources)
        paths.append(tree.Path(u"w/"_s + source));
    SelectionListing listing = WalkSelection(paths, ExcludeRules(exclude), [] { return false; });
    EXPECT_TRUE(listing.isComplete);
    return listing;
}

QStringList SelectionOnDisk::Names(const QStringList& sources, const QStringList& exclude) const
{
    QStringList names;
    for (const SelectedEntry& entry : List(sources, exclude).entries)
        names.append(entry.isFolder ? entry.name + u'/' : entry.name);
    return names;
}

QStringList SelectionOnDisk::LeftOut(const QStringList& sources, const QStringList& exclude) const
{
    return Lines(List(sources, exclude).leftOut);
}

QStringList SelectionOnDisk::Lines(const QList<LeftOutItem>& items) const
{
    QStringList lines;
    for (const LeftOutItem& item : items) {
        QString line = NameOf(item.remark) + u' ' + item.source;
        if (!item.detail.isEmpty())
            line += u": "_s + item.detail;
        lines.append(line.replace(tree.Path(u"w"_s) + u'/', QString()));
    }
    return lines;
}

} // namespace Halvern::Test
