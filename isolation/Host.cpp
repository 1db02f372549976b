// SPDX-License-Identifier: Apache-2.0

#include "isolation/Description.h"
#include "isolation/HostPlugin.h"
#include "isolation/RemoteMapping.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <cstdio>
#include <optional>

// corsync-plugin-host LIBRARY resolver|layout MEMORY: runs one plug-in for the process that started
// it.

namespace Halvern::Isolation {

namespace {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::IFileLayout;
using SyncPlugin::IFileLinkResolver;
using SyncPlugin::IPluginLogger;
using SyncPlugin::WideChar;

class Logger final : public IPluginLogger
{
public:
    explicit Logger(HostChannel& channel) : m_channel(channel) {}

    void LogFatal(const WideChar* message) override { Log(LogSeverity::Fatal, message); }
    void LogError(const WideChar* message) override { Log(LogSeverity::Error, message); }
    void LogWarn(const WideChar* message) override { Log(LogSeverity::Warn, message); }
    void LogInfo(const WideChar* message) override { Log(LogSeverity::Info, message); }
    void LogDebug(const WideChar* message) override { Log(LogSeverity::Debug, message); }
    void LogTrace(const WideChar* message) override { Log(LogSeverity::Trace, message); }

private:
    void Log(LogSeverity severity, const WideChar* message)
    {
        m_channel.Send((MessageWriter(Message::Log) << severity << ToText(message)).Bytes());
    }

    HostChannel& m_channel;
};

class Context : public SyncPlugin::IFileLinkResolverContext, public SyncPlugin::IFileLayoutContext
{
public:
    explicit Context(HostChannel& channel) : m_logger(channel) {}
    IPluginLogger* GetLogger() override { return &m_logger; }

private:
    Logger m_logger;
};

class Host
{
public:
    Host(HostChannel& channel, const QString& library)
        : m_channel(channel), m_plugin(library), m_context(channel)
    {}

    /// Whether the plug-in can be used, tried by making one object of it.
    void SayReady(ServiceKind kind)
    {
        CallResult result = m_plugin.Load();
        if (result.outcome == Outcome::Returned)
            result = kind == ServiceKind::Layout ? Try<IFileLayout>() : Try<IFileLinkResolver>();
        m_channel.Send((MessageWriter(Message::Ready)
                        << result.outcome << result.text << quint64(m_plugin.Stamp()))
                           .Bytes());
    }

    void Serve(MessageReader request)
    {
        switch (request.Kind()) {
        case Message::GetFileLinks:
            return GetFileLinks(request);
        case Message::RepathFileLinks:
            return RepathFileLinks(request);
        case Message::AssignTargetPaths:
            return AssignTargetPaths();
        case Message::MappingResult:
        case Message::Ready:
        case Message::Log:
        case Message::MappingCall:
        case Message::Done:
            return;
        }
    }

private:
    template <class Service>
    CallResult Try()
    {
        std::unique_ptr<Service> service;
        return m_plugin.Create(service);
    }

    template <class Service, class Call>
    CallResult With(Call call)
    {
        std::unique_ptr<Service> service;
        CallResult result = m_plugin.Create(service);
        if (result.outcome == Outcome::Returned)
            result = CallPlugin([&]() -> CallResult {
                call(*service);
                return {};
            });
        return result;
    }

    static MessageWriter Done(const CallResult& result)
    {
        // What the plug-in printed belongs to this call, and the process may be ended after it.
        std::fflush(stdout);
        MessageWriter done(Message::Done);
        done << result.outcome << result.text;
        return done;
    }

    void GetFileLinks(MessageReader& request)
    {
        const auto file = ToWide(request.Take<QString>());
        bool isRead = false;
        int count = 0;
        FileLinkInfo* links = nullptr;
        const CallResult result = With<IFileLinkResolver>([&](IFileLinkResolver& resolver) {
            isRead = resolver.GetFileLinks(file.c_str(), &links, &count, &m_context);
        });
        // Without true the array is nobody's.
        const std::unique_ptr<FileLinkInfo[]> owner(isRead ? links : nullptr);
        MessageWriter done = Done(result);
        done << isRead << count << (owner != nullptr) << PackLinks(owner.get(), count);
        m_channel.Send(done.Bytes());
    }

    void RepathFileLinks(MessageReader& request)
    {
        const auto file = ToWide(request.Take<QString>());
        const std::vector<FileLinkInfo> links = UnpackLinks(request.Take<QByteArray>());
        bool isDone = false;
        const CallResult result = With<IFileLinkResolver>([&](IFileLinkResolver& resolver) {
            isDone =
                resolver.RepathFileLinks(file.c_str(), links.data(), int(links.size()), &m_context);
        });
        m_channel.Send((Done(result) << isDone).Bytes());
    }

    void AssignTargetPaths()
    {
        RemoteMappings mappings(m_channel);
        bool isDone = false;
        const CallResult result = With<IFileLayout>([&](IFileLayout& layout) {
            isDone = layout.AssignTargetPaths(mappings.Mapping(RootMapping), &m_context);
        });
        m_channel.Send((Done(result) << isDone).Bytes());
    }

    HostChannel& m_channel;
    HostPlugin m_plugin;
    Context m_context;
};

int Run(const QStringList& arguments)
{
    const std::optional<ServiceKind> kind =
        arguments.size() == 4 ? ServiceKindOf(arguments[2]) : std::nullopt;
    const Streams streams = kind ? TakeStreams() : Streams{};
    if (!streams.requests || !streams.answers) {
        std::fputs("corsync-plugin-host is started by corsync, to run a plug-in apart from it.\n",
                   stderr);
        return 2;
    }
    IgnoreInterrupts();
    LimitMemory(arguments[3].toLongLong());
    HostChannel channel(streams);
    Host host(channel, arguments[1]);
    host.SayReady(*kind);
    while (true)
        host.Serve(channel.Receive());
}

} // namespace

} // namespace Halvern::Isolation

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    return Halvern::Isolation::Run(QCoreApplication::arguments());
}
