// SPDX-License-Identifier: Apache-2.0

#include "plugins/RegistrationCheck.h"

#include "plugins/XmlFiler.h"

#include <algorithm>
#include <utility>

namespace Halvern::FileLink {

namespace {

constexpr QLatin1String Container("SyncPlugins");
constexpr QLatin1String Layout("FileLayout");
constexpr QLatin1String Resolver("FileLinkResolver");

QString Attribute(const QDomElement& element, const char* name)
{
    return XmlFiler::Unwrapped(element.attribute(QString::fromLatin1(name)));
}

QList<QDomElement> ChildElements(const QDomElement& parent)
{
    QList<QDomElement> children;
    for (QDomElement child = parent.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        children.append(child);
    return children;
}

QString Tag(const QDomElement& element)
{
    return QStringLiteral("<%1>").arg(element.tagName());
}

class RegistrationCheck
{
public:
    RegistrationCheck(const QString& file, bool isUsed) : m_file(file), m_isUsed(isUsed) {}

    QList<Problem> Check(const QDomElement& root)
    {
        const QDomElement container =
            root.tagName() == Container ? root : root.firstChildElement(Container);
        if (container.isNull())
            Report(
                QStringLiteral("The file holds no <SyncPlugins>, as its root element or directly "
                               "in it"));
        else
            CheckContainer(container);
        return m_problems;
    }

private:
    void CheckContainer(const QDomElement& container)
    {
        const QList<QDomElement> elements = ChildElements(container);
        if (elements.isEmpty()) {
            Report(QStringLiteral("<SyncPlugins> declares no plug-in"));
            return;
        }
        CheckPlaces(container, {});
        CheckDeclaration(elements);
        for (const QDomElement& element : elements.mid(1))
            CheckFurtherElement(element, elements.first());
        m_module.clear();
        if (!container.nextSiblingElement(Container).isNull())
            Report(QStringLiteral("Only the first <SyncPlugins> is read"));
    }

    /// The first element is the only one that is read as a declaration.
    void CheckDeclaration(const QList<QDomElement>& elements)
    {
        const QDomElement& element = elements.first();
        m_module = Attribute(element, "Module");
        CheckPlaces(element, {"Module", "Name", "ContractVersion"});
        if (m_module.isEmpty()) {
            const bool hasModule =
                std::any_of(elements.cbegin(), elements.cend(), [](const QDomElement& other) {
                    return !Attribute(other, "Module").isEmpty();
                });
            // Where another element has one, that is told of it.
            if (!m_isUsed && !hasModule)
                Report(QStringLiteral("%1 names no Module").arg(Tag(element)));
            return;
        }
        CheckModule();
        CheckNumber(element, "ContractVersion", QStringLiteral("the plug-in is refused"));
        CheckServices(element);
    }

    void CheckFurtherElement(const QDomElement& element, const QDomElement& first)
    {
        m_module = Attribute(element, "Module");
        if (m_module.isEmpty())
            return;
        Report(QStringLiteral("The plug-in is not used: of <SyncPlugins> only the first element is "
                              "read, which is %1; give each plug-in a file of its own")
                   .arg(Tag(first)));
    }

    void CheckModule()
    {
        if (m_module.contains(u'/') || m_module.contains(u'\\'))
            Report(QStringLiteral("Module \"%1\" is a path: write the library's file name alone")
                       .arg(m_module));
        if (m_module != m_module.trimmed())
            Report(
                QStringLiteral("Module \"%1\" begins or ends with a blank, which counts as part of "
                               "the name")
                    .arg(m_module));
    }

    void CheckServices(const QDomElement& declaration)
    {
        const bool hasLayout = CheckService(declaration, Layout, PluginType::FileLayout);
        if (!hasLayout) {
            if (!CheckService(declaration, Resolver, PluginType::FileLinkResolver))
                Report(QStringLiteral("%1 offers no service: it holds neither a <FileLayout> nor a "
                                      "<FileLinkResolver>")
                           .arg(Tag(declaration)));
        } else if (!declaration.firstChildElement(Resolver).isNull()) {
            Report(QStringLiteral("<FileLinkResolver> is not used: a declaration offers one "
                                  "service, and it holds a <FileLayout>"));
        }
    }

    /// False when the declaration does not hold the service.
    bool CheckService(const QDomElement& declaration, const QString& name, PluginType type)
    {
        const QDomElement service = declaration.firstChildElement(name);
        if (service.isNull())
            return false;
        if (!service.nextSiblingElement(name).isNull())
            Report(QStringLiteral("Only the first %1 is read").arg(Tag(service)));
        const QString types = Attribute(service, "FileTypes");
        if (types.isEmpty())
            Report(QStringLiteral("%1 names no FileTypes").arg(Tag(service)));
        else
            for (const QString& sentence : CheckFileTypes(types, type))
                Report(sentence);
        CheckNumber(service, "Priority", QStringLiteral("0 is taken"));
        CheckPlaces(service, {"FileTypes", "Priority"});
        return true;
    }

    void CheckNumber(const QDomElement& element, const char* name, const QString& outcome)
    {
        const QString written = element.attribute(QString::fromLatin1(name));
        bool isNumber = true;
        if (!written.isEmpty())
            written.toUInt(&isNumber);
        if (!isNumber)
            Report(QStringLiteral("%1 \"%2\" is no number from 0 to 4294967295, %3")
                       .arg(QString::fromLatin1(name), written, outcome));
    }

    /// Attributes with a known name in an element, or in a letter case, in which they are not read.
    void CheckPlaces(const QDomElement& element, const QList<const char*>& read)
    {
        static const std::pair<const char*, const char*> places[] = {
            {"Module", "the plug-in's element"},
            {"Name", "the plug-in's element"},
            {"ContractVersion", "the plug-in's element"},
            {"FileTypes", "the service's element"},
            {"Priority", "the service's element"}};
        const QDomNamedNodeMap attributes = element.attributes();
        for (int i = 0; i < attributes.size(); ++i) {
            const QString written = attributes.item(i).nodeName();
            for (const auto& [name, place] : places) {
                const QString known = QString::fromLatin1(name);
                const bool isRead = written == known && IsAmong(name, read);
                if (!isRead && written.compare(known, Qt::CaseInsensitive) == 0)
                    Report(QStringLiteral("\"%1\" in %2 is not read: write %3, in %4")
                               .arg(written, Tag(element), known, QString::fromLatin1(place)));
            }
        }
    }

    static bool IsAmong(const char* name, const QList<const char*>& names)
    {
        for (const char* other : names)
            if (qstrcmp(name, other) == 0)
                return true;
        return false;
    }

    void Report(const QString& text)
    {
        m_problems.append(MakeRegistrationProblem(m_file, m_module, text));
    }

    const QString& m_file;
    bool m_isUsed;
    /// Of the declaration in hand.
    QString m_module;
    QList<Problem> m_problems;
};

} // namespace

Problem MakeRegistrationProblem(const QString& file, const QString& module, const QString& text)
{
    return {Stage::Plugins, ProblemKind::Registration, file, text, module};
}

QList<Problem> CheckRegistration(const QDomDocument& document, const QString& file, bool isUsed)
{
    return RegistrationCheck(file, isUsed).Check(document.documentElement());
}

} // namespace Halvern::FileLink
