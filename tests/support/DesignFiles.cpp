// SPDX-License-Identifier: Apache-2.0

#include "DesignFiles.h"

#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QUrl>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

enum class Encoding
{
    None,
    Address,
    AddressInJson,
    StepString,
};

/// How a format writes a link: between two texts that stand nowhere else in the files made here. A
/// "%" is the number of the link.
struct Format
{
    const char* type;
    const char* head;
    const char* before;
    const char* after;
    const char* between;
    /// Around the content.
    const char* note;
    const char* tail;
    Encoding encoding = Encoding::None;
    /// The link once more, which programs expect to be the same.
    const char* again = nullptr;
};

constexpr Format Formats[] = {
    {"tlk", "", "link % ", "\n", "", "", "\n"},
    {"gltf", "{\"asset\":{\"version\":\"2.0\"},\"images\":[", "{\"uri\":\"", "\"}", ",",
     "],\"extras\":{\"note\":\"", "\"}}", Encoding::AddressInJson},
    {"svg", "<svg xmlns=\"http://www.w3.org/2000/svg\">\n", "<image href=\"", "\"/>\n", "",
     "<desc>", "</desc>\n</svg>\n", Encoding::Address},
    {"obj", "o thing\n", "mtllib ", "\n", "", "# ", "\nv 0 0 0\n"},
    {"mtl", "newmtl Oak\n", "map_Kd ", "\n", "newmtl Oak%\n", "# ", "\n"},
    {"scad", "", "use <", ">\n", "", "// ", "\ncube(1);\n"},
    {"stp", "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n", "#%=DOCUMENT_FILE('", "','',$,#9,'',$);\n",
     "", "/* ", " */\nENDSEC;\nEND-ISO-10303-21;\n", Encoding::StepString,
     "#%=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('"},
};

const Format* FormatOf(const QString& name)
{
    const QString type = QFileInfo(name).suffix().toLower();
    for (const Format& format : Formats)
        if (type == QLatin1String(format.type))
            return &format;
    return nullptr;
}

QByteArray Numbered(const char* text, qsizetype number)
{
    return QByteArray(text).replace('%', QByteArray::number(number));
}

QByteArray Encoded(const QString& link, Encoding encoding)
{
    const QByteArray safe = "/:\\.,()'+@&=!$*;";
    switch (encoding) {
    case Encoding::None:
        return link.toUtf8();
    case Encoding::Address:
        return QUrl::toPercentEncoding(link, safe).replace('&', "%26");
    case Encoding::AddressInJson:
        return QUrl::toPercentEncoding(link, safe).replace('\\', "\\\\");
    case Encoding::StepString:
        return link.toUtf8().replace('\\', "\\\\").replace('\'', "''");
    }
    return {};
}

/// Doubled characters, and letters as \X2\00E9\X0\.
QString DecodedStep(QString text)
{
    static const QRegularExpression letters(u"\\\\X2\\\\((?:[0-9A-F]{4})+)\\\\X0\\\\"_s);
    for (auto match = letters.match(text); match.hasMatch(); match = letters.match(text)) {
        QString decoded;
        for (qsizetype at = 0; at < match.capturedLength(1); at += 4)
            decoded += QChar(match.captured(1).mid(at, 4).toUShort(nullptr, 16));
        text.replace(match.capturedStart(), match.capturedLength(), decoded);
    }
    return text.replace(u"\\\\"_s, u"\\"_s).replace(u"''"_s, u"'"_s);
}

QString Decoded(const QByteArray& text, Encoding encoding)
{
    switch (encoding) {
    case Encoding::None:
        break;
    case Encoding::Address:
        return QUrl::fromPercentEncoding(text);
    case Encoding::AddressInJson:
        return QUrl::fromPercentEncoding(QByteArray(text).replace("\\\\", "\\"));
    case Encoding::StepString:
        return DecodedStep(QString::fromUtf8(text));
    }
    return QString::fromUtf8(text);
}

QByteArray Reference(const Format& format, qsizetype number, const QByteArray& link)
{
    QByteArray text = Numbered(format.before, number) + link + format.after;
    if (format.again)
        text += Numbered(format.again, 1000 + number) + link + "',#90001,#90002,(#" +
                QByteArray::number(number) + "));\n";
    return text;
}

struct Place
{
    qsizetype at = 0;
    qsizetype length = 0;
    bool isAgain = false;
};

/// The text with a "%" for any digits, when it stands at `at`: how long it is there, or -1.
qsizetype LengthThere(const QByteArray& text, const QByteArray& bytes, qsizetype at)
{
    const qsizetype begin = at;
    for (const char character : text) {
        if (character == '%') {
            while (at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '9')
                ++at;
        } else if (at >= bytes.size() || bytes[at++] != character) {
            return -1;
        }
    }
    return at - begin;
}

QList<Place> PlacesIn(const Format& format, const QByteArray& bytes)
{
    QList<Place> places;
    const bool byLine = QByteArray(format.after).endsWith('\n');
    for (qsizetype at = 0; at < bytes.size(); ++at) {
        if (byLine && at > 0 && bytes[at - 1] != '\n')
            continue;
        qsizetype length = LengthThere(format.before, bytes, at);
        const bool isAgain = length < 0 && format.again;
        if (isAgain)
            length = LengthThere(format.again, bytes, at);
        if (length < 0)
            continue;
        const qsizetype begin = at + length;
        const qsizetype end = bytes.indexOf(format.after[0], begin);
        places.append({begin, (end < 0 ? bytes.size() : end) - begin, isAgain});
    }
    return places;
}

} // namespace

QByteArray DesignFile(const QString& name, const QStringList& links, const QByteArray& content)
{
    const Format* const format = FormatOf(name);
    if (!format)
        return content;
    QByteArray bytes = format->head;
    for (qsizetype i = 0; i < links.size(); ++i) {
        if (i > 0)
            bytes += Numbered(format->between, i);
        bytes += Reference(*format, i + 1, Encoded(links[i], format->encoding));
    }
    return bytes + format->note + content + format->tail;
}

QStringList DesignTypes()
{
    QStringList types;
    for (const Format& format : Formats)
        types.append(QLatin1String(format.type));
    return types;
}

QStringList LinksIn(const QString& name, const QByteArray& bytes)
{
    QStringList links;
    const Format* const format = FormatOf(name);
    if (!format)
        return links;
    for (const Place& place : PlacesIn(*format, bytes)) {
        const QString link = Decoded(bytes.mid(place.at, place.length), format->encoding);
        if (!place.isAgain || links.isEmpty() || links.last() != link)
            links.append(link);
    }
    return links;
}

QByteArray WithoutLinks(const QString& name, const QByteArray& bytes)
{
    const Format* const format = FormatOf(name);
    if (!format)
        return bytes;
    QByteArray rest;
    qsizetype at = 0;
    for (const Place& place : PlacesIn(*format, bytes)) {
        rest += bytes.mid(at, place.at - at) + '\1';
        at = place.at + place.length;
    }
    return rest + bytes.mid(at);
}

} // namespace Halvern::Test
