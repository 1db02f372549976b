// SPDX-License-Identifier: Apache-2.0

#include "VrmlFinder.h"

#include "StringList.h"
#include "VrmlLexer.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Halvern::Formats::Scenes {

namespace {

constexpr std::size_t MaxNesting = 100'000;

/// VRML 1.0 and Inventor name files in fields with ordinary names.
bool IsOldAddressField(std::string_view node, std::string_view field)
{
    if (field == "filename")
        return node == "Texture2";
    return field == "name" && (node == "WWWInline" || node == "WWWAnchor" || node == "File");
}

class Finder
{
public:
    Finder(std::string_view text, bool isOld) : m_lexer(text), m_isOld(isOld) {}

    ReferenceList Run()
    {
        VrmlToken token = m_lexer.Next();
        for (; token.kind != VrmlToken::Kind::End; token = m_lexer.Next())
            Step(token);
        if (!m_open.empty())
            throw FormatError("the file ends inside brackets", token.span.begin);
        return std::move(m_list);
    }

private:
    struct Frame
    {
        char bracket;
        std::string_view node;
        /// What DEF calls it.
        std::string_view name;
    };

    void Step(const VrmlToken& token)
    {
        switch (token.kind) {
        case VrmlToken::Kind::End:
            return;
        case VrmlToken::Kind::Word:
            return Word(token);
        case VrmlToken::Kind::String:
            return String(token, Notation::VrmlString);
        case VrmlToken::Kind::Bracket:
            return Bracket(token);
        }
    }

    void Word(const VrmlToken& token)
    {
        if (m_isOld && !m_field.empty())
            return String(token, Notation::VrmlWord);
        m_field = {};
        m_words = {m_words[1], m_words[2], token.text};
        if (token.text == "EXTERNPROTO")
            m_prototype = Prototype::Named;
        const bool isField =
            m_isOld ? !m_open.empty() && IsOldAddressField(m_open.back().node, token.text)
                    : IsAddressField(token.text);
        if (isField)
            m_field = token.text;
    }

    void Bracket(const VrmlToken& token)
    {
        const char bracket = token.text.front();
        if (bracket == '[' || bracket == '{')
            Open(bracket, token.span.begin);
        else
            Close(bracket, token.span.begin);
        m_words = {};
    }

    void Open(char bracket, std::size_t position)
    {
        if (m_open.size() == MaxNesting)
            throw FormatError("nested deeper than " + std::to_string(MaxNesting) + " levels",
                              position);
        Frame frame{bracket, m_words[2], m_words[0] == "DEF" ? m_words[1] : std::string_view()};
        if (bracket == '[' && !m_open.empty())
            frame = {bracket, m_open.back().node, m_open.back().name};
        if (bracket == '{')
            m_field = {};
        m_isList = !m_field.empty();
        if (m_prototype == Prototype::Named && bracket == '[') {
            m_prototype = Prototype::Interface;
            m_prototypeName = m_words[2];
            m_prototypeDepth = m_open.size();
        }
        m_open.push_back(frame);
    }

    void Close(char bracket, std::size_t position)
    {
        if (m_open.empty() || m_open.back().bracket != (bracket == ']' ? '[' : '{'))
            throw FormatError("a bracket that closes none", position);
        m_open.pop_back();
        m_field = {};
        m_isList = false;
        if (m_prototype == Prototype::Interface && m_open.size() == m_prototypeDepth) {
            m_prototype = Prototype::None;
            m_field = "EXTERNPROTO"; // its addresses come next
        }
    }

    void String(const VrmlToken& token, Notation notation)
    {
        m_words = {};
        if (m_field.empty())
            return;
        const std::string id = m_list.NextId(Place());
        if (!m_isList)
            m_field = {};
        std::optional<Reference> reference = AddressIn(
            {notation == Notation::VrmlWord ? std::string(token.text) : Unescaped(token.text),
             token.span});
        if (!reference)
            return;
        reference->id = id;
        reference->notation = notation;
        m_list.Add(std::move(*reference), token.span.begin);
    }

    std::string Place() const
    {
        if (m_field == "EXTERNPROTO")
            return NameForId(m_prototypeName, "prototype") + "/EXTERNPROTO";
        const Frame frame = m_open.empty() ? Frame{} : m_open.back();
        return NameForId(frame.name, frame.node) + '/' + NameForId({}, m_field);
    }

    enum class Prototype
    {
        None,
        Named,
        Interface
    };

    VrmlLexer m_lexer;
    bool m_isOld;
    ReferenceList m_list;
    std::vector<Frame> m_open;
    /// The last ones, the latest at the end.
    std::array<std::string_view, 3> m_words;
    /// The field whose addresses come next.
    std::string_view m_field;
    bool m_isList = false;
    Prototype m_prototype = Prototype::None;
    std::string_view m_prototypeName;
    std::size_t m_prototypeDepth = 0;
};

} // namespace

ReferenceList FindVrmlReferences(std::string_view text)
{
    const std::string_view head = text.substr(text.starts_with("\xEF\xBB\xBF") ? 3 : 0);
    const bool isOld = head.starts_with("#VRML V1.0") || head.starts_with("#Inventor V");
    if (!isOld && !head.starts_with("#VRML V2.0") && !head.starts_with("#X3D V"))
        throw FormatError("neither VRML nor X3D", 0);
    // The mark of Unicode would be part of the first word.
    Finder finder(text, isOld);
    return finder.Run();
}

} // namespace Halvern::Formats::Scenes
