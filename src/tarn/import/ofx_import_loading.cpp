// Loading an OFX file: the encoding, the SGML-to-XML steps of OFX 1, and the
// XML tree.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <vector>

#include "tarn/import/ofx_import.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/text.h"

namespace tarn {
namespace {

bool isWhiteSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isWhiteSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isWhiteSpace(text.back())) text.remove_suffix(1);
  return text;
}

bool isWhiteSpaceOnly(std::string_view text) {
  return trimmed(text).empty();
}

bool startsWithCaseInsensitive(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i) {
    char c = text[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != prefix[i]) return false;
  }
  return true;
}

// "<?xml " anywhere, letters in any case. The walk goes from "?" to "?",
// which is rare in OFX text, rather than over every "<".
bool containsXmlDeclaration(std::string_view text) {
  for (std::size_t at = text.find('?', 1); at != std::string_view::npos;
       at = text.find('?', at + 1)) {
    if (text[at - 1] == '<' && startsWithCaseInsensitive(text.substr(at + 1), "xml ")) return true;
  }
  return false;
}

// The first `needle` in `text` at or after `from`. Boyer-Moore-Horspool
// steps over most of the text a needle's length at a time, where a search
// for the needle's first letter would stop at every "<".
std::size_t findText(std::string_view text, std::string_view needle, std::size_t from) {
  if (from > text.size()) return std::string_view::npos;
  const auto found = std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(),
                                 std::boyer_moore_horspool_searcher(needle.begin(), needle.end()));
  return found == text.end() ? std::string_view::npos
                             : static_cast<std::size_t>(found - text.begin());
}

constexpr std::string_view kKnownEntities[] = {"amp", "lt", "gt", "quot", "apos"};

// The known entity named by the text after an ampersand (up to its ";"),
// letter case ignored; empty when there is none.
std::string_view knownEntityAfterAmpersand(std::string_view rest) {
  const std::size_t semicolon = rest.substr(0, 5).find(';');
  if (semicolon == std::string_view::npos) return {};
  const std::string_view name = rest.substr(0, semicolon);
  for (std::string_view known : kKnownEntities) {
    if (name.size() == known.size() && startsWithCaseInsensitive(name, known)) return known;
  }
  return {};
}

// The length of a character reference ("#38;", "#x26;") after an ampersand; 0
// when there is none.
std::size_t characterReferenceLength(std::string_view rest) {
  if (rest.empty() || rest.front() != '#') return 0;
  const bool hex = rest.size() > 1 && (rest[1] == 'x');
  std::size_t i = hex ? 2 : 1;
  const std::size_t first = i;
  while (i < rest.size() && i < first + 8 &&
         ((rest[i] >= '0' && rest[i] <= '9') ||
          (hex && ((rest[i] >= 'a' && rest[i] <= 'f') || (rest[i] >= 'A' && rest[i] <= 'F'))))) {
    ++i;
  }
  if (i == first || i >= rest.size() || rest[i] != ';') return 0;
  return i + 1;
}

// The value after "KEY:" in an OFX 1 header: optional white space, then up
// to the next white space.
std::optional<std::string_view> headerValue(std::string_view header, std::string_view key) {
  const std::size_t at = header.find(key);
  if (at == std::string_view::npos) return std::nullopt;
  std::string_view rest = header.substr(at + key.size());
  while (!rest.empty() && isWhiteSpace(rest.front())) rest.remove_prefix(1);
  std::size_t end = 0;
  while (end < rest.size() && !isWhiteSpace(rest[end])) ++end;
  return rest.substr(0, end);
}

// A leading integer as the platform's string reading gives it: white space
// skipped, an optional sign, digits; 0 without digits.
std::uint32_t leadingCodePage(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && isWhiteSpace(text[i])) ++i;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) return 0;
  std::uint64_t value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9' && value < 0xFFFFFFFFu; ++i) {
    value = value * 10 + static_cast<std::uint64_t>(text[i] - '0');
  }
  return value > 0xFFFFFFFFu ? 0 : static_cast<std::uint32_t>(value);
}

// The encoding an OFX 1 header asks for.
StringEncoding headerEncoding(std::string_view header) {
  const std::optional<std::string_view> encoding = headerValue(header, "ENCODING:");
  if (encoding && CaseInsensitiveEqual(*encoding, "UTF-8")) return kUTF8StringEncoding;
  if (encoding && CaseInsensitiveEqual(*encoding, "UNICODE")) return kUnicodeStringEncoding;
  const std::optional<std::string_view> charset = headerValue(header, "CHARSET:");
  if (!encoding || !charset) return kWindowsCP1252StringEncoding;
  if (CaseInsensitiveEqual(*charset, "ISO-8859-1") || CaseInsensitiveEqual(*charset, "NONE")) {
    return kISOLatin1StringEncoding;
  }
  return EncodingForWindowsCodePage(leadingCodePage(*charset))
      .value_or(kWindowsCP1252StringEncoding);
}

// Whether ASCII text reads the same in the encoding (so that decoding and
// encoding it again can be skipped).
bool isAsciiCompatible(StringEncoding encoding) {
  switch (encoding) {
    case kUnicodeStringEncoding:
    case kUTF16BigEndianStringEncoding:
    case kUTF16LittleEndianStringEncoding:
    case kUTF32StringEncoding:
    case kUTF32BigEndianStringEncoding:
    case kUTF32LittleEndianStringEncoding:
    case kISO2022JPStringEncoding:
    case kNonLossyASCIIStringEncoding:
    case kSymbolStringEncoding:
      return false;
    default:
      return true;
  }
}

// The bytes in UTF-8; ASCII in an encoding that reads it as ASCII is taken
// over as it is.
std::optional<std::string> decode(std::string& bytes, StringEncoding encoding, bool isAscii) {
  if (isAscii && isAsciiCompatible(encoding)) return std::move(bytes);
  return DecodeToUtf8(bytes, encoding);
}

std::shared_ptr<TARNOFXImport> failed(OFXLoadError* error, OFXLoadFailure failure, bool tolerant,
                                      std::string detail = {}, std::size_t offset = 0) {
  if (error) *error = {failure, std::move(detail), offset, tolerant};
  return nullptr;
}

}  // namespace

std::string OFXLoadError::description() const {
  switch (failure) {
    case OFXLoadFailure::None:
      return "The file was read.";
    case OFXLoadFailure::Unreadable:
      return "The file could not be read" + (detail.empty() ? "." : ": " + detail + ".");
    case OFXLoadFailure::TooShort:
      return "The file is too short to be an OFX file.";
    case OFXLoadFailure::NoOFXStart:
      return "The file holds no <OFX> element.";
    case OFXLoadFailure::NoOFXEnd:
      return "The file's <OFX> element has no end (</OFX>).";
    case OFXLoadFailure::EmptyOFX:
      return "The file's <OFX> element is empty.";
    case OFXLoadFailure::Undecodable:
      return "The file's text is not valid " + (detail.empty() ? "in its encoding" : detail) + ".";
    case OFXLoadFailure::XMLRejected:
      return "The file's XML was rejected at byte " + std::to_string(offset) + ": " + detail + ".";
  }
  return {};
}

std::shared_ptr<TARNOFXImport> TARNOFXImport::initWithContentsOfFile(const std::string& path) {
  return initWithContentsOfFile(path, OFXLoadOptions{}, nullptr);
}

std::shared_ptr<TARNOFXImport> TARNOFXImport::initWithContentsOfFile(const std::string& path,
                                                                     const OFXLoadOptions& options,
                                                                     OFXLoadError* error) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return failed(error, OFXLoadFailure::Unreadable, options.tolerant, path);
  file.seekg(0, std::ios::end);
  const std::streamoff size = file.tellg();
  if (size < 0) return failed(error, OFXLoadFailure::Unreadable, options.tolerant, path);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  file.seekg(0, std::ios::beg);
  if (!file.read(bytes.data(), size)) {
    return failed(error, OFXLoadFailure::Unreadable, options.tolerant, path);
  }
  return loadFromBytes(std::move(bytes), options, error);
}

std::shared_ptr<TARNOFXImport> TARNOFXImport::loadFromBytes(std::string bytes,
                                                            const OFXLoadOptions& options,
                                                            OFXLoadError* error) {
  const bool tolerant = options.tolerant;
  if (error) *error = {};
  if (bytes.size() < 8) return failed(error, OFXLoadFailure::TooShort, tolerant);

  // A first reading, enough to tell the two forms apart and to find the
  // OFX 1 header: UTF-16 after its byte-order mark, else the bytes as UTF-8
  // (the markers looked for are ASCII, so no byte need be valid).
  const bool utf16 =
      (bytes[0] == '\xFE' && bytes[1] == '\xFF') || (bytes[0] == '\xFF' && bytes[1] == '\xFE');
  std::optional<std::string> firstText;
  if (utf16) {
    firstText = DecodeToUtf8(bytes, kUnicodeStringEncoding);
    if (!firstText) return failed(error, OFXLoadFailure::Undecodable, tolerant, "UTF-16");
  }
  const std::string_view first = utf16 ? std::string_view(*firstText) : std::string_view(bytes);

  XMLParseError xmlError;
  if (containsXmlDeclaration(first)) {
    // The tolerant reading gives a rejected OFX 2 file a second chance as
    // OFX 1: some banks put an XML declaration over SGML without end tags.
    std::unique_ptr<OFXXMLTree> tree =
        OFXXMLTree::Parse(tolerant ? bytes : std::move(bytes), tolerant, &xmlError);
    if (tree) {
      auto importer = std::make_shared<TARNOFXImport>();
      importer->setXMLTree(std::move(tree));
      importer->tolerant_ = tolerant;
      return importer;
    }
    if (!tolerant) {
      return failed(error, OFXLoadFailure::XMLRejected, tolerant, xmlError.reason, xmlError.offset);
    }
  }

  const std::size_t start = first.find("<OFX>");
  if (start == std::string_view::npos) return failed(error, OFXLoadFailure::NoOFXStart, tolerant);
  StringEncoding encoding = headerEncoding(first.substr(0, start));
  firstText.reset();

  const bool isAscii = IsAscii(bytes);
  // The tolerant reading believes the bytes over the header when they are
  // UTF-8 holding more than ASCII.
  if (tolerant && !isAscii && InvalidUtf8Offset(bytes) == std::string::npos) {
    encoding = kUTF8StringEncoding;
  }
  std::optional<std::string> text = decode(bytes, encoding, isAscii);
  // It also falls back to Windows-1252, which reads every byte, when the
  // header names an encoding the bytes are not in.
  if (!text && tolerant && encoding != kWindowsCP1252StringEncoding) {
    encoding = kWindowsCP1252StringEncoding;
    text = decode(bytes, encoding, isAscii);
  }
  if (!text) {
    return failed(error, OFXLoadFailure::Undecodable, tolerant, NameOfStringEncoding(encoding));
  }
  bytes = std::string();

  const std::size_t begin = text->find("<OFX>");
  if (begin == std::string::npos) return failed(error, OFXLoadFailure::NoOFXStart, tolerant);
  const std::size_t end = findText(*text, "</OFX>", begin + 5);
  if (end == std::string::npos) return failed(error, OFXLoadFailure::NoOFXEnd, tolerant);
  if (end == begin + 5) return failed(error, OFXLoadFailure::EmptyOFX, tolerant);
  const std::string_view body = std::string_view(*text).substr(begin, end + 6 - begin);

  std::string withEndTags = addMissingEndTagsToElementsInString(body);
  text.reset();
  std::string escaped;
  if (withEndTags.find('&') == std::string::npos) {
    escaped = std::move(withEndTags);  // both walks copy such text unchanged
  } else {
    if (tolerant) {
      escaped = escapeAmpersandsTolerantly(withEndTags);
      withEndTags = std::string();
    } else {
      escapePhysicalEntitiesInPlace(withEndTags);
      escaped = std::move(withEndTags);
    }
  }

  // The faithful reading hands the XML parser the text in the header's
  // encoding, which it reads as UTF-8 (or UTF-16, after a byte-order mark);
  // the tolerant reading hands it the text as decoded.
  if (!tolerant) {
    std::optional<std::string> encoded = isAscii && isAsciiCompatible(encoding)
                                             ? std::optional<std::string>(std::move(escaped))
                                             : EncodeFromUtf8(escaped, encoding);
    if (!encoded) {
      return failed(error, OFXLoadFailure::Undecodable, tolerant, NameOfStringEncoding(encoding));
    }
    escaped = std::move(*encoded);
  }
  std::unique_ptr<OFXXMLTree> tree = OFXXMLTree::Parse(std::move(escaped), false, &xmlError);
  if (!tree) {
    return failed(error, OFXLoadFailure::XMLRejected, tolerant, xmlError.reason, xmlError.offset);
  }
  auto importer = std::make_shared<TARNOFXImport>();
  importer->setXMLTree(std::move(tree));
  importer->tolerant_ = tolerant;
  return importer;
}

namespace {

// The first `c` in [from, end), or end. Tags and values are short, so an
// inline search beats a library call per search; it looks at eight bytes at a
// time, a byte equal to `c` showing as a zero byte of the word XOR `c`s.
const char* findByte(const char* from, const char* end, char c) {
  if constexpr (std::endian::native == std::endian::little) {
    constexpr std::uint64_t kOnes = 0x0101010101010101ull;
    constexpr std::uint64_t kHighBits = 0x8080808080808080ull;
    const std::uint64_t pattern = kOnes * static_cast<unsigned char>(c);
    while (end - from >= 8) {
      std::uint64_t word;
      std::memcpy(&word, from, 8);
      word ^= pattern;
      // The lowest marked byte is the first zero byte (borrows only mark
      // bytes above a zero one).
      const std::uint64_t zeros = (word - kOnes) & ~word & kHighBits;
      if (zeros != 0) return from + (std::countr_zero(zeros) >> 3);
      from += 8;
    }
  }
  while (from < end && *from != c) ++from;
  return from;
}

// Output written through a cursor into a string sized ahead, instead of one
// append per piece; the string is cut to what was written at the end.
class CursorOutput {
 public:
  explicit CursorOutput(std::size_t expected) {
    text_.resize(expected);
    cursor_ = text_.data();
    end_ = cursor_ + text_.size();
  }
  void reserveMore(std::size_t count) {
    if (static_cast<std::size_t>(end_ - cursor_) >= count) return;
    const std::size_t written = static_cast<std::size_t>(cursor_ - text_.data());
    text_.resize(std::max(text_.size() * 2, written + count));
    cursor_ = text_.data() + written;
    end_ = text_.data() + text_.size();
  }
  // Callers reserve first.
  void put(const char* from, const char* to) {
    const auto count = static_cast<std::size_t>(to - from);
    std::memcpy(cursor_, from, count);
    cursor_ += count;
  }
  void put(char c) { *cursor_++ = c; }
  std::string finish() {
    text_.resize(static_cast<std::size_t>(cursor_ - text_.data()));
    return std::move(text_);
  }

 private:
  std::string text_;
  char* cursor_;
  char* end_;
};

}  // namespace

// One pass with a cursor: each tag is scanned once (the look-ahead at the
// next tag is kept for the next round), and nothing is copied twice.
std::string TARNOFXImport::addMissingEndTagsToElementsInString(std::string_view text) {
  const char* position = text.data();
  const char* const end = position + text.size();
  // End tags add about a tenth to OFX 1 text; white space between tags goes.
  CursorOutput out(text.size() + text.size() / 8 + 64);
  const char* knownOpen = nullptr;  // a tag already scanned, and its ">"
  const char* knownClose = nullptr;
  while (position < end) {
    const char* const open = position == knownOpen ? position : findByte(position, end, '<');
    if (open == end) {
      out.reserveMore(static_cast<std::size_t>(end - position));
      out.put(position, end);
      break;
    }
    if (!isWhiteSpaceOnly(std::string_view(position, static_cast<std::size_t>(open - position)))) {
      out.reserveMore(static_cast<std::size_t>(open - position));
      out.put(position, open);
    }
    const char* const close = open == knownOpen ? knownClose : findByte(open + 1, end, '>');
    if (close == end) {
      out.reserveMore(static_cast<std::size_t>(end - open));
      out.put(open, end);
      break;
    }
    position = close + 1;
    const char* const nameStart = open + 1;
    const auto nameLength = static_cast<std::size_t>(close - nameStart);
    if (nameLength > 0 && *nameStart == '/') {
      out.reserveMore(nameLength + 2);
      out.put(open, position);
      continue;
    }
    const char* const next = findByte(position, end, '<');
    if (next == end) {
      out.reserveMore(static_cast<std::size_t>(end - open));
      out.put(open, end);
      break;
    }
    const char* valueStart = position;
    const char* valueEnd = next;
    while (valueStart < valueEnd && isWhiteSpace(*valueStart)) ++valueStart;
    while (valueEnd > valueStart && isWhiteSpace(valueEnd[-1])) --valueEnd;
    // The tag, the value and an end tag at most.
    out.reserveMore(2 * nameLength + 5 + static_cast<std::size_t>(valueEnd - valueStart));
    out.put(open, position);
    position = next;
    if (valueStart == valueEnd) continue;
    out.put(valueStart, valueEnd);
    const char* const nextClose = findByte(next + 1, end, '>');
    knownOpen = next;
    knownClose = nextClose;
    if (nextClose == end) continue;  // the next round copies the rest
    const std::string_view nextName(next + 1, static_cast<std::size_t>(nextClose - next - 1));
    if (!(nextName.size() == nameLength + 1 && nextName.front() == '/' &&
          std::memcmp(nextName.data() + 1, nameStart, nameLength) == 0)) {
      out.put('<');
      out.put('/');
      out.put(nameStart, close);
      out.put('>');
    }
  }
  return out.finish();
}

std::string TARNOFXImport::escapePhysicalEntitiesInElementsInString(std::string_view text) {
  std::string out(text);
  escapePhysicalEntitiesInPlace(out);
  return out;
}

void TARNOFXImport::escapePhysicalEntitiesInPlace(std::string& text) {
  // First pass: what each ampersand gets after it, and where the walk stops
  // (an ampersand at the start or right after another one drops the rest).
  struct Insertion {
    std::size_t ampersand;
    std::string_view after;  // the name as written, or "amp;"
  };
  std::vector<Insertion> insertions;
  std::size_t kept = text.size();
  std::size_t growth = 0;
  for (std::size_t position = 0, amp; (amp = text.find('&', position)) != std::string::npos;
       position = amp + 1) {
    if (amp == position) {
      kept = amp;
      break;
    }
    const std::string_view rest = std::string_view(text).substr(amp + 1);
    const std::string_view known = knownEntityAfterAmpersand(rest);
    // The name as written; the walk copies it again with its ";" next.
    insertions.push_back(
        {amp, known.empty() ? std::string_view("amp;") : rest.substr(0, known.size())});
    growth += insertions.back().after.size();
  }
  // The names copied before the text moves, which may write over them.
  std::string names;
  for (const Insertion& insertion : insertions) names.append(insertion.after);
  for (std::size_t at = 0; Insertion & insertion : insertions) {
    insertion.after = std::string_view(names).substr(at, insertion.after.size());
    at += insertion.after.size();
  }
  // Second pass, from the end: each piece moves once, by the growth before it.
  text.resize(kept + growth);
  char* const data = text.data();
  std::size_t end = kept;  // of the piece still to move, in the old text
  for (auto insertion = insertions.rbegin(); insertion != insertions.rend(); ++insertion) {
    const std::size_t pieceStart = insertion->ampersand + 1;
    std::memmove(data + pieceStart + growth, data + pieceStart, end - pieceStart);
    growth -= insertion->after.size();
    std::memcpy(data + pieceStart + growth, insertion->after.data(), insertion->after.size());
    end = pieceStart;
  }
}

std::string TARNOFXImport::escapeAmpersandsTolerantly(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 16);
  std::size_t position = 0;
  for (std::size_t amp = text.find('&'); amp != std::string_view::npos;
       amp = text.find('&', position)) {
    out.append(text.substr(position, amp - position));
    const std::string_view rest = text.substr(amp + 1);
    const std::string_view known = knownEntityAfterAmpersand(rest);
    if (!known.empty()) {
      out.push_back('&');
      out.append(known);
      out.push_back(';');
      position = amp + 1 + known.size() + 1;
    } else if (const std::size_t length = characterReferenceLength(rest); length > 0) {
      out.append(text.substr(amp, length + 1));
      position = amp + 1 + length;
    } else {
      out.append("&amp;");
      position = amp + 1;
    }
  }
  out.append(text.substr(position));
  return out;
}

}  // namespace tarn
