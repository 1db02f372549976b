// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "isolation/Messages.h"

#include "syncplugin/SyncPlugin.h"

#include <QtCore/QLibrary>
#include <QtCore/QString>

#include <functional>
#include <memory>

namespace Halvern::Isolation {

/// How a call into the plug-in ended.
struct CallResult
{
    Outcome outcome = Outcome::Returned;
    QString text;
};

/// Runs what calls the plug-in; an exception that leaves it becomes the result.
CallResult CallPlugin(const std::function<CallResult()>& call);

/// The plug-in of this process.
class HostPlugin
{
public:
    /// The file's last part names the plug-in in messages.
    explicit HostPlugin(const QString& library) : m_library(library) {}

    /// Loads the library and checks what contract it was built for.
    CallResult Load();
    /// What the library says that it was built with; that of this program when it says nothing.
    std::uint64_t Stamp() const { return m_stamp; }
    // A new object, as the module asks for one before each call; null unless the result is
    // Returned.
    CallResult Create(std::unique_ptr<SyncPlugin::IFileLinkResolver>& resolver);
    CallResult Create(std::unique_ptr<SyncPlugin::IFileLayout>& layout);

private:
    template <class Factory, class Service>
    CallResult Create(const char* exportName, Service* (Factory::*create)(),
                      std::unique_ptr<Service>& service);
    CallResult CheckContract();
    QString Name() const;

    QLibrary m_library;
    std::uint64_t m_stamp = SyncPlugin::MakeContractStamp(SyncPlugin::OwnContractTerms);
};

} // namespace Halvern::Isolation
