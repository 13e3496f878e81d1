#include "tarn/import/import_scanning.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstring>
#include <fstream>
#include <iterator>

namespace tarn {
namespace {

bool IsWhiteSpaceAt(std::string_view text, std::size_t i, std::size_t& next) {
  const auto byte = static_cast<unsigned char>(text[i]);
  if (byte < 0x80) {
    next = i + 1;
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
  }
  UChar32 c;
  auto offset = static_cast<std::int32_t>(i);
  U8_NEXT(reinterpret_cast<const std::uint8_t*>(text.data()), offset,
          static_cast<std::int32_t>(text.size()), c);
  next = static_cast<std::size_t>(offset);
  return c >= 0 && u_isUWhiteSpace(c);
}

}  // namespace

std::string NormaliseImportLineEnds(std::string_view text) {
  std::string copy;
  copy.reserve(text.size() + 1);
  copy += '\r';
  copy.append(text);
  // Over [0, text.size()) of the copy: the final character stays as it is.
  char* p = copy.data();
  char* const end = copy.data() + text.size();
  while ((p = static_cast<char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p))))) {
    *p++ = '\r';
  }
  return copy;
}

void NormaliseImportLineEndsInPlace(std::string& text) {
  const std::size_t length = text.size();
  text.insert(text.begin(), '\r');
  // Over [0, length) of the result: the final character stays as it is.
  char* p = text.data();
  char* const end = text.data() + length;
  while ((p = static_cast<char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p))))) {
    *p++ = '\r';
  }
}

std::size_t CountOf(char byte, std::string_view text) {
  std::size_t count = 0;
  const char* at = text.data();
  const char* const end = text.data() + text.size();
  while (
      (at = static_cast<const char*>(std::memchr(at, byte, static_cast<std::size_t>(end - at))))) {
    ++count;
    ++at;
  }
  return count;
}

std::string_view TrimImportWhiteSpace(std::string_view text) {
  std::size_t start = 0, next = 0;
  while (start < text.size() && IsWhiteSpaceAt(text, start, next)) start = next;
  std::size_t end = text.size();
  while (end > start) {
    std::size_t last = end - 1;
    while (last > start && (static_cast<unsigned char>(text[last]) & 0xC0) == 0x80) --last;
    if (!IsWhiteSpaceAt(text, last, next) || next != end) break;
    end = last;
  }
  return text.substr(start, end - start);
}

void CSVLineFields(std::string_view line, std::vector<std::string_view>& fields,
                   std::string& scratch) {
  fields.clear();
  scratch.clear();
  // Built fields are never longer than the line: views into scratch stay put.
  scratch.reserve(line.size());
  std::size_t position = 0;
  for (;;) {
    const bool quoted = position < line.size() && line[position] == '"';
    std::string_view inQuotes;
    std::size_t builtFrom = std::string::npos;  // where this field starts in scratch
    if (quoted) {
      // Up to the closing quote, a doubled quote standing for one.
      std::size_t runStart = ++position;
      std::size_t contentEnd = line.size();
      for (;;) {
        const std::size_t quote = line.find('"', position);
        if (quote == std::string_view::npos) {
          position = line.size();
          break;
        }
        if (quote + 1 < line.size() && line[quote + 1] == '"') {
          if (builtFrom == std::string::npos) builtFrom = scratch.size();
          scratch.append(line.substr(runStart, quote + 1 - runStart));
          position = runStart = quote + 2;
          continue;
        }
        contentEnd = quote;
        position = quote + 1;
        break;
      }
      inQuotes = line.substr(runStart, contentEnd - runStart);
      if (builtFrom != std::string::npos) scratch.append(inQuotes);
    }
    // Unquoted text, or what follows a closing quote, runs to the next comma.
    const std::size_t comma = line.find(',', position);
    const std::size_t end = comma == std::string_view::npos ? line.size() : comma;
    const std::string_view rest = line.substr(position, end - position);
    if (!quoted) {
      fields.push_back(rest);
    } else if (builtFrom == std::string::npos && rest.empty()) {
      fields.push_back(inQuotes);
    } else {
      if (builtFrom == std::string::npos) {
        builtFrom = scratch.size();
        scratch.append(inQuotes);
      }
      scratch.append(rest);
      fields.push_back(std::string_view(scratch).substr(builtFrom));
    }
    if (comma == std::string_view::npos) break;
    position = comma + 1;
  }
}

std::optional<std::string> DecodeImportBytes(std::string_view bytes, StringEncoding encoding,
                                             StringEncoding* used) {
  const auto decoded = [&](StringEncoding tried) {
    std::optional<std::string> text = DecodeToUtf8(bytes, tried);
    if (text && used) *used = tried;
    return text;
  };
  if (auto text = decoded(encoding)) return text;
  const auto starts = [&](std::string_view mark) { return bytes.starts_with(mark); };
  if (starts("\xEF\xBB\xBF")) {
    if (auto text = decoded(kUTF8StringEncoding)) return text;
  } else if (starts("\xFF\xFE") || starts("\xFE\xFF")) {
    if (auto text = decoded(kUnicodeStringEncoding)) return text;
  }
  if (auto text = decoded(kUTF8StringEncoding)) return text;
  if (auto text = decoded(DefaultCStringEncoding())) return text;
  // Files from Windows programs are the usual 8-bit case; every byte of
  // Latin-1 is a character, so the last reading always succeeds.
  if (auto text = decoded(kWindowsCP1252StringEncoding)) return text;
  return decoded(kISOLatin1StringEncoding);
}

std::optional<std::string> ReadImportFileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) return std::nullopt;
  // One read of the whole size; a file that is no regular one (a pipe)
  // reports no size and is read to its end instead.
  const std::streamoff size = file.tellg();
  if (size > 0) {
    std::string bytes(static_cast<std::size_t>(size), '\0');
    file.seekg(0);
    if (!file.read(bytes.data(), size)) return std::nullopt;
    return bytes;
  }
  file.clear();
  file.seekg(0);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) return std::nullopt;
  return bytes;
}

std::optional<std::string> ReadImportFile(const std::string& path, StringEncoding encoding) {
  const std::optional<std::string> bytes = ReadImportFileBytes(path);
  if (!bytes) return std::nullopt;
  return DecodeImportBytes(*bytes, encoding, nullptr);
}

}  // namespace tarn
