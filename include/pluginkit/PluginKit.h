// SPDX-License-Identifier: Apache-2.0

#pragma once

/// What plug-ins for Corsync are made from. An author writes one class, a Document: it reads a file
/// of the format, names its links, and rewrites them. The kit does the rest:
///
///     class MyDocument : public Document { ... };
///
///     PLUGINKIT_EXPORT_RESOLVER(DocumentResolverFor<MyDocument>);
///
/// | header              | for                                                                   |
/// |---------------------|-----------------------------------------------------------------------|
/// | Document.h          | the class to write                                                    |
/// | DocumentResolver.h  | the resolver made of it                                               |
/// | Exports.h           | what the library exports                                              |
/// | FormatError.h       | how anything says that it failed                                      |
/// | InputFile.h         | a file open for reading; FileScanner.h goes through it byte by byte   |
/// | ReplacementFile.h   | the new content in the file's place, in one step                      |
/// | FileEdits.h         | the same, from a list of changed places; TextEdits.h for text         |
/// | FilePaths.h, Utf.h  | paths and text, as files and the host have them                       |
/// | LinkPaths.h         | what is at the path of a link, and whether two are the same           |
/// | FileUri.h           | links that are written as URIs; PercentCoding.h for parts of them     |
/// | Xml.h               | XML with the places of what it holds        (Corsync::PluginKitXml)   |
/// | ZipArchive.h        | entries of ZIP archives                     (Corsync::PluginKitZip)   |
/// | Compression.h       | gzip and zstd               (Corsync::PluginKitCompression)           |
/// | Boundary.h          | for who implements the contract without a Document: nothing thrown    |
/// | LinkArray.h         | likewise: link records, to and from text                              |
///
/// Text is UTF-8 in std::string, offsets and sizes are bytes. What fails throws FormatError, or
/// where a header says so std::invalid_argument for a mistake of the caller; std::bad_alloc may
/// come from anywhere, and DocumentResolver lets none of them out. Nothing here is global: objects
/// of different threads do not know of each other, and functions may be called from any thread.
///
/// The kit is linked statically, so that plug-ins of different versions of it live together.

#include "pluginkit/Boundary.h"
#include "pluginkit/Compression.h"
#include "pluginkit/Document.h"
#include "pluginkit/DocumentResolver.h"
#include "pluginkit/EncodedText.h"
#include "pluginkit/Exports.h"
#include "pluginkit/FileEdits.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FileScanner.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/InputFile.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/PercentCoding.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/TextEdits.h"
#include "pluginkit/Utf.h"
#include "pluginkit/Xml.h"
#include "pluginkit/ZipArchive.h"
