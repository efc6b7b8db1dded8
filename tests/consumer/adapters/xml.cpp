#include "quoll/linux/xml/styled_text.h"

int main() {
  return quoll::xml::make_styled_text(false) ? 0 : 1;
}
