#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

/// Owners of GLib objects.
namespace quoll::gio {

template <auto release>
struct Release {
  template <typename T>
  void operator()(T* held) const {
    release(held);
  }
};

/// Owns one reference to a GObject.
template <typename T>
using ObjectHandle = std::unique_ptr<T, Release<g_object_unref>>;
using VariantHandle = std::unique_ptr<GVariant, Release<g_variant_unref>>;
using KeyFileHandle = std::unique_ptr<GKeyFile, Release<g_key_file_unref>>;
using TextHandle = std::unique_ptr<char, Release<g_free>>;
using NodeInfoHandle = std::unique_ptr<GDBusNodeInfo, Release<g_dbus_node_info_unref>>;

/// Owns the error that a GLib call may set: `call(..., error.out())`.
class ErrorSlot {
 public:
  ErrorSlot() = default;
  ErrorSlot(const ErrorSlot&) = delete;
  ErrorSlot& operator=(const ErrorSlot&) = delete;
  ~ErrorSlot() { g_clear_error(&error_); }

  /// Clears the error and answers the place for the next one.
  [[nodiscard]] GError** out() {
    g_clear_error(&error_);
    return &error_;
  }
  [[nodiscard]] GError* get() const { return error_; }
  explicit operator bool() const { return error_ != nullptr; }
  [[nodiscard]] bool is(GQuark domain, int code) const {
    return g_error_matches(error_, domain, code) != FALSE;
  }
  /// GLib's own message; empty when there is no error.
  [[nodiscard]] std::string message() const { return error_ != nullptr ? error_->message : ""; }

 private:
  GError* error_ = nullptr;
};

}  // namespace quoll::gio
