// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"

#include <QtCore/QByteArray>
#include <QtCore/QDataStream>
#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace Halvern::Isolation {

// What the library that stands for a plug-in (stub) and the program that runs the plug-in (host)
// say to each other: over the host's standard input and output, one message after the other, each a
// length of four bytes, most significant first, and that many bytes. The first of them is the kind,
// the rest are values as QDataStream writes them. Both ends come from one build: nothing here has
// to be read by another version.
//
// Neither end trusts the other: a plug-in may have spoilt its host.

enum class Message : std::uint8_t
{
    // From the stub.
    GetFileLinks = 1,
    RepathFileLinks,
    AssignTargetPaths,
    /// What came of a MappingCall.
    MappingResult,

    // From the host.
    /// The first message: whether the plug-in can be used.
    Ready = 64,
    /// Something for the log, at any time.
    Log,
    /// A layout asks for something about a mapping; the stub answers with MappingResult.
    MappingCall,
    /// The call has ended: its Outcome, and what came of it.
    Done,
};

/// How a call into the plug-in, or its creation, ended.
enum class Outcome : std::uint8_t
{
    /// It returned.
    Returned,
    /// An exception left it: its text, or that it is unknown.
    Threw,
    ThrewUnknown,
    /// The plug-in's factory answered null, to the first question or to the second.
    NoFactory,
    NoService,
    /// The library cannot be used: why.
    Unusable,
};

enum class LogSeverity : std::uint8_t
{
    Fatal,
    Error,
    Warn,
    Info,
    Debug,
    Trace,
};

/// The operations of a mapping, one value each.
enum class MappingOperation : std::uint8_t
{
    RefId,
    SourceFile,
    TargetFile,
    TargetPath,
    SetTargetFile,
    ResolveTargetPath,
    HasTargetFile,
    ExistsInTarget,
    TargetRootFolder,
    HasFlag,
    GetFlag,
    SetFlag,
    Children,
    Parent,
    Root,
    ChangeSourceFile,
};

enum class ServiceKind : std::uint8_t
{
    Resolver,
    Layout,
};

/// No mapping.
constexpr std::uint32_t NoMapping = 0xFFFF'FFFF;
/// The mapping that a layout is called with.
constexpr std::uint32_t RootMapping = 0;
/// The longest message: more than a million links.
constexpr std::uint32_t MaxMessage = std::uint32_t(1) << 31;
constexpr int LengthSize = 4;

/// A message that is being written.
class MessageWriter
{
public:
    explicit MessageWriter(Message kind) : m_bytes(LengthSize, '\0') { *this << kind; }
    template <class Value>
    MessageWriter& operator<<(const Value& value)
    {
        QDataStream stream(&m_bytes, QIODevice::Append);
        if constexpr (std::is_enum_v<Value>)
            stream << std::underlying_type_t<Value>(value);
        else
            stream << value;
        return *this;
    }
    /// The whole, with its length in front.
    QByteArray Bytes();

private:
    QByteArray m_bytes;
};

/// A message that has come, without its length. Reading past its end gives empty values and makes
/// it bad.
class MessageReader
{
public:
    explicit MessageReader(const QByteArray& bytes) : m_bytes(bytes) { m_kind = Take<Message>(); }
    Message Kind() const { return m_kind; }
    template <class Value>
    Value Take()
    {
        if constexpr (std::is_enum_v<Value>) {
            return Value(Take<std::underlying_type_t<Value>>());
        } else {
            Value value{};
            QDataStream stream(m_bytes);
            m_isGood = m_isGood && stream.skipRawData(m_at) == m_at;
            if (m_isGood)
                stream >> value;
            m_at = int(stream.device()->pos());
            m_isGood = m_isGood && stream.status() == QDataStream::Ok;
            return m_isGood ? value : Value{};
        }
    }
    bool IsGood() const { return m_isGood; }

private:
    QByteArray m_bytes;
    int m_at = 0;
    bool m_isGood = true;
    Message m_kind;
};

/// The length that stands in front of a message.
std::uint32_t LengthOf(const char (&bytes)[LengthSize]);

// Link records go as they are, byte for byte: what a plug-in did wrong in them is the module's to
// find.
QByteArray PackLinks(const SyncPlugin::FileLinkInfo* links, int count);
/// Empty when the bytes are no whole records.
std::vector<SyncPlugin::FileLinkInfo> UnpackLinks(const QByteArray& bytes);

QString ToText(const SyncPlugin::WideChar* text);
std::basic_string<SyncPlugin::WideChar> ToWide(const QString& text);

} // namespace Halvern::Isolation
