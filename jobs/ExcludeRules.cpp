// SPDX-License-Identifier: Apache-2.0

#include "ExcludeRules.h"

#include "base/SamePath.h"
#include "base/Units.h"
#include "base/Utf.h"

#include <array>
#include <string>

namespace Halvern::Jobs {

namespace {

// Names of design files resemble each other: what stands here must be a backup, a lock or the data
// of a tool beyond doubt.
constexpr std::array BuiltInPatterns{
    ".corsyncignore",
    // Version control. Work trees may have a file ".git".
    ".git", ".hg", ".svn", ".bzr",
    // FreeCAD keeps earlier versions as part.FCStd1, part.FCStd2 ... or with a date.
    "*.FCStd[0-9]", "*.FCStd[0-9][0-9]", "*.FCBak",
    // Blender: scene.blend1 ... scene.blend32; "@" while it saves.
    "*.blend[0-9]", "*.blend[0-9][0-9]", "*.blend@",
    // KiCad: folders of packed backups, files of earlier versions, files saved by the clock, locks.
    "*-backups/", "*.kicad_*-bak", "_autosave-*.kicad_*", "~*.lck",
    // AutoCAD
    "*.dwl", "*.dwl2",
    // Microsoft Office, Inventor, SolidWorks; LibreOffice
    "~$*", ".~lock*",
    // Editors of text
    "*~", ".#*", ".*.sw[op]",
    // Finder and Explorer
    ".DS_Store", "Thumbs.db"};

std::vector<std::u32string_view> NamesOf(std::u32string_view path)
{
    std::vector<std::u32string_view> names;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find(U'/', begin), path.size());
        names.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    return names;
}

/// The text of a file, without a byte order mark. Nothing when it is no UTF-8.
std::optional<QString> TextOf(const QByteArray& content)
{
    QByteArrayView bytes = content;
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes = bytes.sliced(3);
    const std::optional<std::u16string> text =
        Base::ToUtf16(std::string_view(bytes.data(), std::size_t(bytes.size())));
    if (!text)
        return {};
    return QStringView(*text).toString();
}

} // namespace

const QString ExcludeRules::FileName = QStringLiteral(".corsyncignore");

QString ExcludeMatch::Text() const
{
    return place.isEmpty() ? pattern : QStringLiteral("%1 (%2)").arg(pattern, place);
}

ExcludeRules::ExcludeRules(const QStringList& patterns, Base::System system) : m_system(system)
{
    m_builtIn.place = QStringLiteral("built in");
    for (const char* const pattern : BuiltInPatterns)
        m_builtIn.rules.push_back({ExcludePattern(QString::fromLatin1(pattern))});
    for (const QString& pattern : patterns)
        m_own.rules.push_back({ExcludePattern(pattern)});
}

bool ExcludeRules::IsRulesFile(const QString& name) const
{
    return Base::IsSamePath(Base::Units(name), Base::Units(FileName), m_system);
}

QString ExcludeRules::FaultIn(const QByteArray& content)
{
    const std::optional<QString> text = TextOf(content);
    if (!text)
        return QStringLiteral("no UTF-8");
    int line = 0;
    for (const QStringView one : QStringView(*text).split(u'\n')) {
        ++line;
        const std::optional<ExcludePattern> pattern = ExcludePattern::FromLine(one);
        if (pattern && !pattern->CanMatch())
            return QStringLiteral("line %1: the pattern \"%2\" can match nothing")
                .arg(QString::number(line), pattern->Text());
    }
    return {};
}

bool ExcludeRules::AddFile(const QString& folder, const QString& file, const QByteArray& content)
{
    const std::optional<QString> text = TextOf(content);
    if (!text)
        return false;
    List list;
    list.place = file;
    list.folder = folder.isEmpty() ? QString() : folder + u'/';
    list.depth = std::size_t(list.folder.count(u'/'));
    int line = 0;
    for (const QStringView one : QStringView(*text).split(u'\n')) {
        ++line;
        if (const std::optional<ExcludePattern> pattern = ExcludePattern::FromLine(one))
            list.rules.push_back({*pattern, line});
    }
    m_files.push_back(std::move(list));
    return true;
}

void ExcludeRules::KeepFiles(std::size_t count)
{
    while (m_files.size() > count)
        m_files.pop_back();
}

const ExcludeRules::Rule* ExcludeRules::LastMatch(const List& list, const QString& path,
                                                  PathNames names, bool isFolder) const
{
    if (!path.startsWith(list.folder))
        return nullptr;
    for (auto rule = list.rules.rbegin(); rule != list.rules.rend(); ++rule)
        if (rule->pattern.Matches(names.subspan(list.depth), isFolder, m_system))
            return &*rule;
    return nullptr;
}

std::optional<ExcludeMatch> ExcludeRules::Match(const QString& path, bool isFolder) const
{
    const std::u32string text = path.toStdU32String();
    const std::vector<std::u32string_view> names = NamesOf(text);
    const auto decide = [&](const List& list) { return LastMatch(list, path, names, isFolder); };
    const List* deciding = &m_own;
    const Rule* rule = decide(m_own);
    for (auto file = m_files.rbegin(); !rule && file != m_files.rend(); ++file) {
        deciding = &*file;
        rule = decide(*file);
    }
    if (!rule || (rule->pattern.IsNegated() && !rule->pattern.NamesSomething())) {
        deciding = &m_builtIn;
        rule = decide(m_builtIn);
    }
    if (!rule || rule->pattern.IsNegated())
        return {};
    const QString line = rule->line == 0 ? QString() : u':' + QString::number(rule->line);
    return ExcludeMatch{rule->pattern.Text(), deciding->place + line};
}

} // namespace Halvern::Jobs
