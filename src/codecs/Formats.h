// The formats that are written.
#pragma once
#include "codecs/Writing.h"

namespace pixkit {

// The bytes of a file in the format of the options. Icon files are made of all the pictures, others of the first.
WrittenFile write(std::span<const SourcePicture> pictures, const WriteOptions& options);

} // namespace pixkit
