#include "quoll/linux/gio/opener.h"

#include <algorithm>

#include "quoll/foundation/text.h"
#include "quoll/linux/gio/applications.h"
#include "quoll/linux/gio/desktop_entry.h"
#include "quoll/linux/gio/left_out.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/subprocess.h"

namespace quoll::gio {
namespace {

using std::chrono::milliseconds;

constexpr const char* kRefuses = "the mail application refuses";
constexpr const char* kEndedEarly = "the mail application ended before it had taken it";

GVariant* open_parameters(const OpenRequest& request, const ActivationTokens& tokens) {
  GVariantBuilder uris;
  g_variant_builder_init(&uris, G_VARIANT_TYPE("as"));
  for (const auto& url : request.urls) {
    g_variant_builder_add(&uris, "s", url.c_str());
  }
  GVariantBuilder platform_data;
  g_variant_builder_init(&platform_data, G_VARIANT_TYPE("a{sv}"));
  const auto add = [&](const char* key, const std::string& token) {
    if (!token.empty() && !request.background) {
      g_variant_builder_add(&platform_data, "{sv}", key, g_variant_new_string(token.c_str()));
    }
  };
  add("activation-token", tokens.activation);
  add("desktop-startup-id", tokens.startup);
  // Only who asks is told more: to others an error would say that nothing was taken.
  for (const char* const wish : {"quoll-report", "quoll-draft"}) {
    g_variant_builder_add(&platform_data, "{sv}", wish, g_variant_new_boolean(TRUE));
  }
  return g_variant_new("(asa{sv})", &uris, &platform_data);
}

VariantHandle call(GDBusConnection* connection, const std::string& application, const char* method,
                   GVariant* parameters, std::chrono::steady_clock::time_point deadline,
                   ErrorSlot& error) {
  return VariantHandle(g_dbus_connection_call_sync(
      connection, application.c_str(), object_path(application).c_str(),
      "org.freedesktop.Application", method, parameters, nullptr, G_DBUS_CALL_FLAGS_NONE,
      call_time_out(deadline), nullptr, error.out()));
}

// True when the bus can neither reach nor start the application, or when what has its name does not
// implement the interface.
bool says_nobody_there(const ErrorSlot& error) {
  constexpr GDBusError codes[] = {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER,
                                  G_DBUS_ERROR_UNKNOWN_METHOD, G_DBUS_ERROR_UNKNOWN_OBJECT,
                                  G_DBUS_ERROR_UNKNOWN_INTERFACE};
  return std::ranges::any_of(codes, [&](GDBusError code) { return error.is(G_DBUS_ERROR, code); });
}

bool says_not_started(const ErrorSlot& error) {
  const GError* held = error.get();
  return held != nullptr && held->domain == G_DBUS_ERROR &&
         held->code >= G_DBUS_ERROR_SPAWN_EXEC_FAILED && held->code <= G_DBUS_ERROR_SPAWN_NO_MEMORY;
}

bool says_time_out(const ErrorSlot& error) {
  return error.is(G_IO_ERROR, G_IO_ERROR_TIMED_OUT) ||
         error.is(G_DBUS_ERROR, G_DBUS_ERROR_TIMED_OUT) ||
         error.is(G_DBUS_ERROR, G_DBUS_ERROR_TIMEOUT);
}

/// True for an error by which an application says what it took.
bool is_called(const ErrorSlot& error, std::string_view wanted) {
  const TextHandle name(error ? g_dbus_error_get_remote_error(error.get()) : nullptr);
  return name && name.get() == wanted;
}

bool is_application_name(const std::string& name) {
  return g_dbus_is_name(name.c_str()) != FALSE && g_dbus_is_unique_name(name.c_str()) == FALSE &&
         name.find('\0') == std::string::npos;
}

/// True for a program that fails now: it was its end that closed its pipe.
bool ends_badly(pid_t process) {
  constexpr milliseconds kSoon{20};
  if (process <= 0) {
    return false;
  }
  if (posix::wait_for_end(process, std::chrono::steady_clock::now() + kSoon) == 0) {
    return posix::reap(process).value_or(0) != 0;
  }
  g_child_watch_add(
      process, [](GPid, int, gpointer) {}, nullptr);  // reaps it at its end
  return false;
}

/// What an application says of itself is as long as it likes.
std::string words_of(const ErrorSlot& error) {
  constexpr std::size_t kLongest = 8192;  // more than a line of the log holds
  const std::string message = error.message();
  return std::string(foundation::whole_characters(message, std::min(message.size(), kLongest)));
}

/// The bus names the service, and not its program.
OpenResult not_started(const ErrorSlot& error, const std::string& application) {
  const std::string begin = "the mail application could not be started: ";
  if (error.is(G_DBUS_ERROR, G_DBUS_ERROR_SPAWN_CHILD_EXITED)) {
    return {begin + "its program ended at once"};
  }
  if (!error.is(G_DBUS_ERROR, G_DBUS_ERROR_SPAWN_EXEC_FAILED)) {
    return {begin + words_of(error)};
  }
  const ServiceFile file = service_file(application);
  if (file.program.empty()) {
    return {.failure = begin + "its program is missing or cannot be run",
            .advice = "install it again"};
  }
  return {.failure = begin + missing_program(file.program, file.path),
          .advice = advice_on_missing_program(file.path)};
}

}  // namespace

std::string duration_text(milliseconds duration) {
  const auto count = duration.count();
  return count % 1000 == 0 ? std::to_string(count / 1000) + " s" : std::to_string(count) + " ms";
}

std::string object_path(const std::string& application) {
  std::string path = "/" + application;
  std::ranges::replace(path, '.', '/');
  std::ranges::replace(path, '-', '_');
  return path;
}

Opener::Opener(ActivationTokens tokens, milliseconds time_out)
    : tokens_(std::move(tokens)), time_out_(time_out) {}

OpenResult Opener::open(const OpenRequest& request) {
  if (auto refused = refusal(request)) {
    return *refused;
  }
  if (!is_application_name(request.application)) {
    return {"no application can have the identifier \"" + request.application + "\""};
  }
  const auto deadline = std::chrono::steady_clock::now() + time_out_;
  GDBusConnection* connection = bus_.connection(deadline);
  if (connection == nullptr) {
    return open_by_entry(request, "there is no session bus: " + bus_.reason());
  }
  OpenResult result;
  const bool is_there = open_by_bus(connection, request, deadline, result);
  return is_there ? result : open_by_entry(request, {});
}

bool Opener::activate(const std::string& application, FailureReason& failure, std::string& advice) {
  const auto deadline = std::chrono::steady_clock::now() + time_out_;
  GDBusConnection* connection = bus_.connection(deadline);
  if (connection == nullptr) {
    return false;
  }
  ErrorSlot error;
  const VariantHandle reply(call(connection, application, "Activate",
                                 g_variant_new("(a{sv})", nullptr), deadline, error));
  if (!reply && !says_nobody_there(error)) {
    OpenResult result = failed(error, application);
    failure = *result.failure + (result.report.empty() ? "" : ": " + result.report);
    advice = std::move(result.advice);
  }
  return !says_nobody_there(error);
}

bool Opener::open_by_bus(GDBusConnection* connection, const OpenRequest& request,
                         std::chrono::steady_clock::time_point deadline, OpenResult& result) const {
  ErrorSlot error;
  const VariantHandle reply(call(connection, request.application, "Open",
                                 open_parameters(request, tokens_), deadline, error));
  const bool is_left_out = is_called(error, kLeftOutError);
  if (is_left_out || is_called(error, kTakenError)) {
    g_dbus_error_strip_remote_error(error.get());
    result.report = bounded_left_out(error.message());
    if (is_left_out && left_out_of(result.report).empty()) {
      result.report = "?\nsomething: the mail application does not say what";
    }
  } else if (!reply && !says_nobody_there(error)) {
    result = failed(error, request.application);
  }
  return !says_nobody_there(error);
}

OpenResult Opener::failed(const ErrorSlot& error, const std::string& application) const {
  if (says_time_out(error)) {
    return {"the mail application did not answer within " + duration_text(time_out_)};
  }
  if (error.is(G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY)) {
    return {kEndedEarly};
  }
  if (error.is(G_IO_ERROR, G_IO_ERROR_CLOSED)) {
    return {"the session bus has ended"};
  }
  const bool remote = g_dbus_error_is_remote_error(error.get()) != FALSE;
  g_dbus_error_strip_remote_error(error.get());
  if (says_not_started(error)) {
    return not_started(error, application);
  }
  return remote ? OpenResult{kRefuses, words_of(error)}
                : OpenResult{"the mail application cannot be reached: " + words_of(error)};
}

OpenResult Opener::open_by_entry(const OpenRequest& request, const std::string& bus_reason) const {
  const EntryHandle entry = find_entry(request.application);
  if (!entry) {
    const std::string why = bus_reason.empty() ? "" : " (" + bus_reason + ")";
    if (const std::string file = entry_file(request.application); !file.empty()) {
      return {.failure = file + " is damaged, or its program is missing" + why,
              .advice = "install its package again"};
    }
    return {.failure = "no mail application answers" + why,
            .advice = "install the mail application or quoll-compose"};
  }
  if (g_app_info_supports_uris(G_APP_INFO(entry.get())) == FALSE) {
    return {.failure = entry_file(request.application) + " does not say where links go",
            .advice = "add %u to its line Exec, or install its package again"};
  }
  return start(entry.get(), request);
}

OpenResult Opener::start(GDesktopAppInfo* entry, const OpenRequest& request) const {
  const bool tells = g_desktop_app_info_get_boolean(entry, kTakenPipeKey) != FALSE;
  posix::Pipe taken = tells ? posix::make_pipe() : posix::Pipe{};
  pid_t process = 0;
  FailureReason failure =
      start_program(entry,
                    {.uris = request.urls,
                     .arguments = {},
                     .tokens = request.background ? ActivationTokens{} : tokens_,
                     .taken_pipe = taken ? taken.writing.get() : -1},
                    taken ? &process : nullptr);
  taken.writing.reset();
  if (failure || !taken.reading) {
    return {.failure = failure, .advice = failure == kTooLongForStart ? kShorten : ""};
  }
  OpenResult result;
  result.report = read_left_out(taken.reading.get(), std::chrono::steady_clock::now() + time_out_);
  if (result.report.starts_with('\n')) {
    return {kRefuses};
  }
  if (ends_badly(process) && result.report.empty()) {
    result.failure = kEndedEarly;
  }
  return result;
}

}  // namespace quoll::gio
