// Finding links in a text, compared with other libraries doing similar work. Their patterns accept
// what looks like an address; unlike this system, they check neither top-level domains nor
// brackets.

#include "quoll/linux/links/links.h"

#include <benchmark/benchmark.h>

#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

#ifdef QUOLL_WITH_RE2
#include <re2/re2.h>
#endif
#ifdef QUOLL_WITH_PCRE2
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#endif
#ifdef QUOLL_WITH_MD4C
#include <md4c.h>
#endif

namespace {

/// Words and sentences of a mail. About one word in twenty is a link or an address.
std::string sample_mail(std::size_t size) {
  constexpr const char* kWords[] = {
      "the ",  "meeting ",     "on ",       "Thursday, ", "naïve ",     "café ", "is ",
      "of ",   "photographs ", "tomorrow.", " Please ",   "reply, ",    "(see ", "below) ",
      "e.g. ", "attached.\n",  "Zürich ",   "12:30 ",     "version 2.", " it’s "};
  constexpr const char* kLinks[] = {"https://example.org/path/to?a=1&b=2#c ",
                                    "www.example.com ",
                                    "joe.public@example.co.uk, ",
                                    "(http://example.net/a_(b)) ",
                                    "example.org/x. ",
                                    "notes.txt "};
  std::mt19937 random(5);
  std::string text;
  while (text.size() < size) {
    const auto number = static_cast<unsigned>(random());
    text += number % 20 == 0 ? kLinks[number / 20 % std::size(kLinks)]
                             : kWords[number / 20 % std::size(kWords)];
  }
  return text;
}

struct Quoll {
  static std::size_t count(const std::string& text) { return links->find(text).size(); }
  static inline const auto links = quoll::links::make_links();
};

[[maybe_unused]] constexpr const char* kPattern =
    R"((?i)(?:https?|ftp)://[^\s<>"'`]+|[a-z0-9._+-]+@[a-z0-9-]+(?:\.[a-z0-9-]+)+|)"
    R"((?:[a-z0-9-]+\.)+[a-z]{2,}(?:[/?#][^\s<>"'`]*)?)";

#ifdef QUOLL_WITH_RE2
struct Re2 {
  static std::size_t count(const std::string& text) {
    std::vector<std::string> found;
    re2::StringPiece rest(text);
    re2::StringPiece link;
    while (RE2::FindAndConsume(&rest, pattern, &link)) {
      found.emplace_back(link);
    }
    return found.size();
  }
  static inline const RE2 pattern{"(" + std::string(kPattern) + ")"};
};
#endif

#ifdef QUOLL_WITH_PCRE2
struct Pcre2 {
  static std::size_t count(const std::string& text) {
    std::vector<std::string> found;
    const auto* const subject = reinterpret_cast<PCRE2_SPTR>(text.data());
    std::size_t at = 0;
    while (pcre2_jit_match(pattern(), subject, text.size(), at, 0, match(), nullptr) > 0) {
      const std::size_t* const range = pcre2_get_ovector_pointer(match());
      found.emplace_back(text, range[0], range[1] - range[0]);
      at = range[1];
    }
    return found.size();
  }
  static pcre2_code* pattern() {
    static pcre2_code* const compiled = [] {
      int error = 0;
      std::size_t where = 0;
      pcre2_code* const code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(kPattern),
                                             PCRE2_ZERO_TERMINATED, 0, &error, &where, nullptr);
      if (code == nullptr || pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) != 0) {
        throw std::runtime_error("the pattern cannot be compiled");
      }
      return code;
    }();
    return compiled;
  }
  static pcre2_match_data* match() {
    static pcre2_match_data* const data = pcre2_match_data_create_from_pattern(pattern(), nullptr);
    return data;
  }
};
#endif

#ifdef QUOLL_WITH_MD4C
struct Md4c {
  static std::size_t count(const std::string& text) {
    std::vector<std::string> found;
    MD_PARSER parser{};
    parser.flags = MD_FLAG_PERMISSIVEAUTOLINKS | MD_FLAG_NOHTML | MD_FLAG_NOINDENTEDCODEBLOCKS;
    parser.enter_block = [](MD_BLOCKTYPE, void*, void*) { return 0; };
    parser.leave_block = [](MD_BLOCKTYPE, void*, void*) { return 0; };
    parser.enter_span = [](MD_SPANTYPE type, void* detail, void* list) {
      if (type == MD_SPAN_A) {
        const MD_ATTRIBUTE& href = static_cast<MD_SPAN_A_DETAIL*>(detail)->href;
        static_cast<std::vector<std::string>*>(list)->emplace_back(href.text, href.size);
      }
      return 0;
    };
    parser.leave_span = [](MD_SPANTYPE, void*, void*) { return 0; };
    parser.text = [](MD_TEXTTYPE, const MD_CHAR*, MD_SIZE, void*) { return 0; };
    md_parse(text.data(), static_cast<MD_SIZE>(text.size()), &parser, &found);
    return found.size();
  }
};
#endif

template <typename Peer>
void add(const std::string& peer) {
  const std::pair<const char*, std::string> texts[] = {{"mail_1KB", sample_mail(1 << 10)},
                                                       {"mail_1MB", sample_mail(1 << 20)}};
  for (const auto& [name, text] : texts) {
    benchmark::RegisterBenchmark(
        ("links/" + std::string(name) + "/" + peer).c_str(),
        [text = text](benchmark::State& state) {
          std::size_t found = 0;
          for (auto _ : state) {
            found = Peer::count(text);
            benchmark::DoNotOptimize(found);
          }
          state.counters["found"] = static_cast<double>(found);
          state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
        });
  }
}

}  // namespace

int main(int argc, char** argv) {
  add<Quoll>("quoll");
#ifdef QUOLL_WITH_RE2
  add<Re2>("re2");
#endif
#ifdef QUOLL_WITH_PCRE2
  add<Pcre2>("pcre2_jit");
#endif
#ifdef QUOLL_WITH_MD4C
  add<Md4c>("md4c");
#endif
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
