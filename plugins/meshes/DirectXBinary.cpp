// SPDX-License-Identifier: Apache-2.0

#include "DirectXDocument.h"
#include "FileWindow.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

namespace Halvern::Formats::Meshes {

namespace {

constexpr std::uint64_t TokenSize = 2;
constexpr std::uint64_t CountSize = 4;
constexpr std::size_t MaxString = std::size_t(64) << 10;

/// Numbers of tokens. Those from TemplateToken on are words of templates.
constexpr std::uint64_t NameToken = 1;
constexpr std::uint64_t StringToken = 2;
constexpr std::uint64_t IntegerToken = 3;
constexpr std::uint64_t GuidToken = 5;
constexpr std::uint64_t IntegerListToken = 6;
constexpr std::uint64_t FloatListToken = 7;
constexpr std::uint64_t OpenToken = 10;
constexpr std::uint64_t CloseToken = 11;
constexpr std::uint64_t LastSignToken = 20;
constexpr std::uint64_t TemplateToken = 31;
constexpr std::uint64_t FirstTypeToken = 40;
constexpr std::uint64_t LastTypeToken = 52;
constexpr std::uint64_t GuidSize = 16;

class Reader
{
public:
    Reader(const InputFile& file, std::uint64_t begin, std::size_t floatSize,
           DirectXVisitor& visitor)
        : m_window(file), m_at(begin), m_floatSize(floatSize), m_visitor(visitor)
    {}

    void Run()
    {
        while (m_at < m_window.Size()) {
            const std::uint64_t position = m_at;
            const std::uint64_t token = m_window.Little(m_at, TokenSize);
            m_at += TokenSize;
            Step(token, position);
        }
    }

private:
    void Step(std::uint64_t token, std::uint64_t position)
    {
        if (token == NameToken)
            Name(position);
        else if (token == StringToken)
            String(position);
        else if (token == IntegerToken)
            Skip(CountSize, position);
        else if (token == GuidToken)
            Skip(GuidSize, position);
        else if (token == IntegerListToken)
            Skip(CountSize + Count() * CountSize, position);
        else if (token == FloatListToken)
            Skip(CountSize + Count() * m_floatSize, position);
        else if (token == OpenToken)
            m_visitor.Open(position);
        else if (token == CloseToken)
            m_visitor.Close(position);
        else if (token == TemplateToken)
            m_visitor.Word("template");
        else if ((token < OpenToken || token > LastSignToken) &&
                 (token < FirstTypeToken || token > LastTypeToken))
            throw FormatError("an unknown token, " + std::to_string(token), position);
    }

    std::uint64_t Count() { return m_window.Little(m_at, CountSize); }

    void Skip(std::uint64_t size, std::uint64_t position)
    {
        if (size > m_window.Size() - m_at)
            throw FormatError("a part of " + std::to_string(size) + " bytes where " +
                                  std::to_string(m_window.Size() - m_at) + " are left",
                              position);
        m_at += size;
    }

    void Name(std::uint64_t position)
    {
        const std::uint64_t size = Count();
        const std::uint64_t begin = m_at + CountSize;
        Skip(CountSize + size, position);
        const std::uint64_t most = size < MaxString ? size : MaxString;
        m_visitor.Word(m_window.Bytes(begin, static_cast<std::size_t>(most)));
    }

    void String(std::uint64_t position)
    {
        DirectXString string;
        const std::uint64_t size = Count();
        string.lengthAt = m_at;
        string.begin = m_at + CountSize;
        Skip(CountSize + size, position);
        string.end = m_at;
        if (size > MaxString)
            throw FormatError("a string of more than 64 KiB", position);
        string.raw = m_window.Bytes(string.begin, static_cast<std::size_t>(size));
        m_visitor.String(std::move(string));
    }

    FileWindow m_window;
    std::uint64_t m_at;
    std::size_t m_floatSize;
    DirectXVisitor& m_visitor;
};

} // namespace

void ReadDirectXBinary(const InputFile& file, std::uint64_t begin, std::size_t floatSize,
                       DirectXVisitor& visitor)
{
    Reader(file, begin, floatSize, visitor).Run();
}

} // namespace Halvern::Formats::Meshes
