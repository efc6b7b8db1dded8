#include "quoll/message/link_trie.h"

namespace quoll {

LinkTrie::Index LinkTrie::add(std::string_view link) {
  Index node = 0;
  for (std::size_t at = link.size(); at-- > 0;) {
    const char byte = link[at];
    Index next = child(node, byte);
    if (next == 0) {
      next = static_cast<Index>(nodes_.size());
      nodes_.push_back({.sibling = nodes_[node].child, .byte = byte});
      nodes_[node].child = next;
    }
    node = next;
  }
  if (nodes_[node].link == kNone) {
    nodes_[node].link = static_cast<Index>(ends_.size());
    ends_.push_back(node);
  }
  return nodes_[node].link;
}

/// Level by level, since the `rest` of a node lies on a level before the node's own.
void LinkTrie::close() {
  std::vector<Index> order{0};
  for (std::size_t i = 0; i < order.size(); ++i) {
    const Index parent = order[i];
    for (Index node = nodes_[parent].child; node != 0; node = nodes_[node].sibling) {
      nodes_[node].rest = parent == 0 ? 0 : step(nodes_[parent].rest, nodes_[node].byte);
      if (nodes_[node].link == kNone) {
        nodes_[node].link = nodes_[nodes_[node].rest].link;
      }
      order.push_back(node);
    }
  }
}

LinkTrie::State LinkTrie::step(State state, char byte) const {
  for (;;) {
    const Index next = child(state, byte);
    if (next != 0 || state == 0) {
      return next;
    }
    state = nodes_[state].rest;
  }
}

LinkTrie::Index LinkTrie::child(Index node, char byte) const {
  Index at = nodes_[node].child;
  while (at != 0 && nodes_[at].byte != byte) {
    at = nodes_[at].sibling;
  }
  return at;
}

}  // namespace quoll
