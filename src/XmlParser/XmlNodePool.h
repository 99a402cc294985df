#ifndef XMLPARSER_XMLNODEPOOL_H
#define XMLPARSER_XMLNODEPOOL_H

#include "XmlParser/XmlParser.h"

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

// Memory for the nodes of one document, taken in blocks: the heap spends more on tens of thousands of small
// pieces than copying the document costs. Every node must have been destroyed before the pool is.
class CXmlNodePool {
public:
  struct _Destroy {
    void operator()(_XmlNode* node) const noexcept { pool->destroy(node); }

    CXmlNodePool* pool;
  };
  using OwnedNode = std::unique_ptr<_XmlNode, _Destroy>;

  OwnedNode create() {
    if (m_unused == nullptr) {
      addBlock();
    }
    Place* place = m_unused;
    m_unused = place->next;
    return {new (place) _XmlNode, _Destroy{this}};
  }

  void destroy(_XmlNode* node) noexcept {
    node->~_XmlNode();
    m_unused = new (node) Place{m_unused};
  }

private:
  union Place {
    Place* next;
    alignas(_XmlNode) std::byte node[sizeof(_XmlNode)];
  };

  void addBlock() {
    constexpr std::size_t BLOCK_LENGTH = 256;
    m_blocks.push_back(std::make_unique<Place[]>(BLOCK_LENGTH));
    for (std::size_t i = BLOCK_LENGTH; i-- > 0;) {
      m_blocks.back()[i].next = m_unused;
      m_unused = &m_blocks.back()[i];
    }
  }

  Place* m_unused = nullptr;
  std::vector<std::unique_ptr<Place[]>> m_blocks;
};

#endif
