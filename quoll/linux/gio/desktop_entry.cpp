#include "quoll/linux/gio/desktop_entry.h"

#include <fcntl.h>

#include <csignal>

#include "quoll/linux/gio/applications.h"
#include "quoll/linux/gio/exec_line.h"
#include "quoll/linux/gio/left_out.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::gio {
namespace {

// The entry, changed so that GIO runs its `Exec` line. For an entry with the key DBusActivatable
// GIO would call the bus service, and give up when there is none.
EntryHandle startable(GDesktopAppInfo* entry, const std::vector<std::string>& arguments) {
  constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;
  const KeyFileHandle file(g_key_file_new());
  const char* path = g_desktop_app_info_get_filename(entry);
  if (path == nullptr ||
      g_key_file_load_from_file(file.get(), path, G_KEY_FILE_NONE, nullptr) == FALSE) {
    return nullptr;
  }
  g_key_file_remove_key(file.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_DBUS_ACTIVATABLE, nullptr);
  if (!arguments.empty()) {
    const TextHandle exec(
        g_key_file_get_string(file.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr));
    const std::string line = exec_line_with(exec ? exec.get() : "", arguments);
    g_key_file_set_string(file.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_EXEC, line.c_str());
  }
  return EntryHandle(g_desktop_app_info_new_from_keyfile(file.get()));
}

/// An empty one is taken out of the environment.
void pass(GAppLaunchContext* context, const char* variable, const std::string& value) {
  if (value.empty()) {
    g_app_launch_context_unsetenv(context, variable);
  } else {
    g_app_launch_context_setenv(context, variable, value.c_str());
  }
}

/// Called in the new process before it becomes the program: lets it keep a descriptor, and be ended
/// by a file that becomes too large, as programs expect.
void prepare_program(gpointer number) {
  std::signal(SIGXFSZ, SIG_DFL);
  const int descriptor = GPOINTER_TO_INT(number);
  if (descriptor >= 0) {
    fcntl(descriptor, F_SETFD, 0);
  }
}

}  // namespace

FailureReason start_program(GDesktopAppInfo* entry, const ProgramStart& start, pid_t* process) {
  const EntryHandle program = startable(entry, start.arguments);
  if (!program) {
    return std::string("the entry ") + g_app_info_get_id(G_APP_INFO(entry)) + " cannot be used";
  }
  const ObjectHandle<GAppLaunchContext> context(g_app_launch_context_new());
  pass(context.get(), "XDG_ACTIVATION_TOKEN", start.tokens.activation);
  pass(context.get(), "DESKTOP_STARTUP_ID", start.tokens.startup);
  pass(context.get(), kTakenPipeVariable,
       start.taken_pipe < 0 ? "" : std::to_string(start.taken_pipe));
  GList* list = nullptr;
  for (const std::string& uri : start.uris) {
    list = g_list_prepend(list, const_cast<char*>(uri.c_str()));
  }
  list = g_list_reverse(list);
  const posix::UniqueFd nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
  const auto keep_process = [](GDesktopAppInfo* /*entry*/, GPid pid, gpointer kept) {
    if (kept != nullptr) {
      *static_cast<pid_t*>(kept) = pid;
    }
  };
  const int flags = process != nullptr ? G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD
                                       : static_cast<int>(G_SPAWN_SEARCH_PATH);
  ErrorSlot error;
  const bool started =
      g_desktop_app_info_launch_uris_as_manager_with_fds(
          program.get(), list, context.get(), static_cast<GSpawnFlags>(flags), prepare_program,
          GINT_TO_POINTER(start.taken_pipe), keep_process, process, nothing.get(), nothing.get(),
          nothing.get(), error.out()) != FALSE;
  g_list_free(list);
  if (started) {
    return std::nullopt;
  }
  if (error.is(G_SPAWN_ERROR, G_SPAWN_ERROR_TOO_BIG)) {
    return start.arguments.empty() ? kTooLongForStart : "its command line would be too long";
  }
  return std::string(g_app_info_get_name(G_APP_INFO(entry))) +
         " could not be started: " + error.message();
}

EntryHandle find_entry(const std::string& application) {
  return EntryHandle(g_desktop_app_info_new((application + ".desktop").c_str()));
}

std::string entry_file(const std::string& application) {
  return find_data_file("applications/" + application + ".desktop");
}

}  // namespace quoll::gio
