// Reading and writing property-list files, XML ("<plist>") and binary
// ("bplist00"). Writes replace the target atomically: a temporary file beside
// it is written in full, synced, then renamed over it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tarn/platform/error.h"
#include "tarn/platform/value.h"

namespace tarn::plist {

enum class Format { Xml, Binary };

// Containers nested deeper than this are refused by readers and writers alike,
// so that neither a hostile file nor a runaway value can exhaust the stack.
inline constexpr int kMaxNestingDepth = 512;

// Reads a file, detecting its format from its first bytes. Throws
// tarn::FileError naming the file and the reason when it is missing,
// unreadable, empty, truncated or malformed.
Value ReadFile(const std::string& path);
// Writes a value to a file atomically. Throws tarn::FileError on failure and
// leaves any existing target untouched. Nil values inside containers are
// skipped (a property list cannot hold them); a nil top-level value is refused.
void WriteFile(const std::string& path, const Value& value, Format format);
// Writes any bytes (an export's text, say) the same atomic way, with the
// same errors.
void WriteBytesAtomically(const std::string& path, std::string_view bytes);

// In-memory forms. Parse* throw tarn::FileError with the given name as path;
// To* throw it with the name "<memory>" for values they cannot store.
Value ParseXml(std::string_view bytes, const std::string& name = "<memory>");
Value ParseBinary(std::string_view bytes, const std::string& name = "<memory>");
Value Parse(std::string_view bytes, const std::string& name = "<memory>");
std::string ToXml(const Value& value);
// The XML form writes a date within this many seconds of 2001 and a date
// beyond it (millions of years away, found only in damaged files) at the
// nearest limit, so that every date can be saved in either format.
inline constexpr double kXmlDateLimitSeconds = 3e14;
std::string ToBinary(const Value& value);

// Parses XML held in a buffer the caller gives up: the text is decoded where
// it lies (no copy), so the buffer's contents are garbage afterwards.
Value ParseXmlInPlace(std::string& bytes, const std::string& name = "<memory>");

// Whether bytes start like a binary property list of any version ("bplist").
bool LooksBinary(std::string_view bytes);

}  // namespace tarn::plist
