// A module of GIO, loaded as those of a desktop are: what is on the server "gnome" lies in the
// folder $QUOLL_MOUNTED. It notes in $QUOLL_MOUNTED/pids which process has loaded it.
#include <gio/gio.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace {

constexpr const char* kServer = "smb://gnome/";

struct MountedVfs {
  GVfs parent;
};
struct MountedVfsClass {
  GVfsClass parent;
};

std::string mounted() {
  const char* const folder = std::getenv("QUOLL_MOUNTED");
  return folder != nullptr ? folder : "";
}

GFile* file_for_uri(GVfs*, const char* uri) {
  if (!g_str_has_prefix(uri, kServer)) {
    return g_vfs_get_file_for_uri(g_vfs_get_local(), uri);
  }
  char* const name = g_uri_unescape_string(uri + std::string(kServer).size(), nullptr);
  GFile* const file = g_file_new_for_path((mounted() + "/" + name).c_str());
  g_free(name);
  return file;
}

GFile* file_for_path(GVfs*, const char* path) {
  return g_vfs_get_file_for_path(g_vfs_get_local(), path);
}

void set_up(gpointer type, gpointer) {
  auto& methods = static_cast<MountedVfsClass*>(type)->parent;
  methods.is_active = [](GVfs*) -> gboolean { return TRUE; };
  methods.get_file_for_path = file_for_path;
  methods.get_file_for_uri = file_for_uri;
}

}  // namespace

extern "C" {

G_MODULE_EXPORT void g_io_module_load(GIOModule* module);
G_MODULE_EXPORT void g_io_module_unload(GIOModule* module);

void g_io_module_load(GIOModule* module) {
  GTypeInfo info{};
  info.class_size = sizeof(MountedVfsClass);
  info.class_init = set_up;
  info.instance_size = sizeof(MountedVfs);
  const GType type = g_type_module_register_type(G_TYPE_MODULE(module), G_TYPE_VFS, "MountedVfs",
                                                 &info, static_cast<GTypeFlags>(0));
  g_io_extension_point_implement("gio-vfs", type, "mounted", 1000);
  std::ofstream(mounted() + "/pids", std::ios::app) << getpid() << '\n';
}

void g_io_module_unload(GIOModule*) {}
}
