// SPDX-License-Identifier: Apache-2.0

#include "Target.h"

#include "jobs/ExcludePattern.h"
#include "jobs/ExcludeRules.h"

#include <QtCore/QStringDecoder>

namespace Halvern::Fuzz {

namespace {

using namespace Jobs;

const QStringList Paths = {
    QStringLiteral("a"),          QStringLiteral("a/b.prt"),       QStringLiteral("A/B.PRT"),
    QStringLiteral(".git"),       QStringLiteral("x/.git/config"), QStringLiteral("a b/c [1].bak"),
    QStringLiteral("ä/木/~$x.~"), QStringLiteral("a/b/c/d/e/f/g"), QStringLiteral("aaaaaaaaaaaaaa"),
};

/// What patterns are written for: their own lines are among the paths.
QStringList PathsFor(const QString& text)
{
    QStringList paths = Paths;
    for (const QString& line : text.split(u'\n').mid(0, 8)) {
        QStringList names = line.split(u'/', Qt::SkipEmptyParts);
        names.removeAll(QStringLiteral("."));
        names.removeAll(QStringLiteral(".."));
        if (!names.isEmpty())
            paths.append(names.join(u'/'));
    }
    return paths;
}

void TryMatches(const ExcludeRules& rules, const QStringList& paths)
{
    for (const QString& path : paths)
        for (const bool isFolder : {false, true})
            if (const std::optional<ExcludeMatch> match = rules.Match(path, isFolder))
                Require(!match->Text().isEmpty(), "excluded by nothing");
}

/// A pattern on its own excludes, and the same with "!" brings back, unless it is for everything.
void TryPattern(const QString& line, const QStringList& paths)
{
    const std::optional<ExcludePattern> pattern = ExcludePattern::FromLine(line);
    if (!pattern || !pattern->CanMatch() || pattern->IsNegated() || !pattern->NamesSomething())
        return;
    const ExcludeRules both({pattern->Text(), u'!' + pattern->Text()});
    const ExcludeRules alone(QStringList{pattern->Text()});
    for (const QString& path : paths) {
        const std::optional<ExcludeMatch> match = both.Match(path, false);
        Require(!match || match->pattern != pattern->Text(), "excluded though brought back");
        if (alone.Match(path, false))
            Require(!both.Match(path, false) || match->place == u"built in",
                    "excluded by what is not there");
    }
}

void Try(std::string_view input)
{
    const QByteArray content(input.data(), static_cast<qsizetype>(input.size()));
    const QString fault = ExcludeRules::FaultIn(content);
    const QString text = QString::fromUtf8(content);
    const QStringList paths = PathsFor(text);
    for (const Base::System system : {Base::System::Posix, Base::System::Windows}) {
        ExcludeRules rules({}, system);
        const bool isAdded = rules.AddFile(QString(), QStringLiteral("/w/.corsyncignore"), content);
        Require(isAdded || !fault.isEmpty(), "without a fault, and not taken");
        Require(rules.FileCount() == (isAdded ? 1U : 0U), "half added");
        if (rules.AddFile(QStringLiteral("a"), QStringLiteral("/w/a/.corsyncignore"), content))
            TryMatches(rules, paths);
    }
    for (const QString& line : text.split(u'\n').mid(0, 8))
        TryPattern(line, paths);
}

const RegisteredTarget Registered("exclude", Try);

} // namespace

} // namespace Halvern::Fuzz
