// Reading property lists of 10,000 accounts in each form, compared with another library doing the
// same work. A form without a figure for that library is one that it cannot read.

#include "quoll/foundation/property_list.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "apps/console/operations/property_list_writer.h"
#include "quoll/foundation/collections.h"

#ifdef QUOLL_WITH_PLIST
#include <plist/plist.h>
#endif

namespace {

using quoll::console::PropertyListForm;
using quoll::foundation::Dictionary;
using quoll::foundation::List;
using quoll::foundation::Value;

Value alias(const std::string& number) {
  return Dictionary{{"mail", "alias" + number + "@mail.example.org"},
                    {"name", "R\xC3\xA9my & S\xC3\xB8n " + number},
                    {"account", "user" + number + "@example.org"}};
}

Value account(int number) {
  const std::string text = std::to_string(number);
  return Dictionary{{"mail", "user" + text + "@example.org"},
                    {"name", "A believable name of number " + text},
                    {"type", number % 7},
                    {"enabled", number % 3 != 0},
                    {"aliases", List{alias(text), alias(text + "b")}}};
}

std::string accounts(PropertyListForm form) {
  constexpr int kAccounts = 10'000;
  List list;
  for (int number = 0; number < kAccounts; ++number) {
    list.addObject(account(number));
  }
  return quoll::console::write_property_list(list, form);
}

void quoll_reads(benchmark::State& state, const std::string& document) {
  for (auto _ : state) {
    auto root = quoll::foundation::read_property_list(document);
    benchmark::DoNotOptimize(root);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * document.size()));
}

#ifdef QUOLL_WITH_PLIST
using Read = void (*)(const char* bytes, std::uint32_t size, plist_t* root);

void plist_reads(benchmark::State& state, const std::string& document, Read read) {
  for (auto _ : state) {
    plist_t root = nullptr;
    read(document.data(), static_cast<std::uint32_t>(document.size()), &root);
    benchmark::DoNotOptimize(root);
    plist_free(root);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * document.size()));
}
#endif

}  // namespace

int main(int argc, char** argv) {
  const std::string xml = accounts(PropertyListForm::kXml);
  const std::string binary = accounts(PropertyListForm::kBinary);
  const std::string old = accounts(PropertyListForm::kOld);
  benchmark::RegisterBenchmark("xml/quoll", quoll_reads, xml);
#ifdef QUOLL_WITH_PLIST
  benchmark::RegisterBenchmark("xml/plist", plist_reads, xml, plist_from_xml);
#endif
  benchmark::RegisterBenchmark("binary/quoll", quoll_reads, binary);
#ifdef QUOLL_WITH_PLIST
  benchmark::RegisterBenchmark("binary/plist", plist_reads, binary, plist_from_bin);
#endif
  benchmark::RegisterBenchmark("old/quoll", quoll_reads, old);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
