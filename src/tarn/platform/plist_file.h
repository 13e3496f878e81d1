// Reading and writing property-list files, XML ("<plist>") and binary
// ("bplist00"). Writes replace the target atomically: a temporary file beside
// it is written in full, then renamed over it.
#pragma once

#include <string>
#include <string_view>

#include "tarn/platform/error.h"
#include "tarn/platform/value.h"

namespace tarn::plist {

enum class Format { Xml, Binary };

// Reads a file, detecting its format. Throws tarn::FileError naming the file
// and the reason when it is missing, unreadable, truncated or malformed.
Value ReadFile(const std::string& path);
// Writes a value to a file atomically. Throws tarn::FileError on failure and
// leaves any existing target untouched.
void WriteFile(const std::string& path, const Value& value, Format format);

// In-memory forms. Parse* throw tarn::FileError with the given name as path.
Value ParseXml(std::string_view bytes, const std::string& name = "<memory>");
Value ParseBinary(std::string_view bytes, const std::string& name = "<memory>");
Value Parse(std::string_view bytes, const std::string& name = "<memory>");
std::string ToXml(const Value& value);
std::string ToBinary(const Value& value);

}  // namespace tarn::plist
