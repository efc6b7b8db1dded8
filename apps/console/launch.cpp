#include <exception>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "apps/console/commands.h"
#include "apps/console/message_file.h"
#include "apps/console/operations/write_value.h"
#include "apps/console/output.h"
#include "apps/console/program_desktop.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/message/command_launcher.h"

namespace quoll::console {

namespace {

using Messages = std::vector<std::shared_ptr<ExtensionMessage>>;

/// Collects the messages that a command is announced for, while it lives.
class Announced final {
 public:
  Announced() {
    center_->addObserver(this, ACTION_CALLED_EXTENSION, nullptr,
                         [this](std::string_view /*name*/, const foundation::Value& object) {
                           messages_.insert(object.objectForKey("message").object());
                         });
  }
  Announced(const Announced&) = delete;
  Announced& operator=(const Announced&) = delete;
  ~Announced() { center_->removeObserver(this); }

  [[nodiscard]] bool has(const std::shared_ptr<ExtensionMessage>& message) const {
    return messages_.contains(message);
  }
  [[nodiscard]] bool empty() const { return messages_.empty(); }

 private:
  std::shared_ptr<platform::NSNotificationCenter> center_ =
      platform::NSNotificationCenter::defaultCenter();
  std::set<std::shared_ptr<foundation::Object>> messages_;
};

Messages read_messages(const std::vector<std::string>& files) {
  Messages messages;
  for (const std::string& file : files) {
    messages.push_back(read_message(file));
  }
  return messages;
}

/// Keeps why the command was not opened, for the one line that tells it; all else is written.
class LaunchLog final : public platform::Log {
 public:
  explicit LaunchLog(std::shared_ptr<platform::Log> log) : log_(std::move(log)) {}

  void write(const platform::LogEvent& event) override {
    if (event.error && event.error->domain == foundation::kQuollErrorDomain &&
        event.error->code == foundation::kNotOpenedError) {
      failure_ = *event.error;
    } else {
      log_->write(event);
    }
  }

  /// The reason, and what to do; to be asked once the launch has ended.
  [[nodiscard]] std::string reason() const {
    const std::string* const advice = failure_ ? failure_->detail(gio::kAdviceKey) : nullptr;
    return (failure_ ? ": " + failure_->text : "") + "; " +
           (advice != nullptr ? *advice : "quollctl doctor tells more");
  }

 private:
  std::shared_ptr<platform::Log> log_;
  std::optional<foundation::Error> failure_;
};

/// What the application says that it has not taken; nothing when nobody was asked.
std::vector<gio::LeftOut> left_out_by(const platform::NSWorkspace* workspace) {
  const auto* const launcher = dynamic_cast<const gio::LauncherWorkspace*>(workspace);
  return launcher != nullptr ? launcher->left_out() : std::vector<gio::LeftOut>();
}

}  // namespace

int launch(const std::string& command, const std::vector<std::string>& files, bool background,
           bool as_json) {
  platform::Desktop around = program_desktop();
  const auto log = std::make_shared<LaunchLog>(reading_desktop().log);
  around.log = log;
  const auto workspace = around.workspace;
  const platform::ScopedDesktop desktop(std::move(around));
  try {
    const Messages messages = read_messages(files);
    const Announced announced;
    const bool opened = ExtensionUtilities::LaunchCommandForMessages(messages, command, background);
    if (!opened && !announced.empty()) {
      complain("not opened" + log->reason());
    }
    Json left_out = Json::array();
    for (std::size_t i = 0; i < messages.size(); ++i) {
      if (!announced.has(messages[i])) {
        complain(files[i] + " is left out: its identifier cannot stand in a URL");
        left_out.push_back(json_text(files[i]));
      }
    }
    for (const auto& [name, why] : left_out_by(workspace.get())) {
      complain(std::string(name).append(" is left out: ").append(why));
      left_out.push_back(json_text(name));
    }
    if (as_json) {
      print_json({{"opened", opened}, {"left_out", left_out}});
    }
    return finish(opened && left_out.empty());
  } catch (const std::exception& failure) {
    return complain(failure.what());
  }
}

}  // namespace quoll::console
