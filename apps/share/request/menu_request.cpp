#include "apps/share/request/menu_request.h"

#include <cbor.h>

#include <limits>
#include <string>
#include <vector>

#include "apps/share/request/resolve_link.h"

namespace quoll::share {

namespace {

constexpr std::uint64_t kUnknown = std::numeric_limits<std::uint64_t>::max();

bool is_item(std::string_view given) {
  return given.starts_with("/") || given.starts_with("www.") || link_scheme(given);
}

/// Takes the map in as its parts come by, with a stack of its own: the bytes are a stranger's, and
/// may claim any length and any depth.
class RequestReader {
 public:
  explicit RequestReader(ShareRequest& request) : request_(request) {}

  /// False when the bytes are not one map.
  bool read(std::string_view cbor) {
    const cbor_callbacks callbacks = make_callbacks();
    const auto* bytes = reinterpret_cast<cbor_data>(cbor.data());
    std::size_t at = 0;
    while (!failed_ && !done_ && at < cbor.size()) {
      const auto step = cbor_stream_decode(bytes + at, cbor.size() - at, &callbacks, this);
      if (step.status != CBOR_DECODER_FINISHED) {
        return false;
      }
      at += step.read;
    }
    return done_ && !failed_ && at == cbor.size();
  }

 private:
  enum class Kind { kMap, kList, kText, kBytes };  // the last two come in pieces
  struct Level {
    Kind kind;
    std::uint64_t items;  // a key and its value are two
    std::uint64_t seen = 0;
  };

  static RequestReader& self(void* context) { return *static_cast<RequestReader*>(context); }
  template <typename... Arguments>
  static void other(void* context, Arguments... /*value*/) {
    self(context).take_other();
  }
  template <Kind kind>
  static void open(void* context, std::size_t items) {
    self(context).go_down(kind, items);
  }
  template <Kind kind>
  static void open_unknown(void* context) {
    self(context).go_down(kind, kUnknown);
  }

  static cbor_callbacks make_callbacks() {
    cbor_callbacks callbacks = cbor_empty_callbacks;  // and tags, which say nothing here
    callbacks.uint8 = callbacks.negint8 = other;
    callbacks.uint16 = callbacks.negint16 = other;
    callbacks.uint32 = callbacks.negint32 = other;
    callbacks.uint64 = callbacks.negint64 = other;
    callbacks.float2 = callbacks.float4 = other;
    callbacks.float8 = other;
    callbacks.undefined = callbacks.null = other;
    callbacks.boolean = other;
    callbacks.byte_string = [](void* context, cbor_data, std::size_t) {
      self(context).take_piece(Kind::kBytes, {});
    };
    callbacks.string = [](void* context, cbor_data bytes, std::size_t size) {
      self(context).take_piece(Kind::kText, {reinterpret_cast<const char*>(bytes), size});
    };
    callbacks.byte_string_start = open_unknown<Kind::kBytes>;
    callbacks.string_start = open_unknown<Kind::kText>;
    callbacks.array_start = open<Kind::kList>;
    callbacks.indef_array_start = open_unknown<Kind::kList>;
    callbacks.map_start = open<Kind::kMap>;
    callbacks.indef_map_start = open_unknown<Kind::kMap>;
    callbacks.indef_break = [](void* context) { self(context).take_break(); };
    return callbacks;
  }

  void go_down(Kind kind, std::uint64_t items) {
    constexpr std::size_t kDeepest = 16;
    const bool is_first = levels_.empty();
    if (levels_.size() == kDeepest || (is_first && kind != Kind::kMap) || in_pieces()) {
      failed_ = true;
      return;
    }
    forget_key();
    const bool is_countable = items == kUnknown || items < kUnknown / 2;
    failed_ = !is_countable;
    levels_.push_back({kind, kind == Kind::kMap && items != kUnknown ? 2 * items : items});
    text_.clear();
    if (items == 0) {
      levels_.pop_back();
      finish_item();
    }
  }

  [[nodiscard]] bool in_pieces() const {
    return !levels_.empty() &&
           (levels_.back().kind == Kind::kText || levels_.back().kind == Kind::kBytes);
  }

  void take_piece(Kind kind, std::string_view piece) {
    if (in_pieces()) {
      failed_ = levels_.back().kind != kind;
      text_ += piece;
    } else if (levels_.empty()) {
      failed_ = true;
    } else if (kind == Kind::kText) {
      take_text(piece);
    } else {
      take_other();
    }
  }

  void take_break() {
    if (levels_.empty() || levels_.back().items != kUnknown) {
      failed_ = true;
      return;
    }
    const Level level = levels_.back();
    levels_.pop_back();
    if (level.kind == Kind::kText) {
      take_text(text_);
    } else if (level.kind == Kind::kMap && level.seen % 2 != 0) {
      failed_ = true;  // a key without a value
    } else {
      finish_item();
    }
  }

  void take_text(std::string_view text) {
    const Level& level = levels_.back();
    if (levels_.size() == 1 && level.seen % 2 == 0) {
      key_ = text;
    } else if (levels_.size() == 1 && key_ == "title" && !text.empty()) {
      request_.title.emplace(text);
    } else if (levels_.size() == 2 && level.kind == Kind::kList && key_ == "urls") {
      add(text);
    }
    finish_item();
  }

  /// A value of a kind that is of no use here.
  void take_other() {
    if (levels_.empty() || in_pieces()) {
      failed_ = true;
      return;
    }
    forget_key();
    finish_item();
  }

  /// What comes now is no text: as a key it is none that is known.
  void forget_key() {
    if (levels_.size() == 1 && levels_.back().seen % 2 == 0) {
      key_.clear();
    }
  }

  /// An item of the innermost level is whole, and with it perhaps that level.
  void finish_item() {
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (++level.seen != level.items) {
        return;
      }
      levels_.pop_back();
    }
    done_ = true;
  }

  void add(std::string_view given) {
    if (is_item(given)) {
      request_.items.emplace_back(given);
    } else if (!given.empty() && request_.text) {
      request_.text->append("\n").append(given);
    } else if (!given.empty()) {
      request_.text.emplace(given);
    }
  }

  ShareRequest& request_;
  std::vector<Level> levels_;
  std::string key_;
  std::string text_;  // of the pieces so far
  bool failed_ = false;
  bool done_ = false;
};

}  // namespace

std::optional<ShareRequest> read_menu_request(std::string_view cbor) {
  std::optional<ShareRequest> request(std::in_place);
  if (!RequestReader(*request).read(cbor)) {
    return std::nullopt;
  }
  request->is_from_menu = true;
  for (auto* const text : {&request->title, &request->text}) {
    if (*text == "-") {  // stands for standard input, which is not the menu's
      **text += ' ';
    }
  }
  return request;
}

}  // namespace quoll::share
