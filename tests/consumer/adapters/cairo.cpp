#include "quoll/linux/cairo/drawing.h"

int main() {
  using namespace quoll::cairo_drawing;
  return make_drawing(FileType::kPdf, {9, 9}) ? 0 : 1;
}
