// Scanning helpers that the importers share: the line-end normalisation of a
// file's text, a forward search that never covers the same text twice, white
// space trimming and the reading of a file in a stored encoding. Internal to
// the import module.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/platform/encodings.h"

namespace tarn {

// A carriage return in front, then every line feed turned into a carriage
// return, except a line feed that is the very last character of the text
// (the replacement runs over the length of the original text, one short of
// the copy). Every line, the first included, then follows a carriage return.
std::string NormaliseImportLineEnds(std::string_view text);
// The same, in the text's own storage: a file's text is not copied.
void NormaliseImportLineEndsInPlace(std::string& text);

// How many times a byte occurs in a text (records by their carets, lines by
// their carriage returns), to reserve an array once.
std::size_t CountOf(char byte, std::string_view text);

// White space (Unicode White_Space, line ends included) trimmed at both ends.
std::string_view TrimImportWhiteSpace(std::string_view text);

// The next occurrence of a needle at or after a position. As long as the
// positions asked never go back, every byte is searched at most once, however
// many times the same stretch is asked about.
class ForwardFinder {
 public:
  ForwardFinder(std::string_view text, std::string_view needle) : text_(text), needle_(needle) {}

  // The position of the occurrence, or the text's size when there is none.
  std::size_t next(std::size_t from) {
    if (!(searched_ && from >= from_ && from <= found_)) {
      const std::size_t found = text_.find(needle_, from);
      found_ = found == std::string_view::npos ? text_.size() : found;
      from_ = from;
      searched_ = true;
    }
    return found_;
  }

 private:
  std::string_view text_;
  std::string_view needle_;
  std::size_t from_ = 0;
  std::size_t found_ = 0;
  bool searched_ = false;
};

// The fields of one comma-separated line, as CSVLineComponents splits it
// (double quotes around a field, a doubled quote inside standing for one,
// text after a closing quote kept up to the next comma), as views: into the
// line where a field is a stretch of it, else into `scratch`, which the call
// reserves for the whole line so that its views stay valid until the next
// call with it.
void CSVLineFields(std::string_view line, std::vector<std::string_view>& fields,
                   std::string& scratch);

// The text of a file decoded from an encoding; when the bytes are not valid in
// it, decoded as the bytes suggest: a byte-order mark, else UTF-8 when valid,
// else the system's 8-bit encoding, else Windows 1252, else Latin-1. nullopt
// when the file cannot be read.
std::optional<std::string> ReadImportFile(const std::string& path, StringEncoding encoding);
// The same steps on bytes already read; `used` (when given) receives the
// encoding that decoded them.
std::optional<std::string> DecodeImportBytes(std::string_view bytes, StringEncoding encoding,
                                             StringEncoding* used);
// A file's bytes; nullopt when it cannot be read.
std::optional<std::string> ReadImportFileBytes(const std::string& path);

}  // namespace tarn
