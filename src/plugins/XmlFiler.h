// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtXml/QDomDocument>

namespace Halvern::FileLink {

/// Reads an XML document through a cursor, the current element.
///
///     XmlFiler filer(XmlFiler::UnwrapTr);
///     if (filer.Open(file) && filer.MoveTo(u"/SyncPlugins/Plugin"_qs))
///         module = filer.GetAttribute(u"Module"_qs, {});
class XmlFiler
{
public:
    enum TrMode
    {
        KeepTr,
        /// Attribute values written tr(text) are read as text.
        UnwrapTr,
    };

    explicit XmlFiler(TrMode mode);

    /// Parses `file` and makes its root element current. False for a file that is missing,
    /// unreadable or not well-formed.
    [[nodiscard]] bool Open(const QString& file);
    QString FileName() const { return m_file; }
    /// Why the last Open could not open an existing file; empty for every other failure.
    QString GetOpenError() const { return m_openError; }
    /// Why the last Open failed, for people; empty when it did not.
    QString GetFailure() const { return m_failure; }
    const QDomDocument& Document() const { return m_document; }

    /// Moves along a path of element names, "/" or "\" between them, taking the first child of each
    /// name. A path that begins with a slash starts at the root element, which it may name. False
    /// when a name is not found: the current element stays then. An empty path changes nothing.
    [[nodiscard]] bool MoveTo(const QString& path);
    /// The first child, or the next sibling, of any tag. False when there is none: the current
    /// element stays then.
    [[nodiscard]] bool MoveToFirstChild();
    [[nodiscard]] bool MoveToNextSibling();

    /// Tag of the current element; empty when there is none.
    QString GetTag() const;
    /// `defaultValue` when there is no current element or it has no such attribute.
    QString GetAttribute(const QString& name, const QString& defaultValue) const;
    /// The same without unwrapping tr().
    QString GetPlainAttribute(const QString& name, const QString& defaultValue) const;

    /// The text of tr(text), any other text as it is.
    static QString Unwrapped(const QString& value);

private:
    bool MoveToElement(const QDomElement& element);

    QString m_file;
    QString m_openError;
    QString m_failure;
    QDomDocument m_document;
    QDomNode m_current;
    TrMode m_mode;
};

} // namespace Halvern::FileLink
