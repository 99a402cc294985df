#ifndef XMLPARSER_XMLNODEPOOL_H
#define XMLPARSER_XMLNODEPOOL_H

#include "XmlParser/XmlParser.h"

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

/* Memory for the nodes of one document, taken in blocks: the heap spends more on tens of thousands of small
 * pieces than copying the document costs. Every node must have been destroyed before the pool is. */
class XmlNodePool {
public:
  struct Destroy {
    void operator()(_XmlNode* node) const noexcept { pool->destroy(node); }

    XmlNodePool* pool;
  };
  using OwnedNode = std::unique_ptr<_XmlNode, Destroy>;

  OwnedNode create() {
    if (unused == nullptr) {
      addBlock();
    }
    Place* place = unused;
    unused = place->next;
    return {new (place) _XmlNode, Destroy{this}};
  }

  void destroy(_XmlNode* node) noexcept {
    node->~_XmlNode();
    unused = new (node) Place{unused};
  }

private:
  union Place {
    Place* next;
    alignas(_XmlNode) std::byte node[sizeof(_XmlNode)];
  };

  void addBlock() {
    constexpr std::size_t blockLength = 256;
    blocks.push_back(std::make_unique<Place[]>(blockLength));
    for (std::size_t i = blockLength; i-- > 0;) {
      blocks.back()[i].next = unused;
      unused = &blocks.back()[i];
    }
  }

  Place* unused = nullptr;
  std::vector<std::unique_ptr<Place[]>> blocks;
};

#endif
