#include "quoll/linux/links/links.h"

int main() {
  return quoll::links::make_links() ? 0 : 1;
}
