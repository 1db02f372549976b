// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/Boundary.h"

#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <new>
#include <string>

namespace Halvern::PluginKit {

namespace {

using SyncPlugin::IFileLayoutContext;
using SyncPlugin::IFileLinkResolverContext;
using SyncPlugin::IFileMapping;
using SyncPlugin::IPluginLogger;
using SyncPlugin::WideChar;

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

/// Called while an exception is being handled. The parts that are asked for may throw as well.
template <typename Context, typename FileName>
void LogCurrentException(Context* context, std::string_view action, const FileName& fileName)
{
    const std::string reason = ReasonOfCurrentException();
    IPluginLogger* logger = context ? context->GetLogger() : nullptr;
    if (!logger)
        return;
    WideString message = ToUtf16Lossy("Failed to ");
    message += ToUtf16Lossy(action);
    message += WideChar(' ');
    message += fileName();
    message += ToUtf16Lossy(": ");
    message += ToUtf16Lossy(reason);
    logger->LogError(message.c_str());
}

template <typename Context, typename FileName>
bool Run(Context* context, std::string_view action, const FileName& fileName,
         const Work& work) noexcept
{
    try {
        work();
        return true;
    } catch (...) {
        try {
            LogCurrentException(context, action, fileName);
        } catch (...) {
            // No memory for the message, or a host without a logger: the result has to do.
        }
        return false;
    }
}

WideString SourceOf(IFileMapping* mapping)
{
    if (!mapping)
        return {};
    WideString source(mapping->GetSourceFile(nullptr, 0) + 1, WideChar(0));
    mapping->GetSourceFile(source.data(), static_cast<int>(source.size()));
    source.pop_back();
    return source;
}

} // namespace

bool RunGuarded(IFileLinkResolverContext* context, std::string_view action, const WideChar* file,
                Work work) noexcept
{
    return Run(
        context, action, [file] { return file ? WideString(file) : WideString(); }, work);
}

bool RunGuarded(IFileLayoutContext* context, std::string_view action, IFileMapping* mapping,
                Work work) noexcept
{
    return Run(
        context, action, [mapping] { return SourceOf(mapping); }, work);
}

} // namespace Halvern::PluginKit
