// Builds, changes and draws a tree of views with any numbers. Nothing raises, and the drawing is
// complete.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "fuzz/require.h"
#include "fuzz/script.h"
#include "quoll/linux/cairo/drawing.h"
#include "quoll/view/flipped_view.h"

namespace {

using quoll::fuzz::require;
using quoll::fuzz::Script;
using quoll::platform::NSGraphicsContext;
using quoll::platform::NSRect;
using quoll::platform::NSView;

/// A number, in half of the cases a small one.
double number(Script& script) {
  return script.choice(2) == 0 ? static_cast<double>(script.byte()) / 4 - 8
                               : script.number<double>();
}
NSRect rect(Script& script) {
  return {{number(script), number(script)}, {number(script), number(script)}};
}
quoll::platform::Colour colour(Script& script) {
  return {number(script), number(script), number(script), number(script)};
}

void draw(NSGraphicsContext& context, Script& script) {
  switch (script.byte() % 8) {
    case 0:
      return context.fill_rounded_rect(rect(script), number(script), colour(script));
    case 1:
      return context.stroke_rounded_rect(rect(script), number(script), number(script),
                                         colour(script));
    case 2: {
      const NSRect ends = rect(script);
      return context.stroke_line(ends.origin, {ends.size.width, ends.size.height}, number(script),
                                 colour(script));
    }
    case 3: {
      const std::string_view text = script.text();
      return context.draw_text(text, rect(script), {number(script), colour(script)});
    }
    case 4:
      return context.clip(rect(script));
    case 5:
      return context.flip();
    case 6:
      return context.scale(number(script), number(script));
    default:
      return context.concat({number(script), number(script), number(script), number(script),
                             number(script), number(script)});
  }
}

std::shared_ptr<NSView> make_view(Script& script) {
  const NSRect frame = rect(script);
  if (script.byte() % 2 == 0) {
    return std::make_shared<NSView>(frame);
  }
  return quoll::FlippedView::initWithFrame(frame, [&script](const auto&, const auto&) {
    for (int steps = script.byte() % 8; steps > 0; --steps) {
      draw(*NSGraphicsContext::currentContext(), script);
    }
  });
}

void check(const NSView& view) {
  const auto size = view.frame().size;
  require(size.width >= 0 && size.height >= 0 && usable(view.frame()) == view.frame());
}

}  // namespace

// fontconfig refers to parts of its patterns by distances, which the leak checker cannot follow.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Script script({data, size});
  const auto type = static_cast<quoll::cairo_drawing::FileType>(script.byte() % 3);
  const auto drawing = make_drawing(type, {32, 24});
  const auto top = make_view(script);
  auto last = top;
  for (int steps = 0; script.goes_on() && steps < 64; ++steps) {
    switch (script.byte() % 5) {
      case 0: {
        const auto view = make_view(script);
        last->addSubview(view);
        last = view;
        break;
      }
      case 1:
        last->setFrame(rect(script));
        break;
      case 2:
        top->setFrameSize(rect(script).size);
        break;
      case 3:
        last->setNeedsDisplayInRect(rect(script));
        top->displayIfNeeded(*drawing);
        break;
      default:
        top->displayRect(rect(script), *drawing);
        break;
    }
    check(*last);
    check(*top);
  }
  require(drawing->isFlipped() && NSGraphicsContext::currentContext() == nullptr &&
          drawing->finish());
  return 0;
}
