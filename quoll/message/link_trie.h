#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quoll {

/// A set of links that is searched for in a text (the automaton of Aho and Corasick, from right to
/// left). A walk over the text from its last byte to its first tells at each byte the longest link
/// that begins there. Its time grows with the lengths of the text and of the links.
///
///     LinkTrie trie;
///     const auto link = trie.add("http://h/");   // 0; adding the same link again answers 0 again
///     trie.close();
///     LinkTrie::State state = 0;
///     for (std::size_t at = text.size(); at-- > 0;) {
///       state = trie.step(state, text[at]);      // trie.link(state) is the longest link at `at`
///     }
class __attribute__((visibility("hidden"))) LinkTrie {
 public:
  using Index = std::uint32_t;
  static constexpr Index kNone = ~Index{0};

  /// Adds a link, which must not be empty, and answers its number. Links are numbered from 0 in the
  /// order in which they are first added. All links together have less than 2^32 bytes.
  Index add(std::string_view link);
  /// Call this once, after the last `add` and before the first `shorter`, `step` or `link`.
  void close();

  /// The number of different links.
  [[nodiscard]] std::size_t size() const { return ends_.size(); }
  /// The longest other link that `link` begins with; `kNone` when there is none.
  [[nodiscard]] Index shorter(Index link) const { return nodes_[nodes_[ends_[link]].rest].link; }

  /// The state of a walk; 0 at its start.
  using State = Index;
  /// Goes on to `byte`, the one before the last byte.
  [[nodiscard]] State step(State state, char byte) const;
  /// The longest link that begins at the byte of the last step; `kNone` when none does.
  [[nodiscard]] Index link(State state) const { return nodes_[state].link; }

 private:
  /// A node stands for the end of a link: the bytes on the way to it, read from right to left. Node
  /// 0 stands for no byte and is the child of no node.
  struct Node {
    Index child = 0;    // the first child; 0 when there is none
    Index sibling = 0;  // the next child of the same parent; 0 when there is none
    Index rest = 0;     // the node of the longest other such text that this one's begins with
    Index link = kNone;
    char byte = 0;
  };

  [[nodiscard]] Index child(Index node, char byte) const;

  std::vector<Node> nodes_ = std::vector<Node>(1);
  std::vector<Index> ends_;  // the node of each link
};

}  // namespace quoll
