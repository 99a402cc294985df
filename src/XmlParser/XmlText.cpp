#include "XmlParser/XmlText.h"

#include <libxml/entities.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr std::size_t endless = std::numeric_limits<std::size_t>::max();

/* libxml2 itself gives up at 40 entities inside each other. */
constexpr unsigned int maximumDepth = 64;

/* References may expand to some times the file, and a small file to this much at least. */
constexpr std::size_t expansionFactor = 4;
constexpr std::size_t minimumExpansion = std::size_t{64} * 1024;
constexpr std::size_t maximumFileLength = endless / 8;

bool isText(xmlNode const* node) {
  return node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
}

char const* characters(xmlChar const* text) {
  return text != nullptr ? reinterpret_cast<char const*>(text) : "";
}

bool isBlank(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r' && character != '\f');
}

std::string_view trimEnd(std::string_view text) {
  while (!text.empty() && isBlank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

char const* skipBlanks(char const* text) {
  while (isBlank(*text)) {
    ++text;
  }
  return text;
}

std::size_t addSaturating(std::size_t left, std::size_t right) {
  return left > endless - right ? endless : left + right;
}

} // namespace

std::string_view xml_trim(char const* text) {
  return trimEnd(skipBlanks(text));
}

XmlText::XmlText(xmlDoc* textDocument, std::size_t fileLength)
    : document(textDocument),
      budget(std::max(expansionFactor * std::min(fileLength, maximumFileLength), minimumExpansion)) {}

void XmlText::read(xmlNode const* list, std::string& text) {
  if (list != nullptr && list->next == nullptr && isText(list)) {
    text = characters(list->content);
    return;
  }
  collect(list, false);
  text = collected;
}

void XmlText::readTrimmed(xmlNode const* list, std::string& text) {
  if (list != nullptr && list->next == nullptr && isText(list)) {
    text = xml_trim(characters(list->content));
    return;
  }
  collect(list, true);
  text = trimEnd(collected);
}

void XmlText::charge(std::size_t bytes) {
  if (bytes > budget) {
    throw XmlExpansionRefused("the document expands too far");
  }
  budget -= bytes;
}

void XmlText::collect(xmlNode const* list, bool trim) {
  collected.clear();
  for (xmlNode const* node = list; node != nullptr; node = node->next) {
    if (isText(node)) {
      append(node->content, trim);
    } else if (node->type == XML_ENTITY_REF_NODE) {
      charge(expansionCost(node, 0));
      appendReference(node, trim);
    }
  }
}

/* Recursion and work are bounded: the reference has been paid for. */
void XmlText::appendReference(xmlNode const* reference, bool trim) {
  xmlEntity const* entity = xmlGetDocEntity(document, reference->name);
  if (entity == nullptr) {
    append(reference->content, trim);
    return;
  }
  for (xmlNode const* node = entity->children; node != nullptr; node = node->next) {
    if (isText(node)) {
      append(node->content, trim);
    } else if (node->type == XML_ENTITY_REF_NODE) {
      appendReference(node, trim);
    }
  }
}

/* Blanks in front of the first text never get in, so that an element with many children does not collect the
 * white space between them. */
void XmlText::append(xmlChar const* piece, bool trim) {
  char const* text = characters(piece);
  collected += trim && collected.empty() ? skipBlanks(text) : text;
}

/* One for the visit and the bytes of text, of this node alone. */
std::size_t XmlText::expansionCost(xmlNode const* node, unsigned int depth) {
  if (node->type == XML_ENTITY_REF_NODE) {
    xmlEntity const* entity = xmlGetDocEntity(document, node->name);
    if (entity != nullptr) {
      return addSaturating(1, entityCost(entity, depth + 1));
    }
  }
  bool const hasText = isText(node) || node->type == XML_ENTITY_REF_NODE;
  return 1 + (hasText ? std::strlen(characters(node->content)) : 0);
}

std::size_t XmlText::entityCost(xmlEntity const* entity, unsigned int depth) {
  if (depth > maximumDepth) {
    return endless;
  }
  /* Endless until it is known: an entity that contains itself never ends. */
  auto const [known, isNew] = costs.emplace(entity, endless);
  if (!isNew) {
    return known->second;
  }
  std::size_t cost = 0;
  for (xmlNode const* node = entity->children; node != nullptr; node = node->next) {
    cost = addSaturating(cost, expansionCost(node, depth));
  }
  costs[entity] = cost;
  return cost;
}
