// The parsed XML document of an OFX statement download: elements, text and
// entity references as separate nodes, the way the importer walks them. The
// tree owns the document's text and one flat array of nodes; an XMLNode is a
// borrowed handle (tree and index) that is valid while its tree lives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/platform/bulk_storage.h"

namespace tarn {

class OFXXMLTree;

enum class XMLNodeType : std::uint8_t { Document, Element, Text, EntityReference };

// One node of an OFX XML tree, or none (a default-constructed handle).
class XMLNode {
 public:
  XMLNode() = default;
  XMLNode(const OFXXMLTree* tree, std::uint32_t index) : tree_(tree), index_(index) {}

  explicit operator bool() const { return tree_ != nullptr; }
  XMLNodeType type() const;
  // The element's name, the text, or the entity reference's name ("amp").
  std::string_view string() const;

  XMLNode firstChild() const;
  XMLNode nextSibling() const;
  // Counts by walking the children: cheap for the few children a node has.
  std::size_t childCount() const;
  XMLNode childAtIndex(std::size_t index) const;
  // The node holds exactly one child and that child is text.
  bool isSimpleText() const;
  const OFXXMLTree* tree() const { return tree_; }

  friend bool operator==(const XMLNode&, const XMLNode&) = default;

 private:
  const OFXXMLTree* tree_ = nullptr;
  std::uint32_t index_ = 0;
};

// Why the XML parser rejected a document, and the byte offset in the text it
// was handed where it noticed.
struct XMLParseError {
  std::string reason;
  std::size_t offset = 0;
};

class OFXXMLTree {
 public:
  // Parses a document. The encoding comes from a byte-order mark, else the
  // XML declaration's encoding, else UTF-8; with preferUtf8, bytes that are
  // valid UTF-8 are read as UTF-8 whatever the declaration says. Text that
  // holds only white space is skipped; CDATA sections are text; character
  // references become text; the five predefined entities stay entity-
  // reference nodes; any other entity, or an ampersand that opens no
  // reference, rejects the document. nullptr on rejection, with the reason in
  // `error` when it is given.
  static std::unique_ptr<OFXXMLTree> Parse(std::string bytes, bool preferUtf8 = false,
                                           XMLParseError* error = nullptr);

  XMLNode document() const { return XMLNode(this, 0); }
  std::size_t nodeCount() const { return nodes_.size(); }

 private:
  friend class XMLNode;
  friend class OFXXMLTreeBuilder;
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  struct Node {
    std::uint32_t offset;  // of the string in text_
    std::uint32_t length;
    std::uint32_t firstChild;
    std::uint32_t nextSibling;
    XMLNodeType type;
  };

  OFXXMLTree() = default;

  std::string text_;  // the document in UTF-8, then texts decoded from character references
  plist::LargeVector<Node> nodes_;  // on huge pages: a million nodes fault in a few pages
};

inline XMLNodeType XMLNode::type() const {
  return tree_->nodes_[index_].type;
}
inline std::string_view XMLNode::string() const {
  const OFXXMLTree::Node& node = tree_->nodes_[index_];
  return std::string_view(tree_->text_).substr(node.offset, node.length);
}
inline XMLNode XMLNode::firstChild() const {
  const std::uint32_t child = tree_->nodes_[index_].firstChild;
  return child == OFXXMLTree::kNone ? XMLNode() : XMLNode(tree_, child);
}
inline XMLNode XMLNode::nextSibling() const {
  const std::uint32_t next = tree_->nodes_[index_].nextSibling;
  return next == OFXXMLTree::kNone ? XMLNode() : XMLNode(tree_, next);
}

// The node reached from `tree` by a path of element names separated by "/":
// at each step the first child element of that name. A leading "/" starts at
// the document rather than at `tree`. None when a step finds nothing.
XMLNode BKXMLTreeAtPath(XMLNode tree, std::string_view path);

}  // namespace tarn
