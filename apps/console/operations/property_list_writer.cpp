#include "apps/console/operations/property_list_writer.h"

#include <algorithm>
#include <string_view>

#include "apps/console/operations/property_list_binary_writer.h"
#include "quoll/foundation/base64.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"

namespace quoll::console {

namespace {

using foundation::Bytes;
using foundation::Dictionary;
using foundation::Value;

[[noreturn]] void refuse(const Value& value) {
  foundation::raise_invalid_argument("a property list cannot hold " + std::string(value.kind()));
}

class XmlWriter {
 public:
  static std::string document(const Value& root) {
    XmlWriter writer;
    writer.value(root, 0);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + writer.out_ +
           "</plist>\n";
  }

 private:
  void line(std::size_t depth, std::string_view text) {
    out_.append(depth, '\t');
    out_ += text;
    out_ += '\n';
  }

  void element(std::size_t depth, std::string_view name, std::string_view content) {
    out_.append(depth, '\t');
    out_.append("<").append(name).append(">");
    for (const char c : content) {
      if (c == '&') {
        out_ += "&amp;";
      } else if (c == '<') {
        out_ += "&lt;";
      } else if (c == '>') {
        out_ += "&gt;";
      } else {
        out_ += c;
      }
    }
    out_.append("</").append(name).append(">\n");
  }

  /// Rewrites the description of a date, "2024-03-07 10:15:00 +0000", for XML.
  static std::string date(const Value& value) {
    const std::string text = value.description();
    constexpr std::size_t kDescription = 25;
    if (text.size() != kDescription) {
      foundation::raise_invalid_argument("a date of no calendar year: " + text);
    }
    return text.substr(0, 10) + "T" + text.substr(11, 8) + "Z";
  }

  void value(const Value& value, std::size_t depth) {
    if (const auto list = value.as<foundation::List>()) {
      line(depth, "<array>");
      for (const Value& inner : list) {
        this->value(inner, depth + 1);
      }
      line(depth, "</array>");
    } else if (const auto dictionary = value.as<Dictionary>()) {
      line(depth, "<dict>");
      for (const Dictionary::Entry& entry : dictionary) {
        element(depth + 1, "key", entry.key);
        this->value(entry.value, depth + 1);
      }
      line(depth, "</dict>");
    } else {
      scalar(value, depth);
    }
  }

  void scalar(const Value& value, std::size_t depth) {
    if (const std::string* text = value.text()) {
      element(depth, "string", *text);
    } else if (const bool* boolean = value.boolean()) {
      line(depth, *boolean ? "<true/>" : "<false/>");
    } else if (value.integer() != nullptr) {
      element(depth, "integer", value.description());
    } else if (value.real() != nullptr) {
      element(depth, "real", value.description());
    } else if (value.date() != nullptr) {
      element(depth, "date", date(value));
    } else if (const Bytes* bytes = value.bytes()) {
      element(depth, "data", foundation::base64_encode(*bytes));
    } else {
      refuse(value);
    }
  }

  std::string out_;
};

class OldWriter {
 public:
  static std::string document(const Value& root) {
    OldWriter writer;
    writer.value(root, 0);
    return writer.out_ + "\n";
  }

 private:
  void indent(std::size_t depth) { out_.append(depth * 2, ' '); }

  void value(const Value& value, std::size_t depth) {
    if (const auto list = value.as<foundation::List>()) {
      out_ += "(\n";
      for (const Value& inner : list) {
        indent(depth + 1);
        this->value(inner, depth + 1);
        out_ += ",\n";
      }
      indent(depth);
      out_ += ")";
    } else if (const auto dictionary = value.as<Dictionary>()) {
      out_ += "{\n";
      for (const Dictionary::Entry& entry : dictionary) {
        indent(depth + 1);
        text(entry.key);
        out_ += " = ";
        this->value(entry.value, depth + 1);
        out_ += ";\n";
      }
      indent(depth);
      out_ += "}";
    } else if (const Bytes* bytes = value.bytes()) {
      digits(*bytes);
    } else if (value.is_null() || value.object()) {
      refuse(value);
    } else {
      text(value.description());
    }
  }

  void digits(const Bytes& bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    out_ += "<";
    for (const unsigned char byte : bytes) {
      out_ += kDigits[byte >> 4U];
      out_ += kDigits[byte & 0xFU];
    }
    out_ += ">";
  }

  /// True for a text that must be quoted. "bplist" must be: a document that begins with it is read
  /// as a binary one.
  static bool needs_quotes(std::string_view text) {
    // cppcheck-suppress danglingTemporaryLifetime  ; the text outlives the call
    return text.empty() || text.starts_with("bplist") ||
           !std::all_of(text.begin(), text.end(), [](char c) {
             return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                    c == '_';
           });
  }

  void text(std::string_view text) {
    const std::string_view quote = needs_quotes(text) ? "\"" : "";
    out_ += quote;
    for (const char c : text) {
      if (c == '"' || c == '\\') {
        out_ += '\\';
      }
      out_ += c;
    }
    out_ += quote;
  }

  std::string out_;
};

}  // namespace

std::string write_property_list(const Value& root, PropertyListForm form) {
  switch (form) {
    case PropertyListForm::kXml:
      return XmlWriter::document(root);
    case PropertyListForm::kBinary:
      return write_binary_property_list(root);
    case PropertyListForm::kOld:
      return OldWriter::document(root);
  }
  return {};
}

}  // namespace quoll::console
