#pragma once

#include <iterator>
#include <random>
#include <string>

/// Texts of a given size to measure with. They are the same in every run.
namespace quoll::benchmarks {

/// HTML as people write it: words in random order, some marked up, some not ASCII.
inline std::string sample_html(std::size_t size) {
  constexpr const char* kWords[] = {"a ",
                                    "the ",
                                    "meeting ",
                                    "on ",
                                    "Thursday, ",
                                    "naïve ",
                                    "café ",
                                    "日本 ",
                                    "<b>bold</b> ",
                                    "is ",
                                    "photographs ",
                                    "of ",
                                    "<br/>",
                                    "&amp; ",
                                    "tomorrow. ",
                                    "<i>",
                                    "</i>",
                                    "please ",
                                    "reply, ",
                                    "</p>\n<p>",
                                    "attached ",
                                    "(see ",
                                    "below) ",
                                    "Zürich ",
                                    "<a href=\"https://example.org/?a=1&b=2\">link</a> ",
                                    "12:30 ",
                                    "£20 ",
                                    "it’s "};
  std::mt19937 random(11);
  std::string text = "<p>";
  while (true) {
    const std::string word = kWords[random() % std::size(kWords)];
    if (text.size() + word.size() > size) {
      return text;
    }
    text += word;
  }
}

/// Random characters: one in four is not ASCII, the others are all of ASCII.
inline std::string sample_random(std::size_t size) {
  std::mt19937 random(7);
  std::string text;
  while (text.size() + 2 <= size) {
    const auto number = static_cast<unsigned>(random());
    if (number % 4 == 0) {
      text += static_cast<char>(0xC3);
      text += static_cast<char>(0x80 + (number >> 8U) % 64);
    } else {
      text += static_cast<char>(1 + (number >> 8U) % 127);
    }
  }
  return text;
}

}  // namespace quoll::benchmarks
