// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/FileEdits.h"

#include "pluginkit/ReplacementFile.h"

#include <algorithm>
#include <stdexcept>

namespace Halvern::PluginKit {

namespace {

void RequireApart(const std::vector<FileEdit>& edits, std::uint64_t fileSize)
{
    std::uint64_t done = 0;
    for (const FileEdit& edit : edits) {
        if (edit.begin < done || edit.end < edit.begin || edit.end > fileSize)
            throw std::invalid_argument("edits overlap or lie outside the file");
        done = edit.end;
    }
}

} // namespace

void ReplaceSpans(InputFile& file, std::vector<FileEdit> edits)
{
    std::stable_sort(edits.begin(), edits.end(),
                     [](const FileEdit& a, const FileEdit& b) { return a.begin < b.begin; });
    RequireApart(edits, file.Size());
    ReplacementFile replacement(file);
    std::uint64_t done = 0;
    for (const FileEdit& edit : edits) {
        replacement.CopyFromSource(done, edit.begin - done);
        replacement.Write(edit.replacement);
        done = edit.end;
    }
    replacement.CopyFromSource(done, file.Size() - done);
    replacement.Commit();
}

} // namespace Halvern::PluginKit
