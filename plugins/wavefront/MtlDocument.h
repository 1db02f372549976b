// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "NamingDocument.h"

namespace Halvern::Formats::Wavefront {

/// A material library (.mtl) with its pictures. They are found from the library's own folder.
class MtlDocument : public NamingDocument
{
public:
    explicit MtlDocument(const std::filesystem::path& path);

protected:
    std::vector<NameSpan> SpansOf(const NamingStatement& statement) const override;
    /// A name that begins like an option or one more number gets "./" before it.
    std::string Written(const NamingStatement& statement, const std::string& path) const override;
};

} // namespace Halvern::Formats::Wavefront
