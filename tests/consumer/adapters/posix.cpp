#include "quoll/linux/posix/files.h"

int main() {
  return quoll::posix::make_file_manager() ? 0 : 1;
}
