// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "MeshDocument.h"

#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Meshes {

/// A string in a DirectX file.
struct DirectXString
{
    std::string raw;
    /// Its bytes, without quotation marks.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    /// Of the binary form: the number that says how long it is.
    std::optional<std::uint64_t> lengthAt;
};

/// Told what a DirectX file holds, whichever form it has.
class DirectXVisitor
{
public:
    virtual ~DirectXVisitor() = default;
    virtual void Word(std::string_view word) = 0;
    virtual void Open(std::uint64_t position) = 0;
    virtual void Close(std::uint64_t position) = 0;
    virtual void String(DirectXString string) = 0;
    /// What ends a word's meaning as a type.
    virtual void Separator() = 0;
};

/// Both throw FormatError. `begin` is what comes after the header.
void ReadDirectXText(const InputFile& file, std::uint64_t begin, DirectXVisitor& visitor);
void ReadDirectXBinary(const InputFile& file, std::uint64_t begin, std::size_t floatSize,
                       DirectXVisitor& visitor);

/// A mesh of DirectX (.x), as text or binary: pictures of materials and effects. Compressed ones
/// are refused; a file of another kind with the same extension has no names.
class DirectXDocument : public MeshDocument, private DirectXVisitor
{
public:
    explicit DirectXDocument(const std::filesystem::path& path);

protected:
    /// Programs write a backslash once or twice.
    std::string PathOf(std::string_view raw) const override;
    std::string Written(const NamedFile& old, const std::string& text) const override;

private:
    void Word(std::string_view word) override;
    void Open(std::uint64_t position) override;
    void Close(std::uint64_t position) override;
    void String(DirectXString string) override;
    void Separator() override { m_type.clear(); }

    struct Object
    {
        /// In lower case; empty for a list inside of an object.
        std::string type;
        std::size_t strings = 0;
    };

    std::string m_type;
    std::vector<Object> m_open;
};

} // namespace Halvern::Formats::Meshes
