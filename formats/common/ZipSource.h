#pragma once

#include "InputFile.h"

struct zip;

namespace Halvern::Formats {

/// Opens the archive in `file` for reading, its records compared with each other. Throws
/// FormatError. The archive is closed with zip_discard, while the file lives.
zip* OpenZip(const InputFile& file);

} // namespace Halvern::Formats
