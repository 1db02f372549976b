// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/FileScanner.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Halvern::Formats::Dxf {

/// A group code with its value.
struct Tag
{
    int code = 0;
    /// Of texts and, in text files, of everything else: the bytes as they stand there.
    std::string text;
    /// The bytes of the value.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    /// `text` is only its first MaxTagText bytes.
    bool isCut = false;

    /// Of whole numbers; nothing when it is none.
    std::optional<long> Number() const;
    /// The text without blanks around it, as keywords are compared.
    std::string_view Word() const;
};

inline constexpr std::size_t MaxTagText = 4096;

/// Goes through a drawing tag by tag. Throws a FormatError, with its place, where there is none.
class TagReader
{
public:
    virtual ~TagReader() = default;
    /// False at the end of the file.
    virtual bool Next(Tag& tag) = 0;
};

/// For either form of a drawing. The file must live as long.
std::unique_ptr<TagReader> TagsOf(const InputFile& file);

/// Of a drawing as text: a line with the group code, a line with the value.
class AsciiTags : public TagReader
{
public:
    explicit AsciiTags(const InputFile& file);
    bool Next(Tag& tag) override;

private:
    int ReadCode();
    void SkipBlanks();
    void EndLine();

    FileScanner m_scanner;
};

/// Of a binary drawing: the codes tell of which type the values are.
class BinaryTags : public TagReader
{
public:
    explicit BinaryTags(const InputFile& file);
    bool Next(Tag& tag) override;

    static bool Begins(const InputFile& file);

private:
    unsigned ReadByte();
    int ReadInt16();
    int ReadCode();
    void ReadText(Tag& tag);
    void Skip(std::uint64_t size);

    FileScanner m_scanner;
    std::uint64_t m_size;
    /// Up to release 12 most codes are single bytes.
    bool m_hasShortCodes;
};

} // namespace Halvern::Formats::Dxf
