// SPDX-License-Identifier: Apache-2.0

#include "Options.h"

#include "FileTree.h"

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Qt::StringLiterals;
using Halvern::Jobs::CollisionPolicy;
using Halvern::Jobs::ConflictAnswer;

namespace {

ParsedCommandLine Parse(QStringList arguments)
{
    arguments.prepend(u"corsync"_s);
    return ParseCommandLine(arguments);
}

ImportOptions ParseImport(const QStringList& arguments)
{
    const ParsedCommandLine parsed = Parse(QStringList{u"import"_s} + arguments);
    EXPECT_TRUE(parsed.options) << parsed.error.toStdString();
    return parsed.options ? std::get<ImportOptions>(parsed.options->command) : ImportOptions();
}

} // namespace

TEST(CommandLine, AnImportWithoutOptionsStopsAtCollisionsAndFollowsEveryType)
{
    const ImportOptions options = ParseImport({u"a.gltf"_s, u"b c.gltf"_s});
    EXPECT_EQ(options.request.sources, (QStringList{u"a.gltf"_s, u"b c.gltf"_s}));
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
    const ImportOptions options =
        ParseImport({u"--move"_s, u"--to"_s, u"Demo"_s, u"a.gltf"_s, u"--types"_s, u"gltf, .glb"_s,
                     u"b.gltf"_s, u"--links-only"_s, u"--direct-links-only"_s, u"-n"_s});
    EXPECT_EQ(options.request.sources, (QStringList{u"a.gltf"_s, u"b.gltf"_s}));
    EXPECT_EQ(options.request.fileTypes, (QStringList{u"gltf"_s, u".glb"_s}));
    EXPECT_EQ(options.request.target, u"Demo"_s);
    EXPECT_TRUE(options.request.move && options.request.linksOnly &&
                options.request.directLinksOnly && options.dryRun);
}

TEST(CommandLine, AListOfTypesThatNamesNoneIsAllTypesAndTakesNoOtherArgument)
{
    for (const QString& list : {u","_s, u" , "_s, QString()}) {
        const ImportOptions options =
            ParseImport({u"--types"_s, list, u"a.gltf"_s, u"--to"_s, u"Demo"_s});
        EXPECT_TRUE(options.request.fileTypes.isEmpty()) << list.toStdString();
        EXPECT_EQ(options.request.sources, QStringList{u"a.gltf"_s});
        EXPECT_EQ(options.request.target, u"Demo"_s);
    }
}

TEST(CommandLine, AnOwnCollisionPolicyOutranksTheCommonOneInAnyOrder)
{
    for (const QStringList& arguments :
         {QStringList{u"a"_s, u"--collisions"_s, u"rename"_s, u"--linked-collisions"_s, u"keep"_s},
          QStringList{u"a"_s, u"--linked-collisions"_s, u"keep"_s, u"--collisions"_s,
                      u"rename"_s}}) {
        const ImportOptions options = ParseImport(arguments);
        EXPECT_EQ(options.request.selectedCollisions, CollisionPolicy::Rename);
        EXPECT_EQ(options.request.linkedCollisions, CollisionPolicy::Keep);
    }
}

TEST(CommandLine, ARepeatedPluginPathTakesOneFolderEachAndNoSources)
{
    const ParsedCommandLine parsed =
        Parse({u"import"_s, u"--plugin-path"_s, u"p"_s, u"--plugin-path"_s, u"q"_s, u"a"_s});
    ASSERT_TRUE(parsed.options);
    EXPECT_EQ(parsed.options->common.pluginPaths, (QStringList{u"p"_s, u"q"_s}));
    EXPECT_EQ(std::get<ImportOptions>(parsed.options->command).request.sources,
              QStringList{u"a"_s});
}

TEST(CommandLine, PatternsAndFoldersAreRepeatedAndTakenAsTheyAre)
{
    const ImportOptions options =
        ParseImport({u"--exclude"_s, u"[ab]*.bak"_s, u"--exclude"_s, u"!keep,this"_s, u"a"_s,
                     u"--within"_s, u"p"_s, u"--within"_s, u"q"_s, u"b"_s});
    EXPECT_EQ(options.request.exclude, (QStringList{u"[ab]*.bak"_s, u"!keep,this"_s}));
    EXPECT_EQ(options.request.within, (QStringList{u"p"_s, u"q"_s}));
    EXPECT_EQ(options.request.sources, (QStringList{u"a"_s, u"b"_s}));
    EXPECT_EQ(ParseImport({u"--exclude"_s, u"[ab]"_s, u"a"_s}).request.exclude,
              QStringList{u"[ab]"_s});
}

TEST(CommandLine, WhatIsDoneAgainAndWhatComesAlongIsAskedForByFlags)
{
    const auto request = ParseImport({u"a"_s}).request;
    EXPECT_FALSE(request.checksum || request.force || request.reread || request.selfContained ||
                 request.prune);
    EXPECT_TRUE(ParseImport({u"a"_s, u"--checksum"_s}).request.checksum);
    EXPECT_TRUE(ParseImport({u"a"_s, u"--force"_s}).request.force);
    EXPECT_TRUE(ParseImport({u"a"_s, u"--reread"_s}).request.reread);
    EXPECT_TRUE(ParseImport({u"a"_s, u"--self-contained"_s}).request.selfContained);
    EXPECT_TRUE(ParseImport({u"a"_s, u"--prune"_s}).request.prune);
    EXPECT_TRUE(request.flush);
    EXPECT_FALSE(ParseImport({u"a"_s, u"--no-flush"_s}).request.flush);
}

TEST(CommandLine, AConflictIsSettledAsToldOrAskedAbout)
{
    struct Row
    {
        QString name;
        ConflictAnswer answer;
        bool asks;
    };
    EXPECT_EQ(ParseImport({u"a"_s}).request.onConflict, ConflictAnswer::Stop);
    EXPECT_FALSE(ParseImport({u"a"_s}).asks);
    for (const Row& row :
         {Row{u"stop"_s, ConflictAnswer::Stop, false}, Row{u"keep"_s, ConflictAnswer::Keep, false},
          Row{u"replace"_s, ConflictAnswer::Replace, false},
          Row{u"rename"_s, ConflictAnswer::Rename, false},
          Row{u"ask"_s, ConflictAnswer::Stop, true}}) {
        const ImportOptions options = ParseImport({u"a"_s, u"--on-conflict"_s, row.name});
        EXPECT_EQ(options.request.onConflict, row.answer) << row.name.toStdString();
        EXPECT_EQ(options.asks, row.asks) << row.name.toStdString();
    }
}

TEST(CommandLine, ARetryTakesOneFolderOrNone)
{
    const auto folderOf = [](const QStringList& arguments) {
        const ParsedCommandLine parsed = Parse(arguments);
        EXPECT_TRUE(parsed.options) << parsed.error.toStdString();
        return parsed.options ? std::get<RetryOptions>(parsed.options->command).folder : u"?"_s;
    };
    EXPECT_EQ(folderOf({u"retry"_s}), QString());
    EXPECT_EQ(folderOf({u"retry"_s, u"--cloud-folder"_s, u"c"_s, u"Demo"_s}), u"Demo"_s);
    EXPECT_EQ(Parse({u"retry"_s, u"a"_s, u"b"_s}).exitCode, ExitCode::Usage);
}

TEST(CommandLine, VerbosityCountsAndLogLevelsAreNamed)
{
    const ParsedCommandLine parsed = Parse(
        {u"links"_s, u"-vv"_s, u"--log-file"_s, u"l"_s, u"--log-level"_s, u"debug"_s, u"a"_s});
    ASSERT_TRUE(parsed.options);
    EXPECT_EQ(parsed.options->common.log.verbosity, 2);
    EXPECT_EQ(parsed.options->common.log.fileLevel, 10000);
    EXPECT_EQ(parsed.options->common.log.file, u"l"_s);
}

TEST(CommandLine, AFileWhoseNameBeginsWithADashComesAfterTwoDashes)
{
    EXPECT_EQ(ParseImport({u"--"_s, u"-a.gltf"_s}).request.sources, QStringList{u"-a.gltf"_s});
}

TEST(CommandLine, PluginsAreLoadedUnlessToldOtherwise)
{
    EXPECT_TRUE(std::get<PluginsOptions>(Parse({u"plugins"_s}).options->command).load);
    EXPECT_FALSE(
        std::get<PluginsOptions>(Parse({u"plugins"_s, u"--no-load"_s}).options->command).load);
}

TEST(CommandLine, HelpAndVersionGoToStandardOutputAndAreNoFailure)
{
    for (const QStringList& arguments :
         {QStringList{u"--help"_s}, QStringList{u"import"_s, u"--help"_s},
          QStringList{u"links"_s, u"-h"_s}, QStringList{u"plugins"_s, u"-h"_s},
          QStringList{u"retry"_s, u"-h"_s}, QStringList{u"--version"_s}}) {
        const ParsedCommandLine parsed = Parse(arguments);
        EXPECT_FALSE(parsed.options);
        EXPECT_EQ(parsed.exitCode, ExitCode::Complete);
        EXPECT_FALSE(parsed.output.isEmpty());
        EXPECT_TRUE(parsed.error.isEmpty());
    }
    EXPECT_TRUE(Parse({u"import"_s, u"--help"_s}).output.contains(u"--linked-collisions"_s));
    EXPECT_TRUE(Parse({u"--help"_s}).output.contains(u"Examples:"_s));
}

TEST(CommandLine, AWrongOptionGivesTwoLinesThatNameIt)
{
    struct Row
    {
        QStringList arguments;
        QString named;
    };
    const QList<Row> rows = {
        {{u"import"_s, u"a"_s, u"--nope"_s}, u"--nope"_s},
        {{u"import"_s, u"a"_s, u"--collisions"_s, u"burn"_s}, u"burn"_s},
        {{u"import"_s, u"a"_s, u"--progress"_s, u"maybe"_s}, u"maybe"_s},
        {{u"import"_s, u"a"_s, u"--on-conflict"_s, u"guess"_s}, u"guess"_s},
        {{u"import"_s, u"a"_s, u"--\x1b[31m\nb"_s}, u"--\\x1b[31m\\x0ab"_s},
        {{u"import"_s, u"a"_s, u"--to"_s}, u"--to"_s},
        {{u"import"_s}, u"SOURCE"_s},
        {{u"links"_s}, u"FILE"_s},
        {{u"bogus"_s}, u"bogus"_s},
        {{}, u"command"_s},
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

TEST(CommandLine, AUsageErrorListsTheChoicesInTheOrderOfTheHelp)
{
    const auto errorOf = [](const QString& option) {
        return Parse({u"import"_s, u"a"_s, option, u"wrong"_s}).error;
    };
    EXPECT_TRUE(errorOf(u"--collisions"_s).contains(u"{stop,keep,rename,replace}"_s));
    EXPECT_TRUE(errorOf(u"--on-conflict"_s).contains(u"{stop,keep,replace,rename,ask}"_s));
    EXPECT_TRUE(errorOf(u"--progress"_s).contains(u"{auto,always,never}"_s));
    EXPECT_TRUE(errorOf(u"--log-level"_s).contains(u"{error,warn,info,debug,trace}"_s));
}
