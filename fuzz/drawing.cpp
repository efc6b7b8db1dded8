// Views and drawings take any numbers: a tree of views is built, changed and drawn as the bytes
// say, and the drawing stays whole.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

#include "linux/cairo/drawing.h"
#include "quoll/view/flipped_view.h"

namespace {

using quoll::platform::NSGraphicsContext;
using quoll::platform::NSRect;
using quoll::platform::NSView;

/// What to do, from the bytes; zeros when they have run out.
class Script {
 public:
  explicit Script(std::span<const std::uint8_t> bytes) : left_(bytes) {}

  [[nodiscard]] bool goes_on() const { return !left_.empty(); }

  std::uint8_t byte() {
    std::uint8_t value = 0;
    take(&value, 1);
    return value;
  }
  /// Small ones as often as any other.
  double number() {
    if (byte() % 2 == 0) {
      return static_cast<double>(byte()) / 4 - 8;
    }
    double value = 0;
    take(&value, sizeof value);
    return value;
  }
  NSRect rect() { return {{number(), number()}, {number(), number()}}; }
  quoll::platform::Colour colour() { return {number(), number(), number(), number()}; }
  std::string_view text() {
    const std::size_t wanted = byte() % 32;
    const std::size_t length = std::min(wanted, left_.size());
    const std::string_view result(reinterpret_cast<const char*>(left_.data()), length);
    left_ = left_.subspan(length);
    return result;
  }

 private:
  void take(void* out, std::size_t length) {
    const std::size_t there = std::min(length, left_.size());
    std::memcpy(out, left_.data(), there);
    left_ = left_.subspan(there);
  }

  std::span<const std::uint8_t> left_;
};

void draw(NSGraphicsContext& context, Script& script) {
  switch (script.byte() % 8) {
    case 0:
      return context.fill_rounded_rect(script.rect(), script.number(), script.colour());
    case 1:
      return context.stroke_rounded_rect(script.rect(), script.number(), script.number(),
                                         script.colour());
    case 2: {
      const NSRect ends = script.rect();
      return context.stroke_line(ends.origin, {ends.size.width, ends.size.height}, script.number(),
                                 script.colour());
    }
    case 3: {
      const std::string_view text = script.text();
      return context.draw_text(text, script.rect(), {script.number(), script.colour()});
    }
    case 4:
      return context.clip(script.rect());
    case 5:
      return context.flip();
    case 6:
      return context.scale(script.number(), script.number());
    default:
      return context.concat({script.number(), script.number(), script.number(), script.number(),
                             script.number(), script.number()});
  }
}

std::shared_ptr<NSView> make_view(Script& script) {
  const NSRect frame = script.rect();
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
  if (!(size.width >= 0 && size.height >= 0) || usable(view.frame()) != view.frame()) {
    std::abort();
  }
}

}  // namespace

// The font library keeps its patterns, and points to their parts by distances, which the leak
// checker cannot follow.
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
        last->setFrame(script.rect());
        break;
      case 2:
        top->setFrameSize(script.rect().size);
        break;
      case 3:
        last->setNeedsDisplayInRect(script.rect());
        top->displayIfNeeded(*drawing);
        break;
      default:
        top->displayRect(script.rect(), *drawing);
        break;
    }
    check(*last);
    check(*top);
  }
  if (!drawing->isFlipped() || NSGraphicsContext::currentContext() != nullptr ||
      !drawing->finish()) {
    std::abort();
  }
  return 0;
}
