// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/Boundary.h"

#include "pluginkit/FormatError.h"

#include <new>
#include <string>

namespace Halvern::PluginKit {

namespace {

using SyncPlugin::IFileLinkResolverContext;
using SyncPlugin::IPluginLogger;
using SyncPlugin::WideChar;

void Log(IPluginLogger* logger, std::string_view action, const WideChar* file,
         std::string_view reason) noexcept
{
    try {
        if (!logger)
            return;
        WideString message = ToUtf16Lossy("Failed to ");
        message += ToUtf16Lossy(action);
        message += WideChar(' ');
        message += file ? WideView(file) : WideView();
        message += ToUtf16Lossy(": ");
        message += ToUtf16Lossy(reason);
        logger->LogError(message.c_str());
    } catch (...) {
        // No memory for the message either; the false result has to do.
    }
}

/// The reason with its position. Called while an exception is being handled.
std::string ReasonOfCurrentException()
{
    try {
        throw;
    } catch (const FormatError& error) {
        std::string reason = error.what();
        if (error.Position())
            reason += " (byte " + std::to_string(*error.Position()) + ")";
        return reason;
    } catch (const std::bad_alloc&) {
        return "out of memory";
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "unknown error";
    }
}

} // namespace

bool RunGuarded(IFileLinkResolverContext* context, std::string_view action, const WideChar* file,
                const std::function<void()>& work) noexcept
{
    IPluginLogger* logger = nullptr;
    try {
        logger = context ? context->GetLogger() : nullptr;
    } catch (...) {
        // A host without a logger: the result has to do.
    }
    return RunLogged(logger, action, file, work);
}

bool RunLogged(IPluginLogger* logger, std::string_view action, const WideChar* file,
               const std::function<void()>& work) noexcept
{
    try {
        work();
        return true;
    } catch (...) {
        try {
            Log(logger, action, file, ReasonOfCurrentException());
        } catch (...) {
            Log(logger, action, file, {});
        }
        return false;
    }
}

} // namespace Halvern::PluginKit
