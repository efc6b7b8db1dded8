#include "quoll/linux/xml/reader_module.h"

#include <dlfcn.h>

#include "quoll/linux/posix/installed_file.h"
#include "quoll/linux/xml/html_reader.h"

namespace quoll::xml {

ReaderFunction<void> load_reader_function(const char* name) {
  const std::string path = posix::installed_file(posix::InstalledFolder::kModules, kReaderModule);
  void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* symbol = module != nullptr ? ::dlsym(module, name) : nullptr;
  if (symbol == nullptr) {
    const char* problem = ::dlerror();
    return {nullptr, problem != nullptr ? problem : kReaderModule};
  }
  return {symbol, {}};
}

}  // namespace quoll::xml
