// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/Xml.h"

#include "pluginkit/FormatError.h"

#ifndef XML_DTD
#define XML_DTD // declares the limits for entities
#endif
#include "kit/XmlMemory.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <stdexcept>

namespace Halvern::PluginKit {

namespace {

/// What the parser gets at once.
constexpr std::size_t MinPiece = std::size_t(256) << 10;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsUtf8Name(std::string encoding)
{
    std::transform(encoding.begin(), encoding.end(), encoding.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return encoding == "UTF-8" || encoding == "UTF8" || encoding == "US-ASCII";
}

/// Most encodings of one byte per letter agree with UTF-8 on a text without letters beyond ASCII:
/// some programs announce ISO-8859-1 and write such letters as references. Others, which give these
/// bytes another meaning, could not have brought the parser as far as the announcement.
bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// UTF-16 and UTF-32 show in the first bytes.
void RequireBytesOfUtf8(std::string_view text)
{
    const std::string_view start = text.substr(0, 4);
    if (start.starts_with("\xFE\xFF") || start.starts_with("\xFF\xFE") ||
        start.find('\0') != std::string_view::npos)
        throw FormatError("the document is not encoded as UTF-8", 0);
}

/// After the next `mark`, or the end.
std::size_t After(std::string_view document, std::string_view mark, std::size_t at)
{
    const std::size_t found = document.find(mark, at);
    return found == std::string_view::npos ? document.size() : found + mark.size();
}

/// After the tag that begins at `begin`.
std::size_t BehindTag(std::string_view document, std::size_t begin)
{
    std::size_t attributes = 0;
    std::size_t at = document.find_first_of("\"'=>", begin);
    while (at < document.size() && document[at] != '>') {
        const char c = document[at++];
        if (c != '=')
            at = After(document, {&c, 1}, at);
        else if (++attributes > MaxXmlAttributes)
            throw FormatError(
                "a tag with more than " + std::to_string(MaxXmlAttributes) + " attributes", begin);
        at = document.find_first_of("\"'=>", at);
    }
    return After(document, ">", at);
}

/// The parser takes all attributes of a tag apart before it tells of any.
void RequireFewAttributes(std::string_view document)
{
    std::size_t at = document.find('<');
    while (at < document.size()) {
        const std::string_view rest = document.substr(at);
        if (rest.starts_with("<!--"))
            at = After(document, "-->", at);
        else if (rest.starts_with("<![CDATA["))
            at = After(document, "]]>", at);
        else if (rest.starts_with("<?"))
            at = After(document, "?>", at);
        else // what stands inside of a document type is looked at one by one
            at = rest.starts_with("<!") ? at + 1 : BehindTag(document, at);
        at = document.find('<', at);
    }
}

void RequireShortName(std::string_view name, std::size_t position)
{
    if (name.size() > MaxXmlName)
        throw FormatError("a name of more than " + std::to_string(MaxXmlName) + " bytes", position);
}

/// The attributes of a start tag, which the parser has found well-formed.
class TagScanner
{
public:
    TagScanner(std::string_view document, std::size_t begin) : m_document(document), m_at(begin + 1)
    {
        while (!IsBlank(Here()) && Here() != '/' && Here() != '>')
            ++m_at;
    }

    bool Next(XmlAttribute& attribute)
    {
        SkipBlanks();
        if (Here() == '/' || Here() == '>')
            return false;
        const std::size_t name = m_at;
        while (!IsBlank(Here()) && Here() != '=')
            ++m_at;
        attribute.name = m_document.substr(name, m_at - name);
        SkipBlanks();
        ++m_at;
        SkipBlanks();
        const char quote = Here();
        attribute.begin = ++m_at;
        while (Here() != quote)
            ++m_at;
        attribute.end = m_at++;
        return true;
    }

private:
    char Here() const { return m_document.at(m_at); }
    void SkipBlanks()
    {
        while (IsBlank(Here()))
            ++m_at;
    }

    std::string_view m_document;
    std::size_t m_at;
};

/// Joins the parser, which calls back, and a visitor. What the visitor throws waits until the
/// parser, which is written in C, has returned.
class Reader
{
public:
    Reader(std::string_view document, XmlVisitor& visitor, bool isConverted);
    void Run();

private:
    static void XMLCALL OnStart(void* self, const char* name, const char** attributes);
    static void XMLCALL OnEnd(void* self, const char* name);
    static void XMLCALL OnInstruction(void* self, const char* target, const char* data);
    static void XMLCALL OnDeclaration(void* self, const char* version, const char* encoding,
                                      int standalone);
    // Its presence keeps entities in contents as they are.
    static void XMLCALL OnOther(void* self, const char*, int);

    template <typename Work>
    void Guard(Work work) noexcept
    {
        if (m_failure)
            return;
        try {
            work();
        } catch (...) {
            m_failure = std::current_exception();
            XML_StopParser(m_parser.get(), XML_FALSE);
        }
    }
    std::size_t Position() const
    {
        // -1 before the first byte was looked at
        return static_cast<std::size_t>(
            std::max(XML_GetCurrentByteIndex(m_parser.get()), XML_Index(0)));
    }
    std::size_t EventSize() const
    {
        return static_cast<std::size_t>(XML_GetCurrentByteCount(m_parser.get()));
    }
    void NoteProgress() { m_seen = Position(); }
    XmlElement Element(const char* name, const char** attributes) const;
    void Start(const char* name, const char** attributes);
    void Instruction(std::string_view target);
    void CheckEncoding(const char* encoding) const;

    struct Freer
    {
        void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
    };
    std::string_view m_document;
    XmlVisitor& m_visitor;
    bool m_isConverted;
    XmlMemory m_memory;
    std::unique_ptr<XML_ParserStruct, Freer> m_parser;
    std::exception_ptr m_failure;
    std::size_t m_depth = 0;
    /// Where the latest thing begins that the parser told of.
    std::size_t m_seen = 0;
};

Reader::Reader(std::string_view document, XmlVisitor& visitor, bool isConverted)
    : m_document(document), m_visitor(visitor), m_isConverted(isConverted),
      m_memory(document.size())
{
    const XML_Memory_Handling_Suite memory = XmlMemory::Functions();
    m_parser.reset(XML_ParserCreate_MM("UTF-8", &memory, nullptr));
    if (!m_parser)
        throw std::bad_alloc();
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), OnStart, OnEnd);
    XML_SetProcessingInstructionHandler(m_parser.get(), OnInstruction);
    XML_SetXmlDeclHandler(m_parser.get(), OnDeclaration);
    XML_SetDefaultHandler(m_parser.get(), OnOther);
    // Of its own accord the parser lets entities grow to a hundred times the document.
    constexpr float amplification = 2;
    if (!XML_SetBillionLaughsAttackProtectionMaximumAmplification(m_parser.get(), amplification))
        throw std::logic_error("the parser takes no limit for entities");
}

void Reader::Run()
{
    XML_Status status = XML_STATUS_OK;
    std::size_t fed = 0;
    do {
        // The parser copies what it gets, and begins anew with a tag that has not come to its end.
        const std::size_t piece = std::max(MinPiece, fed - std::min(fed, m_seen));
        const std::size_t size = std::min(piece, m_document.size() - fed);
        fed += size;
        status = XML_Parse(m_parser.get(), m_document.data() + fed - size, static_cast<int>(size),
                           fed == m_document.size() ? XML_TRUE : XML_FALSE);
    } while (status == XML_STATUS_OK && fed < m_document.size());
    if (m_failure)
        std::rethrow_exception(m_failure);
    if (m_memory.IsExhausted())
        throw FormatError("more names, attributes and entities than the memory for them holds",
                          Position());
    if (status != XML_STATUS_OK)
        throw FormatError(XML_ErrorString(XML_GetErrorCode(m_parser.get())), Position());
}

XmlElement Reader::Element(const char* name, const char** attributes) const
{
    XmlElement element;
    element.name = name;
    element.begin = Position();
    element.end = element.begin + EventSize();
    // Names and values come in pairs; those that the document type adds are the last.
    const auto texts = static_cast<std::size_t>(XML_GetSpecifiedAttributeCount(m_parser.get()));
    element.attributes.resize(texts / 2);
    RequireShortName(element.name, element.begin);
    TagScanner scanner(m_document.substr(0, element.end), element.begin);
    for (std::size_t i = 0; i < element.attributes.size(); ++i) {
        XmlAttribute& attribute = element.attributes[i];
        if (!scanner.Next(attribute) || attribute.name != attributes[2 * i])
            throw FormatError("a tag that cannot be taken apart", element.begin);
        RequireShortName(attribute.name, element.begin);
        attribute.value = attributes[2 * i + 1];
    }
    return element;
}

void Reader::Start(const char* name, const char** attributes)
{
    if (++m_depth > MaxXmlNesting)
        throw FormatError("nested deeper than " + std::to_string(MaxXmlNesting) + " levels",
                          Position());
    m_visitor.Start(Element(name, attributes));
}

void Reader::Instruction(std::string_view target)
{
    constexpr std::size_t opening = 2; // "<?"
    const std::size_t end = Position() + EventSize() - opening;
    std::size_t begin = Position() + opening + target.size();
    while (begin < end && IsBlank(m_document.at(begin)))
        ++begin;
    m_visitor.Instruction(target, begin, end);
}

void Reader::CheckEncoding(const char* encoding) const
{
    if (encoding && !m_isConverted && !IsUtf8Name(encoding) && !IsAscii(m_document))
        throw FormatError("the document is encoded as " + std::string(encoding) + ", not as UTF-8",
                          Position());
}

void Reader::OnStart(void* self, const char* name, const char** attributes)
{
    auto* reader = static_cast<Reader*>(self);
    reader->NoteProgress();
    reader->Guard([&] { reader->Start(name, attributes); });
}

void Reader::OnEnd(void* self, const char* name)
{
    auto* reader = static_cast<Reader*>(self);
    reader->Guard([&] {
        --reader->m_depth;
        reader->m_visitor.End(name, reader->Position());
    });
}

void Reader::OnInstruction(void* self, const char* target, const char*)
{
    auto* reader = static_cast<Reader*>(self);
    reader->Guard([&] { reader->Instruction(target); });
}

void Reader::OnOther(void* self, const char*, int)
{
    static_cast<Reader*>(self)->NoteProgress();
}

void Reader::OnDeclaration(void* self, const char*, const char* encoding, int)
{
    auto* reader = static_cast<Reader*>(self);
    reader->Guard([&] { reader->CheckEncoding(encoding); });
}

} // namespace

const XmlAttribute* XmlElement::Find(std::string_view attribute) const
{
    const auto found =
        std::find_if(attributes.begin(), attributes.end(),
                     [&](const XmlAttribute& candidate) { return candidate.name == attribute; });
    return found == attributes.end() ? nullptr : &*found;
}

std::string_view XmlElement::Value(std::string_view attribute) const
{
    const XmlAttribute* found = Find(attribute);
    return found ? std::string_view(found->value) : std::string_view();
}

void XmlVisitor::Instruction(std::string_view, std::size_t, std::size_t) {}

void ReadXml(std::string_view text, XmlVisitor& visitor)
{
    RequireBytesOfUtf8(text);
    RequireFewAttributes(text);
    Reader(text, visitor, false).Run();
}

void ReadConvertedXml(std::string_view text, XmlVisitor& visitor)
{
    RequireFewAttributes(text);
    Reader(text, visitor, true).Run();
}

} // namespace Halvern::PluginKit
