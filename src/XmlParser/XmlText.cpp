#include "XmlParser/XmlText.h"

#include <libxml/entities.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr std::size_t ENDLESS = std::numeric_limits<std::size_t>::max();

// libxml2 itself gives up at 40 entities inside each other.
constexpr unsigned int MAXIMUM_DEPTH = 64;

// References may expand to some times the file, and a small file to this much at least.
constexpr std::size_t EXPANSION_FACTOR = 4;
constexpr std::size_t MINIMUM_EXPANSION = std::size_t{64} * 1024;
constexpr std::size_t MAXIMUM_FILE_LENGTH = ENDLESS / 8;

bool isText(const xmlNode* node) {
  return node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
}

const char* characters(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : "";
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

const char* skipBlanks(const char* text) {
  while (isBlank(*text)) {
    ++text;
  }
  return text;
}

std::size_t addSaturating(std::size_t left, std::size_t right) {
  return left > ENDLESS - right ? ENDLESS : left + right;
}

} // namespace

std::string_view xml_trim(const char* text) {
  return trimEnd(skipBlanks(text));
}

CXmlText::CXmlText(xmlDoc* textDocument, std::size_t fileLength)
    : m_document(textDocument),
      m_budget(std::max(EXPANSION_FACTOR * std::min(fileLength, MAXIMUM_FILE_LENGTH), MINIMUM_EXPANSION)) {}

void CXmlText::read(const xmlNode* list, std::string& text) {
  if (list != nullptr && list->next == nullptr && isText(list)) {
    text = characters(list->content);
    return;
  }
  collect(list, false);
  text = m_collected;
}

void CXmlText::readTrimmed(const xmlNode* list, std::string& text) {
  if (list != nullptr && list->next == nullptr && isText(list)) {
    text = xml_trim(characters(list->content));
    return;
  }
  collect(list, true);
  text = trimEnd(m_collected);
}

void CXmlText::charge(std::size_t bytes) {
  if (bytes > m_budget) {
    throw _XmlExpansionRefused("the document expands too far");
  }
  m_budget -= bytes;
}

void CXmlText::collect(const xmlNode* list, bool trim) {
  m_collected.clear();
  for (const xmlNode* node = list; node != nullptr; node = node->next) {
    if (isText(node)) {
      append(node->content, trim);
    } else if (node->type == XML_ENTITY_REF_NODE) {
      charge(expansionCost(node, 0));
      appendReference(node, trim);
    }
  }
}

// Recursion and work are bounded: the reference has been paid for.
void CXmlText::appendReference(const xmlNode* reference, bool trim) {
  const xmlEntity* entity = xmlGetDocEntity(m_document, reference->name);
  if (entity == nullptr) {
    append(reference->content, trim);
    return;
  }
  for (const xmlNode* node = entity->children; node != nullptr; node = node->next) {
    if (isText(node)) {
      append(node->content, trim);
    } else if (node->type == XML_ENTITY_REF_NODE) {
      appendReference(node, trim);
    }
  }
}

// Blanks in front of the first text never get in, so that an element with many children does not collect the
// white space between them.
void CXmlText::append(const xmlChar* piece, bool trim) {
  const char* text = characters(piece);
  m_collected += trim && m_collected.empty() ? skipBlanks(text) : text;
}

// One for the visit and the bytes of text, of this node alone.
std::size_t CXmlText::expansionCost(const xmlNode* node, unsigned int depth) {
  if (node->type == XML_ENTITY_REF_NODE) {
    const xmlEntity* entity = xmlGetDocEntity(m_document, node->name);
    if (entity != nullptr) {
      return addSaturating(1, entityCost(entity, depth + 1));
    }
  }
  const bool hasText = isText(node) || node->type == XML_ENTITY_REF_NODE;
  return 1 + (hasText ? std::strlen(characters(node->content)) : 0);
}

std::size_t CXmlText::entityCost(const xmlEntity* entity, unsigned int depth) {
  if (depth > MAXIMUM_DEPTH) {
    return ENDLESS;
  }
  // Endless until it is known: an entity that contains itself never ends.
  const auto [known, isNew] = m_costs.emplace(entity, ENDLESS);
  if (!isNew) {
    return known->second;
  }
  std::size_t cost = 0;
  for (const xmlNode* node = entity->children; node != nullptr; node = node->next) {
    cost = addSaturating(cost, expansionCost(node, depth));
  }
  m_costs[entity] = cost;
  return cost;
}
