// SPDX-License-Identifier: Apache-2.0

#include "IncludedImports.h"

#include "ScadText.h"

#include "KitNames.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <deque>
#include <set>

namespace Halvern::Formats::OpenScad {

namespace {

using std::filesystem::path;

class Walk
{
public:
    explicit Walk(const path& model) : m_model(model), m_folder(model.parent_path()) {}

    void AddFiles(const path& file, const path& unit, const std::vector<Reference>& references);
    std::vector<std::string> Run();

private:
    struct Visit
    {
        path file;
        /// The folder of the file that this one is part of: the model's or a used file's.
        path unit;

        auto operator<=>(const Visit&) const = default;
    };
    std::vector<Reference> ReferencesOf(const path& file);
    void Read(const Visit& visit);
    void TakeImport(const Visit& visit, const Reference& reference);

    path m_model;
    path m_folder;
    std::deque<Visit> m_open;
    std::set<Visit> m_seen;
    std::set<std::string> m_found;
    std::uint64_t m_bytes = 0;
};

void Walk::AddFiles(const path& file, const path& unit, const std::vector<Reference>& references)
{
    for (const Reference& reference : references) {
        const bool isUse = reference.kind == ReferenceKind::Use;
        if (!isUse && reference.kind != ReferenceKind::Include)
            continue;
        const std::string name = PathOf(reference, file.parent_path());
        if (!NamesExistingFile(name, file.parent_path()))
            continue;
        const path target = NormalPath(PathIn(file.parent_path(), name));
        // Fonts are used, too, and are no models.
        if (target.extension() != ".scad" && isUse)
            continue;
        Visit visit{target, isUse ? target.parent_path() : unit};
        if (m_seen.insert(visit).second)
            m_open.push_back(std::move(visit));
    }
    if (m_seen.size() > MaxIncludedFiles)
        throw FormatError("more than " + std::to_string(MaxIncludedFiles) + " files are included");
}

std::vector<Reference> Walk::ReferencesOf(const path& file)
{
    std::uint64_t size = 0;
    std::vector<Reference> references;
    try {
        const InputFile input(file);
        size = input.Size();
        if (size <= MaxIncludedBytes - m_bytes)
            references = FindReferences(input);
    } catch (const FormatError&) {
        return {};
    }
    if (size > MaxIncludedBytes - m_bytes)
        throw FormatError("the included files have more than " + std::to_string(MaxIncludedBytes) +
                          " bytes");
    m_bytes += size;
    return references;
}

void Walk::TakeImport(const Visit& visit, const Reference& reference)
{
    const std::string name = PathOf(reference, visit.unit);
    // What is absolute, or a used file's own, is found from that file.
    if (IsAbsolutePath(PathFromUtf8(name)) || name.find(':') != std::string::npos)
        return;
    if (visit.unit != m_folder && NamesExistingFile(name, visit.unit))
        return;
    if (NamesExistingFile(name, m_folder))
        m_found.insert(name);
}

void Walk::Read(const Visit& visit)
{
    const std::vector<Reference> references = ReferencesOf(visit.file);
    for (const Reference& reference : references) {
        if (reference.kind == ReferenceKind::Import)
            TakeImport(visit, reference);
    }
    AddFiles(visit.file, visit.unit, references);
}

std::vector<std::string> Walk::Run()
{
    while (!m_open.empty()) {
        const Visit visit = std::move(m_open.front());
        m_open.pop_front();
        if (visit.file != m_model)
            Read(visit);
    }
    return {m_found.begin(), m_found.end()};
}

} // namespace

std::vector<std::string> ImportsOfIncludedFiles(const path& given,
                                                const std::vector<Reference>& references)
{
    const path model = NormalPath(given);
    Walk walk(model);
    walk.AddFiles(model, model.parent_path(), references);
    return walk.Run();
}

} // namespace Halvern::Formats::OpenScad
