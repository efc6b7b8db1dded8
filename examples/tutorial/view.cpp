// Draws a view into view.png.
#include <fstream>
#include <iostream>

#include "quoll/linux/cairo/drawing.h"
#include "quoll/platform/desktop.h"
#include "quoll/view/flipped_view.h"

int main() {
  using quoll::platform::NSGraphicsContext;
  constexpr quoll::platform::NSSize kSize{200, 100};
  const auto view = quoll::FlippedView::initWithFrame(
      {{0, 0}, kSize}, [](const auto& self, const quoll::platform::NSRect& /*dirty*/) {
        auto* const context = NSGraphicsContext::currentContext();
        context->fill_rect(self->bounds(), {.red = 1});
        context->draw_text("a view", {{10, 10}, {180, 80}}, {.size = 24});
      });
  const auto drawing =
      quoll::cairo_drawing::make_drawing(quoll::cairo_drawing::FileType::kPng, kSize);
  if (!drawing) {
    return 1;
  }
  view->display(*drawing);
  std::cout << std::hex << drawing->pixel(0, 0) << '\n';
  const auto file = drawing->finish();
  if (!file) {
    return 1;
  }
  std::ofstream out("view.png", std::ios::binary);
  out.write(reinterpret_cast<const char*>(file->data()),
            static_cast<std::streamsize>(file->size()));
}
