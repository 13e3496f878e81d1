// The OFX importer's quick readings against plain ones kept here as
// references: the end-tag walk (one cursor, each tag scanned once) and the
// ampersand walk (in place, each piece moved once) against walks that search
// and append piece by piece, and the direct reading of plain amounts against
// the amount clean-up followed by the decimal reader.
#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <string_view>

#include "tarn/import/import_text_rules.h"
#include "tarn/import/ofx_import.h"
#include "tarn/platform/number_text.h"

namespace tarn {
namespace {

// The text without white space (and line ends) at either end.
std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\n\r\f\v";
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) + 1 - first);
}

// The end-tag walk read plainly: copy the text before each "<" unless it is
// white space, copy the tag; after a start tag copy its trimmed value and,
// unless the next tag is its own end tag, add that end tag.
std::string plainEndTags(std::string_view text) {
  std::string out;
  std::size_t position = 0;
  while (position < text.size()) {
    const std::size_t open = text.find('<', position);
    if (open == std::string_view::npos) {
      out.append(text.substr(position));
      break;
    }
    const std::string_view before = text.substr(position, open - position);
    if (!trimmed(before).empty()) out.append(before);
    const std::size_t close = text.find('>', open + 1);
    if (close == std::string_view::npos) {
      out.append(text.substr(open));
      break;
    }
    out.append(text.substr(open, close + 1 - open));
    position = close + 1;
    const std::string_view name = text.substr(open + 1, close - open - 1);
    if (!name.empty() && name.front() == '/') continue;
    const std::size_t next = text.find('<', position);
    if (next == std::string_view::npos) {
      out.append(text.substr(position));
      break;
    }
    const std::string_view value = trimmed(text.substr(position, next - position));
    position = next;
    if (value.empty()) continue;
    out.append(value);
    const std::size_t nextClose = text.find('>', next + 1);
    if (nextClose == std::string_view::npos) continue;
    if (text.substr(next + 1, nextClose - next - 1) != "/" + std::string(name)) {
      out += "</" + std::string(name) + ">";
    }
  }
  return out;
}

// SGML-like text from pieces that make the walk's cases meet: start and end
// tags of a few names (some sharing a prefix), values, white space of every
// kind, stray brackets and slashes, ends in the middle of anything.
std::string randomSgml(std::mt19937& random, std::size_t pieces) {
  static const char* const kPieces[] = {
      "<A>", "<AB>", "</A>", "</AB>", "<NAME>", "</NAME>", "</NAMES>", "<>",   "</>",
      "<",   ">",    "/",    " ",     "\t",     "\r\n",    "\n",       "\f\v", "-10.00",
      "x y", "&",    "<A",   "<//A>", "1",      "  v  ",   "<NAME",    "A>"};
  std::string text;
  for (std::size_t i = 0; i < pieces; ++i) text += kPieces[random() % std::size(kPieces)];
  return text;
}

TEST(OFXEndTagsReference, QuickWalkMatchesThePlainOneOnGeneratedText) {
  std::mt19937 random(20261124);
  for (int round = 0; round < 20000; ++round) {
    const std::string text = randomSgml(random, random() % 24);
    ASSERT_EQ(TARNOFXImport::addMissingEndTagsToElementsInString(text), plainEndTags(text))
        << "input: " << text;
  }
  // Long text: the cursor's buffer grows past its first guess when end tags
  // outweigh the white space that goes (short values, no line ends).
  std::string dense;
  for (int i = 0; i < 20000; ++i) dense += "<ABCDEFGHIJ>1";
  dense += "<END>";
  const std::string expected = plainEndTags(dense);
  EXPECT_GT(expected.size(), dense.size() * 3 / 2);
  EXPECT_EQ(TARNOFXImport::addMissingEndTagsToElementsInString(dense), expected);
  // A statement as banks write it.
  std::string statement = "<OFX>\n<BANKMSGSRSV1>\n<STMTTRNRS>\n<BANKTRANLIST>\n";
  for (int i = 0; i < 2000; ++i) {
    statement += "<STMTTRN>\n<TRNTYPE>DEBIT\n<DTPOSTED>20240105120000[-5:EST]\n<TRNAMT>-" +
                 std::to_string(i) + ".25\n<FITID>" + std::to_string(900000 + i) +
                 "\n<NAME>SHOP  " + std::to_string(i % 7) + "   \n<MEMO>\r\n</STMTTRN>\n";
  }
  statement += "</BANKTRANLIST>\n</STMTTRNRS>\n</BANKMSGSRSV1>\n</OFX>";
  EXPECT_EQ(TARNOFXImport::addMissingEndTagsToElementsInString(statement), plainEndTags(statement));
}

constexpr std::string_view kKnownEntities[] = {"amp", "lt", "gt", "quot", "apos"};

// The faithful ampersand walk read plainly, appending as it goes: from "&" to
// "&", copy the text before it and the "&", then a known entity's name as
// written or "amp;"; stop at an ampersand that starts the text or follows
// another one.
std::string plainAmpersands(std::string_view text) {
  std::string out;
  std::size_t position = 0;
  while (position < text.size()) {
    const std::size_t amp = text.find('&', position);
    if (amp == std::string_view::npos) {
      out.append(text.substr(position));
      break;
    }
    if (amp == position) break;
    out.append(text.substr(position, amp - position));
    out += '&';
    const std::string_view rest = text.substr(amp + 1);
    const std::size_t semicolon = rest.substr(0, 5).find(';');
    std::string written = "amp;";
    if (semicolon != std::string_view::npos) {
      std::string lower(rest.substr(0, semicolon));
      for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      for (std::string_view known : kKnownEntities) {
        if (lower == known) written = std::string(rest.substr(0, semicolon));
      }
    }
    out += written;
    position = amp + 1;
  }
  return out;
}

TEST(OFXAmpersandsReference, InPlaceWalkMatchesThePlainOneOnGeneratedText) {
  static const char* const kPieces[] = {"&",   "&amp;",    "&AMP;", "&lt;", "&Quot;", "&apos;",
                                        "&gt", "&ampere;", ";",     "a",    "AT&T",   " ",
                                        "<N>", "</N>",     "&#38;", "&&"};
  std::mt19937 random(5);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (std::size_t i = random() % 16; i > 0; --i) text += kPieces[random() % std::size(kPieces)];
    const std::string expected = plainAmpersands(text);
    ASSERT_EQ(TARNOFXImport::escapePhysicalEntitiesInElementsInString(text), expected) << text;
    // Text whose buffer has room to spare grows where it stands.
    std::string inPlace = text;
    inPlace.reserve(text.size() * 3);
    TARNOFXImport::escapePhysicalEntitiesInPlace(inPlace);
    ASSERT_EQ(inPlace, expected) << text;
  }
}

// The amount as the clean-up and the decimal reader give it.
double plainAmount(std::string_view text) {
  return LeadingDecimalNumber(TweakAmountString(text, ".", ","));
}

bool sameDouble(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;  // tells -0.0 from 0.0
}

TEST(OFXAmountsReference, PlainAmountsReadDirectlyAsTheCleanUpReadsThem) {
  // Bank-written amounts: always read directly, and equal to the plain reading.
  std::mt19937 random(7);
  for (int i = 0; i < 200000; ++i) {
    std::string text = random() % 3 ? "-" : "";
    text += std::to_string(random() % 10000000);
    if (random() % 4) text += "." + std::to_string(random() % 10) + std::to_string(random() % 10);
    const std::optional<double> value = PlainAmountValue(text);
    ASSERT_TRUE(value) << text;
    ASSERT_TRUE(sameDouble(*value, plainAmount(text))) << text;
  }
  // Any text of amount-like characters: read directly only when plain, and
  // then to the same double.
  static const char kAlphabet[] = "-+.,0123456789 ()e";
  int direct = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string text;
    const std::size_t length = random() % 19;
    for (std::size_t k = 0; k < length; ++k) text += kAlphabet[random() % (sizeof kAlphabet - 1)];
    if (const std::optional<double> value = PlainAmountValue(text)) {
      ++direct;
      ASSERT_TRUE(sameDouble(*value, plainAmount(text))) << text;
    }
  }
  EXPECT_GT(direct, 0);
  // Long digit runs, signs and several points go the plain way.
  EXPECT_FALSE(PlainAmountValue("1234567890123456"));
  EXPECT_TRUE(PlainAmountValue("123456789012345"));
  EXPECT_FALSE(PlainAmountValue("+5"));
  EXPECT_FALSE(PlainAmountValue("--5"));
  EXPECT_FALSE(PlainAmountValue("1.2.3"));
  EXPECT_FALSE(PlainAmountValue(" 5"));
  EXPECT_FALSE(PlainAmountValue("-"));
  EXPECT_FALSE(PlainAmountValue(""));
  EXPECT_TRUE(sameDouble(*PlainAmountValue("-0.00"), -0.0));
  EXPECT_EQ(*PlainAmountValue(".5"), 0.5);
  EXPECT_EQ(*PlainAmountValue("7."), 7.0);
  EXPECT_EQ(*PlainAmountValue("0.1"), 0.1);
}

}  // namespace
}  // namespace tarn
