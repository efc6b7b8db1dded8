#include "tests/console/short_dates.h"

#include <unicode/udat.h>
#include <unicode/ulocdata.h>

#include <stdexcept>

#include "quoll/linux/icu/user_locale.h"

namespace quoll::test {

namespace {

using console::Json;

bool has_the_vectors_data() {
  constexpr int kVectors = 42;
  UVersionInfo version;
  UErrorCode status = U_ZERO_ERROR;
  ulocdata_getCLDRVersion(version, &status);
  return version[0] == kVectors;
}

std::string short_date(double moment, const std::map<std::string, std::string>& environment) {
  std::string name;
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    name = name.empty() ? environment.at(variable) : name;
  }
  const std::u16string zone(environment.at("TZ").begin(), environment.at("TZ").end());
  constexpr std::int32_t kLongest = 100;
  char16_t text[kLongest];
  UErrorCode status = U_ZERO_ERROR;
  UDateFormat* const format =
      udat_open(UDAT_NONE, UDAT_SHORT, icu::locale_named(name).getName(), zone.data(),
                static_cast<std::int32_t>(zone.size()), nullptr, 0, &status);
  const std::int32_t length = udat_format(format, moment * 1000, text, kLongest, nullptr, &status);
  udat_close(format);
  if (U_FAILURE(status) != 0) {
    throw std::runtime_error(u_errorName(status));
  }
  std::string out;
  return ::icu::UnicodeString(text, length).toUTF8String(out);
}

}  // namespace

Json reply_of_this_system(const VectorCase& vector,
                          const std::map<std::string, std::string>& environment) {
  Json reply = vector.reply;
  if (!vector.environment.empty() && vector.request.is_object() &&
      vector.request["op"] == "centralDate:" && !has_the_vectors_data()) {
    reply["result"] = short_date(vector.request["args"][0]["$date"], environment);
  }
  return reply;
}

}  // namespace quoll::test
