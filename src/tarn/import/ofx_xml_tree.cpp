#include "tarn/import/ofx_xml_tree.h"

#include <pugixml.hpp>

#include <cstring>
#include <optional>

#include "tarn/platform/encodings.h"
#include "tarn/platform/text.h"

namespace tarn {

std::size_t XMLNode::childCount() const {
  std::size_t count = 0;
  for (XMLNode child = firstChild(); child; child = child.nextSibling()) ++count;
  return count;
}

XMLNode XMLNode::childAtIndex(std::size_t index) const {
  XMLNode child = firstChild();
  for (; child && index > 0; --index) child = child.nextSibling();
  return child;
}

bool XMLNode::isSimpleText() const {
  const XMLNode child = firstChild();
  return child && !child.nextSibling() && child.type() == XMLNodeType::Text;
}

XMLNode BKXMLTreeAtPath(XMLNode tree, std::string_view path) {
  if (!tree) return {};
  if (!path.empty() && path.front() == '/') {
    tree = tree.tree()->document();
    path.remove_prefix(1);
  }
  while (!path.empty() && tree) {
    const std::size_t slash = path.find('/');
    const std::string_view name = path.substr(0, slash);
    path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
    if (name.empty()) continue;
    XMLNode child = tree.firstChild();
    while (child && !(child.type() == XMLNodeType::Element && child.string() == name)) {
      child = child.nextSibling();
    }
    tree = child;
  }
  return tree;
}

namespace {

bool isXmlWhiteSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isWhiteSpaceOnly(std::string_view text) {
  for (char c : text) {
    if (!isXmlWhiteSpace(c)) return false;
  }
  return true;
}

// The characters that XML allows in a document.
bool isXmlChar(std::uint32_t c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
         (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

void appendUtf8(std::string& out, std::uint32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

constexpr std::string_view kPredefinedEntities[] = {"amp", "lt", "gt", "quot", "apos"};

// What stands after an ampersand at `text` (which starts just after it).
struct Reference {
  enum Kind { Invalid, Entity, Character } kind = Invalid;
  std::size_t length = 0;  // up to and including the ";"
  std::string_view name;   // Entity
  std::uint32_t character = 0;
  const char* problem = "an ampersand that starts no reference";
};

Reference readReference(std::string_view text) {
  Reference reference;
  if (!text.empty() && text.front() == '#') {
    const bool hex = text.size() > 1 && text[1] == 'x';
    std::size_t i = hex ? 2 : 1;
    std::uint64_t value = 0;
    const std::size_t firstDigit = i;
    for (; i < text.size() && i < firstDigit + 8; ++i) {
      const char c = text[i];
      int digit = -1;
      if (c >= '0' && c <= '9') digit = c - '0';
      if (hex && c >= 'a' && c <= 'f') digit = c - 'a' + 10;
      if (hex && c >= 'A' && c <= 'F') digit = c - 'A' + 10;
      if (digit < 0) break;
      value = value * (hex ? 16 : 10) + static_cast<std::uint64_t>(digit);
    }
    if (i == firstDigit || i >= text.size() || text[i] != ';' || value > 0x10FFFF ||
        !isXmlChar(static_cast<std::uint32_t>(value))) {
      reference.problem = "a character reference to no allowed character";
      return reference;
    }
    reference.kind = Reference::Character;
    reference.length = i + 1;
    reference.character = static_cast<std::uint32_t>(value);
    return reference;
  }
  const std::size_t semicolon = text.substr(0, 8).find(';');
  if (semicolon == std::string_view::npos) return reference;
  const std::string_view name = text.substr(0, semicolon);
  for (std::string_view known : kPredefinedEntities) {
    if (name == known) {
      reference.kind = Reference::Entity;
      reference.length = semicolon + 1;
      reference.name = known;
      return reference;
    }
  }
  reference.problem = "a reference to an undefined entity";
  return reference;
}

// The encoding that an XML declaration names, or empty.
std::string_view declaredEncoding(std::string_view bytes) {
  if (bytes.substr(0, 5) != "<?xml") return {};
  const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
  std::size_t at = declaration.find("encoding");
  if (at == std::string_view::npos) return {};
  at = declaration.find_first_of("\"'", at);
  if (at == std::string_view::npos) return {};
  const char quote = declaration[at];
  const std::size_t end = declaration.find(quote, at + 1);
  if (end == std::string_view::npos) return {};
  return declaration.substr(at + 1, end - at - 1);
}

// Brings the document's bytes to UTF-8 as an XML parser would read them;
// false with the reason on failure.
bool documentTextInUtf8(std::string& bytes, bool preferUtf8, XMLParseError& error) {
  std::string_view view(bytes);
  if (view.substr(0, 3) == "\xEF\xBB\xBF") {
    bytes.erase(0, 3);
  } else if (view.substr(0, 2) == "\xFE\xFF" || view.substr(0, 2) == "\xFF\xFE") {
    const StringEncoding encoding =
        view[0] == '\xFE' ? kUTF16BigEndianStringEncoding : kUTF16LittleEndianStringEncoding;
    std::optional<std::string> text = DecodeToUtf8(view.substr(2), encoding);
    if (!text) {
      error = {"the text is not valid UTF-16", 0};
      return false;
    }
    bytes = std::move(*text);
  } else if (const std::string_view declared = declaredEncoding(view);
             !declared.empty() && !(preferUtf8 && InvalidUtf8Offset(view) == std::string::npos)) {
    const std::optional<StringEncoding> encoding = EncodingForCharsetName(declared);
    if (!encoding) {
      error = {"the declared encoding \"" + std::string(declared) + "\" is not supported", 0};
      return false;
    }
    // A declaration read in single bytes cannot be in UTF-16 or UTF-32: the
    // bytes themselves say which family the encoding belongs to, as XML's
    // own detection of encodings has it, so such a declaration is ignored.
    const bool wideDeclared =
        *encoding == kUnicodeStringEncoding || *encoding == kUTF16BigEndianStringEncoding ||
        *encoding == kUTF16LittleEndianStringEncoding || *encoding == kUTF32StringEncoding ||
        *encoding == kUTF32BigEndianStringEncoding || *encoding == kUTF32LittleEndianStringEncoding;
    if (*encoding != kUTF8StringEncoding && !wideDeclared) {
      // Text in ASCII reads the same in every other encoding that
      // declarations name in practice; only other text needs converting.
      if (!IsAscii(view)) {
        std::optional<std::string> text = DecodeToUtf8(view, *encoding);
        if (!text) {
          error = {"the text is not valid " + std::string(declared), 0};
          return false;
        }
        bytes = std::move(*text);
      }
    }
  }
  // Most files are ASCII, which a quicker test than full validation tells.
  const std::size_t invalid = IsAscii(bytes) ? std::string::npos : InvalidUtf8Offset(bytes);
  if (invalid != std::string::npos) {
    error = {"the text is not valid UTF-8", invalid};
    return false;
  }
  return true;
}

}  // namespace

// Copies a pugixml document into the flat node array, splitting text at
// entity references and merging neighbouring pieces of text.
class OFXXMLTreeBuilder : private pugi::xml_tree_walker {
 public:
  OFXXMLTreeBuilder(OFXXMLTree& tree, XMLParseError& error) : tree_(tree), error_(error) {}

  bool build(pugi::xml_document& document) {
    base_ = tree_.text_.data();
    // Generous: pages of the array that are never written cost nothing, and
    // growing it would copy every node.
    tree_.nodes_.reserve(tree_.text_.size() / 6 + 16);
    addNode(XMLNodeType::Document, {});
    frames_.push_back({0, OFXXMLTree::kNone});
    // pugixml walks its own tree (its links followed inside the library) and
    // hands over each node in document order with its depth: a few calls per
    // node instead of one per link.
    if (!document.traverse(*this)) return false;
    while (frames_.size() > 1) closeFrame();
    flushText(frames_.back().node, frames_.back().lastChild);
    // Texts built from several pieces follow the document's text.
    const auto shift = static_cast<std::uint32_t>(tree_.text_.size());
    for (std::uint32_t index : copied_) tree_.nodes_[index].offset += shift;
    tree_.text_ += copies_;
    return true;
  }

  // The element whose children are being added, and its last child so far.
  struct Frame {
    std::uint32_t node;
    std::uint32_t lastChild;
  };

  // Called by pugixml for every node below the document, in document order;
  // depth() is 0 for the document's own children. False stops the walk.
  bool for_each(pugi::xml_node& node) override {
    const auto parentFrames = static_cast<std::size_t>(depth()) + 1;
    while (frames_.size() > parentFrames) closeFrame();
    Frame& parent = frames_.back();
    switch (node.type()) {
      case pugi::node_element: {
        flushText(parent.node, parent.lastChild);
        for (pugi::xml_attribute attribute = node.first_attribute(); attribute;
             attribute = attribute.next_attribute()) {
          if (!checkReferences(attribute.value())) return false;
        }
        const std::uint32_t index = addNode(XMLNodeType::Element, node.name());
        appendChild(parent.node, parent.lastChild, index);
        frames_.push_back({index, OFXXMLTree::kNone});  // may move `parent`
        return true;
      }
      case pugi::node_pcdata:
        return addCharacterData(node.value(), parent.node, parent.lastChild);
      case pugi::node_cdata:
        addText(node.value(), false);
        return true;
      default:
        return true;
    }
  }

  // Ends the innermost element: its pending text becomes its last child.
  void closeFrame() {
    flushText(frames_.back().node, frames_.back().lastChild);
    frames_.pop_back();
  }

 private:
  [[gnu::always_inline]] std::uint32_t addNode(XMLNodeType type, std::string_view text) {
    const auto offset = static_cast<std::uint32_t>(text.empty() ? 0 : text.data() - base_);
    tree_.nodes_.push_back({offset, static_cast<std::uint32_t>(text.size()), OFXXMLTree::kNone,
                            OFXXMLTree::kNone, type});
    return static_cast<std::uint32_t>(tree_.nodes_.size() - 1);
  }

  void appendChild(std::uint32_t parent, std::uint32_t& lastChild, std::uint32_t child) {
    if (lastChild == OFXXMLTree::kNone) {
      tree_.nodes_[parent].firstChild = child;
    } else {
      tree_.nodes_[lastChild].nextSibling = child;
    }
    lastChild = child;
  }

  // Text waits until the next node that is not text, so that neighbouring
  // pieces become one text node.
  void addText(std::string_view text, bool inDocument) {
    if (text.empty()) return;
    wholeData_ = false;
    if (pieces_ == 0) {
      copying_ = !inDocument;
      if (copying_) {
        pendingCopy_.assign(text);
      } else {
        pending_ = text;
      }
    } else {
      if (!copying_) pendingCopy_.assign(pending_);
      copying_ = true;
      pendingCopy_ += text;
    }
    ++pieces_;
  }

  [[gnu::always_inline]] void flushText(std::uint32_t parent, std::uint32_t& lastChild) {
    if (pieces_ != 0) addPendingText(parent, lastChild);
  }

  void addPendingText(std::uint32_t parent, std::uint32_t& lastChild) {
    pieces_ = 0;
    const std::string_view text = copying_ ? std::string_view(pendingCopy_) : pending_;
    // pugixml leaves out character data that is only white space; pieces
    // cut at references, or joined, are checked here.
    if (!wholeData_ && isWhiteSpaceOnly(text)) return;
    std::uint32_t index;
    if (!copying_) {
      index = addNode(XMLNodeType::Text, text);
    } else {
      index = addNode(XMLNodeType::Text, {});
      tree_.nodes_[index].offset = static_cast<std::uint32_t>(copies_.size());
      tree_.nodes_[index].length = static_cast<std::uint32_t>(text.size());
      copies_ += text;
      copied_.push_back(index);
    }
    appendChild(parent, lastChild, index);
  }

  bool addCharacterData(std::string_view text, std::uint32_t parent, std::uint32_t& lastChild) {
    std::size_t amp = text.find('&');
    if (amp == std::string_view::npos && pieces_ == 0 && !text.empty()) {
      // The usual case: the whole of a piece of character data, no reference.
      pending_ = text;
      copying_ = false;
      pieces_ = 1;
      wholeData_ = true;
      return true;
    }
    std::size_t start = 0;
    for (; amp != std::string_view::npos; amp = text.find('&', start)) {
      addText(text.substr(start, amp - start), true);
      const Reference reference = readReference(text.substr(amp + 1));
      if (reference.kind == Reference::Invalid) return fail(reference.problem, text.data() + amp);
      if (reference.kind == Reference::Character) {
        std::string character;
        appendUtf8(character, reference.character);
        addText(character, false);
      } else {
        flushText(parent, lastChild);
        appendChild(
            parent, lastChild,
            addNode(XMLNodeType::EntityReference, text.substr(amp + 1, reference.name.size())));
      }
      start = amp + 1 + reference.length;
    }
    addText(text.substr(start), true);
    return true;
  }

  bool checkReferences(std::string_view text) {
    for (std::size_t amp = text.find('&'); amp != std::string_view::npos;
         amp = text.find('&', amp + 1)) {
      const Reference reference = readReference(text.substr(amp + 1));
      if (reference.kind == Reference::Invalid) return fail(reference.problem, text.data() + amp);
    }
    return true;
  }

  bool fail(const char* reason, const char* at) {
    error_ = {reason, static_cast<std::size_t>(at - base_)};
    return false;
  }

  OFXXMLTree& tree_;
  XMLParseError& error_;
  const char* base_ = nullptr;
  std::string_view pending_;  // a single piece of the document's text
  std::string pendingCopy_;   // or the pieces joined
  bool copying_ = false;
  bool wholeData_ = false;  // the pending text is one whole piece of character data
  int pieces_ = 0;
  std::string copies_;
  std::vector<std::uint32_t> copied_;
  std::vector<Frame> frames_;
};

std::unique_ptr<OFXXMLTree> OFXXMLTree::Parse(std::string bytes, bool preferUtf8,
                                              XMLParseError* error) {
  XMLParseError ignored;
  XMLParseError& failure = error ? *error : ignored;
  if (bytes.size() >= kNone) {
    failure = {"the document is too large", 0};
    return nullptr;
  }
  if (!documentTextInUtf8(bytes, preferUtf8, failure)) return nullptr;
  std::unique_ptr<OFXXMLTree> tree(new OFXXMLTree());
  tree->text_ = std::move(bytes);
  pugi::xml_document document;
  // No escape processing: entity references stay in the text, where the
  // builder makes nodes of them. White-space-only text is left out.
  const unsigned options = pugi::parse_cdata | pugi::parse_eol;
  const pugi::xml_parse_result result = document.load_buffer_inplace(
      tree->text_.data(), tree->text_.size(), options, pugi::encoding_utf8);
  if (!result) {
    failure = {result.description(), static_cast<std::size_t>(result.offset)};
    return nullptr;
  }
  if (!document.document_element()) {
    failure = {"the document has no element", 0};
    return nullptr;
  }
  OFXXMLTreeBuilder builder(*tree, failure);
  if (!builder.build(document)) return nullptr;
  return tree;
}

}  // namespace tarn
