#include "quoll/message/link_anchors.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>
#include <utility>

#include "quoll/message/link_trie.h"

namespace quoll {

namespace {

constexpr std::string_view kBeforeAddress = "<a href='";
constexpr std::string_view kBetween = "'>";
constexpr std::string_view kBehind = "</a>";
constexpr std::size_t kMarkup = kBeforeAddress.size() + kBetween.size() + kBehind.size();

/// Replaces links that can be found only in the original text, never in the markup of an anchor or
/// across its edges (`stands_apart`). So the original text is never changed: the anchors are a tree
/// of ranges over it, and the result is written once, at the end.
class Anchors {
 public:
  Anchors(std::string_view text, const std::vector<std::string>& links, std::size_t longest)
      : text_(text), longest_(longest), size_(text.size()), spans_{{0, {text.size(), 0}}} {
    for (const std::string& link : links) {
      const Index index = trie_.add(link);
      order_.push_back(index);
      links_.resize(trie_.size());
      links_[index].length = link.size();
    }
    trie_.close();
    find_places();
  }

  /// Replaces the links in turn and answers how many were replaced. The first one that would make
  /// the text too long ends it.
  std::size_t replace() {
    std::size_t done = 0;
    while (done < order_.size() && replace(order_[done])) {
      ++done;
    }
    return done;
  }

  std::string result() {
    // Outer anchors before the inner ones. The order of anchors around the same range does not
    // matter.
    std::sort(anchors_.begin(), anchors_.end(), [](const Range& a, const Range& b) {
      return a.begin != b.begin ? a.begin < b.begin : a.end > b.end;
    });
    std::string out;
    out.reserve(size_);
    write({0, text_.size()}, out);
    return out;
  }

 private:
  using Index = LinkTrie::Index;

  /// A range of the original text, in bytes.
  struct Range {
    std::size_t begin;
    std::size_t end;
  };

  /// A range with no anchor inside it, kept by its beginning. The result holds a range 2^n times
  /// when n anchors are around it.
  struct Span {
    std::size_t end;
    unsigned anchors;
  };
  using Spans = std::map<std::size_t, Span>;

  struct Link {
    std::size_t length = 0;
    std::vector<Index> longer;        // links that begin with this one and with no longer such link
    std::vector<std::size_t> places;  // where it is the longest link that fits
  };

  void find_places() {
    for (Index link = 0; link < links_.size(); ++link) {
      if (const Index shorter = trie_.shorter(link); shorter != LinkTrie::kNone) {
        links_[shorter].longer.push_back(link);
      }
    }
    LinkTrie::State state = 0;
    for (std::size_t at = text_.size(); at-- > 0;) {
      state = trie_.step(state, text_[at]);
      if (const Index link = trie_.link(state); link != LinkTrie::kNone) {
        links_[link].places.push_back(at);
      }
    }
  }

  /// Takes all places where the link begins, in order: its own, and those of longer links that
  /// begin with it. The longer links lose them for good: after this replacement none of them fits
  /// there.
  std::vector<std::size_t> take_places(Index link) {
    std::vector<std::size_t> places;
    std::vector<Index> waiting{link};
    while (!waiting.empty()) {
      Link& next = links_[waiting.back()];
      waiting.pop_back();
      places.insert(places.end(), next.places.begin(), next.places.end());
      waiting.insert(waiting.end(), next.longer.begin(), next.longer.end());
      next.places = {};
      next.longer = {};
    }
    std::sort(places.begin(), places.end());
    return places;
  }

  Spans::iterator span_around(std::size_t place) { return std::prev(spans_.upper_bound(place)); }

  /// Replaces one link everywhere. False when the text would become too long: then no anchor was
  /// added, and no other link may be replaced.
  bool replace(Index link) {
    const std::size_t length = links_[link].length;
    std::vector<std::size_t> chosen;
    std::vector<Range> others;  // no room for it here: the free ranges
    std::size_t free = 0;       // the end of the last chosen place
    std::size_t size = size_;
    for (const std::size_t place : take_places(link)) {
      const Span span = span_around(place)->second;
      if (place < free) {
        others.push_back({place, free});
      } else if (span.end - place < length) {
        others.push_back({place, span.end});
      } else {
        chosen.push_back(place);
        free = place + length;
        size += (length + kMarkup) << span.anchors;
      }
    }
    if (size > longest_) {
      return false;
    }
    size_ = size;
    for (const std::size_t place : chosen) {
      anchor({place, place + length});
    }
    for (const Range& other : others) {
      give_to_shorter(link, other);
    }
    links_[link].places = std::move(chosen);
    return true;
  }

  /// Makes the range an anchor: cuts it out of the span around it.
  void anchor(const Range& range) {
    const auto around = span_around(range.begin);
    const Span span = around->second;
    if (range.end < span.end) {
      spans_.emplace(range.end, span);
    }
    around->second.end = range.begin;
    spans_.insert_or_assign(range.begin, Span{range.end, span.anchors + 1});
    anchors_.push_back(range);
  }

  /// Gives the place to the longest link that begins there and still fits.
  void give_to_shorter(Index link, const Range& free) {
    do {
      link = trie_.shorter(link);
    } while (link != LinkTrie::kNone && links_[link].length > free.end - free.begin);
    if (link != LinkTrie::kNone) {
      links_[link].places.push_back(free.begin);
    }
  }

  /// Calls itself for anchors in anchors. Each level doubles the text, so there are few levels.
  void write(Range range, std::string& out) {
    while (next_anchor_ < anchors_.size() && anchors_[next_anchor_].begin < range.end) {
      const Range anchor = anchors_[next_anchor_++];
      out.append(text_.substr(range.begin, anchor.begin - range.begin)).append(kBeforeAddress);
      const std::size_t address = out.size();
      write(anchor, out);
      const std::size_t length = out.size() - address;
      out.append(kBetween).append(out, address, length).append(kBehind);
      range.begin = anchor.end;
    }
    out.append(text_.substr(range.begin, range.end - range.begin));
  }

  const std::string_view text_;
  const std::size_t longest_;
  std::size_t size_;  // bytes of the text with the anchors so far
  LinkTrie trie_;
  std::vector<Link> links_;   // every different link
  std::vector<Index> order_;  // the links in the order of replacement, with repeats
  Spans spans_;               // together they cover the whole text
  std::vector<Range> anchors_;
  std::size_t next_anchor_ = 0;
};

/// Whether a link can neither be part of an anchor's markup nor reach across its edges. "<", ">"
/// and "'" are markup, and markup has no ":".
bool stands_apart(const std::string& link) {
  return link.find(':') != std::string::npos && link.find_first_of("<>'") == std::string::npos;
}

/// Replaces every occurrence of the link, from left to right, without overlaps. An empty link
/// occurs nowhere. False when the text would become too long; nothing is changed then.
bool replace_everywhere(std::string& text, const std::string& link, std::size_t longest) {
  std::string replaced;
  std::size_t copied = 0;
  std::size_t at = link.empty() ? std::string::npos : text.find(link);
  while (at != std::string::npos) {
    replaced.append(text, copied, at - copied).append(kBeforeAddress).append(link);
    replaced.append(kBetween).append(link).append(kBehind);
    copied = at + link.size();
    if (replaced.size() + (text.size() - copied) > longest) {
      return false;
    }
    at = text.find(link, copied);
  }
  text = replaced.append(text, copied);
  return true;
}

}  // namespace

const std::string* anchor_links(std::string& text, const std::vector<std::string>& links,
                                std::size_t longest) {
  std::size_t done = 0;
  if (text.size() > longest) {
    // Too long already: any anchor would make it longer.
  } else if (std::all_of(links.begin(), links.end(), stands_apart)) {
    Anchors anchors(text, links, longest);
    done = anchors.replace();
    text = anchors.result();
  } else {
    while (done < links.size() && replace_everywhere(text, links[done], longest)) {
      ++done;
    }
  }
  return done < links.size() ? &links[done] : nullptr;
}

}  // namespace quoll
