// Uses of the library that must not compile, one for each number of MISUSE from 1 on. With 0 there
// is none, and the file compiles.
#include <memory>
#include <string>

#include "quoll/container/accounts_store.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/error.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/url_request.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/log.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "quoll/records/extension_alias.h"
#include "quoll/records/extension_date.h"
#include "quoll/records/extension_group.h"
#include "quoll/requestutils/url_query.h"

using quoll::foundation::Dictionary;
using quoll::foundation::Error;
using quoll::foundation::List;
using quoll::foundation::NSException;
using quoll::foundation::NSURL;
using quoll::foundation::NSURLRequest;
using quoll::foundation::Value;

void points_into_what_is_gone(const quoll::ExtensionMessage& message, const Dictionary& dictionary,
                              const Error& error, const NSURLRequest& request) {
  const Value subject = message.subject();
  [[maybe_unused]] const void* kept = subject.text();
  for (const Value& account : quoll::ExtensionUtilities::Accounts()) {
    kept = account.text();
  }
#if MISUSE == 1
  kept = message.subject().text();
#elif MISUSE == 2
  kept = dictionary.objectForKey("a").bytes();
#elif MISUSE == 3
  kept = dictionary.objectForKey("a").boolean();
#elif MISUSE == 4
  kept = dictionary.objectForKey("a").integer();
#elif MISUSE == 5
  kept = dictionary.objectForKey("a").real();
#elif MISUSE == 6
  kept = dictionary.objectForKey("a").date();
#elif MISUSE == 7
  kept = message.subject().stringValue();
#elif MISUSE == 8
  kept = quoll::RequestUtils::URLQueryParameters("a=1").find("a");
#elif MISUSE == 9
  kept = quoll::RequestUtils::URLQueryParameters("a=1").begin();
#elif MISUSE == 10
  kept = quoll::ExtensionUtilities::Accounts().begin();
#elif MISUSE == 11
  kept = Error(error).detail("NSFilePath");
#elif MISUSE == 12
  kept = Error(error).underlying();
#elif MISUSE == 13
  kept = &NSException("name", "reason").name();
#elif MISUSE == 42
  kept = &NSURL::URLWithString("a:b")->absoluteString();
#elif MISUSE == 43
  kept = &request.allHTTPHeaderFields();
#endif
  kept = dictionary.find("a");
  kept = error.detail("NSFilePath");
  static_cast<void>(request.allHTTPHeaderFields());
}

void holds_what_is_no_value(quoll::ExtensionMessage& message, List list) {
  message.subject = "a";
  message.to = list;
  list.addObject(1);
#if MISUSE == 14
  message.subject = 'a';
#elif MISUSE == 15
  list.addObject(U'a');
#elif MISUSE == 16
  const Value text{u8'a'};
#elif MISUSE == 17
  const Value text(L'a');
#elif MISUSE == 18
  const Value value = std::make_shared<List>();
#elif MISUSE == 19
  const Value value = &list;
#elif MISUSE == 20
  message.to = std::make_shared<List>();
#elif MISUSE == 21
  const List which{list, list};
#elif MISUSE == 22
  const List none{nullptr};
#elif MISUSE == 23
  const auto text = Value("a").as<std::string>();
#elif MISUSE == 24
  const List& constant = list;
  constant.addObject(1);
#endif
}

void makes_records() {
  auto made = quoll::ExtensionMessage::make();
#if MISUSE == 25
  quoll::ExtensionMessage raw;
#elif MISUSE == 26
  quoll::ExtensionAddress raw;
#elif MISUSE == 27
  quoll::ExtensionGroup raw;
#elif MISUSE == 28
  quoll::ExtensionAccount raw;
#elif MISUSE == 29
  quoll::ExtensionAlias raw;
#elif MISUSE == 30
  made = std::make_shared<quoll::ExtensionMessage>();
#elif MISUSE == 31
  const quoll::ExtensionMessage raw({});
#elif MISUSE == 32
  const quoll::ExtensionMessage copied(*made);
#elif MISUSE == 40
  quoll::ExtensionDate raw;
#elif MISUSE == 41
  const auto dates = std::make_shared<quoll::ExtensionDate>();
#endif
}

std::string fills_patterns(const std::string& pattern) {
  using quoll::foundation::format;
  quoll::platform::log("%@ and %@", 1, pattern);
#if MISUSE == 33
  return format("%@ and %@", 1);
#elif MISUSE == 34
  return format("%@", 1, 2);
#elif MISUSE == 35
  return format(pattern, 1);
#elif MISUSE == 36
  return format("%@", 'a');
#elif MISUSE == 37
  quoll::platform::log("%@ and %@", 1);
#endif
  return format("%@ and %lu", pattern, 1U);
}

std::string takes_options(const Dictionary& parameters) {
  using namespace quoll::RequestUtils;
#if MISUSE == 38
  return URLQueryWithParameters(parameters, 3);
#elif MISUSE == 39
  return URLQueryWithParameters(parameters, true);
#endif
  return URLQueryWithParameters(parameters, URLQueryAlwaysArrays | URLQueryBracketArrayKeys);
}
