#include "quoll/linux/gio/launcher.h"

int main() {
  return quoll::gio::start_launcher() ? 0 : 1;
}
