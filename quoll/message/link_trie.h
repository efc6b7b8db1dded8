#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quoll {

/// Different links, read from their ends: a walk over a text from its end to its beginning tells at
/// each position the longest link that begins there, in time that grows with the lengths of both.
///
///     LinkTrie trie;
///     const auto link = trie.add("http://h/");   // 0; the same again answers 0 again
///     trie.close();
class __attribute__((visibility("hidden"))) LinkTrie {
 public:
  using Index = std::uint32_t;
  static constexpr Index kNone = ~Index{0};

  /// The number of that link, which is not empty; they are counted from 0 as they come. All links
  /// together hold less than 2^32 bytes.
  Index add(std::string_view link);
  /// Between the last link and the first question.
  void close();

  /// The number of different links.
  [[nodiscard]] std::size_t size() const { return ends_.size(); }
  /// The longest of the other links that this one begins with; `kNone` when there is none.
  [[nodiscard]] Index shorter(Index link) const { return nodes_[nodes_[ends_[link]].rest].link; }

  /// Where a walk stands; it begins at 0.
  using State = Index;
  /// A step to the byte before.
  [[nodiscard]] State step(State state, char byte) const;
  /// The longest link that begins at the byte of the last step; `kNone` when none does.
  [[nodiscard]] Index link(State state) const { return nodes_[state].link; }

 private:
  /// What is read so far is the end of a link. Node 0 has read nothing, and is no child.
  struct Node {
    Index child = 0;    // the first one
    Index sibling = 0;  // the next one
    Index rest = 0;     // the longest other node whose reading this one's begins with
    Index link = kNone;
    char byte = 0;
  };

  [[nodiscard]] Index child(Index node, char byte) const;

  std::vector<Node> nodes_ = std::vector<Node>(1);
  std::vector<Index> ends_;  // of each link
};

}  // namespace quoll
