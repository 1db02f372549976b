// SPDX-License-Identifier: Apache-2.0

// A host of the job library: imports files with everything they link, and tells what it does.
//
//     import_files CLOUD_FOLDER DATABASE FOLDER_BELOW FILE...
//
// Plug-ins are found beside the program. Ends with 0 when all is well, with 1 otherwise.

#include "corsync/ImportJob.h"

#include <QtCore/QCoreApplication>

#include <cstdio>

using namespace Halvern::Jobs;

void Print(const QString& line)
{
    std::puts(line.toUtf8().constData());
}

struct Teller : IJobObserver
{
    void FileDone(const FileResult& result) override
    {
        Print(result.linksRewritten ? result.target + ": links rewritten"
                                    : result.source + " -> " + result.target);
    }
    void ProblemFound(const Halvern::FileLink::Problem& problem) override
    {
        Print(problem.file + ": " + problem.text);
    }
};

int Import(const QStringList& arguments)
{
    const Session session(ResolveSettings({{}, arguments[0], arguments[1]}, SessionUse::Import));
    ImportRequest request;
    request.target = arguments[2];
    request.sources = arguments.mid(3);
    Teller teller;
    ImportJob job(session, request, &teller);
    for (const Conflict& conflict : job.MakePlan().conflicts)
        Print(conflict.target + " is taken; nothing is copied");
    const Summary summary = job.Execute().summary;
    return summary.executed && summary.filesWithProblems == 0 ? 0 : 1;
}

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    try {
        return arguments.size() < 4 ? 2 : Import(arguments);
    } catch (const JobError& error) {
        Print(error.Text());
        return 1;
    }
}
