// A file manager that loads extensions, for the tests: it does with one what Nautilus does.
//   nautilus_double EXTENSION URI[|ACTIVATION-URI]...
// Prints the items of the menu for these files, chooses the first, forgets files and items, and
// then runs until it is ended. A URI that is "-" is that of a file that is gone.
#include <dlfcn.h>
#include <nautilus-extension.h>

#include <cstdio>
#include <string>

#include "quoll/linux/gio/handles.h"

namespace {

struct File {
  GObject parent;
  char* uri;
  char* activation_uri;
};
struct FileClass {
  GObjectClass parent;
};

File* file_of(NautilusFileInfo* info) {
  return reinterpret_cast<File*>(info);
}

void finalize(GObject* object) {
  g_free(reinterpret_cast<File*>(object)->uri);
  g_free(reinterpret_cast<File*>(object)->activation_uri);
  static_cast<GObjectClass*>(g_type_class_peek(G_TYPE_OBJECT))->finalize(object);
}

void make_info(gpointer given, gpointer) {
  auto* const interface = static_cast<NautilusFileInfoInterface*>(given);
  interface->get_uri = [](NautilusFileInfo* info) { return g_strdup(file_of(info)->uri); };
  interface->get_activation_uri = [](NautilusFileInfo* info) {
    return g_strdup(file_of(info)->activation_uri);
  };
  interface->get_location = [](NautilusFileInfo* info) {
    return file_of(info)->uri != nullptr ? g_file_new_for_uri(file_of(info)->uri) : nullptr;
  };
}

GType make_file_type(GTypeModule* module) {
  constexpr GTypeInfo kType{
      .class_size = sizeof(FileClass),
      .base_init = nullptr,
      .base_finalize = nullptr,
      .class_init = [](gpointer type,
                       gpointer) { static_cast<GObjectClass*>(type)->finalize = finalize; },
      .class_finalize = nullptr,
      .class_data = nullptr,
      .instance_size = sizeof(File),
      .n_preallocs = 0,
      .instance_init = nullptr,
      .value_table = nullptr};
  constexpr GInterfaceInfo kInfo{make_info, nullptr, nullptr};
  const GType type = g_type_module_register_type(module, G_TYPE_OBJECT, "File", &kType,
                                                 static_cast<GTypeFlags>(0));
  g_type_module_add_interface(module, type, NAUTILUS_TYPE_FILE_INFO, &kInfo);
  return type;
}

GObject* make_file(GType type, const std::string& named) {
  auto* const object = static_cast<GObject*>(g_object_new(type, nullptr));
  auto* const file = reinterpret_cast<File*>(object);
  const std::size_t bar = named.find('|');
  file->uri = named == "-" ? nullptr : g_strdup(named.substr(0, bar).c_str());
  file->activation_uri =
      bar == std::string::npos ? g_strdup(file->uri) : g_strdup(named.substr(bar + 1).c_str());
  return object;
}

struct Module {
  GTypeModule parent;
};
struct ModuleClass {
  GTypeModuleClass parent;
};

GTypeModule* make_module() {
  constexpr GTypeInfo kType{.class_size = sizeof(ModuleClass),
                            .base_init = nullptr,
                            .base_finalize = nullptr,
                            .class_init =
                                [](gpointer type, gpointer) {
                                  auto* const module = static_cast<GTypeModuleClass*>(type);
                                  module->load = [](GTypeModule*) -> gboolean { return TRUE; };
                                  module->unload = [](GTypeModule*) {};
                                },
                            .class_finalize = nullptr,
                            .class_data = nullptr,
                            .instance_size = sizeof(Module),
                            .n_preallocs = 0,
                            .instance_init = nullptr,
                            .value_table = nullptr};
  const GType type =
      g_type_register_static(G_TYPE_TYPE_MODULE, "Module", &kType, static_cast<GTypeFlags>(0));
  return G_TYPE_MODULE(g_object_new(type, nullptr));
}

/// The provider of the extension, made as Nautilus makes it.
NautilusMenuProvider* load(const char* path, GTypeModule* module) {
  void* const library = dlopen(path, RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return nullptr;
  }
  const auto initialize =
      reinterpret_cast<void (*)(GTypeModule*)>(dlsym(library, "nautilus_module_initialize"));
  const auto list_types =
      reinterpret_cast<void (*)(const GType**, int*)>(dlsym(library, "nautilus_module_list_types"));
  initialize(module);
  const GType* types = nullptr;
  int count = 0;
  list_types(&types, &count);
  std::printf("types: %d\n", count);
  return count == 1 ? NAUTILUS_MENU_PROVIDER(g_object_new(types[0], nullptr)) : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  GTypeModule* const module = make_module();
  g_type_module_use(module);
  NautilusMenuProvider* const provider = argc > 1 ? load(argv[1], module) : nullptr;
  if (provider == nullptr) {
    return 1;
  }
  const GType file_type = make_file_type(module);
  GList* files = nullptr;
  for (int at = 2; at < argc; ++at) {
    files = g_list_append(files, make_file(file_type, argv[at]));
  }
  GList* const items = nautilus_menu_provider_get_file_items(provider, files);
  for (const GList* at = items; at != nullptr; at = at->next) {
    char* label = nullptr;
    g_object_get(at->data, "label", &label, nullptr);
    std::printf("item: %s\n", label);
    g_free(label);
  }
  auto* const folder = NAUTILUS_FILE_INFO(make_file(file_type, "file:///"));
  std::printf("background items: %u\n",
              g_list_length(nautilus_menu_provider_get_background_items(provider, folder)));
  g_object_unref(folder);
  nautilus_file_info_list_free(files);
  std::fflush(stdout);
  if (items == nullptr) {
    g_object_unref(provider);
    return 0;
  }
  nautilus_menu_item_activate(NAUTILUS_MENU_ITEM(items->data));
  nautilus_menu_item_list_free(items);
  g_object_unref(provider);
  for (;;) {
    g_main_context_iteration(nullptr, TRUE);
  }
}
