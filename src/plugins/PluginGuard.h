// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <exception>
#include <optional>

#ifdef CORSYNC_SANITIZED
#include <sanitizer/lsan_interface.h>
#endif

namespace Halvern::FileLink {

/// Runs a call into a plug-in. Nothing when an exception left it: `error` then holds the line to
/// log. Without an exception `error` stays as it is.
template <class Call>
auto CallPlugin(const QString& module, const char* function, Call call, QString& error)
    -> std::optional<decltype(call())>
{
    const auto describe = [&](const QString& what) {
        error = QStringLiteral("Plugin %1 threw an exception in %2: %3")
                    .arg(module, QString::fromLatin1(function), what);
    };
    try {
        return call();
    } catch (const std::exception& exception) {
        describe(QString::fromUtf8(exception.what()));
    } catch (...) {
        describe(QStringLiteral("unknown exception"));
    }
    return std::nullopt;
}

/// Says that a plug-in's object is left alive on purpose, so that leak checkers do not report it.
inline void MarkAbandoned([[maybe_unused]] const void* object)
{
#ifdef CORSYNC_SANITIZED
    if (object)
        __lsan_ignore_object(object);
#endif
}

} // namespace Halvern::FileLink
