// SPDX-License-Identifier: Apache-2.0

#include "plugins/PluginContract.h"

#include "plugins/PluginGuard.h"
#include "syncplugin/ContractVersion.h"

#include <QtCore/QLibrary>
#include <QtCore/QStringList>

namespace Halvern::FileLink {

using SyncPlugin::ContractTerms;
using SyncPlugin::ContractVersion;
using SyncPlugin::MakeContractStamp;
using SyncPlugin::ObjectLayout;
using SyncPlugin::OwnContractTerms;
using SyncPlugin::RuntimeLibrary;

namespace {

constexpr char VersionExport[] = "GetSyncPluginContractVersion";

constexpr std::uint64_t OwnStamp = MakeContractStamp(OwnContractTerms);

ContractTerms TermsOf(std::uint64_t stamp)
{
    return {std::uint16_t(stamp >> 32), std::uint16_t(stamp >> 16), std::uint8_t(stamp >> 8),
            RuntimeLibrary(stamp >> 4 & 0xF), ObjectLayout(stamp & 0xF)};
}

QString LayoutName(ObjectLayout layout)
{
    switch (layout) {
    case ObjectLayout::Itanium:
        return QStringLiteral("objects laid out as by GCC");
    case ObjectLayout::Microsoft:
        return QStringLiteral("objects laid out as by Visual C++");
    }
    return QStringLiteral("object layout %1").arg(int(layout));
}

QString RuntimeName(RuntimeLibrary runtime)
{
    switch (runtime) {
    case RuntimeLibrary::LibStdCpp:
        return QStringLiteral("libstdc++");
    case RuntimeLibrary::LibCpp:
        return QStringLiteral("libc++");
    case RuntimeLibrary::Microsoft:
        return QStringLiteral("the runtime of Visual C++");
    case RuntimeLibrary::LibStdCppOnUcrt:
        return QStringLiteral("libstdc++ on the universal C runtime");
    case RuntimeLibrary::LibCppOnUcrt:
        return QStringLiteral("libc++ on the universal C runtime");
    }
    return QStringLiteral("runtime library %1").arg(int(runtime));
}

/// The version, and of the rest what is not as in `other`: "1 (link records of 1044 bytes)".
QString Describe(const ContractTerms& terms, const ContractTerms& other)
{
    QStringList details;
    if (terms.recordSize != other.recordSize)
        details.append(QStringLiteral("link records of %1 bytes").arg(terms.recordSize));
    if (terms.characterSize != other.characterSize)
        details.append(QStringLiteral("characters of %1 bytes").arg(terms.characterSize));
    if (terms.layout != other.layout)
        details.append(LayoutName(terms.layout));
    if (terms.runtime != other.runtime)
        details.append(RuntimeName(terms.runtime));
    const QString version = QString::number(terms.version);
    return details.isEmpty() ? version : QStringLiteral("%1 (%2)").arg(version, details.join(", "));
}

QString Mismatch(const QString& module, const QString& wanted, const QString& own)
{
    return QStringLiteral("Plugin %1 wants contract version %2, this program has version %3")
        .arg(module, wanted, own);
}

QString CheckStamp(const QString& module, std::uint64_t stamp)
{
    if (stamp == OwnStamp)
        return {};
    if (stamp >> 48 != SyncPlugin::ContractStampMark)
        return QStringLiteral("Plugin %1 returned 0x%2 in %3, which is no contract version; this "
                              "program has version %4")
            .arg(module, QString::number(stamp, 16), QString::fromLatin1(VersionExport),
                 QString::number(ContractVersion));
    const ContractTerms wanted = TermsOf(stamp);
    return Mismatch(module, Describe(wanted, OwnContractTerms), Describe(OwnContractTerms, wanted));
}

/// That of a library which follows the first version to the letter: it exports its factories only.
std::uint64_t UnstatedStamp()
{
    ContractTerms terms = OwnContractTerms;
    terms.version = 1;
    return MakeContractStamp(terms);
}

} // namespace

QString CheckRegisteredContract(const QString& module, const QString& version)
{
    const QString wanted = version.isEmpty() ? QStringLiteral("1") : version;
    if (wanted.toUInt() == ContractVersion)
        return {};
    return Mismatch(module, wanted, QString::number(ContractVersion));
}

QString CheckLibraryContract(const QString& module, QLibrary& library)
{
    using Function = std::uint64_t (*)();
    const auto function = reinterpret_cast<Function>(library.resolve(VersionExport));
    if (!function)
        return CheckStamp(module, UnstatedStamp());
    QString error;
    const auto stamp = CallPlugin(module, VersionExport, function, error);
    return stamp ? CheckStamp(module, *stamp) : error;
}

} // namespace Halvern::FileLink
