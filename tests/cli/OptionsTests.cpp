// SPDX-License-Identifier: Apache-2.0

#include "Options.h"

#include "FileTree.h"

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using Halvern::Jobs::CollisionPolicy;

namespace {

ParsedCommandLine Parse(QStringList arguments)
{
    arguments.prepend(u"corsync"_qs);
    return ParseCommandLine(arguments);
}

ImportOptions ParseImport(const QStringList& arguments)
{
    const ParsedCommandLine parsed = Parse(QStringList{u"import"_qs} + arguments);
    EXPECT_TRUE(parsed.options) << parsed.error.toStdString();
    return parsed.options ? std::get<ImportOptions>(parsed.options->command) : ImportOptions();
}

} // namespace

TEST(CommandLine, AnImportWithoutOptionsStopsAtCollisionsAndFollowsEveryType)
{
    const ImportOptions options = ParseImport({u"a.gltf"_qs, u"b c.gltf"_qs});
    EXPECT_EQ(options.request.sources, (QStringList{u"a.gltf"_qs, u"b c.gltf"_qs}));
    EXPECT_EQ(options.request.selectedCollisions, CollisionPolicy::Stop);
    EXPECT_EQ(options.request.linkedCollisions, CollisionPolicy::Stop);
    EXPECT_TRUE(options.request.fileTypes.isEmpty());
    EXPECT_TRUE(options.request.target.isEmpty());
    EXPECT_EQ(options.progress, ProgressMode::Auto);
    EXPECT_FALSE(options.request.move || options.request.linksOnly ||
                 options.request.directLinksOnly || options.dryRun);
}

TEST(CommandLine, OptionsMayStandBeforeAndAfterTheSources)
{
    const ImportOptions options = ParseImport(
        {u"--move"_qs, u"--to"_qs, u"Demo"_qs, u"a.gltf"_qs, u"--types"_qs, u"gltf, .glb"_qs,
         u"b.gltf"_qs, u"--links-only"_qs, u"--direct-links-only"_qs, u"-n"_qs});
    EXPECT_EQ(options.request.sources, (QStringList{u"a.gltf"_qs, u"b.gltf"_qs}));
    EXPECT_EQ(options.request.fileTypes, (QStringList{u"gltf"_qs, u".glb"_qs}));
    EXPECT_EQ(options.request.target, u"Demo"_qs);
    EXPECT_TRUE(options.request.move && options.request.linksOnly &&
                options.request.directLinksOnly && options.dryRun);
}

TEST(CommandLine, AnOwnCollisionPolicyOutranksTheCommonOneInAnyOrder)
{
    for (const QStringList& arguments : {QStringList{u"a"_qs, u"--collisions"_qs, u"rename"_qs,
                                                     u"--linked-collisions"_qs, u"keep"_qs},
                                         QStringList{u"a"_qs, u"--linked-collisions"_qs, u"keep"_qs,
                                                     u"--collisions"_qs, u"rename"_qs}}) {
        const ImportOptions options = ParseImport(arguments);
        EXPECT_EQ(options.request.selectedCollisions, CollisionPolicy::Rename);
        EXPECT_EQ(options.request.linkedCollisions, CollisionPolicy::Keep);
    }
}

TEST(CommandLine, ARepeatedPluginPathTakesOneFolderEachAndNoSources)
{
    const ParsedCommandLine parsed =
        Parse({u"import"_qs, u"--plugin-path"_qs, u"p"_qs, u"--plugin-path"_qs, u"q"_qs, u"a"_qs});
    ASSERT_TRUE(parsed.options);
    EXPECT_EQ(parsed.options->common.pluginPaths, (QStringList{u"p"_qs, u"q"_qs}));
    EXPECT_EQ(std::get<ImportOptions>(parsed.options->command).request.sources,
              QStringList{u"a"_qs});
}

TEST(CommandLine, VerbosityCountsAndLogLevelsAreNamed)
{
    const ParsedCommandLine parsed = Parse({u"links"_qs, u"-vv"_qs, u"--log-file"_qs, u"l"_qs,
                                            u"--log-level"_qs, u"debug"_qs, u"a"_qs});
    ASSERT_TRUE(parsed.options);
    EXPECT_EQ(parsed.options->common.log.verbosity, 2);
    EXPECT_EQ(parsed.options->common.log.fileLevel, 10000);
    EXPECT_EQ(parsed.options->common.log.file, u"l"_qs);
}

TEST(CommandLine, AFileWhoseNameBeginsWithADashComesAfterTwoDashes)
{
    EXPECT_EQ(ParseImport({u"--"_qs, u"-a.gltf"_qs}).request.sources, QStringList{u"-a.gltf"_qs});
}

TEST(CommandLine, PluginsAreLoadedUnlessToldOtherwise)
{
    EXPECT_TRUE(std::get<PluginsOptions>(Parse({u"plugins"_qs}).options->command).load);
    EXPECT_FALSE(
        std::get<PluginsOptions>(Parse({u"plugins"_qs, u"--no-load"_qs}).options->command).load);
}

TEST(CommandLine, HelpAndVersionGoToStandardOutputAndAreNoFailure)
{
    for (const QStringList& arguments :
         {QStringList{u"--help"_qs}, QStringList{u"import"_qs, u"--help"_qs},
          QStringList{u"links"_qs, u"-h"_qs}, QStringList{u"plugins"_qs, u"-h"_qs},
          QStringList{u"--version"_qs}}) {
        const ParsedCommandLine parsed = Parse(arguments);
        EXPECT_FALSE(parsed.options);
        EXPECT_EQ(parsed.exitCode, ExitCode::Complete);
        EXPECT_FALSE(parsed.output.isEmpty());
        EXPECT_TRUE(parsed.error.isEmpty());
    }
    EXPECT_TRUE(Parse({u"import"_qs, u"--help"_qs}).output.contains(u"--linked-collisions"_qs));
    EXPECT_TRUE(Parse({u"--help"_qs}).output.contains(u"Examples:"_qs));
}

TEST(CommandLine, AWrongOptionGivesTwoLinesThatNameIt)
{
    struct Row
    {
        QStringList arguments;
        QString named;
    };
    const QList<Row> rows = {
        {{u"import"_qs, u"a"_qs, u"--nope"_qs}, u"--nope"_qs},
        {{u"import"_qs, u"a"_qs, u"--collisions"_qs, u"burn"_qs}, u"burn"_qs},
        {{u"import"_qs, u"a"_qs, u"--progress"_qs, u"maybe"_qs}, u"maybe"_qs},
        {{u"import"_qs, u"a"_qs, u"--to"_qs}, u"--to"_qs},
        {{u"import"_qs}, u"SOURCE"_qs},
        {{u"links"_qs}, u"FILE"_qs},
        {{u"bogus"_qs}, u"bogus"_qs},
        {{}, u"command"_qs},
    };
    for (const Row& row : rows) {
        const ParsedCommandLine parsed = Parse(row.arguments);
        EXPECT_FALSE(parsed.options) << row.named.toStdString();
        EXPECT_EQ(parsed.exitCode, ExitCode::Usage);
        EXPECT_TRUE(parsed.output.isEmpty());
        EXPECT_TRUE(parsed.error.contains(row.named)) << parsed.error.toStdString();
        EXPECT_EQ(parsed.error.count(u'\n'), 2) << parsed.error.toStdString();
    }
}
