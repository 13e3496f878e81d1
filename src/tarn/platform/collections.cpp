#include "tarn/platform/collections.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <bitset>
#include <cstdint>

namespace tarn {
namespace {

// One character of a text: a code point, or a single byte that is not valid
// UTF-8 (kept apart from code points by an offset past U+10FFFF).
struct Character {
  int32_t value;
  size_t length;
};

Character characterAt(std::string_view text, size_t position) {
  const auto byte = static_cast<unsigned char>(text[position]);
  if (byte < 0x80) return {byte, 1};
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  auto next = static_cast<int32_t>(position);
  UChar32 c;
  U8_NEXT(bytes, next, static_cast<int32_t>(text.size()), c);
  if (c < 0) return {0x110000 + byte, 1};
  return {c, static_cast<size_t>(next) - position};
}

}  // namespace

std::string withoutCharactersInSet(std::string_view text, std::string_view characters) {
  std::bitset<128> ascii;
  std::vector<int32_t> others;
  for (size_t position = 0; position < characters.size();) {
    const Character character = characterAt(characters, position);
    if (character.value < 128) {
      ascii.set(static_cast<size_t>(character.value));
    } else {
      others.push_back(character.value);
    }
    position += character.length;
  }
  std::sort(others.begin(), others.end());

  std::string result;
  result.reserve(text.size());
  for (size_t position = 0; position < text.size();) {
    const Character character = characterAt(text, position);
    const bool removed = character.value < 128
                             ? ascii.test(static_cast<size_t>(character.value))
                             : std::binary_search(others.begin(), others.end(), character.value);
    if (!removed) result.append(text.substr(position, character.length));
    position += character.length;
  }
  return result;
}

std::vector<std::string> CSVLineComponents(std::string_view line) {
  std::vector<std::string> fields;
  std::string field;
  size_t position = 0;
  for (;;) {
    field.clear();
    if (position < line.size() && line[position] == '"') {
      // Quoted: up to the closing quote, a doubled quote standing for one.
      ++position;
      while (position < line.size()) {
        const char c = line[position++];
        if (c != '"') {
          field.push_back(c);
        } else if (position < line.size() && line[position] == '"') {
          field.push_back('"');
          ++position;
        } else {
          break;
        }
      }
    }
    // Unquoted text, or what follows a closing quote, runs to the next comma.
    const size_t comma = line.find(',', position);
    const size_t end = comma == std::string_view::npos ? line.size() : comma;
    field.append(line.substr(position, end - position));
    fields.push_back(field);
    if (comma == std::string_view::npos) break;
    position = comma + 1;
  }
  return fields;
}

}  // namespace tarn
