// SPDX-License-Identifier: Apache-2.0

#include "isolation/StubServices.h"

#include "isolation/MappingServer.h"

#include <algorithm>
#include <stdexcept>

namespace Halvern::Isolation {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::IFileLayoutContext;
using SyncPlugin::IFileLinkResolverContext;
using SyncPlugin::IFileMapping;
using SyncPlugin::IPluginLogger;
using SyncPlugin::WideChar;

namespace {

/// What an exception is that is no std::exception.
struct UnknownException
{};

void Write(IPluginLogger& logger, LogSeverity severity, const QString& text)
{
    const auto wide = ToWide(text);
    switch (severity) {
    case LogSeverity::Fatal:
        return logger.LogFatal(wide.c_str());
    case LogSeverity::Error:
        return logger.LogError(wide.c_str());
    case LogSeverity::Warn:
        return logger.LogWarn(wide.c_str());
    case LogSeverity::Info:
        return logger.LogInfo(wide.c_str());
    case LogSeverity::Debug:
        return logger.LogDebug(wide.c_str());
    case LogSeverity::Trace:
        return logger.LogTrace(wide.c_str());
    }
}

template <class Context>
HostProcess::Log LogOf(Context* context)
{
    IPluginLogger* const logger = context ? context->GetLogger() : nullptr;
    return [logger](LogSeverity severity, const QString& text) {
        if (logger)
            Write(*logger, severity, text);
    };
}

/// Runs a call; what happens to its process is told as the plug-in's own failure.
template <class Call>
bool Guarded(const HostProcess::Log& log, Call call)
{
    try {
        return call();
    } catch (const HostFailure& failure) {
        log(LogSeverity::Error, QStringLiteral("The plug-in ") + failure.Text());
        return false;
    }
}

/// The outcome of a call, thrown when it is an exception. True when the plug-in returned.
bool Returned(MessageReader& done)
{
    const auto outcome = done.Take<Outcome>();
    const auto text = done.Take<QString>();
    if (outcome == Outcome::Returned)
        return true;
    ThrowAgain(outcome, text);
    throw HostFailure(text.isEmpty() ? QStringLiteral("made no object this time") : text);
}

} // namespace

void ThrowAgain(Outcome outcome, const QString& text)
{
    if (outcome == Outcome::Threw)
        throw std::runtime_error(text.toStdString());
    if (outcome == Outcome::ThrewUnknown)
        throw UnknownException();
}

bool StubResolver::GetFileLinks(const WideChar* file, FileLinkInfo** links, int* count,
                                IFileLinkResolverContext* context)
{
    const HostProcess::Log log = LogOf(context);
    return Guarded(log, [&] {
        MessageWriter request(Message::GetFileLinks);
        MessageReader done = m_host.Call((request << ToText(file)).Bytes(), log, {});
        if (!Returned(done) || !done.Take<bool>())
            return false;
        *count = done.Take<int>();
        const bool hasArray = done.Take<bool>();
        const std::vector<FileLinkInfo> records = UnpackLinks(done.Take<QByteArray>());
        if (*count > 0 && hasArray && records.size() != std::size_t(*count))
            throw HostFailure(QStringLiteral("said what cannot be understood"));
        *links = nullptr;
        if (!hasArray)
            return true;
        *links = new FileLinkInfo[std::max<std::size_t>(records.size(), 1)];
        std::copy(records.begin(), records.end(), *links);
        return true;
    });
}

bool StubResolver::RepathFileLinks(const WideChar* file, const FileLinkInfo* links, int count,
                                   IFileLinkResolverContext* context)
{
    const HostProcess::Log log = LogOf(context);
    return Guarded(log, [&] {
        MessageWriter request(Message::RepathFileLinks);
        request << ToText(file) << PackLinks(links, count);
        MessageReader done = m_host.Call(request.Bytes(), log, {});
        return Returned(done) && done.Take<bool>();
    });
}

bool StubLayout::AssignTargetPaths(IFileMapping* mapping, IFileLayoutContext* context)
{
    const HostProcess::Log log = LogOf(context);
    return Guarded(log, [&] {
        MappingServer mappings(mapping);
        MessageWriter request(Message::AssignTargetPaths);
        MessageReader done = m_host.Call(
            request.Bytes(), log, [&](MessageReader& call) { return mappings.Answer(call); });
        return Returned(done) && done.Take<bool>();
    });
}

} // namespace Halvern::Isolation
