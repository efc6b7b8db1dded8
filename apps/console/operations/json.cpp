#include "apps/console/operations/json.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "quoll/foundation/text.h"

namespace quoll::console {

namespace {

/// The deepest nesting of a request. It is more than any sensible value needs, and recursion to
/// this depth takes little of the stack.
constexpr std::size_t kMaxDepth = 512;

/// Builds the tree of values. The library's own builder compares each key with all before it, which
/// takes quadratic time for a large object from a stranger.
class Builder final : public nlohmann::json_sax<Json> {
 public:
  [[nodiscard]] Json take() { return std::move(root_); }

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(std::int64_t value) override { return add(value); }
  bool number_unsigned(std::uint64_t value) override {
    return value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
               ? add(static_cast<std::int64_t>(value))
               : add(static_cast<double>(value));
  }
  bool number_float(double value, const std::string& /*text*/) override { return add(value); }
  bool string(std::string& value) override { return add(std::move(value)); }
  bool binary(Json::binary_t& /*value*/) override { return false; }
  bool start_object(std::size_t /*count*/) override { return open(Json::object()); }
  bool start_array(std::size_t /*count*/) override { return open(Json::array()); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }
  bool key(std::string& key) override {
    key_ = std::move(key);
    return true;
  }
  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::detail::exception& error) override {
    constexpr int kNumberOverflow = 406;
    if (error.id == kNumberOverflow) {
      throw Refused("a number is out of range (byte " + std::to_string(position) + ")");
    }
    throw Refused("not JSON (byte " + std::to_string(position) + ")");
  }

 private:
  template <typename T>
  bool add(T&& value) {
    place(Json(std::forward<T>(value)));
    return true;
  }

  Json& place(Json value) {
    if (open_.empty()) {
      return root_ = std::move(value);
    }
    Json& parent = *open_.back();
    if (parent.is_array()) {
      return parent.get_ref<Json::array_t&>().emplace_back(std::move(value));
    }
    append(parent, std::move(key_), std::move(value));
    return parent.get_ref<Json::object_t&>().back().second;
  }

  bool open(Json container) {
    if (open_.size() == kMaxDepth) {
      throw Refused("nested deeper than " + std::to_string(kMaxDepth) + " levels");
    }
    Json& placed = place(std::move(container));
    open_.push_back(&placed);
    return true;
  }

  bool close() {
    open_.pop_back();
    return true;
  }

  Json root_;
  std::string key_;
  /// The open containers, from the outermost inwards. Each is the last element of the one before
  /// it, so none of them is moved while it is open.
  std::vector<Json*> open_;
};

}  // namespace

Json parse_json(std::string_view text) {
  if (!foundation::is_utf8(text)) {
    throw Refused("not UTF-8");
  }
  Builder builder;
  if (!Json::sax_parse(text.begin(), text.end(), &builder)) {
    throw Refused("not JSON");
  }
  return builder.take();
}

std::string json_line(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

const std::string& text_in(const Json& json, std::string_view what) {
  if (!json.is_string()) {
    throw Refused(std::string(what) + " is not a text");
  }
  return json.get_ref<const std::string&>();
}

void require_object(const Json& json, std::string_view what) {
  if (!json.is_object()) {
    throw Refused(std::string(what) + " is not an object");
  }
}

}  // namespace quoll::console
