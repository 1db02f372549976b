// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Halvern::FileLink {

/// Lets a host stop a job. The host implements it; the module only asks, and shares it with the
/// host for as long as an importer holds it.
class ICancelController
{
public:
    virtual ~ICancelController() = default;
    /// True once the user has asked to stop, and from then on. Called on the thread that runs the
    /// job, once before each file, link and folder; the host may set the answer from any thread.
    virtual bool IsCancelRequested() = 0;
};

} // namespace Halvern::FileLink
