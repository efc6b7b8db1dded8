#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace quoll::test {

/// A TIFF file of noise, which takes as much room as PNG.
inline std::string tiff_picture(std::uint32_t width, std::uint32_t height) {
  std::mt19937_64 random(7);
  const std::uint32_t size = width * height * 3;
  std::string file("II*\0", 4);
  const auto add = [&](auto number) {
    file.append(reinterpret_cast<const char*>(&number), sizeof number);
  };
  const auto add_entry = [&](std::uint16_t tag, std::uint16_t count, std::uint32_t value) {
    constexpr std::uint16_t kLong = 4;
    add(tag), add(kLong), add(std::uint32_t{count}), add(value);
  };
  add(8 + size);
  file.reserve(8 + std::size_t{size} + 200);
  while (file.size() < 8 + size) {
    add(random());
  }
  file.resize(8 + size);
  add(std::uint16_t{9});
  add_entry(256, 1, width);
  add_entry(257, 1, height);
  add_entry(258, 1, 8);
  add_entry(259, 1, 1);
  add_entry(262, 1, 2);
  add_entry(273, 1, 8);
  add_entry(277, 1, 3);
  add_entry(278, 1, height);
  add_entry(279, 1, size);
  add(std::uint32_t{0});
  return file;
}

}  // namespace quoll::test
