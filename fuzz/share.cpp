// Runs two shares one after the other, with items and providers that are made from the bytes. A
// provider answers at once, late, after the end, twice, never, with an error or with the wrong
// kind. Each share cancels its request before it asks for anything, ends when it should, and opens
// one command URL. That URL has exactly what was answered in time. The files that it names exist,
// are complete, and have names of their own in the staging folder. Nothing of the first share is in
// the draft of the second.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/require.h"
#include "fuzz/script.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/text.h"
#include "quoll/share/share_view_controller.h"
#include "tests/share/scripted_share.h"
#include "tests/support/memory_files.h"
#include "tests/support/thread_coordinator.h"

namespace {

using namespace quoll;
using foundation::NSURL;
using foundation::Value;
using fuzz::require;
using fuzz::Script;
using platform::NSExtensionContext;

constexpr int kMostPauses = 101;
const std::string kStaging = "/containers/K7Q2M9XT4B.quoll/SharedData/Share";

/// The expected draft of a share.
struct Expected {
  struct File {
    std::string name;  ///< the name that the file wants to have
    std::string content;
  };
  std::string subject;
  std::string body;
  std::vector<File> files;
  long texts = 0;    ///< texts that are not yet documents
  long pending = 0;  ///< the gatherer's count
  int pauses = 0;
  bool ended = false;
};

/// Styled text that reports each time a text becomes a document.
class ToldDocuments final : public platform::StyledText {
 public:
  explicit ToldDocuments(std::function<void(const std::string&)> tell) : tell_(std::move(tell)) {}

  std::shared_ptr<platform::NSAttributedString> from_html(std::string_view /*html*/) override {
    return nullptr;
  }
  std::optional<foundation::Bytes> to_html(const platform::NSAttributedString& text) override {
    const bool refused = text.string().starts_with('r');
    const std::string document = "<doc>" + text.string() + "</doc>";
    tell_(refused ? std::string(foundation::kNullText) : document);
    return refused ? std::nullopt : std::optional(test::bytes_of(document));
  }

 private:
  std::function<void(const std::string&)> tell_;
};

/// The answer of one provider, and its effect on the draft of its share.
struct Planned {
  std::string type;
  Value value;
  std::optional<foundation::Error> error{};
  std::function<void(Expected&)> effect = [](Expected&) {};
  std::vector<unsigned> pauses_before{};  ///< one for each answer
};

class Run {
 public:
  explicit Run(Script& script) : script_(script) {
    for (int share = 0; share < 2; ++share) {
      run_share();
    }
    while (!timeline_.empty()) {
      pass(timeline_.begin()->first);
    }
    require(workspace_->opened().size() == 2);
  }

 private:
  void run_share() {
    expected_ = {};
    ++share_;
    // Read first: what is given for nothing waits for its pause.
    NSExtensionContext::Items items;
    for (unsigned left = script_.choice(4); left > 0; --left) {
      items.push_back(make_item());
    }
    for (const auto& item : items) {
      expected_.pending += static_cast<long>(item->attachments().size());
      const auto text = item->attributedContentText();
      expected_.texts += text && text->length() > 0 ? 1 : 0;
    }
    test::Events events;
    const auto context = std::make_shared<test::ScriptedContext>(std::move(items), &events);
    {
      ShareViewController controller;
      controller.set_extension_context(context);
      require(controller.view() != nullptr);
    }
    require(events.all() == std::vector<std::string>{"cancel"});
    require(files_->contentsOfDirectoryAtPath(kStaging)->empty());
    queue_->run();
    require(context->cancelled.size() == 1 && context->completed.empty());
    require(expected_.ended && expected_.texts == 0);
    check_draft();
  }

  std::shared_ptr<platform::NSExtensionItem> make_item() {
    const auto text = [this] { return foundation::utf8_with_escapes(script_.text()); };
    const unsigned parts = script_.choice(4);
    const std::optional<std::string> title =
        (parts & 1U) != 0 ? std::optional(text()) : std::nullopt;
    std::vector<std::shared_ptr<platform::NSItemProvider>> attachments;
    const std::optional<std::string> styled =
        (parts & 2U) != 0 ? std::optional(text()) : std::nullopt;
    for (unsigned left = script_.choice(5); left > 0; --left) {
      attachments.push_back(make_provider(title.value_or("")));
    }
    return test::item(std::move(attachments), title, styled);
  }

  std::shared_ptr<platform::NSItemProvider> make_provider(const std::string& title) {
    Planned planned = make_plan(title);
    for (unsigned left = script_.choice(4) % 3; left > 0; --left) {
      const unsigned pauses = script_.byte();
      planned.pauses_before.push_back(pauses < 128 ? 0 : pauses - 128);
    }
    const auto shared = std::make_shared<Planned>(std::move(planned));
    return std::make_shared<test::ScriptedProvider>(
        shared->type, [this, shared](const auto& handler) { asked(shared, handler); });
  }

  Planned make_plan(const std::string& title) {
    switch (script_.choice(9)) {
      case 0:
        return plan_link(title);
      case 1:
        return plan_file();
      case 2:
        return plan_image("public.jpeg", false);
      case 3:
        return plan_image("public.image", true);
      case 4:
        return {.type = "public.url", .value = NSURL::file_url("/nowhere/at all", false)};
      case 5:
        return {.type = "public.url", .value = "a text"};
      case 6:
        return {.type = "public.png", .value = NSURL::URLWithString("http://a/")};
      case 7:
        return {.type = script_.choice(2) == 0 ? "public.url" : "public.image",
                .value = nullptr,
                .error = foundation::Error{"Host", 7, "gone", {}}};
      default:
        return {.type = "public.plain-text", .value = "never asked"};
    }
  }

  Planned plan_link(const std::string& title) {
    const auto url = NSURL::URLWithString("http://h/" + std::string(script_.text()));
    const std::string text = url ? url->absoluteString() : std::string(foundation::kNullText);
    return {.type = "public.url",
            .value = url ? Value(url) : Value(),
            .effect = [title, text](Expected& expected) {
              expected.subject = title;
              expected.body.append("<a href=\"").append(text).append("\">");
              expected.body.append(text).append("</a>");
            }};
  }

  /// A new file with content of its own; names often repeat.
  Planned plan_file() {
    std::string name(script_.text(8));
    std::erase_if(name, [](char c) { return c == '/' || c == '\0'; });
    if (name.empty() || name == "." || name == "..") {
      name = "a.txt";
    }
    const std::string content = "content " + std::to_string(++count_);
    const std::string folder = "/home/" + std::to_string(count_);
    require(!files_->createDirectoryAtURL(NSURL::file_url(folder, true)));
    require(!files_->writeToFile(test::bytes_of(content), folder + "/" + name, {}));
    const std::string wanted = foundation::utf8_with_escapes(name);
    return {.type = "public.file-url",
            .value = NSURL::file_url(folder + "/" + name, false),
            .effect = [wanted, content](Expected& expected) {
              expected.files.push_back({wanted, content});
            }};
  }

  Planned plan_image(const char* type, bool as_object) {
    const bool broken = script_.choice(8) == 0;
    const std::string pixels = broken ? "broken" : "pixels " + std::to_string(++count_);
    const std::string content = (as_object ? "PNG of TIFF of " : "PNG of ") + pixels;
    const auto bytes = test::bytes_of(pixels);
    return {
        .type = type,
        .value = as_object ? Value(std::make_shared<platform::NSImage>(bytes, 1, 1)) : Value(bytes),
        .effect = [broken, content](Expected& expected) {
          if (!broken) {
            expected.files.push_back({"image.png", content});
          }
        }};
  }

  void asked(const std::shared_ptr<Planned>& planned,
             const platform::NSItemProvider::CompletionHandler& handler) {
    require(planned->type != "public.plain-text");
    for (const unsigned pauses : planned->pauses_before) {
      const auto answer = [this, planned, handler, share = share_] {
        try {
          handler(planned->value, planned->error);
        } catch (const foundation::NSException&) {
          // The wrong kind. The host's own threads catch this too.
        }
        if (share == share_ && !expected_.ended) {
          --expected_.pending;
          if (!planned->error) {
            planned->effect(expected_);
          }
        }
      };
      if (pauses == 0) {
        answer();
      } else {
        timeline_.emplace(passed_ + static_cast<int>(pauses), answer);
      }
    }
  }

  void pause() {
    require(!expected_.ended);
    ++expected_.pauses;
    pass(passed_ + 1);
    expected_.ended = expected_.pauses == kMostPauses || expected_.pending == 0;
  }

  /// Lets time pass and runs the answers that are due.
  void pass(int until) {
    passed_ = until;
    while (!timeline_.empty() && timeline_.begin()->first <= until) {
      const auto answer = timeline_.extract(timeline_.begin());
      answer.mapped()();
    }
  }

  void check_draft() {
    const auto opened = workspace_->opened();
    require(opened.size() == static_cast<std::size_t>(share_));
    require(opened.back().urls.size() == 1 && opened.back().application == "it.vorlent.quoll2");
    const auto url = NSURL::URLWithString(opened.back().urls[0]);
    require(url && url->scheme() == "quoll" && url->host() == "compose");
    const auto message = ExtensionMessage::ExtensionMessageWithUrl(url);
    const Value subject = message->subject();
    require((subject.text() != nullptr ? *subject.text() : "") == expected_.subject);
    require(message->htmlBody() == Value(expected_.body));
    require(message->plainBody() == Value(""));
    require(message->toString().is_null() && message->ccString().is_null());
    check_files(message->attachments());
  }

  void check_files(const foundation::List& paths) {
    require(paths.count() == expected_.files.size());
    std::set<std::string> names;
    for (const Value& given : paths) {
      const std::string& path = *given.text();
      const Expected::File& file = expected_.files[names.size()];
      const std::string name = path.substr(path.rfind('/') + 1);
      require(path == foundation::appending_path_component(kStaging, name));
      require(names.insert(name).second);
      require(name == file.name || files_->fileExistsAtPath(kStaging + "/" + file.name));
      const auto contents = files_->contentsAtPath(path);
      const auto* const bytes = std::get_if<foundation::Bytes>(&contents);
      require(bytes != nullptr && *bytes == test::bytes_of(file.content));
    }
  }

  Script& script_;
  Expected expected_;
  int share_ = 0;
  int count_ = 0;
  int passed_ = 0;
  std::multimap<int, std::function<void()>> timeline_;
  std::shared_ptr<test::MemoryFiles> files_ = std::make_shared<test::MemoryFiles>();
  std::shared_ptr<test::RecordingWorkspace> workspace_ =
      std::make_shared<test::RecordingWorkspace>();
  std::shared_ptr<test::HeldQueue> queue_ = std::make_shared<test::HeldQueue>();
  platform::ScopedDesktop desktop_{
      {.bundle = std::make_shared<test::FixedBundle>("it.vorlent.quoll2.Quoll-Share"),
       .files = files_,
       .coordinator = test::thread_coordinators(),
       .workspace = workspace_,
       .queue = queue_,
       .clock = std::make_shared<test::HeldClock>([this](int /*sleep*/) { pause(); }),
       .images = std::make_shared<test::TextImages>(),
       .styled_text = std::make_shared<ToldDocuments>([this](const std::string& document) {
         expected_.body += document + "<br/>";
         --expected_.texts;
       })}};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Script script({data, size});
  const Run run(script);
  return 0;
}
