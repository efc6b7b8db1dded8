#include "quoll/linux/gio/source.h"

#include <glib-unix.h>

#include <csignal>
#include <utility>

namespace quoll::gio {

namespace {

using Happened = std::function<bool()>;

gboolean tell(gpointer data) {
  const Happened happened = *static_cast<Happened*>(data);  // it may let the source go
  return happened() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

gboolean tell_of_descriptor(gint /*descriptor*/, GIOCondition /*condition*/, gpointer data) {
  return tell(data);
}

void forget(gpointer data) {
  delete static_cast<Happened*>(data);
}

}  // namespace

void Source::Remove::operator()(GSource* source) const {
  g_source_destroy(source);
  g_source_unref(source);
}

Source::Source(GSource* source, GSourceFunc callback, Happened happened) : source_(source) {
  g_source_set_callback(source, callback, new Happened(std::move(happened)), forget);
  g_source_attach(source, nullptr);
}

Source Source::readable(int descriptor, std::function<bool()> read) {
  return {g_unix_fd_source_new(descriptor, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP)),
          G_SOURCE_FUNC(tell_of_descriptor), std::move(read)};
}

Source Source::after(std::chrono::milliseconds time, std::function<void()> late) {
  return {g_timeout_source_new(static_cast<guint>(time.count())), tell, [late = std::move(late)] {
            late();
            return false;
          }};
}

Source Source::signal(int number, std::function<void()> came) {
  struct sigaction action {};
  if (sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) {
    return {};
  }
  return {g_unix_signal_source_new(number), tell, [came = std::move(came)] {
            came();
            return true;
          }};
}

}  // namespace quoll::gio
