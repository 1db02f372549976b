// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "plugins/Plugin.h"

#include "filelink/Problem.h"

#include <QtCore/QList>
#include <QtXml/QDomDocument>

namespace Halvern::FileLink {

/// A problem of the kind Registration. `module` may be empty.
Problem MakeRegistrationProblem(const QString& file, const QString& module, const QString& text);

/// What the document says that does not do what its author means, in the document's order. Whatever
/// else it holds beside its declaration is no problem. `isUsed`: a declaration in it was accepted,
/// wherever it stands.
QList<Problem> CheckRegistration(const QDomDocument& document, const QString& file, bool isUsed);

/// What is wrong with a list of file types as it is written, one sentence each.
QStringList CheckFileTypes(const QString& written, PluginType type);

} // namespace Halvern::FileLink
