// Percent-encoding and decoding, compared with other libraries doing the same work.

#include "quoll/foundation/percent.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include "benchmarks/sample_text.h"

#ifdef QUOLL_WITH_CURL
#include <curl/curl.h>
#endif
#ifdef QUOLL_WITH_QT
#include <QByteArray>
#endif

namespace {

using quoll::benchmarks::sample_html;
using quoll::benchmarks::sample_random;

struct Quoll {
  static std::string encode(const std::string& text) {
    return quoll::foundation::percent_encode(text);
  }
  static std::optional<std::string> decode(const std::string& text) {
    return quoll::foundation::percent_decode(text);
  }
};

struct GLib {
  static void encode(const std::string& text) {
    char* out = g_uri_escape_bytes(reinterpret_cast<const guint8*>(text.data()), text.size(), "");
    benchmark::DoNotOptimize(out);
    g_free(out);
  }
  static void decode(const std::string& text) {
    char* out = g_uri_unescape_string(text.c_str(), nullptr);
    benchmark::DoNotOptimize(out);
    g_free(out);
  }
};

#ifdef QUOLL_WITH_CURL
struct Curl {
  static void encode(const std::string& text) {
    char* out = curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size()));
    benchmark::DoNotOptimize(out);
    curl_free(out);
  }
  static void decode(const std::string& text) {
    int length = 0;
    char* out = curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &length);
    benchmark::DoNotOptimize(out);
    curl_free(out);
  }
};
#endif

#ifdef QUOLL_WITH_QT
struct QtCore {
  static QByteArray encode(const std::string& text) {
    return QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()))
        .toPercentEncoding();
  }
  static QByteArray decode(const std::string& text) {
    return QByteArray::fromPercentEncoding(
        QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
  }
};
#endif

template <typename Call>
void run(benchmark::State& state, const std::string& text, const Call& call) {
  for (auto _ : state) {
    if constexpr (std::is_void_v<decltype(call(text))>) {
      call(text);
    } else {
      auto result = call(text);
      benchmark::DoNotOptimize(result);
    }
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

template <typename Peer>
void add(const std::string& peer) {
  const std::pair<const char*, std::string> texts[] = {{"html_100B", sample_html(100)},
                                                       {"html_16KB", sample_html(16 << 10)},
                                                       {"html_1MB", sample_html(1 << 20)},
                                                       {"random_1MB", sample_random(1 << 20)}};
  for (const auto& [name, text] : texts) {
    benchmark::RegisterBenchmark(("encode/" + std::string(name) + "/" + peer).c_str(),
                                 [text = text](benchmark::State& state) {
                                   run(state, text, [](const auto& t) { return Peer::encode(t); });
                                 });
    benchmark::RegisterBenchmark(("decode/" + std::string(name) + "/" + peer).c_str(),
                                 [text = Quoll::encode(text)](benchmark::State& state) {
                                   run(state, text, [](const auto& t) { return Peer::decode(t); });
                                 });
  }
}

}  // namespace

int main(int argc, char** argv) {
  add<Quoll>("quoll");
  add<GLib>("glib");
#ifdef QUOLL_WITH_CURL
  add<Curl>("curl");
#endif
#ifdef QUOLL_WITH_QT
  add<QtCore>("qt");
#endif
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
