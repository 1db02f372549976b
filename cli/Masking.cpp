// SPDX-License-Identifier: Apache-2.0

#include "Masking.h"

namespace Halvern::Cli {

namespace {

/// Characters that set or end a direction of writing; none of them is needed to write a name.
bool TurnsText(char16_t c)
{
    return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

bool BreaksLine(char16_t c)
{
    return c == 0x2028 || c == 0x2029;
}

bool IsControl(char16_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

bool IsMasked(char16_t c)
{
    return IsControl(c) || TurnsText(c) || BreaksLine(c);
}

QString Hex(char16_t c, int digits)
{
    return QString::number(uint(c), 16).rightJustified(digits, u'0');
}

QString Visible(char16_t c)
{
    return c < 0x100 ? QStringLiteral("\\x") + Hex(c, 2) : QStringLiteral("\\u") + Hex(c, 4);
}

QString JsonEscape(char16_t c)
{
    return QStringLiteral("\\u") + Hex(c, 4);
}

template <typename Predicate, typename Form>
QString Replaced(const QString& text, Predicate isReplaced, Form form)
{
    QString replaced;
    replaced.reserve(text.size());
    for (const QChar character : text) {
        if (isReplaced(character.unicode()))
            replaced += form(character.unicode());
        else
            replaced += character;
    }
    return replaced;
}

} // namespace

QString Masked(const QString& text)
{
    return Replaced(text, IsMasked, Visible);
}

QString MaskedLines(const QString& text)
{
    return Replaced(
        text, [](char16_t c) { return c != u'\n' && IsMasked(c); }, Visible);
}

QByteArray MaskedJson(const QByteArray& json)
{
    // They can only stand inside of strings.
    return Replaced(QString::fromUtf8(json), IsMasked, JsonEscape).toUtf8();
}

} // namespace Halvern::Cli
