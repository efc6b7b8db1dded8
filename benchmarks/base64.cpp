// Base64, compared with other libraries doing the same work.

#include "quoll/foundation/base64.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <memory>
#include <random>
#include <vector>

#include "benchmarks/sample_text.h"

#ifdef QUOLL_WITH_OPENSSL
#include <openssl/evp.h>
#endif
#ifdef QUOLL_WITH_B64
extern "C" {
#include <b64/cdecode.h>
#include <b64/cencode.h>
}
#endif

namespace {

struct Quoll {
  static std::string encode(const std::string& bytes) {
    return quoll::foundation::base64_encode(bytes);
  }
  static std::string decode(const std::string& text) {
    return quoll::foundation::base64_decode_digits(text);
  }
};

struct GLib {
  static void encode(const std::string& bytes) {
    char* out = g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size());
    benchmark::DoNotOptimize(out);
    g_free(out);
  }
  static void decode(const std::string& text) {
    gsize length = 0;
    guchar* out = g_base64_decode(text.c_str(), &length);
    benchmark::DoNotOptimize(out);
    g_free(out);
  }
};

#ifdef QUOLL_WITH_OPENSSL
struct OpenSsl {
  static void encode(const std::string& bytes) {
    const std::unique_ptr<unsigned char[]> out(new unsigned char[bytes.size() / 3 * 4 + 5]);
    benchmark::DoNotOptimize(EVP_EncodeBlock(out.get(),
                                             reinterpret_cast<const unsigned char*>(bytes.data()),
                                             static_cast<int>(bytes.size())));
  }
  static void decode(const std::string& text) {
    const std::unique_ptr<unsigned char[]> out(new unsigned char[text.size()]);
    benchmark::DoNotOptimize(EVP_DecodeBlock(out.get(),
                                             reinterpret_cast<const unsigned char*>(text.data()),
                                             static_cast<int>(text.size())));
  }
};
#endif

#ifdef QUOLL_WITH_B64
struct Libb64 {
  static void encode(const std::string& bytes) {
    const std::unique_ptr<char[]> out(new char[bytes.size() * 2 + 8]);
    base64_encodestate state;
    base64_init_encodestate(&state);
    const int length =
        base64_encode_block(bytes.data(), static_cast<int>(bytes.size()), out.get(), &state);
    benchmark::DoNotOptimize(base64_encode_blockend(out.get() + length, &state));
  }
  static void decode(const std::string& text) {
    const std::unique_ptr<char[]> out(new char[text.size()]);
    base64_decodestate state;
    base64_init_decodestate(&state);
    benchmark::DoNotOptimize(
        base64_decode_block(text.data(), static_cast<int>(text.size()), out.get(), &state));
  }
};
#endif

/// Inserts a character that is not a Base64 digit, such as a line end or blank, at about every
/// twentieth place.
std::string with_others(const std::string& text) {
  constexpr std::string_view kOthers = "=\n \r\t-_.!";
  std::mt19937 random(3);
  std::string out;
  for (const char digit : text) {
    while (random() % 20 == 0) {
      out += kOthers[random() % kOthers.size()];
    }
    out += digit;
  }
  return out;
}

template <typename Call>
void add_one(const std::string& name, const std::string& text, Call call) {
  benchmark::RegisterBenchmark(name.c_str(), [text, call](benchmark::State& state) {
    for (auto _ : state) {
      if constexpr (std::is_void_v<decltype(call(text))>) {
        call(text);
      } else {
        auto result = call(text);
        benchmark::DoNotOptimize(result);
      }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
  });
}

enum class Others { kSkipped, kRefused };

template <typename Peer>
void add(const std::string& peer, Others others = Others::kSkipped) {
  const auto encode = [](const std::string& bytes) { return Peer::encode(bytes); };
  const auto decode = [](const std::string& text) { return Peer::decode(text); };
  for (const auto& [name, size] :
       {std::pair{"30B", 30}, std::pair{"16KB", 16 << 10}, std::pair{"1MB", 1 << 20}}) {
    const std::string bytes = quoll::benchmarks::sample_random(static_cast<std::size_t>(size));
    const std::string text = Quoll::encode(bytes);
    add_one("encode/" + std::string(name) + "/" + peer, bytes, encode);
    add_one("decode/" + std::string(name) + "/" + peer, text, decode);
    if (others == Others::kSkipped) {
      add_one("decode_5%_others/" + std::string(name) + "/" + peer, with_others(text), decode);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  add<Quoll>("quoll");
  add<GLib>("glib");
#ifdef QUOLL_WITH_OPENSSL
  add<OpenSsl>("openssl", Others::kRefused);
#endif
#ifdef QUOLL_WITH_B64
  add<Libb64>("libb64");
#endif
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
