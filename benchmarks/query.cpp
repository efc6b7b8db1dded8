// Composing and parsing the query of a URL, compared with other libraries doing the same work.

#include "quoll/requestutils/url_query.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <vector>

#include "benchmarks/sample_text.h"

#ifdef QUOLL_WITH_QT
#include <QUrlQuery>
#endif

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs forty_pairs() {
  Pairs pairs;
  for (int i = 0; i < 40; ++i) {
    pairs.emplace_back("key_" + std::to_string(i), "A value, number " + std::to_string(i) + " & é");
  }
  return pairs;
}

/// A draft with a large body and some attachments: 1.5 MB when composed.
Pairs large_draft() {
  Pairs pairs{{"htmlBody", quoll::benchmarks::sample_html(900 << 10)}, {"subject", "Hello"}};
  for (int i = 0; i < 10; ++i) {
    pairs.emplace_back("attachment_" + std::to_string(i),
                       "/home/u/files/photo " + std::to_string(i) + ".jpg");
  }
  return pairs;
}

struct Quoll {
  using Parameters = quoll::foundation::Dictionary;
  static void fill(Parameters& parameters, const Pairs& pairs) {
    for (const auto& [key, value] : pairs) {
      parameters.setObject(value, key);
    }
  }
  static std::string compose(const Parameters& parameters) {
    return quoll::RequestUtils::URLQueryWithParameters(parameters);
  }
  static auto parse(const std::string& query) {
    return quoll::RequestUtils::URLQueryParameters(query);
  }
};

struct GLib {
  using Parameters = Pairs;
  static void fill(Parameters& parameters, const Pairs& pairs) { parameters = pairs; }
  static std::string compose(const Parameters& parameters) {
    std::string query;
    for (const auto& [key, value] : parameters) {
      char* encoded_key = g_uri_escape_string(key.c_str(), nullptr, FALSE);
      char* encoded_value = g_uri_escape_string(value.c_str(), nullptr, FALSE);
      if (!query.empty()) {
        query += '&';
      }
      query.append(encoded_key).append("=").append(encoded_value);
      g_free(encoded_key);
      g_free(encoded_value);
    }
    return query;
  }
  static int parse(const std::string& query) {
    GHashTable* table = g_uri_parse_params(query.data(), static_cast<gssize>(query.size()), "&",
                                           G_URI_PARAMS_WWW_FORM, nullptr);
    const auto size = static_cast<int>(g_hash_table_size(table));
    g_hash_table_unref(table);
    return size;
  }
};

#ifdef QUOLL_WITH_QT
struct QtCore {
  using Parameters = QList<QPair<QString, QString>>;
  static void fill(Parameters& parameters, const Pairs& pairs) {
    for (const auto& [key, value] : pairs) {
      parameters.append({QString::fromStdString(key), QString::fromStdString(value)});
    }
  }
  static QString compose(const Parameters& parameters) {
    QUrlQuery query;
    query.setQueryItems(parameters);
    return query.toString(QUrl::FullyEncoded);
  }
  static Parameters parse(const std::string& query) {
    return QUrlQuery(QString::fromStdString(query)).queryItems(QUrl::FullyDecoded);
  }
};
#endif

template <typename Peer>
void add(const std::string& peer) {
  const std::pair<const char*, Pairs> inputs[] = {{"40_pairs", forty_pairs()},
                                                  {"1.5MB", large_draft()}};
  for (const auto& [name, pairs] : inputs) {
    Quoll::Parameters ours;
    Quoll::fill(ours, pairs);
    const std::string query = Quoll::compose(ours);
    benchmark::RegisterBenchmark(("compose/" + std::string(name) + "/" + peer).c_str(),
                                 [pairs = pairs](benchmark::State& state) {
                                   typename Peer::Parameters parameters;
                                   Peer::fill(parameters, pairs);
                                   for (auto _ : state) {
                                     auto composed = Peer::compose(parameters);
                                     benchmark::DoNotOptimize(composed);
                                   }
                                 });
    benchmark::RegisterBenchmark(("parse/" + std::string(name) + "/" + peer).c_str(),
                                 [query](benchmark::State& state) {
                                   for (auto _ : state) {
                                     auto parsed = Peer::parse(query);
                                     benchmark::DoNotOptimize(parsed);
                                   }
                                 });
  }
}

}  // namespace

int main(int argc, char** argv) {
  add<Quoll>("quoll");
  add<GLib>("glib");
#ifdef QUOLL_WITH_QT
  add<QtCore>("qt");
#endif
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
