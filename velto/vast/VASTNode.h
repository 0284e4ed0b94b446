// The XML below documents of video ads, as plain values: what libxml2 made of a text, with that library behind it. Inner
// header of this folder; any thread.
//
// Read as players read it: names and attributes without regard to case or namespace, ampersands that nobody escaped as
// ampersands, bytes that are no UTF-8 as Latin-1. Nothing is fetched, and no entity is expanded: a text that declares one is
// refused, like one that is too large, too deep, or cut off.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

struct VASTNode {
  std::string name;                                             // lower case, without prefix
  std::vector<std::pair<std::string, std::string>> attributes;  // names likewise
  std::string text;    // its own, not that of its children; without blanks at both ends
  std::string markup;  // of the nodes that are kept as they stand (extensions): what is inside
  std::vector<VASTNode> children;
  int line = 0;  // of the text, from 1 on, where its tag ends

  // The first child of that name (in lower case), or null.
  const VASTNode* child(std::string_view childName) const;
  // Its text; empty when there is none.
  std::string textOf(std::string_view childName) const;
  // Nothing when absent or blank.
  std::optional<std::string> attribute(std::string_view attributeName) const;
  std::optional<double> number(std::string_view attributeName) const;
  std::optional<bool> flag(std::string_view attributeName) const;  // true, 1, yes; false, 0, no

  // Calls for each child of that name, and with two for each child's child.
  template <class Call>
  void each(std::string_view childName, Call call) const {
    for (const auto& node : children)
      if (node.name == childName) call(node);
  }
  template <class Call>
  void each(std::string_view childName, std::string_view itsChild, Call call) const {
    each(childName, [&](const VASTNode& node) { node.each(itsChild, call); });
  }
};

// The root; nothing for what is no XML, or beyond the limits of VASTDocument.h.
std::optional<VASTNode> readVASTNode(std::string_view text);

// Whether it is within those limits before it is looked at as XML: small enough, not too many tags, nor attributes in one of
// them, and no entities of its own.
bool isWithinVASTLimits(std::string_view text);
// "&amp;" and the like at the start of the text: those that XML knows by itself.
bool beginsVASTReference(std::string_view text);

std::string_view trimmedVAST(std::string_view text);
// An address as it was meant: without the blanks around it and the line breaks inside. Empty unless it is of http or https;
// one that begins with "//" is of https.
std::string vastURL(std::string_view text);

}  // namespace velto
