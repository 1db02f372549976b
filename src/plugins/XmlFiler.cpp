// SPDX-License-Identifier: Apache-2.0

#include "plugins/XmlFiler.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

namespace Halvern::FileLink {

XmlFiler::XmlFiler(TrMode mode) : m_mode(mode) {}

QString XmlFiler::Unwrapped(const QString& value)
{
    static const QRegularExpression opening(QStringLiteral("^\\s*tr\\s*\\("),
                                            QRegularExpression::CaseInsensitiveOption |
                                                QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression closing(QStringLiteral("\\)\\s*$"),
                                            QRegularExpression::UseUnicodePropertiesOption);
    if (!value.contains(opening) || !value.contains(closing))
        return value;
    return QString(value).remove(opening).remove(closing);
}

bool XmlFiler::Open(const QString& file)
{
    m_openError.clear();
    m_failure.clear();
    if (!QFile::exists(file)) {
        m_failure = QStringLiteral("The file does not exist");
        return false;
    }
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly)) {
        m_openError = QStringLiteral("XmlFiler: Failed to open file %1. %2 (Error code: %3)")
                          .arg(file)
                          .arg(input.errorString())
                          .arg(int(input.error()));
        m_failure = QStringLiteral("The file cannot be read: %1").arg(input.errorString());
        return false;
    }
    QDomDocument document;
    QString reason;
    int line = 0;
    int column = 0;
    if (!document.setContent(&input, &reason, &line, &column)) {
        m_failure = QStringLiteral("The file is no XML: %1 (line %2, column %3)")
                        .arg(reason, QString::number(line), QString::number(column));
        return false;
    }
    m_document = document;
    m_current = document.documentElement();
    m_file = file;
    return true;
}

bool XmlFiler::MoveTo(const QString& path)
{
    QString names = path.trimmed();
    if (names.isEmpty())
        return true;
    names.replace(u'\\', u'/');
    QStringList parts = names.split(u'/', Qt::SkipEmptyParts);

    QDomNode node = m_current;
    if (names.startsWith(u'/')) {
        const QDomElement root = m_document.documentElement();
        node = root;
        if (!parts.isEmpty() && parts.first() == root.tagName())
            parts.removeFirst();
    }
    for (const QString& part : std::as_const(parts)) {
        node = node.firstChildElement(part);
        if (node.isNull())
            return false;
    }
    m_current = node;
    return true;
}

bool XmlFiler::MoveToFirstChild()
{
    return MoveToElement(m_current.firstChildElement());
}

bool XmlFiler::MoveToNextSibling()
{
    return MoveToElement(m_current.nextSiblingElement());
}

bool XmlFiler::MoveToElement(const QDomElement& element)
{
    if (element.isNull())
        return false;
    m_current = element;
    return true;
}

QString XmlFiler::GetTag() const
{
    return m_current.toElement().tagName();
}

QString XmlFiler::GetAttribute(const QString& name, const QString& defaultValue) const
{
    const QDomElement element = m_current.toElement();
    if (element.isNull() || !element.hasAttribute(name))
        return defaultValue;
    const QString value = element.attribute(name);
    return m_mode == UnwrapTr ? Unwrapped(value) : value;
}

QString XmlFiler::GetPlainAttribute(const QString& name, const QString& defaultValue) const
{
    return m_current.toElement().attribute(name, defaultValue);
}

} // namespace Halvern::FileLink
