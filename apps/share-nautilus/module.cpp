#include <gio/gio.h>

// It declares what an extension has without saying that these are functions of C.
extern "C" {
#include <nautilus-extension.h>
}

#include "apps/share-nautilus/open_call.h"

// One item in the menu of Nautilus, for whatever is selected. All of this runs inside the file
// manager, in its only thread that draws: nothing waits, and nothing is thrown through it.

namespace {

struct Provider {
  GObject parent;
};
struct ProviderClass {
  GObjectClass parent;
};

GType provider_type = G_TYPE_INVALID;

void activated(NautilusMenuItem* /*item*/, gpointer files) {
  quoll::share_nautilus::call_open(static_cast<GList*>(files));
}

void release_files(gpointer files, GClosure* /*closure*/) {
  nautilus_file_info_list_free(static_cast<GList*>(files));
}

GList* file_items(NautilusMenuProvider* /*provider*/, GList* files) {
  if (files == nullptr) {
    return nullptr;
  }
  NautilusMenuItem* const item =
      nautilus_menu_item_new("Quoll::share", "New Message with Quoll",
                             "Turn the selected files into one mail draft", "mail-message-new");
  // The selection may be gone by the time that the item is chosen.
  g_signal_connect_data(item, "activate", G_CALLBACK(activated),
                        nautilus_file_info_list_copy(files), release_files,
                        static_cast<GConnectFlags>(0));
  return g_list_append(nullptr, item);
}

void provide_menu(gpointer interface, gpointer /*data*/) {
  static_cast<NautilusMenuProviderInterface*>(interface)->get_file_items = file_items;
}

}  // namespace

extern "C" {

G_MODULE_EXPORT void nautilus_module_initialize(GTypeModule* module) {
  constexpr GTypeInfo kType{.class_size = sizeof(ProviderClass),
                            .base_init = nullptr,
                            .base_finalize = nullptr,
                            .class_init = nullptr,
                            .class_finalize = nullptr,
                            .class_data = nullptr,
                            .instance_size = sizeof(Provider),
                            .n_preallocs = 0,
                            .instance_init = nullptr,
                            .value_table = nullptr};
  constexpr GInterfaceInfo kMenu{provide_menu, nullptr, nullptr};
  provider_type = g_type_module_register_type(module, G_TYPE_OBJECT, "QuollMenuProvider", &kType,
                                              static_cast<GTypeFlags>(0));
  g_type_module_add_interface(module, provider_type, NAUTILUS_TYPE_MENU_PROVIDER, &kMenu);
}

G_MODULE_EXPORT void nautilus_module_shutdown() {}

G_MODULE_EXPORT void nautilus_module_list_types(const GType** types, int* num_types) {
  *types = &provider_type;
  *num_types = 1;
}
}
