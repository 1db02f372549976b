// SPDX-License-Identifier: Apache-2.0

#include "ExternalFiles.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace Halvern::Formats::Step {

namespace {

bool NamesFiles(std::string_view keyword)
{
    return keyword == "APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT" || keyword == "DOCUMENT_FILE" ||
           keyword == "EXTERNAL_SOURCE";
}

/// Statements refer to others before and after them: everything is collected, then joined.
class Collector
{
public:
    void Take(const Statement& statement);
    std::vector<ExternalFile> Join();

private:
    struct Assignment
    {
        std::uint64_t instance;
        StepString name;
        std::vector<std::uint64_t> referred;
    };
    using Names = std::unordered_map<std::uint64_t, StepString>;

    void AddAlone(std::vector<ExternalFile>& files) const;
    static void Put(Names& names, const Statement& statement);

    std::vector<Assignment> m_assignments;
    Names m_documents;
    Names m_sources;
    std::vector<std::uint64_t> m_documentOrder;
    std::set<std::uint64_t> m_seen;
};

void Collector::Put(Names& names, const Statement& statement)
{
    const StepString* name = statement.FirstString();
    names.emplace(statement.instance, name ? *name : StepString());
}

void Collector::Take(const Statement& statement)
{
    if (!m_seen.insert(statement.instance).second)
        throw FormatError("#" + std::to_string(statement.instance) + " is defined twice",
                          statement.position);
    if (m_seen.size() > 3 * MaxExternalFiles)
        throw FormatError("the file names too many files", statement.position);
    if (statement.keyword == "DOCUMENT_FILE") {
        Put(m_documents, statement);
        m_documentOrder.push_back(statement.instance);
    } else if (statement.keyword == "EXTERNAL_SOURCE") {
        Put(m_sources, statement);
    } else {
        Assignment assignment{statement.instance, {}, {}};
        if (const StepString* name = statement.FirstString())
            assignment.name = *name;
        for (const Parameter& parameter : statement.parameters) {
            if (parameter.kind == Parameter::Instance)
                assignment.referred.push_back(parameter.instance);
        }
        m_assignments.push_back(std::move(assignment));
    }
}

std::vector<ExternalFile> Collector::Join()
{
    std::vector<ExternalFile> files;
    for (Assignment& assignment : m_assignments) {
        ExternalFile file;
        file.instance = assignment.instance;
        file.assigned = std::move(assignment.name);
        for (const std::uint64_t instance : assignment.referred) {
            if (const auto source = m_sources.find(instance); source != m_sources.end())
                file.source = source->second;
            // One that belongs to an assignment does not stand alone, nor to a second one.
            if (auto document = m_documents.extract(instance))
                file.document = std::move(document.mapped());
        }
        files.push_back(std::move(file));
    }
    AddAlone(files);
    return files;
}

void Collector::AddAlone(std::vector<ExternalFile>& files) const
{
    for (const std::uint64_t instance : m_documentOrder) {
        const auto document = m_documents.find(instance);
        if (document == m_documents.end())
            continue;
        ExternalFile file;
        file.instance = instance;
        file.document = document->second;
        files.push_back(std::move(file));
    }
}

} // namespace

std::vector<ExternalFile> FindExternalFiles(const InputFile& file)
{
    StepScanner scanner(file, NamesFiles);
    Collector collector;
    Statement statement;
    while (scanner.Next(statement))
        collector.Take(statement);
    return collector.Join();
}

} // namespace Halvern::Formats::Step
