// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/System.h"

#include <QtCore/QString>

#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace Halvern::Jobs {

/// The names of a path below a folder, from the top: "a/b.prt" is "a" and "b.prt".
using PathNames = std::span<const std::u32string_view>;

/// One pattern in the notation of .gitignore files, with characters where git counts bytes. What it
/// takes to match a path grows with the product of the two lengths, whatever the pattern is.
class ExcludePattern
{
public:
    /// Spaces at its end count only when escaped.
    explicit ExcludePattern(const QString& text);
    /// The pattern on a line of a file: nothing for comments and blank lines.
    static std::optional<ExcludePattern> FromLine(QStringView line);

    /// False for what matches no path at all: with an open "[" or a "\" at its end, with a set
    /// such as "[z-a]", with nothing between two slashes, such as "!" and "/", or with "." or ".."
    /// there.
    bool CanMatch() const;
    /// As it was written.
    const QString& Text() const { return m_text; }
    /// Begins with "!": brings back what an earlier pattern excludes.
    bool IsNegated() const { return m_isNegated; }
    /// The name at its end is not of wildcards alone, as that of "*/" is.
    bool NamesSomething() const;
    /// `path` is relative to the folder where the pattern stands. Letter case counts except on
    /// Windows.
    bool Matches(PathNames path, bool isFolder, Base::System system) const;

private:
    class Reader;

    struct Element
    {
        enum class Kind
        {
            Character,
            AnyCharacter,
            AnyText,
            Set
        };
        Kind kind = Kind::Character;
        char32_t character = 0;
        /// Of a set: from and to, both in it.
        std::vector<std::pair<char32_t, char32_t>> ranges;
        bool isNegated = false;
    };
    /// Between two slashes.
    struct Part
    {
        /// "**": any number of names. The others match one.
        bool isAnyFolders = false;
        std::vector<Element> elements;
    };

    static bool IsInSet(const Element& set, char32_t character, Base::System system);
    static bool MatchesOne(const Element& element, char32_t character, Base::System system);
    static bool MatchesName(const Part& part, std::u32string_view name, Base::System system);
    bool MatchesPath(PathNames path, Base::System system) const;

    QString m_text;
    bool m_isNegated = false;
    bool m_isForFoldersOnly = false;
    /// Without a slash a pattern is for names at any depth.
    bool m_isForNames = false;
    /// None when nothing can match.
    std::vector<Part> m_parts;
};

} // namespace Halvern::Jobs
