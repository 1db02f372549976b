// SPDX-License-Identifier: Apache-2.0

// What a library throws while it is loaded is a fault of that plug-in and of no other.

#include "PluginsFixture.h"

#include "plugins/LinkRecords.h"

#ifdef CORSYNC_SANITIZED
#include <sanitizer/lsan_interface.h>
#endif

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncPlugin::FileLinkInfo;

class PluginLoading : public PluginsFixture
{
protected:
    bool Read(const QString& file)
    {
#ifdef CORSYNC_SANITIZED
        // Qt's loader gives back nothing that it holds while a library throws.
        const __lsan::ScopedDisabler disabler;
#endif
        tree.File(file, "x");
        QList<FileLinkInfo> links;
        FileLinkResolverContext context(
            CallProblems(nullptr, Stage::ExtractFileLinks, tree.Path(file)));
        return manager.GetFileLinks(tree.Path(file), links, &context);
    }
};

} // namespace

TEST_F(PluginLoading, WhatALibraryThrowsIsTheFaultOfThatPluginAtEveryRequest)
{
    const QString module = ZooModule(u"ThrowingInitialization"_s);
    RegisterResolver(module, u"res"_s);
    RegisterResolver(ZooModule(u"WellBehaved"_s), u"good"_s);
    for (const QString& file : {u"a.res"_s, u"b.res"_s}) {
        EXPECT_FALSE(Read(file));
        EXPECT_EQ(Find(module).GetErrors(),
                  QStringList{u"Plugin %1 threw an exception in its initialization: a fault of the "
                              "zoo"_s.arg(module)});
        EXPECT_FALSE(Find(module).IsLoaded());
    }
    EXPECT_TRUE(Read(u"a.good"_s));
}
