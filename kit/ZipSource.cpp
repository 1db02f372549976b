// SPDX-License-Identifier: Apache-2.0

#include "kit/ZipSource.h"

#include "pluginkit/FormatError.h"

#include <zip.h>

#include <algorithm>
#include <memory>

namespace Halvern::PluginKit {

namespace {

/// Gives libzip the bytes of a file that is open already.
class Source
{
public:
    explicit Source(const InputFile& file) : m_file(file) { zip_error_init(&m_error); }
    ~Source() { zip_error_fini(&m_error); }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    zip_int64_t Command(void* data, zip_uint64_t size, zip_source_cmd_t command);

private:
    zip_int64_t Read(char* buffer, zip_uint64_t size);
    zip_int64_t Seek(void* data, zip_uint64_t size);
    zip_int64_t State(void* data);

    const InputFile& m_file;
    std::uint64_t m_position = 0;
    zip_error_t m_error;
};

zip_int64_t Source::Read(char* buffer, zip_uint64_t size)
{
    const std::uint64_t part = std::min(size, m_file.Size() - m_position);
    try {
        m_file.ReadAt(m_position, buffer, static_cast<std::size_t>(part));
    } catch (const std::exception&) { // none must pass through a library in C
        zip_error_set(&m_error, ZIP_ER_READ, 0);
        return -1;
    }
    m_position += part;
    return static_cast<zip_int64_t>(part);
}

zip_int64_t Source::Seek(void* data, zip_uint64_t size)
{
    const zip_int64_t position =
        zip_source_seek_compute_offset(m_position, m_file.Size(), data, size, &m_error);
    if (position < 0)
        return -1;
    m_position = static_cast<std::uint64_t>(position);
    return 0;
}

zip_int64_t Source::State(void* data)
{
    auto* state = static_cast<zip_stat_t*>(data);
    zip_stat_init(state);
    state->size = m_file.Size();
    state->valid = ZIP_STAT_SIZE;
    return sizeof(*state);
}

zip_int64_t Source::Command(void* data, zip_uint64_t size, zip_source_cmd_t command)
{
    if (command == ZIP_SOURCE_OPEN) {
        m_position = 0;
        return 0;
    }
    if (command == ZIP_SOURCE_READ)
        return Read(static_cast<char*>(data), size);
    if (command == ZIP_SOURCE_SEEK)
        return Seek(data, size);
    if (command == ZIP_SOURCE_TELL)
        return static_cast<zip_int64_t>(m_position);
    if (command == ZIP_SOURCE_STAT)
        return State(data);
    if (command == ZIP_SOURCE_ERROR)
        return zip_error_to_data(&m_error, data, size);
    if (command == ZIP_SOURCE_SUPPORTS)
        return zip_source_make_command_bitmap(
            ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR,
            ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, ZIP_SOURCE_SUPPORTS, -1);
    if (command == ZIP_SOURCE_CLOSE)
        return 0;
    zip_error_set(&m_error, ZIP_ER_OPNOTSUPP, 0);
    return -1;
}

zip_int64_t Dispatch(void* source, void* data, zip_uint64_t size, zip_source_cmd_t command)
{
    if (command != ZIP_SOURCE_FREE)
        return static_cast<Source*>(source)->Command(data, size, command);
    delete static_cast<Source*>(source);
    return 0;
}

struct ErrorText
{
    zip_error_t error;
    ErrorText() { zip_error_init(&error); }
    ~ErrorText() { zip_error_fini(&error); }
    [[noreturn]] void Throw()
    {
        throw FormatError(std::string("the ZIP archive is damaged: ") + zip_error_strerror(&error));
    }
};

} // namespace

zip* OpenZip(const InputFile& file)
{
    ErrorText error;
    auto bytes = std::make_unique<Source>(file);
    zip_source_t* source = zip_source_function_create(Dispatch, bytes.get(), &error.error);
    if (!source)
        error.Throw();
    static_cast<void>(bytes.release()); // the source owns it now
    zip* archive = zip_open_from_source(source, ZIP_RDONLY, &error.error);
    if (!archive) {
        zip_source_free(source);
        error.Throw();
    }
    return archive;
}

} // namespace Halvern::PluginKit
