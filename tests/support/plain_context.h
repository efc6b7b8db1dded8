#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "quoll/view/drawing_context.h"

namespace quoll::test {

/// A drawing context that keeps where things would be drawn, in its own coordinates as they were at
/// first. It follows moves and scales, not turns. `pixel` is the side of its pixels, 0 for none.
class PlainContext final : public platform::NSGraphicsContext {
 public:
  explicit PlainContext(double pixel = 0) : pixel_(pixel) {}

  /// The rectangles that were filled, as far as the clip lets them be.
  [[nodiscard]] const std::vector<platform::NSRect>& filled() const { return filled_; }
  /// How many states are kept at present.
  [[nodiscard]] std::size_t depth() const { return kept_.size(); }

  void fill_rounded_rect(const platform::NSRect& rect, double /*radius*/,
                         const platform::Colour& /*colour*/) override {
    filled_.push_back(intersection(state_.outwards(rect), state_.clip));
  }
  void stroke_rounded_rect(const platform::NSRect& /*rect*/, double /*radius*/,
                           double /*line_width*/, const platform::Colour& /*colour*/) override {}
  void stroke_line(const platform::NSPoint& /*from*/, const platform::NSPoint& /*to*/,
                   double /*line_width*/, const platform::Colour& /*colour*/) override {}
  void draw_image(const platform::NSImage& /*image*/, const platform::NSRect& /*rect*/) override {}
  void draw_text(std::string_view /*text*/, const platform::NSRect& /*rect*/,
                 const platform::TextStyle& /*style*/) override {}
  void clip(const platform::NSRect& rect) override {
    state_.clip = intersection(state_.clip, state_.outwards(rect));
  }
  void concat(const platform::AffineTransform& t) override {
    state_.x += t.tx * state_.across;
    state_.y += t.ty * state_.down;
    state_.across *= t.a;
    state_.down *= t.d;
  }
  [[nodiscard]] platform::NSRect pixel_aligned(const platform::NSRect& rect) const override {
    if (pixel_ == 0) {
      return rect;
    }
    const double left = std::floor(rect.origin.x / pixel_) * pixel_;
    const double top = std::floor(rect.origin.y / pixel_) * pixel_;
    const double right = std::ceil((rect.origin.x + rect.size.width) / pixel_) * pixel_;
    const double bottom = std::ceil((rect.origin.y + rect.size.height) / pixel_) * pixel_;
    return {{left, top}, {right - left, bottom - top}};
  }

 protected:
  void save() override { kept_.push_back(state_); }
  void restore() override {
    state_ = kept_.back();
    kept_.pop_back();
  }

 private:
  struct State {
    double x = 0;
    double y = 0;
    double across = 1;
    double down = 1;
    platform::NSRect clip{{-platform::kLargestCoordinate, -platform::kLargestCoordinate},
                          {2 * platform::kLargestCoordinate, 2 * platform::kLargestCoordinate}};

    [[nodiscard]] platform::NSRect outwards(const platform::NSRect& rect) const {
      const double left = x + across * rect.origin.x;
      const double top = y + down * rect.origin.y;
      const double width = across * rect.size.width;
      const double height = down * rect.size.height;
      return {{std::min(left, left + width), std::min(top, top + height)},
              {std::abs(width), std::abs(height)}};
    }
  };

  double pixel_;
  State state_;
  std::vector<State> kept_;
  std::vector<platform::NSRect> filled_;
};

}  // namespace quoll::test
